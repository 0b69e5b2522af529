#include "camera/pixels/PixelSearch.h"

#include "bindings/python/Adding.h"
#include "bindings/python/Module.h"
#include "bindings/python/Records.h"

#include "camera/pixels/FlatField.h"
#include "camera/pixels/PixelDetection.h"
#include "camera/pixels/PixelOverlay.h"
#include "camera/pixels/Replacements.h"

#include <memory>

namespace velmo::python {
namespace {

using Detection = Adding<camera::PixelDetection>;
using Flat = Adding<camera::FlatLearner>;
using Search = Adding<camera::PixelSearch>;

py::dict findings(Search& self)
{
    const camera::PixelFindings found = self.with([](auto& search) { return search.find(); });
    py::dict dict;
    dict["faults"] = copied(found.faults);
    dict["deviations"] = copied(found.deviations);
    dict["clusters"] = copied(found.clusters);
    dict["frames"] = found.frames;
    dict["map"] = copied(found.map());
    dict["list"] = found.list();
    dict["overshot"] = found.overshot();
    return dict;
}

py::dict faultFlags()
{
    py::dict flags;
    for (const camera::PixelReason& fault : camera::pixelFaults())
        flags[fault.name] = fault.flag;
    return flags;
}

void addSearch(py::module_& module)
{
    py::class_<Search>(
        module, "PixelSearch",
        "PixelSearch(shutter=None)\n\n"
        "Looks for defective pixels in a recording of anything, in one pass and without a choice to make. "
        "One\n"
        "frame is enough for dead pixels, rows and columns, and those that stand out by far; from five "
        "frames on\n"
        "noise and response are judged too.\n\n"
        "shutter: uint16, what the sensor shows of a closed shutter, for frames that were never corrected.")
        .def(py::init([](py::handle shutter) {
                 return std::make_unique<Search>(shutter.is_none()
                                                     ? camera::Frame()
                                                     : camera::Frame(countsView(shutter, "shutter").clone()));
             }),
             py::arg("shutter") = py::none())
        .def("add", &Search::add, py::arg("frame"),
             "add(frame)\n\nuint16. Error for fewer than 5 x 5 pixels and for a frame of another size.")
        .def("find", &findings,
             "find() -> dict of what the frames so far tell: faults (rows x cols int32, FAULTS; 0 "
             "is good),\n"
             "deviations (float32, how far out), clusters (int32, how many defective pixels touch each "
             "other), frames,\n"
             "map (int32, flags of BadPixelTools), list (comma-separated values, a line for each), overshot "
             "(the fault\n"
             "that was found too often to be true, mostly empty). Error without frames.")
        .attr("FAULTS") = faultFlags();
}

void addPixelDetection(py::module_& module)
{
    py::class_<Detection>(module, "PixelDetection",
                          "PixelDetection(min_count=0, monotony=False, offset=0)\n\n"
                          "Looks for bad pixels in a recording, frame by frame.\n\n"
                          "min_count: of a populated bin of the histogram; 0 leaves this detector out.\n"
                          "monotony: the recording is a series at rising temperature.\n"
                          "offset: taken off every value: what is left makes the bins, 2 % of its mean.")
        .def(py::init([](py::handle minCount, bool monotony, py::handle offset) {
                 return std::make_unique<Detection>(
                     static_cast<std::size_t>(inRange(minCount, "min_count", 0, 0x7fffffff)), monotony,
                     inRange(offset, "offset", 0, 65535));
             }),
             py::arg("min_count") = 0, py::arg("monotony") = false, py::arg("offset") = 0)
        .def("add", &Detection::add, py::arg("frame"),
             "add(frame)\n\nuint16. Error for a frame of another size.")
        .def(
            "map", [](Detection& self) { return copied(self.with([](auto& meter) { return meter.map(); })); },
            "map() -> rows x cols int32: 0 is a good pixel, other values are flags of the detectors");
}

void addFlatLearner(py::module_& module)
{
    py::class_<Flat>(
        module, "FlatLearner",
        "Learns how far each pixel of an uncorrected sensor is off, of frames of the closed shutter, or of "
        "anything\n"
        "else that is as warm everywhere; of frames at another temperature how strongly it responds, too.")
        .def(py::init<>())
        .def("add", &Flat::add, py::arg("frame"),
             "add(frame)\n\nOf the shutter, uint16. Error for fewer than 5 x 5 pixels and for a frame of "
             "another "
             "size.")
        .def(
            "add_other",
            [](Flat& self, py::handle frame) {
                const cv::Mat image = countsView(frame);
                unlocked(self.mutex, [&] { self.meter.addOther(image); });
            },
            py::arg("frame"), "add_other(frame)\n\nAt another temperature, uint16. Error as above.")
        .def(
            "learn",
            [](Flat& self) {
                return planesArray(self.with([](auto& learner) { return learner.learn().planes(); }));
            },
            "learn() -> 3 x rows x cols float32: what each pixel reads of the shutter, its gain, flags of "
            "BadPixelTools\n\n"
            "For Camera(flat=...), and for numpy.save as a file for Camera and 'thermal --flat'. Error "
            "without a "
            "frame\n"
            "of the shutter, and where both temperatures are so close that responses are mostly noise.");
}

void addMaps(py::module_& module)
{
    module.def(
        "replacements_of",
        [](py::handle map, py::handle radius) {
            const cv::Mat pixels = view(map, "map", CV_32SC1);
            const auto far = static_cast<unsigned>(inRange(radius, "radius", 1, 16384));
            camera::Replacements found;
            unlocked([&] { found = camera::replacementsOf(pixels, far); });
            return recordArray(found.records);
        },
        py::arg("map"), py::arg("radius") = camera::u32UsualRadius,
        "replacements_of(map, radius=5) -> records of BAD_PIXEL\n\n"
        "As BadPixelTools.calculate_replace_pixels, but a pixel in the midst of a cluster takes the nearest "
        "good "
        "ones,\n"
        "however far. Error if no pixel is good.");
    module.def(
        "pixel_list", [](py::handle map) { return camera::pixelList(view(map, "map", CV_32SC1)); },
        py::arg("map"),
        "pixel_list(map) -> a line of comma-separated values for each bad pixel: x, y, flags, reasons");
    module.def(
        "draw_bad_pixels",
        [](py::handle frame, py::handle map) {
            const cv::Mat image = countsView(frame), pixels = view(map, "map", CV_32SC1);
            if (image.size() != pixels.size())
                throw py::value_error("map: not as large as the frame");
            cv::Mat picture;
            unlocked([&] { picture = camera::drawBadPixels(image, pixels); });
            return copied(picture, pictureClass());
        },
        py::arg("frame"), py::arg("map"),
        "draw_bad_pixels(frame, map) -> Picture\n\nThe frame, enlarged, with its bad pixels in the colours "
        "of their reasons.");
}

} // namespace

void addPixelSearch(py::module_& module)
{
    addSearch(module);
    addPixelDetection(module);
    addFlatLearner(module);
    addMaps(module);
}

} // namespace velmo::python
