// Not installed.
#pragma once

#include "core/Clones.h"

#include <cstring>

/// Constant byte shuffles for pixels of three bytes: each is one instruction from x86-64-v2 on. The functions
/// are inlined, so that a loop built with VELMO_CLONES takes them along.
namespace velmo::exp::shuffle {

/// Whether a plain loop over pixels of three bytes has an instruction that takes them apart and one that puts
/// them together.
#if defined(__aarch64__) || defined(__ARM_NEON)
constexpr bool bTriples = true;
#else
constexpr bool bTriples = false;
#endif

using Bytes = unsigned char __attribute__((vector_size(16)));

VELMO_INLINE Bytes load(const void* from)
{
    Bytes bytes;
    std::memcpy(&bytes, from, sizeof bytes);
    return bytes;
}

VELMO_INLINE void store(void* to, Bytes bytes)
{
    std::memcpy(to, &bytes, sizeof bytes);
}

/// Sixteen pixels of four bytes (a to d) become sixteen of three: 48 bytes, exactly.
VELMO_INLINE void storeWithoutFourth(unsigned char* to, Bytes a, Bytes b, Bytes c, Bytes d)
{
    // Twelve bytes of each; what follows them is overwritten by the next store. The last one begins within
    // the third twelve, so that it ends where it has to.
    store(to, __builtin_shufflevector(a, a, 0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 15, 15, 15, 15));
    store(to + 12, __builtin_shufflevector(b, b, 0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 15, 15, 15, 15));
    store(to + 24, __builtin_shufflevector(c, c, 0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 15, 15, 15, 15));
    store(to + 32,
          __builtin_shufflevector(c, d, 10, 12, 13, 14, 16, 17, 18, 20, 21, 22, 24, 25, 26, 28, 29, 30));
}

/// The 32-bit words of `a` and `b` in turns, a first: those of the lower halves.
VELMO_INLINE Bytes alternateLow(Bytes a, Bytes b)
{
    return __builtin_shufflevector(a, b, 0, 1, 2, 3, 16, 17, 18, 19, 4, 5, 6, 7, 20, 21, 22, 23);
}

/// Those of the upper halves.
VELMO_INLINE Bytes alternateHigh(Bytes a, Bytes b)
{
    return __builtin_shufflevector(a, b, 8, 9, 10, 11, 24, 25, 26, 27, 12, 13, 14, 15, 28, 29, 30, 31);
}

/// The way back: sixteen pixels of three bytes, exactly 48, become sixteen of four in `to`. The fourth byte
/// is any.
VELMO_INLINE void loadWithFourth(const unsigned char* from, void* to)
{
    auto* bytes = static_cast<unsigned char*>(to);
    const Bytes a = load(from), b = load(from + 16), c = load(from + 32);
    store(bytes, __builtin_shufflevector(a, a, 0, 1, 2, 2, 3, 4, 5, 5, 6, 7, 8, 8, 9, 10, 11, 11));
    store(bytes + 16,
          __builtin_shufflevector(a, b, 12, 13, 14, 14, 15, 16, 17, 17, 18, 19, 20, 20, 21, 22, 23, 23));
    store(bytes + 32,
          __builtin_shufflevector(b, c, 8, 9, 10, 10, 11, 12, 13, 13, 14, 15, 16, 16, 17, 18, 19, 19));
    store(bytes + 48, __builtin_shufflevector(c, c, 4, 5, 6, 6, 7, 8, 9, 9, 10, 11, 12, 12, 13, 14, 15, 15));
}

/// Exchanges the first and the third byte of sixteen pixels of three: 48 bytes, exactly.
VELMO_INLINE void swapFirstAndThird(const unsigned char* from, unsigned char* to)
{
    const Bytes a = load(from), b = load(from + 16), c = load(from + 32);
    // The pixels at the seams lie in two vectors, the middle vector has one at either end.
    const Bytes left =
        __builtin_shufflevector(a, b, 16, 15, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31);
    store(to, __builtin_shufflevector(a, b, 2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, 17));
    store(to + 16, __builtin_shufflevector(left, c, 0, 1, 4, 3, 2, 7, 6, 5, 10, 9, 8, 13, 12, 11, 16, 15));
    store(to + 32,
          __builtin_shufflevector(b, c, 14, 19, 18, 17, 22, 21, 20, 25, 24, 23, 28, 27, 26, 31, 30, 29));
}

} // namespace velmo::exp::shuffle
