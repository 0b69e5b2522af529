#pragma once

#include "camera/Calibration.h"
#include "camera/stages/Stage.h"

#include "core/Exception.h"
#include "core/Export.h"

#include <memory>

namespace velmo::camera {

/// Takes away how far each pixel is off: v becomes level + gain (v - shutter), rounded and within 16 bits,
/// where the level is that of all pixels before the shutter. A pixel like most others keeps its value,
/// whatever the scene and its level. Defective pixels are for the stage of bad pixels.
///
/// The stage throws Exception for a frame of another size than the flat field.
/// @returns nothing if the calibration has no flat field
VELMO_API std::unique_ptr<Stage> makeFlatStage(const Calibration& calibration);

} // namespace velmo::camera
