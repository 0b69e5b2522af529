#pragma once

#include "camera/pixels/PixelMap.h"

#include "core/Exception.h"
#include "core/Export.h"
#include "vision/imgproc/BadPixel.h"

#include <string>
#include <vector>

namespace velmo::camera {

/// What stands in for the bad pixels of a map.
struct Replacements
{
    std::vector<exp::vision::BadPixel> records;
    std::vector<cv::Point>
        widened;             ///< those with no good pixel within the radius: for them it was looked further
    unsigned int widest = 0; ///< how far
};

constexpr unsigned int u32UsualRadius = 5;

/// A record for every bad pixel, line by line, as BadPixelTools::calculateReplacePixels finds them; a pixel
/// in the midst of a cluster takes the nearest good ones there are.
/// @throws Exception  if no pixel is good
VELMO_API Replacements replacementsOf(const PixelMap& map, unsigned int radius = u32UsualRadius);

} // namespace velmo::camera
