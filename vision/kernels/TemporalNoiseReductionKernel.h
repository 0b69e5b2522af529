// Not installed.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace velmo::exp::vision {

/// Entries of a table that is indexed by a difference of two 16-bit values, -65536..65535, and the place of
/// difference 0 in it.
constexpr std::size_t differenceTableSize = 131072;
constexpr std::ptrdiff_t differenceTableCentre = 65536;

/// No difference reaches the first entry. In a table of pulls it holds the difference from which on, either
/// way, there is no pull.
constexpr std::size_t differenceTableLimit = 0;

/// Weight over the scaled difference k = 0..1023, Q15: the definition of mg_aFeedbackStrength.
constexpr unsigned short feedbackStrength(int k)
{
    // Chosen by eye on real scenes; a formula would not reproduce them.
    constexpr int percent[] = {96, 93, 91, 88, 86, 83, 80, 78, 75, 72, 70, 67, 65, 62, 60, 57, 55, 53,
                               50, 48, 46, 44, 42, 40, 38, 36, 35, 33, 32, 31, 30, 29, 28, 28, 27};
    if (k < 15)
        return 32768;
    if (k < 50)
        return static_cast<unsigned short>(32768 * percent[k - 15] / 100);
    const int constantPull = 39321600 / (100 * k + 1); // 12 / (k + 0.01) in Q15
    return static_cast<unsigned short>(k < 896 ? constantPull : constantPull * (1024 - k) / 128);
}

/// What a pixel moves by when its previous output lies `difference` above its input; the low 16 bits count.
/// Any parameters, halves up. `lut` points at the weight for difference 0.
inline std::uint16_t pullWithAnyParam(const unsigned short* lut, int difference, int gain, int factor)
{
    const int index = (gain * difference) >> 4;
    const std::uint32_t strength = index >= -65535 && index <= 65535 ? lut[index] : 0;
    const auto weight =
        static_cast<std::uint16_t>((strength * static_cast<std::uint32_t>(factor) + 1024) >> 11);
    // Unsigned: beyond the contract's parameters the product wraps at 32 bits. Bits 15 to 30 are kept, so
    // that the kind of shift makes no difference.
    return static_cast<std::uint16_t>((weight * static_cast<std::uint32_t>(difference) + 16384) >> 15);
}

/// The same for gain 16 and factor 2048, rounded down.
inline std::uint16_t pullWithMaxParam(const unsigned short* lut, int difference)
{
    return static_cast<std::uint16_t>((lut[difference] * static_cast<std::uint32_t>(difference)) >> 15);
}

/// The definition of both filters over `count` pixels: `frame` and `state` become the output.
void filterAnyParamPlain(short* frame, short* state, std::size_t count, const unsigned short* lut, int gain,
                         int factor);
void filterAnyParamPlain(unsigned short* frame, unsigned short* state, std::size_t count,
                         const unsigned short* lut, int gain, int factor);
void filterMaxParamPlain(short* frame, short* state, std::size_t count, const unsigned short* lut);
void filterMaxParamPlain(unsigned short* frame, unsigned short* state, std::size_t count,
                         const unsigned short* lut);

/// Fills `pulls` (differenceTableSize entries) with one of the two pulls for every difference.
void buildPullsAnyParam(unsigned short* pulls, const unsigned short* lut, int gain, int factor);
void buildPullsMaxParam(unsigned short* pulls, const unsigned short* lut);

/// The fast form of both: a pull depends on nothing but the difference, so it is looked up whole. `pulls`
/// is a table that one of the two functions above filled.
void filterByPulls(short* frame, short* state, std::size_t count, const unsigned short* pulls);
void filterByPulls(unsigned short* frame, unsigned short* state, std::size_t count,
                   const unsigned short* pulls);

} // namespace velmo::exp::vision
