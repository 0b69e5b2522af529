#pragma once

#include "camera/Picture.h"
#include "camera/measures/ShapeMeter.h"
#include "core/Export.h"

namespace velmo::camera {

/// Draws the shapes with their names and means over the picture of the frame that the meter measured last,
/// and, but for single pixels, a + where each is hottest and a - where it is coldest.
///
/// @param scale  how many times as large as the frame the picture is
VELMO_API void drawShapes(Picture& picture, const ShapeMeter& meter, int scale);

} // namespace velmo::camera
