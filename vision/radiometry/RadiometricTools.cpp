#include "vision/radiometry/RadiometricTools.h"

namespace velmo::vision {

float RadiometricTools::getFloat(unsigned short value)
{
    // In double: a single-precision product would be off by up to a thousandth of a degree before the
    // subtraction takes most of its digits away.
    return static_cast<float>(value * 0.01 - 273.15);
}

} // namespace velmo::vision
