#pragma once

#include "camera/Calibration.h"
#include "camera/stages/Stage.h"

#include "core/Exception.h"

#include <memory>

namespace velmo::camera {

/// Puts the mean of its four replacement pixels in the place of each defective pixel.
///
/// The stage throws Exception if a record lies outside a frame.
/// @returns nothing if the calibration names no pixel
VELMO_API std::unique_ptr<Stage> makeBadPixelStage(const Calibration& calibration);

} // namespace velmo::camera
