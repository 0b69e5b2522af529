#include "vision/kernels/TemporalNoiseReductionKernel.h"

#include "core/Clones.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace velmo::exp::vision {
namespace {

constexpr int blockSize = 128;

// Unsigned, so that steps between tables may wrap.
using Bytes = unsigned char __attribute__((vector_size(16)));
using SignedBytes = signed char __attribute__((vector_size(16)));

// 16 bytes looked up in a table of 16 at once: one step where the processor can and the compiler knows.
#if defined(__GNUC__) && !defined(__clang__)
VELMO_INLINE Bytes lookUp(Bytes table, Bytes index)
{
    return __builtin_shuffle(table, index);
}

bool looksUpBytesFast()
{
#if defined(__x86_64__) && !defined(__SSSE3__)
    // The clones above the baseline have it; without clones nobody has.
    return VELMO_HAS_CLONES && __builtin_cpu_supports("ssse3") != 0;
#else
    return true;
#endif
}
#else
VELMO_INLINE Bytes lookUp(Bytes table, Bytes index)
{
    Bytes result = {};
    for (int n = 0; n < 16; ++n)
        result[n] = table[index[n] & 15];
    return result;
}

bool looksUpBytesFast()
{
    return false;
}
#endif

/// The pulls for differences of -64 to 63, in eight tables of 16 bytes. A pull never exceeds its difference
/// inside the contract, so that bytes suffice; outside it they may not.
struct CalmPulls
{
    explicit CalmPulls(const unsigned short* zero)
    {
        signed char bytes[128];
        int lost = 0;
        for (int n = 0; n < 128; ++n) {
            const auto pull = static_cast<short>(zero[n - 64]);
            bytes[n] = static_cast<signed char>(pull);
            lost |= bytes[n] ^ pull;
        }
        usable = lost == 0;
        std::memcpy(tables, bytes, sizeof bytes);
        for (int n = 1; n < 8; ++n)
            steps[n] = tables[n] - tables[n - 1];
    }

