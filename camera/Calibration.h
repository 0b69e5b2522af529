#pragma once

#include "camera/pixels/FlatField.h"
#include "vision/imgproc/BadPixel.h"

#include <string>
#include <vector>

namespace velmo::camera {

/// What is known of one camera, unlike settings, which are anybody's choice.
struct Calibration
{
    std::string origin = "calibration"; ///< where the bad pixels come from, for messages
    std::vector<exp::vision::BadPixel> badPixels;
    std::string flatOrigin = "calibration"; ///< where the flat field comes from
    FlatField flat = {};                    ///< empty: there is none; its defects are bad pixels, too
    std::string unit = "counts"; ///< what its values mean, as Scale::parse takes it; frames of a signed unit
                                 ///< come in the order of Scale::reorder
};

} // namespace velmo::camera
