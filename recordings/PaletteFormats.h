#pragma once

#include "camera/colours/Palettes.h"

#include <string>

namespace thermal {

/// Reads a palette as other programs keep them; the format is chosen by the ending:
///  - .csv: a line of red, green and blue, 0 to 255, per point; a first line of words is skipped
///  - .pal: JASC palette, text
///  - .gpl: GIMP palette, text
///  - .act: Adobe colour table, 768 bytes, or 772 with the number of colours behind them
///  - .lut: 768 bytes, 256 reds, then the greens, then the blues
/// @throws UsageError  that names the file and, in a text, the line
Palette importPalette(const std::string& path);

/// Writes a file that `loadPaletteFile` reads: one palette under this name. Whatever is at `path` stays
/// until the new file is complete.
/// @throws UsageError  for a name that no palette can have in a file, or if the file cannot be written
void exportPalette(const std::string& path, const std::string& name, const Palette& palette);

} // namespace thermal
