#pragma once

#include "core/Export.h"
#include "core/memory/DeepMat.h"

#include <opencv2/core.hpp>

#include <type_traits>
#include <vector>

namespace velmo::exp::vision {

/// Weight by which a pixel is held at its previous output, over the scaled difference k = 0..1023 between
/// that output and the new input; Q15, 32768 is 1.0. Full weight up to 14 counts (noise is held), about
/// 12/k beyond 50 (a step is pulled back by some 12 counts), fading to nothing from 896 on.
///
/// Writable, filled before any code of the program runs: a filter reads it once, when it is constructed.
extern VELMO_API unsigned short mg_aFeedbackStrength[1024];

/// Recursive temporal filter of one frame stream: every pixel is blended with the filter's previous output,
/// the less the more the two differ. Static noise is smoothed strongly, what moves passes almost unchanged.
///
/// Holds the previous output. One object per stream, used by one thread at a time. Copies are independent
/// filters that go on from the same state; a moved-from filter is as if newly made with its parameters.
///
/// Memory: two bytes per pixel, 256 KiB for the weights, and from the second frame on some 64 KiB divided by
/// the gain (256 KiB for gain 0) for what differences come to.
///
/// @tparam T  `short` or `unsigned short`
template <class T>
class VELMO_API TemporalNoiseReduction
{
    static_assert(std::is_same_v<T, short> || std::is_same_v<T, unsigned short>,
                  "frames hold short or unsigned short");

public:
    static constexpr unsigned char u8MaxControlGain = 16;
    static constexpr unsigned short u16MaxFeedbackFactor = 2048;

    /// @param controlGain     0..16, in 1/16: scales the difference before the weight is looked up
    /// @param feedbackFactor  0..2048, in 1/2048: scales the weight
    ///
    /// Unlike the setters this does not limit: beyond these ranges a looked-up difference outside the table
    /// has weight 0, arithmetic wraps at 32 bits, and weights and results are cut to 16.
    explicit TemporalNoiseReduction(unsigned char controlGain = u8MaxControlGain,
                                    unsigned short feedbackFactor = u16MaxFeedbackFactor);
    ~TemporalNoiseReduction();

    TemporalNoiseReduction(const TemporalNoiseReduction& other);
    TemporalNoiseReduction& operator=(const TemporalNoiseReduction& other);
    TemporalNoiseReduction(TemporalNoiseReduction&& other) noexcept;
    TemporalNoiseReduction& operator=(TemporalNoiseReduction&& other) noexcept;

    /// Limits to 16 with a warning on standard output. The filter starts anew with the next frame, even if
    /// the value is the old one.
    void setControlGain(unsigned char controlGain);

    /// Limits to 2048 with a warning on standard output. The filter starts anew with the next frame.
    void setFeedbackFactor(unsigned short feedbackFactor);

    /// Filters the next frame of the stream in place: rows x cols raw values, any size, also empty; rows may
    /// be padded. The first frame, the first one after a setter and the first one of another size come out
    /// unchanged.
    void process(cv::Mat_<T>& frame);

    /// Makes `frame` the previous output.
    void initFilter(cv::Mat_<T>& frame);

    /// The recurrence for any gain and factor, rounding halves up; `process` chooses between this and the
    /// next. The state is first built from `frame` if there is none of its size.
    void filterWithAnyParam(cv::Mat_<T>& frame);

    /// The recurrence for gain 16 and factor 2048, whatever the parameters are. It rounds down, so that it
    /// can differ by 1 from the general one.
    void filterWithMaxParam(cv::Mat_<T>& frame);

private:
    using Table = std::vector<unsigned short>;

    /// The entry for difference 0.
    unsigned short* feedbackLut();
    void filter(cv::Mat_<T>& frame, const Table& pulls);

    unsigned char m_u8ControlGain;
    unsigned short m_u16FeedbackFactor;
    Table m_aFeedbackTable;      ///< weight per difference, mirrored; empty after a move
    DeepMat<T> m_oPreviousFrame; ///< empty after a move: the filter starts anew
    bool m_bInitNeeded = true;
    Table m_aPullsAnyParam; ///< what filterWithAnyParam adds per difference; empty until needed
    Table m_aPullsMaxParam; ///< the same for filterWithMaxParam
};

extern template class VELMO_API TemporalNoiseReduction<short>;
extern template class VELMO_API TemporalNoiseReduction<unsigned short>;

} // namespace velmo::exp::vision
