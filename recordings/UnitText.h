#pragma once

#include <string>

namespace velmo::recordings {

/// Under this name the unit stands in formats that have named texts.
inline const char* const unitKeyword = "thermal unit";

/// The same in Matroska, whose names are of this kind.
inline const char* const unitTag = "THERMAL_UNIT";

/// The unit as a line of text, without a line end, for formats that have nothing but comments.
std::string unitLine(const std::string& unit);

/// The unit in a text of lines, one of which is a unitLine; empty if none is.
std::string unitInLines(const std::string& text);

} // namespace velmo::recordings
