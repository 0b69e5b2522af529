#pragma once

#include "camera/Settings.h"
#include "camera/stages/Stage.h"

#include <memory>

namespace velmo::camera {

/// Learns column stripes and pixel offsets that stay, and takes them away: noise/pattern.
/// @returns nothing if that is off
VELMO_API std::unique_ptr<Stage> makePatternStage(const Settings& settings);

} // namespace velmo::camera
