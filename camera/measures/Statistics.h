#pragma once

#include "core/Export.h"

#include <opencv2/core.hpp>

namespace velmo::camera {

/// The median of all elements; of an even number of them the mean of the two in the middle.
VELMO_API double medianOf(const cv::Mat_<double>& values);

/// The value below which the given share (0 to 1) of the elements lies.
VELMO_API double quantileOf(const cv::Mat_<double>& values, double share);

/// The standard deviation that normally distributed values with this median absolute deviation have:
/// outliers hardly count.
VELMO_API double robustDeviation(const cv::Mat_<double>& values);

} // namespace velmo::camera
