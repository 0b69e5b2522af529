#pragma once

#include "core/Exception.h"
#include "core/Export.h"
#include "core/quantity/MarkedFloat.h"
#include "core/quantity/Relation.h"
#include "core/quantity/Temperature.h"

#include <vector>

namespace velmo::exp {

/// Moist air at surfaces: how humid the air of a room becomes where it touches something colder or warmer.
///
/// Saturation vapour pressure over water is the Magnus form with the coefficients of the WMO guide to
/// instruments and methods of observation (WMO-No. 8, annex 4.B): 6.112 hPa x exp(17.62 t / (243.12 + t)),
/// good to a few tenths of a percent from -45 to 60 degrees Celsius. It has a pole at -243.12; what lies at
/// or below it has no physical meaning but is evaluated all the same and never leaves the stated range.
///
/// No state; any number of threads.
class VELMO_API DewPoint
{
public:
    DewPoint() = delete;

    /// Saturation vapour pressure over water in hPa; 0 at the pole of the form.
    static double calcSaturationPressure(double celsius);

    /// Relative humidity in percent that air reaches at surfaces: that of the air times the ratio of the
    /// saturation pressures of air and surface, limited to 0..100. Where that ratio is no number (a surface
    /// temperature that is none, air at the pole of the form), 0.
    ///
    /// @param surfaceTemperatures  in degrees Celsius, any number of them
    /// @param airTemperature       finite
    /// @param humidity             of the air, 0..100
    /// @return as many values as there are surfaces
    /// @throws Exception  for an air temperature that is not finite or a humidity outside 0..100
    static std::vector<float> calcSurfaceMoisture(const std::vector<float>& surfaceTemperatures,
                                                  const quantity::Temperature<MarkedFloat>& airTemperature,
                                                  const quantity::Relation<MarkedFloat>& humidity);

    /// The surface temperature in degrees Celsius at which the air reaches 100 percent; -243.12 for dry air.
    ///
    /// @throws Exception  as calcSurfaceMoisture
    static float calcDewPoint(const quantity::Temperature<MarkedFloat>& airTemperature,
                              const quantity::Relation<MarkedFloat>& humidity);
};

} // namespace velmo::exp
