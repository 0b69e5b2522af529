#include "apps/thermal/OutputOptions.h"

#include <opencv2/imgproc.hpp>

#include <CLI/App.hpp>

namespace thermal {

void OutputOptions::addTo(CLI::App& command)
{
    command.add_option("--out", out, "Where the pictures go: a .png for one, an .avi, or a folder")
        ->required()
        ->type_name("PATH");
    command.add_option("--scale", scale, "Enlarge N times")
        ->check(CLI::Range(1, 16))
        ->capture_default_str()
        ->type_name("N");
    command.add_option("--fps", fps, "Pictures per second of an .avi")
        ->check(CLI::Range(0.1, 240.0))
        ->capture_default_str()
        ->type_name("N");
    command.add_flag("--quiet", quiet, "No progress bar");
}

std::unique_ptr<PictureSink> openSink(const OutputOptions& options, const FrameSource& source)
{
    return openSink(options.out, source.count(), options.fps);
}

Picture enlarged(const Picture& picture, int scale)
{
    if (scale == 1)
        return picture;
    Picture large;
    cv::resize(picture, large, {}, scale, scale, cv::INTER_NEAREST);
    return large;
}

} // namespace thermal
