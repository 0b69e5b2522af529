#include "core/physics/DewPointKernel.h"

#include "core/Exception.h"

#include <cmath>
#include <string>

namespace velmo::exp {
namespace {

VELMO_CLONES void surfaceMoistureFast(const MoistAir& air, const float* celsius, float* moisture,
                                      std::size_t count)
{
    const MoistAir same = air; // not to be read again after every store
    VELMO_INDEPENDENT
    for (std::size_t n = 0; n < count; ++n)
        moisture[n] = surfacePercent(same, celsius[n]);
}

} // namespace

constexpr Forms<SurfaceMoisture> surfaceMoisture{"surface moisture", surfaceMoisturePlain,
                                                 surfaceMoistureFast};

MoistAir::MoistAir(const quantity::Temperature<MarkedFloat>& airTemperature,
                   const quantity::Relation<MarkedFloat>& humidity)
    : celsius(static_cast<float>(airTemperature.value())), percent(static_cast<float>(humidity.value())),
      saturation(saturationPressure(celsius))
{
    if (!std::isfinite(celsius))
        VELMO_THROW("Air temperature " + std::to_string(celsius) + " is not finite!");
    if (!(percent >= 0.0 && percent <= 100.0)) // also what is not a number
        VELMO_THROW("Air humidity " + std::to_string(percent) + " is not within 0 to 100 percent!");
}

} // namespace velmo::exp
