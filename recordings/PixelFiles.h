#pragma once

#include "recordings/OutputFile.h"

#include "vision/imgproc/BadPixel.h"

#include <opencv2/core.hpp>

#include <string>
#include <vector>

namespace velmo::recordings {

/// A map of bad pixels as a grey PGM of 16 bits; also reads other images of the Netpbm family with one
/// channel.
/// @throws Exception  that names the path
cv::Mat_<int> readPixelMap(const std::string& path);
void writePixelMap(OutputFile file, const cv::Mat_<int>& map);

/// Records as a map image.
/// @throws Exception  that names the path
std::vector<exp::vision::BadPixel> readRecords(const std::string& path);
void writeRecords(OutputFile file, const std::vector<exp::vision::BadPixel>& records);

} // namespace velmo::recordings
