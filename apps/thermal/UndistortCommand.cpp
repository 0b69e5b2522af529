#include "apps/thermal/Commands.h"
#include "apps/thermal/Error.h"
#include "apps/thermal/InputOptions.h"
#include "apps/thermal/OutputOptions.h"
#include "apps/thermal/SettingsOptions.h"
#include "camera/lens/LensMap.h"
#include "camera/settings/Parse.h"
#include "recordings/LensFile.h"
#include "recordings/PictureSink.h"
#include "vision/imgproc/DistortionCorrection.h"

#include <memory>
#include <optional>
#include <string>

namespace thermal {

using namespace velmo::camera;
using namespace velmo::recordings;

namespace {

using velmo::vision::DistortionCorrection;

struct UndistortOptions
{
    InputOptions input;
    SettingsOptions settings;
    std::string map;
    std::string make;
    std::string size;
    std::string out;
};

void make(const UndistortOptions& options)
{
    if (!options.input.inputs.empty() || !options.map.empty())
        throw UsageError("--make writes a map and reads no frames: leave out INPUT and --map");
    if (options.size.empty())
        throw UsageError("--make: give the size of the frames with --size WxH");
    const LensModel lens = LensModel::parse(options.make, "--make");
    Outputs outputs;
    OutputFile file = outputs.file(options.out);
    writeLensMap(std::move(file), makeLensMap(lens, parseSize(options.size, "--size")));
    outputs.commit();
}

DistortionCorrection loadMap(const std::string& path, cv::Size frame)
{
    try {
        return {path, frame.height, frame.width};
    } catch (const std::exception& error) {
        throw UsageError(path + ": " + error.what());
    }
}

void undistort(const UndistortOptions& options)
{
    if (!options.make.empty())
        return make(options);
    if (!options.size.empty())
        throw UsageError("--size belongs to --make");
    if (options.input.inputs.empty())
        throw UsageError("undistort needs INPUT, or --make for a new map");
    if (options.map.empty())
        throw UsageError("undistort needs --map FILE, or --make for a new map");
    Outputs outputs;
    outputs.protect({options.map});
    const auto source = options.input.open(outputs, options.settings.settings(outputs));
    const Scale scale = Scale::parse(source->unit());
    const auto sink = openFrameSink(outputs, options.out, source->count(), countsOf(scale));
    std::optional<DistortionCorrection> map;
    forEachFrame(*source, options.input.quiet, [&](Frame& frame) {
        if (!map)
            map = loadMap(options.map, frame.size());
        Frame straight = undistorted(frame, *map);
        scale.reorder(straight); // as files have it
        sink->write(straight);
    });
    sink->finish();
    outputs.commit();
}

} // namespace

void addUndistortCommand(const Command& program)
{
    auto options = std::make_shared<UndistortOptions>();
    const Command command =
        program.sub("undistort", "Straightens what the lens bends, or makes the map for it");
    options->input.addTo(command).required(false); // --make reads none
    command.option("--map", options->map, "The distortion map: a PAM file of six 16-bit channels")
        .form("FILE");
    command
        .option("--out", options->out,
                "Where the 16-bit frames go: a .tiff, .npy, .raw or .mkv of all, a .png or .pgm of one, or a "
                "folder; with --make the map file")
        .required()
        .form("PATH");
    command
        .option("--make", options->make,
                "Write a map for a lens of this radial model: K1,K2 bend it, FX,FY are focal lengths, "
                "CX,CY the middle, all four in pixels")
        .form("K1,K2,FX,FY,CX,CY");
    command.option("--size", options->size, "Size of the frames for --make").form("WxH");
    options->settings.addTo(command, {"temperature/unit"});
    command.run([options] { undistort(*options); });
}

} // namespace thermal
