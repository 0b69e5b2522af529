#pragma once

#include <cstring>

/// Constant byte shuffles for pixels of three bytes: each is one instruction from x86-64-v2 on. The functions
/// are inlined, so that a loop built with VELMO_CLONES takes them along.
namespace velmo::exp::shuffle {

using Bytes = unsigned char __attribute__((vector_size(16)));

inline __attribute__((always_inline)) Bytes load(const void* from)
{
    Bytes bytes;
    std::memcpy(&bytes, from, sizeof bytes);
    return bytes;
}

inline __attribute__((always_inline)) void store(void* to, Bytes bytes)
{
    std::memcpy(to, &bytes, sizeof bytes);
}

/// Sixteen pixels of four bytes (a to d) become sixteen of three: 48 bytes, exactly.
inline __attribute__((always_inline)) void storeWithoutFourth(unsigned char* to, Bytes a, Bytes b, Bytes c,
                                                              Bytes d)
{
    store(to, __builtin_shufflevector(a, b, 0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 16, 17, 18, 20));
    store(to + 16, __builtin_shufflevector(b, c, 5, 6, 8, 9, 10, 12, 13, 14, 16, 17, 18, 20, 21, 22, 24, 25));
    store(to + 32,
          __builtin_shufflevector(c, d, 10, 12, 13, 14, 16, 17, 18, 20, 21, 22, 24, 25, 26, 28, 29, 30));
}

} // namespace velmo::exp::shuffle
