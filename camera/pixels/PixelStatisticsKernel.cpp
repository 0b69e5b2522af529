#include "camera/pixels/PixelStatisticsKernel.h"

#include "core/Clones.h"

namespace velmo::camera {
namespace {

/// Puts the lesser first.
VELMO_INLINE void order(short& a, short& b)
{
    const short low = a < b ? a : b;
    b = a < b ? b : a;
    a = low;
}

VELMO_INLINE void sortFive(short v[5])
{
    order(v[0], v[1]);
    order(v[3], v[4]);
    order(v[2], v[4]);
    order(v[2], v[3]);
    order(v[0], v[3]);
    order(v[0], v[2]);
    order(v[1], v[4]);
    order(v[1], v[3]);
    order(v[1], v[2]);
}

VELMO_CLONES void sortColumns(const short* const lines[5], int count, short* __restrict out)
{
    const short *a = lines[0], *b = lines[1], *c = lines[2], *d = lines[3], *e = lines[4];
    VELMO_INDEPENDENT
    for (int i = 0; i < count; ++i) {
        short v[5] = {a[i], b[i], c[i], d[i], e[i]};
        sortFive(v);
        for (int k = 0; k < 5; ++k)
            out[k * count + i] = v[k];
    }
}

template <class T>
VELMO_INLINE T lesser(T a, T b)
{
    return a < b ? a : b;
}

template <class T>
VELMO_INLINE T greater(T a, T b)
{
    return a < b ? b : a;
}

// Columns sorted, then rows: both stay sorted. The middle one of all is the middle one of the greatest, the
// middle and the least of the three diagonals that run across.
VELMO_CLONES void medians(const short* __restrict sorted, int count, short* __restrict median,
                          short* __restrict calm)
{
    for (int i = 0; i < count - 4; ++i) {
        short v[5][5];
        for (int k = 0; k < 5; ++k) {
            for (int n = 0; n < 5; ++n)
                v[k][n] = sorted[k * count + i + n];
            sortFive(v[k]);
        }
        const short low = greater(greater(v[0][3], v[1][2]), greater(v[2][1], v[3][0]));
        const short high = lesser(lesser(v[1][4], v[2][3]), lesser(v[3][2], v[4][1]));
        short middle[5] = {v[0][4], v[1][3], v[2][2], v[3][1], v[4][0]};
        sortFive(middle);
        const short m = greater(lesser(middle[2], high), lesser(low, greater(middle[2], high)));
        median[i + 2] = m;
        const int below = m - v[1][2];
        const int above = v[3][2] - m;
        const int less = below < above ? below : above;
        const int most = less < 32767 ? less : 32767;
        calm[i + 2] = static_cast<short>(most < 1 ? 1 : most);
    }
}

VELMO_CLONES void peaksOf(const short* __restrict above, const short* __restrict line,
                          const short* __restrict below, int count, int* __restrict out)
{
    for (int i = 1; i < count - 1; ++i) {
        const int x = 2 * line[i];
        const int across = x - line[i - 1] - line[i + 1];
        const int along = x - above[i] - below[i];
        const int falling = x - above[i - 1] - below[i + 1];
        const int rising = x - above[i + 1] - below[i - 1];
        const int low = lesser(lesser(across, along), lesser(falling, rising));
        const int high = greater(greater(across, along), greater(falling, rising));
        out[i] = greater(low, 0) + lesser(high, 0);
    }
}

VELMO_CLONES void addToMoments(const NewLine& line, int count, const Moments& moments)
{
    const float w = line.weight;
    const float u = 1 - w;
    const float w3 = 1 - 2 * w;
    const float w4 = 1 - 3 * w + 3 * w * w;
    VELMO_INDEPENDENT
    for (int i = 0; i < count; ++i) {
        const int difference = line.values[i] - line.around.median[i];
        const auto odd = static_cast<float>(difference);
        const float rise = line.rise[i];
        const float dm = (rise - odd) - (moments.level[i] - moments.odd[i]);
        const float dr = odd - moments.odd[i];
        moments.level[i] += (rise - moments.level[i]) * w;
        moments.odd[i] += dr * w;
        moments.movement[i] = u * (moments.movement[i] + w * dm * dm);
        moments.follow[i] = u * (moments.follow[i] + w * dm * dr);
        moments.restless[i] = u * (moments.restless[i] + w * dr * dr);
        const float de = 0.5F * static_cast<float>(line.peaks[i]) - moments.peak[i];
        moments.peak[i] += de * w;
        const float v = moments.variance[i];
        const float s = moments.skew[i];
        const float a = de * w;
        const float square = de * de;
        moments.variance[i] = u * (v + w * square);
        moments.skew[i] = u * (s + w * w3 * square * de - 3 * a * v);
        moments.kurtosis[i] =
            u * (moments.kurtosis[i] + w * w4 * square * square + 6 * a * a * v - 4 * a * s);
        const int limit = 4 * line.around.calm[i];
        const auto outside = static_cast<float>((difference > limit) - (difference < -limit));
        moments.persistent[i] += (outside - moments.persistent[i]) * w;
    }
}

void lookAroundFast(const short* const lines[5], int count, short* scratch, const Surroundings& out)
{
    sortColumns(lines, count, scratch);
    medians(scratch, count, out.median, out.calm);
    for (short* line : {out.median, out.calm}) {
        line[0] = line[1] = line[2];
        line[count - 1] = line[count - 2] = line[count - 3];
    }
}

void standOutFast(const short* above, const short* line, const short* below, int count, int* out)
{
    peaksOf(above, line, below, count, out);
    for (const int i : {0, count - 1}) {
        const int inside = i == 0 ? 1 : i - 1;
        // The pixel between its neighbour twice, three lines of one such triple each.
        const short upper[3] = {above[inside], above[i], above[inside]};
        const short middle[3] = {line[inside], line[i], line[inside]};
        const short lower[3] = {below[inside], below[i], below[inside]};
        int at[3];
        peaksOf(upper, middle, lower, 3, at);
        out[i] = at[1];
    }
}

} // namespace

const exp::Forms<LookAround> lookAround{"lookAround", lookAroundPlain, lookAroundFast};
const exp::Forms<StandOut> standOut{"standOut", standOutPlain, standOutFast};

void addMoments(const NewLine& line, int count, const Moments& moments)
{
    addToMoments(line, count, moments);
}

} // namespace velmo::camera
