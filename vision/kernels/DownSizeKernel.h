// Not installed.
#pragma once

#include <opencv2/core.hpp>

namespace velmo::exp::vision {

/// The definitions: `in` is 180 x 240, `out` is of the target size.
void resizeToTwoThirdsPlain(const cv::Mat_<short>& in, cv::Mat_<short>& out);
void resizeToHalfPlain(const cv::Mat_<short>& in, cv::Mat_<short>& out);

/// The fast forms: the same bits, without a temporary frame.
void resizeToTwoThirds(const cv::Mat_<short>& in, cv::Mat_<short>& out);
void resizeToHalf(const cv::Mat_<short>& in, cv::Mat_<short>& out);

} // namespace velmo::exp::vision
