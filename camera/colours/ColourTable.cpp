#include "camera/colours/ColourTable.h"

#include "core/Exception.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace velmo::camera {
namespace {

constexpr int s32LastValue = 65535;
constexpr unsigned u32FineColours = 4096;
constexpr int s32MouldStep = 800; ///< 80 percent
const Palette mouldColours = {0xFF, 0xE0, 0x00, 0xFF, 0x00, 0x00};

void requireTemperatures(const Scale& scale, const char* what)
{
    if (!scale.hasDegrees())
        VELMO_THROW(std::string(what) + " needs a unit other than counts");
}

std::tuple<unsigned char, unsigned char, unsigned char> orderOf(const cv::Vec3b& colour)
{
    return {colour[0], colour[1], colour[2]};
}

} // namespace

ColourTable::ColourTable(Palette palette) : m_oPalette(std::move(palette)), m_vecColours(Scale::s32Values) {}

void ColourTable::showHumidity(const Air& air, const Scale& scale, bool mould)
{
    requireTemperatures(scale, "humidity");
    m_vecPercentColours = expandPalette(m_oPalette, mould ? s32MouldStep : s32PercentSteps);
    if (mould) {
        const auto risky = expandPalette(mouldColours, s32PercentSteps - s32MouldStep);
        m_vecPercentColours.insert(m_vecPercentColours.end(), risky.begin(), risky.end());
    }
    showPercents(air.atSurfaces(scale.celsius()));
}

void ColourTable::showInsulation(double insideCelsius, double outsideCelsius, const Scale& scale)
{
    requireTemperatures(scale, "insulation");
    if (insideCelsius == outsideCelsius)
        VELMO_THROW("insulation: it is as warm inside as outside, nothing can be told");
    std::vector<float> percents;
    for (const double celsius : scale.celsius())
        percents.push_back(
            static_cast<float>(100 * (celsius - outsideCelsius) / (insideCelsius - outsideCelsius)));
    m_vecPercentColours = expandPalette(m_oPalette, s32PercentSteps);
    showPercents(percents);
}

void ColourTable::showPercents(const std::vector<float>& percents)
{
    m_vecTenths.clear();
    for (const float percent : percents)
        m_vecTenths.push_back(static_cast<unsigned short>(std::lround(std::clamp(percent, 0.F, 100.F) * 10)));
    m_oBuiltFor.reset();
}

void ColourTable::add(Isotherm isotherm)
{
    m_vecIsotherms.push_back(std::move(isotherm));
    m_oBuiltFor.reset();
}

void ColourTable::setPlaces(const std::vector<unsigned short>& places)
{
    if (m_vecPlaces == places)
        return;
    m_vecPlaces = places;
    m_oBuiltFor.reset();
}

void ColourTable::showPlaces()
{
    m_bPlaces = true;
    m_oBuiltFor.reset();
}

bool ColourTable::build(ValueRange range)
{
    if (m_oBuiltFor && (m_bPlaces || !m_vecTenths.empty() || *m_oBuiltFor == range))
        return false;
    if (m_bPlaces)
        fill({0, s32LastValue});
    else if (m_vecTenths.empty())
        fill(range);
    else
        std::transform(m_vecTenths.begin(), m_vecTenths.end(), m_vecColours.begin(),
                       [&](unsigned short tenths) { return m_vecPercentColours[tenths]; });
    if (!m_bPlaces && !m_vecIsotherms.empty()) {
        m_vecUnder = m_vecColours;
        for (const Isotherm& isotherm : m_vecIsotherms)
            paint(isotherm);
    }
    m_vecBands.clear();
    m_oBuiltFor = range;
    ++m_nBuilds;
    return true;
}

void ColourTable::fill(ValueRange range)
{
    const auto begin = m_vecColours.begin() + range.low, end = m_vecColours.begin() + range.high + 1;
    if (m_vecPlaces.size() == static_cast<std::size_t>(end - begin)) {
        if (m_vecFine.empty())
            m_vecFine = expandPalette(m_oPalette, u32FineColours);
        std::transform(m_vecPlaces.begin(), m_vecPlaces.end(), begin, [&](unsigned short place) {
            return m_vecFine[(place * (u32FineColours - 1) + s32LastValue / 2) / s32LastValue];
        });
    } else {
        const auto colours = expandPalette(m_oPalette, range.high - range.low + 1);
        std::copy(colours.begin(), colours.end(), begin);
    }
    std::fill(m_vecColours.begin(), begin, *begin);
    std::fill(end, m_vecColours.end(), *(end - 1));
}

void ColourTable::paint(const Isotherm& isotherm)
{
    auto colour = m_vecColours.begin() + isotherm.low;
    const auto end = m_vecColours.begin() + isotherm.high + 1;
    while (colour != end) { // neighbours mostly have the same
        const cv::Vec3b under = *colour, over = isotherm.over(under);
        for (; colour != end && *colour == under; ++colour)
            *colour = over;
    }
}

ValueRange ColourTable::varying() const
{
    if (m_bPlaces || !m_vecTenths.empty() || !m_oBuiltFor)
        return {0, s32LastValue};
    ValueRange range = *m_oBuiltFor;
    for (const Isotherm& isotherm : m_vecIsotherms) {
        const auto before = static_cast<unsigned short>(std::max(isotherm.low - 1, 0));
        const auto behind = static_cast<unsigned short>(std::min(isotherm.high + 1, s32LastValue));
        range = unite(range, {before, behind});
    }
    return range;
}

const std::vector<ColourTable::Band>& ColourTable::bands()
{
    if (!m_vecBands.empty())
        return m_vecBands;
    const ValueRange all = m_vecTenths.empty() && m_oBuiltFor ? *m_oBuiltFor : ValueRange{0, s32LastValue};
    for (int value = all.low; value <= all.high; ++value) {
        const cv::Vec3b& colour = m_vecColours[static_cast<std::size_t>(value)];
        const auto place = static_cast<unsigned short>(value);
        if (m_vecBands.empty() || m_vecBands.back().colour != colour)
            m_vecBands.push_back({colour, {place, place}});
        m_vecBands.back().values.high = place;
    }
    std::stable_sort(m_vecBands.begin(), m_vecBands.end(), [](const Band& left, const Band& right) {
        return orderOf(left.colour) < orderOf(right.colour);
    });
    return m_vecBands;
}

std::optional<ValueRange> ColourTable::valueAt(const cv::Vec3b& colour)
{
    if (m_bPlaces)
        return std::nullopt;
    const std::vector<Band>& all = bands();
    const auto found =
        std::lower_bound(all.begin(), all.end(), colour, [](const Band& band, const cv::Vec3b& wanted) {
            return orderOf(band.colour) < orderOf(wanted);
        });
    if (found == all.end() || found->colour != colour)
        return std::nullopt;
    return found->values;
}

bool ColourTable::isUnambiguous()
{
    if (m_bPlaces)
        return false;
    const std::vector<Band>& all = bands();
    return std::adjacent_find(all.begin(), all.end(), [](const Band& left, const Band& right) {
               return left.colour == right.colour;
           }) == all.end();
}

} // namespace velmo::camera
