#pragma once

#include "core/Export.h"

#include <opencv2/core.hpp>

namespace velmo::exp::vision {

/// Edge-preserving 3 x 3 smoothing: every pixel moves toward the mean of its neighbourhood, the less the
/// more that neighbourhood varies. Flat, noisy areas are smoothed, edges stay.
///
/// Keeps a gain and nothing from frame to frame. `process` may run on several threads at once while no
/// thread changes the gain.
class VELMO_API SpatialNoiseRemover
{
public:
    static constexpr int s32MaxGain = 31;

    /// @param gain  0..31, the larger the smoother: a pixel is left alone from a sum of 19 * gain absolute
    ///              deviations in its neighbourhood on, and keeps 13/32 of its own where there are none.
    ///              0 is off (output equals input). Any other value leaves the filter off; there is no error.
    explicit SpatialNoiseRemover(int gain = 0);
    virtual ~SpatialNoiseRemover();

    SpatialNoiseRemover(const SpatialNoiseRemover&) = default;
    SpatialNoiseRemover& operator=(const SpatialNoiseRemover&) = default;

    /// Returns false and keeps the old gain if the new one is outside 0..31.
    bool setGain(int gain);

    /// @param in   rows x cols raw values, any size, also empty; rows may be padded. Beyond its edges the
    ///             outermost pixels repeat.
    /// @param out  becomes rows x cols; reused if it has that size already. May be `in` itself, or
    ///             share pixels with it, at the cost of a copy.
    void process(const cv::Mat_<short>& in, cv::Mat_<short>& out) const;

private:
    int m_s32Gain = 0;
};

} // namespace velmo::exp::vision
