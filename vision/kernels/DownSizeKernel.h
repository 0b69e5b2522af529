// Not installed.
#pragma once

#include "core/Forms.h"

#include <opencv2/core.hpp>

namespace velmo::exp::vision {

/// `in` is 180 x 240, `out` is of the target size. The fast forms need no temporary frame.
using Resize = void(const cv::Mat_<short>& in, cv::Mat_<short>& out);
Resize resizeToTwoThirdsPlain, resizeToHalfPlain;
extern const Forms<Resize> resizeToTwoThirds, resizeToHalf;

} // namespace velmo::exp::vision
