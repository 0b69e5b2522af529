// Not installed.
#pragma once

#include "camera/Frame.h"
#include "camera/LastFrame.h"
#include "camera/pixels/PixelStatisticsKernel.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace velmo::camera {

/// What one pass over a recording keeps of each pixel: 48 bytes, whatever the length.
struct PixelStatistics
{
    /// @param shutter  what a closed shutter looks like, or nothing; it is taken off the frames
    explicit PixelStatistics(Frame shutter = {}) : m_oShutter(std::move(shutter)) {}

    /// A repeated frame is left out.
    /// @throws Exception  for a frame of fewer than 5 x 5 pixels, and for one of another size than the
    ///                    shutter or the frames before
    void add(const Frame& frame);

    /// The mean of the frames less the shutter.
    cv::Mat_<float> mean() const;

    std::size_t m_nFrames = 0;
    int m_s32Highest = 0; ///< value of all
    Frame m_oShutter;
    Frame m_oFirst;
    Frame m_oChanges; ///< frames in which a pixel was not as in the one before; stays at 65535

    // Running figures; see Moments.
    cv::Mat_<float> m_oLevel, m_oOdd, m_oMovement, m_oFollow, m_oRestless;
    cv::Mat_<float> m_oPeak, m_oVariance, m_oSkew, m_oKurtosis, m_oPersistent;

private:
    void begin(const Frame& frame);
    void takeValues(const Frame& frame);
    const unsigned short* shutterLine(int y) const { return m_oShutter[m_oShutter.rows == 1 ? 0 : y]; }

    LastFrame m_oLast;
    cv::Mat_<short> m_oValues; ///< of the last frame, less the shutter
    std::vector<short> m_vecScratch;
    std::vector<float> m_vecRise;
    std::vector<int> m_vecPeaks;
};

} // namespace velmo::camera
