#pragma once

#include "recordings/ImageWriter.h"
#include "recordings/OutputFile.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace velmo::recordings {

// Files of grey frames: counts, CV_16UC1, or degrees Celsius, CV_32FC1. Counts come back bit for bit. The
// unit is what a count means, empty for nothing; formats without a place for it take none.

/// A TIFF with a page for each frame, not packed; a BigTIFF if the frames do not fit 4 GiB.
/// @param expected  how many frames will come; if that is not known, the file is a BigTIFF
std::unique_ptr<ImageWriter> createTiff(OutputFile file, std::optional<std::size_t> expected,
                                        const std::string& unit);

/// A NumPy array of frames x rows x columns, low byte first.
std::unique_ptr<ImageWriter> createNpy(OutputFile file);

/// Bare values, low byte first, nothing between frames.
std::unique_ptr<ImageWriter> createRaw(OutputFile file);

/// A PGM of one frame of counts.
void writePgm(OutputFile file, const cv::Mat& frame, const std::string& unit);

} // namespace velmo::recordings
