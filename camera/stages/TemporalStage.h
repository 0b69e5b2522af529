#pragma once

#include "camera/Settings.h"
#include "camera/stages/Stage.h"

#include <memory>

namespace velmo::camera {

/// Smooths in time what does not move: noise/temporal.
/// @returns nothing if that is off
VELMO_API std::unique_ptr<Stage> makeTemporalStage(const Settings& settings);

} // namespace velmo::camera
