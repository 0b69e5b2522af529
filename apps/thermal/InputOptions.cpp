#include "apps/thermal/InputOptions.h"

#include "apps/thermal/EachImage.h"
#include "apps/thermal/Terminal.h"
#include "camera/colours/Range.h"
#include "camera/settings/Parse.h"
#include "camera/temperature/ChosenUnit.h"

#include <iostream>
#include <utility>

namespace thermal {
namespace {

using velmo::camera::ChosenUnit;
using velmo::camera::Frame;
using velmo::camera::Settings;
using velmo::recordings::FrameSource;
using velmo::recordings::Outputs;
using velmo::recordings::RawFormat;

RawFormat parseRawFormat(const std::string& text)
{
    const std::string ending = ":be";
    const bool bigEndian =
        text.size() > ending.size() && text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
    const std::string size = bigEndian ? text.substr(0, text.size() - ending.size()) : text;
    return {velmo::camera::parseSize(size, "--raw"), bigEndian};
}

cv::Range parseRows(const std::string& text)
{
    const auto ends = velmo::camera::parseForm(text, "--rows", {{"A", {}, 0, 16384}, {"B", {}, 0, 16384}});
    if (ends[0] >= ends[1])
        throw UsageError("--rows: '" + text + "' has no row: B is the first that is left out");
    return {static_cast<int>(ends[0]), static_cast<int>(ends[1])};
}

/// Frames whose values are in the order of what they mean in a unit.
class MeaningfulFrames : public FrameSource
{
public:
    MeaningfulFrames(std::unique_ptr<FrameSource> source, const ChosenUnit& unit)
        : m_pSource(std::move(source)), m_oScale(unit.seen), m_oDegrees(unit.thermometer.degrees())
    {}

    bool next(Frame& frame) override
    {
        if (!m_pSource->next(frame))
            return false;
        m_oScale.reorder(frame);
        if (!std::exchange(m_bLookedAt, true) && m_oScale.hasDegrees())
            doubt(frame);
        return true;
    }

    std::optional<std::size_t> count() const override { return m_pSource->count(); }
    std::string name() const override { return m_pSource->name(); }
    std::vector<std::string> files() const override { return m_pSource->files(); }
    std::string unit() const override { return m_oScale.text(); }
    std::string remark() const override { return m_pSource->remark(); }

private:
    void doubt(const Frame& frame) const
    {
        std::vector<unsigned> histogram;
        const unsigned short median = velmo::camera::percentiles(frame, 50, 50, histogram).low;
        if (const std::string doubt = m_oScale.doubt(median, m_oDegrees); !doubt.empty())
            std::cerr << complaint("warning: " + doubt) << std::flush;
    }

    std::unique_ptr<FrameSource> m_pSource;
    velmo::camera::Scale m_oScale;
    velmo::camera::Degrees m_oDegrees;
    bool m_bLookedAt = false;
};

std::unique_ptr<FrameSource> openAll(const InputOptions& input, Outputs& outputs, bool anyUnit)
{
    if (input.raw.empty())
        for (const std::string& each : input.inputs)
            if (each == "-")
                throw UsageError("standard input is read as raw frames: give their size with --raw WxH");
    velmo::recordings::ReadOptions options;
    options.anyUnit = anyUnit;
    if (!input.raw.empty())
        options.raw = parseRawFormat(input.raw);
    if (!input.rows.empty())
        options.rows = parseRows(input.rows);
    auto source = velmo::recordings::openFrames(input.inputs, options);
    outputs.protect(source->files());
    return source;
}

} // namespace

Option InputOptions::addTo(const Command& command)
{
    const Option option =
        command
            .option(
                "INPUT", inputs,
                "16-bit PGM, PNG, TIFF or .npy files, a folder of them, a quoted pattern like 'run/*.pgm', "
                "or a film of grey values; with --raw raw files, or - for standard input")
            .required();
    command
        .option("--raw", raw,
                "The inputs are raw frames of this size, 16-bit values, low byte first; with :be the "
                "high one")
        .form("WxH[:be]");
    command
        .option("--rows", rows,
                "Only the rows from A to before B are picture: for cameras that add rows of telemetry")
        .form("A:B");
    addQuiet(command, quiet);
    return option;
}

std::unique_ptr<FrameSource> InputOptions::open(Outputs& outputs, const Settings& settings) const
{
    auto source = openAll(*this, outputs, settings.text("temperature/unit") != "auto");
    const ChosenUnit unit(settings, source->unit());
    if (!unit.radiometry.empty())
        std::cerr << complaint(unit.radiometry) << std::flush;
    return std::make_unique<MeaningfulFrames>(std::move(source), unit);
}

void forEachFrame(velmo::recordings::FrameSource& source, bool quiet,
                  const std::function<void(velmo::recordings::Frame&)>& use)
{
    forEachImage<velmo::recordings::Frame>(source, quiet, use);
}

} // namespace thermal
