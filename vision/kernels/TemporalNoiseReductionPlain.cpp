#include "vision/kernels/TemporalNoiseReductionKernel.h"

namespace velmo::exp::vision {

template <class T>
void filterAnyParamPlain(T* frame, T* state, std::size_t count, const Feedback& feedback)
{
    const unsigned short* lut = feedback.lut;
    const int gain = feedback.gain, factor = feedback.factor;
    for (std::size_t n = 0; n < count; ++n) {
        const int x = frame[n];
        const int difference = state[n] - x;
        frame[n] = state[n] = static_cast<T>(x + pullWithAnyParam(lut, difference, gain, factor));
    }
}

template <class T>
void filterMaxParamPlain(T* frame, T* state, std::size_t count, const Feedback& feedback)
{
    const unsigned short* lut = feedback.lut;
    for (std::size_t n = 0; n < count; ++n) {
        const int x = frame[n];
        const int difference = state[n] - x;
        frame[n] = state[n] = static_cast<T>(x + pullWithMaxParam(lut, difference));
    }
}

template void filterAnyParamPlain(short*, short*, std::size_t, const Feedback&);
template void filterAnyParamPlain(unsigned short*, unsigned short*, std::size_t, const Feedback&);
template void filterMaxParamPlain(short*, short*, std::size_t, const Feedback&);
template void filterMaxParamPlain(unsigned short*, unsigned short*, std::size_t, const Feedback&);

} // namespace velmo::exp::vision
