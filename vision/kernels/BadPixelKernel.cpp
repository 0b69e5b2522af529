#include "vision/kernels/BadPixelKernel.h"

#include "core/Clones.h"
#include "vision/imgproc/BadPixel.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace velmo::exp::vision {
namespace {

struct Range
{
    short low = std::numeric_limits<short>::max();
    short high = std::numeric_limits<short>::min();
};

VELMO_CLONES Range rangeOf(const short* __restrict values, int count)
{
    Range range;
    for (int n = 0; n < count; ++n) {
        range.low = values[n] < range.low ? values[n] : range.low;
        range.high = values[n] > range.high ? values[n] : range.high;
    }
    return range;
}

VELMO_CLONES unsigned long flagOutside(const short* __restrict values, int* __restrict flags, int count,
                                       int low, int high)
{
    int flagged = 0;
    for (int n = 0; n < count; ++n) {
        const int bad = (values[n] < low) | (values[n] > high);
        flags[n] |= bad * static_cast<int>(BadPixelTools::u32BadHomogenity);
        flagged += bad;
    }
    return static_cast<unsigned long>(flagged);
}

std::size_t valuesIn(const Range& range)
{
    return static_cast<std::size_t>(range.high - range.low) + 1;
}

std::vector<Range> rangesOfRows(const cv::Mat_<short>& frame)
{
    std::vector<Range> ranges(static_cast<std::size_t>(frame.rows));
    for (int r = 0; r < frame.rows; ++r)
        ranges[static_cast<std::size_t>(r)] = rangeOf(frame[r], frame.cols);
    return ranges;
}

Range unite(const std::vector<Range>& ranges)
{
    Range all;
    for (const Range& range : ranges)
        all = {std::min(all.low, range.low), std::max(all.high, range.high)};
    return all;
}

/// How often each value of a frame occurs.
struct ValueCounts
{
    explicit ValueCounts(const Range& all) : range(all), even(valuesIn(all)), odd(valuesIn(all)) {}

    /// Adds the values of a row to a running sum, in order, and counts them meanwhile: an addition waits for
    /// the one before, and the counting fits into that time. Two tables, as neighbours are often equal and
    /// an increment would wait for the other's store.
    float addRow(const short* values, int count, float sum)
    {
        std::uint32_t* evens = even.data();
        std::uint32_t* odds = odd.data();
        const int lowest = range.low;
        int n = 0;
        for (; n + 1 < count; n += 2) {
            sum += static_cast<float>(values[n]);
            ++evens[values[n] - lowest];
            sum += static_cast<float>(values[n + 1]);
            ++odds[values[n + 1] - lowest];
        }
        if (n < count) {
            sum += static_cast<float>(values[n]);
            ++evens[values[n] - lowest];
        }
        return sum;
    }

    unsigned long of(int value) const
    {
        const auto index = static_cast<std::size_t>(value - range.low);
        return static_cast<unsigned long>(even[index]) + odd[index];
    }

    Range range;
    std::vector<std::uint32_t> even, odd;
};

SpreadBins binsOf(const ValueCounts& counts, float scale)
{
    SpreadBins bins{};
    for (int value = counts.range.low; value <= counts.range.high; ++value) {
        const unsigned long count = counts.of(value);
        if (count == 0)
            continue; // a dead pixel leaves a long gap
        const int bin = spreadBin(static_cast<float>(value), scale);
        if (bin >= 0 && bin < static_cast<int>(spreadBinCount))
            bins[static_cast<std::size_t>(bin)] += count;
    }
    return bins;
}

/// The least and the greatest value that occurs and is inside the limits. As the bins are in order, so is
/// every value between them.
Range valuesWithin(const SpreadLimits& limits, const ValueCounts& counts, float scale)
{
    const auto isGood = [&](int value) {
        if (counts.of(value) == 0)
            return false;
        const int bin = spreadBin(static_cast<float>(value), scale);
        return bin >= limits.low && bin <= limits.high;
    };
    Range range = counts.range;
    while (range.low < range.high && !isGood(range.low))
        ++range.low;
    while (range.high > range.low && !isGood(range.high))
        --range.high;
    return range;
}

// A bin depends on nothing but the value and grows or falls with it, so values are counted while they are
// summed up, and limits of values replace those of bins.
unsigned long flagSpreadFast(const cv::Mat_<short>& frame, cv::Mat_<int>& map, unsigned long minCount)
{
    if (frame.empty())
        return 0;
    const std::vector<Range> rowRanges = rangesOfRows(frame);
    const Range all = unite(rowRanges);
    // Counters cost more than they save where they outnumber the pixels. The second limit is theirs.
    if (valuesIn(all) > frame.total() || frame.total() > std::numeric_limits<std::uint32_t>::max())
        return flagSpreadPlain(frame, map, minCount);
    ValueCounts counts(all);
    float sum = 0;
    for (int r = 0; r < frame.rows; ++r)
        sum = counts.addRow(frame[r], frame.cols, sum);
    const float scale = spreadScale(sum / static_cast<float>(frame.total()));
    const SpreadLimits limits = spreadLimits(binsOf(counts, scale), minCount);
    if (limits.bNone)
        return 0;

    const Range good = valuesWithin(limits, counts, scale);
    unsigned long count = 0;
    for (int r = 0; r < frame.rows; ++r) {
        const Range& row = rowRanges[static_cast<std::size_t>(r)];
        if (row.low < good.low || row.high > good.high)
            count += flagOutside(frame[r], map[r], frame.cols, good.low, good.high);
    }
    return count;
}

VELMO_CLONES void flagFallenFast(const short* __restrict before, const short* __restrict after,
                                 int* __restrict flags, int count)
{
    for (int n = 0; n < count; ++n)
        flags[n] |= (after[n] <= before[n]) * static_cast<int>(BadPixelTools::u32BadCurve);
}

VELMO_CLONES unsigned int countBadFast(const int* __restrict flags, unsigned int* __restrict perColumn,
                                       int count)
{
    unsigned int inRow = 0;
    for (int n = 0; n < count; ++n) {
        const unsigned int bad = flags[n] > 0;
        perColumn[n] += bad;
        inRow += bad;
    }
    return inRow;
}

} // namespace

constexpr Forms<FlagSpread> flagSpread{"bad pixels by spread", flagSpreadPlain, flagSpreadFast};
constexpr Forms<FlagFallen> flagFallen{"bad pixels by monotony", flagFallenPlain, flagFallenFast};
constexpr Forms<CountBad> countBad{"bad rows and columns", countBadPlain, countBadFast};

} // namespace velmo::exp::vision
