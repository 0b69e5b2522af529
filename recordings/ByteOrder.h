#pragma once

#include <opencv2/core.hpp>

namespace velmo::recordings {

/// An image between the host's byte order and a file's, either way: itself where they are the same, else a
/// copy with every value turned round.
cv::Mat inOrder(const cv::Mat& image, bool bigEndianFile);

} // namespace velmo::recordings
