#include "apps/thermal/CameraFiles.h"
#include "apps/thermal/Commands.h"
#include "apps/thermal/Error.h"
#include "apps/thermal/InputOptions.h"
#include "apps/thermal/OutputOptions.h"
#include "apps/thermal/SettingsOptions.h"

#include <memory>
#include <string>

namespace thermal {

using namespace velmo::camera;
using namespace velmo::recordings;

namespace {

struct CleanOptions
{
    InputOptions input;
    SettingsOptions settings;
    std::string out;
    double fps = 9;
    std::string format;
    bool celsius = false;
};

/// What the values of a frame mean in degrees Celsius.
cv::Mat_<float> celsiusOf(const Frame& frame, const Scale& scale)
{
    cv::Mat_<float> degrees(frame.size());
    for (int r = 0; r < frame.rows; ++r)
        for (int c = 0; c < frame.cols; ++c)
            degrees[r][c] = scale.celsius(frame[r][c]);
    return degrees;
}

FrameFormat formatOf(const CleanOptions& options, const ChosenUnit& unit)
{
    if (options.celsius && !unit.thermometer.hasDegrees())
        throw UsageError("--celsius-float: the recording names no unit, say it with --unit");
    FrameFormat format = countsOf(unit.seen);
    format.files = options.format;
    format.degrees = options.celsius;
    format.fps = options.fps;
    return format;
}

void clean(const CleanOptions& options)
{
    Outputs outputs;
    const Settings settings = options.settings.settings(outputs);
    const auto source = options.input.open(outputs, settings);
    Camera camera = openCamera(settings, outputs, *source);
    const auto sink = openFrameSink(outputs, options.out, source->count(), formatOf(options, camera.unit()));
    Frame counts;
    std::size_t frames = 0;
    forEachFrame(*source, options.input.quiet, [&](const Frame& raw) {
        const Frame& frame = camera.clean(raw);
        ++frames;
        if (options.celsius)
            return sink->write(celsiusOf(frame, camera.thermometer().scale()));
        frame.copyTo(counts);
        camera.unit().seen.reorder(counts); // as files have it
        sink->write(counts);
    });
    sink->finish();
    outputs.commit();
    tellOfSingleFrame(settings, frames);
}

} // namespace

void addCleanCommand(const Command& program)
{
    auto options = std::make_shared<CleanOptions>();
    const Command command =
        program.sub("clean", "Writes the frames behind the filters, with all their 16 bits");
    options->input.addTo(command);
    command
        .option("--out", options->out,
                "Where the frames go: a .tiff, .npy, .raw or .mkv of all, a .png or .pgm of one, a folder, "
                "or - for raw frames to standard output")
        .required()
        .form("PATH");
    command.option("--format", options->format, "What a folder gets; png if nothing is said")
        .oneOf({"png", "pgm"})
        .form("png|pgm");
    command.flag("--celsius-float", options->celsius,
                 "Degrees Celsius of the objects as 32-bit floats, into a .tiff or .npy");
    addFps(command, options->fps);
    options->settings.addTo(command, {"temperature", "pixels", "noise", "frame"});
    command.run([options] { clean(*options); });
}

} // namespace thermal
