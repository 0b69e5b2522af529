#pragma once

#include "camera/Frame.h"
#include "camera/Picture.h"
#include "camera/pixels/PixelMap.h"

#include "core/Export.h"

namespace velmo::camera {

/// The frame, enlarged, with its bad pixels in the colours of their reasons. Where they are few, each has a
/// ring, so that a single one is found.
VELMO_API Picture drawBadPixels(const Frame& frame, const PixelMap& map);

} // namespace velmo::camera
