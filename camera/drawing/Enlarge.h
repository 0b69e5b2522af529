#pragma once

#include "camera/Picture.h"

#include "core/Export.h"

namespace velmo::camera {

/// The picture `scale` times as large; every pixel becomes a square.
VELMO_API Picture enlarged(const Picture& picture, int scale);

/// The same into a picture that is reused if it has the size already; not the same one.
VELMO_API void enlarge(const Picture& picture, int scale, Picture& large);

} // namespace velmo::camera
