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

/// Adds a row to a running sum, in order. Each addition waits for the one before.
VELMO_CLONES float sumOfRow(const short* __restrict values, int count, float sum)
{
    constexpr int step = 8;
    int n = 0;
    for (; n + step <= count; n += step) {
        float reals[step];
        for (int k = 0; k < step; ++k)
            reals[k] = values[n + k];
        for (const float real : reals)
            sum += real;
    }
    for (; n < count; ++n)
        sum += static_cast<float>(values[n]);
    return sum;
}

/// The same, and counts the values meanwhile, which fits into the time that additions wait. Two tables, as
/// neighbours are often equal and an increment would wait for the other's store.
VELMO_CLONES float sumAndCountRow(const short* __restrict values, int count, float sum, int lowest,
                                  std::uint32_t* __restrict evens, std::uint32_t* __restrict odds)
{
    constexpr int step = 8;
    int n = 0;
    for (; n + step <= count; n += step) {
        float reals[step];
        for (int k = 0; k < step; ++k)
            reals[k] = values[n + k];
        for (int k = 0; k < step; k += 2) {
            sum += reals[k];
            ++evens[values[n + k] - lowest];
            sum += reals[k + 1];
            ++odds[values[n + k + 1] - lowest];
        }
    }
    for (; n < count; ++n) {
        sum += static_cast<float>(values[n]);
        ++evens[values[n] - lowest];
    }
    return sum;
}

/// The bins of a row's values; `spreadBinCount + 1` for those that are below all limits, or above.
VELMO_CLONES void binsOfRow(const short* __restrict values, short* __restrict bins, int count, float scale)
{
    constexpr double none = spreadBinCount + 1;
    for (int n = 0; n < count; ++n) {
        const double bin = static_cast<double>(static_cast<float>(values[n]) * scale) + 100.0;
        const double atLeast0 = bin > -1.0 ? bin : none; // also what is not a number
        bins[n] = static_cast<short>(static_cast<int>(atLeast0 < none ? atLeast0 : none));
    }
}

/// Memory that a thread keeps between frames; it grows to what the largest needs.
template <class T>
T* scratch(std::size_t count)
{
    thread_local std::vector<T> memory;
    if (memory.size() < count)
        memory.resize(count);
    return memory.data();
}

std::size_t valuesIn(const Range& range)
{
    return static_cast<std::size_t>(range.high - range.low) + 1;
}

Range unite(const Range& one, const Range& other)
{
    return {std::min(one.low, other.low), std::max(one.high, other.high)};
}

/// Two tables of how often each value of a range occurs, and what falls into the bins.
class ValueCounts
{
public:
    explicit ValueCounts(const Range& range)
        : m_s32Lowest(range.low), m_s32Entries(static_cast<int>((valuesIn(range) + gap - 1) / gap * gap)),
          m_pEvens(scratch<std::uint32_t>(2 * static_cast<std::size_t>(m_s32Entries))),
          m_pOdds(m_pEvens + m_s32Entries)
    {
        std::fill_n(m_pEvens, 2 * m_s32Entries, 0);
    }

    float add(const cv::Mat_<short>& frame)
    {
        float sum = 0;
        for (int r = 0; r < frame.rows; ++r)
            sum = sumAndCountRow(frame[r], frame.cols, sum, m_s32Lowest, m_pEvens, m_pOdds);
        return sum;
    }

    /// The values that are good, from the least to the greatest that occurs: as the bins are in order, so is
    /// every value between them. Empty if nothing can be said.
    Range good(float scale, unsigned long minCount) const
    {
        SpreadBins bins{};
        std::array<Range, spreadBinCount + 1> ranges; // the last one may be good, but is not counted
        for (int n = 0; n < m_s32Entries; ++n) {
            if (n % gap == 0 && isGap(n)) {
                n += gap - 1;
                continue;
            }
            const unsigned long count = static_cast<unsigned long>(m_pEvens[n]) + m_pOdds[n];
            const int bin = spreadBin(static_cast<float>(n + m_s32Lowest), scale);
            if (count == 0 || bin < 0 || bin > static_cast<int>(spreadBinCount))
                continue;
            const auto value = static_cast<short>(n + m_s32Lowest);
            auto& range = ranges[static_cast<std::size_t>(bin)];
            range = unite(range, {value, value});
            if (bin < static_cast<int>(spreadBinCount))
                bins[static_cast<std::size_t>(bin)] += count;
        }
        const SpreadLimits limits = spreadLimits(bins, minCount);
        Range all;
        for (int bin = limits.low; !limits.bNone && bin <= limits.high; ++bin)
            all = unite(all, ranges[static_cast<std::size_t>(bin)]);
        return all;
    }

private:
    /// A dead pixel leaves many values that do not occur: they are skipped this many at a time.
    static constexpr int gap = 16;

