#pragma once

#include "recordings/ByteFile.h"
#include "recordings/PaletteFile.h"

#include <string>

namespace velmo::recordings {

/// Reads a palette as other programs keep them; the format is chosen by the ending:
///  - .csv: a line of red, green and blue, 0 to 255, per point; a first line of words is skipped
///  - .pal: JASC palette, text
///  - .gpl: GIMP palette, text
///  - .act: Adobe colour table, 768 bytes, or 772 with the number of colours behind them
///  - .lut: 768 bytes, 256 reds, then the greens, then the blues
/// @throws Exception  that names the file and, in a text, the line
Palette importPalette(const std::string& path);

/// The same from a file that is open; `path` chooses the format and is what messages call it.
Palette importPalette(ByteFile file, const std::string& path);

} // namespace velmo::recordings
