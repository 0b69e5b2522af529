// Not installed.
#pragma once

#include <opencv2/core.hpp>

#include <array>
#include <cstddef>
#include <limits>

namespace velmo::exp::vision {

/// Counts of bins that are 2 % of the mean wide; the mean lies at bin 150, value 0 at bin 100.
constexpr std::size_t spreadBinCount = 300;
using SpreadBins = std::array<unsigned long, spreadBinCount>;

/// Bins by which a pixel is good: from `low` to `high`. `bNone`: nothing can be said, every pixel is good.
struct SpreadLimits
{
    int low = 0;
    int high = 0;
    bool bNone = false;
};

/// The bin of a value. What is not a number or does not fit 32 bits becomes the smallest int, which is below
/// every limit: the scale is infinite if the mean is 0, and huge if it is barely not.
inline int spreadBin(float value, float scale)
{
    const double bin = static_cast<double>(value * scale) + 100.0;
    return bin > -2147483649.0 && bin < 2147483648.0 ? static_cast<int>(bin)
                                                     : std::numeric_limits<int>::min();
}

inline float spreadScale(float mean)
{
    return static_cast<float>((1.0 / static_cast<double>(mean)) * 100.0 * 0.5);
}

/// Where the populated core of the histogram ends on both sides of its peak.
SpreadLimits spreadLimits(const SpreadBins& bins, unsigned long minCount);

/// The definition: flags in `map`, which has the frame's size, what lies outside of the core and counts it.
unsigned long flagSpreadPlain(const cv::Mat_<short>& frame, cv::Mat_<int>& map, unsigned long minCount);

/// The fast form. A bin depends on nothing but the value and grows or falls with it, so values are counted
/// while they are summed up, and limits of values replace those of bins.
unsigned long flagSpread(const cv::Mat_<short>& frame, cv::Mat_<int>& map, unsigned long minCount);

} // namespace velmo::exp::vision
