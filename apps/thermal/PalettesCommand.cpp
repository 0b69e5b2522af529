#include "apps/thermal/Commands.h"
#include "apps/thermal/Error.h"
#include "apps/thermal/Table.h"
#include "camera/colours/Colouring.h"
#include "camera/colours/Palettes.h"
#include "camera/drawing/ContactSheet.h"
#include "recordings/PaletteFile.h"
#include "recordings/PaletteFormats.h"
#include "recordings/PictureSink.h"

#include "vision/imgproc/ColorPaletteManager.h"

#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace thermal {

using namespace velmo::camera;
using namespace velmo::recordings;

namespace {

using velmo::vision::ColorPaletteManager;

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

/// All palettes that there are: those of the file, if one is named, join the built-in ones.
std::vector<std::string> palettesOf(const std::string& file, Outputs& outputs)
{
    if (!file.empty()) {
        loadPaletteFile(file);
        outputs.protect({file});
    }
    return paletteNames();
}

Picture sheetOf(const std::vector<std::string>& names)
{
    ContactSheet sheet("palettes, coldest to hottest", 2);
    for (const std::string& name : names)
        sheet.add(name, swatch(ColorPaletteManager::getPaletteColors(name)));
    return sheet.draw();
}

/// Two beside each other, so that the picture has no more than 16384 rows.
constexpr std::size_t nMostDrawn = 500;

void listPalettes(const PalettesOptions& options)
{
    Outputs outputs;
    const std::vector<std::string> names = palettesOf(options.paletteFile, outputs);
    if (!options.out.empty() && names.size() > nMostDrawn)
        throw UsageError("--out draws at most " + std::to_string(nMostDrawn) + " palettes, there are " +
                         std::to_string(names.size()));
    Table table(
        {{"palette", "palette"}, {"points", "points"}, {"coldest", "coldest"}, {"hottest", "hottest"}});
    for (const std::string& name : names) {
        const Palette palette = ColorPaletteManager::getPaletteColors(name);
        const std::size_t points = palette.size() / 3;
        table.add(
            {name, static_cast<double>(points), colourText(palette, 0), colourText(palette, points - 1)});
    }
    if (!options.out.empty())
        writePicture(outputs, options.out, sheetOf(names));
    outputs.commit();
    table.print(std::cout, options.format);
}

void addPaletteFile(const Command& command, std::string& file)
{
    command.option("--file,--palette-file", file, "An XML file of further palettes").form("FILE");
}

void addExport(const Command& palettes)
{
    auto options = std::make_shared<ExchangeOptions>();
    const Command command = palettes.sub("export", "Writes one palette into an XML file");
    command.option("NAME", options->name, "One of 'thermal palettes'").required();
    addPaletteFile(command, options->paletteFile);
    command.option("--out", options->out, "The XML file").required().form("FILE");
    command.run([options] {
        Outputs outputs;
        palettesOf(options->paletteFile, outputs);
        const Palette palette = findPalette(options->name);
        writePaletteFile(outputs.file(options->out), options->name, palette);
        outputs.commit();
    });
}

void addImport(const Command& palettes)
{
    auto options = std::make_shared<ExchangeOptions>();
    const Command command = palettes.sub("import", "Makes an XML file of a palette of another program");
    command
        .option("FILE", options->input,
                "A .csv, .pal (JASC), .gpl (GIMP), .act (Adobe colour table) or .lut of 768 bytes")
        .required();
    command.option("--name", options->name, "The palette's name in the new file").required();
    command.option("--out", options->out, "The XML file").required().form("FILE");
    command.run([options] {
        Outputs outputs;
        outputs.protect({options->input});
        const Palette palette = importPalette(options->input);
        writePaletteFile(outputs.file(options->out), options->name, palette);
        outputs.commit();
    });
}

} // namespace

void addPalettesCommand(const Command& program)
{
    auto options = std::make_shared<PalettesOptions>();
    const Command command = program.sub("palettes", "Lists the palettes, writes and reads files of them");
    addPaletteFile(command, options->paletteFile);
    addExport(command);
    addImport(command);
    command.option("--out", options->out, "Draw them all into this .png").form("PATH");
    options->format.addTo(command);
    command.run([options, command] {
        if (!command.hasSub())
            listPalettes(*options);
    });
}

} // namespace thermal
