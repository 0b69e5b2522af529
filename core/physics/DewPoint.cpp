#include "core/physics/DewPoint.h"

#include "core/physics/DewPointKernel.h"

#include <cmath>

namespace velmo::exp {

double DewPoint::calcSaturationPressure(double celsius)
{
    return saturationPressure(celsius);
}

std::vector<float> DewPoint::calcSurfaceMoisture(const std::vector<float>& surfaceTemperatures,
                                                 const quantity::Temperature<MarkedFloat>& airTemperature,
                                                 const quantity::Relation<MarkedFloat>& humidity)
{
    const MoistAir air(airTemperature, humidity);
    std::vector<float> moisture(surfaceTemperatures.size());
    surfaceMoisture(air, surfaceTemperatures.data(), moisture.data(), moisture.size());
    return moisture;
}

float DewPoint::calcDewPoint(const quantity::Temperature<MarkedFloat>& airTemperature,
                             const quantity::Relation<MarkedFloat>& humidity)
{
    const MoistAir air(airTemperature, humidity);
    if (air.percent == 0.0 || air.celsius <= Magnus::pole)
        return static_cast<float>(Magnus::pole);
    const double logarithm = std::log(air.percent / 100.0) + Magnus::exponent(air.celsius);
    return static_cast<float>(-Magnus::pole * logarithm / (Magnus::slope - logarithm));
}

} // namespace velmo::exp