    Bytes tables[8];
    Bytes steps[8] = {}; ///< how each table differs from the one before
    bool usable;
};

// Index 0 to 127 is the difference plus 64. The first table's pull grows by the step into each further table
// that the index reaches.
template <int first, int last>
VELMO_INLINE void lookUpBlock(const CalmPulls& calm, const signed char* __restrict index,
                              signed char* __restrict pulls)
{
    for (int n = 0; n < blockSize; n += 16) {
        Bytes place, sum;
        std::memcpy(&place, index + n, 16);
        const Bytes low = place & 15;
        sum = lookUp(calm.tables[first], low);
        for (int table = first + 1; table <= last; ++table)
            sum += reinterpret_cast<Bytes>(reinterpret_cast<SignedBytes>(place) >=
                                           static_cast<signed char>(16 * table)) &
                   lookUp(calm.steps[table], low);
        std::memcpy(pulls + n, &sum, 16);
    }
}

template <class T>
VELMO_INLINE bool filterCalmBlock(T* __restrict frame, T* __restrict state, const CalmPulls& calm)
{
    signed char index[blockSize], pulls[blockSize];
    unsigned short spread = 0; // an `or`: below a power of two if all of its parts are
    for (int n = 0; n < blockSize; ++n) {
        const T x = frame[n], p = state[n];
        const T low = x < p ? x : p, high = x < p ? p : x;
        spread = static_cast<unsigned short>(spread | static_cast<unsigned short>(high - low));
        index[n] = static_cast<signed char>(p - x + 64);
    }
    if (spread < 16)
        lookUpBlock<3, 4>(calm, index, pulls);
    else if (spread < 32)
        lookUpBlock<2, 5>(calm, index, pulls);
    else if (spread < 64)
        lookUpBlock<0, 7>(calm, index, pulls);
    else
        return false;
    for (int n = 0; n < blockSize; ++n) {
        const T y = static_cast<T>(frame[n] + pulls[n]);
        frame[n] = y;
        state[n] = y;
    }
    return true;
}

// Three short loops rather than one long one: the first and the last become vectors, and the lookups between
// them, which cannot, run without the arithmetic in their way. All differences beyond the limit have the pull
// of the limit, which is none: what the loop touches of the table stays in the nearest cache.
template <class T>
VELMO_INLINE void filterBlock(T* __restrict frame, T* __restrict state, int count,
                              const unsigned short* __restrict zero, int limit)
{
    int differences[blockSize];
    unsigned short pulls[blockSize];
    for (int n = 0; n < count; ++n) {
        const int d = state[n] - frame[n];
        const int notAbove = d < limit ? d : limit;
        differences[n] = notAbove > -limit ? notAbove : -limit;
    }
#pragma GCC unroll 8
    for (int n = 0; n < count; ++n)
        pulls[n] = zero[differences[n]];
    for (int n = 0; n < count; ++n) {
        const T y = static_cast<T>(frame[n] + pulls[n]);
        frame[n] = y;
        state[n] = y;
    }
}

// Most blocks of most scenes hold nothing but noise: their differences are small enough for byte lookups.
template <class T>
VELMO_INLINE void filterBlocks(T* frame, T* state, std::size_t count,
                               const std::vector<unsigned short>& pulls)
{
    static const bool fastBytes = looksUpBytesFast();
    const int limit = static_cast<int>(pulls.size() / 2);
    const unsigned short* zero = pulls.data() + limit;
    const CalmPulls calm(zero);
    const bool tryCalm = fastBytes && calm.usable;
    std::size_t n = 0;
    for (; n + blockSize <= count; n += blockSize)
        if (!tryCalm || !filterCalmBlock(frame + n, state + n, calm))
            filterBlock(frame + n, state + n, blockSize, zero, limit);
    filterBlock(frame + n, state + n, static_cast<int>(count - n), zero, limit);
}

VELMO_CLONES void filterSigned(short* frame, short* state, std::size_t count,
                               const std::vector<unsigned short>& pulls)
{
    filterBlocks(frame, state, count, pulls);
}

VELMO_CLONES void filterUnsigned(unsigned short* frame, unsigned short* state, std::size_t count,
                                 const std::vector<unsigned short>& pulls)
{
    filterBlocks(frame, state, count, pulls);
}

template <class T>
void filterByPulls(T* frame, T* state, std::size_t count, const Feedback& feedback)
{
    if constexpr (std::is_signed_v<T>)
        filterSigned(frame, state, count, *feedback.pulls);
    else
        filterUnsigned(frame, state, count, *feedback.pulls);
}

template <class Pull>
std::vector<unsigned short> pullsUpTo(int limit, Pull pull)
{
    std::vector<unsigned short> pulls;
    pulls.reserve(2 * static_cast<std::size_t>(limit) + 1);
    for (int d = -limit; d <= limit; ++d)
        pulls.push_back(pull(d));
    return pulls;
}

} // namespace

std::vector<unsigned short> pullsAnyParam(const Feedback& feedback)
{
    // From a scaled difference of 1024 on there is no weight.
    const int limit = feedback.gain == 0 ? 65535 : std::min(16 * 1024 / feedback.gain + 1, 65535);
    return pullsUpTo(
        limit, [&](int d) { return pullWithAnyParam(feedback.lut, d, feedback.gain, feedback.factor); });
}

std::vector<unsigned short> pullsMaxParam(const Feedback& feedback)
{
    return pullsUpTo(1024, [&](int d) { return pullWithMaxParam(feedback.lut, d); });
}

template <class T>
const Forms<typename TemporalForms<T>::Filter> TemporalForms<T>::anyParam{
    "temporal, any parameters", filterAnyParamPlain<T>, filterByPulls<T>};
template <class T>
const Forms<typename TemporalForms<T>::Filter> TemporalForms<T>::maxParam{
    "temporal, maximum", filterMaxParamPlain<T>, filterByPulls<T>};
template struct TemporalForms<short>;
template struct TemporalForms<unsigned short>;

} // namespace velmo::exp::vision
