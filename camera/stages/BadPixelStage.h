#pragma once

#include "camera/stages/Stage.h"

#include "core/Exception.h"
#include "vision/imgproc/BadPixel.h"

#include <memory>
#include <string>
#include <vector>

namespace velmo::camera {

/// Puts the mean of its four replacement pixels in the place of each defective pixel.
///
/// @param origin  where the records come from, for messages
/// @throws Exception  from the stage, if a record lies outside a frame
VELMO_API std::unique_ptr<Stage> makeBadPixelStage(std::string origin,
                                                   std::vector<exp::vision::BadPixel> records);

} // namespace velmo::camera
