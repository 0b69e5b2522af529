#include "camera/colours/Colouring.h"

#include "camera/settings/Parse.h"

#include <algorithm>
#include <utility>

namespace velmo::camera {
namespace {

constexpr int s32LastValue = 65535;

Palette choosePalette(const Settings& settings)
{
    const std::string name = settings.text("colours/palette");
    if (name != "auto")
        return findPalette(name);
    if (settings.text("colours/insulation") != "off")
        return findPalette("Bluered");
    if (settings.text("colours/humidity") == "off")
        return findPalette("Ironbow");
    return findPalette(settings.flag("colours/mould") ? "Grayscale" : "Humidity");
}

} // namespace

Colouring::Colouring(const Settings& settings, const Thermometer& thermometer)
    : m_oTable(choosePalette(settings)), m_oTone(settings)
{
    const std::string humidity = settings.text("colours/humidity"),
                      insulation = settings.text("colours/insulation");
    if (humidity != "off" && insulation != "off")
        VELMO_THROW("colours/humidity and colours/insulation: one of them at a time");
    if (humidity == "off" && settings.flag("colours/mould"))
        VELMO_THROW("colours/mould: needs the air of the room, colours/humidity T:PERCENT");
    if (!m_oTone.isPlain() && (humidity != "off" || insulation != "off"))
        VELMO_THROW("colours/tone and colours/detail: not with colours that stand for percents");
    m_oTable.setNote(m_oTone.note());
    if (m_oTone.isLocal())
        m_oTable.showPlaces();
    if (humidity != "off") {
        m_oAir = Air::parse(humidity, "colours/humidity", thermometer.degrees());
        m_oTable.showHumidity(*m_oAir, thermometer.scale(), settings.flag("colours/mould"));
    }
    if (insulation != "off") {
        const auto celsius = [&](std::size_t side) {
            return thermometer.celsiusOf(split(insulation, ':')[side], "colours/insulation");
        };
        m_oTable.showInsulation(celsius(0), celsius(1), thermometer.scale());
    }
    for (const std::string& region : settings.list("colours/regions"))
        m_oTable.add(Isotherm::parseRegion(region, "colours/regions", thermometer));
    for (const std::string& isotherm : settings.list("colours/isotherms"))
        m_oTable.add(Isotherm::parse(isotherm, "colours/isotherms", thermometer));
}

Picture Colouring::paint(const Frame& frame, ValueRange range)
{
    Picture picture;
    paint(frame, range, picture);
    return picture;
}

void Colouring::paint(const Frame& frame, ValueRange range, Picture& picture)
{
    const Frame& shown = m_oTone.apply(frame, range);
    m_oTable.setPlaces(m_oTone.places());
    if (m_oTable.build(range))
        handOver();
    // Not palletize: for odd pixel counts it has a way of its own.
    picture.create(frame.size());
    m_oConverter.palletizeFast(shown, picture);
    if (m_oTone.changesFrames())
        paintIsotherms(frame, picture);
}

void Colouring::paintIsotherms(const Frame& frame, Picture& picture) const
{
    for (const Isotherm& isotherm : m_oTable.isotherms())
        for (int r = 0; r < frame.rows; ++r)
            for (int c = 0; c < frame.cols; ++c)
                if (frame[r][c] >= isotherm.low && frame[r][c] <= isotherm.high)
                    picture[r][c] = isotherm.over(picture[r][c]);
}

void Colouring::handOver()
{
    // As many colour points as there are values from the first change of colour to the last: the converter
    // has nothing to stretch then. Its own stretching would leave half a point flat at either end.
    const ValueRange varying = m_oTable.varying();
    // From its upper end on it paints the point before the last one; the very last value is a region.
    const int top = std::min(varying.high + 1, s32LastValue);
    // Isotherms are for values that are true.
    const auto& colours = m_oTone.changesFrames() ? m_oTable.paletteColours() : m_oTable.colours();
    m_vecPoints.clear();
    for (int value = varying.low; value <= top; ++value) {
        const cv::Vec3b& colour = colours[static_cast<std::size_t>(value)];
        m_vecPoints.insert(m_vecPoints.end(), {colour[2], colour[1], colour[0]});
    }
    const cv::Vec3b& last = colours.back();
    m_oConverter.createColorRegion(0, s32LastValue, s32LastValue,
                                   static_cast<unsigned>(last[2] << 16 | last[1] << 8 | last[0]));
    m_oConverter.resizeLookupTable(varying.low, static_cast<unsigned short>(top), m_vecPoints);
}

} // namespace velmo::camera
