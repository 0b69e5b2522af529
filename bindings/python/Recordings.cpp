#include "bindings/python/Arrays.h"
#include "bindings/python/Camera.h"
#include "bindings/python/Module.h"
#include "bindings/python/Records.h"

#include "core/Exception.h"
#include "recordings/Frames.h"
#include "recordings/LensFile.h"
#include "recordings/Outputs.h"
#include "recordings/PaletteFile.h"
#include "recordings/PaletteFormats.h"
#include "recordings/PictureSink.h"
#include "recordings/PixelFiles.h"

#include <pybind11/stl.h>

#include <functional>
#include <memory>
#include <optional>

namespace velmo::python {
namespace {

using recordings::FrameSource;
using recordings::ImageWriter;
using recordings::Outputs;

/// Frames of files or streams, one by one.
struct Recording
{
    py::object next()
    {
        recordings::Frame frame;
        bool more = false;
        unlocked(mutex, [&] { more = source && source->next(frame); });
        if (!more)
            throw py::stop_iteration();
        return copied(frame);
    }

    std::mutex mutex;
    std::unique_ptr<FrameSource> source; ///< none once it is closed
    std::string name, unit, remark;
    std::optional<std::size_t> count;
};

std::vector<std::string> pathsOf(const py::object& inputs)
{
    const bool one = py::isinstance<py::str>(inputs) || py::isinstance<py::bytes>(inputs) ||
                     !py::isinstance<py::iterable>(inputs);
    if (one)
        return {pathText(inputs)};
    std::vector<std::string> paths;
    for (const auto& input : inputs)
        paths.push_back(pathText(input));
    return paths;
}

std::unique_ptr<Recording> openRecording(const py::object& inputs,
                                         const std::optional<std::pair<int, int>>& raw, bool bigEndian,
                                         const std::optional<std::pair<int, int>>& rows, bool anyUnit)
{
    recordings::ReadOptions options;
    if (raw)
        options.raw = recordings::RawFormat{{raw->second, raw->first}, bigEndian};
    if (raw && (raw->first < 1 || raw->second < 1 || raw->first > 16384 || raw->second > 16384))
        throw py::value_error("raw: rows and columns are 1 to 16384");
    if (rows)
        options.rows = cv::Range(rows->first, rows->second);
    options.anyUnit = anyUnit;
    auto recording = std::make_unique<Recording>();
    const auto paths = pathsOf(inputs);
    unlocked([&] { recording->source = recordings::openFrames(paths, options); });
    recording->name = recording->source->name();
    recording->unit = recording->source->unit();
    recording->count = recording->source->count();
    return recording;
}

void addRecording(py::module_& module)
{
    py::class_<Recording>(module, "Recording",
                          "Frames of files, folders or streams, one by one: an iterator of rows x cols "
                          "uint16, each an array of\n"
                          "its own. velmo.open makes one.")
        .def("__iter__", [](const py::object& self) { return self; })
        .def("__next__", &Recording::next)
        .def("__repr__",
             [](const Recording& self) {
                 return "Recording(" + self.name +
                        (self.count ? ", " + std::to_string(*self.count) + " frames" : "") +
                        (self.unit.empty() ? ")" : " of " + self.unit + ")");
             })
        .def("__enter__", [](const py::object& self) { return self; })
        .def("__exit__",
             [](Recording& self, const py::args&) { unlocked(self.mutex, [&] { self.source.reset(); }); })
        .def(
            "close", [](Recording& self) { unlocked(self.mutex, [&] { self.source.reset(); }); },
            "close()\n\nCloses its files; no more frames come.")
        .def_readonly("name", &Recording::name, "For headings: the folder or file.")
        .def_readonly("unit", &Recording::unit,
                      "What a value means, as Scale takes it; empty if it does not say.")
        .def_readonly("count", &Recording::count, "How many frames there are, or None if that is not known.")
        .def_property_readonly(
            "remark",
            [](Recording& self) {
                std::string remark;
                unlocked(self.mutex, [&] { remark = self.source ? self.source->remark() : ""; });
                return remark;
            },
            "What there is to say when no more comes, such as a last frame that is cut off; mostly nothing.");
    module.def(
        "open", &openRecording, py::arg("inputs"), py::arg("raw") = py::none(), py::arg("big_endian") = false,
        py::arg("rows") = py::none(), py::arg("any_unit") = false,
        "open(inputs, raw=None, big_endian=False, rows=None, any_unit=False) -> Recording\n\n"
        "inputs: a file, folder or pattern, or several of them: PGM, PNG, TIFF, .npy and films of grey "
        "values;\n"
        "folders come in natural order. Files of degrees Celsius become counts of one scale, which is "
        "their unit.\n"
        "raw: (rows, cols) of files of bare 16-bit values; big_endian: their byte order.\n"
        "rows: (first, behind the last) that are picture, where cameras add others.\n"
        "any_unit: whether inputs may differ in their units.\n"
        "Error that names the input, here or while frames are read.");
}

/// An output that a with-statement ends: whatever goes wrong inside leaves the target as it was.
class Writer
{
public:
    using Opener = std::function<std::unique_ptr<ImageWriter>(Outputs&)>;

