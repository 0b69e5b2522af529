#include "vision/kernels/ColorConvertKernel.h"

#include "core/ByteShuffle.h"
#include "core/Clones.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

// Pixels are brought into words of 32 bits, a block at a time, so that every loop between reading and writing
// has lanes of one width; where the processor takes three bytes apart by itself, they stay bytes. The floats
// and their order are those of the definition; the limits 0 and 255 are put on the whole number instead,
// which comes to the same.

namespace velmo::vision {
namespace {

namespace shuffle = velmo::exp::shuffle;
using Byte = unsigned char;
using Word = std::uint32_t;

constexpr std::size_t group = 16;         // pixels in 48 bytes: what the shuffles take
constexpr std::size_t block = 16 * group; // two blocks of words stay in the innermost cache

constexpr int shiftOf(int byte)
{
    return __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? 8 * byte : 24 - 8 * byte;
}

VELMO_INLINE int byteOf(Word word, int byte)
{
    return static_cast<int>((word >> shiftOf(byte)) & 255);
}

VELMO_INLINE Word wordOf(int first, int second, int third)
{
    return static_cast<Word>(first) << shiftOf(0) | static_cast<Word>(second) << shiftOf(1) |
           static_cast<Word>(third) << shiftOf(2);
}

template <bool bBlueFirst>
VELMO_INLINE Word colour(int r, int g, int b)
{
    return bBlueFirst ? wordOf(b, g, r) : wordOf(r, g, b);
}

/// Every colour is within 16 bits before it is limited, whose lanes are half the work of those of 32.
template <class Whole = int>
VELMO_INLINE Whole limited(float value)
{
    const auto whole = static_cast<Whole>(static_cast<int>(value));
    const Whole atLeast0 = whole < 0 ? Whole{0} : whole;
    return atLeast0 > 255 ? Whole{255} : atLeast0;
}

/// The last pixels, fewer than a group, by way of a buffer that has room for all of it.
VELMO_INLINE void loadTail(const Byte* src, Word* words, std::size_t pixels)
{
    Byte bytes[3 * group] = {};
    std::memcpy(bytes, src, 3 * pixels);
    shuffle::loadWithFourth(bytes, words);
}

VELMO_INLINE void storeGroup(const Word* words, Byte* dst)
{
    shuffle::storeWithoutFourth(dst, shuffle::load(words), shuffle::load(words + 4), shuffle::load(words + 8),
                                shuffle::load(words + 12));
}

VELMO_INLINE void loadPixels(const Byte* src, Word* words, std::size_t pixels)
{
    std::size_t n = 0;
    for (; n + group <= pixels; n += group)
        shuffle::loadWithFourth(src + 3 * n, words + n);
    if (n < pixels)
        loadTail(src + 3 * n, words + n, pixels - n);
}

VELMO_INLINE void storePixels(const Word* words, Byte* dst, std::size_t pixels)
{
    std::size_t n = 0;
    for (; n + group <= pixels; n += group)
        storeGroup(words + n, dst + 3 * n);
    if (n == pixels)
        return;
    Byte bytes[3 * group];
    storeGroup(words + n, bytes);
    std::memcpy(dst + 3 * n, bytes, 3 * (pixels - n));
}

/// The three bytes of a pixel, as wide as the arithmetic takes them.
template <class Whole>
struct Triple
{
    Whole first, second, third;
};

template <class Layout>
VELMO_INLINE void convertTriples(const Byte* __restrict src, Byte* __restrict dst, int pixels)
{
    for (int n = 0; n < pixels; ++n) {
        const Triple<short> out =
            Layout::template convert<short>({src[3 * n], src[3 * n + 1], src[3 * n + 2]});
        dst[3 * n] = static_cast<Byte>(out.first);
        dst[3 * n + 1] = static_cast<Byte>(out.second);
        dst[3 * n + 2] = static_cast<Byte>(out.third);
    }
}

template <class Layout>
VELMO_INLINE Word convertWord(Word word)
{
    const Triple<int> out =
        Layout::template convert<int>({byteOf(word, 0), byteOf(word, 1), byteOf(word, 2)});
    return wordOf(out.first, out.second, out.third);
}

template <class Layout>
VELMO_INLINE void convertPixels(const Byte* src, Byte* dst, std::size_t pixels)
{
    if constexpr (shuffle::bTriples) {
        Byte bytes[3 * block]; // the destination may be the source
        for (std::size_t first = 0; first < pixels; first += block) {
            const std::size_t count = std::min(block, pixels - first);
            std::memcpy(bytes, src + 3 * first, 3 * count);
            convertTriples<Layout>(bytes, dst + 3 * first, static_cast<int>(count));
        }
        return;
    }
    Word words[block];
    for (std::size_t first = 0; first < pixels; first += block) {
        const std::size_t count = std::min(block, pixels - first);
        const int groups = static_cast<int>((count + group - 1) / group);
        loadPixels(src + 3 * first, words, count);
        for (int n = 0; n < groups * static_cast<int>(group); ++n)
            words[n] = convertWord<Layout>(words[n]);
        storePixels(words, dst + 3 * first, count);
    }
}

struct YcbcrToBgr
{
    template <class Whole>
    static VELMO_INLINE Triple<Whole> convert(Triple<Whole> in)
    {
        constexpr LumaChroma k = ycbcrFactors;
        const float y = k.y * static_cast<float>(static_cast<Whole>(in.first - 16));
        const auto cb = static_cast<float>(static_cast<Whole>(in.second - 128));
        const auto cr = static_cast<float>(static_cast<Whole>(in.third - 128));
        return {limited<Whole>(k.bFromCb * cb + y + k.rounding),
                limited<Whole>(y - k.gFromCr * cr - k.gFromCb * cb + k.rounding),
                limited<Whole>(k.rFromCr * cr + y + k.rounding)};
    }
};

// A product is what the table of the definition holds.
template <bool bBlueFirst>
struct ToYcbcr
{
    template <class Whole>
    static VELMO_INLINE Triple<Whole> convert(Triple<Whole> in)
    {
        constexpr const float(&k)[encodeTables] = encodeFactors;
        const auto r = static_cast<float>(bBlueFirst ? in.third : in.first);
        const auto g = static_cast<float>(in.second);
        const auto b = static_cast<float>(bBlueFirst ? in.first : in.third);
        const float y = g * k[yFromG] + r * k[yFromR] + b * k[yFromB] + 0.499f;
        const float cb = -(r * k[cbFromR]) - g * k[cbFromG] + b * k[half] + 128 + 0.499f;
        const float cr = r * k[half] - g * k[crFromG] - b * k[crFromB] + 128 + 0.499f;
        return {static_cast<Whole>(static_cast<int>(y)), static_cast<Whole>(static_cast<int>(cb)),
                static_cast<Whole>(static_cast<int>(cr))};
    }
};

/// Where the two lumas of a pair are, and how its colours come about.
struct Uyvy
{
    static constexpr LumaChroma factors = uyvyFactors;
    static constexpr int luma[] = {1, 3};
};
struct Uy1vy0
{
    static constexpr LumaChroma factors = uy1vy0Factors;
    static constexpr int luma[] = {3, 1};
};

// Whether halves are rounded up or not: without them nothing is added.
template <class Layout>
VELMO_INLINE int component(float value)
{
    return limited(Layout::factors.rounding == 0 ? value : value + Layout::factors.rounding);
}

/// First and second pixels of a group's pairs apart, so that both are written as whole vectors.
template <class Layout, bool bBlueFirst>
VELMO_INLINE void convertPairs(const Byte* __restrict src, Word* __restrict firsts, Word* __restrict seconds,
                               int pairs)
{
    constexpr LumaChroma k = Layout::factors;
    for (int n = 0; n < pairs; ++n) {
        Word pair;
        std::memcpy(&pair, src + 4 * n, sizeof pair);
        const auto d0 = static_cast<float>(byteOf(pair, 0) - 128);
        const auto d2 = static_cast<float>(byteOf(pair, 2) - 128);
        const float y0 = static_cast<float>(byteOf(pair, Layout::luma[0]) - 16) * k.y;
        const float y1 = static_cast<float>(byteOf(pair, Layout::luma[1]) - 16) * k.y;
        firsts[n] = colour<bBlueFirst>(component<Layout>(y0 + k.rFromCr * d0),
                                       component<Layout>(y0 - k.gFromCr * d0 - k.gFromCb * d2),
                                       component<Layout>(y0 + k.bFromCb * d2));
        seconds[n] = colour<bBlueFirst>(component<Layout>(y1 + k.rFromCr * d0),
                                        component<Layout>(y1 - k.gFromCr * d0 - k.gFromCb * d2),
                                        component<Layout>(y1 + k.bFromCbSecond * d2));
    }
}

VELMO_INLINE void storePairs(const Word* firsts, const Word* seconds, Byte* dst)
{
    const shuffle::Bytes a = shuffle::load(firsts), b = shuffle::load(seconds);
    const shuffle::Bytes c = shuffle::load(firsts + 4), d = shuffle::load(seconds + 4);
    shuffle::storeWithoutFourth(dst, shuffle::alternateLow(a, b), shuffle::alternateHigh(a, b),
                                shuffle::alternateLow(c, d), shuffle::alternateHigh(c, d));
}

template <class Layout, bool bBlueFirst>
VELMO_INLINE void convertPacked(const Byte* src, Byte* dst, std::size_t pixels)
{
    Word firsts[block / 2], seconds[block / 2];
    std::size_t n = 0;
    for (; n + block <= pixels; n += block) {
        convertPairs<Layout, bBlueFirst>(src + 2 * n, firsts, seconds, block / 2);
        for (std::size_t pair = 0; pair < block / 2; pair += group / 2)
            storePairs(firsts + pair, seconds + pair, dst + 3 * (n + 2 * pair));
    }
    for (; n < pixels; n += group) {
        const std::size_t count = std::min(group, pixels - n);
        Byte in[2 * group] = {}, out[3 * group];
        std::memcpy(in, src + 2 * n, 2 * count);
        convertPairs<Layout, bBlueFirst>(in, firsts, seconds, group / 2);
        storePairs(firsts, seconds, out);
        std::memcpy(dst + 3 * n, out, 3 * count);
    }
}

VELMO_CLONES void uyvyToBgrFast(const Byte* src, Byte* dst, std::size_t pixels)
{
    convertPacked<Uyvy, true>(src, dst, pixels);
}

VELMO_CLONES void uyvyToRgbFast(const Byte* src, Byte* dst, std::size_t pixels)
{
    convertPacked<Uyvy, false>(src, dst, pixels);
}

VELMO_CLONES void uy1vy0ToBgrFast(const Byte* src, Byte* dst, std::size_t pixels)
{
    convertPacked<Uy1vy0, true>(src, dst, pixels);
}

VELMO_CLONES void uy1vy0ToRgbFast(const Byte* src, Byte* dst, std::size_t pixels)
{
    convertPacked<Uy1vy0, false>(src, dst, pixels);
}

VELMO_CLONES void ycbcrToBgrFast(const Byte* src, Byte* dst, std::size_t pixels)
{
    convertPixels<YcbcrToBgr>(src, dst, pixels);
}

VELMO_CLONES void bgrToYcbcrFast(const Byte* src, Byte* dst, std::size_t pixels)
{
    convertPixels<ToYcbcr<true>>(src, dst, pixels);
}

VELMO_CLONES void rgbToYcbcrFast(const Byte* src, Byte* dst, std::size_t pixels)
{
    convertPixels<ToYcbcr<false>>(src, dst, pixels);
}

VELMO_CLONES void ycbcrToYuv2Groups(const Byte* src, Byte* dst, std::size_t groups)
{
    for (; groups > 0; --groups, src += 3 * group, dst += 2 * group) {
        const shuffle::Bytes a = shuffle::load(src), b = shuffle::load(src + 16), c = shuffle::load(src + 32);
        shuffle::store(
            dst, __builtin_shufflevector(a, b, 5, 3, 1, 0, 11, 9, 7, 6, 17, 15, 13, 12, 23, 21, 19, 18));
        shuffle::store(dst + 16, __builtin_shufflevector(b, c, 13, 11, 9, 8, 19, 17, 15, 14, 25, 23, 21, 20,
                                                         31, 29, 27, 26));
    }
}

VELMO_CLONES void swapRbGroups(const Byte* src, Byte* dst, std::size_t groups)
{
    for (; groups > 0; --groups, src += 3 * group, dst += 3 * group)
        shuffle::swapFirstAndThird(src, dst);
}

/// `src` points at an even pixel that is not the first of the frame.
VELMO_CLONES void lagYuyvGroups(const Byte* src, Byte* dst, std::size_t groups)
{
    for (; groups > 0; --groups, src += 2 * group, dst += 3 * group) {
        const shuffle::Bytes a = shuffle::load(src - 1); // from the V of the pair before on
        const shuffle::Bytes b = shuffle::load(src + 8), c = shuffle::load(src + 16);
        shuffle::store(dst, __builtin_shufflevector(a, a, 1, 0, 2, 3, 4, 2, 5, 4, 6, 7, 8, 6, 9, 8, 10, 11));
        shuffle::store(dst + 16,
                       __builtin_shufflevector(b, b, 3, 1, 4, 3, 5, 6, 7, 5, 8, 7, 9, 10, 11, 9, 12, 11));
        shuffle::store(dst + 32,
                       __builtin_shufflevector(c, c, 5, 6, 7, 5, 8, 7, 9, 10, 11, 9, 12, 11, 13, 14, 15, 13));
    }
}

void ycbcrToYuv2Fast(const Byte* src, Byte* dst, std::size_t pixels)
{
    const std::size_t groups = pixels / group;
    ycbcrToYuv2Groups(src, dst, groups);
    ycbcrToYuv2Plain(src + 3 * group * groups, dst + 2 * group * groups, pixels % group);
}

void swapRbFast(const Byte* src, Byte* dst, std::size_t pixels)
{
    const std::size_t done = pixels / group * group;
    swapRbGroups(src, dst, pixels / group);
    swapRbPlain(src + 3 * done, dst + 3 * done, pixels % group);
}

void lagYuyvFast(const Byte* src, Byte* dst, std::size_t first, std::size_t pixels)
{
    // The first pixel of the frame has no chroma before it, and a group begins with a pair.
    const std::size_t head = std::min(pixels, first == 0 ? std::size_t{2} : first % 2);
    lagYuyvPlain(src, dst, first, head);
    const std::size_t groups = (pixels - head) / group, begin = first + head, end = begin + groups * group;
    lagYuyvGroups(src + 2 * begin, dst + 3 * head, groups);
    lagYuyvPlain(src, dst + 3 * (end - first), end, first + pixels - end);
}

} // namespace

constexpr exp::Forms<ConvertPixels> uyvyToBgr{"UYVY to BGR", uyvyToBgrPlain, uyvyToBgrFast};
constexpr exp::Forms<ConvertPixels> uyvyToRgb{"UYVY to RGB", uyvyToRgbPlain, uyvyToRgbFast};
constexpr exp::Forms<ConvertPixels> uy1vy0ToBgr{"UY1VY0 to BGR", uy1vy0ToBgrPlain, uy1vy0ToBgrFast};
constexpr exp::Forms<ConvertPixels> uy1vy0ToRgb{"UY1VY0 to RGB", uy1vy0ToRgbPlain, uy1vy0ToRgbFast};
constexpr exp::Forms<ConvertPixels> ycbcrToBgr{"YCbCr to BGR", ycbcrToBgrPlain, ycbcrToBgrFast};
constexpr exp::Forms<ConvertPixels> bgrToYcbcr{"BGR to YCbCr", bgrToYcbcrPlain, bgrToYcbcrFast};
constexpr exp::Forms<ConvertPixels> rgbToYcbcr{"RGB to YCbCr", rgbToYcbcrPlain, rgbToYcbcrFast};
constexpr exp::Forms<ConvertPixels> ycbcrToYuv2{"YCbCr to YUV2", ycbcrToYuv2Plain, ycbcrToYuv2Fast};
constexpr exp::Forms<ConvertPixels> swapRb{"swapRB", swapRbPlain, swapRbFast};
constexpr exp::Forms<LagYuyv> lagYuyv{"lag of YUYV", lagYuyvPlain, lagYuyvFast};

} // namespace velmo::vision
