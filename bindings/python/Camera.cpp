#include "bindings/python/Camera.h"

#include "bindings/python/Arrays.h"
#include "bindings/python/Module.h"
#include "bindings/python/Records.h"
#include "bindings/python/Storage.h"

#include "camera/Camera.h"
#include "camera/settings/Keys.h"
#include "recordings/FlatFile.h"
#include "recordings/PaletteFile.h"
#include "recordings/PixelFiles.h"

#include <pybind11/stl.h>

#include <algorithm>
#include <fstream>
#include <memory>

namespace velmo::python {
namespace {

using camera::Key;
using camera::Settings;

/// A flag as a bool, anything else as its text.
py::object settingOf(const Settings& settings, const std::string& path)
{
    if (camera::keyOf(path).kind.isFlag())
        return py::bool_(settings.flag(path));
    return py::str(settings.text(path));
}

void putAll(Settings& settings, const exp::DataStorage<std::string>& tree, const std::string& prefix = "")
{
    for (const auto& [name, value] : tree)
        if (value->getTypeInfo() == typeid(tree))
            putAll(settings, value->value<exp::DataStorage<std::string>>(), prefix + name + '/');
        else
            settings.set(prefix + name, value->toString(), prefix + name);
}

void put(Settings& settings, const std::string& path, const py::object& value)
{
    py::dict one;
    one[py::str(path)] = value;
    putAll(settings, treeOf(one));
}

/// Keywords are the options of the program: bad_pixels is --bad-pixels. A list becomes its values with commas
/// between.
void putOptions(Settings& settings, const py::kwargs& options)
{
    for (const auto& [name, value] : options) {
        auto option = "--" + name.cast<std::string>();
        std::replace(option.begin(), option.end(), '_', '-');
        const auto found = std::find_if(camera::keys().begin(), camera::keys().end(),
                                        [&](const Key& key) { return key.option == option; });
        const std::string path = found == camera::keys().end() ? name.cast<std::string>() : found->path;
        const bool list = py::isinstance<py::list>(value) || py::isinstance<py::tuple>(value);
        put(settings, path,
            list ? py::object(py::str(",").attr("join")(value)) : py::reinterpret_borrow<py::object>(value));
    }
}

Settings made(const py::object& values, const py::kwargs& options)
{
    Settings settings;
    if (py::isinstance<Settings>(values))
        settings = values.cast<Settings>();
    else if (py::isinstance<py::dict>(values))
        putAll(settings, treeOf(values));
    else if (!values.is_none())
        throw py::type_error("settings: a " + std::string(Py_TYPE(values.ptr())->tp_name) +
                             ", where Settings or a dict is needed");
    putOptions(settings, options);
    return settings;
}

py::list settingKeys()
{
    py::list rows;
    for (const Key& key : camera::keys()) {
        py::dict row;
        row["path"] = key.path;
        row["option"] = key.option;
        row["shape"] = key.kind.shape();
        row["limits"] = key.kind.limits();
        row["unit"] = key.unit;
        row["default"] = key.fallback;
        row["sentence"] = key.sentence;
        rows.append(row);
    }
    return rows;
}

void addSettings(py::module_& module)
{
    module.def("setting_keys", &settingKeys,
               "setting_keys() -> list of dicts\n\n"
               "Everything that can be chosen: path, option (as a keyword without dashes in front), shape of "
               "the value,\n"
               "limits, unit, default, and a sentence.");
    py::class_<Settings>(
        module, "Settings",
        "Settings(values=None, **options)\n\n"
        "What is chosen of everything that can be chosen; the rest has its default. `values` is a dict by\n"
        "path, nested ({\"noise\": {\"denoise\": True}}) or not ({\"noise/denoise\": True}); options are "
        "the\n"
        "short names: Settings(denoise=True, range=\"7000:9000\"). setting_keys() lists them all.\n\n"
        "Error for a path, option or value that is not in the table.")
        .def(py::init(&made), py::arg("values") = py::none())
        .def_static(
            "read",
            [](py::handle path) {
                const std::string file = pathText(path);
                std::ifstream in(file, std::ios::binary);
                if (!in)
                    VELMO_THROW(file + ": cannot be read");
                return Settings::read(in);
            },
            py::arg("path"), "read(path) -> Settings of an INI or XML file, as 'thermal settings' writes one")
        .def("__getitem__", &settingOf, py::arg("path"))
        .def(
            "__setitem__",
            [](Settings& self, const std::string& path, const py::object& value) { put(self, path, value); },
            py::arg("path"), py::arg("value"))
        .def("__iter__",
             [](const Settings&) {
                 py::list paths;
                 for (const Key& key : camera::keys())
                     paths.append(key.path);
                 return py::iter(paths);
             })
        .def("__len__", [](const Settings&) { return camera::keys().size(); })
        .def(
            "__eq__", [](const Settings& self, const Settings& other) { return self.ini() == other.ini(); },
            py::is_operator())
        .def("__repr__",
             [](const Settings& self) {
                 return "Settings(" + std::string(py::repr(dictOf(self.tree()))) + ")";
             })
        .def(
            "to_dict", [](const Settings& self) { return dictOf(self.tree()); },
            "What was set, as a nested dict.")
        .def("ini", &Settings::ini,
             "All settings with what they do and take, as a text that read() takes back.")
        .def(py::pickle([](const Settings& self) { return dictOf(self.tree()); },
                        [](const py::dict& values) { return made(values, {}); }))
        .attr("__hash__") = py::none();
}

/// A camera as Python has it: used by one thread at a time, whoever calls.
class Stream
{
public:
    Stream(const py::object& values, const py::object& badPixelRecords, std::string unit,
           const py::kwargs& options)
        : m_oSettings(made(values, options)), m_strUnit(std::move(unit)), m_oRecords(badPixelRecords),
          m_oCamera(open(m_oSettings, badPixelRecords, m_strUnit))
    {}

