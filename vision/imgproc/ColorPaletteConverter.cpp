#include "vision/imgproc/ColorPaletteConverter.h"

#include "core/Exception.h"
#include "core/memory/Overlap.h"
#include "core/physics/DewPoint.h"
#include "vision/kernels/ColorPaletteConverterKernel.h"
#include "vision/radiometry/RadiometricTools.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <utility>

namespace velmo::vision {
namespace {

unsigned int byteOf(unsigned int color, int shift)
{
    return (color >> shift) & 0xff;
}

unsigned int entryOf(unsigned int color, bool bgr)
{
    const unsigned int red = byteOf(color, 16), green = byteOf(color, 8), blue = byteOf(color, 0);
    return bgr ? packEntry(blue, green, red, byteOf(color, 24))
               : packEntry(red, green, blue, byteOf(color, 24));
}

/// With red and blue exchanged, if the order is to change.
cv::Vec3b exchanged(const cv::Vec3b& pixel, bool exchange)
{
    return exchange ? cv::Vec3b(pixel[2], pixel[1], pixel[0]) : pixel;
}

/// Both functions behind it may be a program's own.
void checkMoisture(const std::vector<float>& moisture)
{
    if (moisture.size() != tableEntries)
        VELMO_THROW("Humidity at " + std::to_string(moisture.size()) + " surfaces, not " +
                    std::to_string(tableEntries) + "!");
    for (const float percent : moisture)
        if (!(percent >= 0.0f && percent <= 100.0f)) // also what is not a number
            VELMO_THROW("Humidity of " + std::to_string(percent) + " percent at a surface, not 0 to 100!");
}

std::string sizeText(const cv::Mat& matrix)
{
    return std::to_string(matrix.cols) + " x " + std::to_string(matrix.rows);
}

} // namespace

ColorPaletteConverter::AirTemperature ColorPaletteConverter::noTemperature()
{
    exp::MarkedFloat celsius(std::numeric_limits<float>::quiet_NaN());
    celsius.setMark(exp::MarkedFloat::u32MaxMark);
    return AirTemperature(celsius);
}

ColorPaletteConverter::ColorPaletteConverter(bool bgr) : m_bBgr(bgr)
{
    table();
}

ColorPaletteConverter::~ColorPaletteConverter() = default;
ColorPaletteConverter::ColorPaletteConverter(const ColorPaletteConverter& other) = default;
ColorPaletteConverter& ColorPaletteConverter::operator=(const ColorPaletteConverter& other) = default;
ColorPaletteConverter::ColorPaletteConverter(ColorPaletteConverter&& other) noexcept = default;
ColorPaletteConverter& ColorPaletteConverter::operator=(ColorPaletteConverter&& other) noexcept = default;

unsigned int* ColorPaletteConverter::table()
{
    if (m_oLookupTable.empty()) // not made yet, or moved away
        m_oLookupTable = cv::Mat_<cv::Vec4b>(1, tableEntries, cv::Vec4b());
    return m_oLookupTable.ptr<unsigned int>();
}

const unsigned int* ColorPaletteConverter::stretched(int span, const std::vector<unsigned char>& palette)
{
    const bool bSame = !m_aStretched.empty() && span == static_cast<int>(m_aStretched.size()) &&
                       palette == m_aStretchedPalette;
    if (!bSame) {
        std::vector<unsigned int> memory = std::exchange(m_aStretched, {}); // there is none, should this fail
        m_aStretchedPalette = palette;
        m_aStretched = stretchPalette(palette, span, m_bBgr, std::move(memory));
    }
    return m_aStretched.data();
}

ColorPaletteConverter::Picture ColorPaletteConverter::stretchedRgb(int span,
                                                                   const std::vector<unsigned char>& palette)
{
    const unsigned int* entries = stretched(span, palette);
    Picture row(1, span);
    for (int n = 0; n < span; ++n) {
        cv::Vec4b bytes;
        std::memcpy(bytes.val, entries + n, sizeof bytes.val);
        row(0, n) = exchanged({bytes[0], bytes[1], bytes[2]}, m_bBgr);
    }
    return row;
}

void ColorPaletteConverter::palletize(const Frame& src, Picture& dst, unsigned short min, unsigned short max,
                                      bool rebuild, std::vector<unsigned char>& palette)
{
    dst.create(src.rows, src.cols);
    if (src.total() % 4 != 0) {
        palletizeSlowly(src, dst, min, max, palette);
        return;
    }
    if (rebuild)
        resizeLookupTable(min, max, palette);
    palletizeFast(src, dst);
}

void ColorPaletteConverter::palletizeFast(const Frame& src, Picture& dst)
{
    if (src.rows != dst.rows || src.cols != dst.cols || src.total() != dst.total())
        VELMO_THROW("Picture of " + sizeText(dst) + " for a frame of " + sizeText(src) + "!");
    if (src.empty())
        return;
    const unsigned int* entries = table();
    const Frame frame = exp::untouched(src, dst);
    // One run where there is no padding; rows of views by their own pointers.
    const int rows = frame.isContinuous() && dst.isContinuous() ? 1 : frame.rows;
    const std::size_t count = frame.total() / static_cast<std::size_t>(rows);
    for (int r = 0; r < rows; ++r)
        palettize(frame[r], dst[r]->val, count, entries);
}

void ColorPaletteConverter::palletizeSlowly(const Frame& src, Picture& dst, unsigned short min,
                                            unsigned short max, const std::vector<unsigned char>& palette)
{
    // Only the table has whole entries; here every pixel has the three bytes of a picture.
    Picture row = stretchedRgb(max - min + 1, palette);
    fillColorRegionsRgb(row, min, max);
    const Frame frame = exp::untouched(src, dst);
    for (int r = 0; r < frame.rows; ++r)
        for (int c = 0; c < frame.cols; ++c) {
            const cv::Vec3b& entry = row(0, std::clamp(frame(r, c), min, max) - min);
            dst(r, c) = exchanged(entry, m_bBgr);
        }
}

void ColorPaletteConverter::resizeLookupTable(unsigned short min, unsigned short max,
                                              std::vector<unsigned char>& palette)
{
    fillTable(table(), stretched(max - min + 1, palette), min, max);
    fillColorRegions(min, max);
}

void ColorPaletteConverter::palletizeHumid(const Frame& src, Picture& dst,
                                           const AirTemperature& airTemperature, const AirHumidity& humidity,
                                           bool rebuild, std::vector<unsigned char>& palette)
{
    dst.create(src.rows, src.cols);
    if (src.total() % 4 != 0)
        VELMO_THROW("Odd height or width is not suporrted for humid scaling!");
    const bool bSameAir = (*m_oLastAirTemperature).value() == airTemperature.value() &&
                          m_oLastHumidity.value() == humidity.value();
    if (!bSameAir || rebuild) {
        *m_oLastAirTemperature = airTemperature;
        m_oLastHumidity = humidity;
        resizeLookupTableHumid(airTemperature, humidity, palette);
    }
    palletizeFast(src, dst);
}

void ColorPaletteConverter::resizeLookupTableHumid(const AirTemperature& airTemperature,
                                                   const AirHumidity& humidity,
                                                   std::vector<unsigned char>& palette)
{
    const unsigned int* entries = stretched(humiditySteps, palette);
    std::vector<float> temperatures(tableEntries);
    for (std::size_t v = 0; v < temperatures.size(); ++v)
        temperatures[v] = RadiometricTools::getFloat(static_cast<unsigned short>(v));
    const std::vector<float> moisture =
        exp::DewPoint::calcSurfaceMoisture(temperatures, airTemperature, humidity);
    checkMoisture(moisture);
    fillTableHumid(table(), entries, moisture.data());
}

void ColorPaletteConverter::createColorRegion(unsigned int id, unsigned short upper, unsigned short lower,
                                              unsigned int color)
{
    if (upper >= lower)
        m_mapColorRegions.insert_or_assign(id, ColorRegion(upper, lower, color));
}

void ColorPaletteConverter::deleteColorRegion(unsigned int id)
{
    m_mapColorRegions.erase(id);
}

void ColorPaletteConverter::fillColorRegions(unsigned short /*min*/, unsigned short /*max*/)
{
    unsigned int* entries = table();
    for (const auto& [id, region] : m_mapColorRegions)
        std::fill(entries + region.m_u16Lower, entries + region.m_u16Upper + 1,
                  entryOf(region.m_u32Color, m_bBgr));
}

void ColorPaletteConverter::fillColorRegionsRgb(Picture table, unsigned short /*min*/, unsigned short /*max*/)
{
    for (const auto& [id, region] : m_mapColorRegions) {
        const unsigned int color = region.m_u32Color;
        const unsigned int red = byteOf(color, 16), green = byteOf(color, 8), blue = byteOf(color, 0);
        const cv::Scalar bytes = m_bBgr ? cv::Scalar(blue, green, red) : cv::Scalar(red, green, blue);
        table.colRange(region.m_u16Lower, region.m_u16Upper + 1).setTo(bytes);
    }
}

} // namespace velmo::vision
