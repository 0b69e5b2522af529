#include "apps/thermal/OutputOptions.h"

namespace thermal {

void OutputOptions::addTo(const Command& command)
{
    command
        .option("--out", out, "Where the pictures go: a .png for one, a film (.mp4, .mkv, .avi), or a folder")
        .required()
        .form("PATH");
    addFps(command, fps);
}

void addForce(const Command& command, bool& force)
{
    command.flag("--force", force, "Replace files that join --out and are there already; never an input");
}

Option addFps(const Command& command, double& fps)
{
    return command.option("--fps", fps, "Pictures per second of a film")
        .between(0.1, 240.0)
        .showDefault()
        .form("N");
}

velmo::recordings::FrameFormat countsOf(const velmo::camera::Scale& scale)
{
    velmo::recordings::FrameFormat format;
    format.unit = scale.hasDegrees() ? scale.text() : "";
    return format;
}

std::unique_ptr<velmo::recordings::ImageWriter>
OutputOptions::open(velmo::recordings::Outputs& outputs, const velmo::recordings::FrameSource& source) const
{
    return velmo::recordings::openSink(outputs, out, source.count(), fps);
}

} // namespace thermal
