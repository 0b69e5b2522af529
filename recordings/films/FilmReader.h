#pragma once

#include "recordings/ByteFile.h"
#include "recordings/ImageFile.h"

namespace velmo::recordings {

/// See Films::open.
std::unique_ptr<ImageFile> openFilm(ByteFile file, const std::string& name);

/// See Films::readColours.
cv::Mat_<cv::Vec3b> readColours(ByteFile file, const std::string& name);

} // namespace velmo::recordings
