#pragma once

#include "camera/measures/BlobTracker.h"
#include "recordings/PictureSink.h"

#include <vector>

namespace thermal {

/// Draws blobs over the picture of their frame: pixels tinted, hull, principal axes, label, and the path of
/// the centre. A label has the same colour in every picture.
///
/// @param scale  the picture becomes so many times as large as the frame
Picture withBlobs(const Picture& picture, const std::vector<Blob>& blobs, const BlobTracker& tracker,
                  int scale);

} // namespace thermal
