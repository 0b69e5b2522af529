#include "vision/id/Palette.h"

// Constants of the compiler, not of start-up code: they can be used while other statics are built.
namespace velmo::vision::Id::Palette {

const char* const Grayscale = "Grayscale";
const char* const GrayscaleInv = "GrayscaleInv";
const char* const Sepia = "Sepia";
const char* const Velmo = "Velmo";
const char* const Bluered = "Bluered";
const char* const Hotcold = "Hotcold";
const char* const Ironbow = "Ironbow";
const char* const Rainbow = "Rainbow";
const char* const Rainbowhc = "Rainbowhc";
const char* const Dewpoint = "Dewpoint";
const char* const Hightemp = "Hightemp";
const char* const Humidity = "Humidity";

} // namespace velmo::vision::Id::Palette
