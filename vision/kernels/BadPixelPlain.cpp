#include "vision/imgproc/BadPixel.h"
#include "vision/kernels/BadPixelKernel.h"

#include <algorithm>

namespace velmo::exp::vision {
namespace {

float meanOf(const cv::Mat_<short>& frame)
{
    float sum = 0;
    for (int r = 0; r < frame.rows; ++r)
        for (int c = 0; c < frame.cols; ++c)
            sum += static_cast<float>(frame(r, c));
    return sum / static_cast<float>(frame.total());
}

} // namespace

SpreadLimits spreadLimits(const SpreadBins& bins, unsigned long minCount)
{
    const auto last = static_cast<int>(spreadBinCount) - 1;
    const auto peak = static_cast<int>(std::max_element(bins.begin(), bins.end()) - bins.begin());
    if (peak < 2 || peak > last - 1)
        return {0, 0, true};
    int low = peak - 1;
    while (low > 0 && bins[static_cast<std::size_t>(low)] >= minCount)
        --low;
    int high = peak + 1;
    while (high < last && bins[static_cast<std::size_t>(high)] >= minCount)
        ++high;
    return {low, high + 1, false}; // one bin more above than below
}

unsigned long flagSpreadPlain(const cv::Mat_<short>& frame, cv::Mat_<int>& map, unsigned long minCount)
{
    const float scale = spreadScale(meanOf(frame));
    SpreadBins bins{};
    for (int r = 0; r < frame.rows; ++r)
        for (int c = 0; c < frame.cols; ++c) {
            const int bin = spreadBin(static_cast<float>(frame(r, c)), scale);
            if (bin >= 0 && bin < static_cast<int>(spreadBinCount))
                ++bins[static_cast<std::size_t>(bin)];
        }

    const SpreadLimits limits = spreadLimits(bins, minCount);
    if (limits.bNone)
        return 0;
    unsigned long count = 0;
    for (int r = 0; r < frame.rows; ++r)
        for (int c = 0; c < frame.cols; ++c) {
            const int bin = spreadBin(static_cast<float>(frame(r, c)), scale);
            if (bin < limits.low || bin > limits.high) {
                map(r, c) |= static_cast<int>(BadPixelTools::u32BadHomogenity);
                ++count;
            }
        }
    return count;
}

} // namespace velmo::exp::vision