    py::object clean(py::handle frame, py::handle out)
    {
        const cv::Mat raw = view(frame, "frame", CV_16UC1);
        return result(out, {}, [&]() -> const cv::Mat& { return m_oCamera.clean(raw); });
    }

    py::object show(py::handle frame, py::handle out)
    {
        const cv::Mat raw = view(frame, "frame", CV_16UC1);
        return result(out, pictureClass(), [&]() -> const cv::Mat& { return m_oCamera.show(raw); });
    }

    py::object paint(py::handle frame, py::handle out)
    {
        const cv::Mat clean = view(frame, "frame", CV_16UC1);
        return result(out, pictureClass(), [&]() -> const cv::Mat& { return m_oCamera.paint(clean); });
    }

    camera::Measurement measure(py::handle frame)
    {
        const cv::Mat clean = view(frame, "frame", CV_16UC1);
        camera::Measurement measurement;
        unlocked(m_oMutex, [&] { measurement = m_oCamera.measure(clean); });
        return measurement;
    }

    /// What there is between calls.
    template <class Work>
    auto locked(Work&& work)
    {
        decltype(work(m_oCamera)) result;
        unlocked(m_oMutex, [&] { result = work(m_oCamera); });
        return result;
    }

    const Settings& settings() const { return m_oSettings; }
    const std::string& unit() const { return m_strUnit; }
    const py::object& records() const { return m_oRecords; }

private:
    static camera::Camera open(Settings& settings, py::handle records, const std::string& unit)
    {
        camera::Calibration calibration = calibrationOf(
            settings, {recordings::loadPaletteFile, recordings::readRecords, recordings::readFlatPlanes});
        if (!unit.empty())
            calibration.unit = unit;
        if (!records.is_none())
            calibration.badPixels = badPixels(records, "bad_pixels");
        return camera::Camera(settings, calibration);
    }

    /// A copy of what the camera made, whose memory it uses again.
    template <class Work>
    py::object result(py::handle out, py::handle subtype, Work&& work)
    {
        cv::Mat made;
        std::unique_lock lock(m_oMutex, std::defer_lock);
        unlocked([&] {
            lock.lock();
            made = work();
        });
        Output output(out, made.size(), made.type(), subtype);
        unlocked([&] {
            if (!made.empty())
                made.copyTo(output.image());
            lock.unlock();
        });
        return output.array();
    }

