#include "recordings/PaletteFile.h"

#include "core/Exception.h"
#include "core/codecs/StorageDecoder.h"
#include "vision/imgproc/ColorPaletteManager.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <typeinfo>

namespace velmo::recordings {
namespace {

using vision::ColorPaletteManager;
using Storage = exp::DataStorage<std::string>;
using Decoder = exp::StorageDecoder<Storage>;

constexpr std::size_t nMostPalettes = 10000;

Storage decode(const std::string& path)
{
    std::ifstream file = openStream(path);
    try {
        return Decoder(Decoder::s32Xml).decode(file).first;
    } catch (const std::exception& error) {
        VELMO_THROW(path + ": " + error.what());
    }
}

const Palette& paletteOf(const exp::Variant& value, const std::string& name, const std::string& path)
{
    if (value.getTypeInfo() == typeid(Palette)) {
        const Palette& colours = value.value<Palette>();
        if (!colours.empty() && colours.size() % 3 == 0)
            return colours;
    }
    VELMO_THROW(path + ": '" + name + "' is no palette: colour points are a uint8[] of three bytes each");
}

/// A name as an attribute of an XML file.
std::string attribute(const std::string& name)
{
    std::string text;
    for (const char letter : name)
        switch (letter) {
        case '&':
            text += "&amp;";
            break;
        case '<':
            text += "&lt;";
            break;
        case '>':
            text += "&gt;";
            break;
        case '"':
            text += "&quot;";
            break;
        default:
            text += letter;
        }
    return text;
}

void requireName(const std::string& name)
{
    const bool plain = std::none_of(name.begin(), name.end(), [](unsigned char letter) {
        return letter == '/' || std::iscntrl(letter) != 0;
    });
    if (name.empty() || !plain)
        VELMO_THROW("'" + name + "': the name of a palette is a text without '/' and line ends");
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
    const Storage palettes = decode(path);
    if (palettes.size() == 0)
        VELMO_THROW(path + ": there is no palette in it");
    if (palettes.size() > nMostPalettes)
        VELMO_THROW(path + ": holds " + std::to_string(palettes.size()) + " palettes, at most " +
                    std::to_string(nMostPalettes) + " are taken");
    for (const auto& [name, colours] : palettes)
        paletteOf(*colours, name, path); // all of them before the first one is added
    if (ColorPaletteManager::getAvailableColorPalettes().empty())
        ColorPaletteManager::loadPalettes({}); // later they would replace those of the file
    for (const auto& [name, colours] : palettes)
        ColorPaletteManager::addPalette(name, paletteOf(*colours, name, path));
    return palettes.begin()->first;
}

void writePaletteFile(OutputFile file, const std::string& name, const Palette& palette)
{
    requireName(name);
    std::string text =
        "<group name=\"palettes\">\n    <item name=\"" + attribute(name) + "\" type=\"uint8[]\">";
    for (std::size_t point = 0; point < palette.size() / 3; ++point)
        text += (point % 12 == 0 ? "\n        " : " ") + colourText(palette, point);
    file.write(text + "\n    </item>\n</group>\n");
    file.finish();
}

} // namespace velmo::recordings
