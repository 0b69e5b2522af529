#include "apps/thermal/Commands.h"
#include "apps/thermal/Table.h"
#include "camera/colours/Colouring.h"
#include "camera/colours/Palettes.h"
#include "camera/drawing/ContactSheet.h"
#include "recordings/PaletteFile.h"
#include "recordings/PaletteFormats.h"
#include "recordings/PictureSink.h"

#include <CLI/App.hpp>

#include <iostream>
#include <memory>
#include <string>

namespace thermal {

using namespace velmo::camera;
using namespace velmo::recordings;

namespace {

struct PalettesOptions
{
    std::string paletteFile;
    std::string out;
    TableFormat format;
};

struct ExchangeOptions
{
    std::string paletteFile;
    std::string input; ///< a file
    std::string name;
    std::string out;
};

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

void addPaletteFile(CLI::App& command, std::string& file)
{
    command.add_option("--file,--palette-file", file, "An XML file of further palettes")->type_name("FILE");
}

void addExport(CLI::App& palettes)
{
    auto options = std::make_shared<ExchangeOptions>();
    CLI::App& command = *palettes.add_subcommand("export", "Writes one palette into an XML file");
    command.add_option("NAME", options->name, "One of 'thermal palettes'")->required();
    addPaletteFile(command, options->paletteFile);
    command.add_option("--out", options->out, "The XML file")->required()->type_name("FILE");
    command.callback([options] {
        if (!options->paletteFile.empty())
            loadPaletteFile(options->paletteFile);
        writePaletteFile(options->out, options->name, findPalette(options->name));
    });
}

void addImport(CLI::App& palettes)
{
    auto options = std::make_shared<ExchangeOptions>();
    CLI::App& command =
        *palettes.add_subcommand("import", "Makes an XML file of a palette of another program");
    command
        .add_option("FILE", options->input,
                    "A .csv, .pal (JASC), .gpl (GIMP), .act (Adobe colour table) or .lut of 768 bytes")
        ->required();
    command.add_option("--name", options->name, "The palette's name in the new file")->required();
    command.add_option("--out", options->out, "The XML file")->required()->type_name("FILE");
    command.callback(
        [options] { writePaletteFile(options->out, options->name, importPalette(options->input)); });
}

} // namespace

void addPalettesCommand(CLI::App& program)
{
    auto options = std::make_shared<PalettesOptions>();
    CLI::App& command =
        *program.add_subcommand("palettes", "Lists the palettes, writes and reads files of them");
    addPaletteFile(command, options->paletteFile);
    addExport(command);
    addImport(command);
    command.add_option("--out", options->out, "Draw them all into this .png")->type_name("PATH");
    options->format.addTo(command);
    command.callback([options, &command] {
        if (command.get_subcommands().empty())
            listPalettes(*options);
    });
}

} // namespace thermal
