#pragma once

#include "core/Exception.h"
#include "core/Export.h"

#include <opencv2/core.hpp>

#include <string>
#include <vector>

namespace velmo::camera {

/// Colour points of three bytes, red, green, blue, the coldest first.
using Palette = std::vector<unsigned char>;

/// The names of all palettes of the process: the built-in ones and those that were added.
VELMO_API std::vector<std::string> paletteNames();

/// The palette of this name; case does not matter.
/// @throws Exception  that lists the names there are
VELMO_API Palette findPalette(const std::string& name);

/// The palette as so many colours (blue, green, red), linear between its points: the first colour is its
/// first point, the last its last, the rest stands evenly between them.
///
/// @param colours  1 or more; one is the first point
/// @throws Exception  for a palette without points
VELMO_API std::vector<cv::Vec3b> expandPalette(const Palette& palette, int colours);

} // namespace velmo::camera
