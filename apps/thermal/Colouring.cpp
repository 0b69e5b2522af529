#include "apps/thermal/Colouring.h"

#include "apps/thermal/Error.h"
#include "apps/thermal/Parse.h"

#include <CLI/App.hpp>

#include <utility>

namespace thermal {
namespace {

/// The palette that is named, or else the first of the file, or else the usual one.
Palette choosePalette(const ColourOptions& options)
{
    std::string name = options.usual;
    if (!options.paletteFile.empty())
        name = loadPaletteFile(options.paletteFile);
    return findPalette(options.palette.empty() ? name : options.palette);
}

} // namespace

void ColourOptions::addTo(CLI::App& command)
{
    command
        .add_option("--palette", palette,
                    "The colours, one of 'thermal palettes'; " + usual + " if not given")
        ->type_name("NAME");
    command
        .add_option("--palette-file", paletteFile,
                    "An XML file of further palettes; its first one is taken unless --palette names another")
        ->type_name("FILE");
    command
        .add_option("--region", regions,
                    "Paint the raw values LOW to HIGH in one colour; may be repeated, the last one wins")
        ->type_name("LOW:HIGH:RRGGBB")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

Colouring::Colouring(Palette palette) : m_oPalette(std::move(palette)) {}

Colouring::Colouring(const ColourOptions& options) : m_oPalette(choosePalette(options))
{
    for (std::size_t i = 0; i < options.regions.size(); ++i)
        addRegion(static_cast<unsigned>(i), options.regions[i]);
}

void Colouring::addRegion(unsigned id, const std::string& text)
{
    const std::vector<std::string> parts = split(text, ':');
    if (parts.size() != 3)
        throw UsageError("--region: '" + text + "' is not LOW:HIGH:RRGGBB");
    const int low = parseInt(parts[0], "--region low value", 0, 65535);
    const int high = parseInt(parts[1], "--region high value", 0, 65535);
    if (low > high)
        throw UsageError("--region: in '" + text + "' the low value is above the high one");
    m_oConverter.createColorRegion(id, static_cast<unsigned short>(high), static_cast<unsigned short>(low),
                                   parseColour(parts[2], "--region"));
}

Picture Colouring::paint(const Frame& frame, ValueRange range)
{
    Picture picture;
    paint(frame, range, picture);
    return picture;
}

void Colouring::paint(const Frame& frame, ValueRange range, Picture& picture)
{
    if (!m_oBuiltFor || m_oBuiltFor->low != range.low || m_oBuiltFor->high != range.high) {
        m_oConverter.resizeLookupTable(range.low, range.high, m_oPalette);
        m_oBuiltFor = range;
    }
    // Not palletize: for odd pixel counts that takes regions relative to the range and swaps their colours.
    picture.create(frame.size());
    m_oConverter.palletizeFast(frame, picture);
}

} // namespace thermal
