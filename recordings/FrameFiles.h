#pragma once

#include "recordings/FrameSource.h"

#include <memory>
#include <string>
#include <vector>

namespace velmo::recordings {

/// The frames of files of any kind that openImageFile reads, file after file. Files of degrees Celsius become
/// counts of one scale for all of them, which is their unit: they are read through once to find it.
///
/// @param name      what headings call them
/// @param files     not empty
/// @param sameUnit  whether files that name another unit than the first are refused
/// @throws Exception  that names the file, here or by next(): one that cannot be read, that has another unit
///                    or holds degrees among files of counts, a value that is no temperature
std::unique_ptr<FrameSource> openFrameFiles(std::string name, std::vector<std::string> files, bool sameUnit);

} // namespace velmo::recordings
