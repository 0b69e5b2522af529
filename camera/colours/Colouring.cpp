#include "camera/colours/Colouring.h"

#include "camera/settings/Parse.h"

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

} // namespace

ValueBand ValueBand::parse(const std::string& text, const std::string& what)
{
    const Form form = {{"LOW", Field::Kind::Whole, 0, 65535},
                       {"HIGH", Field::Kind::Whole, 0, 65535},
                       {"RRGGBB", Field::Kind::Colour}};
    const std::vector<double> values = parseForm(text, what, form);
    if (values[0] > values[1])
        VELMO_THROW(what + ": in '" + text + "' the low value is above the high one");
    return {static_cast<unsigned short>(values[0]), static_cast<unsigned short>(values[1]),
            static_cast<unsigned>(values[2])};
}

Colouring::Colouring(Palette palette) : m_oPalette(std::move(palette)) {}

void Colouring::setAir(Air air)
{
    m_oAir = air;
    m_oBuiltFor.reset();
}

void Colouring::addBand(const ValueBand& band)
{
    m_oConverter.createColorRegion(m_u32Bands++, band.high, band.low, band.colour);
    m_oBuiltFor.reset();
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
