#include "vision/radiometry/RadiometricTools.h"

namespace velmo::vision {

float RadiometricTools::getFloat(unsigned short value)
{
    // Whole numbers are subtracted without an error; what is left of one is the rounding at the end.
    return static_cast<float>((value - 27315) / 100.0);
}

} // namespace velmo::vision
