#pragma once

#include "tests/Support.h"

#include "vision/imgproc/ColorConvert.h"
#include "vision/imgproc/ColorPaletteConverter.h"
#include "vision/imgproc/DownSize.h"
#include "vision/imgproc/SpatialNoiseRemover.h"
#include "vision/imgproc/StaticPatternRemover.h"
#include "vision/imgproc/TemporalNoiseReduction.h"
#include "vision/imgproc/TemporalNoiseReductionRef.h"

/// A filter or a conversion: what everything that turns one matrix into another has in common.
class Filter
{
public:
    virtual ~Filter() = default;

    /// Writes into `out` if that has the right size and type already.
    virtual void process(const cv::Mat& in, cv::Mat& out) = 0;

    virtual std::unique_ptr<Filter> copied() const = 0;
    virtual std::unique_ptr<Filter> moved() = 0;
    virtual void assign(const Filter& other) = 0;
    virtual void take(Filter& other) = 0;
};

template <class Object>
class FilterOf : public Filter
{
public:
    using Run = void (*)(Object&, const cv::Mat&, cv::Mat&);

    FilterOf(Object object, Run run) : m_oObject(std::move(object)), m_pRun(run) {}

    void process(const cv::Mat& in, cv::Mat& out) override { m_pRun(m_oObject, in, out); }
    std::unique_ptr<Filter> copied() const override { return std::make_unique<FilterOf>(*this); }
    std::unique_ptr<Filter> moved() override { return std::make_unique<FilterOf>(std::move(*this)); }
    void assign(const Filter& other) override { *this = static_cast<const FilterOf&>(other); }
    void take(Filter& other) override { *this = static_cast<FilterOf&&>(other); }

private:
    Object m_oObject;
    Run m_pRun;
};

/// A kind of filter, and what frames it takes.
struct FilterKind
{
    const char* name;
    std::function<std::unique_ptr<Filter>()> make;
    int type;            ///< of its frames
    bool bInPlace;       ///< works on the frame that it is given
    int multiple = 1;    ///< of pixels
    cv::Size fixed = {}; ///< the only size it takes, if it does
};

inline void PrintTo(const FilterKind& kind, std::ostream* out)
{
    *out << kind.name;
}

namespace filters {

using namespace velmo::exp::vision;
using namespace velmo::vision;

using Signed = cv::Mat_<short>;
using Unsigned = cv::Mat_<unsigned short>;
using Image = cv::Mat_<cv::Vec3b>;

/// What the static operations are members of.
struct Stateless
{};

template <class Object>
FilterKind kind(const char* name, const Object& object, typename FilterOf<Object>::Run run, int type,
                bool inPlace = false, int multiple = 1, cv::Size fixed = {})
{
    return {name, [=] { return std::make_unique<FilterOf<Object>>(object, run); }, type, inPlace, multiple,
            fixed};
}

/// One that reads a matrix and writes another of type Out.
template <class Out, class Object, void (*call)(Object&, const cv::Mat&, Out&)>
void between(Object& object, const cv::Mat& in, cv::Mat& out)
{
    Out result = out;
    call(object, in, result);
    out = result;
}

template <class Object>
void denoise(Object& filter, const cv::Mat& in, Signed& out)
{
    filter.process(Signed(in), out);
}

template <class Pixel, class Object>
void inPlace(Object& filter, const cv::Mat& in, cv::Mat& out)
{
    in.copyTo(out);
    cv::Mat_<Pixel> frame = out;
    filter.process(frame);
}

template <void (*resize)(Signed&, Signed&)>
void shrink(Stateless&, const cv::Mat& in, Signed& out)
{
    Signed frame = in;
    resize(frame, out);
}

template <void (*conversion)(const cv::Mat&, Image&)>
void convert(Stateless&, const cv::Mat& in, Image& out)
{
    conversion(in, out);
}

inline void swapRb(Stateless&, const cv::Mat& in, cv::Mat& out)
{
    in.copyTo(out);
    ColorConvert::swapRB(out);
}

inline void palettize(ColorPaletteConverter& converter, const cv::Mat& in, Image& out)
{
    static std::vector<unsigned char> palette = {0, 0, 90, 250, 10, 0, 255, 255, 240};
    converter.palletize(Unsigned(in), out, 20, 80, true, palette);
}

inline void palettizeHumid(ColorPaletteConverter& converter, const cv::Mat& in, Image& out)
{
    static std::vector<unsigned char> palette = {0, 0, 90, 250, 10, 0, 255, 255, 240};
    const ColorPaletteConverter::AirTemperature air(-272.8f);
    const ColorPaletteConverter::AirHumidity humidity(50.0f);
    converter.palletizeHumid(Unsigned(in), out, air, humidity, false, palette);
}

template <class Pixel>
FilterKind temporal(const char* name, unsigned short factor)
{
    using Object = TemporalNoiseReduction<Pixel>;
    return kind(name, Object(12, factor), inPlace<Pixel, Object>, cv::DataType<Pixel>::type, true);
}

template <class Pixel>
FilterKind reference(const char* name)
{
    using Object = TemporalNoiseReductionRef<Pixel>;
    return kind(name, Object(12, 1500), inPlace<Pixel, Object>, cv::DataType<Pixel>::type, true);
}

} // namespace filters

