#pragma once

#include "camera/stages/Stage.h"

#include "vision/imgproc/BadPixel.h"

#include <memory>
#include <string>
#include <vector>

namespace thermal {

using velmo::camera::Frame;
using velmo::camera::Stage;

/// Puts the mean of its four replacement pixels in the place of each defective pixel.
///
/// @param origin  where the records come from, for messages
/// @throws UsageError  from the stage, if a record lies outside a frame
std::unique_ptr<Stage> makeBadPixels(std::string origin, std::vector<velmo::exp::vision::BadPixel> records);

/// @param path  records, as `thermal pixels records` writes them
/// @throws UsageError  also here, if they cannot be read
std::unique_ptr<Stage> makeBadPixels(const std::string& path);

} // namespace thermal
