#pragma once

#include "camera/Frame.h"
#include "camera/measures/Deviation.h"

#include "core/Exception.h"
#include "core/Export.h"

#include <opencv2/core.hpp>

#include <vector>

namespace velmo::camera {

/// What is measured in a recording, in counts. NaN where there are too few frames.
struct NoiseFigures
{
    std::size_t frames = 0;
    cv::Size size;
    double low = 0; ///< least and greatest value
    double high = 0;
    double temporal = 0;      ///< noise of a pixel in time: median over the pixels
    double slow = 0;          ///< the same over the whole recording: slow noise is in it, too
    double unchanged = 0;     ///< share of the pixels whose value never changed
    double unchangedMean = 0; ///< the same of the rounded running mean: more of them would be frozen
    double columnsInTime = 0; ///< the same of the columns' means: stripes that change
    double rowsInTime = 0;
    double columns = 0; ///< column stripes that stay
    double rows = 0;
    double commonColumns = 0; ///< column stripes that the upper and the lower half have in common
    double commonRows = 0;    ///< row stripes, of the left and the right half
    double pattern = 0;       ///< pixel to pixel, what stays; without the stripes
    double drift = 0;         ///< how far the level of the whole frame went, first to last frame
};

/// Measures a stream frame by frame, in memory for a few frames.
///
/// Noise in time is the standard deviation of the difference between consecutive frames, divided by the
/// square root of 2, the change of the whole frame's level taken out: a scene that stands still drops out,
/// and the median over the pixels drops what moves. That sees fast noise; the slow noise of uncooled sensors
/// is in the standard deviation of each pixel over all frames, the level taken out. What stays is measured on
/// the mean of all frames, as 1.4826 times the median absolute deviation from a smoothed version, so that
/// edges count little. Stripes in common are measured frame by frame, those that change and those that stay
/// together, as the root of the halves' mean product: noise of pixels is in one half alone and drops out.
/// Less than zero is none.
class VELMO_API NoiseMeter
{
public:
    /// Of a frame: 4096 x 4096. Each takes some eighty bytes.
    static constexpr int s32MaxPixels = 1 << 24;

    /// @throws Exception  if the size differs from that of the frames before, and for more pixels
    void add(const Frame& frame);

    NoiseFigures figures() const;

private:
    void compare(const cv::Mat_<double>& frame);

    std::size_t m_nFrames = 0;
    double m_dLow = 0;
    double m_dHigh = 0;
    cv::Mat_<double> m_oFirst;
    cv::Mat_<double> m_oPrevious;
    cv::Mat_<double> m_oMean; ///< running
    cv::Mat_<unsigned char> m_oChanged;
    cv::Mat_<unsigned char> m_oMeanChanged;
    double m_dCommonColumns = 0;
    double m_dCommonRows = 0;
    Deviation m_oSteady;
    cv::Mat_<double> m_oSum;
    Deviation m_oPixels;
    Deviation m_oColumns;
    Deviation m_oRows;
    std::vector<double> m_vecLevels;
};

} // namespace velmo::camera
