#include "apps/thermal/CameraFiles.h"
#include "apps/thermal/Commands.h"
#include "apps/thermal/Error.h"
#include "apps/thermal/InputOptions.h"
#include "apps/thermal/SettingsOptions.h"
#include "apps/thermal/Table.h"
#include "camera/drawing/ContactSheet.h"
#include "camera/drawing/Enlarge.h"
#include "camera/measures/Fidelity.h"
#include "camera/measures/Noise.h"
#include "camera/measures/Statistics.h"
#include "recordings/PictureSink.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace thermal {

using namespace velmo::camera;
using namespace velmo::recordings;

namespace {

struct NoiseOptions
{
    InputOptions input;
    SettingsOptions settings;
    TableFormat format;
    std::string out;
    bool compare = false;
    std::size_t skip = 0;
};

struct Row
{
    const char* name;
    const char* key;
    double NoiseFigures::*figure;
    bool isValue = false; ///< otherwise a difference, which has no zero point
};

constexpr Row rows[] = {
    {"temporal noise per pixel", "temporal", &NoiseFigures::temporal},
    {"slow noise per pixel", "slow", &NoiseFigures::slow},
    {"column stripes", "columns", &NoiseFigures::columns},
    {"row stripes", "rows", &NoiseFigures::rows},
    {"column stripes in time", "columns_in_time", &NoiseFigures::columnsInTime},
    {"row stripes in time", "rows_in_time", &NoiseFigures::rowsInTime},
    {"fixed pattern per pixel", "pattern", &NoiseFigures::pattern},
    {"drift of the level", "drift", &NoiseFigures::drift},
    {"least value", "min", &NoiseFigures::low, true},
    {"greatest value", "max", &NoiseFigures::high, true},
};

/// Figures in what people read.
class Reading
{
public:
    explicit Reading(Thermometer thermometer) : m_oThermometer(std::move(thermometer)) {}

    /// Noise is turned into degrees by what a count is around the middle of a frame.
    void lookAt(const Frame& frame)
    {
        std::vector<unsigned> histogram;
        m_u16Around = percentiles(frame, 50, 50, histogram).low;
    }

    double of(const Row& row, const NoiseFigures& figures) const
    {
        const double counts = figures.*row.figure;
        return m_oThermometer.rounded(row.isValue
                                          ? m_oThermometer.read(cv::saturate_cast<unsigned short>(counts))
                                          : m_oThermometer.readDifference(counts, m_u16Around));
    }

    std::string heading() const
    {
        return "measure (" + (m_oThermometer.hasDegrees() ? m_oThermometer.unit().substr(1) : "counts") + ")";
    }

