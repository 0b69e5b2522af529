#pragma once

#include "camera/temperature/Degrees.h"
#include "camera/temperature/Radiometry.h"
#include "core/Exception.h"
#include "core/Export.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmo::camera {

/// What the values of a recording mean: the unit that they count in. As a text:
///
///   counts                 nothing that is known: no temperatures
///   centikelvin            0.01 K, from absolute zero
///   decikelvin             0.1 K
///   kelvin/16, kelvin/64   1/16 K, 1/64 K
///   celsius/10             0.1 °C, signed
///   linear:GAIN:OFFSET     GAIN x value + OFFSET is degrees Celsius; GAIN above 0
///   planck:R1,B,F,O,R2     B / ln(R1 / (R2 (value + O)) + F) is kelvin, by the constants of the camera
///
/// Temperatures rise strictly from value to value where there are any. Values without one stand before all
/// others as "below": where Planck's form has no logarithm (value + O of 0 or less), and under absolute
/// zero. What lies behind the last temperature of Planck's form is "above".
///
/// Files of a signed unit hold two's complement. Everywhere else values are in the order of what they mean:
/// reorder() exchanges the two, and is its own inverse.
///
/// Copies share one table of 256 KiB. Any number of threads.
class VELMO_API Scale
{
public:
    static constexpr int s32Values = 65536;

    /// Counts.
    Scale() = default;

    /// @throws Exception  that names text and reason: an unknown unit, a constant out of its limits, values
    ///                    that share a temperature in single precision, or no temperature at all
    static Scale parse(const std::string& text);

    /// The text of linear:GAIN:OFFSET.
    static std::string linearText(double gain, double offset);

    /// Gives this scale back through parse().
    const std::string& text() const;

    bool hasDegrees() const { return m_pTable != nullptr; }
    bool isSigned() const;

    /// In degrees Celsius; fBelow or fAbove if there is none. Only with hasDegrees().
    float celsius(unsigned short value) const { return m_pTable->celsius[value]; }

    /// That of all values. Only with hasDegrees().
    const std::vector<float>& celsius() const { return m_pTable->celsius; }

    /// The first and the last value with a temperature; of counts 0 and 65535.
    unsigned short first() const;
    unsigned short last() const;

    /// How many degrees one more count is around a value: what turns a noise in counts into one in degrees.
    /// 0 where there is no temperature. Only with hasDegrees().
    double slope(unsigned short value) const;

    /// The constants of a unit that is Planck's form; none for others.
    const std::optional<Band>& band() const;

    /// The same values, but as the temperatures of the objects that look like them.
    ///
    /// @throws Exception  for counts, and if no value is an object's
    Scale ofObjects(const Radiometry& radiometry) const;

    /// Why this can hardly be the unit of a recording with this median, in one line; empty if it can. Looks
    /// for medians outside -60 to 1500 °C and then for the linear unit whose median is nearest to 20 °C: a
    /// wrong unit that gives temperatures of this world passes.
    std::string doubt(unsigned short median, Degrees degrees) const;

    /// From the order of files to that of meaning and back.
    template <class Values>
    void reorder(Values& values) const
    {
        if (isSigned())
            for (unsigned short& value : values)
                value ^= 0x8000;
    }

private:
    struct Table
    {
        std::string text;
        bool isSigned;
        std::optional<Band> band;
        std::vector<float> celsius; ///< of all values
    };
    static Scale planck(const std::string& text);

    /// @param name  for messages
    Scale(Table table, const std::string& name);

    std::shared_ptr<const Table> m_pTable; ///< none: counts
};

} // namespace velmo::camera
