#include "vision/imgproc/TemporalNoiseReduction.h"

#include "vision/kernels/TemporalNoiseReductionKernel.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <utility>

namespace velmo::exp::vision {

unsigned short mg_aFeedbackStrength[1024] = {
#include "vision/imgproc/FeedbackStrength.inc"
};

template <class T>
TemporalNoiseReduction<T>::TemporalNoiseReduction(unsigned char controlGain, unsigned short feedbackFactor)
    : m_u8ControlGain(controlGain), m_u16FeedbackFactor(feedbackFactor)
{
    feedbackLut();
}

template <class T>
TemporalNoiseReduction<T>::~TemporalNoiseReduction() = default;
template <class T>
TemporalNoiseReduction<T>::TemporalNoiseReduction(const TemporalNoiseReduction& other) = default;
template <class T>
TemporalNoiseReduction<T>&
TemporalNoiseReduction<T>::operator=(const TemporalNoiseReduction& other) = default;
template <class T>
TemporalNoiseReduction<T>::TemporalNoiseReduction(TemporalNoiseReduction&& other) noexcept = default;
template <class T>
TemporalNoiseReduction<T>&
TemporalNoiseReduction<T>::operator=(TemporalNoiseReduction&& other) noexcept = default;

template <class T>
unsigned short* TemporalNoiseReduction<T>::feedbackLut()
{
    if (m_aFeedbackTable.empty()) { // not read yet, or moved away
        m_aFeedbackTable.resize(differenceTableSize);
        unsigned short* const lut = feedbackLut();
        for (std::ptrdiff_t k = 0; k < std::ptrdiff_t{std::size(mg_aFeedbackStrength)}; ++k)
            lut[k] = lut[-k] = mg_aFeedbackStrength[k];
    }
    return m_aFeedbackTable.data() + differenceTableCentre;
}

template <class T>
void TemporalNoiseReduction<T>::setControlGain(unsigned char controlGain)
{
    if (controlGain > u8MaxControlGain) {
        std::cout << "TemporalNoiseReduction Attention: limiting ControlGain to 16!!" << std::endl;
        controlGain = u8MaxControlGain;
    }
    m_u8ControlGain = controlGain;
    m_bInitNeeded = true;
    m_aPullsAnyParam.clear();
}

template <class T>
void TemporalNoiseReduction<T>::setFeedbackFactor(unsigned short feedbackFactor)
{
    if (feedbackFactor > u16MaxFeedbackFactor) {
        std::cout << "TemporalNoiseReduction Attention: limiting m_u16FeedbackFactor to 2048!!" << std::endl;
        feedbackFactor = u16MaxFeedbackFactor;
    }
    m_u16FeedbackFactor = feedbackFactor;
    m_bInitNeeded = true;
    m_aPullsAnyParam.clear();
}

template <class T>
void TemporalNoiseReduction<T>::process(cv::Mat_<T>& frame)
{
    if (m_bInitNeeded || m_oPreviousFrame.size() != frame.size())
        initFilter(frame); // no pixel differs from a state that is the frame itself
    else if (m_u8ControlGain == u8MaxControlGain && m_u16FeedbackFactor == u16MaxFeedbackFactor)
        filterWithMaxParam(frame);
    else
        filterWithAnyParam(frame);
}

template <class T>
void TemporalNoiseReduction<T>::initFilter(cv::Mat_<T>& frame)
{
    m_oPreviousFrame = DeepMat<T>(frame.clone());
    m_bInitNeeded = false;
}

template <class T>
void TemporalNoiseReduction<T>::filterWithAnyParam(cv::Mat_<T>& frame)
{
    if (m_aPullsAnyParam.empty())
        m_aPullsAnyParam = pullsAnyParam({feedbackLut(), m_u8ControlGain, m_u16FeedbackFactor});
    filter(frame, m_aPullsAnyParam);
}

template <class T>
void TemporalNoiseReduction<T>::filterWithMaxParam(cv::Mat_<T>& frame)
{
    if (m_aPullsMaxParam.empty())
        m_aPullsMaxParam = pullsMaxParam({feedbackLut()});
    filter(frame, m_aPullsMaxParam);
}

template <class T>
void TemporalNoiseReduction<T>::filter(cv::Mat_<T>& frame, const Table& pulls)
{
    if (m_oPreviousFrame.size() != frame.size())
        initFilter(frame);
    if (frame.empty())
        return;
    // The state is one run; a frame that is part of a larger one is not.
    const int rows = frame.isContinuous() ? 1 : frame.rows;
    const std::size_t count = frame.total() / static_cast<std::size_t>(rows);
    const Feedback feedback{feedbackLut(), m_u8ControlGain, m_u16FeedbackFactor, &pulls};
    T* state = m_oPreviousFrame[0];
    for (int r = 0; r < rows; ++r, state += count)
        TemporalForms<T>::anyParam(frame[r], state, count, feedback);
}

template class TemporalNoiseReduction<short>;
template class TemporalNoiseReduction<unsigned short>;

} // namespace velmo::exp::vision
