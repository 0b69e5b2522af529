#include "camera/measures/FineNoise.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace velmo::camera {
namespace {

constexpr int s32Side = 8;

/// Of what a plane leaves of the block with this corner.
float varianceAround(const Frame& frame, int top, int left)
{
    constexpr int pixels = s32Side * s32Side;
    constexpr double slope = 1344; // the sum of (2x - 7)^2 over the block
    std::int64_t sum = 0, squares = 0, across = 0, along = 0;
    const int first = frame[top][left];
    for (int y = 0; y < s32Side; ++y) {
        const unsigned short* row = frame[top + y] + left;
        for (int x = 0; x < s32Side; ++x) {
            const std::int64_t value = row[x] - first;
            sum += value;
            squares += value * value;
            across += (2 * x - s32Side + 1) * value;
            along += (2 * y - s32Side + 1) * value;
        }
    }
    const auto square = [](std::int64_t value) {
        return static_cast<double>(value) * static_cast<double>(value);
    };
    const double left2 =
        static_cast<double>(squares) - square(sum) / pixels - square(across) / slope - square(along) / slope;
    return static_cast<float>(std::max(left2, 0.0) / (pixels - 3));
}

} // namespace

double fineNoise(const Frame& frame, std::vector<float>& variances)
{
    constexpr int enough = 1200;     // blocks
    constexpr double calmest = 0.2;  // of them
    constexpr double ofWhite = 0.85; // what this part of them has, of white noise
    constexpr double rounding = 1 / 12.0;
    const double area = static_cast<double>(frame.total()) / enough;
    const int step = std::max(s32Side, static_cast<int>(std::sqrt(area)));
    variances.clear();
    for (int y = 0; y + s32Side <= frame.rows; y += step)
        for (int x = 0; x + s32Side <= frame.cols; x += step)
            variances.push_back(varianceAround(frame, y, x));
    if (variances.empty())
        return std::sqrt(rounding);
    const auto at =
        variances.begin() + static_cast<std::ptrdiff_t>(calmest * static_cast<double>(variances.size() - 1));
    std::nth_element(variances.begin(), at, variances.end());
    return std::sqrt(std::max(*at / ofWhite, rounding));
}

} // namespace velmo::camera
