#pragma once

#include "camera/stages/Stage.h"

#include <memory>

namespace velmo::camera {

/// Smooths in time what does not move (TemporalNoiseReduction).
///
/// @param gain    0 to 16: the higher, the sooner changes pass
/// @param factor  0 to 2048: the higher, the smoother
VELMO_API std::unique_ptr<Stage> makeTemporalStage(int gain, int factor);

} // namespace velmo::camera
