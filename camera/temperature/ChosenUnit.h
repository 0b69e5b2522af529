#pragma once

#include "camera/Settings.h"
#include "camera/temperature/Radiometry.h"
#include "camera/temperature/Thermometer.h"

#include "core/Exception.h"
#include "core/Export.h"

#include <string>

namespace velmo::camera {

/// What the settings of the section temperature say of a recording.
struct VELMO_API ChosenUnit
{
    Scale seen;              ///< of what the camera sees: black bodies
    Thermometer thermometer; ///< of the objects
    std::string radiometry;  ///< what was taken for the way between both, in one line; empty for nothing

    /// @param settings  of the whole camera
    /// @param recorded  the unit that the recording itself names; empty or counts if it names none
    /// @throws Exception  for a unit, a temperature or a share outside its limits, and for settings that
    ///                    contradict each other or need a unit that is not there
    explicit ChosenUnit(const Settings& settings, const std::string& recorded = "counts");
};

} // namespace velmo::camera
