#include "core/physics/DewPoint.h"

#include "core/physics/DewPointKernel.h"

#include <algorithm>
#include <cmath>

namespace velmo::exp {
namespace {

constexpr double pressureAtZero = 6.112;
constexpr double slope = 17.62;
constexpr double pole = -243.12;

/// What the Magnus form raises e to.
double exponent(double celsius)
{
    return slope * celsius / (celsius - pole);
}

} // namespace

double DewPoint::calcSaturationPressure(double celsius)
{
    if (celsius == pole)
        return 0.0; // its limit from above, without the division by zero
    return pressureAtZero * std::exp(exponent(celsius));
}

std::vector<float> DewPoint::calcSurfaceMoisture(const std::vector<float>& surfaceTemperatures,
                                                 const quantity::Temperature<MarkedFloat>& airTemperature,
                                                 const quantity::Relation<MarkedFloat>& humidity)
{
    const MoistAir air(airTemperature, humidity);
    std::vector<double> saturations(surfaceTemperatures.size());
    std::transform(surfaceTemperatures.begin(), surfaceTemperatures.end(), saturations.begin(),
                   [](float celsius) { return calcSaturationPressure(celsius); });
    std::vector<float> moisture(saturations.size());
    surfaceMoisture(air, saturations.data(), moisture.data(), moisture.size());
    return moisture;
}

float DewPoint::calcDewPoint(const quantity::Temperature<MarkedFloat>& airTemperature,
                             const quantity::Relation<MarkedFloat>& humidity)
{
    const MoistAir air(airTemperature, humidity);
    if (air.percent == 0.0 || air.celsius <= pole)
        return static_cast<float>(pole);
    const double logarithm = std::log(air.percent / 100.0) + exponent(air.celsius);
    return static_cast<float>(-pole * logarithm / (slope - logarithm));
}

} // namespace velmo::exp
