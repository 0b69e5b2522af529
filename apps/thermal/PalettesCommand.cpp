#include "apps/thermal/Colouring.h"
#include "apps/thermal/Commands.h"
#include "apps/thermal/ContactSheet.h"
#include "apps/thermal/Palettes.h"
#include "apps/thermal/PictureSink.h"
#include "apps/thermal/Table.h"

#include <CLI/App.hpp>

#include <cstdio>
#include <iostream>
#include <memory>
#include <string>

namespace thermal {
namespace {

struct PalettesOptions
{
    std::string paletteFile;
    std::string out;
    TableFormat format;
};

std::string colourText(const Palette& palette, std::size_t point)
{
    char text[8];
    std::snprintf(text, sizeof text, "#%02X%02X%02X", palette[3 * point], palette[3 * point + 1],
                  palette[3 * point + 2]);
    return text;
}

/// The whole palette from left to right.
Picture swatch(const Palette& palette)
{
    constexpr int s32Width = 400;
    Frame ramp(28, s32Width);
    for (int c = 0; c < s32Width; ++c)
        ramp.col(c) = static_cast<unsigned short>(c);
    return Colouring(palette).paint(ramp, {0, s32Width});
}

void listPalettes(const PalettesOptions& options)
{
    if (!options.paletteFile.empty())
        loadPaletteFile(options.paletteFile);
    Table table(
        {{"palette", "palette"}, {"points", "points"}, {"coldest", "coldest"}, {"hottest", "hottest"}});
    ContactSheet sheet("palettes, coldest to hottest", 2);
    for (const std::string& name : paletteNames()) {
        const Palette palette = findPalette(name);
        const std::size_t points = palette.size() / 3;
        table.add(
            {name, static_cast<double>(points), colourText(palette, 0), colourText(palette, points - 1)});
        sheet.add(name, swatch(palette));
    }
    if (!options.out.empty())
        writePicture(options.out, sheet.draw());
    table.print(std::cout, options.format);
}

} // namespace

void addPalettesCommand(CLI::App& program)
{
    auto options = std::make_shared<PalettesOptions>();
    CLI::App& command = *program.add_subcommand("palettes", "Lists the palettes");
    command.add_option("--palette-file", options->paletteFile, "An XML file of further palettes")
        ->type_name("FILE");
    command.add_option("--out", options->out, "Draw them all into this .png")->type_name("PATH");
    options->format.addTo(command);
    command.callback([options] { listPalettes(*options); });
}

} // namespace thermal
