#pragma once

#include "camera/Frame.h"

#include <opencv2/core.hpp>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace thermal {

using velmo::camera::Frame;

/// Where frames come from, one by one.
class FrameSource
{
public:
    virtual ~FrameSource() = default;

    /// The next frame, in memory of its own; false after the last one.
    /// @throws UsageError  that names the file, if it cannot be read
    virtual bool next(Frame& frame) = 0;

    /// How many frames there are in all, if that is known beforehand.
    virtual std::optional<std::size_t> count() const { return std::nullopt; }

    /// A name for headings: the folder or file.
    virtual std::string name() const = 0;
};

/// What the commands that read a recording have in common on their command line.
struct InputOptions
{
    std::vector<std::string> inputs;
    std::string raw; ///< WxH of a raw stream; empty: picture files

    /// @returns the option of the inputs, so that a command can do without them
    CLI::Option& addTo(CLI::App& command);
};

/// Opens files, folders, patterns, or raw little-endian streams ("-" is standard input).
/// @throws UsageError  if there are none, or if a raw file is not a whole number of frames
std::unique_ptr<FrameSource> openFrames(const InputOptions& options);

/// One grey PGM, PNG or TIFF (the first page), of 16 or 8 bits; the file's values, unscaled.
Frame readFrame(const std::string& path);

/// One picture of 8-bit colours, blue, green, red; grey ones become coloured.
cv::Mat_<cv::Vec3b> readPicture(const std::string& path);

/// Hands every frame of the source to `use`, with a progress bar unless `quiet`; an interrupt ends it.
/// @throws UsageError  if there is no frame at all
void forEachFrame(FrameSource& source, bool quiet, const std::function<void(Frame&)>& use);

} // namespace thermal
