#pragma once

#include "recordings/PictureSink.h"
#include "recordings/PixelFiles.h"

#include "recordings/Frames.h"

namespace thermal {

/// The frame, enlarged, with its bad pixels in the colours of their reasons. Where they are few, each has a
/// ring, so that a single one is found.
Picture drawBadPixels(const Frame& frame, const PixelMap& map);

} // namespace thermal