    bool isGap(int first) const
    {
        std::uint32_t any = 0;
        for (int n = first; n < first + gap; ++n)
            any |= m_pEvens[n] | m_pOdds[n];
        return any == 0;
    }

    int m_s32Lowest, m_s32Entries;
    std::uint32_t *m_pEvens, *m_pOdds;
};

/// Where values are fewer than pixels. A bin depends on nothing but the value and grows or falls with it, so
/// values are counted while they are summed up, and limits of values replace those of bins.
unsigned long flagByValues(const cv::Mat_<short>& frame, cv::Mat_<int>& map, unsigned long minCount,
                           const Range& all, const Range* rows)
{
    ValueCounts counts(all);
    const float sum = counts.add(frame);
    const Range good = counts.good(spreadScale(sum / static_cast<float>(frame.total())), minCount);
    if (good.low > good.high)
        return 0;
    unsigned long count = 0;
    for (int r = 0; r < frame.rows; ++r)
        if (rows[r].low < good.low || rows[r].high > good.high)
            count += flagOutside(frame[r], map[r], frame.cols, good.low, good.high);
    return count;
}

/// Where they are not: the sum first, then bins row by row, counted in four tables so that increments do not
/// wait for each other.
unsigned long flagByBins(const cv::Mat_<short>& frame, cv::Mat_<int>& map, unsigned long minCount)
{
    float sum = 0;
    for (int r = 0; r < frame.rows; ++r)
        sum = sumOfRow(frame[r], frame.cols, sum);
    const float scale = spreadScale(sum / static_cast<float>(frame.total()));

    short* row = scratch<short>(static_cast<std::size_t>(frame.cols));
    unsigned long tables[4][spreadBinCount + 2] = {};
    for (int r = 0; r < frame.rows; ++r) {
        binsOfRow(frame[r], row, frame.cols, scale);
        for (int n = 0; n < frame.cols; ++n)
            ++tables[n % 4][row[n]];
    }
    SpreadBins bins;
    for (std::size_t bin = 0; bin < bins.size(); ++bin)
        bins[bin] = tables[0][bin] + tables[1][bin] + tables[2][bin] + tables[3][bin];
    const SpreadLimits limits = spreadLimits(bins, minCount);
    if (limits.bNone)
        return 0;

    unsigned long count = 0;
    for (int r = 0; r < frame.rows; ++r) {
        binsOfRow(frame[r], row, frame.cols, scale);
        count += flagOutside(row, map[r], frame.cols, limits.low, limits.high);
    }
    return count;
}

unsigned long flagSpreadFast(const cv::Mat_<short>& frame, cv::Mat_<int>& map, unsigned long minCount)
{
    if (frame.empty())
        return 0;
    if (frame.total() > std::numeric_limits<std::uint32_t>::max()) // the counters' limit
        return flagSpreadPlain(frame, map, minCount);
    Range* rows = scratch<Range>(static_cast<std::size_t>(frame.rows));
    Range all;
    for (int r = 0; r < frame.rows; ++r) {
        rows[r] = rangeOf(frame[r], frame.cols);
        all = unite(all, rows[r]);
    }
    // Counters cost more than they save where they outnumber the pixels.
    return valuesIn(all) > frame.total() ? flagByBins(frame, map, minCount)
                                         : flagByValues(frame, map, minCount, all, rows);
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

/// Most pixels are good, so they are looked at sixteen at a time. A column is written down in any case, and
/// replaced by the next one if it is good.
VELMO_CLONES int findBadFast(const int* __restrict flags, int* __restrict columns, int count)
{
    constexpr int step = 16;
    int found = 0, n = 0;
    for (; n + step <= count; n += step) {
        int any = 0;
        for (int k = 0; k < step; ++k)
            any |= flags[n + k];
        if (any == 0)
            continue;
        for (int k = n; k < n + step; ++k) {
            columns[found] = k;
            found += flags[k] != 0;
        }
    }
    for (; n < count; ++n) {
        columns[found] = n;
        found += flags[n] != 0;
    }
    return found;
}

} // namespace

constexpr Forms<FlagSpread> flagSpread{"bad pixels by spread", flagSpreadPlain, flagSpreadFast};
constexpr Forms<FlagFallen> flagFallen{"bad pixels by monotony", flagFallenPlain, flagFallenFast};
constexpr Forms<CountBad> countBad{"bad rows and columns", countBadPlain, countBadFast};
constexpr Forms<FindBad> findBad{"bad pixels of a row", findBadPlain, findBadFast};

} // namespace velmo::exp::vision
