// Not installed.
#pragma once

#include "core/Clones.h"

#include <cstddef>
#include <cstring>

/// Small operations for loops in 16-bit lanes: those that are to become vectors, and those written in them.

namespace velmo::exp {

/// Vectors of 16-bit values; `bytes` is a power of two.
template <int bytes>
struct Lanes
{
    typedef short Shorts __attribute__((vector_size(bytes)));
    typedef unsigned short Unsigned __attribute__((vector_size(bytes)));
    typedef int Ints __attribute__((vector_size(2 * bytes)));
};
template <int bytes>
using Shorts = typename Lanes<bytes>::Shorts;

/// Of two values, or of two vectors lane by lane.
template <class T>
VELMO_INLINE T lower(T a, T b)
{
    return a < b ? a : b;
}

template <class T>
VELMO_INLINE T higher(T a, T b)
{
    return a < b ? b : a;
}

template <int bytes>
VELMO_INLINE Shorts<bytes> all(int value)
{
    return Shorts<bytes>{} + static_cast<short>(value);
}

/// All bits of the lanes for which it is so. Comparisons of 64 bytes would be taken to pieces.
/// @param a, b  no more than 32767 apart
template <class Vector>
VELMO_INLINE Vector isLess(const Vector& a, const Vector& b)
{
    if constexpr (sizeof(Vector) < 64)
        return a < b;
    else
        return (a - b) >> 15;
}

template <class Vector>
VELMO_INLINE Vector isNot0(const Vector& a)
{
    if constexpr (sizeof(Vector) < 64) {
        return a != 0;
    } else {
        using Unsigned = typename Lanes<64>::Unsigned;
        return -reinterpret_cast<Vector>(lower(reinterpret_cast<Unsigned>(a), Unsigned{} + 1));
    }
}

/// @param mask  all bits of a lane, or none
template <class Vector>
VELMO_INLINE Vector choose(const Vector& mask, const Vector& yes, const Vector& no)
{
    if constexpr (sizeof(Vector) < 64)
        return mask ? yes : no;
    else
        return (yes & mask) | (no & ~mask);
}

/// A line of values, read a vector at a time.
template <int bytes>
struct Line
{
    static constexpr int lanes = bytes / 2;
    const short* values;

    VELMO_INLINE Shorts<bytes> operator[](std::ptrdiff_t c) const
    {
        Shorts<bytes> vector;
        std::memcpy(&vector, values + c, bytes);
        return vector;
    }
};

template <class Vector>
VELMO_INLINE void storeShorts(short* to, Vector values)
{
    std::memcpy(to, &values, sizeof values);
}

/// As many 32-bit values as a vector has lanes, all of which fit 16 bits.
template <int bytes>
VELMO_INLINE Shorts<bytes> narrowed(const int* from)
{
    typename Lanes<bytes>::Ints wide;
    std::memcpy(&wide, from, sizeof wide);
    return __builtin_convertvector(wide, Shorts<bytes>);
}

template <class Vector>
VELMO_INLINE void storeWidened(int* to, Vector values)
{
    // By way of memory: the compiler knows an instruction that widens what it loads.
    constexpr int lanes = sizeof values / sizeof(short);
    short narrow[lanes];
    std::memcpy(narrow, &values, sizeof values);
    VELMO_INDEPENDENT
    for (int n = 0; n < lanes; ++n)
        to[n] = narrow[n];
}

} // namespace velmo::exp
