#pragma once

#include "recordings/OutputFile.h"

#include <cstddef>
#include <string>
#include <vector>

namespace velmo::recordings {

/// Colour points of three bytes, red, green, blue, the coldest first.
using Palette = std::vector<unsigned char>;

/// One of its points, "#RRGGBB".
std::string colourText(const Palette& palette, std::size_t point);

/// Adds the palettes of a file to those of the process. Returns the name of its first one.
/// @throws Exception  if it cannot be read or holds no palette
std::string loadPaletteFile(const std::string& path);

/// Writes a file that `loadPaletteFile` reads: one palette under this name.
/// @throws Exception  for a name that no palette can have in a file
void writePaletteFile(OutputFile file, const std::string& name, const Palette& palette);

} // namespace velmo::recordings
