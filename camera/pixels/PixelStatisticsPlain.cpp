#include "camera/pixels/PixelStatisticsKernel.h"

#include <algorithm>

namespace velmo::camera {

void lookAroundPlain(const short* const lines[5], int count, short*, const Surroundings& out)
{
    for (int i = 0; i < count; ++i) {
        short all[25], second[5], fourth[5];
        for (int n = 0; n < 5; ++n) {
            short column[5];
            for (int k = 0; k < 5; ++k)
                all[5 * n + k] = column[k] = lines[k][std::clamp(i, 2, count - 3) + n - 2];
            std::sort(column, column + 5);
            second[n] = column[1];
            fourth[n] = column[3];
        }
        std::sort(all, all + 25);
        // A quarter, near enough: the median of what is second in each column.
        std::sort(second, second + 5);
        std::sort(fourth, fourth + 5);
        out.median[i] = all[12];
        out.calm[i] =
            static_cast<short>(std::clamp(std::min(all[12] - second[2], fourth[2] - all[12]), 1, 32767));
    }
}

void standOutPlain(const short* above, const short* line, const short* below, int count, int* out)
{
    for (int i = 0; i < count; ++i) {
        const int left = i == 0 ? 1 : i - 1;
        const int right = i == count - 1 ? count - 2 : i + 1;
        const int x = 2 * line[i];
        const auto [low, high] =
            std::minmax({x - line[left] - line[right], x - above[i] - below[i],
                         x - above[left] - below[right], x - above[right] - below[left]});
        out[i] = low > 0 ? low : high < 0 ? high : 0;
    }
}

} // namespace velmo::camera
