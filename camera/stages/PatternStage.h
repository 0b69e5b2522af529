#pragma once

#include "camera/Settings.h"
#include "camera/stages/Stage.h"

#include <memory>

namespace velmo::camera {

/// What noise/pattern stands for where it is on auto and noise/denoise is set; docs/denoise-defaults.md has
/// the measurements.
constexpr const char* pStandardPattern = "15:8:4";

/// Learns column stripes and pixel offsets that stay, and takes them away: noise/pattern.
/// @returns nothing if that is off
VELMO_API std::unique_ptr<Stage> makePatternStage(const Settings& settings);

} // namespace velmo::camera
