// Not installed.
#pragma once

#include "core/Forms.h"

#include <cstddef>

namespace velmo::vision {

/// A conversion of a run of pixels without padding, an even number of them where they come in pairs. Not a
/// byte beyond it is read or written. Source and destination may be the same buffer where the pixels of the
/// destination are not larger; otherwise they do not overlap.
using ConvertPixels = void(const unsigned char* src, unsigned char* dst, std::size_t pixels);
ConvertPixels uyvyToBgrPlain, uyvyToRgbPlain, uy1vy0ToBgrPlain, uy1vy0ToRgbPlain, ycbcrToBgrPlain,
    bgrToYcbcrPlain, rgbToYcbcrPlain, ycbcrToYuv2Plain, swapRbPlain;
extern const exp::Forms<ConvertPixels> uyvyToBgr, uyvyToRgb, uy1vy0ToBgr, uy1vy0ToRgb, ycbcrToBgr, bgrToYcbcr,
    rgbToYcbcr, ycbcrToYuv2, swapRb;

/// YUYV to Y, Cr, Cb with the lag of chroma, for the pixels from `first` on.
/// @param src  the whole frame: a pixel needs bytes of the one before
/// @param dst  where pixel `first` goes to
using LagYuyv = void(const unsigned char* src, unsigned char* dst, std::size_t first, std::size_t pixels);
LagYuyv lagYuyvPlain;
extern const exp::Forms<LagYuyv> lagYuyv;

/// What the components of a colour image are made of. They differ from layout to layout for good: each is
/// what the device at the other end was tuned with.
struct LumaChroma
{
    float y, rFromCr, gFromCr, gFromCb, bFromCb;
    float bFromCbSecond; ///< of the second pixel of a pair
    float rounding;      ///< added before the cut to a whole number
};

constexpr LumaChroma uyvyFactors = {1.164f, 1.596f, 0.813f, 0.391f, 2.018f, 2.018f, 0.0f};
constexpr LumaChroma uy1vy0Factors = {1.1644f, 1.596f, 0.813f, 0.3918f, 2.018f, 2.0172f, 0.5f};
constexpr LumaChroma ycbcrFactors = {1.1644f, 1.596f, 0.813f, 0.3918f, 2.018f, 2.018f, 0.5f};

/// Factors of the conversion to Y, Cb, Cr, in the order of the tables that callers can have.
enum EncodeFactor
{
    yFromR,
    yFromG,
    yFromB,
    cbFromR,
    cbFromG,
    half,
    crFromG,
    crFromB
};
constexpr float encodeFactors[] = {0.299f, 0.587f, 0.114f, 0.16874f, 0.33126f, 0.5f, 0.41869f, 0.081312f};
constexpr std::size_t encodeTables = sizeof encodeFactors / sizeof encodeFactors[0];

/// Of each factor its product with every byte: what the definition looks up.
inline void fillEncodeTables(float* table)
{
    for (std::size_t k = 0; k < encodeTables; ++k)
        for (std::size_t i = 0; i < 256; ++i)
            table[256 * k + i] = static_cast<float>(i) * encodeFactors[k];
}

} // namespace velmo::vision
