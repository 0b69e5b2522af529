#include "camera/temperature/Air.h"

#include "camera/settings/Parse.h"

#include "core/physics/DewPoint.h"

#include <algorithm>

namespace velmo::camera {
namespace {

using Temperature = exp::quantity::Temperature<exp::MarkedFloat>;
using Humidity = exp::quantity::Relation<exp::MarkedFloat>;

constexpr double dColdest = -80;
constexpr double dHottest = 200;

} // namespace

Air Air::parse(const std::string& text, const std::string& what, Degrees degrees)
{
    const Form form = {
        {"TEMPERATURE", Field::Kind::Number, degrees.fromCelsius(dColdest), degrees.fromCelsius(dHottest)},
        {"PERCENT", Field::Kind::Number, 0, 100}};
    const std::vector<double> values = parseForm(text, what, form);
    return {static_cast<float>(degrees.toCelsius(values[0])), static_cast<float>(values[1])};
}

float Air::dewPoint() const
{
    return exp::DewPoint::calcDewPoint(Temperature(exp::MarkedFloat(celsius)),
                                       Humidity(exp::MarkedFloat(percent)));
}

std::vector<float> Air::atSurfaces(const std::vector<float>& temperatures) const
{
    // The formula of the vapour pressure has a pole far below the temperatures it is for.
    std::vector<float> surfaces = temperatures;
    for (float& each : surfaces)
        each = std::clamp(each, static_cast<float>(2 * dColdest), 1e6F);
    return exp::DewPoint::calcSurfaceMoisture(surfaces, Temperature(exp::MarkedFloat(celsius)),
                                              Humidity(exp::MarkedFloat(percent)));
}

} // namespace velmo::camera
