#pragma once

#include "core/Export.h"

/// Names of the built-in palettes; each text is its identifier.
namespace velmo::vision::Id::Palette {

extern VELMO_API const char* const Grayscale;    ///< black to white
extern VELMO_API const char* const GrayscaleInv; ///< white to black
extern VELMO_API const char* const Sepia;        ///< brown tones
extern VELMO_API const char* const Velmo;        ///< grey over sand to orange
extern VELMO_API const char* const Bluered;      ///< blue over white to red
extern VELMO_API const char* const Hotcold;      ///< blue, green, red
extern VELMO_API const char* const Ironbow;      ///< black, violet, orange, white: like glowing iron
extern VELMO_API const char* const Rainbow;      ///< violet to dark red
extern VELMO_API const char* const Rainbowhc;    ///< the rainbow with more contrast, ends in white
extern VELMO_API const char* const Dewpoint;     ///< for humidity pictures: red over yellow to green
extern VELMO_API const char* const Hightemp;     ///< grey for the cold, glowing iron for the hot
extern VELMO_API const char* const Humidity;     ///< for humidity pictures: green over yellow to red

} // namespace velmo::vision::Id::Palette
