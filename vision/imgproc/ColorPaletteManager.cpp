#include "vision/imgproc/ColorPaletteManager.h"

#include "core/Exception.h"
#include "core/codecs/StorageDecoder.h"
#include "core/codecs/StorageText.h"
#include "vision/imgproc/ColorPaletteTables.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <mutex>
#include <sstream>
#include <utility>

namespace velmo::vision {
namespace {

using Storage = exp::DataStorage<std::string>;
using Palette = std::vector<unsigned char>;
using Lock = std::lock_guard<std::recursive_mutex>;

std::recursive_mutex m_mutexInstance;

std::vector<std::string> keysOf(const Storage& storage)
{
    std::vector<std::string> keys;
    keys.reserve(storage.size());
    for (const auto& [key, value] : storage)
        keys.push_back(key);
    return keys;
}

/// Whether a storage takes the name as the key of a single entry.
bool isKey(const std::string& name)
{
    const auto item = exp::discriminate(name);
    return item.isValid() && !item.hasNext();
}

void registerPalettes(std::ifstream& file)
{
    // Against devices that never end: more than a storage file can hold.
    constexpr std::size_t limit = exp::StorageLimits::u64Xml + exp::StorageLimits::u64Values + (1 << 20);
    std::string content;
    exp::readText(file, limit, content);
    std::istringstream text(content);
    file.close();
    const auto decoded = exp::StorageDecoder<Storage>(exp::StorageDecoder<Storage>::s32Xml).decode(text);
    for (const auto& [name, value] : decoded.first) {
        ColorPaletteManager::m_stoAvailablePalettes.set(name, value);
        ColorPaletteManager::m_stoSupportedPalettes.set(name, value);
    }
}

} // namespace

Storage ColorPaletteManager::m_stoAvailablePalettes VELMO_BUILT_EARLY;
Storage ColorPaletteManager::m_stoSupportedPalettes VELMO_BUILT_EARLY;
std::string ColorPaletteManager::m_strActivePalette VELMO_BUILT_EARLY = Id::Palette::Ironbow;

std::vector<std::string> ColorPaletteManager::getSupportedPalettesNames()
{
    const Lock lock(m_mutexInstance);
    return keysOf(m_stoSupportedPalettes);
}

std::vector<std::string> ColorPaletteManager::getAvailableColorPalettes()
{
    const Lock lock(m_mutexInstance);
    return keysOf(m_stoAvailablePalettes);
}

void ColorPaletteManager::setActivePalette(const std::string& name)
{
    const Lock lock(m_mutexInstance);
    if (m_stoSupportedPalettes.find(name) == m_stoSupportedPalettes.end())
        VELMO_THROW("Color palette " + name + " not supported!");
    m_strActivePalette = name;
}

void ColorPaletteManager::setSupportedColorPalettes(std::vector<std::string> names)
{
    const Lock lock(m_mutexInstance);
    for (const std::string& name : names) {
        const auto entry = m_stoAvailablePalettes.find(name);
        if (entry == m_stoAvailablePalettes.end())
            VELMO_THROW("Color palette " + name + " not available!");
        m_stoSupportedPalettes.set(name, entry->second);
    }
}

void ColorPaletteManager::addPalette(const std::string& name, std::vector<unsigned char> colors)
{
    const Lock lock(m_mutexInstance);
    if (colors.empty() || colors.size() % 3 != 0)
        VELMO_THROW("Invalid palette size " + std::to_string(colors.size()));
    if (!isKey(name)) // it would end up in a group, where no list shows it
        VELMO_THROW("Invalid palette name \"" + name + "\"");
    const auto value = exp::Variant::create(std::move(colors));
    m_stoSupportedPalettes.set(name, value);
    m_stoAvailablePalettes.set(name, value);
}

void ColorPaletteManager::loadPalettes(std::vector<std::string> files)
{
    const Lock lock(m_mutexInstance);
    const std::pair<const char*, const Palette&> tables[] = {{Id::Palette::Rainbow, ms_vecRainbow},
                                                             {Id::Palette::Grayscale, ms_vecGrayscale},
                                                             {Id::Palette::GrayscaleInv, ms_vecGrayscaleInv},
                                                             {Id::Palette::Hotcold, ms_vecHotcold},
                                                             {Id::Palette::Bluered, ms_vecBluered},
                                                             {Id::Palette::Sepia, ms_vecSepia},
                                                             {Id::Palette::Velmo, ms_vecVelmo},
                                                             {Id::Palette::Dewpoint, ms_vecDewpoint},
                                                             {Id::Palette::Humidity, ms_vecHumidity},
                                                             {Id::Palette::Rainbowhc, ms_vecRainbowhc},
                                                             {Id::Palette::Hightemp, ms_vecHightemp}};
    for (const auto& [name, colors] : tables)
        m_stoAvailablePalettes.set(name, exp::Variant::create(colors));
    addPalette(Id::Palette::Ironbow, ms_vecIronbow);
    for (const std::string& file : files)
        loadFile(file);
}

void ColorPaletteManager::loadFile(const std::string& path)
{
    const Lock lock(m_mutexInstance);
    std::error_code unknown;
    if (std::filesystem::is_fifo(path, unknown)) // opening it would wait for somebody who writes
        return;
    std::ifstream file(path, std::ios::binary);
    if (!file.is_open() || !file.good())
        return;
    try {
        registerPalettes(file);
    } catch (const std::exception& error) {
        std::cout << error.what() << std::endl;
    }
}

std::vector<unsigned char> ColorPaletteManager::getPaletteColors(const std::string& name)
{
    const Lock lock(m_mutexInstance);
    if (m_stoAvailablePalettes.size() == 0)
        loadPalettes({});
    const auto entry = m_stoAvailablePalettes.find(name);
    if (entry == m_stoAvailablePalettes.end())
        VELMO_THROW("Color palette " + name + " not supported!");
    return entry->second->value<Palette>();
}

std::vector<std::vector<unsigned char>> ColorPaletteManager::getSupportedPalettesColors()
{
    const Lock lock(m_mutexInstance);
    std::vector<Palette> colors;
    // Over a copy of the names: the first getPaletteColors may register palettes.
    for (const std::string& name : keysOf(m_stoSupportedPalettes))
        colors.push_back(getPaletteColors(name));
    return colors;
}

} // namespace velmo::vision
