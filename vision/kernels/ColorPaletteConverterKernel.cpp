#include "vision/kernels/ColorPaletteConverterKernel.h"

#include "core/ByteShuffle.h"
#include "core/Clones.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace velmo::vision {
namespace {

using Entries4 = unsigned int __attribute__((vector_size(16)));

/// Two frame values from one load: the processor's loads are what limits the colouring.
struct ValuePair
{
    explicit ValuePair(const unsigned short* in) { std::memcpy(&m_u32Both, in, sizeof m_u32Both); }

#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    unsigned int first() const
    {
        return m_u32Both & 0xffff;
    }
    unsigned int second() const
    {
        return m_u32Both >> 16;
    }
#else
    unsigned int first() const
    {
        return m_u32Both >> 16;
    }
    unsigned int second() const
    {
        return m_u32Both & 0xffff;
    }
#endif

    unsigned int m_u32Both;
};

VELMO_INLINE exp::shuffle::Bytes lookUpFour(const unsigned short* in, const unsigned int* table)
{
    const ValuePair left(in), right(in + 2);
    const Entries4 entries = {table[left.first()], table[left.second()], table[right.first()],
                              table[right.second()]};
    return reinterpret_cast<exp::shuffle::Bytes>(entries);
}

// Whole blocks end on their own last byte, so that nothing beside a region of a larger picture is touched.
VELMO_CLONES void palettizeBySixteen(const unsigned short* __restrict in, unsigned char* __restrict out,
                                     std::size_t count, const unsigned int* __restrict table)
{
    std::size_t n = 0;
    for (; n + 16 <= count; n += 16)
        exp::shuffle::storeWithoutFourth(out + 3 * n, lookUpFour(in + n, table),
                                         lookUpFour(in + n + 4, table), lookUpFour(in + n + 8, table),
                                         lookUpFour(in + n + 12, table));
    for (; n < count; ++n)
        std::memcpy(out + 3 * n, table + in[n], 3);
}

/// Where the entries of a part of a stretched palette lie between the points.
struct Places
{
    static constexpr int block = 512;
    int left[block];        ///< the point at or before the entry
    int leftWeight[block];  ///< in 1/2048
    int rightWeight[block]; ///< of the point after it
};

/// To the nearest, halves to even, for a few thousand either way: past 2^23 a float has no fraction left.
VELMO_INLINE int roundToEven(float value)
{
    return static_cast<int>((value + 12582912.0f) - 12582912.0f);
}

// Position and weights as cv::resize has them: the position in double cut to float, the weights rounded
// apart.
VELMO_CLONES void findPlaces(Places& places, int first, int count, double scale, int last)
{
    constexpr int whole = 2048;
    for (int n = 0; n < count; ++n) {
        const auto position = static_cast<float>((first + n + 0.5) * scale - 0.5);
        const int left = static_cast<int>(position);
        const float fraction = position - static_cast<float>(left);
        const int leftWeight = roundToEven((1.0f - fraction) * whole);
        const int rightWeight = roundToEven(fraction * whole);
        // Before the first point the fraction is negative; from the last one on there is no right neighbour.
        const bool bInside = left < last;
        places.left[n] = bInside ? left : last;
        places.leftWeight[n] = bInside && leftWeight < whole ? leftWeight : whole;
        places.rightWeight[n] = bInside && rightWeight > 0 ? rightWeight : 0;
    }
}

/// Two neighbouring points in output order.
struct Pair
{
    int left[3];
    int right[3];
};

VELMO_INLINE unsigned int blend(int left, int right, int leftWeight, int rightWeight)
{
    // The vertical pass over a single row leaves these shifts of its two multiplications by 2048.
    return static_cast<unsigned int>((((left * leftWeight + right * rightWeight) >> 9) + 2) >> 2);
}

VELMO_CLONES void blendRun(const Pair& pair, const int* __restrict leftWeight,
                           const int* __restrict rightWeight, unsigned int* __restrict entries, int count)
{
    for (int n = 0; n < count; ++n)
        entries[n] = packEntry(blend(pair.left[0], pair.right[0], leftWeight[n], rightWeight[n]),
                               blend(pair.left[1], pair.right[1], leftWeight[n], rightWeight[n]),
                               blend(pair.left[2], pair.right[2], leftWeight[n], rightWeight[n]), 0);
}

VELMO_CLONES void stepsOf(const float* __restrict moisture, int* __restrict steps, int count)
{
    for (int n = 0; n < count; ++n)
        steps[n] = humidityStep(moisture[n]);
}

Entries stretchByRuns(const std::vector<unsigned char>& palette, int span, bool bgr, Entries memory)
{
    const int points = static_cast<int>(palette.size() / 3);
    const double scale = 1.0 / (static_cast<double>(span) / points);
    Entries entries = std::move(memory);
    entries.resize(static_cast<std::size_t>(span));
    Places places;
    for (int first = 0; first < span; first += Places::block) {
        const int count = std::min(span - first, Places::block);
        findPlaces(places, first, count, scale, points - 1);
        for (int n = 0, end = 0; n < count; n = end) {
            const int left = places.left[n];
            while (end < count && places.left[end] == left)
                ++end;
            const unsigned char* a = palette.data() + 3 * left;
            const unsigned char* b = palette.data() + 3 * std::min(left + 1, points - 1);
            const int red = bgr ? 2 : 0;
            const Pair pair = {{a[red], a[1], a[2 - red]}, {b[red], b[1], b[2 - red]}};
            blendRun(pair, places.leftWeight + n, places.rightWeight + n, entries.data() + first + n,
                     end - n);
        }
    }
    return entries;
}

void fillTableFast(unsigned int* table, const unsigned int* stretched, int min, int max)
{
    std::fill_n(table, min, stretched[0]);
    std::copy_n(stretched, max - min, table + min);
    std::fill_n(table + max, tableEntries - max, stretched[std::max(max - min - 1, 0)]);
}

void fillTableHumidFast(unsigned int* table, const unsigned int* stretched, const float* moisture)
{
    constexpr int block = 1024;
    int steps[block];
    for (int first = 0; first < tableEntries; first += block) {
        stepsOf(moisture + first, steps, block);
        for (int n = 0; n < block; ++n)
            table[first + n] = stretched[steps[n]];
    }
}

} // namespace

