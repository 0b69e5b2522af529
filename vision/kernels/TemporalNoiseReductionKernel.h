// Not installed.
#pragma once

#include "core/Forms.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace velmo::exp::vision {

/// Entries of a table that is indexed by a difference of two 16-bit values, -65536..65535, and the place of
/// difference 0 in it.
constexpr std::size_t differenceTableSize = 131072;
constexpr std::ptrdiff_t differenceTableCentre = 65536;

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

/// What a filter weighs differences with.
struct Feedback
{
    const unsigned short* lut; ///< points at the weight for difference 0; none beyond -1023..1023
    int gain = 16;
    int factor = 2048;
    const std::vector<unsigned short>* pulls = nullptr; ///< for the fast forms: made by the functions below
};

/// The pulls for all differences from -n to n, of which those beyond have none. n is 64 at least, 65535 at
/// most.
std::vector<unsigned short> pullsAnyParam(const Feedback& feedback);
std::vector<unsigned short> pullsMaxParam(const Feedback& feedback);

/// The two filters over `count` pixels: `frame` and `state` become the output. A pull depends on nothing but
/// the difference, so the fast form of both looks it up whole.
template <class T>
struct TemporalForms
{
    using Filter = void(T* frame, T* state, std::size_t count, const Feedback& feedback);
    static const Forms<Filter> anyParam, maxParam;
};
extern template struct TemporalForms<short>;
extern template struct TemporalForms<unsigned short>;

template <class T>
void filterAnyParamPlain(T* frame, T* state, std::size_t count, const Feedback& feedback);
template <class T>
void filterMaxParamPlain(T* frame, T* state, std::size_t count, const Feedback& feedback);

} // namespace velmo::exp::vision
