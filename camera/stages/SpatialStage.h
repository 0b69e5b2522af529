#pragma once

#include "camera/Settings.h"
#include "camera/stages/Stage.h"

#include <memory>

namespace velmo::camera {

/// What noise/spatial stands for where it is on auto and noise/denoise is set; docs/denoise-defaults.md has
/// the measurements.
constexpr const char* pStandardSpatial = "4";

/// Smooths what is flat and keeps edges: noise/spatial.
/// @returns nothing if that is off
VELMO_API std::unique_ptr<Stage> makeSpatialStage(const Settings& settings);

} // namespace velmo::camera
