#pragma once

#include "camera/temperature/Degrees.h"
#include "camera/temperature/Scale.h"
#include "core/Exception.h"
#include "core/Export.h"

#include <string>

namespace velmo::camera {

/// How people type and read the values of a recording: in degrees where its scale knows them, otherwise as
/// the values themselves. A number that ends in "n" is a value either way.
class VELMO_API Thermometer
{
public:
    /// Which value stands for a typed number that lies between two of them.
    enum class Edge
    {
        AtOrAbove, ///< the first value that is not below it: the lower end of a range
        AtOrBelow, ///< the last one that is not above it: the upper end
        Above,     ///< the first one above it
        Below      ///< the last one below it; values without a temperature are below all numbers
    };

    Thermometer() = default;
    explicit Thermometer(Scale scale, Degrees degrees = {}) : m_oScale(std::move(scale)), m_oDegrees(degrees)
    {}

    const Scale& scale() const { return m_oScale; }
    Degrees degrees() const { return m_oDegrees; }
    bool hasDegrees() const { return m_oScale.hasDegrees(); }

    /// @param text  as typed: a value, or a temperature
    /// @param edge  which value, if the temperature lies between two
    /// @param what  for messages: the option
    /// @throws Exception  that begins with `what`, if that is no number, or if the scale has no such value
    unsigned short valueOf(const std::string& text, Edge edge, const std::string& what) const;

    /// A temperature as typed, in degrees Celsius whatever the degrees it is typed in; also without a scale.
    ///
    /// @throws Exception  that begins with `what`, for what is no number or colder than absolute zero
    double celsiusOf(const std::string& text, const std::string& what) const;

    /// The number that is read: degrees, fBelow and fAbove included, or the value itself.
    double read(unsigned short value) const;

    /// A number that was read, or worked out of such, without the digits that single precision does not have.
    double rounded(double number) const;

    /// A difference around a value, of counts: in degrees or in counts.
    double readDifference(double counts, unsigned short around) const;

    /// A number that was read, for people: "36.5 °C", "29315", "below".
    std::string text(double number, int decimals = 1) const;

    /// What stands behind numbers and in headings: " °C", or nothing for counts.
    std::string unit() const;

    /// The same in keys of tables: "_celsius", or nothing.
    std::string key() const;

private:
    Scale m_oScale;
    Degrees m_oDegrees;
};

} // namespace velmo::camera
