#pragma once

#include "apps/thermal/Options.h"
#include "camera/Settings.h"
#include "recordings/Frames.h"
#include "recordings/Outputs.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace thermal {

/// What the commands that read a recording have in common on their command line.
struct InputOptions
{
    std::vector<std::string> inputs;
    std::string raw;    ///< WxH[:be] of a raw stream; empty: files of their own formats
    std::string rows;   ///< A:B; empty: all of them
    bool quiet = false; ///< no progress bar

    /// @returns the option of the inputs, so that a command can do without them
    Option addTo(const Command& command);

    /// Opens the recording, and protects it from the command's outputs. Its unit is what the settings choose,
    /// its values are in the order of what they mean. Says what was taken for the way from object to camera,
    /// and, once there is a frame, if the unit can hardly be right.
    /// @throws Exception  as recordings::openFrames, and for a unit that there is not
    std::unique_ptr<velmo::recordings::FrameSource> open(velmo::recordings::Outputs& outputs,
                                                         const velmo::camera::Settings& settings) const;
};

/// Hands every frame of the source to `use`, with a progress bar unless `quiet`.
/// @throws UsageError  if there is no frame at all
void forEachFrame(velmo::recordings::FrameSource& source, bool quiet,
                  const std::function<void(velmo::recordings::Frame&)>& use);

} // namespace thermal
