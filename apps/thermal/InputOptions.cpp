#include "apps/thermal/InputOptions.h"

#include "apps/thermal/EachImage.h"
#include "camera/settings/Parse.h"

#include <CLI/App.hpp>

namespace thermal {
namespace {

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

} // namespace

CLI::Option& InputOptions::addTo(CLI::App& command)
{
    CLI::Option& option =
        *command
             .add_option(
                 "INPUT", inputs,
                 "16-bit PGM, PNG, TIFF or .npy files, a folder of them, a quoted pattern like 'run/*.pgm', "
                 "or a film of grey values; with --raw raw files, or - for standard input")
             ->required();
    command
        .add_option("--raw", raw,
                    "The inputs are raw frames of this size, 16-bit values, low byte first; with :be the "
                    "high one")
        ->type_name("WxH[:be]");
    command
        .add_option("--rows", rows,
                    "Only the rows from A to before B are picture: for cameras that add rows of telemetry")
        ->type_name("A:B");
    addQuiet(command, quiet);
    return option;
}

std::unique_ptr<velmo::recordings::FrameSource> InputOptions::open(velmo::recordings::Outputs& outputs) const
{
    if (raw.empty())
        for (const std::string& input : inputs)
            if (input == "-")
                throw UsageError("standard input is read as raw frames: give their size with --raw WxH");
    velmo::recordings::ReadOptions options;
    if (!raw.empty())
        options.raw = parseRawFormat(raw);
    if (!rows.empty())
        options.rows = parseRows(rows);
    auto source = velmo::recordings::openFrames(inputs, options);
    outputs.protect(source->files());
    return source;
}

void forEachFrame(velmo::recordings::FrameSource& source, bool quiet,
                  const std::function<void(velmo::recordings::Frame&)>& use)
{
    forEachImage<velmo::recordings::Frame>(source, quiet, use);
}

} // namespace thermal
