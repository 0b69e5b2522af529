#include "vision/kernels/ConnectedComponentKernel.h"

#include "core/Clones.h"
#include "core/Exception.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>

// Loops this short spend half of their time on counting: hence four vectors at a time.

namespace velmo::exp::vision {
namespace {

VELMO_CLONES void extentsLoop(const cv::Point* points, std::size_t count, PointExtents& extents)
{
    // Locals: through the reference the compiler would store every step.
    int minX = extents.minX, maxX = extents.maxX, minY = extents.minY, maxY = extents.maxY;
#pragma GCC unroll 4
    for (std::size_t n = 0; n < count; ++n) {
        const int x = points[n].x, y = points[n].y;
        minX = x < minX ? x : minX;
        minY = y < minY ? y : minY;
        maxX = x > maxX ? x : maxX;
        maxY = y > maxY ? y : maxY;
    }
    extents = {minX, maxX, minY, maxY};
}

// Whole numbers: sums of doubles would have to stay in their order.
VELMO_INLINE void sumAnyBlock(const cv::Point* points, std::size_t count, std::int64_t& sumX,
                              std::int64_t& sumY)
{
    for (std::size_t n = 0; n < count; ++n) {
        sumX += points[n].x;
        sumY += points[n].y;
    }
}

/// Points summed at a time, and the bits that no coordinate of them may have set for its sum to fit 32.
constexpr std::size_t blockPoints = 16384;
constexpr std::uint64_t largeBits = 0xFFFC0000FFFC0000;

// Both coordinates in one 64-bit lane: one addition serves both, and nothing has to be moved apart. What lies
// on an image never has a large bit; a negative coordinate has all of them.
VELMO_CLONES void sumLoop(const cv::Point* points, std::size_t count, std::int64_t& sumX, std::int64_t& sumY)
{
    for (std::size_t from = 0; from < count; from += blockPoints) {
        const cv::Point* block = points + from;
        const std::size_t blockCount = std::min(blockPoints, count - from);
        std::uint64_t sums = 0, bits = 0;
#pragma GCC unroll 4
        for (std::size_t n = 0; n < blockCount; ++n) {
            const std::uint64_t both = static_cast<std::uint32_t>(block[n].x) |
                                       std::uint64_t{static_cast<std::uint32_t>(block[n].y)} << 32;
            sums += both;
            bits |= both;
        }
        if ((bits & largeBits) != 0) {
            sumAnyBlock(block, blockCount, sumX, sumY);
            continue;
        }
        sumX += static_cast<std::uint32_t>(sums);
        sumY += static_cast<std::int64_t>(sums >> 32);
    }
}

VELMO_CLONES void squaredReachLoop(const cv::Point* points, std::size_t count, cv::Point centre,
                                   SquaredReach& reach)
{
    int reachX = 0, reachY = 0;
#pragma GCC unroll 4
    for (std::size_t n = 0; n < count; ++n) {
        const int x = wrappingSquare(wrappingDifference(centre.x, points[n].x));
        const int y = wrappingSquare(wrappingDifference(centre.y, points[n].y));
        reachX = x > reachX ? x : reachX;
        reachY = y > reachY ? y : reachY;
    }
    reach = {reachX, reachY};
}

PointExtents extentsFast(const cv::Point* points, std::size_t count)
{
    PointExtents extents{points->x, points->x, points->y, points->y};
    extentsLoop(points, count, extents);
    return extents;
}

cv::Point2d sumFast(const cv::Point* points, std::size_t count)
{
    if (count > exactlySummedPoints)
        return sumPlain(points, count);
    std::int64_t x = 0, y = 0;
    sumLoop(points, count, x, y);
    return {static_cast<double>(x), static_cast<double>(y)};
}

SquaredReach squaredReachFast(const cv::Point* points, std::size_t count, cv::Point centre)
{
    SquaredReach reach{0, 0};
    squaredReachLoop(points, count, centre, reach);
    return reach;
}

} // namespace

constexpr Forms<ExtentsOf> extentsOf{"extents of points", extentsPlain, extentsFast};
constexpr Forms<SumOf> sumOf{"sum of points", sumPlain, sumFast};
constexpr Forms<SquaredReachOf> squaredReachOf{"squared reach of points", squaredReachPlain,
                                               squaredReachFast};

cv::Mat_<float> rowColumnMatrix(const std::vector<cv::Point>& points)
{
    if (points.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        VELMO_THROW("A component of " + std::to_string(points.size()) +
                    " points has more than the 2147483647 rows of a matrix!");
    cv::Mat_<float> data(static_cast<int>(points.size()), 2);
    auto* row = data.ptr<cv::Vec2f>();
    for (const cv::Point& point : points)
        *row++ = {static_cast<float>(point.y), static_cast<float>(point.x)};
    return data;
}

std::shared_ptr<cv::PCA> principalComponents(const cv::Mat_<float>& rowsAndColumns)
{
    return std::make_shared<cv::PCA>(rowsAndColumns, cv::Mat(), cv::PCA::DATA_AS_ROW, 2);
}

} // namespace velmo::exp::vision
