#include "vision/kernels/ColorConvertKernel.h"

#include <vector>

// The conversions as they are defined, pixel by pixel.

namespace velmo::vision {
namespace {

using Byte = unsigned char;

Byte clampTruncate(float value)
{
    if (value < 0)
        return 0;
    return value > 255 ? 255 : static_cast<Byte>(value);
}

Byte clampRound(float value)
{
    if (value < 0)
        return 0;
    return value > 255 ? 255 : static_cast<Byte>(value + 0.5f);
}

template <bool bBlueFirst>
void write(Byte* dst, Byte r, Byte g, Byte b)
{
    dst[0] = bBlueFirst ? b : r;
    dst[1] = g;
    dst[2] = bBlueFirst ? r : b;
}

template <bool bBlueFirst>
void uyvyPixels(const Byte* src, Byte* dst, std::size_t pixels)
{
    for (std::size_t i = 0; i < pixels; i += 2, src += 4, dst += 6) {
        const auto d0 = static_cast<float>(src[0] - 128), d2 = static_cast<float>(src[2] - 128);
        for (int k = 0; k < 2; ++k) {
            const float y = static_cast<float>(src[1 + 2 * k] - 16) * 1.164f;
            write<bBlueFirst>(dst + 3 * k, clampTruncate(y + 1.596f * d0),
                              clampTruncate(y - 0.813f * d0 - 0.391f * d2), clampTruncate(y + 2.018f * d2));
        }
    }
}

template <bool bBlueFirst>
void uy1vy0Pixels(const Byte* src, Byte* dst, std::size_t pixels)
{
    for (std::size_t i = 0; i < pixels; i += 2, src += 4, dst += 6) {
        const auto d0 = static_cast<float>(src[0] - 128), d2 = static_cast<float>(src[2] - 128);
        const float y0 = static_cast<float>(src[3] - 16) * 1.1644f;
        const float y1 = static_cast<float>(src[1] - 16) * 1.1644f;
        write<bBlueFirst>(dst, clampRound(y0 + 1.596f * d0), clampRound(y0 - 0.813f * d0 - 0.3918f * d2),
                          clampRound(y0 + 2.018f * d2));
        write<bBlueFirst>(dst + 3, clampRound(y1 + 1.596f * d0), clampRound(y1 - 0.813f * d0 - 0.3918f * d2),
                          clampRound(y1 + 2.0172f * d2));
    }
}

template <bool bBlueFirst>
void toYcbcrPixels(const Byte* src, Byte* dst, std::size_t pixels)
{
    std::vector<float> table(encodeTables * 256);
    fillEncodeTables(table.data());
    const auto times = [&table](Byte component, EncodeFactor k) {
        return table[std::size_t{256} * k + component];
    };
    for (std::size_t i = 0; i < pixels; ++i, src += 3, dst += 3) {
        const Byte r = src[bBlueFirst ? 2 : 0], g = src[1], b = src[bBlueFirst ? 0 : 2];
        dst[0] = static_cast<Byte>(((times(g, yFromG) + times(r, yFromR)) + times(b, yFromB)) + 0.499f);
        dst[1] =
            static_cast<Byte>(((-times(r, cbFromR) - times(g, cbFromG)) + times(b, half) + 128) + 0.499f);
        dst[2] = static_cast<Byte>(((times(r, half) - times(g, crFromG)) - times(b, crFromB) + 128) + 0.499f);
    }
}

} // namespace

void uyvyToBgrPlain(const Byte* src, Byte* dst, std::size_t pixels)
{
    uyvyPixels<true>(src, dst, pixels);
}

void uyvyToRgbPlain(const Byte* src, Byte* dst, std::size_t pixels)
{
    uyvyPixels<false>(src, dst, pixels);
}

void uy1vy0ToBgrPlain(const Byte* src, Byte* dst, std::size_t pixels)
{
    uy1vy0Pixels<true>(src, dst, pixels);
}

void uy1vy0ToRgbPlain(const Byte* src, Byte* dst, std::size_t pixels)
{
    uy1vy0Pixels<false>(src, dst, pixels);
}

void ycbcrToBgrPlain(const Byte* src, Byte* dst, std::size_t pixels)
{
    for (std::size_t i = 0; i < pixels; ++i, src += 3, dst += 3) {
        const float y = 1.1644f * static_cast<float>(src[0] - 16);
        const auto cb = static_cast<float>(src[1] - 128), cr = static_cast<float>(src[2] - 128);
        write<true>(dst, clampRound(1.596f * cr + y), clampRound(y - 0.813f * cr - 0.3918f * cb),
                    clampRound(2.018f * cb + y));
    }
}

void bgrToYcbcrPlain(const Byte* src, Byte* dst, std::size_t pixels)
{
    toYcbcrPixels<true>(src, dst, pixels);
}

void rgbToYcbcrPlain(const Byte* src, Byte* dst, std::size_t pixels)
{
    toYcbcrPixels<false>(src, dst, pixels);
}

void ycbcrToYuv2Plain(const Byte* src, Byte* dst, std::size_t pixels)
{
    for (std::size_t pair = 0; pair < pixels / 2; ++pair, src += 6, dst += 4) {
        const Byte y0 = src[0], cb0 = src[1], y1 = src[3], cr1 = src[5];
        dst[0] = cr1;
        dst[1] = y1;
        dst[2] = cb0;
        dst[3] = y0;
    }
}

void swapRbPlain(const Byte* src, Byte* dst, std::size_t pixels)
{
    for (std::size_t i = 0; i < pixels; ++i, src += 3, dst += 3) {
        const Byte first = src[0], second = src[1], third = src[2];
        dst[0] = third;
        dst[1] = second;
        dst[2] = first;
    }
}

void lagYuyvPlain(const Byte* src, Byte* dst, std::size_t first, std::size_t pixels)
{
    Byte u = 0, v = 0;
    if (first > 0)
        (first % 2 == 0 ? v : u) = src[2 * first - 1];
    for (std::size_t i = first; i < first + pixels; ++i, dst += 3) {
        (i % 2 == 0 ? u : v) = src[2 * i + 1];
        dst[0] = src[2 * i];
        dst[1] = v;
        dst[2] = u;
    }
}

} // namespace velmo::vision
