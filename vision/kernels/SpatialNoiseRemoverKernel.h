// Not installed.
#pragma once

#include "core/Forms.h"

#include <opencv2/core.hpp>

namespace velmo::exp::vision {

/// The filter, for gains 1..31 and at least one pixel. `out` is of the size of `in`, and may be `in` for the
/// fast form only.
using RemoveSpatialNoise = void(const cv::Mat_<short>& in, cv::Mat_<short>& out, int gain);
RemoveSpatialNoise removeSpatialNoisePlain;
extern const Forms<RemoveSpatialNoise> removeSpatialNoise;

} // namespace velmo::exp::vision
