#pragma once

#include "camera/Settings.h"
#include "camera/stages/Stage.h"

#include <memory>

namespace velmo::camera {

/// Smooths what is flat and keeps edges: noise/spatial.
/// @returns nothing if that is off
VELMO_API std::unique_ptr<Stage> makeSpatialStage(const Settings& settings);

} // namespace velmo::camera
