#pragma once

#include "camera/temperature/Degrees.h"
#include "core/Exception.h"
#include "core/Export.h"

#include <string>
#include <vector>

namespace velmo::camera {

/// The air of a room or of a way through the open.
struct VELMO_API Air
{
    float celsius;
    float percent; ///< relative humidity

    /// @param text     TEMPERATURE:PERCENT
    /// @param what     begins the message of what is refused
    /// @param degrees  that the temperature is typed in
    /// @throws Exception  for anything else, and outside -80 to 200 degrees Celsius and 0 to 100 percent
    static Air parse(const std::string& text, const std::string& what, Degrees degrees = {});

    /// The temperature at which it condenses, in degrees Celsius.
    float dewPoint() const;

    /// The relative humidity in percent, 0 to 100, that it reaches at surfaces.
    ///
    /// @param temperatures  of them in degrees Celsius, or fBelow and fAbove
    std::vector<float> atSurfaces(const std::vector<float>& temperatures) const;
};

} // namespace velmo::camera
