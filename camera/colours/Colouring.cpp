#include "camera/colours/Colouring.h"

#include "apps/thermal/Error.h"
#include "camera/settings/Parse.h"

#include "core/physics/DewPoint.h"

#include <CLI/App.hpp>

#include <utility>

namespace thermal {
namespace {

/// The palette that is named, or else the first of the file, or else the usual one.
Palette choosePalette(const ColourOptions& options)
{
    std::string name = options.humidity.empty() ? options.usual : "Humidity";
    if (!options.paletteFile.empty())
        name = loadPaletteFile(options.paletteFile);
    return findPalette(options.palette.empty() ? name : options.palette);
}

using Converter = velmo::vision::ColorPaletteConverter;

Converter::AirTemperature temperatureOf(const Air& air)
{
    return Converter::AirTemperature(velmo::exp::MarkedFloat(air.celsius));
}

Converter::AirHumidity humidityOf(const Air& air)
{
    return Converter::AirHumidity(velmo::exp::MarkedFloat(air.percent));
}

} // namespace

Air Air::parse(const std::string& text)
{
    const std::vector<std::string> parts = split(text, ':');
    if (parts.size() != 2)
        throw UsageError("--humidity: '" + text + "' is not CELSIUS:PERCENT");
    return {static_cast<float>(parseNumber(parts[0], "--humidity air temperature", -80, 200)),
            static_cast<float>(parseNumber(parts[1], "--humidity of the air", 0, 100))};
}

float Air::dewPoint() const
{
    return velmo::exp::DewPoint::calcDewPoint(temperatureOf(*this), humidityOf(*this));
}

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

Colouring::Colouring(Palette palette) : m_oPalette(std::move(palette)) {}

Colouring::Colouring(const ColourOptions& options) : m_oPalette(choosePalette(options))
{
    if (!options.humidity.empty())
        m_oAir = Air::parse(options.humidity);
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
    buildTable(range);
    // Not palletize, nor palletizeHumid: for odd pixel counts the one treats regions in its own way, the
    // other refuses.
    picture.create(frame.size());
    m_oConverter.palletizeFast(frame, picture);
}

void Colouring::buildTable(ValueRange range)
{
    if (m_oBuiltFor && (m_oAir || (m_oBuiltFor->low == range.low && m_oBuiltFor->high == range.high)))
        return;
    if (m_oAir)
        m_oConverter.resizeLookupTableHumid(temperatureOf(*m_oAir), humidityOf(*m_oAir), m_oPalette);
    else
        m_oConverter.resizeLookupTable(range.low, range.high, m_oPalette);
    m_oBuiltFor = range;
}

} // namespace thermal
