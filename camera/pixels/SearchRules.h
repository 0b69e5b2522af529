// Not installed.
#pragma once

#include "camera/pixels/PixelSearch.h"
#include "camera/pixels/PixelStatistics.h"

#include <opencv2/core.hpp>

namespace velmo::camera {

using Plane = cv::Mat_<float>;
using Mask = cv::Mat_<unsigned char>; ///< 1 where set

/// What the rules of the search work on, one after another: each leaves out what those before it found.
struct Suspects
{
    explicit Suspects(const PixelStatistics& numbers);

    void flag(cv::Point pixel, PixelFault fault, float deviations);
    bool inside(int y, int x) const { return y >= 0 && x >= 0 && y < mean.rows && x < mean.cols; }

    const PixelStatistics& statistics;
    Plane mean; ///< of the frames, less the shutter
    Mask bad;   ///< what counts as no neighbour any more
    PixelFindings findings;
};

// In this order.
void findDead(Suspects& suspects);
void findStuck(Suspects& suspects);
void findLines(Suspects& suspects);
void findHotAndCold(Suspects& suspects);
void findRestless(Suspects& suspects, const Mask& before); ///< `before`: bad without the hot and cold ones
void findWeak(Suspects& suspects);

} // namespace velmo::camera
