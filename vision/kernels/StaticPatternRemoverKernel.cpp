#include "vision/kernels/StaticPatternRemoverKernel.h"

#include "core/Clones.h"
#include "core/Lanes.h"

#include <algorithm>
#include <cstdint>
#include <utility>

// A row at a time, in 16-bit lanes. What is learnt by the columns of a row depends on the input and on what
// they knew before that row; only the pixels look at the columns left of them as they are after it. So the
// columns of a row go first and the pixels follow, each as loops without a branch.
//
// Sums are taken relative to eight times the pixel, modulo 2^16. That is exact wherever the nine values of a
// set lie within 4095 of each other. Elsewhere the deviation, exact or not, is 2048 or more (see
// deviation()), beyond every threshold, so that nothing made of it is used.

namespace velmo::exp::vision {
namespace {

using u16 = std::uint16_t;

/// All bits set if a < b, which must not lie more than 32767 apart. Rather than a comparison, which would be
/// made in 32 bits.
VELMO_INLINE short below(short a, short b)
{
    return static_cast<short>(static_cast<short>(a - b) >> 15);
}

VELMO_INLINE short choose(short mask, short yes, short no)
{
    return static_cast<short>((yes & mask) | (no & ~mask));
}

/// patternCounts() in 16 bits.
VELMO_INLINE short counts(short correction)
{
    const auto part = static_cast<short>(static_cast<short>(correction - 25) >> 3);
    return static_cast<short>(static_cast<short>(correction - part) >> 3);
}

/// How far the lowest and the highest of a set lie from the mean of the eight neighbours; 32767 for more.
/// `rest` is the neighbours' sum less eight times the pixel `x`.
///
/// The two distances add up to highest - lowest, modulo 2^16. So if these lie more than 4095 apart, one of
/// the distances is 2048 or more, whatever became of the sum.
VELMO_INLINE short deviation(short x, short rest, short lowest, short highest)
{
    const auto mean = static_cast<short>(x + (rest >> 3));
    const auto down = static_cast<u16>(mean - lowest), up = static_cast<u16>(highest - mean);
    const u16 larger = down < up ? up : down;
    return static_cast<short>(larger < 32767 ? larger : 32767);
}

/// Of the three pixels of each column, -1 to `count`.
VELMO_CLONES void gatherColumns(const short* __restrict above, const short* __restrict row,
                                const short* __restrict below, short* __restrict sums, short* __restrict lows,
                                short* __restrict highs, int count)
{
    for (int c = -1; c <= count; ++c) {
        const short a = above[c], x = row[c], b = below[c];
        sums[c] = static_cast<short>(a + x + b);
        lows[c] = lower(lower(a, b), x);
        highs[c] = higher(higher(a, b), x);
    }
}

/// Of each pixel and the three right of it, -4 to `count`.
VELMO_CLONES void gatherFours(const short* __restrict row, short* __restrict sums, short* __restrict lows,
                              short* __restrict highs, int count)
{
    for (int c = -4; c <= count; ++c) {
        const short p = row[c], q = row[c + 1], r = row[c + 2], s = row[c + 3];
        sums[c] = static_cast<short>(static_cast<short>(p + q) + static_cast<short>(r + s));
        lows[c] = lower(lower(p, q), lower(r, s));
        highs[c] = higher(higher(p, q), higher(r, s));
    }
}

/// What each pixel sees in its 3 x 3 block: the neighbours' sum less eight times the pixel, the deviation.
VELMO_CLONES void measureBlocks(const short* __restrict row, const short* __restrict sums,
                                const short* __restrict lows, const short* __restrict highs,
                                short* __restrict rests, short* __restrict deviations, int count)
{
    for (int c = 0; c < count; ++c) {
        const short x = row[c];
        const auto rest = static_cast<short>(sums[c - 1] + sums[c] + sums[c + 1] - 9 * x);
        const short low = lower(lower(lows[c - 1], lows[c]), lows[c + 1]);
        const short high = higher(higher(highs[c - 1], highs[c]), highs[c + 1]);
        rests[c] = rest;
        deviations[c] = deviation(x, rest, low, high);
    }
}

/// The same for the four pixels on either side.
VELMO_CLONES void measureLines(const short* __restrict row, const short* __restrict sums,
                               const short* __restrict lows, const short* __restrict highs,
                               short* __restrict rests, short* __restrict deviations, int count)
{
    for (int c = 0; c < count; ++c) {
        const short x = row[c];
        const auto rest = static_cast<short>(sums[c - 4] + sums[c + 1] - 8 * x);
        const short low = lower(lower(lows[c - 4], lows[c + 1]), x);
        const short high = higher(higher(highs[c - 4], highs[c + 1]), x);
        rests[c] = rest;
        deviations[c] = deviation(x, rest, low, high);
    }
}

/// The column states after a row. `corrections` are those before it, `updated` become those after it.
VELMO_CLONES void learnColumns(int* __restrict states, const short* __restrict corrections,
                               short* __restrict updated, const short* __restrict blockRests,
                               const short* __restrict blockDeviations, const short* __restrict lineRests,
                               const short* __restrict lineDeviations, int count, short threshold,
                               short thresholdLow, int limit)
{
    const int most = limit * 8192, least = -limit * 8192 - 1;
    for (int c = 0; c < count; ++c) {
        const short block = blockDeviations[c], line = lineDeviations[c];
        const auto calm = static_cast<short>(below(block, thresholdLow) | below(line, threshold));
        const auto most16th = static_cast<short>(line - (line >> 2) - (line >> 4));
        const short rest = choose(below(block, most16th), blockRests[c], lineRests[c]);
        const auto step = static_cast<short>(static_cast<short>(corrections[c] + rest) & calm);
        int state = states[c] - step;
        state = state < most ? state : most;
        state = state > least ? state : least;
        // Toward zero by 4; -3 to -1 become 1 to 3 and stay there.
        const int decayed = state < 0 ? state + 4 : state - 4;
        state = (state >> 2) == 0 ? state : decayed;
        states[c] = state;
        updated[c] = static_cast<short>((state >> 10) + (state < 0 ? 1 : 0));
    }
}

/// Of each correction and the three right of it, -4 to `count`.
VELMO_CLONES void sumFours(const short* __restrict corrections, short* __restrict sums, int count)
{
    for (int c = -4; c <= count; ++c)
        sums[c] =
            static_cast<short>(corrections[c] + corrections[c + 1] + corrections[c + 2] + corrections[c + 3]);
}

/// The output of a row with the states before it.
VELMO_CLONES void correctRow(const short* __restrict row, const short* __restrict columnCorrections,
                             const int* __restrict states, short* __restrict out, int count)
{
    for (int c = 0; c < count; ++c) {
        const short x = row[c];
        const auto state = static_cast<short>(states[c]);
        const auto correction = static_cast<short>((state >> 5) - (state >> 15));
        const auto y = static_cast<short>(x - counts(columnCorrections[c]) - counts(correction));
        out[c] = x == 32767 ? x : y;
    }
}

/// The pixel states after a row, which always fit 16 bits. `left` are the columns' corrections after it,
/// `right` those before it.
VELMO_CLONES void learnPixels(int* __restrict states, const short* __restrict left,
                              const short* __restrict leftFours, const short* __restrict right,
                              const short* __restrict rightFours, const short* __restrict blockRests,
                              const short* __restrict blockDeviations, const short* __restrict lineRests,
                              const short* __restrict lineDeviations, int count, short threshold, short limit)
{
    const auto most = static_cast<short>(limit * 256), least = static_cast<short>(-limit * 256 - 1);
    const auto close = static_cast<short>(threshold >> 2);
    for (int c = 0; c < count; ++c) {
        const short block = blockDeviations[c], line = lineDeviations[c];
        const short centre = right[c];
        const auto blockCorrection = static_cast<short>(3 * (left[c - 1] + right[c + 1] - 2 * centre));
        const auto lineCorrection = static_cast<short>(leftFours[c - 4] + rightFours[c + 1] - 8 * centre);
        const auto blockEstimate = static_cast<short>(blockRests[c] - counts(blockCorrection));
        const auto lineEstimate = static_cast<short>(lineRests[c] - counts(lineCorrection));
        const auto both = static_cast<short>(static_cast<short>(blockEstimate + lineEstimate) >> 1);
        const short calmer = lower(block, line);
        const auto apart = static_cast<short>(higher(block, line) - calmer);
        const short estimate =
            choose(below(apart, close), both, choose(below(line, block), lineEstimate, blockEstimate));

        auto state = static_cast<short>(states[c]);
        const auto correction = static_cast<short>((state >> 5) - (state >> 15));
        const auto step =
            static_cast<short>(static_cast<short>(correction + estimate) & below(calmer, threshold));
        state = lower(higher(static_cast<short>(state - step), least), most);
        // One step toward zero.
        states[c] = lower(static_cast<short>(state + 1), higher(static_cast<short>(state - 1), 0));
    }
}

/// Repeats the first and the last of `count` values four times on either side.
void pad(short* values, int count)
{
    std::fill_n(values - 4, 4, values[0]);
    std::fill_n(values + count, 4, values[count - 1]);
}

void removeStaticPatternFast(const cv::Mat_<short>& in, cv::Mat_<short>& out, cv::Mat_<int>& columnState,
                             cv::Mat_<int>& pixelState, const PatternParameters& parameters,
                             std::vector<short>& scratch)
{
    const int count = in.cols;
    constexpr int lineCount = 14;
    const std::size_t stride = static_cast<std::size_t>(count) + 8;
    if (scratch.size() < lineCount * stride)
        scratch.resize(lineCount * stride);
    short* next = scratch.data() + 4;
    const auto newLine = [&] { return std::exchange(next, next + stride); };

    short *above = newLine(), *row = newLine(), *below = newLine();
    short *sums = newLine(), *lows = newLine(), *highs = newLine();
    short *blockRests = newLine(), *blockDeviations = newLine();
    short *lineRests = newLine(), *lineDeviations = newLine();
    short *corrections = newLine(), *correctionFours = newLine();
    short *updated = newLine(), *updatedFours = newLine();

    int* columns = columnState[0];
    for (int c = 0; c < count; ++c)
        corrections[c] = static_cast<short>((columns[c] >> 10) + (columns[c] < 0 ? 1 : 0));
    pad(corrections, count);
    sumFours(corrections, correctionFours, count);

    // The rows are copied before they are overwritten, so that `out` may be `in`.
    const auto load = [&](int r, short* line) {
        std::copy_n(in[r], count, line);
        pad(line, count);
    };
    load(0, above);
    load(0, row);
    for (int r = 0; r < in.rows; ++r) {
        load(std::min(r + 1, in.rows - 1), below);
        int* pixels = pixelState[r];
        correctRow(row, corrections, pixels, out[r], count);

        gatherColumns(above, row, below, sums, lows, highs, count);
        measureBlocks(row, sums, lows, highs, blockRests, blockDeviations, count);
        gatherFours(row, sums, lows, highs, count);
        measureLines(row, sums, lows, highs, lineRests, lineDeviations, count);

        learnColumns(columns, corrections, updated, blockRests, blockDeviations, lineRests, lineDeviations,
                     count, static_cast<short>(parameters.threshold),
                     static_cast<short>(parameters.thresholdLow), parameters.lineLimit);
        pad(updated, count);
        sumFours(updated, updatedFours, count);
        // Left of the first column lies that column itself, which its pixel sees as it was.
        updated[-1] = corrections[0];
        updatedFours[-4] = static_cast<short>(4 * corrections[0]);
        learnPixels(pixels, updated, updatedFours, corrections, correctionFours, blockRests, blockDeviations,
                    lineRests, lineDeviations, count, static_cast<short>(parameters.threshold),
                    static_cast<short>(parameters.frameLimit));

        std::swap(corrections, updated);
        std::swap(correctionFours, updatedFours);
        short* oldest = above;
        above = row;
        row = below;
        below = oldest;
    }
}

} // namespace

constexpr Forms<RemoveStaticPattern> removeStaticPattern{"static pattern", removeStaticPatternPlain,
                                                         removeStaticPatternFast};

} // namespace velmo::exp::vision
