#include "bindings/python/Arrays.h"
#include "bindings/python/Camera.h"
#include "bindings/python/Module.h"

#include "camera/colours/Palettes.h"
#include "core/memory/Overlap.h"
#include "vision/imgproc/ColorConvert.h"
#include "vision/imgproc/ColorPaletteConverter.h"
#include "vision/imgproc/ColorPaletteManager.h"

#include <pybind11/stl.h>

#include <memory>

namespace velmo::python {
namespace {

using namespace vision;
using Image = cv::Mat_<cv::Vec<unsigned char, 3>>;

struct Converter
{
    explicit Converter(bool bgr) : bBgr(bgr), converter(bgr) {}

    /// @param work  gets the frame and the picture
    template <class Work>
    py::object colour(py::handle frame, py::handle out, Work&& work)
    {
        const cv::Mat in = view(frame, "frame", CV_16UC1);
        Output output(out, in.size(), CV_8UC3, bBgr ? pictureClass() : py::handle());
        Image image = output.image();
        unlocked(mutex, [&] { work(ColorPaletteConverter::Frame(exp::untouched(in, image)), image); });
        output.image() = image;
        return output.array();
    }

    static unsigned short value(py::handle number, const char* name)
    {
        return static_cast<unsigned short>(inRange(number, name, 0, 65535));
    }

    py::object palletize(py::handle frame, py::handle min, py::handle max, py::handle palette, bool rebuild,
                         py::handle out)
    {
        const auto [low, high] = range(min, max);
        auto points = colourPoints(palette, "palette");
        return colour(frame, out, [&, low = low, high = high](const auto& in, Image& image) {
            converter.palletize(in, image, low, high, rebuild, points);
        });
    }

    py::object palletizeHumid(py::handle frame, float air, float humidity, py::handle palette, bool rebuild,
                              py::handle out)
    {
        auto points = colourPoints(palette, "palette");
        return colour(frame, out, [&](const auto& in, Image& image) {
            converter.palletizeHumid(in, image, ColorPaletteConverter::AirTemperature(air),
                                     ColorPaletteConverter::AirHumidity(humidity), rebuild, points);
        });
    }

    void buildTable(py::handle min, py::handle max, py::handle palette)
    {
        const auto [low, high] = range(min, max);
        auto points = colourPoints(palette, "palette");
        unlocked(mutex, [&, low = low, high = high] { converter.resizeLookupTable(low, high, points); });
    }

    void buildHumidTable(float air, float humidity, py::handle palette)
    {
        auto points = colourPoints(palette, "palette");
        unlocked(mutex, [&] {
            converter.resizeLookupTableHumid(ColorPaletteConverter::AirTemperature(air),
                                             ColorPaletteConverter::AirHumidity(humidity), points);
        });
    }

    void fillRegionsRgb(py::handle table)
    {
        const Image entries = writableView(table, "table", CV_8UC3);
        if (entries.rows != 1)
            throw py::value_error("table: " + std::to_string(entries.rows) + " rows, where 1 is needed");
        unlocked(mutex, [&] { converter.fillColorRegionsRgb(entries, 0, 65535); });
    }

    static std::pair<unsigned short, unsigned short> range(py::handle min, py::handle max)
    {
        const unsigned short low = value(min, "min"), high = value(max, "max");
        if (high < low)
            throw py::value_error("max: " + std::to_string(high) + " is below min, " + std::to_string(low));
        return {low, high};
    }

