#include "vision/imgproc/TemporalNoiseReductionKernel.h"

#include "core/Clones.h"

#include <algorithm>

namespace velmo::exp::vision {
namespace {

// Three short loops over a block rather than one long one: the first and the last become vectors, and the
// lookups between them, which cannot, run without the arithmetic in their way.
template <class T>
inline __attribute__((always_inline)) void filterBlock(T* __restrict frame, T* __restrict state, int count,
                                                       const unsigned short* __restrict zero)
{
    constexpr int block = 256;
    int differences[block];
    unsigned short pulls[block];
    for (int n = 0; n < count; ++n)
        differences[n] = state[n] - frame[n];
    for (int n = 0; n < count; ++n)
        pulls[n] = zero[differences[n]];
    for (int n = 0; n < count; ++n) {
        const T y = static_cast<T>(frame[n] + pulls[n]);
        frame[n] = y;
        state[n] = y;
    }
}

template <class T>
inline __attribute__((always_inline)) void filterBlocks(T* frame, T* state, std::size_t count,
                                                        const unsigned short* pulls)
{
    const unsigned short* zero = pulls + differenceTableCentre;
    std::size_t n = 0;
    for (; n + 256 <= count; n += 256)
        filterBlock(frame + n, state + n, 256, zero);
    filterBlock(frame + n, state + n, static_cast<int>(count - n), zero);
}

VELMO_CLONES void filterSigned(short* frame, short* state, std::size_t count, const unsigned short* pulls)
{
    filterBlocks(frame, state, count, pulls);
}

VELMO_CLONES void filterUnsigned(unsigned short* frame, unsigned short* state, std::size_t count,
                                 const unsigned short* pulls)
{
    filterBlocks(frame, state, count, pulls);
}

} // namespace

void buildPullsAnyParam(unsigned short* pulls, const unsigned short* lut, int gain, int factor)
{
    pulls[0] = 0;
    for (int d = -65535; d <= 65535; ++d)
        pulls[d + differenceTableCentre] = pullWithAnyParam(lut, d, gain, factor);
}

void buildPullsMaxParam(unsigned short* pulls, const unsigned short* lut)
{
    pulls[0] = 0;
    for (int d = -65535; d <= 65535; ++d)
        pulls[d + differenceTableCentre] = pullWithMaxParam(lut, d);
}

void filterByPulls(short* frame, short* state, std::size_t count, const unsigned short* pulls)
{
    filterSigned(frame, state, count, pulls);
}

void filterByPulls(unsigned short* frame, unsigned short* state, std::size_t count,
                   const unsigned short* pulls)
{
    filterUnsigned(frame, state, count, pulls);
}

} // namespace velmo::exp::vision
