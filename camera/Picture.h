#pragma once

#include <opencv2/core.hpp>

namespace velmo::camera {

/// Colours of 8 bits: blue, green, red.
using Picture = cv::Mat_<cv::Vec3b>;

} // namespace velmo::camera
