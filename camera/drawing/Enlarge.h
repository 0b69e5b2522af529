#pragma once

#include "camera/Picture.h"

#include "core/Export.h"

namespace velmo::camera {

/// The picture `scale` times as large; every pixel becomes a square.
VELMO_API Picture enlarged(const Picture& picture, int scale);

} // namespace velmo::camera
