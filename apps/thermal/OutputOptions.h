#pragma once

#include "recordings/Frames.h"
#include "recordings/PictureSink.h"

#include <memory>
#include <string>

namespace CLI {
class App;
}

namespace thermal {

/// What the commands that draw every frame have in common on their command line.
struct OutputOptions
{
    std::string out;
    int scale = 1;
    double fps = 9;

    void addTo(CLI::App& command);

    /// Where the pictures of the source's frames go.
    /// @throws Exception  as recordings::openSink
    std::unique_ptr<velmo::recordings::PictureSink> open(const velmo::recordings::FrameSource& source) const;
};

/// Adds the option that says how fast a film is.
void addFps(CLI::App& command, double& fps);

} // namespace thermal
