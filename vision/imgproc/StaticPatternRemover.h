#pragma once

#include "core/Exception.h"
#include "core/Export.h"
#include "core/memory/DeepMat.h"

#include <opencv2/core.hpp>

#include <vector>

namespace velmo::exp::vision {

/// Removes what does not move with the scene: an offset per column (stripes) and one per pixel. Both are
/// learnt slowly from frame to frame, where the scene around a pixel is calm, and subtracted.
///
/// Holds what it has learnt. One object per stream, used by one thread at a time. Copies are independent and
/// go on from the same state; a moved-from remover has its parameters and has learnt nothing.
class VELMO_API StaticPatternRemover
{
public:
    static constexpr int s32MaxThreshold = 100;
    static constexpr int s32MaxLimit = 31;

    /// @param threshold   0..100 counts: an offset is learnt where the deviations around a pixel are smaller;
    ///                    0 learns nothing
    /// @param lineLimit   0..31 counts: what a column's offset is limited to
    /// @param frameLimit  0..31 counts: what a pixel's offset is limited to
    ///
    /// A value outside its range leaves that parameter at 0; there is no error.
    explicit StaticPatternRemover(int threshold = 30, int lineLimit = 31, int frameLimit = 31);
    ~StaticPatternRemover();

    StaticPatternRemover(const StaticPatternRemover& other);
    StaticPatternRemover& operator=(const StaticPatternRemover& other);
    StaticPatternRemover(StaticPatternRemover&& other) noexcept;
    StaticPatternRemover& operator=(StaticPatternRemover&& other) noexcept;

    /// Each returns false and keeps the old value if the new one is outside its range. What was learnt stays.
    bool setThreshold(int threshold);
    bool setLineLimit(int lineLimit);
    bool setFrameLimit(int frameLimit);

    /// Forgets what was learnt and makes room for frames of this size.
    /// @throws Exception  if width or height is negative
    void init(const cv::Size_<int>& size);

    /// Calls `init` if frames of this size are not what is being learnt from.
    void validateInput(const cv::Size_<int>& size);

    /// Corrects one frame with what was learnt from the frames before it and learns from it. Rows of a frame
    /// share the column offsets, so that rows further down see what those above them have just taught.
    ///
    /// @param in   rows x cols raw values, any size, also empty; rows may be padded. Beyond its edges the
    ///             outermost pixels repeat. A saturated pixel (32767) stays saturated.
    /// @param out  becomes rows x cols; reused if it has that size already. May be `in` itself, or
    ///             share pixels with it, at the cost of a copy.
    void process(const cv::Mat_<short>& in, cv::Mat_<short>& out);

private:
    DeepMat<int> m_oColumnState; ///< 1 x cols, 8192 per count
    DeepMat<int> m_oPixelState;  ///< rows x cols, 256 per count
    int m_s32Threshold = 0;
    int m_s32ThresholdLow = 0;
    int m_s32LineLimit = 0;
    int m_s32FrameLimit = 0;
    int m_s32MinStart = 2147483647;      ///< where every search for a minimum starts
    int m_s32MaxStart = -2147483647 - 1; ///< the same for a maximum
    std::vector<short> m_vecScratch;     ///< room for some rows; nothing is kept in it from frame to frame
};

} // namespace velmo::exp::vision
