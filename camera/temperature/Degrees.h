#pragma once

#include "core/Exception.h"
#include "core/Export.h"

#include <limits>
#include <string>

namespace velmo::camera {

/// What stands for a temperature where a value has none because it lies under the coldest one that the
/// formula of its scale knows: less than every number, and not NaN.
constexpr float fBelow = -std::numeric_limits<float>::infinity();

/// The same above the hottest one.
constexpr float fAbove = std::numeric_limits<float>::infinity();

constexpr double dAbsoluteZero = -273.15; ///< in degrees Celsius

/// The degrees in which people type and read temperatures. Inside, all are degrees Celsius.
class VELMO_API Degrees
{
public:
    enum Kind
    {
        Celsius,
        Kelvin,
        Fahrenheit
    };

    Degrees(Kind kind = Celsius) : m_eKind(kind) {} // NOLINT(google-explicit-constructor): a kind is degrees

    /// @param text  C, K or F
    /// @throws Exception  that names the text, for anything else
    static Degrees parse(const std::string& text);

    Kind kind() const { return m_eKind; }

    /// A temperature. fBelow and fAbove stay what they are.
    double fromCelsius(double celsius) const;
    double toCelsius(double degrees) const;

    /// A difference of temperatures, which has no zero point.
    double differenceFromCelsius(double celsius) const;

    const char* symbol() const; ///< "°C", "K", "°F"
    const char* name() const;   ///< "celsius", "kelvin", "fahrenheit": for keys of tables

private:
    Kind m_eKind;
};

/// A temperature with so many digits after the point; "below" and "above" if it is none.
VELMO_API std::string degreesText(double degrees, int decimals);

} // namespace velmo::camera
