#pragma once

#include "apps/thermal/Options.h"
#include "camera/temperature/Scale.h"
#include "recordings/Frames.h"
#include "recordings/PictureSink.h"

#include <memory>
#include <string>

namespace thermal {

/// Where the pictures of a stream go.
struct OutputOptions
{
    std::string out;
    double fps = 9;

    void addTo(const Command& command);

    /// @throws Exception  as recordings::openSink
    std::unique_ptr<velmo::recordings::ImageWriter> open(velmo::recordings::Outputs& outputs,
                                                         const velmo::recordings::FrameSource& source) const;
};

/// Adds the option that lets files be replaced that join the one that was named.
void addForce(const Command& command, bool& force);

/// Adds the option that says how fast a film is.
Option addFps(const Command& command, double& fps);

/// How files keep the counts of a recording of this scale.
velmo::recordings::FrameFormat countsOf(const velmo::camera::Scale& scale);

} // namespace thermal
