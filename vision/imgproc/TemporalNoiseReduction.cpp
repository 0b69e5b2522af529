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
    buildFeedbackTable();
}

template <class T>
TemporalNoiseReduction<T>::~TemporalNoiseReduction() = default;

template <class T>
TemporalNoiseReduction<T>::TemporalNoiseReduction(const TemporalNoiseReduction& other)
    : m_u8ControlGain(other.m_u8ControlGain), m_u16FeedbackFactor(other.m_u16FeedbackFactor),
      m_oPreviousFrame(other.m_oPreviousFrame.clone()), m_bInitNeeded(other.m_bInitNeeded),
      m_aPullsAnyParam(other.m_aPullsAnyParam), m_aPullsMaxParam(other.m_aPullsMaxParam)
{
    buildFeedbackTable();
    // The weights may have been edited since the other filter read them.
    if (other.m_pu16FeedbackTable)
        std::copy_n(other.m_pu16FeedbackTable.get(), differenceTableSize, m_pu16FeedbackTable.get());
}

template <class T>
TemporalNoiseReduction<T>& TemporalNoiseReduction<T>::operator=(const TemporalNoiseReduction& other)
{
    if (this != &other)
        *this = TemporalNoiseReduction(other);
    return *this;
}

template <class T>
TemporalNoiseReduction<T>::TemporalNoiseReduction(TemporalNoiseReduction&& other) noexcept
    : m_u8ControlGain(other.m_u8ControlGain), m_u16FeedbackFactor(other.m_u16FeedbackFactor)
{
    *this = std::move(other);
}

template <class T>
TemporalNoiseReduction<T>& TemporalNoiseReduction<T>::operator=(TemporalNoiseReduction&& other) noexcept
{
    if (this == &other)
        return *this;
    m_u8ControlGain = other.m_u8ControlGain;
    m_u16FeedbackFactor = other.m_u16FeedbackFactor;
    m_pu16FeedbackTable = std::exchange(other.m_pu16FeedbackTable, nullptr);
    m_pu16FeedbackLut = std::exchange(other.m_pu16FeedbackLut, nullptr);
    m_oPreviousFrame = std::exchange(other.m_oPreviousFrame, cv::Mat_<T>());
    m_bInitNeeded = std::exchange(other.m_bInitNeeded, true);
    m_aPullsAnyParam = std::exchange(other.m_aPullsAnyParam, Table());
    m_aPullsMaxParam = std::exchange(other.m_aPullsMaxParam, Table());
    return *this;
}

template <class T>
void TemporalNoiseReduction<T>::buildFeedbackTable()
{
    m_pu16FeedbackTable = std::make_unique<unsigned short[]>(differenceTableSize);
    m_pu16FeedbackLut = m_pu16FeedbackTable.get() + differenceTableCentre;
    for (std::ptrdiff_t k = 0; k < std::ptrdiff_t{std::size(mg_aFeedbackStrength)}; ++k)
        m_pu16FeedbackLut[k] = m_pu16FeedbackLut[-k] = mg_aFeedbackStrength[k];
}

template <class T>
const unsigned short* TemporalNoiseReduction<T>::feedbackLut()
{
    if (!m_pu16FeedbackTable) // moved away
        buildFeedbackTable();
    return m_pu16FeedbackLut;
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
    m_oPreviousFrame = frame.clone();
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
    const Feedback feedback{m_pu16FeedbackLut, m_u8ControlGain, m_u16FeedbackFactor, &pulls};
    T* state = m_oPreviousFrame[0];
    for (int r = 0; r < rows; ++r, state += count)
        TemporalForms<T>::anyParam(frame[r], state, count, feedback);
}

template class TemporalNoiseReduction<short>;
template class TemporalNoiseReduction<unsigned short>;

} // namespace velmo::exp::vision
