#include "bindings/python/Adding.h"
#include "bindings/python/Module.h"
#include "bindings/python/Records.h"

#include "camera/drawing/ContactSheet.h"
#include "camera/drawing/Enlarge.h"
#include "camera/lens/LensMap.h"
#include "camera/measures/Fidelity.h"
#include "camera/measures/Noise.h"
#include "camera/measures/ShapeMeter.h"

#include <pybind11/stl.h>

namespace velmo::python {
namespace {

using camera::Shape;
using camera::ShapeMeter;

using Noise = Adding<camera::NoiseMeter>;
using Fidelity = Adding<camera::FidelityMeter>;

py::dict noiseFigures(Noise& self)
{
    const camera::NoiseFigures figures = self.with([](auto& meter) { return meter.figures(); });
    py::dict dict;
    dict["frames"] = figures.frames;
    dict["shape"] = py::make_tuple(figures.size.height, figures.size.width);
    dict["low"] = figures.low;
    dict["high"] = figures.high;
    dict["temporal"] = figures.temporal;
    dict["columns_in_time"] = figures.columnsInTime;
    dict["rows_in_time"] = figures.rowsInTime;
    dict["columns"] = figures.columns;
    dict["rows"] = figures.rows;
    dict["pattern"] = figures.pattern;
    dict["slow"] = figures.slow;
    dict["unchanged"] = figures.unchanged;
    dict["unchanged_mean"] = figures.unchangedMean;
    dict["common_columns"] = figures.commonColumns;
    dict["common_rows"] = figures.commonRows;
    dict["drift"] = figures.drift;
    return dict;
}

void addMeters(py::module_& module)
{
    py::class_<Noise>(
        module, "NoiseMeter",
        "Measures the noise of a stream frame by frame, in counts, in memory for a few frames: in time and\n"
        "from pixel to pixel, stripes and drift apart.")
        .def(py::init<>())
        .def(
            "add", &Noise::add, py::arg("frame"),
            "add(frame)\n\nThe next frame, uint16. Error if the size differs from that of the frames before.")
        .def("figures", &noiseFigures,
             "figures() -> dict of frames, shape, low, high, temporal (noise of a pixel in time), "
             "columns_in_time and\n"
             "rows_in_time (stripes that change), columns and rows (that stay), pattern (pixel to pixel), "
             "slow (noise over the whole recording), common_columns and common_rows (stripes that both "
             "halves of "
             "a frame\n"
             "have), unchanged and unchanged_mean (share of pixels, and of those of a rounded running mean), "
             "drift (of the\n"
             "level, first to last frame); nan where there are too few frames");
    py::class_<Fidelity>(
        module, "FidelityMeter",
        "Compares a stream frame by frame with the same stream after filters that keep its size.")
        .def(py::init<>())
        .def(
            "add",
            [](Fidelity& self, py::handle before, py::handle after) {
                const cv::Mat raw = countsView(before, "before"), clean = countsView(after, "after");
                if (raw.size() != clean.size())
                    throw py::value_error("after: not as large as before");
                unlocked(self.mutex, [&] { self.meter.add(raw, clean); });
            },
            py::arg("before"), py::arg("after"), "add(before, after)\n\nBoth uint16 of one shape.")
        .def(
            "figures",
            [](Fidelity& self) {
                const auto figures = self.with([](auto& meter) { return meter.figures(); });
                py::dict dict;
                dict["edges"] = figures.edges;
                dict["ghosting"] = figures.ghosting;
                dict["bias"] = figures.bias;
                dict["bias_of_most"] = figures.biasOfMost;
                return dict;
            },
            "figures() -> dict of edges (how steep the steepest still are, 1 is unchanged), ghosting (how "
            "far "
            "the\n"
            "picture lags behind what moves, in frames), bias and bias_of_most (how far the mean went, over "
            "all\n"
            "frames and in 95 % of them, in counts); nan where there is nothing to judge by");
}

Shape::Kind kindOf(const std::string& name)
{
    for (const auto& [known, kind] : {std::pair("spot", Shape::Kind::Spot),
                                      {"box", Shape::Kind::Box},
                                      {"line", Shape::Kind::Line},
                                      {"polygon", Shape::Kind::Polygon},
                                      {"whole", Shape::Kind::Whole}})
        if (name == known)
            return kind;
    throw py::value_error("kind: '" + name +
                          "', where 'spot', 'box', 'line', 'polygon' or 'whole' is needed");
}

py::dict figuresOf(const camera::Figures& figures)
{
    const auto place = [](cv::Point at) { return py::make_tuple(at.x, at.y); };
    py::dict dict;
    dict["pixels"] = figures.pixels;
    dict["without"] = figures.without;
    dict["low"] = figures.low;
    dict["low_at"] = place(figures.lowAt);
    dict["mean"] = figures.mean;
    dict["high"] = figures.high;
    dict["high_at"] = place(figures.highAt);
    dict["deviation"] = figures.deviation;
    dict["p5"] = figures.p5;
    dict["p50"] = figures.p50;
    dict["p95"] = figures.p95;
    return dict;
}

struct Shapes
{
    Shapes(const camera::Scale& scale, const std::string& degrees)
        : meter(camera::Thermometer(scale, camera::Degrees::parse(degrees)))
    {}

