#include "camera/colours/Palettes.h"

#include "core/Exception.h"
#include "vision/imgproc/ColorPaletteManager.h"

#include <algorithm>
#include <cctype>

namespace velmo::camera {
namespace {

using vision::ColorPaletteManager;

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

std::string listed(const std::vector<std::string>& names)
{
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list;
}

} // namespace

std::vector<std::string> paletteNames()
{
    // Once: a second time it would replace palettes of a file that have built-in names.
    if (ColorPaletteManager::getAvailableColorPalettes().empty())
        ColorPaletteManager::loadPalettes({});
    return ColorPaletteManager::getAvailableColorPalettes();
}

Palette findPalette(const std::string& name)
{
    const std::vector<std::string> names = paletteNames();
    auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) // palettes of a file may differ in case alone
        found = std::find_if(names.begin(), names.end(),
                             [&](const std::string& other) { return lower(other) == lower(name); });
    if (found == names.end())
        VELMO_THROW("there is no palette '" + name + "'; there are " + listed(names));
    return ColorPaletteManager::getPaletteColors(*found);
}

} // namespace velmo::camera
