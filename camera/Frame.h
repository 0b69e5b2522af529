#pragma once

#include <opencv2/core.hpp>

namespace velmo::camera {

/// One raw value per detector pixel; rows are lines.
using Frame = cv::Mat_<unsigned short>;

} // namespace velmo::camera
