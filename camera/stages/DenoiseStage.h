#pragma once

#include "camera/Settings.h"
#include "camera/stages/Stage.h"

#include "core/Export.h"

#include <memory>

namespace velmo::camera {

/// Takes noise and stripes off: noise/denoise. Finds their size by itself, in frames of any camera and of 16
/// rows and columns or more; smaller ones pass as they are. In the first frame of a stream, or a single one,
/// there is no time to smooth over: it gets the spatial step alone.
/// @returns nothing if that is off
VELMO_API std::unique_ptr<Stage> makeDenoiseStage(const Settings& settings);

} // namespace velmo::camera
