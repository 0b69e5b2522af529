#pragma once

#include "camera/Frame.h"

#include "core/Export.h"

#include <vector>

namespace velmo::camera {

/// How noisy a single frame is where it shows nothing: the standard deviation around a plane in blocks of 8 x
/// 8, of the calmest fifth of them, in counts; at least that of rounding. Where all of the frame is texture,
/// the texture counts.
///
/// @param variances  memory for the work
VELMO_API double fineNoise(const Frame& frame, std::vector<float>& variances);

} // namespace velmo::camera
