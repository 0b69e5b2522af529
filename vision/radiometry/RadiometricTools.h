#pragma once

#include "core/Export.h"

namespace velmo::vision {

/// The radiometric scale of frames: a value counts hundredths of a kelvin.
class VELMO_API RadiometricTools
{
public:
    RadiometricTools() = delete;

    /// Temperature of a frame value: value x 0.01 - 273.15, in degrees Celsius (-273.15 to 382.2).
    static float getFloat(unsigned short value);
};

} // namespace velmo::vision
