#include "camera/temperature/Thermometer.h"

#include "camera/settings/Parse.h"
#include "core/Exception.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace velmo::camera {
namespace {

using Edge = Thermometer::Edge;

constexpr int s32Last = Scale::s32Values - 1;
constexpr double dHottest = 1e6; ///< more than any scale shows

/// -1 or s32Values if there is none.
int countOf(double number, Edge edge)
{
    switch (edge) {
    case Edge::AtOrAbove:
        return static_cast<int>(std::ceil(number));
    case Edge::AtOrBelow:
        return static_cast<int>(std::floor(number));
    case Edge::Above:
        return static_cast<int>(std::floor(number)) + 1;
    default:
        return static_cast<int>(std::ceil(number)) - 1;
    }
}

/// The same by temperature. In single precision, like the table: a number that is typed as it is read names
/// that value.
int countOf(const std::vector<float>& table, float celsius, Edge edge)
{
    const bool bAtOrAbove = edge == Edge::AtOrAbove || edge == Edge::Below;
    const auto found = bAtOrAbove ? std::lower_bound(table.begin(), table.end(), celsius)
                                  : std::upper_bound(table.begin(), table.end(), celsius);
    const int value = static_cast<int>(found - table.begin());
    return edge == Edge::AtOrAbove || edge == Edge::Above ? value : value - 1;
}

} // namespace

unsigned short Thermometer::valueOf(const std::string& text, Edge edge, const std::string& what) const
{
    const bool bCount = !text.empty() && text.back() == 'n';
    const int value =
        bCount || !hasDegrees()
            ? countOf(parseNumber(bCount ? text.substr(0, text.size() - 1) : text, what, 0, s32Last), edge)
            : countOf(m_oScale.celsius(), static_cast<float>(celsiusOf(text, what)), edge);
    const bool bOutside = value < 0 || value > s32Last;
    if (bOutside || (edge == Edge::AtOrBelow && read(static_cast<unsigned short>(value)) == double{fBelow})) {
        constexpr std::array names = {"from '", "up to '", "above '", "below '"};
        VELMO_THROW(what + ": no value is " + names[static_cast<std::size_t>(edge)] + text + "'; " +
                    m_oScale.text() + " goes from " + this->text(read(m_oScale.first())) + " to " +
                    this->text(read(m_oScale.last())));
    }
    return static_cast<unsigned short>(value);
}

double Thermometer::celsiusOf(const std::string& text, const std::string& what) const
{
    const double coldest = m_oDegrees.fromCelsius(dAbsoluteZero);
    return std::max(m_oDegrees.toCelsius(parseNumber(text, what, coldest, dHottest)), dAbsoluteZero);
}

double Thermometer::read(unsigned short value) const
{
    return hasDegrees() ? m_oDegrees.fromCelsius(m_oScale.celsius(value)) : value;
}

double Thermometer::rounded(double number) const
{
    constexpr double dSteps = 10000;
    return hasDegrees() && std::isfinite(number) ? std::round(number * dSteps) / dSteps : number;
}

double Thermometer::readDifference(double counts, unsigned short around) const
{
    return hasDegrees() ? m_oDegrees.differenceFromCelsius(counts * m_oScale.slope(around)) : counts;
}

std::string Thermometer::text(double number, int decimals) const
{
    return degreesText(number, hasDegrees() ? decimals : 0) + (std::isfinite(number) ? unit() : "");
}

std::string Thermometer::unit() const
{
    return hasDegrees() ? std::string(" ") + m_oDegrees.symbol() : "";
}

std::string Thermometer::key() const
{
    return hasDegrees() ? std::string("_") + m_oDegrees.name() : "";
}

} // namespace velmo::camera
