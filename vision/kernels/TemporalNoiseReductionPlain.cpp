#include "vision/kernels/TemporalNoiseReductionKernel.h"

namespace velmo::exp::vision {
namespace {

template <class T>
void filterAnyParam(T* frame, T* state, std::size_t count, const unsigned short* lut, int gain, int factor)
{
    for (std::size_t n = 0; n < count; ++n) {
        const int x = frame[n];
        const int difference = state[n] - x;
        frame[n] = state[n] = static_cast<T>(x + pullWithAnyParam(lut, difference, gain, factor));
    }
}

template <class T>
void filterMaxParam(T* frame, T* state, std::size_t count, const unsigned short* lut)
{
    for (std::size_t n = 0; n < count; ++n) {
        const int x = frame[n];
        const int difference = state[n] - x;
        frame[n] = state[n] = static_cast<T>(x + pullWithMaxParam(lut, difference));
    }
}

} // namespace

void filterAnyParamPlain(short* frame, short* state, std::size_t count, const unsigned short* lut, int gain,
                         int factor)
{
    filterAnyParam(frame, state, count, lut, gain, factor);
}

void filterAnyParamPlain(unsigned short* frame, unsigned short* state, std::size_t count,
                         const unsigned short* lut, int gain, int factor)
{
    filterAnyParam(frame, state, count, lut, gain, factor);
}

void filterMaxParamPlain(short* frame, short* state, std::size_t count, const unsigned short* lut)
{
    filterMaxParam(frame, state, count, lut);
}

void filterMaxParamPlain(unsigned short* frame, unsigned short* state, std::size_t count,
                         const unsigned short* lut)
{
    filterMaxParam(frame, state, count, lut);
}

} // namespace velmo::exp::vision
