#pragma once

#include "core/Export.h"

#include <string>
#include <vector>

namespace velmo::camera {

/// Round numbers that divide a range: multiples of 1, 2 or 5 times a power of ten.
struct VELMO_API Ticks
{
    std::vector<double> places; ///< rising
    int decimals = 0;           ///< that tell them apart

    /// @param low, high  finite; one number is widened to a range around it
    /// @param most       how many there may be, 2 or more
    static Ticks of(double low, double high, int most);
};

} // namespace velmo::camera