constexpr exp::Forms<Palettize> palettize{"palettise", palettizePlain, palettizeBySixteen};
constexpr exp::Forms<Stretch> stretch{"stretched palette", stretchByResize, stretchByRuns};
constexpr exp::Forms<FillTable> fillTable{"palette table", fillTablePlain, fillTableFast};
constexpr exp::Forms<FillTableHumid> fillTableHumid{"humidity table", fillTableHumidPlain,
                                                    fillTableHumidFast};

bool ownStretchIsExact()
{
    std::vector<unsigned char> palette;
    unsigned int state = 1;
    for (int n = 0; n < 3 * 61; ++n) {
        state = state * 1664525u + 1013904223u;
        palette.push_back(static_cast<unsigned char>(state >> 24));
    }
    const auto agrees = [&palette](int span) {
        return stretch.fast(palette, span, true, {}) == stretch.plain(palette, span, true, {});
    };
    const int spans[] = {1, 2, 17, 60, 61, 62, 250, 1001};
    if (!std::all_of(std::begin(spans), std::end(spans), agrees))
        return false;
    palette.resize(3);
    return agrees(7);
}

Entries stretchPalette(const std::vector<unsigned char>& palette, int span, bool bgr, Entries memory)
{
    static const bool bOwn = ownStretchIsExact();
    const bool bInside = !palette.empty() && palette.size() % 3 == 0 &&
                         palette.size() <= 3 * pointsStretchedOwn && span >= 1 && span <= tableEntries;
    return (bOwn && bInside ? stretch.fast : stretch.plain)(palette, span, bgr, std::move(memory));
}

} // namespace velmo::vision
