#include "camera/colours/Colouring.h"

#include "camera/settings/Keys.h"

#include "core/Exception.h"

#include <utility>

namespace velmo::camera {
namespace {

using Converter = vision::ColorPaletteConverter;

Converter::AirTemperature temperatureOf(const Air& air)
{
    return Converter::AirTemperature(exp::MarkedFloat(air.celsius));
}

Converter::AirHumidity humidityOf(const Air& air)
{
    return Converter::AirHumidity(exp::MarkedFloat(air.percent));
}

Palette choosePalette(const Settings& settings)
{
    const std::string name = settings.text("colours/palette");
    if (name != "auto")
        return findPalette(name);
    return findPalette(settings.text("colours/humidity") == "off" ? "Ironbow" : "Humidity");
}

} // namespace

Colouring::Colouring(Palette palette) : m_oPalette(std::move(palette)) {}

Colouring::Colouring(const Settings& settings) : m_oPalette(choosePalette(settings))
{
    const std::vector<std::string> regions = settings.list("colours/regions");
    const std::vector<double> air = settings.numbers("colours/humidity");
    if (!air.empty() && !regions.empty())
        VELMO_THROW("colours/humidity and colours/regions: one of them at a time");
    if (!air.empty())
        m_oAir = {static_cast<float>(air[0]), static_cast<float>(air[1])};
    unsigned id = 0;
    for (const std::string& text : regions) {
        const std::vector<double> region = keyOf("colours/regions").kind.numbers(text);
        m_oConverter.createColorRegion(id++, static_cast<unsigned short>(region[1]),
                                       static_cast<unsigned short>(region[0]),
                                       static_cast<unsigned>(region[2]));
    }
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

} // namespace velmo::camera
