#include "vision/kernels/SpatialNoiseRemoverKernel.h"

#include "core/Clones.h"
#include "core/Lanes.h"

#include <algorithm>
#include <cstdint>
#include <vector>

// Everything in 16-bit lanes. A pixel is changed only if its activity is below 19 * 31, and the activity is
// at least the range (largest minus smallest value) of its neighbourhood. So where the range is larger the
// pixel is kept, whatever the arithmetic below made of it; elsewhere nothing overflows.

namespace velmo::exp::vision {
namespace {

using u16 = std::uint16_t;

/// The mean of nine values whose sum is `sum` modulo 2^16, of which `centre` is one and the others lie
/// within 12291 / 8 of it.
///
/// The definition takes the sum S of the nine values in offset binary, plus 5. Written as
/// S = 4096 * high + low with any `high`, its shifts separate without a loss: `high` contributes 455 * high
/// to the result, and 56 * high to the term that is shifted by 12. Here `high` follows from the centre alone,
/// 9 * (centre >> 12) + 72 for the offsets, less 4 so that `low` is 0 to 65535.
VELMO_INLINE short meanOfNine(u16 sum, short centre)
{
    const auto level = static_cast<short>(centre >> 12);
    const auto low = static_cast<u16>(sum + 5 + 4 * 4096 - level * (9 * 4096));
    const auto part = static_cast<u16>(low - (low >> 3));
    const auto part64 = static_cast<u16>(part >> 6);
    const auto part4096 = static_cast<u16>(static_cast<u16>(part64 + level * (9 * 56) + 68 * 56) >> 6);
    const auto rest = static_cast<u16>(static_cast<u16>(part + part64 + part4096) >> 3);
    return static_cast<short>(rest + level * (9 * 455) + 68 * 455 - 32768);
}

/// What a row is smoothed from, and of the three pixels of each column the sum modulo 2^16, the smallest and
/// the largest. All have room for an element more on either side.
struct SmoothLines
{
    short *above, *row, *below;
    u16* sums;
    short *lows, *highs;
};

/// `last` is the largest activity at which a pixel is changed; `perGain` is 32768 / gain, rounded up. Both
/// are parameters, because values computed here are widened before the loop, and the loop with them.
VELMO_CLONES void smoothRow(const SmoothLines& lines, short* out, int count, u16 last, u16 perGain)
{
    const short *above = lines.above, *row = lines.row, *below = lines.below;
    u16* sums = lines.sums;
    short *lows = lines.lows, *highs = lines.highs;
    VELMO_INDEPENDENT
    for (int c = 0; c < count; ++c) {
        const short a = above[c], x = row[c], b = below[c];
        sums[c] = static_cast<u16>(a + x + b);
        lows[c] = lower(lower(a, b), x);
        highs[c] = higher(higher(a, b), x);
    }
    // Beyond the ends the columns repeat as the pixels do.
    sums[-1] = sums[0], sums[count] = sums[count - 1];
    lows[-1] = lows[0], lows[count] = lows[count - 1];
    highs[-1] = highs[0], highs[count] = highs[count - 1];

    VELMO_INDEPENDENT
    for (int c = 0; c < count; ++c) {
        const short x = row[c];
        const u16 sum = static_cast<u16>(sums[c - 1] + sums[c] + sums[c + 1]);
        const short mean = meanOfNine(sum, x);
        // |u - m| is 2 * max(u, m) - u - m.
        const u16 tops = static_cast<u16>(
            higher(above[c - 1], mean) + higher(above[c], mean) + higher(above[c + 1], mean) +
            higher(row[c - 1], mean) + higher(x, mean) + higher(row[c + 1], mean) +
            higher(below[c - 1], mean) + higher(below[c], mean) + higher(below[c + 1], mean));
        const auto activity = static_cast<u16>(2 * tops - static_cast<u16>(sum + 9 * mean));

        const short low = lower(lower(lows[c - 1], lows[c]), lows[c + 1]);
        const short high = higher(higher(highs[c - 1], highs[c]), highs[c + 1]);
        const auto range = static_cast<u16>(high - low);

        const auto twice = static_cast<u16>(2 * activity);
        const auto quotient =
            static_cast<u16>((static_cast<unsigned>(twice) * static_cast<unsigned>(perGain)) >> 16);
        const auto kept = static_cast<short>((quotient + 13) * static_cast<short>(x - mean) + 16);
        const auto smooth = static_cast<short>((kept >> 5) + mean);
        // The compiler keeps 16-bit lanes for a test for equality, but not for one for order.
        const u16 larger = activity > range ? activity : range;
        out[c] = (larger > last ? larger : last) == last ? smooth : x;
    }
}

/// A row of the frame with its outermost pixels repeated once on either side.
void loadRow(const short* row, int count, short* padded)
{
    std::copy_n(row, count, padded);
    padded[-1] = row[0];
    padded[count] = row[count - 1];
}

void removeSpatialNoiseFast(const cv::Mat_<short>& in, cv::Mat_<short>& out, int gain)
{
    // Of the thread, because one filter may serve several; it grows to the widest frame and stays.
    thread_local std::vector<short> scratch;
    // Lines begin on a boundary of the widest vectors; the element before is the end of the line above.
    constexpr int lane = 64 / sizeof(short);
    const int stride = (in.cols + 1 + lane) / lane * lane;
    const std::size_t needed = std::size_t{6} * static_cast<std::size_t>(stride) + 2 * lane;
    if (scratch.size() < needed)
        scratch.resize(needed);
    const auto beyond =
        static_cast<std::ptrdiff_t>(reinterpret_cast<std::uintptr_t>(scratch.data()) / sizeof(short) % lane);
    const auto line = [&](int n) {
        return scratch.data() + (2 * lane - beyond) + std::ptrdiff_t{n} * stride;
    };
    SmoothLines lines{line(0), line(1), line(2), reinterpret_cast<u16*>(line(3)), line(4), line(5)};

    const auto last = static_cast<u16>(19 * gain - 1);
    // Multiplied by twice an activity up to `last`, its upper 16 bits are the quotient for every gain.
    const auto perGain = static_cast<u16>((32768 + gain - 1) / gain);
    // The rows are copied before they are overwritten, so that `out` may be `in`.
    loadRow(in[0], in.cols, lines.above);
    loadRow(in[0], in.cols, lines.row);
    for (int r = 0; r < in.rows; ++r) {
        loadRow(in[std::min(r + 1, in.rows - 1)], in.cols, lines.below);
        smoothRow(lines, out[r], in.cols, last, perGain);
        short* oldest = lines.above;
        lines.above = lines.row;
        lines.row = lines.below;
        lines.below = oldest;
    }
}

} // namespace

constexpr Forms<RemoveSpatialNoise> removeSpatialNoise{"spatial noise", removeSpatialNoisePlain,
                                                       removeSpatialNoiseFast};

} // namespace velmo::exp::vision
