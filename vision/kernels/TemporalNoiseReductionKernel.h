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
