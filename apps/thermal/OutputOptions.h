#pragma once

#include "recordings/Frames.h"
#include "recordings/PictureSink.h"

#include <memory>
#include <string>

namespace CLI {
class App;
}

namespace thermal {

/// Where the pictures of a stream go.
struct OutputOptions
{
    std::string out;
    double fps = 9;

    void addTo(CLI::App& command);

    /// @throws Exception  as recordings::openSink
    std::unique_ptr<velmo::recordings::ImageWriter> open(velmo::recordings::Outputs& outputs,
                                                         const velmo::recordings::FrameSource& source) const;
};

/// Adds the option that lets files be replaced that join the one that was named.
void addForce(CLI::App& command, bool& force);

/// Adds the option that says how fast a film is.
void addFps(CLI::App& command, double& fps);

} // namespace thermal
