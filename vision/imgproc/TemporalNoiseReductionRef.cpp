#include "vision/imgproc/TemporalNoiseReductionRef.h"

#include <cmath>
#include <cstdint>

namespace velmo::exp::vision {
namespace {

/// The nearest integer, halves away from zero, cut to 16 bits; 0 for what does not fit 32.
template <class T>
T rounded(float value)
{
    if (!(value >= -2147483648.0f && value < 2147483648.0f)) // not a number is neither
        return 0;
    return static_cast<T>(std::llround(value));
}

} // namespace

unsigned short mg_aFeedbackStrengthRef[1025] = {
#include "vision/imgproc/FeedbackStrength.inc"
    0};

template <class T>
TemporalNoiseReductionRef<T>::TemporalNoiseReductionRef(unsigned char controlGain,
                                                        unsigned short feedbackFactor)
    : m_u8ControlGain(controlGain), m_u16FeedbackFactor(feedbackFactor)
{}

template <class T>
TemporalNoiseReductionRef<T>::~TemporalNoiseReductionRef() = default;
template <class T>
TemporalNoiseReductionRef<T>::TemporalNoiseReductionRef(const TemporalNoiseReductionRef& other) = default;
template <class T>
TemporalNoiseReductionRef<T>&
TemporalNoiseReductionRef<T>::operator=(const TemporalNoiseReductionRef& other) = default;
template <class T>
TemporalNoiseReductionRef<T>::TemporalNoiseReductionRef(TemporalNoiseReductionRef&& other) noexcept = default;
template <class T>
TemporalNoiseReductionRef<T>&
TemporalNoiseReductionRef<T>::operator=(TemporalNoiseReductionRef&& other) noexcept = default;

template <class T>
void TemporalNoiseReductionRef<T>::setControlGain(unsigned char controlGain)
{
    m_u8ControlGain = controlGain;
    m_bInitNeeded = true;
}

template <class T>
void TemporalNoiseReductionRef<T>::setFeedbackFactor(unsigned short feedbackFactor)
{
    m_u16FeedbackFactor = feedbackFactor;
    m_bInitNeeded = true;
}

template <class T>
void TemporalNoiseReductionRef<T>::initFilter(cv::Mat_<T>& frame)
{
    m_oStateFrame.release();
    frame.convertTo(m_oStateFrame, CV_32F);
    m_bInitNeeded = false;
}

template <class T>
void TemporalNoiseReductionRef<T>::process(cv::Mat_<T>& frame)
{
    if (m_bInitNeeded || m_oStateFrame.size() != frame.size())
        initFilter(frame);
    for (int r = 0; r < frame.rows; ++r) {
        T* row = frame[r];
        float* state = m_oStateFrame[r];
        for (int c = 0; c < frame.cols; ++c)
            row[c] = filterPixel(row[c], state[c]);
    }
}

template <class T>
T TemporalNoiseReductionRef<T>::filterPixel(T input, float& state) const
{
    const float x = input;
    const float difference = state - x;
    const float scaled = std::fabs(static_cast<float>(m_u8ControlGain) * difference * 0.0625f);
    // Limited before the conversion: only what rounds to an entry below the last is converted at all.
    const std::size_t last = m_nFeedbackTableSize - 1;
    const std::size_t index =
        scaled < static_cast<float>(last) - 0.5f ? static_cast<std::size_t>(std::lround(scaled)) : last;
    const std::uint32_t strength = std::uint32_t{mg_aFeedbackStrengthRef[index]} * m_u16FeedbackFactor;
    const float weight = static_cast<float>(strength) * 0.00048828125f; // 1 / 2048
    state = weight * difference * 0.000030517578125f + x;               // 1 / 32768
    return rounded<T>(state);
}

template class TemporalNoiseReductionRef<short>;
template class TemporalNoiseReductionRef<unsigned short>;

} // namespace velmo::exp::vision
