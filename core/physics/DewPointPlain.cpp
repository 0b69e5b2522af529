#include "core/physics/DewPointKernel.h"

namespace velmo::exp {

void surfaceMoisturePlain(const MoistAir& air, const float* celsius, float* moisture, std::size_t count)
{
    for (std::size_t n = 0; n < count; ++n)
        moisture[n] = surfacePercent(air, celsius[n]);
}

} // namespace velmo::exp
