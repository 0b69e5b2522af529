#pragma once

#include "camera/Settings.h"

#include "tests/Support.h"

/// Settings with some keys set, by path and text.
inline velmo::camera::Settings settingsWith(const std::vector<std::pair<const char*, const char*>>& values)
{
    velmo::camera::Settings settings;
    for (const auto& [path, value] : values)
        settings.set(path, value);
    return settings;
}
