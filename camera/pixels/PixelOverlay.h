#pragma once

#include "camera/Frame.h"
#include "camera/Picture.h"
#include "camera/pixels/PixelMap.h"

#include "core/Export.h"

#include <vector>

namespace velmo::camera {

/// The frame, enlarged, with its bad pixels in the colours of their reasons: of several the first. Where they
/// are few, each has a ring, so that a single one is found.
/// @param reasons  that the flags of the map stand for
VELMO_API Picture drawBadPixels(const Frame& frame, const PixelMap& map,
                                const std::vector<PixelReason>& reasons = pixelReasons());

} // namespace velmo::camera
