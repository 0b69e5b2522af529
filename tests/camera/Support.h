#pragma once

#include "camera/Settings.h"

#include "tests/Hashes.h"
#include "tests/Support.h"

/// What tests of cameras need.

using namespace velmo::camera;

/// Settings with some keys set, by path and text.
inline Settings settingsWith(const std::vector<std::pair<const char*, const char*>>& values)
{
    Settings settings;
    for (const auto& [path, value] : values)
        settings.set(path, value);
    return settings;
}
