#pragma once

#include "recordings/ByteFile.h"
#include "recordings/ImageFile.h"

namespace velmo::recordings {

/// A NumPy array of rows x columns or frames x rows x columns in C order: counts of 8 or 16 bits (signed ones
/// by their bits), or degrees Celsius in floats of 32 or 64 bits; either byte order.
/// @param name  what messages call the file
std::unique_ptr<ImageFile> openNpy(ByteFile file, const std::string& name);

} // namespace velmo::recordings
