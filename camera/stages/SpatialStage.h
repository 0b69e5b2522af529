#pragma once

#include "camera/stages/Stage.h"

#include <memory>

namespace velmo::camera {

/// Smooths what is flat and keeps edges (SpatialNoiseRemover).
///
/// @param gain  0 to 31: the higher, the smoother
VELMO_API std::unique_ptr<Stage> makeSpatialStage(int gain);

} // namespace velmo::camera