    std::string key(const Row& row) const { return row.key + m_oThermometer.key(); }
    bool inDegrees() const { return m_oThermometer.hasDegrees(); }
    int decimals() const { return m_oThermometer.hasDegrees() ? 3 : 2; }

private:
    Thermometer m_oThermometer;
    unsigned short m_u16Around = 0;
};

Table measured(const NoiseFigures& figures, const Reading& reading)
{
    Table table({{reading.heading(), "measure"}, {"key", "key"}, {"value", "value", reading.decimals()}});
    for (const Row& row : rows)
        table.add({std::string(row.name), reading.key(row), reading.of(row, figures)});
    table.add({std::string("frames"), std::string("frames"), static_cast<double>(figures.frames)});
    return table;
}

Table compared(const NoiseFigures& before, const NoiseFigures& after, const FidelityFigures& fidelity,
               const Reading& reading)
{
    constexpr double dNone = std::numeric_limits<double>::quiet_NaN();
    Table table({{reading.heading(), "measure"},
                 {"key", "key"},
                 {"before", "before", reading.decimals()},
                 {"after", "after", reading.decimals()},
                 {"after/before", "ratio", 2}});
    for (const Row& row : rows) {
        const double old = reading.of(row, before), now = reading.of(row, after);
        const bool bRatio = old > 0 && !(row.isValue && reading.inDegrees()); // none of two temperatures
        table.add({std::string(row.name), reading.key(row), old, now, bRatio ? now / old : dNone});
    }
    table.add(
        {std::string("slope of edges (share)"), std::string("edges"), 1.0, fidelity.edges, fidelity.edges});
    table.add(
        {std::string("lag of what moves (frames)"), std::string("ghosting"), 0.0, fidelity.ghosting, dNone});
    return table;
}

/// Small frames are enlarged until they can be looked at.
Picture legible(const Picture& picture)
{
    return enlarged(picture, std::clamp(480 / std::max(1, picture.cols), 1, 6));
}

/// What the filters took away, around mid-grey. A level that they follow late is left out: it would hide
/// the rest.
Picture removedPicture(const Frame& before, const Frame& after)
{
    constexpr int s32Middle = 32768;
    constexpr int s32LeastReach = 4;
    cv::Mat_<double> difference;
    cv::subtract(before, after, difference, cv::noArray(), CV_64F);
    Frame shifted;
    cv::Mat(difference - (medianOf(difference) - s32Middle)).convertTo(shifted, CV_16U);
    std::vector<unsigned> histogram;
    const ValueRange range = percentiles(shifted, 1, 99, histogram);
    const int reach =
        std::clamp(std::max(s32Middle - range.low, range.high - s32Middle), s32LeastReach, s32Middle - 1);
    return Colouring(findPalette("Grayscale"))
        .paint(shifted, {static_cast<unsigned short>(s32Middle - reach),
                         static_cast<unsigned short>(s32Middle + reach)});
}

Picture comparison(const Settings& settings, const Thermometer& thermometer, const Frame& before,
                   const Frame& after)
{
    Colouring colouring(settings, thermometer);
    const ValueRange range = RangeRule(settings, thermometer).of(before);
    ContactSheet sheet("", after.size() == before.size() ? 3 : 2);
    sheet.add("before", legible(colouring.paint(before, range)));
    sheet.add("after", legible(colouring.paint(after, range)));
    if (after.size() == before.size())
        sheet.add("taken away", legible(removedPicture(before, after)));
    return sheet.draw();
}

void requireFrames(const NoiseFigures& figures, const NoiseOptions& options)
{
    if (figures.frames == 0)
        throw UsageError("--skip: " + std::to_string(options.skip) + " frames are all there are");
}

void measure(const NoiseOptions& options, const Settings& settings, Outputs& outputs)
{
    NoiseMeter meter;
    std::size_t seen = 0;
    const auto source = options.input.open(outputs, settings);
    Reading reading(ChosenUnit(settings, source->unit()).thermometer);
    forEachFrame(*source, options.input.quiet, [&](const Frame& frame) {
        if (seen++ < options.skip)
            return;
        meter.add(frame);
        reading.lookAt(frame);
    });
    requireFrames(meter.figures(), options);
    measured(meter.figures(), reading).print(std::cout, options.format);
}

void compare(const NoiseOptions& options, Settings settings, Outputs& outputs)
{
    const Calibration calibration = readFilesOf(settings, outputs);
    Chain chain(settings, calibration);
    if (chain.size() == 0) {
        settings.set("noise/denoise", "normal");
        chain = Chain(settings, calibration);
    }
    NoiseMeter before;
    NoiseMeter after;
    FidelityMeter fidelity;
    Frame lastBefore;
    Frame lastAfter;
    std::size_t seen = 0;
    const auto source = options.input.open(outputs, settings);
    const Thermometer thermometer = ChosenUnit(settings, source->unit()).thermometer;
    Reading reading(thermometer);
    forEachFrame(*source, options.input.quiet, [&](Frame& frame) {
        lastBefore = frame.clone();
        chain.apply(frame);
        lastAfter = frame;
        if (seen++ < options.skip)
            return;
        before.add(lastBefore);
        reading.lookAt(lastBefore);
        after.add(frame);
        if (frame.size() == lastBefore.size())
            fidelity.add(lastBefore, frame);
    });
    requireFrames(before.figures(), options);
    tellOfSingleFrame(settings, seen);
    if (!options.out.empty())
        writePicture(outputs, options.out, comparison(settings, thermometer, lastBefore, lastAfter));
    outputs.commit();
    compared(before.figures(), after.figures(), fidelity.figures(), reading).print(std::cout, options.format);
}

void noise(const NoiseOptions& options)
{
    Outputs outputs;
    const Settings settings = options.settings.settings(outputs);
    if (options.compare)
        return compare(options, settings, outputs);
    if (Chain(settings).size() > 0 || !settings.text("pixels/records").empty() ||
        !settings.text("pixels/flat").empty())
        throw UsageError("filters change what is measured: add --compare");
    if (!options.out.empty())
        throw UsageError("--out draws before and after: add --compare");
    measure(options, settings, outputs);
}

} // namespace

void addNoiseCommand(const Command& program)
{
    auto options = std::make_shared<NoiseOptions>();
    const Command command = program.sub("noise", "Measures the noise of a recording");
    options->input.addTo(command);
    command.flag("--compare", options->compare,
                 "Measure before and after the filters; those of --denoise if none are given");
    options->settings.addTo(command, {"temperature", "pixels", "noise", "frame", "colours"});
    command
        .option("--out", options->out, "With --compare: draw the last frame before and after into this .png")
        .form("PATH");
    command
        .option("--skip", options->skip,
                "Filter the first N frames but measure from the next one on, so that "
                "filters have learnt")
        .showDefault()
        .form("N");
    options->format.addTo(command);
    command.run([options] { noise(*options); });
}

} // namespace thermal
