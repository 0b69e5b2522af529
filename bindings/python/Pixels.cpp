#include "bindings/python/Records.h"

#include "bindings/python/Arrays.h"
#include "bindings/python/Camera.h"
#include "bindings/python/Module.h"

#include "vision/imgproc/BadPixel.h"
#include "vision/imgproc/ConnectedComponent.h"
#include "vision/imgproc/DistortionCorrection.h"

#include <pybind11/stl.h>

#include <algorithm>
#include <map>
#include <memory>

namespace velmo::python {
namespace {

using exp::vision::BadPixel;
using exp::vision::BadPixelTools;
using exp::vision::ConnectedComponent;
using vision::DistortionCorrection;
using vision::PixelCorrInfo;

using Frame = cv::Mat_<short>;
using Map = cv::Mat_<int>;

Frame frameView(py::handle frame, const char* name = "frame")
{
    return view(frame, name, CV_16SC1);
}

/// The map that is changed in place; of the frame's size, as a new one could not be handed back.
Map mapView(py::handle map, cv::Size size)
{
    Map pixels = writableView(map, "map", CV_32SC1);
    if (pixels.size() != size)
        throw py::value_error("map: " + std::to_string(pixels.rows) + " x " + std::to_string(pixels.cols) +
                              ", where the frame is " + std::to_string(size.height) + " x " +
                              std::to_string(size.width));
    return pixels;
}

unsigned limit(py::handle number, const char* name)
{
    return static_cast<unsigned>(inRange(number, name, 0, 0x7fffffff));
}

py::object calculate(py::handle map, py::handle radius)
{
    const Map pixels = view(map, "map", CV_32SC1);
    const unsigned far = limit(radius, "radius");
    std::vector<BadPixel> records;
    unlocked([&] { records = BadPixelTools::calculateReplacePixels(pixels, far); });
    return recordArray(records);
}

py::object calculateSingle(py::handle map, py::handle x, py::handle y, py::handle radius)
{
    const Map pixels = view(map, "map", CV_32SC1);
    BadPixel record;
    record.pixel = {static_cast<short>(inRange(x, "x", 0, std::min(pixels.cols, 32768) - 1)),
                    static_cast<short>(inRange(y, "y", 0, std::min(pixels.rows, 32768) - 1))};
    const int far = inRange(radius, "radius", 0, 32767);
    bool found = false;
    unlocked([&] {
        found = BadPixelTools::calculateSingleReplacePixel(
            pixels, BadPixelTools::computeReplacePixelQuery(far), record);
    });
    return recordArray(found ? std::vector<BadPixel>{record} : std::vector<BadPixel>{});
}

py::object recalculate(py::handle records, py::handle map, py::handle radius)
{
    auto given = badPixels(records, "records");
    Map pixels = writableView(map, "map", CV_32SC1);
    const unsigned far = limit(radius, "radius");
    std::vector<BadPixel> found;
    unlocked([&] { found = BadPixelTools::recalculateReplacePixels(std::move(given), pixels, far); });
    return recordArray(found);
}

unsigned long detectByHistogram(py::handle frame, py::handle map, py::handle minCount)
{
    const Frame image = frameView(frame);
    Map pixels = mapView(map, image.size());
    const unsigned count = limit(minCount, "min_count");
    unsigned long found = 0;
    unlocked([&] { found = BadPixelTools::detectBadPixelHistogram(image, pixels, count); });
    return found;
}

void detectRowsAndColumns(py::handle map, py::handle perColumn, py::handle perRow)
{
    Map pixels = writableView(map, "map", CV_32SC1);
    const unsigned column = limit(perColumn, "max_bad_per_column"), row = limit(perRow, "max_bad_per_row");
    unlocked([&] { BadPixelTools::detectBadRowsAndColumns(pixels, column, row); });
}

void checkMonotonic(const py::sequence& frames, py::handle map)
{
    std::vector<Frame> images;
    for (const auto& frame : frames)
        images.push_back(frameView(frame, "frames"));
    Map pixels = images.empty() ? Map() : mapView(map, images.front().size());
    unlocked([&] { BadPixelTools::checkMonotonic(images, pixels); });
}

py::dict checkNetd(py::handle frame1, py::handle frame2, py::handle noise, py::handle map, double temp1,
                   double temp2, double factorResponsivity, double factorNoise, double factorNetd)
{
    const Frame first = frameView(frame1, "frame1"), second = frameView(frame2, "frame2"),
                deviation = frameView(noise, "noise");
    Map pixels = mapView(map, first.size());
    BadPixelTools::NetdCheckResults results;
    unlocked([&] {
        results = BadPixelTools::checkNetd(first, second, deviation, pixels, temp1, temp2, factorResponsivity,
                                           factorNoise, factorNetd);
    });
    py::dict figures;
    figures["mean_netd"] = results.dMeanNetd;
    figures["mean_responsivity"] = results.dMeanResponsivity;
    figures["mean_noise"] = results.dMeanNoise;
    figures["bad_pixels_found"] = results.bBadPixelsFound;
    return figures;
}

void addBadPixels(py::module_& module)
{
    struct Class
    {};
    py::class_<Class> tools(
        module, "BadPixelTools",
        "Finds defective pixels, finds good ones to replace them and carries the result to and from map "
        "images.\n\n"
        "A map is rows x cols int32: 0 is a good pixel, anything else holds the flags of those who rejected "
        "it.\n"
        "Detectors flag in the map that they are given, in place. Records are structured arrays of\n"
        "velmo.BAD_PIXEL: the pixel (x, y) and four replacements.");
    tools.attr("BAD_NETD") = BadPixelTools::u32BadNetd + 0;
    tools.attr("BAD_ROW_COL") = BadPixelTools::u32BadRowCol + 0;
    tools.attr("BAD_CURVE") = BadPixelTools::u32BadCurve + 0;
    tools.attr("BAD_HOMOGENITY") = BadPixelTools::u32BadHomogenity + 0;
    tools
        .def_static("calculate_replace_pixels", &calculate, py::arg("map"), py::arg("radius"),
                    "A record for every bad pixel of the map, line by line, with the nearest good pixel of "
                    "each quadrant\n"
                    "within `radius` pixels. Error if a bad pixel has no good one there.")
        .def_static("calculate_single_replace_pixel", &calculateSingle, py::arg("map"), py::arg("x"),
                    py::arg("y"), py::arg("radius"),
                    "The record of one pixel, or none if no pixel within `radius` is good. For a whole map\n"
                    "calculate_replace_pixels is faster.")
        .def_static("recalculate_replace_pixels", &recalculate, py::arg("records"), py::arg("map"),
                    py::arg("radius"),
                    "Marks the pixels of the records in the map, with BAD_HOMOGENITY alone in place of their "
                    "flags, and\n"
                    "returns the records of the whole map. Error if a record lies outside the map.")
        .def_static(
            "detect_bad_pixel_histogram", &detectByHistogram, py::arg("frame"), py::arg("map"),
            py::arg("min_count"),
            "Flags what lies outside the populated core of the histogram of an int16 frame that shows one\n"
            "temperature: bins of 2 % of the mean, outward from the fullest one until one holds fewer than\n"
            "`min_count` pixels. Returns how many pixels this call flagged.")
        .def_static("detect_bad_rows_and_columns", &detectRowsAndColumns, py::arg("map"),
                    py::arg("max_bad_per_column"), py::arg("max_bad_per_row"),
                    "Flags whole columns and rows that hold more bad pixels than the limits.")
        .def_static("check_monotonic", &checkMonotonic, py::arg("frames"), py::arg("map"),
                    "Flags pixels that do not rise from each int16 frame to the next, at rising temperature "
                    "of the scene.\n"
                    "Error if there are fewer than two frames or sizes differ.")
        .def_static(
            "check_netd", &checkNetd, py::arg("frame1"), py::arg("frame2"), py::arg("noise"), py::arg("map"),
            py::arg("temp1"), py::arg("temp2"), py::arg("factor_responsivity"), py::arg("factor_noise"),
            py::arg("factor_netd"),
            "Compares responsivity, noise and NETD of each pixel with the means over those that are good so "
            "far.\n"
            "frame1, frame2: int16, a uniform target at temp1 and temp2; noise: int16, of each pixel in "
            "digits.\n"
            "Factors say how far from the mean is good, relative to it. Returns a dict of mean_netd,\n"
            "mean_responsivity, mean_noise (not numbers if no pixel was good) and bad_pixels_found.")
        .def_static(
            "convert_bad_pixel_to_pxm_format",
            [](py::handle records) {
                return copied(BadPixelTools::convertBadPixelToPxmFormat(badPixels(records, "records")));
            },
            py::arg("records"),
            "The records as a map image: N x 10 int16. Error if there are more than 65535.")
        .def_static(
            "load_bad_pixel_from_pxm",
            [](py::handle path) { return recordArray(BadPixelTools::loadBadPixelFromPxm(pathText(path))); },
            py::arg("path"),
            "The records of a map image. Error if the file cannot be opened or is no such image.");
}

void addDistortion(py::module_& module)
{
    struct Class
    {};
    py::class_<Class>(
        module, "DistortionCorrection",
        "Lens-distortion maps: one record per pixel of the corrected image, row by row, as structured\n"
        "arrays of velmo.PIXEL_CORR_INFO: the offset to the linear index of the source pixel and the "
        "weights\n"
        "of it and its neighbours.")
        .def_static(
            "load_pixel_corr_info_from_pxm",
            [](py::handle path, py::handle height, py::handle width) {
                return recordArray(DistortionCorrection::loadPixelCorrInfoFromPxm(
                    pathText(path), inRange(height, "height", 0, 65535), inRange(width, "width", 0, 65535)));
            },
            py::arg("path"), py::arg("height") = 0, py::arg("width") = 0,
            "Reads a map: an image of the PxM family with six 16-bit channels. height, width: rows and "
            "columns that it\n"
            "should have, 0 does not check. Error if the file cannot be read or a source lies outside the "
            "image.");
}

using Components = std::map<int, ConnectedComponent>;
using Draw = void (*)(cv::Mat_<cv::Vec3b>&, const Components&, bool);

/// @param seed  None, or what the colours begin with
template <class Work>
void drawOn(py::handle canvas, const py::dict& components, py::handle seed, Work&& work)
{
    cv::Mat_<cv::Vec3b> picture = writableView(canvas, "canvas", CV_8UC3);
    const auto copies = components.cast<Components>();
    if (!seed.is_none())
        cv::theRNG() = cv::RNG(static_cast<std::uint64_t>(inRange(seed, "seed", 0, 0x7fffffff)));
    unlocked([&] { work(picture, copies); });
}

auto drawing(Draw draw)
{
    return [draw](py::handle canvas, const py::dict& components, bool clear, py::handle seed) {
        drawOn(canvas, components, seed,
               [&](auto& picture, const Components& copies) { draw(picture, copies, clear); });
    };
}

void addComponents(py::module_& module)
{
    py::class_<ConnectedComponent>(
        module, "ConnectedComponent",
        "ConnectedComponent(points=None, label=1)\n\n"
        "One blob: pixel positions, N x 2 int32 (x, y), in the order they came in, and what can be\n"
        "measured of them. Nothing is cached: every measure goes over the points again.")
        .def(py::init([](py::handle positions, py::handle label) {
                 const int number = inRange(label, "label", -0x7fffffffL - 1, 0x7fffffff);
                 return std::make_unique<ConnectedComponent>(
                     positions.is_none() ? std::vector<cv::Point>() : points(positions, "points"), number);
             }),
             py::arg("points") = py::none(), py::arg("label") = 1)
        .def_property(
            "label", &ConnectedComponent::getLabel,
            [](ConnectedComponent& self, py::handle label) {
                self.setLabel(static_cast<unsigned>(inRange(label, "label", 0, 0xffffffffL)));
            },
            "0 .. 2^32 - 1.")
        .def("__len__", &ConnectedComponent::getNrOfPoints)
        .def_property_readonly(
            "points", [](const ConnectedComponent& self) { return pointArray(self.getPoints()); },
            "A copy of the points: N x 2 int32.")
        .def(
            "add_point",
            [](ConnectedComponent& self, int x, int y) {
                self.addPoint({x, y});
            },
            py::arg("x"), py::arg("y"), "Appends a point.")
        .def("join", &ConnectedComponent::join, py::arg("other"),
             "Appends the points of `other`; the label stays.")
        .def_property_readonly(
            "center_of_gravity",
            [](const ConnectedComponent& self) {
                const cv::Point2d centre = self.getCenterOfGravity();
                return py::make_tuple(centre.x, centre.y);
            },
            "Mean x and mean y; (0, 0) without points.")
        .def_property_readonly(
            "elongation", &ConnectedComponent::getElongation,
            "Ratio of the smaller to the larger squared extent along the image axes: 1 for a blob as\n"
            "wide as it is tall. 0 without points; not a number if every point lies on the centre.")
        .def_property_readonly(
            "bounding_box",
            [](const ConnectedComponent& self) {
                const cv::Rect box = self.getBoundingBox();
                return py::make_tuple(box.x, box.y, box.width, box.height);
            },
            "(x, y, width, height) of the smallest rectangle that covers every pixel.")
        .def_property_readonly(
            "convex_hull", [](const ConnectedComponent& self) { return pointArray(self.getConvexHull()); },
            "N x 2 int32; empty without points.")
        .def_property_readonly(
            "pca",
            [](const ConnectedComponent& self) {
                const std::shared_ptr<cv::PCA> pca = self.getPCA();
                return py::make_tuple(copied(pca->mean), copied(pca->eigenvectors), copied(pca->eigenvalues));
            },
            "(mean, eigenvectors, eigenvalues), float32, the row coordinate first and the largest variance "
            "first.\n"
            "Error without points.")
        .def_static(
            "draw_components",
            [](py::handle canvas, const py::dict& components, bool circles, py::handle radius, bool clear,
               py::handle seed) {
                const int size = inRange(radius, "radius", -0x7fffffff, 0x7fffffff);
                drawOn(canvas, components, seed, [&](auto& picture, const Components& copies) {
                    ConnectedComponent::drawComponents(picture, copies, circles, size, clear);
                });
            },
            py::arg("canvas"), py::arg("components"), py::arg("draw_circles") = false, py::arg("radius") = 1,
            py::arg("clear") = false, py::arg("seed") = py::none(),
            "Paints every pixel of the components of a dict, each in a random colour, on rows x cols x 3 "
            "uint8, in place.\n"
            "draw_circles: also a circle of `radius` pixels around each. seed: of the colours. Error at the "
            "first\n"
            "component that has a pixel outside the canvas.")
        .def_static(
            "draw_component_hulls", drawing(&ConnectedComponent::drawComponentHulls), py::arg("canvas"),
            py::arg("components"), py::arg("clear") = false, py::arg("seed") = py::none(),
            "Draws the closed outline of the convex hull of every component, in place; see draw_components.")
        .def_static("draw_principal_components", drawing(&ConnectedComponent::drawPrincipalComponents),
                    py::arg("canvas"), py::arg("components"), py::arg("clear") = false,
                    py::arg("seed") = py::none(),
                    "Draws the two principal axes of every component, in place; see draw_components.")
        .def(py::pickle(
            [](const ConnectedComponent& self) {
                return py::make_tuple(pointArray(self.getPoints()), static_cast<int>(self.getLabel()));
            },
            [](const py::tuple& state) {
                return std::make_unique<ConnectedComponent>(points(py::object(state[0]), "points"),
                                                            state[1].cast<int>());
            }));
}

} // namespace

void addPixels(py::module_& module)
{
    addBadPixels(module);
    addDistortion(module);
    addComponents(module);
}

} // namespace velmo::python