    Writer(int type, const Opener& open)
        : m_s32Type(type), m_pOutputs(std::make_unique<Outputs>()), m_pWriter(open(*m_pOutputs))
    {}

    void write(py::handle image)
    {
        const cv::Mat picture = view(image, CV_MAT_CN(m_s32Type) == 3 ? "picture" : "frame", m_s32Type);
        unlocked(m_oMutex, [&] {
            if (!m_pWriter)
                VELMO_THROW("nothing can be written behind the end");
            m_pWriter->write(picture);
        });
    }

    void finish()
    {
        unlocked(m_oMutex, [&] {
            const auto outputs = std::move(m_pOutputs);
            const auto writer = std::move(m_pWriter);
            if (!writer)
                return;
            writer->finish();
            outputs->commit();
        });
    }

    void exit(const py::object& error)
    {
        if (error.is_none())
            return finish();
        unlocked(m_oMutex, [&] {
            m_pWriter.reset();
            m_pOutputs.reset();
        });
    }

private:
    std::mutex m_oMutex;
    int m_s32Type;
    std::unique_ptr<Outputs> m_pOutputs; ///< none at the end
    std::unique_ptr<ImageWriter> m_pWriter;
};

struct PictureWriter : Writer
{
    PictureWriter(py::handle path, std::optional<std::size_t> expected, double fps)
        : Writer(CV_8UC3, [&](Outputs& outputs) {
              return recordings::openSink(outputs, pathText(path), expected, fps);
          })
    {}
};

struct FrameWriter : Writer
{
    FrameWriter(py::handle path, std::optional<std::size_t> expected, double fps, const std::string& unit,
                bool pgm, bool degrees)
        : Writer(degrees ? CV_32FC1 : CV_16UC1, [&](Outputs& outputs) {
              return recordings::openFrameSink(outputs, pathText(path), expected,
                                               {pgm ? "pgm" : "", degrees, fps, unit});
          })
    {}
};

/// A file that is there as a whole or not at all.
template <class Write>
void writeWhole(py::handle path, Write&& write)
{
    const std::string file = pathText(path);
    unlocked([&] {
        Outputs outputs;
        write(outputs, file);
        outputs.commit();
    });
}

template <class Kind>
py::class_<Kind> addWriter(py::module_& module, const char* name, const char* doc)
{
    return py::class_<Kind>(module, name, doc)
        .def("__enter__", [](const py::object& self) { return self; })
        .def("__exit__", [](Kind& self, const py::object& kind, const py::object&,
                            const py::object&) { self.exit(kind); })
        .def("finish", &Kind::finish,
             "finish()\n\nEverything is in its place, or an Error says why not. A with-statement does it.");
}

void addWriters(py::module_& module)
{
    addWriter<PictureWriter>(
        module, "PictureWriter",
        "PictureWriter(path, expected=None, fps=9)\n\n"
        "Where pictures go: a .png for one, a film (.mp4, .mkv, .avi), or else a folder: frame_0000.png and "
        "so\n"
        "on. They are written under another name and get their own by finish(), at the end of a\n"
        "with-statement; an error before that leaves what was there as it was.\n\n"
        "expected: how many will come, if that is known. Error if the path cannot take them.")
        .def(py::init<py::handle, std::optional<std::size_t>, double>(), py::arg("path"),
             py::arg("expected") = py::none(), py::arg("fps") = 9.0)
        .def("write", &PictureWriter::write, py::arg("picture"),
             "write(picture)\n\nrows x cols x 3 uint8: blue, green, red.");
    addWriter<FrameWriter>(
        module, "FrameWriter",
        "FrameWriter(path, expected=None, fps=9, unit=\"\", pgm=False, degrees=False)\n\n"
        "Where frames go, which come back bit for bit: one to a .png or .pgm, many to a .tiff, .npy, .raw, "
        ".mkv or\n"
        "a folder. As PictureWriter in all else.\n\n"
        "unit: what a count means, kept where the format can. pgm: in folders, PGM files instead of PNG.\n"
        "degrees: frames are degrees Celsius, float32; .tiff and .npy alone take them.")
        .def(py::init<py::handle, std::optional<std::size_t>, double, const std::string&, bool, bool>(),
             py::arg("path"), py::arg("expected") = py::none(), py::arg("fps") = 9.0, py::arg("unit") = "",
             py::arg("pgm") = false, py::arg("degrees") = false)
        .def("write", &FrameWriter::write, py::arg("frame"),
             "write(frame)\n\nrows x cols uint16, or float32 where they are degrees.");
}

void addFiles(py::module_& module)
{
    module.def(
        "read_picture",
        [](py::handle path) { return copied(recordings::readPicture(pathText(path)), pictureClass()); },
        py::arg("path"), "read_picture(path) -> Picture of a PNG, JPEG, BMP or Netpbm file");
    module.def(
        "write_picture",
        [](py::handle path, py::handle picture) {
            const cv::Mat image = view(picture, "picture", CV_8UC3);
            writeWhole(path, [&](Outputs& outputs, const std::string& file) {
                recordings::writePicture(outputs, file, image);
            });
        },
        py::arg("path"), py::arg("picture"),
        "write_picture(path, picture)\n\nA PNG of rows x cols x 3 uint8.");
    module.def(
        "load_palette_file", [](py::handle path) { return recordings::loadPaletteFile(pathText(path)); },
        py::arg("path"),
        "load_palette_file(path) -> the name of its first palette\n\nAdds the palettes of an XML storage "
        "file to those of the process.");
    module.def(
        "import_palette",
        [](py::handle path) { return paletteArray(recordings::importPalette(pathText(path))); },
        py::arg("path"),
        "import_palette(path) -> N x 3 uint8\n\nA palette of another program: .csv, .pal, .gpl, .act or "
        ".lut.");
    module.def(
        "write_palette_file",
        [](py::handle path, const std::string& name, py::handle palette) {
            const auto points = colourPoints(palette, "palette");
            writeWhole(path, [&](Outputs& outputs, const std::string& file) {
                recordings::writePaletteFile(outputs.file(file), name, points);
            });
        },
        py::arg("path"), py::arg("name"), py::arg("palette"),
        "write_palette_file(path, name, palette)\n\nA file that load_palette_file reads.");
    module.def(
        "read_pixel_map",
        [](py::handle path, const py::object& shape) {
            const auto [rows, cols] = shape.is_none() ? std::pair(0, 0) : shape.cast<std::pair<int, int>>();
            return copied(recordings::readAnyMap(pathText(path), {cols, rows}));
        },
        py::arg("path"), py::arg("shape") = py::none(),
        "read_pixel_map(path, shape=None) -> rows x cols int32\n\n"
        "A .pgm or .npy of flags, a mask of any image format, or a .csv list of x,y, for which shape says "
        "how large "
        "the\n"
        "map is.");
    module.def(
        "write_pixel_map",
        [](py::handle path, py::handle map) {
            const cv::Mat pixels = view(map, "map", CV_32SC1);
            writeWhole(path, [&](Outputs& outputs, const std::string& file) {
                recordings::writeAnyMap(outputs, file, pixels);
            });
        },
        py::arg("path"), py::arg("map"),
        "write_pixel_map(path, map)\n\n"
        "By the ending: .pgm and .npy of flags, .png a mask, white where bad, .csv a list. Error for "
        "others.");
    module.def(
        "write_lens_map",
        [](py::handle path, py::handle map) {
            const cv::Mat channels = view(map, "map", CV_MAKETYPE(CV_16U, 6));
            writeWhole(path, [&](Outputs& outputs, const std::string& file) {
                recordings::writeLensMap(outputs.file(file), channels);
            });
        },
        py::arg("path"), py::arg("map"),
        "write_lens_map(path, map)\n\n"
        "rows x cols x 6 uint16 as a PAM file, which DistortionCorrection.load_pixel_corr_info_from_pxm "
        "reads.");
    module.def(
        "read_records", [](py::handle path) { return recordArray(recordings::readRecords(pathText(path))); },
        py::arg("path"), "read_records(path) -> records of BAD_PIXEL");
    module.def(
        "write_records",
        [](py::handle path, py::handle records) {
            const auto given = badPixels(records, "records");
            writeWhole(path, [&](Outputs& outputs, const std::string& file) {
                recordings::writeRecords(outputs.file(file), given);
            });
        },
        py::arg("path"), py::arg("records"), "write_records(path, records)");
}

} // namespace

void addRecordings(py::module_& module)
{
    addRecording(module);
    addWriters(module);
    addFiles(module);
}

} // namespace velmo::python
