#include "camera/drawing/Ticks.h"

#include <algorithm>
#include <cmath>

namespace velmo::camera {

Ticks Ticks::of(double low, double high, int most)
{
    const double raw = std::max(high - low, 1e-9) / (most - 1);
    const int power = static_cast<int>(std::floor(std::log10(raw)));
    Ticks ticks;
    // A larger step gives fewer ticks; the fourth is ten times the first.
    for (const double factor : {1, 2, 5, 10}) {
        const double step = factor * std::pow(10, power);
        const double first = std::ceil(low / step - 1e-9), last = std::floor(high / step + 1e-9);
        if (last - first + 1 > most)
            continue;
        for (int n = 0; n <= static_cast<int>(last - first); ++n)
            ticks.places.push_back((first + n) * step + 0.0); // no minus before a zero
        ticks.decimals = std::max(0, -power - (factor == 10 ? 1 : 0));
        break;
    }
    return ticks;
}

} // namespace velmo::camera
