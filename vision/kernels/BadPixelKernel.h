// Not installed.
#pragma once

#include "core/Forms.h"

#include <opencv2/core.hpp>

#include <algorithm>
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
inline SpreadLimits spreadLimits(const SpreadBins& bins, unsigned long minCount)
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

/// Flags in `map`, which has the frame's size, what lies outside of the core and counts it. The mean is a sum
/// in single precision, pixel by pixel.
using FlagSpread = unsigned long(const cv::Mat_<short>& frame, cv::Mat_<int>& map, unsigned long minCount);
FlagSpread flagSpreadPlain;
extern const Forms<FlagSpread> flagSpread;

/// Flags pixels of a row that did not rise from one frame to the next.
using FlagFallen = void(const short* before, const short* after, int* flags, int count);
FlagFallen flagFallenPlain;
extern const Forms<FlagFallen> flagFallen;

/// Adds to each column's count the pixels of a row that are bad; returns their number.
using CountBad = unsigned int(const int* flags, unsigned int* perColumn, int count);
CountBad countBadPlain;
extern const Forms<CountBad> countBad;

/// Where in a row pixels are bad: their columns into `columns`, which has room for all; returns their number.
using FindBad = int(const int* flags, int* columns, int count);
FindBad findBadPlain;
extern const Forms<FindBad> findBad;

} // namespace velmo::exp::vision
