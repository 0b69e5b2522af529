#include "core/physics/DewPointKernel.h"

#include "core/Clones.h"
#include "core/Exception.h"
#include "core/physics/DewPoint.h"

#include <cmath>
#include <string>

namespace velmo::exp {
namespace {

VELMO_CLONES void moistureLoop(double percent, double airSaturation, const double* __restrict saturations,
                               float* __restrict moisture, std::size_t count)
{
    for (std::size_t n = 0; n < count; ++n)
        moisture[n] = limitedPercent(percent * (airSaturation / saturations[n]));
}

} // namespace

MoistAir::MoistAir(const quantity::Temperature<MarkedFloat>& airTemperature,
                   const quantity::Relation<MarkedFloat>& humidity)
    : celsius(static_cast<float>(airTemperature.value())), percent(static_cast<float>(humidity.value())),
      saturation(DewPoint::calcSaturationPressure(celsius))
{
    if (!std::isfinite(celsius))
        VELMO_THROW("Air temperature " + std::to_string(celsius) + " is not finite!");
    if (!(percent >= 0.0 && percent <= 100.0)) // also what is not a number
        VELMO_THROW("Air humidity " + std::to_string(percent) + " is not within 0 to 100 percent!");
}

void surfaceMoisture(const MoistAir& air, const double* saturations, float* moisture, std::size_t count)
{
    moistureLoop(air.percent, air.saturation, saturations, moisture, count);
}

} // namespace velmo::exp
