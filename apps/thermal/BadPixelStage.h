#pragma once

#include "apps/thermal/Stage.h"

#include <memory>
#include <string>

namespace thermal {

/// Puts the mean of its four replacement pixels in the place of each defective pixel.
///
/// @param path  records, as `thermal pixels records` writes them
/// @throws UsageError  here if they cannot be read; from the stage if one lies outside a frame
std::unique_ptr<Stage> makeBadPixels(const std::string& path);

} // namespace thermal
