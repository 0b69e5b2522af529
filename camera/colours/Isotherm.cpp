#include "camera/colours/Isotherm.h"

#include "camera/settings/Parse.h"
#include "core/Exception.h"

#include <utility>
#include <vector>

namespace velmo::camera {
namespace {

using Edge = Thermometer::Edge;

/// As bright as a screen shows it, 0 to 255.
double brightness(const cv::Vec3b& colour)
{
    return 0.114 * colour[0] + 0.587 * colour[1] + 0.299 * colour[2];
}

cv::Vec3b parseColour(const std::string& text, const std::string& what)
{
    const auto rgb = static_cast<unsigned>(parseForm(text, what, {{"RRGGBB", Field::Kind::Colour}}).front());
    return {static_cast<unsigned char>(rgb), static_cast<unsigned char>(rgb >> 8),
            static_cast<unsigned char>(rgb >> 16)};
}

} // namespace

Isotherm Isotherm::parse(const std::string& text, const std::string& what, const Thermometer& thermometer)
{
    std::vector<std::string> parts = split(text, ':');
    const bool blend = parts.back() == "blend";
    if (blend || parts.back() == "solid")
        parts.pop_back();
    const std::string kind = parts.front();
    const bool between = kind == "between";
    if (!(between && parts.size() == 4) && !((kind == "above" || kind == "below") && parts.size() == 3))
        VELMO_THROW(what + ": '" + text +
                    "' is not above:LOW:RRGGBB, below:HIGH:RRGGBB or between:LOW:HIGH:RRGGBB, "
                    "with :blend or :solid behind it or nothing");
    const auto valueOf = [&](std::size_t part, Edge edge) {
        return thermometer.valueOf(parts[part], edge, what + " " + kind);
    };
    Isotherm isotherm = {0, 65535, parseColour(parts.back(), what), blend, kind + " " + parts[1]};
    if (between) {
        isotherm.low = valueOf(1, Edge::AtOrAbove);
        isotherm.high = valueOf(2, Edge::AtOrBelow);
        isotherm.label = parts[1] + " to " + parts[2];
    } else if (kind == "above") {
        isotherm.low = valueOf(1, Edge::Above);
    } else {
        isotherm.high = valueOf(1, Edge::Below);
    }
    if (isotherm.low > isotherm.high)
        VELMO_THROW(what + ": no value lies in '" + text + "'");
    isotherm.label += thermometer.unit();
    return isotherm;
}

Isotherm Isotherm::parseRegion(const std::string& text, const std::string& what,
                               const Thermometer& thermometer)
{
    if (split(text, ':').size() != 3)
        VELMO_THROW(what + ": '" + text + "' is not LOW:HIGH:RRGGBB");
    return parse("between:" + text, what, thermometer);
}

cv::Vec3b Isotherm::over(const cv::Vec3b& palette) const
{
    if (!blend)
        return colour;
    // Darker by the same factor in all channels, brighter by the same share of the way to white.
    const double own = brightness(colour), wanted = brightness(palette);
    cv::Vec3b mixed;
    for (int channel = 0; channel < 3; ++channel) {
        const double part = colour[channel];
        mixed[channel] = cv::saturate_cast<unsigned char>(
            wanted <= own ? part * wanted / std::max(own, 1.0)
                          : part + (255 - part) * (wanted - own) / (255 - own));
    }
    return mixed;
}

} // namespace velmo::camera
