#include "apps/thermal/ColourOptions.h"

#include "recordings/PaletteFile.h"

#include <CLI/App.hpp>

namespace thermal {

using namespace velmo::camera;

namespace {

/// The palette that is named, or else the first of the file, or else the usual one.
Palette choosePalette(const ColourOptions& options)
{
    std::string name = options.humidity.empty() ? options.usual : "Humidity";
    if (!options.paletteFile.empty())
        name = velmo::recordings::loadPaletteFile(options.paletteFile);
    return findPalette(options.palette.empty() ? name : options.palette);
}

} // namespace

void ColourOptions::addTo(CLI::App& command)
{
    command
        .add_option("--palette", palette,
                    "The colours, one of 'thermal palettes'; " + usual +
                        ", or with --humidity Humidity, if not given")
        ->type_name("NAME");
    command
        .add_option("--palette-file", paletteFile,
                    "An XML file of further palettes; its first one is taken unless --palette names another")
        ->type_name("FILE");
    CLI::Option* const region =
        command
            .add_option("--region", regions,
                        "Paint the raw values LOW to HIGH in one colour; may be repeated, the last one wins")
            ->type_name("LOW:HIGH:RRGGBB")
            ->expected(1)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    command
        .add_option(
            "--humidity", humidity,
            "Colour by the relative humidity that air of this temperature and humidity reaches at each "
            "surface; values are hundredths of a kelvin")
        ->type_name("CELSIUS:PERCENT")
        ->excludes(region);
}

Colouring makeColouring(const ColourOptions& options)
{
    Colouring colouring(choosePalette(options));
    if (!options.humidity.empty())
        colouring.setAir(Air::parse(options.humidity, "--humidity"));
    for (const std::string& region : options.regions)
        colouring.addBand(ValueBand::parse(region, "--region"));
    return colouring;
}

} // namespace thermal
