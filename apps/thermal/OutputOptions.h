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
    bool quiet = false; ///< no progress bar

    void addTo(CLI::App& command);
};

/// Where the pictures of the source's frames go.
/// @throws UsageError  as openSink
std::unique_ptr<PictureSink> openSink(const OutputOptions& options, const FrameSource& source);

/// The picture `scale` times as large; every pixel becomes a square.
Picture enlarged(const Picture& picture, int scale);

} // namespace thermal
