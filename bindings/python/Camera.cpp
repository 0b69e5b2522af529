#include "bindings/python/Camera.h"

#include "bindings/python/Arrays.h"
#include "bindings/python/Module.h"
#include "bindings/python/Records.h"
#include "bindings/python/Storage.h"

#include "camera/Camera.h"
#include "camera/settings/Keys.h"
#include "camera/settings/Parse.h"
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

/// As it is typed: words, numbers, those of numpy too, and paths. What has separators between is a list or
/// tuple, and what has both kinds of them a list of those.
std::string typed(const Key& key, py::handle value, bool inList)
{
    py::detail::make_caster<bool> flag;
    if (flag.load(value, false)) // a bool, of numpy too
        return py::detail::cast_op<bool>(flag) ? "true" : "false";
    if (py::isinstance<py::str>(value))
        return value.cast<std::string>();
    if (py::hasattr(value, "__fspath__"))
        return pathText(value);
    if (py::isinstance<py::list>(value) || py::isinstance<py::tuple>(value)) {
        const char* const separator = inList || key.kind.forms.empty() ? "," : ":";
        std::string text;
        for (const auto& part : value)
            text += (text.empty() ? "" : separator) + typed(key, part, false);
        return text;
    }
    const bool array = py::hasattr(value, "__len__");
    if (!array && PyIndex_Check(value.ptr()) != 0)
        return py::str(py::reinterpret_steal<py::object>(PyNumber_Index(value.ptr())));
    if (!array && py::hasattr(value, "__float__"))
        return camera::numberText(py::float_(py::reinterpret_borrow<py::object>(value)));
    throw py::type_error(key.path + ": a " + Py_TYPE(value.ptr())->tp_name +
                         ", where a bool, int, float, str, path, or a list or tuple of them is needed");
}

void put(Settings& settings, const std::string& path, py::handle value)
{
    const Key& key = camera::keyOf(path);
    settings.set(path, typed(key, value, key.kind.list), path);
}

void putAll(Settings& settings, const py::dict& values, const std::string& prefix = "")
{
    for (const auto& [name, value] : values) {
        if (!py::isinstance<py::str>(name))
            throw py::type_error("a " + std::string(Py_TYPE(name.ptr())->tp_name) +
                                 " as a name, where a str is needed");
        const std::string path = prefix + name.cast<std::string>();
        if (py::isinstance<py::dict>(value))
            putAll(settings, py::reinterpret_borrow<py::dict>(value), path + '/');
        else
            put(settings, path, value);
    }
}

/// Keywords are the options of the program: palette_file is --palette-file.
void putOptions(Settings& settings, const py::kwargs& options)
{
    for (const auto& [name, value] : options) {
        auto option = "--" + name.cast<std::string>();
        std::replace(option.begin(), option.end(), '_', '-');
        const auto found = std::find_if(camera::keys().begin(), camera::keys().end(),
                                        [&](const Key& key) { return key.option == option; });
        put(settings, found == camera::keys().end() ? name.cast<std::string>() : found->path, value);
    }
}

Settings made(const py::object& values, const py::kwargs& options)
{
    Settings settings;
    if (py::isinstance<Settings>(values))
        settings = values.cast<Settings>();
    else if (py::isinstance<py::dict>(values))
        putAll(settings, values);
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
        "short names: Settings(denoise=True, range=(7000, 9000)). Values are bool, int, float, str or paths, "
        "what\n"
        "is written with colons or commas between may be a list or tuple. setting_keys() lists them all.\n\n"
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
        .def(
            "keys", [](const py::object& self) { return py::list(self); }, "All paths, for dict(settings).")
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
    Stream(const py::object& values, const py::object& badPixels, std::string unit, const py::object& flat,
           const py::kwargs& options)
        : m_oSettings(made(values, options)), m_strUnit(std::move(unit)), m_oCamera(open(badPixels, flat))
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
    const py::object& flat() const { return m_oFlat; }

private:
    static bool isText(py::handle value)
    {
        return py::isinstance<py::str>(value) || py::hasattr(value, "__fspath__");
    }

    /// What is given as an array goes above what the settings name.
    camera::Camera open(const py::object& badPixels, const py::object& flat)
    {
        if (isText(badPixels))
            put(m_oSettings, "pixels/records", badPixels);
        if (isText(flat))
            put(m_oSettings, "pixels/flat", flat);
        camera::Calibration calibration =
            calibrationOf(m_oSettings, {recordings::loadPaletteFile, recordings::readReplacements,
                                        recordings::readFlatPlanes});
        if (!m_strUnit.empty())
            calibration.unit = m_strUnit;
        if (!badPixels.is_none() && !isText(badPixels)) {
            calibration.badPixels = recordsOrMap(badPixels, "bad_pixels");
            m_oRecords = recordArray(calibration.badPixels);
        }
        if (!flat.is_none() && !isText(flat)) {
            calibration.flat = camera::FlatField::fromPlanes(planesOf(flat, "flat"), "flat");
            m_oFlat = planesArray(calibration.flat.planes());
        }
        return camera::Camera(m_oSettings, calibration);
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
    py::object m_oRecords = py::none(), m_oFlat = py::none();
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
        .def_readonly("mean", &Blob::mean, "Their mean.")
        .def("__repr__", [](const Blob& self) {
            return "Blob(" + std::to_string(self.component.getLabel()) + ": " +
                   std::to_string(self.component.getNrOfPoints()) + " pixels in " +
                   camera::sizeText(self.box.size()) + " at " + std::to_string(self.box.x) + ',' +
                   std::to_string(self.box.y) + ')';
        });
    py::class_<Measurement>(module, "Measurement", "What there is in a frame.")
        .def_readonly("low", &Measurement::low, "The least value.")
        .def_readonly("high", &Measurement::high, "The greatest value.")
        .def_readonly("mean", &Measurement::mean, "Their mean.")
        .def_readonly("blobs", &Measurement::blobs, "Where settings look for blobs: list of Blob.")
        .def("__repr__", [](const Measurement& self) {
            return "Measurement(low " + std::to_string(self.low) + ", mean " +
                   camera::numberText(self.mean, 1) + ", high " + std::to_string(self.high) + ", " +
                   std::to_string(self.blobs.size()) + " blobs)";
        });
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
        "Camera(settings=None, bad_pixels=None, unit=\"\", flat=None, **options)\n\n"
        "A whole camera: raw frames in, clean frames, pictures and measurements out. Filters learn from the\n"
        "frames in the order in which they come: one object per stream.\n\n"
        "settings: Settings, or what they are made from, with options as theirs.\n"
        "bad_pixels: records of BAD_PIXEL, a map (rows x cols int32), the path of either, or \"auto\".\n"
        "unit: what the recording says that a value means; Recording.unit has it.\n"
        "flat: what FlatLearner learnt (3 x rows x cols float32), or the path of a .npy of it.\n"
        "A pickle holds settings, bad pixels, flat field and unit, not what was learnt on the way. Error "
        "for\n"
        "settings that contradict each other.")
        .def(py::init<const py::object&, const py::object&, std::string, const py::object&,
                      const py::kwargs&>(),
             py::arg("settings") = py::none(), py::arg("bad_pixels") = py::none(), py::arg("unit") = "",
             py::arg("flat") = py::none())
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
            [](const Stream& self) {
                return py::make_tuple(self.settings(), self.records(), self.unit(), self.flat());
            },
            [](const py::tuple& state) {
                return std::make_unique<Stream>(py::object(state[0]), py::object(state[1]),
                                                state[2].cast<std::string>(), py::object(state[3]),
                                                py::kwargs());
            }));
}

} // namespace velmo::python
