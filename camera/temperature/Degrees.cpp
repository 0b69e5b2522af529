#include "camera/temperature/Degrees.h"

#include "camera/settings/Parse.h"
#include "core/Exception.h"

#include <array>
#include <cmath>

namespace velmo::camera {
namespace {

constexpr double dFahrenheitPerKelvin = 1.8;
constexpr double dFreezingFahrenheit = 32;

} // namespace

Degrees Degrees::parse(const std::string& text)
{
    const std::string letters = "CKF";
    if (text.size() != 1 || letters.find(text) == std::string::npos)
        VELMO_THROW("degrees: '" + text + "' is not C, K or F");
    return static_cast<Kind>(letters.find(text));
}

double Degrees::fromCelsius(double celsius) const
{
    switch (m_eKind) {
    case Kelvin:
        return celsius - dAbsoluteZero;
    case Fahrenheit:
        return celsius * dFahrenheitPerKelvin + dFreezingFahrenheit;
    default:
        return celsius;
    }
}

double Degrees::toCelsius(double degrees) const
{
    switch (m_eKind) {
    case Kelvin:
        return degrees + dAbsoluteZero;
    case Fahrenheit:
        return (degrees - dFreezingFahrenheit) / dFahrenheitPerKelvin;
    default:
        return degrees;
    }
}

double Degrees::differenceFromCelsius(double celsius) const
{
    return m_eKind == Fahrenheit ? celsius * dFahrenheitPerKelvin : celsius;
}

const char* Degrees::symbol() const
{
    return std::array{"°C", "K", "°F"}[m_eKind];
}

const char* Degrees::name() const
{
    return std::array{"celsius", "kelvin", "fahrenheit"}[m_eKind];
}

std::string degreesText(double degrees, int decimals)
{
    if (std::isinf(degrees))
        return degrees < 0 ? "below" : "above";
    return numberText(degrees, decimals);
}

} // namespace velmo::camera
