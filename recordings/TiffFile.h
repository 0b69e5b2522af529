#pragma once

#include "recordings/ByteFile.h"
#include "recordings/ImageFile.h"

namespace velmo::recordings {

/// Every page of a TIFF (or BigTIFF) of grey values: counts of 8 or 16 bits, unscaled, or degrees Celsius in
/// floats of 32 or 64 bits. Smaller versions of a page that stand beside it are no pages.
/// @param name  what messages call the file
std::unique_ptr<ImageFile> openTiff(ByteFile file, const std::string& name);

} // namespace velmo::recordings
