#pragma once

#include "camera/Settings.h"
#include "camera/stages/Stage.h"
#include "core/Exception.h"

#include <memory>

namespace velmo::camera {

/// Shrinks frames of 240x180: frame/downsize. Throws Exception for frames of another size.
/// @returns nothing if that is off
VELMO_API std::unique_ptr<Stage> makeDownSizeStage(const Settings& settings);

} // namespace velmo::camera
