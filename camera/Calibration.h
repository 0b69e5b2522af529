#pragma once

#include "vision/imgproc/BadPixel.h"

#include <string>
#include <vector>

namespace velmo::camera {

/// What is known of one camera, unlike settings, which are anybody's choice.
struct Calibration
{
    std::string origin = "calibration"; ///< where the bad pixels come from, for messages
    std::vector<exp::vision::BadPixel> badPixels;
    std::string unit = "counts"; ///< what its values mean, as Scale::parse takes it; frames of a signed unit
                                 ///< come in the order of Scale::reorder
};

} // namespace velmo::camera