    std::mutex m_oMutex;
    Settings m_oSettings;
    std::string m_strUnit;
    py::object m_oRecords;
    camera::Camera m_oCamera;
};

py::tuple ofPoint(const cv::Point2d& point)
{
    return py::make_tuple(point.x, point.y);
}

void addMeasurement(py::module_& module)
{
    using camera::Blob;
    using camera::Measurement;
    py::class_<Blob>(
        module, "Blob",
        "One connected region of a frame. Positions are (x, y) in pixels, values are those of the frame.")
        .def_property_readonly(
            "label", [](const Blob& self) { return self.component.getLabel(); },
            "The same from frame to frame for what moves slowly.")
        .def_property_readonly(
            "points", [](const Blob& self) { return pointArray(self.component.getPoints()); },
            "Its pixels: N x 2 int32.")
        .def_property_readonly(
            "centre", [](const Blob& self) { return ofPoint(self.centre); }, "(x, y)")
        .def_property_readonly(
            "box",
            [](const Blob& self) {
                return py::make_tuple(self.box.x, self.box.y, self.box.width, self.box.height);
            },
            "(x, y, width, height)")
        .def_readonly("length", &Blob::length,
                      "Along the longer principal axis, in pixels; nan for a single pixel.")
        .def_readonly("width", &Blob::width, "Along the shorter one.")
        .def_readonly("angle", &Blob::angle,
                      "Of the longer axis, in degrees above the horizontal: -90 < angle <= 90.")
        .def_readonly("elongation", &Blob::elongation, "1 for as wide as tall, smaller for a longer one.")
        .def_readonly("low", &Blob::low, "The least value in it.")
        .def_readonly("high", &Blob::high, "The greatest.")
        .def_readonly("mean", &Blob::mean, "Their mean.");
    py::class_<Measurement>(module, "Measurement", "What there is in a frame.")
        .def_readonly("low", &Measurement::low, "The least value.")
        .def_readonly("high", &Measurement::high, "The greatest value.")
        .def_readonly("mean", &Measurement::mean, "Their mean.")
        .def_readonly("blobs", &Measurement::blobs, "Where settings look for blobs: list of Blob.");
}

} // namespace

std::string pathText(py::handle path)
{
    PyObject* bytes = nullptr;
    if (PyUnicode_FSConverter(path.ptr(), &bytes) == 0)
        throw py::error_already_set();
    return std::string(py::reinterpret_steal<py::bytes>(bytes));
}

void addCamera(py::module_& module)
{
    addSettings(module);
    addMeasurement(module);
    py::class_<Stream>(
        module, "Camera",
        "Camera(settings=None, bad_pixels=None, unit=\"\", **options)\n\n"
        "A whole camera: raw frames in, clean frames, pictures and measurements out. Filters learn from the\n"
        "frames in the order in which they come: one object per stream.\n\n"
        "settings: Settings, or what they are made from, with options as theirs.\n"
        "bad_pixels: records of BAD_PIXEL, or None.\n"
        "unit: what the recording says that a value means; Recording.unit has it.\n"
        "A pickle holds settings, bad pixels and unit, not what was learnt. Error for settings that\n"
        "contradict each other.")
        .def(py::init<const py::object&, const py::object&, std::string, const py::kwargs&>(),
             py::arg("settings") = py::none(), py::arg("bad_pixels") = py::none(), py::arg("unit") = "")
        .def("clean", &Stream::clean, py::arg("frame"), py::arg("out") = py::none(),
             "clean(frame, out=None) -> rows x cols uint16\n\n"
             "The next raw frame of the stream (uint16), corrected; smaller where settings shrink it.")
        .def("measure", &Stream::measure, py::arg("frame"),
             "measure(frame) -> Measurement\n\nWhat there is in a corrected frame, uint16.")
        .def("paint", &Stream::paint, py::arg("frame"), py::arg("out") = py::none(),
             "paint(frame, out=None) -> Picture\n\n"
             "A corrected frame in colours, with what was measured last drawn over it if blobs are looked "
             "for.")
        .def("show", &Stream::show, py::arg("frame"), py::arg("out") = py::none(),
             "show(frame, out=None) -> Picture\n\n"
             "The next raw frame of the stream as a picture: clean, measure if anything is drawn of that, "
             "paint.")
        .def_property_readonly("settings", &Stream::settings, "A copy of its settings.",
                               py::return_value_policy::copy)
        .def_property_readonly(
            "stages",
            [](Stream& self) {
                return self.locked([](camera::Camera& camera) {
                    std::vector<std::pair<std::string, double>> stages;
                    for (std::size_t n = 0; n < camera.chain().size(); ++n)
                        stages.emplace_back(camera.chain().name(n), camera.chain().microseconds(n));
                    return stages;
                });
            },
            "What a raw frame goes through, with the mean microseconds of each.")
        .def_property_readonly(
            "scale",
            [](Stream& self) {
                return self.locked([](camera::Camera& camera) { return camera.thermometer().scale(); });
            },
            "The Scale of its values: temperatures of objects, as the settings have them.")
        .def(
            "path",
            [](Stream& self, unsigned label) {
                const auto centres = self.locked([&](camera::Camera& camera) {
                    try {
                        return camera.tracker().path(label);
                    } catch (const std::out_of_range&) {
                        VELMO_THROW("no blob has the label " + std::to_string(label));
                    }
                });
                const int count = static_cast<int>(centres.size());
                return copied(cv::Mat(count, 2, CV_64FC1, const_cast<cv::Point2d*>(centres.data())));
            },
            py::arg("label"),
            "path(label) -> N x 2 float64\n\nWhere the centre of the blob with this label has been.")
        .def_property_readonly(
            "learning",
            [](Stream& self) { return self.locked([](auto& camera) { return camera.range().learning(); }); },
            "Whether frames still decide about the range of colours that is held then (range=\"lock\").")
        .def(
            "learn",
            [](Stream& self, py::handle frame) {
                const cv::Mat clean = view(frame, "frame", CV_16UC1);
                self.locked([&](auto& camera) { return camera.range().learn(clean), 0; });
            },
            py::arg("frame"),
            "learn(frame)\n\nLets a corrected frame decide about that range without a picture of it.")
        .def(
            "hold", [](Stream& self) { self.locked([](auto& camera) { return camera.range().hold(), 0; }); },
            "hold()\n\nEnds learning: what was learnt is held.")
        .def(py::pickle(
            [](const Stream& self) { return py::make_tuple(self.settings(), self.records(), self.unit()); },
            [](const py::tuple& state) {
                return std::make_unique<Stream>(py::object(state[0]), py::object(state[1]),
                                                state[2].cast<std::string>(), py::kwargs());
            }));
}

} // namespace velmo::python
