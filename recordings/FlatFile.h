#pragma once

#include "recordings/OutputFile.h"

#include <opencv2/core.hpp>

#include <string>
#include <vector>

namespace velmo::recordings {

/// The planes of a flat field as a NumPy array of planes x rows x columns; also reads other files of
/// floating-point images.
/// @throws Exception  that names the path: for a file that cannot be read, of counts, or of more than three
///                    planes
std::vector<cv::Mat_<float>> readFlatPlanes(const std::string& path);
void writeFlatPlanes(OutputFile file, const std::vector<cv::Mat_<float>>& planes);

} // namespace velmo::recordings
