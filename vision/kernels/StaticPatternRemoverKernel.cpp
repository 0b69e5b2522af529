#include "vision/kernels/StaticPatternRemoverKernel.h"

#include "core/Clones.h"
#include "core/Lanes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

// A row at a time, in vectors of 16-bit lanes. What is learnt by the columns of a row depends on the input
// and on what they knew before that row; only the pixels look at the columns left of them as they are after
// it. So the columns of a row go first and the pixels follow, both without a branch.
//
// Sums are taken relative to eight times the pixel, modulo 2^16. That is exact wherever the nine values of a
// set lie within 4095 of each other. Elsewhere the deviation, exact or not, is 2048 or more (see
// surroundings()), beyond every threshold, so that nothing made of it is used.

namespace velmo::exp::vision {
namespace {

/// Lanes of the widest vectors. Lines have as many before their first value, and twice as many behind their
/// last.
constexpr int room = 32;

/// What a row is filtered with. Four values before the first one and behind the last one repeat these.
struct PatternLines
{
    short *above, *row, *below;             ///< of the frame
    short *sums, *lows, *highs;             ///< of the three pixels of each column
    short *fourSums, *fourLows, *fourHighs; ///< of each pixel and the three right of it
    short *blockRests, *blockDeviations;    ///< see Surroundings
    short *lineRests, *lineDeviations;
    short *wholes, *fractions;             ///< of the columns' states: 1024 * whole + fraction
    short *corrections, *updated;          ///< of the columns, before this row and after it
    short *correctionFours, *updatedFours; ///< of each column and the three right of it, summed up
};

/// What a pixel sees in one of its two sets: the neighbours' sum less eight times the pixel; and how far the
/// lowest and the highest of the set lie from the mean of the eight neighbours, 32767 for more.
template <int bytes>
struct Surroundings
{
    Shorts<bytes> rest, deviation;
};

// The two distances add up to highest - lowest, modulo 2^16. So if these lie more than 4095 apart, one of the
// distances is 2048 or more, whatever became of the sum.
template <int bytes>
VELMO_INLINE Surroundings<bytes> surroundings(const Shorts<bytes>& x, const Shorts<bytes>& rest,
                                              const Shorts<bytes>& lowest, const Shorts<bytes>& highest)
{
    using Unsigned = typename Lanes<bytes>::Unsigned;
    const Shorts<bytes> mean = x + (rest >> 3);
    const Unsigned larger =
        higher(reinterpret_cast<Unsigned>(mean - lowest), reinterpret_cast<Unsigned>(highest - mean));
    return {rest, reinterpret_cast<Shorts<bytes>>(lower(larger, Unsigned{} + 32767))};
}

template <int bytes>
VELMO_INLINE Surroundings<bytes> blockOf(const PatternLines& l, std::ptrdiff_t c)
{
    const Line<bytes> sums{l.sums}, lows{l.lows}, highs{l.highs};
    const Shorts<bytes> x = Line<bytes>{l.row}[c];
    return surroundings<bytes>(x, sums[c - 1] + sums[c] + sums[c + 1] - 9 * x,
                               lower(lower(lows[c - 1], lows[c]), lows[c + 1]),
                               higher(higher(highs[c - 1], highs[c]), highs[c + 1]));
}

template <int bytes>
VELMO_INLINE Surroundings<bytes> lineOf(const PatternLines& l, std::ptrdiff_t c)
{
    const Line<bytes> sums{l.fourSums}, lows{l.fourLows}, highs{l.fourHighs};
    const Shorts<bytes> x = Line<bytes>{l.row}[c];
    return surroundings<bytes>(x, sums[c - 4] + sums[c + 1] - 8 * x,
                               lower(lower(lows[c - 4], lows[c + 1]), x),
                               higher(higher(highs[c - 4], highs[c + 1]), x));
}

template <int bytes>
VELMO_INLINE void gather(const PatternLines& l, std::ptrdiff_t count)
{
    const Line<bytes> above{l.above}, row{l.row}, below{l.below};
    for (std::ptrdiff_t c = -row.lanes; c <= count; c += row.lanes) {
        const Shorts<bytes> a = above[c], x = row[c], b = below[c];
        storeShorts(l.sums + c, a + x + b);
        storeShorts(l.lows + c, lower(lower(a, b), x));
        storeShorts(l.highs + c, higher(higher(a, b), x));
        const Shorts<bytes> second = row[c + 1], third = row[c + 2], fourth = row[c + 3];
        storeShorts(l.fourSums + c, (x + second) + (third + fourth));
        storeShorts(l.fourLows + c, lower(lower(x, second), lower(third, fourth)));
        storeShorts(l.fourHighs + c, higher(higher(x, second), higher(third, fourth)));
    }
}

template <int bytes>
VELMO_INLINE void sumFoursOf(const short* values, short* sums, std::ptrdiff_t count)
{
    const Line<bytes> line{values};
    for (std::ptrdiff_t c = -line.lanes; c <= count; c += line.lanes)
        storeShorts(sums + c, (line[c] + line[c + 1]) + (line[c + 2] + line[c + 3]));
}

/// The columns' states after a row, and their corrections.
template <int bytes>
VELMO_INLINE void learnColumns(const PatternLines& l, std::ptrdiff_t count,
                               const PatternParameters& parameters)
{
    using V = Shorts<bytes>;
    const V threshold = all<bytes>(parameters.threshold), thresholdLow = all<bytes>(parameters.thresholdLow);
    const V most = all<bytes>(8 * parameters.lineLimit), least = -most;
    const Line<bytes> corrections{l.corrections}, wholes{l.wholes}, fractions{l.fractions};
    for (std::ptrdiff_t c = 0; c < count; c += corrections.lanes) {
        const auto [blockRest, block] = blockOf<bytes>(l, c);
        const auto [lineRest, line] = lineOf<bytes>(l, c);
        storeShorts(l.blockRests + c, blockRest);
        storeShorts(l.blockDeviations + c, block);
        storeShorts(l.lineRests + c, lineRest);
        storeShorts(l.lineDeviations + c, line);

        const V calm = isLess(block, thresholdLow) | isLess(line, threshold);
        const V rest = choose<V>(isLess<V>(block, line - (line >> 2) - (line >> 4)), blockRest, lineRest);
        V fraction = fractions[c] - ((corrections[c] + rest) & calm);
        V whole = wholes[c] + (fraction >> 10);
        // At a limit, 0 remains above and 1023 below.
        const auto below = reinterpret_cast<typename Lanes<bytes>::Unsigned>(isLess(whole, least)) >> 6;
        fraction = (fraction & 1023 & isLess(whole, most)) | reinterpret_cast<V>(below);
        whole = higher(lower(whole, most), least - 1);
        // Toward zero by 4; -3 to -1 become 1 to 3 and stay there.
        fraction += (((whole >> 15) & 8) - 4) & isNot0<V>(whole | fraction >> 2);
        whole += fraction >> 10;
        storeShorts(l.fractions + c, fraction & 1023);
        storeShorts(l.wholes + c, whole);
        storeShorts(l.updated + c, whole - (whole >> 15));
    }
}

/// patternCounts().
template <class V>
VELMO_INLINE V counts(const V& corrections)
{
    return (7 * corrections + 32) >> 6;
}

/// What the pixels from `c` on are compared with, less eight times themselves. Left of them are the columns'
/// corrections after the row, right of them those before it.
template <int bytes>
VELMO_INLINE Shorts<bytes> estimate(const PatternLines& l, std::ptrdiff_t c, const Shorts<bytes>& close)
{
    using V = Shorts<bytes>;
    const Line<bytes> left{l.updated}, right{l.corrections}, leftFours{l.updatedFours},
        rightFours{l.correctionFours};
    const V centre = right[c];
    const V ofBlock = Line<bytes>{l.blockRests}[c] - counts<V>(3 * (left[c - 1] + right[c + 1] - 2 * centre));
    const V ofLine =
        Line<bytes>{l.lineRests}[c] - counts<V>(leftFours[c - 4] + rightFours[c + 1] - 8 * centre);
    const V block = Line<bytes>{l.blockDeviations}[c], line = Line<bytes>{l.lineDeviations}[c];
    const V apart = higher(block, line) - lower(block, line), difference = ofLine - ofBlock;
    return ofBlock + choose<V>(isLess(apart, close), difference >> 1, difference & isLess(line, block));
}

/// The output of the pixels from `c` on with their states before the row, and these after it. They always fit
/// 16 bits.
template <int bytes>
VELMO_INLINE void learnPixels(const PatternLines& l, std::ptrdiff_t c, const PatternParameters& parameters,
                              int* states, short* out)
{
    using V = Shorts<bytes>;
    const V threshold = all<bytes>(parameters.threshold);
    const V most = all<bytes>(256 * parameters.frameLimit), least = -most - 1;
    V state = narrowed<bytes>(states);
    const V correction = (state >> 5) - (state >> 15);
    const V x = Line<bytes>{l.row}[c];
    const V sum = counts<V>(Line<bytes>{l.corrections}[c]) + counts(correction);
    storeShorts(out, x - (sum & isNot0<V>(x ^ 32767)));

    const V calmer = lower<V>(Line<bytes>{l.blockDeviations}[c], Line<bytes>{l.lineDeviations}[c]);
    const V step = (correction + estimate<bytes>(l, c, threshold >> 2)) & isLess(calmer, threshold);
    state = lower<V>(higher<V>(state - step, least), most);
    // One step toward zero.
    storeWidened(states, lower<V>(state + 1, higher<V>(state - 1, V{})));
}

/// Repeats the first and the last of `count` values four times on either side.
void pad(short* values, std::ptrdiff_t count)
{
    std::fill_n(values - 4, 4, values[0]);
    std::fill_n(values + count, 4, values[count - 1]);
}

/// Lines and parameters by value: no store can change them, so they stay in registers.
template <int bytes>
VELMO_INLINE void filterRowOf(PatternLines l, int* states, short* out, std::ptrdiff_t count,
                              PatternParameters parameters)
{
    gather<bytes>(l, count);
    learnColumns<bytes>(l, count, parameters);
    pad(l.updated, count);
    sumFoursOf<bytes>(l.updated, l.updatedFours, count);
    // Left of the first column lies that column itself, which its pixel sees as it was.
    l.updated[-1] = l.corrections[0];
    l.updatedFours[-4] = static_cast<short>(4 * l.corrections[0]);

    constexpr int lanes = bytes / 2;
    std::ptrdiff_t c = 0;
    for (; c + lanes <= count; c += lanes)
        learnPixels<bytes>(l, c, parameters, states + c, out + c);
    if (c == count)
        return;
    int lastStates[lanes] = {};
    short lastOut[lanes];
    std::copy(states + c, states + count, lastStates);
    learnPixels<bytes>(l, c, parameters, lastStates, lastOut);
    std::copy_n(lastStates, count - c, states + c);
    std::copy_n(lastOut, count - c, out + c);
}

VELMO_CLONES_BY_WIDTH(filterRow,
                      (const PatternLines& l, int* states, short* out, int count,
                       const PatternParameters& parameters),
                      (l, states, out, count, parameters))

/// Lines in `scratch`, which grows to what they need.
PatternLines linesOf(std::vector<short>& scratch, int count)
{
    constexpr std::size_t lines = sizeof(PatternLines) / sizeof(short*), boundary = 32;
    const std::size_t stride = static_cast<std::size_t>((count + room - 1) / room + 3) * room;
    if (scratch.size() < lines * stride + boundary)
        scratch.resize(lines * stride + boundary);
    const auto beyond = reinterpret_cast<std::uintptr_t>(scratch.data()) / sizeof(short) % boundary;
    short* next = scratch.data() + boundary + room - beyond;
    const auto line = [&] { return std::exchange(next, next + stride); };
    return {line(), line(), line(), line(), line(), line(), line(), line(), line(), line(),
            line(), line(), line(), line(), line(), line(), line(), line(), line()};
}

void removeStaticPatternFast(const cv::Mat_<short>& in, cv::Mat_<short>& out, cv::Mat_<int>& columnState,
                             cv::Mat_<int>& pixelState, const PatternParameters& parameters,
                             std::vector<short>& scratch)
{
    const int count = in.cols;
    PatternLines l = linesOf(scratch, count);
    int* columns = columnState[0];
    for (int c = 0; c < count; ++c) {
        l.wholes[c] = static_cast<short>(columns[c] >> 10);
        l.fractions[c] = static_cast<short>(columns[c] & 1023);
        l.corrections[c] = static_cast<short>(l.wholes[c] - (l.wholes[c] >> 15));
    }
    pad(l.corrections, count);
    sumFoursOf<16>(l.corrections, l.correctionFours, count);

    // The rows are copied before they are overwritten, so that `out` may be `in`.
    const auto load = [&](int r, short* line) {
        std::copy_n(in[r], count, line);
        pad(line, count);
    };
    load(0, l.above);
    load(0, l.row);
    for (int r = 0; r < in.rows; ++r) {
        load(std::min(r + 1, in.rows - 1), l.below);
        filterRow(l, pixelState[r], out[r], count, parameters);
        std::swap(l.corrections, l.updated);
        std::swap(l.correctionFours, l.updatedFours);
        l.below = std::exchange(l.above, std::exchange(l.row, l.below));
    }
    for (int c = 0; c < count; ++c)
        columns[c] = 1024 * l.wholes[c] + l.fractions[c];
}

} // namespace

constexpr Forms<RemoveStaticPattern> removeStaticPattern{"static pattern", removeStaticPatternPlain,
                                                         removeStaticPatternFast};

} // namespace velmo::exp::vision
