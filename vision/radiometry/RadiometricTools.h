#pragma once

#include "core/Export.h"

namespace velmo::vision {

/// The radiometric scale of frames: a value counts hundredths of a kelvin.
class VELMO_API RadiometricTools
{
public:
    RadiometricTools() = delete;

    /// Temperature of a frame value in degrees Celsius: (value - 27315) / 100 in double precision, rounded
    /// once. From -273.15 to 382.2; 27315 is exactly 0.
    static float getFloat(unsigned short value);
};

} // namespace velmo::vision
