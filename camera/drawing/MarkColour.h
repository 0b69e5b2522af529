#pragma once

#include "core/Export.h"

#include <opencv2/core.hpp>

namespace velmo::camera {

/// Blue, green, red: bright, and far from those of the last few numbers.
VELMO_API cv::Vec3b markColour(unsigned number);

} // namespace velmo::camera
