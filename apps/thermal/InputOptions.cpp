#include "apps/thermal/InputOptions.h"

#include "apps/thermal/EachImage.h"
#include "camera/settings/Parse.h"

#include <CLI/App.hpp>

namespace thermal {

CLI::Option& InputOptions::addTo(CLI::App& command)
{
    CLI::Option& option =
        *command
             .add_option(
                 "INPUT", inputs,
                 "16-bit PGM, PNG or TIFF files, a folder of them, or a quoted pattern like 'run/*.pgm'; "
                 "with --raw also raw files, or - for standard input")
             ->required();
    command.add_option("--raw", raw, "The inputs are raw frames of this size, 16-bit little-endian values")
        ->type_name("WxH");
    addQuiet(command, quiet);
    return option;
}

std::unique_ptr<velmo::recordings::FrameSource> InputOptions::open() const
{
    if (raw.empty())
        for (const std::string& input : inputs)
            if (input == "-")
                throw UsageError("standard input is read as raw frames: give their size with --raw WxH");
    std::optional<cv::Size> size;
    if (!raw.empty())
        size = velmo::camera::parseSize(raw, "--raw");
    return velmo::recordings::openFrames(inputs, size);
}

void forEachFrame(velmo::recordings::FrameSource& source, bool quiet,
                  const std::function<void(velmo::recordings::Frame&)>& use)
{
    forEachImage<velmo::recordings::Frame>(source, quiet, use);
}

} // namespace thermal
