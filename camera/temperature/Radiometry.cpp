#include "camera/temperature/Radiometry.h"

#include "camera/settings/Parse.h"
#include "camera/temperature/Degrees.h"
#include "core/Exception.h"

#include <cmath>
#include <limits>
#include <vector>

namespace velmo::camera {
namespace {

constexpr double dLeastShare = 0.01; ///< below it an error of one count is one of many degrees

void requireShare(double share, const std::string& what)
{
    if (!(share >= dLeastShare && share <= 1)) // also what is not a number
        VELMO_THROW(what + ": " + numberText(share) + " is not from 0.01 to 1");
}

void requireTemperature(double celsius, const Band& band, const std::string& what)
{
    if (!(celsius >= dAbsoluteZero && std::isfinite(celsius)))
        VELMO_THROW(what + ": " + numberText(celsius) + " °C is not a temperature from -273.15 °C on");
    if (!std::isfinite(band.radiance(celsius)))
        VELMO_THROW(what + ": " + numberText(celsius) + " °C is beyond what the band " + band.text() +
                    " knows");
}

} // namespace

Band Band::parse(const std::string& text)
{
    Band band;
    if (text == "total") {
        band.total = true;
        return band;
    }
    Form form = {{"B", Field::Kind::Number, 1, 1e6}, {"F", Field::Kind::Number, -1e6, 1e6}};
    if (text.find(',') == std::string::npos)
        form.pop_back();
    const std::vector<double> numbers = parseForm(text, "band", form, ',');
    band.b = numbers[0];
    if (numbers.size() == 2)
        band.f = numbers[1];
    return band;
}

std::string Band::text() const
{
    return total ? "total" : numberText(b) + "," + numberText(f);
}

double Band::radiance(double celsius) const
{
    const double kelvin = celsius - dAbsoluteZero;
    if (total)
        return std::pow(kelvin, 4);
    const double under = std::exp(b / kelvin) - f; // infinite near absolute zero: nothing is seen
    return under > 0 ? 1 / under : std::numeric_limits<double>::infinity();
}

double Band::celsius(double radiance) const
{
    if (radiance <= 0)
        return fBelow;
    if (std::isinf(radiance))
        return fAbove;
    if (total)
        return std::pow(radiance, 0.25) + dAbsoluteZero;
    const double logarithm = std::log(1 / radiance + f);
    return logarithm > 0 ? b / logarithm + dAbsoluteZero : double{fAbove};
}

double airTransmission(double metres, double celsius, double percent)
{
    // Grams of water in a cubic metre of this air.
    const double water = percent / 100 *
                         std::exp(1.5587 + 0.06939 * celsius - 0.00027816 * celsius * celsius +
                                  0.00000068455 * celsius * celsius * celsius);
    const double root = std::sqrt(metres), damp = std::sqrt(water);
    const double share = 1.9 * std::exp(-root * (0.006569 - 0.002276 * damp)) -
                         0.9 * std::exp(-root * (0.01262 - 0.00667 * damp));
    requireShare(share, "transmission of " + numberText(metres) + " m of air of " + numberText(celsius) +
                            " °C and " + numberText(percent) + " %");
    return share;
}

Radiometry::Radiometry(const Settings& settings, const Band& band) : m_oSettings(settings), m_oBand(band)
{
    requireShare(settings.emissivity, "emissivity");
    requireShare(settings.transmission, "transmission");
    requireShare(settings.windowTransmission, "transmission of the window");
    requireTemperature(settings.reflected, band, "reflected temperature");
    requireTemperature(settings.air, band, "temperature of the air");
    requireTemperature(settings.window, band, "temperature of the window");

    const double window = settings.windowTransmission, air = settings.transmission;
    m_dShare = window * air * settings.emissivity;
    m_dOther = window * air * (1 - settings.emissivity) * band.radiance(settings.reflected) +
               window * (1 - air) * band.radiance(settings.air) +
               (1 - window) * band.radiance(settings.window);
}

bool Radiometry::changesNothing() const
{
    return m_dShare == 1;
}

double Radiometry::object(double apparent) const
{
    if (changesNothing() || std::isinf(apparent))
        return apparent;
    return m_oBand.celsius((m_oBand.radiance(apparent) - m_dOther) / m_dShare);
}

double Radiometry::apparent(double object) const
{
    if (changesNothing() || std::isinf(object))
        return object;
    return m_oBand.celsius(m_dShare * m_oBand.radiance(object) + m_dOther);
}

} // namespace velmo::camera
