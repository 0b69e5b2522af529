#pragma once

#include "camera/Picture.h"
#include "camera/measures/BlobTracker.h"

#include "core/Exception.h"
#include "core/Export.h"

#include <vector>

namespace velmo::camera {

/// Draws blobs over the picture of their frame: pixels tinted, hull, principal axes, label, and the path of
/// the centre. A label has the same colour in every picture.
///
/// @param scale  the picture becomes so many times as large as the frame
/// @throws Exception  for a blob that reaches beyond the picture
VELMO_API Picture withBlobs(const Picture& picture, const std::vector<Blob>& blobs,
                            const BlobTracker& tracker, int scale);

} // namespace velmo::camera
