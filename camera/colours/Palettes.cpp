#include "camera/colours/Palettes.h"

#include "apps/thermal/Error.h"

#include "core/codecs/StorageDecoder.h"
#include "vision/imgproc/ColorPaletteManager.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <typeinfo>

namespace thermal {
namespace {

using velmo::vision::ColorPaletteManager;

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

void registerBuiltIn()
{
    // Once: a second time it would replace palettes of a file that have built-in names.
    if (ColorPaletteManager::getAvailableColorPalettes().empty())
        ColorPaletteManager::loadPalettes({});
}

std::string listed(const std::vector<std::string>& names)
{
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list;
}

using Storage = velmo::exp::DataStorage<std::string>;

Storage decode(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file || !std::filesystem::is_regular_file(path))
        throw UsageError(path + ": cannot be read");
    try {
        return velmo::exp::StorageDecoder<Storage>(velmo::exp::StorageDecoder<Storage>::s32Xml)
            .decode(file)
            .first;
    } catch (const std::exception& error) {
        throw UsageError(path + ": " + error.what());
    }
}

bool isPalette(const velmo::exp::Variant& value)
{
    if (value.getTypeInfo() != typeid(Palette))
        return false;
    const Palette& colours = value.value<Palette>();
    return !colours.empty() && colours.size() % 3 == 0;
}

} // namespace

std::string colourText(const Palette& palette, std::size_t point)
{
    char text[8];
    std::snprintf(text, sizeof text, "#%02X%02X%02X", palette[3 * point], palette[3 * point + 1],
                  palette[3 * point + 2]);
    return text;
}

std::string loadPaletteFile(const std::string& path)
{
    // Decoded here first: the manager prints what is wrong with a file and goes on.
    const Storage palettes = decode(path);
    if (palettes.size() == 0)
        throw UsageError(path + ": there is no palette in it");
    for (const auto& [name, colours] : palettes)
        if (!isPalette(*colours))
            throw UsageError(path + ": '" + name +
                             "' is no palette: colour points are a uint8[] of three bytes each");
    registerBuiltIn();
    ColorPaletteManager::loadFile(path);
    return palettes.begin()->first;
}

std::vector<std::string> paletteNames()
{
    registerBuiltIn();
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
        throw UsageError("--palette: there is no '" + name + "'; there are " + listed(names));
    return ColorPaletteManager::getPaletteColors(*found);
}

} // namespace thermal
