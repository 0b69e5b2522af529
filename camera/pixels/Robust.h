// Not installed.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace velmo::camera {

/// The median; the mean of the two in the middle of an even number. Reorders the values, of which there is
/// one at least.
inline float medianOf(std::vector<float>& values)
{
    const auto half = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), half, values.end());
    return values.size() % 2 == 1 ? *half : (*half + *std::max_element(values.begin(), half)) / 2;
}

/// The value below which this part of them lies, from 0 to 1.
inline float quantileOf(std::vector<float>& values, double part)
{
    const auto at =
        values.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

/// A median, and the median of the distances from it (MAD): few wild values change neither.
struct Spread
{
    float middle;
    float deviation;
};

/// Overwrites the values.
inline Spread spreadOf(std::vector<float>& values)
{
    const float middle = medianOf(values);
    for (float& value : values)
        value = std::abs(value - middle);
    return {middle, medianOf(values)};
}

inline float meanOf(const std::vector<float>& values)
{
    float sum = 0;
    for (const float value : values)
        sum += value;
    return values.empty() ? 0 : sum / static_cast<float>(values.size());
}

} // namespace velmo::camera