/// Frames for all of them hold values from 0 to 100.
inline std::vector<FilterKind> everyFilter()
{
    using namespace filters;
    using Spatial = SpatialNoiseRemover;
    using Pattern = StaticPatternRemover;
    using Palettes = ColorPaletteConverter;
    const auto smooth = between<Signed, Spatial, denoise<Spatial>>;
    const auto image = [](const char* name, auto convert, int channels, int multiple) {
        return kind(name, Stateless(), convert, CV_8UC(channels), false, multiple);
    };
    const cv::Size large(240, 180);
    return {
        kind("SpatialOff", Spatial(0), smooth, CV_16SC1),
        kind("Spatial", Spatial(20), smooth, CV_16SC1),
        kind("StaticPattern", Pattern(90, 20, 25), between<Signed, Pattern, denoise<Pattern>>, CV_16SC1),
        temporal<short>("TemporalSigned", 1500),
        temporal<short>("TemporalSignedMax", 2048),
        temporal<unsigned short>("TemporalUnsigned", 1500),
        temporal<unsigned short>("TemporalUnsignedMax", 2048),
        reference<short>("ReferenceSigned"),
        reference<unsigned short>("ReferenceUnsigned"),
        kind("TwoThirds", Stateless(), between<Signed, Stateless, shrink<DownSize::resize240To160>>, CV_16SC1,
             false, 1, large),
        kind("Half", Stateless(), between<Signed, Stateless, shrink<DownSize::resize240To120>>, CV_16SC1,
             false, 1, large),
        kind("PaletteRgb", Palettes(false), between<Image, Palettes, palettize>, CV_16UC1),
        kind("PaletteBgr", Palettes(true), between<Image, Palettes, palettize>, CV_16UC1),
        kind("Humidity", Palettes(true), between<Image, Palettes, palettizeHumid>, CV_16UC1, false, 4),
        image("YuyvToBgr", between<Image, Stateless, convert<ColorConvert::convertYUYVToBGR>>, 2, 1),
        image("UyvyToBgr", between<Image, Stateless, convert<ColorConvert::convertUYVYToBGR>>, 2, 2),
        image("UyvyToRgb", between<Image, Stateless, convert<ColorConvert::convertUYVYToRGB>>, 2, 2),
        image("Uy1vy0ToBgr", between<Image, Stateless, convert<ColorConvert::convertUY1VY0ToBGR>>, 2, 2),
        image("Uy1vy0ToRgb", between<Image, Stateless, convert<ColorConvert::convertUY1VY0ToRGB>>, 2, 2),
        image("YcbcrToBgr", between<Image, Stateless, convert<ColorConvert::convertYCbCrtoBRG>>, 3, 1),
        kind("SwapRb", Stateless(), swapRb, CV_8UC3, true),
    };
}
