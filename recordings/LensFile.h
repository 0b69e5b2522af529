#pragma once

#include "recordings/OutputFile.h"

#include <opencv2/core.hpp>

namespace velmo::recordings {

/// Writes a distortion map of six 16-bit channels as a PAM file.
void writeLensMap(OutputFile file, const cv::Mat& map);

} // namespace velmo::recordings
