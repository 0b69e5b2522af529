#pragma once

#include "core/Exception.h"
#include "core/Export.h"

#include <string>

namespace velmo::camera {

/// How much a camera sees of a body of some temperature: L(T) = 1 / (exp(B/T) - F) with T in kelvin, the form
/// of Planck's law that cameras are calibrated with, or all radiation there is, L(T) = T^4. The factor in
/// front does not matter here: only ratios do.
struct VELMO_API Band
{
    double b = 1430; ///< in kelvin, above 0; 1430 fits common cameras for 7 to 14 micrometres
    double f = 1;
    bool total = false; ///< all wavelengths: b and f count nothing

    /// @param text  "B", "B,F" or "total"
    /// @throws Exception  that names the text and what is wrong with it
    static Band parse(const std::string& text);

    /// "1430,1" or "total".
    std::string text() const;

    /// @param celsius  from absolute zero on
    /// @return infinity where the form has no value (F above 1 and the temperature too high)
    double radiance(double celsius) const;

    /// Its inverse: degrees Celsius; fBelow for a radiance of 0 or less, fAbove for more than the form knows.
    double celsius(double radiance) const;
};

/// The share of radiation that a path of air lets through, between 0 and 1, by the two-exponential form that
/// thermal cameras use for 7 to 14 micrometres.
///
/// @param metres   0 or more
/// @param celsius  of the air
/// @param percent  its relative humidity, 0 to 100
/// @throws Exception  that names the path, where the form gives nothing from 0.01 to 1: a long way through
///                    hot and humid air
VELMO_API double airTransmission(double metres, double celsius, double percent);

/// What a camera sees of an object, and the way back. The object sends only a part of what a black body of
/// its temperature would, and mirrors its surroundings with the rest; air and a window on the way let a part
/// through and add their own:
///
///   seen = w (t (e L(object) + (1 - e) L(reflected)) + (1 - t) L(air)) + (1 - w) L(window)
///
/// All temperatures in degrees Celsius.
class VELMO_API Radiometry
{
public:
    struct Settings
    {
        double emissivity = 1;         ///< e, 0.01 to 1
        double reflected = 20;         ///< what the object mirrors
        double transmission = 1;       ///< t, of the air, 0.01 to 1
        double air = 20;               ///< its temperature
        double windowTransmission = 1; ///< w, 0.01 to 1
        double window = 20;            ///< its temperature
    };

    /// A black body without anything on the way: seen and object temperature are the same.
    Radiometry() : Radiometry(Settings(), Band()) {}

    /// @throws Exception  that names the value and its limit
    Radiometry(const Settings& settings, const Band& band);

    /// Whether seen and object temperature are the same whatever they are.
    bool changesNothing() const;

    /// The temperature of an object that looks as warm as a black body of `apparent` degrees Celsius.
    ///
    /// @param apparent  fBelow and fAbove stay what they are
    /// @return fBelow if less arrives than the surroundings alone send, fAbove if more than the band knows
    double object(double apparent) const;

    /// The temperature of the black body that an object of this temperature looks like.
    double apparent(double object) const;

    const Settings& settings() const { return m_oSettings; }
    const Band& band() const { return m_oBand; }

private:
    Settings m_oSettings;
    Band m_oBand;
    double m_dShare = 1; ///< of the object's own radiation in what is seen
    double m_dOther = 0; ///< radiance of all that is not the object
};

} // namespace velmo::camera
