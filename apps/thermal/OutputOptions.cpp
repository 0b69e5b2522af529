#include "apps/thermal/OutputOptions.h"

#include <CLI/App.hpp>

namespace thermal {

void OutputOptions::addTo(CLI::App& command)
{
    command
        .add_option("--out", out,
                    "Where the pictures go: a .png for one, a film (.mp4, .mkv, .avi), or a folder")
        ->required()
        ->type_name("PATH");
    addFps(command, fps);
}

void addForce(CLI::App& command, bool& force)
{
    command.add_flag("--force", force, "Replace files that join --out and are there already; never an input");
}

CLI::Option& addFps(CLI::App& command, double& fps)
{
    return *command.add_option("--fps", fps, "Pictures per second of a film")
                ->check(CLI::Range(0.1, 240.0))
                ->capture_default_str()
                ->type_name("N");
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
