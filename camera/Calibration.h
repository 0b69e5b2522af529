#pragma once

#include "vision/imgproc/BadPixel.h"

#include <string>
#include <vector>

namespace velmo::camera {

/// What was measured of one camera, unlike settings, which are anybody's choice.
struct Calibration
{
    std::string origin = "calibration"; ///< where it comes from, for messages
    std::vector<exp::vision::BadPixel> badPixels;
};

} // namespace velmo::camera
