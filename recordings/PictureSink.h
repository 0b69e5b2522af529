#pragma once

#include "camera/Picture.h"
#include "recordings/ImageWriter.h"
#include "recordings/Outputs.h"

#include <opencv2/core.hpp>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace velmo::recordings {

using camera::Picture;

/// Where pictures go: one or several of the outputs of a command.
/// @param path      a .png for one picture, a film (.mp4, .mkv, .avi), or else a folder: frame_0000.png and
/// so on
/// @param expected  how many pictures will come, if that is known
/// @param fps       pictures per second of a film
/// @throws Exception  that names the path, if it cannot take the pictures
std::unique_ptr<ImageWriter> openSink(Outputs& outputs, const std::string& path,
                                      std::optional<std::size_t> expected, double fps);

/// How frames are kept where a path leaves a choice.
struct FrameFormat
{
    std::string files;    ///< of a folder: "png" or "pgm", empty for PNG; a single file takes its own alone
    bool degrees = false; ///< they are degrees Celsius in floats, CV_32FC1: .tiff and .npy alone take them
    double fps = 9;       ///< frames per second of an .mkv
    std::string unit;     ///< what a count means; empty for nothing
};

/// The same for frames, CV_16UC1: one goes to a .png or .pgm, many to a .tiff, .npy, .raw, .mkv, a folder, or
/// to "-", which is standard output and takes raw ones. All come back bit for bit.
/// @throws Exception  that names the path, if it cannot take the frames
std::unique_ptr<ImageWriter> openFrameSink(Outputs& outputs, const std::string& path,
                                           std::optional<std::size_t> expected,
                                           const FrameFormat& format = {});

/// One picture that joins other results: a .png.
void writePicture(Outputs& outputs, const std::string& path, const Picture& picture);

} // namespace velmo::recordings
