#include "apps/thermal/CameraFiles.h"
#include "apps/thermal/Commands.h"
#include "apps/thermal/Error.h"
#include "apps/thermal/InputOptions.h"
#include "apps/thermal/NoiseTables.h"
#include "apps/thermal/SettingsOptions.h"
#include "apps/thermal/Table.h"
#include "camera/drawing/ContactSheet.h"
#include "camera/drawing/Enlarge.h"
#include "camera/measures/Judgement.h"
#include "camera/measures/Peers.h"
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
    bool simulate = false;
    bool anchors = false;
    std::size_t skip = 0;
};

/// So much of a recording is kept in memory for what is measured on it again and again.
constexpr std::size_t nKeptFrames = 100;
constexpr std::size_t nKeptBytes = std::size_t{64} << 20;

class KeptFrames
{
public:
    void add(const Frame& frame)
    {
        if (m_vecFrames.size() < nKeptFrames &&
            (m_vecFrames.size() + 1) * frame.total() * frame.elemSize() <= nKeptBytes)
            m_vecFrames.push_back(frame.clone());
    }
    const std::vector<Frame>& frames() const { return m_vecFrames; }

private:
    std::vector<Frame> m_vecFrames;
};

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
    NoiseReading reading(ChosenUnit(settings, source->unit()).thermometer);
    forEachFrame(*source, options.input.quiet, [&](const Frame& frame) {
        if (seen++ < options.skip)
            return;
        meter.add(frame);
        reading.lookAt(frame);
    });
    requireFrames(meter.figures(), options);
    measured(meter.figures(), reading).print(std::cout, options.format);
}

/// Fresh chains of what the settings ask for; of --denoise if that is nothing.
FilterMaker chainMaker(Settings settings, Outputs& outputs)
{
    const Calibration calibration = readFilesOf(settings, outputs);
    if (Chain(settings, calibration).size() == 0)
        settings.set("noise/denoise", "normal");
    return [=] {
        return
            [chain = std::make_shared<Chain>(settings, calibration)](Frame& frame) { chain->apply(frame); };
    };
}

Filter pass()
{
    return [](Frame&) {};
}

/// Everything on the frames that are kept, for each filter alike.
std::vector<Judged> judgeAll(const FilterMaker& make, const std::vector<Frame>& frames,
                             const NoiseOptions& options)
{
    if (frames.size() <= options.skip)
        throw UsageError("--skip: --anchors looks at " + std::to_string(frames.size()) + " frames");
    std::vector<Judged> judged{{"before", judge(pass, frames, options.skip)},
                               {"after", judge(make, frames, options.skip)}};
    const double noise = judged.front().figures.slow;
    for (const Peer& peer : peers(std::isnan(noise) ? 0 : noise))
        judged.push_back({peer.name, judge(peer.settings.front(), frames, options.skip)});
    return judged;
}

void compare(const NoiseOptions& options, const Settings& settings, Outputs& outputs)
{
    const FilterMaker make = chainMaker(settings, outputs);
    const Filter filter = make();
    NoiseMeter before;
    NoiseMeter after;
    FidelityMeter unfiltered;
    FidelityMeter fidelity;
    KeptFrames kept;
    Frame lastBefore;
    Frame lastAfter;
    std::size_t seen = 0;
    const auto source = options.input.open(outputs, settings);
    const Thermometer thermometer = ChosenUnit(settings, source->unit()).thermometer;
    NoiseReading reading(thermometer);
    forEachFrame(*source, options.input.quiet, [&](Frame& frame) {
        lastBefore = frame.clone();
        kept.add(frame);
        filter(frame);
        lastAfter = frame;
        if (seen++ < options.skip)
            return;
        before.add(lastBefore);
        reading.lookAt(lastBefore);
        after.add(frame);
        if (frame.size() == lastBefore.size()) {
            unfiltered.add(lastBefore, lastBefore);
            fidelity.add(lastBefore, frame);
        }
    });
    requireFrames(before.figures(), options);
    tellOfSingleFrame(settings, seen);
    if (!options.out.empty())
        writePicture(outputs, options.out, comparison(settings, thermometer, lastBefore, lastAfter));
    outputs.commit();
    const bool sameSize = lastAfter.size() == lastBefore.size();
    if (options.anchors && sameSize)
        return compared(judgeAll(make, kept.frames(), options), reading).print(std::cout, options.format);
    const std::vector<Frame> none;
    const std::vector<Frame>& frames = sameSize ? kept.frames() : none;
    compared({{"before", {before.figures(), unfiltered.figures(), trialsOf(pass, frames, options.skip)}},
              {"after", {after.figures(), fidelity.figures(), trialsOf(make, frames, options.skip)}}},
             reading)
        .print(std::cout, options.format);
}

/// The mean of all frames of a recording.
Frame meanOf(FrameSource& source, bool quiet)
{
    cv::Mat_<double> sum;
    int count = 0;
    forEachFrame(source, quiet, [&](const Frame& frame) {
        cv::Mat_<double> values;
        frame.convertTo(values, CV_64F);
        if (count++ > 0 && values.size() != sum.size())
            throw UsageError("the frames differ in size, they are no recording of one camera");
        sum = count == 1 ? values : cv::Mat_<double>(sum + values);
    });
    Frame mean;
    sum.convertTo(mean, CV_16U, 1.0 / count);
    return mean;
}

void simulate(const NoiseOptions& options, const Settings& settings, Outputs& outputs)
{
    const FilterMaker make = chainMaker(settings, outputs);
    Frame picture;
    if (!options.input.inputs.empty())
        picture = meanOf(*options.input.open(outputs, settings), options.input.quiet);
    simulated(make, picture, options.anchors, options.input.quiet).print(std::cout, options.format);
}

void noise(const NoiseOptions& options)
{
    Outputs outputs;
    const Settings settings = options.settings.settings(outputs);
    if (options.simulate)
        return simulate(options, settings, outputs);
    if (options.input.inputs.empty())
        throw UsageError("INPUT is required");
    if (options.compare)
        return compare(options, settings, outputs);
    if (Chain(settings).size() > 0 || !settings.text("pixels/records").empty() ||
        !settings.text("pixels/flat").empty())
        throw UsageError("filters change what is measured: add --compare");
    if (!options.out.empty())
        throw UsageError("--out draws before and after: add --compare");
    if (options.anchors)
        throw UsageError("--anchors stand beside other filters: add --compare or --simulate");
    measure(options, settings, outputs);
}

} // namespace

void addNoiseCommand(const Command& program)
{
    auto options = std::make_shared<NoiseOptions>();
    const Command command = program.sub("noise", "Measures the noise of a recording");
    options->input.addTo(command).required(false); // --simulate has scenes of its own
    const Option compare =
        command.flag("--compare", options->compare,
                     "Measure before and after the filters; those of --denoise if none are given");
    command
        .flag("--simulate", options->simulate,
              "Measure how far the filters are from the truth, in simulated scenes; with INPUT in that one")
        .excludes(compare);
    command.flag("--anchors", options->anchors,
                 "With --compare or --simulate: filters of OpenCV beside it; takes minutes");
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
