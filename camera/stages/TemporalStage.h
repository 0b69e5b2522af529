#pragma once

#include "camera/Settings.h"
#include "camera/stages/Stage.h"

#include <memory>

namespace velmo::camera {

/// What noise/temporal stands for where it is on auto and noise/denoise is set; docs/denoise-defaults.md has
/// the measurements.
constexpr const char* pStandardTemporal = "16:1843";

/// Smooths in time what does not move: noise/temporal.
/// @returns nothing if that is off
VELMO_API std::unique_ptr<Stage> makeTemporalStage(const Settings& settings);

} // namespace velmo::camera
