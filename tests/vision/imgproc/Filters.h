#pragma once

#include "tests/Support.h"
#include "vision/imgproc/ColorConvert.h"
#include "vision/imgproc/ColorPaletteConverter.h"
#include "vision/imgproc/DownSize.h"
#include "vision/imgproc/SpatialNoiseRemover.h"
#include "vision/imgproc/StaticPatternRemover.h"
#include "vision/imgproc/TemporalNoiseReduction.h"
#include "vision/imgproc/TemporalNoiseReductionRef.h"

#include <any>

/// A kind of filter or conversion, and what frames it takes: what everything that turns one matrix into
/// another has in common.
struct FilterKind
{
    const char* name;
    std::any filter; ///< a new one
    int type;        ///< of its frames
    bool bInPlace;   ///< works on the frame that it is given
    int multiple;    ///< of pixels
    cv::Size fixed;  ///< the only size it takes, if it does

    /// Writes into `out` if that has the right size and type already.
    std::function<void(std::any&, const cv::Mat& in, cv::Mat& out)> process;

    std::function<std::any(std::any&)> moved;
    std::function<void(std::any&to, std::any&from)> copy, move; ///< assignments

    friend void PrintTo(const FilterKind& kind, std::ostream* out) { *out << kind.name; }
};

namespace filters {

using namespace velmo::exp::vision;
using namespace velmo::vision;

using Signed = cv::Mat_<short>;
using Image = cv::Mat_<cv::Vec3b>;

/// What the static operations are members of.
struct Stateless
{};

template <class Object, class Run>
FilterKind kind(const char* name, const Object& object, Run run, int type, bool inPlace = false,
                int multiple = 1, cv::Size fixed = {})
{
    const auto of = [](std::any& filter) -> Object& { return std::any_cast<Object&>(filter); };
    return {name,
            object,
            type,
            inPlace,
            multiple,
            fixed,
            [=](std::any& filter, const cv::Mat& in, cv::Mat& out) { run(of(filter), in, out); },
            [=](std::any& filter) { return std::any(std::move(of(filter))); },
            [=](std::any& to, std::any& from) { of(to) = std::as_const(of(from)); },
            [=](std::any& to, std::any& from) { of(to) = std::move(of(from)); }};
}

/// Writes into `out` through a matrix of another type.
template <class Out, class Write>
void written(cv::Mat& out, Write write)
{
    Out result = out;
    write(result);
    out = result;
}

const auto denoise = [](auto& filter, const cv::Mat& in, cv::Mat& out) {
    written<Signed>(out, [&](Signed& result) { filter.process(Signed(in), result); });
};

/// A temporal filter, which works in place.
template <template <class> class Temporal, class Pixel>
FilterKind temporal(const char* name, unsigned short factor)
{
    const auto run = [](Temporal<Pixel>& filter, const cv::Mat& in, cv::Mat& out) {
        in.copyTo(out);
        cv::Mat_<Pixel> frame = out;
        filter.process(frame);
    };
    return kind(name, Temporal<Pixel>(12, factor), run, cv::DataType<Pixel>::type, true);
}

inline FilterKind shrinking(const char* name, void (*resize)(Signed&, Signed&))
{
    const auto run = [=](Stateless&, const cv::Mat& in, cv::Mat& out) {
        Signed frame = in;
        written<Signed>(out, [&](Signed& result) { resize(frame, result); });
    };
    return kind(name, Stateless(), run, CV_16SC1, false, 1, {240, 180});
}

inline FilterKind conversion(const char* name, void (*convert)(const cv::Mat&, Image&), int channels,
                             int multiple)
{
    const auto run = [=](Stateless&, const cv::Mat& in, cv::Mat& out) {
        written<Image>(out, [&](Image& result) { convert(in, result); });
    };
    return kind(name, Stateless(), run, CV_8UC(channels), false, multiple);
}

inline FilterKind palette(const char* name, bool bgr, bool humidity)
{
    const auto run = [=](ColorPaletteConverter& converter, const cv::Mat& in, cv::Mat& out) {
        static std::vector<unsigned char> points = {0, 0, 90, 250, 10, 0, 255, 255, 240};
        const ColorPaletteConverter::AirTemperature air(-272.8f);
        written<Image>(out, [&](Image& result) {
            humidity ? converter.palletizeHumid(in, result, air, ColorPaletteConverter::AirHumidity(50.0f),
                                                false, points)
                     : converter.palletize(in, result, 20, 80, true, points);
        });
    };
    return kind(name, ColorPaletteConverter(bgr), run, CV_16UC1, false, humidity ? 4 : 1);
}

} // namespace filters

/// Frames for all of them hold values from 0 to 100.
inline std::vector<FilterKind> everyFilter()
{
    using namespace filters;
    const auto swapRb = [](Stateless&, const cv::Mat& in, cv::Mat& out) {
        in.copyTo(out);
        ColorConvert::swapRB(out);
    };
    return {
        kind("SpatialOff", SpatialNoiseRemover(0), denoise, CV_16SC1),
        kind("Spatial", SpatialNoiseRemover(20), denoise, CV_16SC1),
        kind("StaticPattern", StaticPatternRemover(90, 20, 25), denoise, CV_16SC1),
        temporal<TemporalNoiseReduction, short>("TemporalSigned", 1500),
        temporal<TemporalNoiseReduction, short>("TemporalSignedMax", 2048),
        temporal<TemporalNoiseReduction, unsigned short>("TemporalUnsigned", 1500),
        temporal<TemporalNoiseReduction, unsigned short>("TemporalUnsignedMax", 2048),
        temporal<TemporalNoiseReductionRef, short>("ReferenceSigned", 1500),
        temporal<TemporalNoiseReductionRef, unsigned short>("ReferenceUnsigned", 1500),
        shrinking("TwoThirds", DownSize::resize240To160),
        shrinking("Half", DownSize::resize240To120),
        palette("PaletteRgb", false, false),
        palette("PaletteBgr", true, false),
        palette("Humidity", true, true),
        conversion("YuyvToBgr", ColorConvert::convertYUYVToBGR, 2, 1),
        conversion("UyvyToBgr", ColorConvert::convertUYVYToBGR, 2, 2),
        conversion("UyvyToRgb", ColorConvert::convertUYVYToRGB, 2, 2),
        conversion("Uy1vy0ToBgr", ColorConvert::convertUY1VY0ToBGR, 2, 2),
        conversion("Uy1vy0ToRgb", ColorConvert::convertUY1VY0ToRGB, 2, 2),
        conversion("YcbcrToBgr", ColorConvert::convertYCbCrtoBRG, 3, 1),
        kind("SwapRb", Stateless(), swapRb, CV_8UC3, true),
    };
}
