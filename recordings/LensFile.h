#pragma once

#include <opencv2/core.hpp>

#include <string>

namespace velmo::recordings {

/// Writes a distortion map of six 16-bit channels as a PAM file.
/// @throws Exception  that names the path
void writeLensMap(const std::string& path, const cv::Mat& map);

} // namespace velmo::recordings
