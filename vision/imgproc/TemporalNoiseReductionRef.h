#pragma once

#include "core/Export.h"
#include "core/memory/DeepMat.h"

#include <opencv2/core.hpp>

#include <cstddef>
#include <iterator>
#include <type_traits>

namespace velmo::exp::vision {

/// The weights of mg_aFeedbackStrength and one more of 0, for whatever lies beyond. Writable; read with every
/// frame.
extern VELMO_API unsigned short mg_aFeedbackStrengthRef[1025];

/// The temporal filter in floating point: the recurrence and the weight curve of TemporalNoiseReduction, with
/// the state kept unrounded. Slow; what the fast filter is compared with, and for still pictures where a
/// pixel is to converge fully instead of stopping a count short.
///
/// Holds the previous output. One object per stream, used by one thread at a time. Copies are independent
/// filters that go on from the same state; a moved-from filter is as if newly made with its parameters.
///
/// @tparam T  `short` or `unsigned short`
template <class T>
class VELMO_API TemporalNoiseReductionRef
{
    static_assert(std::is_same_v<T, short> || std::is_same_v<T, unsigned short>,
                  "frames hold short or unsigned short");

public:
    /// @param controlGain     in 1/16: scales the difference before the weight is looked up; any value
    /// @param feedbackFactor  in 1/2048: scales the weight; above 2048 the recurrence may grow without bound:
    ///                        a difference that is not a number has weight 0, and an output that does not fit
    ///                        32 bits becomes 0
    explicit TemporalNoiseReductionRef(unsigned char controlGain = 16, unsigned short feedbackFactor = 2048);
    ~TemporalNoiseReductionRef();

    TemporalNoiseReductionRef(const TemporalNoiseReductionRef& other);
    TemporalNoiseReductionRef& operator=(const TemporalNoiseReductionRef& other);
    TemporalNoiseReductionRef(TemporalNoiseReductionRef&& other) noexcept;
    TemporalNoiseReductionRef& operator=(TemporalNoiseReductionRef&& other) noexcept;

    /// Neither limits nor warns. The filter starts anew with the next frame, even if the value is the old
    /// one.
    void setControlGain(unsigned char controlGain);
    void setFeedbackFactor(unsigned short feedbackFactor);

    /// Makes `frame` the previous output.
    void initFilter(cv::Mat_<T>& frame);

    /// Filters the next frame of the stream in place: rows x cols raw values, any size, also empty; rows may
    /// be padded. The first frame, the first one after a setter and the first one of another size come out
    /// unchanged.
    void process(cv::Mat_<T>& frame);

private:
    T filterPixel(T input, float& state) const;

    unsigned char m_u8ControlGain;
    unsigned short m_u16FeedbackFactor;
    DeepMat<float> m_oStateFrame; ///< empty after a move: the filter starts anew
    bool m_bInitNeeded = true;
    std::size_t m_nFeedbackTableSize = std::size(mg_aFeedbackStrengthRef);
};

extern template class VELMO_API TemporalNoiseReductionRef<short>;
extern template class VELMO_API TemporalNoiseReductionRef<unsigned short>;

} // namespace velmo::exp::vision
