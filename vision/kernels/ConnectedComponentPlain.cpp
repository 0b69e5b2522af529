#include "vision/kernels/ConnectedComponentKernel.h"

#include <algorithm>

namespace velmo::exp::vision {

PointExtents extentsPlain(const cv::Point* points, std::size_t count)
{
    PointExtents extents{points[0].x, points[0].x, points[0].y, points[0].y};
    for (std::size_t n = 1; n < count; ++n) {
        extents.minX = std::min(extents.minX, points[n].x);
        extents.maxX = std::max(extents.maxX, points[n].x);
        extents.minY = std::min(extents.minY, points[n].y);
        extents.maxY = std::max(extents.maxY, points[n].y);
    }
    return extents;
}

cv::Point2d sumPlain(const cv::Point* points, std::size_t count)
{
    cv::Point2d sum(0.0, 0.0);
    for (std::size_t n = 0; n < count; ++n) {
        sum.x += static_cast<double>(points[n].x);
        sum.y += static_cast<double>(points[n].y);
    }
    return sum;
}

SquaredReach squaredReachPlain(const cv::Point* points, std::size_t count, cv::Point centre)
{
    SquaredReach reach{0, 0};
    for (std::size_t n = 0; n < count; ++n) {
        reach.x = std::max(reach.x, wrappingSquare(wrappingDifference(centre.x, points[n].x)));
        reach.y = std::max(reach.y, wrappingSquare(wrappingDifference(centre.y, points[n].y)));
    }
    return reach;
}

} // namespace velmo::exp::vision
