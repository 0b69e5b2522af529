#include "camera/pixels/Replacements.h"

#include <opencv2/imgproc.hpp>

#include <cmath>

namespace velmo::camera {

using exp::vision::BadPixel;
using exp::vision::BadPixelTools;

Replacements replacementsOf(const PixelMap& map, unsigned int radius)
{
    Replacements replacements;
    if (map.empty() || cv::countNonZero(map) == 0)
        return replacements;
    if (cv::countNonZero(map) == static_cast<int>(map.total()))
        VELMO_THROW("a map without a good pixel");
    cv::Mat_<float> distance; // of the nearest good pixel
    cv::distanceTransform(map != 0, distance, cv::DIST_L2, cv::DIST_MASK_PRECISE);
    float farthest = 0;
    for (int y = 0; y < map.rows; ++y)
        for (int x = 0; x < map.cols; ++x)
            if (distance(y, x) > static_cast<float>(radius)) {
                replacements.widened.emplace_back(x, y);
                farthest = std::max(farthest, distance(y, x));
            }
    if (replacements.widened.empty()) {
        replacements.records = BadPixelTools::calculateReplacePixels(map, radius);
        return replacements;
    }
    // One more than the distance: it is a square root.
    replacements.widest = static_cast<unsigned int>(std::ceil(farthest)) + 1;
    const auto near = BadPixelTools::computeReplacePixelQuery(static_cast<int>(radius));
    const auto wide = BadPixelTools::computeReplacePixelQuery(static_cast<int>(replacements.widest));
    for (int y = 0; y < map.rows; ++y)
        for (int x = 0; x < map.cols; ++x) {
            if (map(y, x) == 0)
                continue;
            BadPixel record{{static_cast<short>(x), static_cast<short>(y)}, {}};
            if (!BadPixelTools::calculateSingleReplacePixel(map, near, record))
                BadPixelTools::calculateSingleReplacePixel(map, wide, record);
            replacements.records.push_back(record);
        }
    return replacements;
}

} // namespace velmo::camera
