// Not installed.
#pragma once

#include <opencv2/core.hpp>

namespace velmo::exp::vision {

/// The definition of the filter: gain 0..31, `out` of the size of `in` and another matrix.
void removeSpatialNoisePlain(const cv::Mat_<short>& in, cv::Mat_<short>& out, int gain);

/// The fast form: the same bits, for gains 1..31 and at least one pixel; `out` may be `in`.
void removeSpatialNoise(const cv::Mat_<short>& in, cv::Mat_<short>& out, int gain);

} // namespace velmo::exp::vision