    std::string add(const std::string& kind, const std::string& text)
    {
        Shape shape = Shape::parse(kindOf(kind), text);
        const std::lock_guard lock(mutex);
        meter.add(std::move(shape));
        return meter.entries().back().name;
    }

    py::dict measure(py::handle frame)
    {
        const cv::Mat image = countsView(frame);
        std::vector<ShapeMeter::Entry> entries;
        std::vector<ShapeMeter::Delta> deltas;
        unlocked(mutex, [&] {
            meter.measure(image);
            entries = meter.entries();
            deltas = meter.deltas();
        });
        py::dict dict;
        for (const auto& entry : entries)
            dict[py::str(entry.name)] = figuresOf(entry.figures);
        for (const auto& delta : deltas)
            dict[py::str(delta.name)] = delta.difference;
        return dict;
    }

    std::mutex mutex;
    ShapeMeter meter;
};

void addShapes(py::module_& module)
{
    py::class_<Shapes>(module, "ShapeMeter",
                       "ShapeMeter(scale=Scale(), degrees=\"C\")\n\n"
                       "Measures parts of frames, frame after frame of a stream. Numbers are in the degrees "
                       "of the scale, C, K\n"
                       "or F, and counts if it has none.")
        .def(py::init<const camera::Scale&, const std::string&>(), py::arg("scale") = camera::Scale(),
             py::arg("degrees") = "C")
        .def("add", &Shapes::add, py::arg("kind"), py::arg("text") = "",
             "add(kind, text=\"\") -> its name: spot1, spot2, box1\n\n"
             "spot: \"X,Y\" or \"X,Y:R\"; box: \"X,Y,W,H\"; line: \"X1,Y1,X2,Y2\"; polygon: "
             "\"X1,Y1,X2,Y2,X3,Y3,...\"; whole.\n"
             "Error for any other text.")
        .def(
            "add_delta",
            [](Shapes& self, const std::string& text) {
                const std::lock_guard lock(self.mutex);
                self.meter.addDelta(text);
            },
            py::arg("text"), "add_delta(text)\n\nThe mean of one shape less that of another: \"box1-box2\".")
        .def("measure", &Shapes::measure, py::arg("frame"),
             "measure(frame) -> dict of dicts by name: pixels, without (a temperature), low, low_at, mean, "
             "high, high_at,\n"
             "deviation, p5, p50, p95; a number for each delta\n\n"
             "frame: uint16. Error if a shape leaves it.");
}

void addDrawing(py::module_& module)
{
    module.def(
        "make_lens_map",
        [](double k1, double k2, double fx, double fy, double cx, double cy, std::pair<int, int> shape) {
            const cv::Size size(inRange(py::int_(shape.second), "shape", 1, 16384),
                                inRange(py::int_(shape.first), "shape", 1, 16384));
            cv::Mat map;
            unlocked([&] { map = camera::makeLensMap({k1, k2, fx, fy, cx, cy}, size); });
            return copied(map);
        },
        py::arg("k1"), py::arg("k2"), py::arg("fx"), py::arg("fy"), py::arg("cx"), py::arg("cy"),
        py::arg("shape"),
        "make_lens_map(k1, k2, fx, fy, cx, cy, shape) -> rows x cols x 6 uint16\n\n"
        "The map that undoes a lens: a point at distance r from the axis, in focal lengths, is seen at\n"
        "r (1 + k1 r^2 + k2 r^4). fx, fy: focal lengths, cx, cy: the axis, in pixels. As write_lens_map "
        "keeps it.");
    module.def(
        "undistort",
        [](py::handle frame, py::handle map) {
            const cv::Mat image = countsView(frame);
            const vision::DistortionCorrection correction(pixelCorrInfo(map, "map"));
            camera::Frame straight;
            unlocked([&] { straight = camera::undistorted(image, correction); });
            return copied(straight);
        },
        py::arg("frame"), py::arg("map"),
        "undistort(frame, map) -> rows x cols uint16\n\n"
        "Applies a distortion map, records of PIXEL_CORR_INFO, to a frame of its size. Error for one of "
        "another size.");
    module.def(
        "enlarge",
        [](py::handle picture, py::handle scale) {
            const cv::Mat image = view(picture, "picture", CV_8UC3);
            const int times = inRange(scale, "scale", 1, 16);
            cv::Mat large;
            unlocked([&] { large = camera::enlarged(image, times); });
            return copied(large, pictureClass());
        },
        py::arg("picture"), py::arg("scale"),
        "enlarge(picture, scale) -> Picture; every pixel becomes a square");
    module.def(
        "contact_sheet",
        [](const std::vector<std::pair<std::string, py::object>>& pictures, const std::string& title,
           py::handle columns) {
            camera::ContactSheet sheet(title, inRange(columns, "columns", 1, 1000));
            for (const auto& [name, picture] : pictures)
                sheet.add(name, view(picture, "picture", CV_8UC3).clone());
            return copied(sheet.draw(), pictureClass());
        },
        py::arg("pictures"), py::arg("title") = "", py::arg("columns") = 3,
        "contact_sheet(pictures, title=\"\", columns=3) -> Picture\n\n"
        "One picture that shows many, (title, rows x cols x 3 uint8) each, in cells as large as the "
        "largest.");
}

} // namespace

void addMeasures(py::module_& module)
{
    addMeters(module);
    addShapes(module);
    addDrawing(module);
}

} // namespace velmo::python
