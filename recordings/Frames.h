#pragma once

#include "camera/Frame.h"
#include "camera/Picture.h"

#include <opencv2/core.hpp>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmo::recordings {

using camera::Frame;
using camera::Picture;

/// Where frames come from, one by one.
class FrameSource
{
public:
    virtual ~FrameSource() = default;

    /// The next frame, in memory of its own; false after the last one.
    /// @throws Exception  that names the file, if it cannot be read
    virtual bool next(Frame& frame) = 0;

    /// How many frames there are in all, if that is known beforehand.
    virtual std::optional<std::size_t> count() const { return std::nullopt; }

    /// A name for headings: the folder or file.
    virtual std::string name() const = 0;

    /// What there is to say when no more comes, such as a last frame that is cut off; mostly nothing.
    virtual std::string remark() const { return ""; }
};

/// Opens files, folders, patterns, or raw little-endian streams ("-" is standard input).
/// @param raw  the size of raw frames; without it, inputs are picture files
/// @throws Exception  if there are none, or if a raw file is not a whole number of frames
std::unique_ptr<FrameSource> openFrames(const std::vector<std::string>& inputs,
                                        const std::optional<cv::Size>& raw);

/// One grey PGM, PNG or TIFF (the first page), of 16 or 8 bits; the file's values, unscaled.
Frame readFrame(const std::string& path);

/// One picture of 8-bit colours, blue, green, red; grey ones become coloured.
Picture readPicture(const std::string& path);

} // namespace velmo::recordings
