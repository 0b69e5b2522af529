// Not installed.
#pragma once

#include "camera/Settings.h"

namespace velmo::camera {

/// The numbers of a noise filter as a text: those of its setting, or where that is "auto" the standard ones
/// if noise/denoise is on. Empty if the filter is off.
inline std::string noiseChoice(const Settings& settings, const std::string& path, const char* standard)
{
    const std::string chosen = settings.text(path);
    if (chosen == "auto")
        return settings.flag("noise/denoise") ? standard : "";
    return chosen == "off" ? "" : chosen;
}

} // namespace velmo::camera
