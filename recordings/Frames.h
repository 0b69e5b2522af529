#pragma once

#include "camera/Picture.h"
#include "recordings/FrameSource.h"

#include <opencv2/core.hpp>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmo::recordings {

using camera::Picture;

/// How raw frames lie in a stream: 16-bit values, row by row, nothing between frames.
struct RawFormat
{
    cv::Size size;
    bool bigEndian = false;
};

/// How inputs are to be read.
struct ReadOptions
{
    std::optional<RawFormat> raw;  ///< without it, inputs are files of their own formats
    std::optional<cv::Range> rows; ///< the rows that are picture, where cameras add others
    bool anyUnit = false;          ///< whether inputs may say of themselves that their units differ
};

/// Opens files, folders, patterns, or raw streams ("-" is standard input).
/// @throws Exception  that names the input: there is none, it cannot be read, a raw file is no whole number
///                    of frames, units differ, rows that no frame has
std::unique_ptr<FrameSource> openFrames(const std::vector<std::string>& inputs, const ReadOptions& options);

/// One picture of 8-bit colours, blue, green, red, from a PNG, JPEG, BMP or Netpbm file; grey ones become
/// coloured.
/// @throws Exception  that names the file
Picture readPicture(const std::string& path);

} // namespace velmo::recordings
