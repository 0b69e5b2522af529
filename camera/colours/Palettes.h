#pragma once

#include "core/Export.h"

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

} // namespace velmo::camera
