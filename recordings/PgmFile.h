#pragma once

#include "recordings/ImageFile.h"

namespace velmo::recordings {

/// A grey image of the Netpbm family: the first that the file holds, its values unscaled.
/// @throws Exception  that names the file
std::unique_ptr<ImageFile> openPgm(const std::string& path);

} // namespace velmo::recordings