    bool bBgr;
    std::mutex mutex;
    ColorPaletteConverter converter;
};

void addConverter(py::module_& module)
{
    py::class_<Converter>(
        module, "ColorPaletteConverter",
        "ColorPaletteConverter(bgr=True)\n\n"
        "Turns 16-bit frames into false-colour pictures: a palette is stretched linearly over a range of "
        "frame\n"
        "values into a table with one entry per possible value, and a frame is coloured with one table read "
        "per\n"
        "pixel. Regions paint bands of values in a colour of their own over the palette.\n\n"
        "Holds the table, the regions and the last stretched palette; one object per stream. Pictures are "
        "rows x\n"
        "cols x 3 uint8: blue, green, red if `bgr`, otherwise red, green, blue. Palettes are N x 3 uint8: "
        "red,\n"
        "green, blue, the coldest first.")
        .def(py::init<bool>(), py::arg("bgr") = true)
        .def_readonly("bgr", &Converter::bBgr, "Whether pictures are blue, green, red.")
        .def("palletize", &Converter::palletize, py::arg("frame"), py::arg("min"), py::arg("max"),
             py::arg("palette"), py::arg("rebuild") = true, py::arg("out") = py::none(),
             "palletize(frame, min, max, palette, rebuild=True, out=None) -> rows x cols x 3 uint8\n\n"
             "Colours a frame, uint16 of any size; builds the table first if `rebuild`, otherwise min, max "
             "and\n"
             "palette change nothing and the colours of the last build stay.\n\n"
             "A frame whose pixel count is not a multiple of 4 takes a slower path instead: it always shows "
             "the\n"
             "palette and range of this very call, neither uses nor changes the table, shows `max` in the "
             "hottest\n"
             "colour (the table shows it in the second hottest), takes the bands of regions relative to "
             "`min`, and\n"
             "for bgr pictures shows region colours with red and blue exchanged; a band outside the range is "
             "an\n"
             "Error there.")
        .def(
            "palletize_fast",
            [](Converter& self, py::handle frame, py::handle out) {
                return self.colour(frame, out, [&](const auto& in, Image& image) {
                    self.converter.palletizeFast(in, image);
                });
            },
            py::arg("frame"), py::arg("out") = py::none(),
            "palletize_fast(frame, out=None) -> rows x cols x 3 uint8\n\n"
            "Colours a frame of any pixel count from the table as it is.")
        .def("resize_lookup_table", &Converter::buildTable, py::arg("min"), py::arg("max"),
             py::arg("palette"),
             "resize_lookup_table(min, max, palette)\n\n"
             "Builds the table: values below `min` in the coldest colour, from `max` on in the one that max "
             "- 1 has;\n"
             "then the regions.")
        .def("palletize_humid", &Converter::palletizeHumid, py::arg("frame"), py::arg("air_temperature"),
             py::arg("humidity"), py::arg("palette"), py::arg("rebuild") = true, py::arg("out") = py::none(),
             "palletize_humid(frame, air_temperature, humidity, palette, rebuild=True, out=None)\n\n"
             "Colours a frame of hundredths of a kelvin by the relative humidity that room air (degrees "
             "Celsius,\n"
             "0..100 percent) reaches at surfaces; the palette runs from 0 to 100 percent. A pixel count "
             "that is no\n"
             "multiple of 4 and air outside its limits are an Error.")
        .def("resize_lookup_table_humid", &Converter::buildHumidTable, py::arg("air_temperature"),
             py::arg("humidity"), py::arg("palette"),
             "resize_lookup_table_humid(air_temperature, humidity, palette)\n\n"
             "Builds the table for palletize_humid, in steps of a tenth of a percent.")
        .def(
            "fill_color_regions",
            [](Converter& self) { unlocked(self.mutex, [&] { self.converter.fillColorRegions(0, 65535); }); },
            "fill_color_regions()\n\nPaints all regions into the table.")
        .def("fill_color_regions_rgb", &Converter::fillRegionsRgb, py::arg("table"),
             "Paints all regions into a stretched palette, 1 x W x 3 uint8, in place; their bands are "
             "positions "
             "in it.\n"
             "Error for a band that leaves it.")
        .def(
            "create_color_region",
            [](Converter& self, py::handle id, py::handle upper, py::handle lower, py::handle color) {
                const auto key = static_cast<unsigned>(inRange(id, "id", 0, 0x7fffffff));
                const auto rgb = static_cast<unsigned>(inRange(color, "color", 0, 0xffffff));
                const auto high = Converter::value(upper, "upper"), low = Converter::value(lower, "lower");
                unlocked(self.mutex, [&] { self.converter.createColorRegion(key, high, low, rgb); });
            },
            py::arg("id"), py::arg("upper"), py::arg("lower"), py::arg("color"),
            "create_color_region(id, upper, lower, color)\n\n"
            "Adds region `id` or replaces it; ignored if upper < lower. Both ends are included; color is "
            "0xRRGGBB.\n"
            "It shows from the next table build on. Where regions overlap, the highest id wins.")
        .def(
            "delete_color_region",
            [](Converter& self, py::handle id) {
                const auto key = static_cast<unsigned>(inRange(id, "id", 0, 0x7fffffff));
                unlocked(self.mutex, [&] { self.converter.deleteColorRegion(key); });
            },
            py::arg("id"),
            "delete_color_region(id)\n\n"
            "Removes region `id` if there is one. What it painted stays until the next table build.")
        .def(py::pickle(
            [](const Converter& self) { return py::make_tuple(self.bBgr); },
            [](const py::tuple& state) { return std::make_unique<Converter>(state[0].cast<bool>()); }));
}

void addPalettes(py::module_& module)
{
    struct Class
    {};
    using Manager = ColorPaletteManager;
    py::class_<Class>(
        module, "ColorPaletteManager",
        "The false-colour palettes of the process, by name: twelve built-in ones, those a caller adds and\n"
        "those from files. A palette is N x 3 uint8: red, green, blue from the coldest to the hottest end.\n"
        "The first load_palettes or get_palette_colors registers the built-in palettes.")
        .def_static("get_supported_palettes_names", &Manager::getSupportedPalettesNames,
                    "Names of the palettes that a device offers to its user, in byte-wise order.")
        .def_static("get_available_color_palettes", &Manager::getAvailableColorPalettes,
                    "Names of all known palettes, in byte-wise order.")
        .def_static(
            "get_active_palette", [] { return Manager::m_strActivePalette; }, "Its name; Ironbow until set.")
        .def_static("set_active_palette", &Manager::setActivePalette, py::arg("name"),
                    "Error if the name is not supported.")
        .def_static("set_supported_color_palettes", &Manager::setSupportedColorPalettes, py::arg("names"),
                    "Makes available palettes supported, in addition to those that are.")
        .def_static(
            "add_palette",
            [](const std::string& name, py::handle colors) {
                Manager::addPalette(name, colourPoints(colors, "colors"));
            },
            py::arg("name"), py::arg("colors"),
            "Makes a palette available and supported; replaces one of the same name. A name has no \"/\".")
        .def_static("load_palettes", &Manager::loadPalettes, py::arg("files"),
                    "Registers the built-in palettes, then loads XML storage files in their order.")
        .def_static(
            "load_file", [](py::handle path) { Manager::loadFile(pathText(path)); }, py::arg("path"),
            "Makes every top-level entry of an XML storage file available and supported.")
        .def_static(
            "get_palette_colors",
            [](const std::string& name) { return paletteArray(Manager::getPaletteColors(name)); },
            py::arg("name"), "A copy of the colour points: N x 3 uint8. Error for an unknown name.");

    module.def("palette_names", &camera::paletteNames, "palette_names() -> the names of all palettes");
    module.def(
        "palette", [](const std::string& name) { return paletteArray(camera::findPalette(name)); },
        py::arg("name"),
        "palette(name) -> N x 3 uint8\n\n"
        "The colour points of a palette, red, green, blue, the coldest first; case does not matter. Error "
        "that\n"
        "lists the names there are.");
    module.def(
        "expand_palette",
        [](py::handle palette, py::handle colours) {
            const int count = inRange(colours, "colours", 1, 1 << 24);
            auto expanded = camera::expandPalette(colourPoints(palette, "palette"), count);
            for (cv::Vec3b& colour : expanded)
                std::swap(colour[0], colour[2]);
            return copied(cv::Mat(expanded).reshape(1), paletteClass());
        },
        py::arg("palette"), py::arg("colours"),
        "expand_palette(palette, colours) -> colours x 3 uint8\n\n"
        "The palette in so many colours, linear between its points, from its first to its last.");
}

struct Conversion
{
    const char* name;
    int channels;
    void (*convert)(const cv::Mat&, Image&);
    const char* doc;
};

/// Line by line: the conversions of buffers know no padding.
template <void (*convert)(void*, void*, unsigned long)>
void byLine(const cv::Mat& src, Image& dst)
{
    const cv::Mat in = exp::untouched(src, dst);
    for (int r = 0; r < in.rows; ++r)
        convert(const_cast<unsigned char*>(in.ptr(r)), dst.ptr(r), static_cast<unsigned long>(in.cols));
}

const Conversion conversions[] = {
    {"convert_yuyv_to_bgr", 2, &ColorConvert::convertYUYVToBGR,
     "YUYV, rows x cols x 2 (Y0 U Y1 V). Chroma lags: the first pixel of a pair takes the V of the pair "
     "before."},
    {"convert_uyvy_to_bgr", 2, &ColorConvert::convertUYVYToBGR,
     "Pairs of pixels in four bytes: chroma of red, first luma, chroma of blue, second luma; rows x cols x "
     "2.\n"
     "Cut to whole numbers. An odd number of pixels is an Error."},
    {"convert_uyvy_to_rgb", 2, &ColorConvert::convertUYVYToRGB, "As convert_uyvy_to_bgr, red first."},
    {"convert_uy1vy0_to_bgr", 2, &ColorConvert::convertUY1VY0ToBGR,
     "Pairs of pixels in four bytes: chroma of red, second luma, chroma of blue, first luma; rows x cols x "
     "2.\n"
     "Rounded, halves up. An odd number of pixels is an Error."},
    {"convert_uy1vy0_to_rgb", 2, &ColorConvert::convertUY1VY0ToRGB, "As convert_uy1vy0_to_bgr, red first."},
    {"convert_ycbcr_to_brg", 3, &ColorConvert::convertYCbCrtoBRG,
     "Y, Cb, Cr, rows x cols x 3, to blue, green, red, rounded, halves up."},
    {"convert_bgr888_to_ycbcr", 3, &byLine<&ColorConvert::convertBGR888ToYCbCr>,
     "Full-range Y, Cb, Cr of blue, green, red, rows x cols x 3."},
    {"convert_rgb_to_ycbcr", 3, &byLine<&ColorConvert::convertRGBToYCbCr>,
     "Full-range Y, Cb, Cr of red, green, blue, rows x cols x 3."},
};

py::object convertYCbCrToYuv2(py::handle src, py::handle out)
{
    const cv::Mat in = view(src, "src", CV_8UC3);
    if (in.cols % 2 != 0)
        throw py::value_error("src: " + std::to_string(in.cols) + " columns, where an even number is needed");
    Output output(out, in.size(), CV_8UC2);
    unlocked([&] {
        const cv::Mat image = exp::untouched(in, output.image());
        for (int r = 0; r < image.rows; ++r)
            ColorConvert::convertYCbCrtoYUV2(const_cast<unsigned char*>(image.ptr(r)), output.image().ptr(r),
                                             static_cast<unsigned long>(image.cols));
    });
    return output.array();
}

void addConversions(py::module_& module)
{
    struct Class
    {};
    py::class_<Class> convert(
        module, "ColorConvert",
        "Conversions between the layouts of visual sensors, video encoders and pictures, all of\n"
        "uint8. Each has its own coefficients and its own rounding; they are not inverse to one\n"
        "another to the last bit. `out` may be or overlap the source.");
    for (const Conversion& conversion : conversions)
        convert.def_static(
            conversion.name,
            [conversion](py::handle src, py::handle out) {
                const cv::Mat in = view(src, "src", CV_MAKETYPE(CV_8U, conversion.channels));
                Output output(out, in.size(), CV_8UC3);
                Image image = output.image();
                unlocked([&] { conversion.convert(in, image); });
                output.image() = image;
                return output.array();
            },
            py::arg("src"), py::arg("out") = py::none(), conversion.doc);
    convert.def_static(
        "convert_ycbcr_to_yuv2", &convertYCbCrToYuv2, py::arg("src"), py::arg("out") = py::none(),
        "Halves the chroma of Y, Cb, Cr, rows x cols x 3 with even cols: each pair of pixels becomes\n"
        "Cr of the second, Y of the second, Cb of the first, Y of the first; rows x cols x 2.");
    convert.def_static(
        "swap_rb",
        [](py::handle image) {
            cv::Mat pixels = writableView(image, "image", CV_8UC3);
            unlocked([&] { ColorConvert::swapRB(pixels); });
        },
        py::arg("image"), "Exchanges the first and the third channel of rows x cols x 3, in place.");
}

} // namespace

void addColours(py::module_& module)
{
    addConverter(module);
    addPalettes(module);
    addConversions(module);
}

} // namespace velmo::python
