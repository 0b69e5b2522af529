#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace thermal {

/// Colour points of three bytes, red, green, blue, the coldest first.
using Palette = std::vector<unsigned char>;

/// One of its points, "#RRGGBB".
std::string colourText(const Palette& palette, std::size_t point);

/// Registers the palettes of a file. Returns the name of its first one.
/// @throws UsageError  if it cannot be read or holds no palette
std::string loadPaletteFile(const std::string& path);

/// The names of all built-in and loaded palettes.
std::vector<std::string> paletteNames();

/// The palette of this name; case does not matter.
/// @throws UsageError  that lists the names there are
Palette findPalette(const std::string& name);

} // namespace thermal
