// Not installed.
#pragma once

#include "core/Forms.h"

#include <opencv2/core.hpp>

#include <cstddef>
#include <memory>
#include <vector>

namespace velmo::exp::vision {

/// The outermost coordinates of some points.
struct PointExtents
{
    int minX, maxX, minY, maxY;
};

/// The largest squared distances from a centre along each image axis, at least 0.
struct SquaredReach
{
    int x, y;
};

/// Up to this many points every partial sum of their coordinates is a whole number within 2^53: exact in a
/// double, in any order.
constexpr std::size_t exactlySummedPoints = std::size_t{1} << 22;

/// Of at least one point.
using ExtentsOf = PointExtents(const cv::Point* points, std::size_t count);
ExtentsOf extentsPlain;
extern const Forms<ExtentsOf> extentsOf;

/// Of coordinates as doubles, added in sequence.
using SumOf = cv::Point2d(const cv::Point* points, std::size_t count);
SumOf sumPlain;
extern const Forms<SumOf> sumOf;

using SquaredReachOf = SquaredReach(const cv::Point* points, std::size_t count, cv::Point centre);
SquaredReachOf squaredReachPlain;
extern const Forms<SquaredReachOf> squaredReachOf;

/// Row i holds (y, x) of point i.
cv::Mat_<float> rowColumnMatrix(const std::vector<cv::Point>& points);

/// Principal components of such a matrix.
std::shared_ptr<cv::PCA> principalComponents(const cv::Mat_<float>& rowsAndColumns);

/// a - b and a * a in 32 bits, wrapping.
inline int wrappingDifference(int a, int b)
{
    return static_cast<int>(static_cast<unsigned>(a) - static_cast<unsigned>(b));
}

inline int wrappingSquare(int a)
{
    return static_cast<int>(static_cast<unsigned>(a) * static_cast<unsigned>(a));
}

} // namespace velmo::exp::vision
