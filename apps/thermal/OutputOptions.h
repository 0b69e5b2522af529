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
    std::unique_ptr<velmo::recordings::PictureSink> open(const velmo::recordings::FrameSource& source) const;
};

/// Adds the option that says how fast a film is.
void addFps(CLI::App& command, double& fps);

} // namespace thermal
