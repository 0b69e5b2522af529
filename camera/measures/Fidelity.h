#pragma once

#include "camera/Frame.h"

#include "core/Export.h"

#include <opencv2/core.hpp>

#include <cstddef>
#include <vector>

namespace velmo::camera {

/// What filters do to what should stay as it is. NaN where the recording has nothing to judge it by.
struct FidelityFigures
{
    double edges = 0;      ///< how steep the steepest edges still are; 1 is unchanged
    double ghosting = 0;   ///< how far the picture lags behind what moves, in frames; 0 is not at all
    double bias = 0;       ///< how far the mean of all frames went, in counts
    double biasOfMost = 0; ///< how far, at most, the means of 95 % of the frames went
};

/// Compares a stream frame by frame with the same stream after filters that keep its size.
class VELMO_API FidelityMeter
{
public:
    void add(const Frame& before, const Frame& after);

    /// Edges: where the mean of the unfiltered frames is steepest (one pixel in fifty), the mean of the
    /// filtered ones has what share of that slope, along it: noise has no direction and adds nothing.
    /// Ghosting: where a pixel changes from frame to frame by far more than noise, the filtered one misses
    /// what share of that change.
    FidelityFigures figures() const;

private:
    std::size_t m_nFrames = 0;
    cv::Mat_<float> m_oPrevious;
    cv::Mat_<double> m_oSumBefore;
    cv::Mat_<double> m_oSumAfter;
    std::vector<double> m_vecBiases; ///< of the frames
    double m_dMissed = 0;
    double m_dChanged = 0;
};

} // namespace velmo::camera
