#pragma once

#include "recordings/Frames.h"

namespace velmo::recordings {

/// The frames of raw files or, for "-", of standard input.
/// @throws Exception  if a file is no whole number of frames
std::unique_ptr<FrameSource> openRawFrames(std::string name, std::vector<std::string> files,
                                           RawFormat format);

} // namespace velmo::recordings
