// Not installed.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

/// What the parts of camera/stages/Denoiser.h do with lines of values.

namespace velmo::camera {

using Line = std::vector<float>;

/// The value below which a share lies; the order of the values is lost.
inline float quantile(Line& values, double share)
{
    const auto at = values.begin() +
                    static_cast<std::ptrdiff_t>(std::lround(share * static_cast<double>(values.size() - 1)));
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

inline float towards(float from, float to, float share)
{
    return from + share * (to - from);
}

inline float square(float value)
{
    return value * value;
}

/// Beyond a border the picture comes back.
inline int mirrored(int index, int count)
{
    index = index < 0 ? -1 - index : index;
    return index < count ? index : 2 * count - 1 - index;
}

template <class T>
void mirrorEnds(T* line, int count, int margin)
{
    for (int i = 1; i <= margin; ++i) {
        line[-i] = line[mirrored(-i, count)];
        line[count - 1 + i] = line[mirrored(count - 1 + i, count)];
    }
}

} // namespace velmo::camera
