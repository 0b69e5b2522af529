#pragma once

#include "camera/stages/Stage.h"
#include "core/Exception.h"

#include <memory>

namespace velmo::camera {

/// Shrinks frames of 240x180 (DownSize).
///
/// @param size  160x120 or 120x90
/// @throws Exception  for another one; from the stage, for frames of another size than 240x180
VELMO_API std::unique_ptr<Stage> makeDownSizeStage(cv::Size size);

} // namespace velmo::camera
