#include "camera/colours/Palettes.h"

#include "core/Exception.h"
#include "vision/imgproc/ColorPaletteManager.h"

#include <algorithm>
#include <cctype>
#include <cstdint>

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

std::vector<cv::Vec3b> expandPalette(const Palette& palette, int colours)
{
    if (palette.size() < 3)
        VELMO_THROW("a palette needs at least one colour");
    const std::int64_t last = static_cast<std::int64_t>(palette.size() / 3) - 1;
    const std::int64_t steps = std::max(colours - 1, 1);
    std::vector<cv::Vec3b> expanded(static_cast<std::size_t>(colours));
    for (std::int64_t n = 0; n < colours; ++n) {
        // In whole numbers: n * last / steps of the way, to the nearest, halves up.
        const std::int64_t left = n * last / steps, part = n * last % steps;
        const unsigned char* const a = palette.data() + 3 * left;
        const unsigned char* const b = left < last ? a + 3 : a;
        for (int channel = 0; channel < 3; ++channel)
            expanded[static_cast<std::size_t>(n)][2 - channel] = static_cast<unsigned char>(
                (2 * (a[channel] * (steps - part) + b[channel] * part) + steps) / (2 * steps));
    }
    return expanded;
}

} // namespace velmo::camera
