// Not installed.
#pragma once

#include "core/quantity/MarkedFloat.h"
#include "core/quantity/Relation.h"
#include "core/quantity/Temperature.h"

#include <cstddef>

namespace velmo::exp {

/// What the humidity at a surface depends on besides the saturation pressure at that surface.
struct MoistAir
{
    /// @throws Exception  for an air temperature that is not finite or a humidity outside 0..100
    MoistAir(const quantity::Temperature<MarkedFloat>& airTemperature,
             const quantity::Relation<MarkedFloat>& humidity);

    double celsius;
    double percent;
    double saturation; ///< pressure in hPa
};

/// Surface humidity in percent for `count` saturation pressures at surfaces.
void surfaceMoisture(const MoistAir& air, const double* saturations, float* moisture, std::size_t count);

/// The one place that limits surface humidity. Past the pole of the pressure formula it meets infinities and
/// what is not a number: the first comparison makes 0 of the latter.
inline float limitedPercent(double percent)
{
    const double atLeastDry = percent > 0.0 ? percent : 0.0;
    return static_cast<float>(atLeastDry < 100.0 ? atLeastDry : 100.0);
}

} // namespace velmo::exp
