#include "vision/imgproc/ConnectedComponent.h"

#include "vision/kernels/ConnectedComponentKernel.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <limits>

namespace velmo::exp::vision {
namespace {

/// Nearest, ties to even. A mean of very many coordinates at an end of the range can be rounded beyond it;
/// it becomes that end.
int wholePixel(double coordinate)
{
    constexpr double low = std::numeric_limits<int>::min(), high = std::numeric_limits<int>::max();
    return cvRound(std::clamp(coordinate, low, high));
}

int inclusiveLength(int first, int last)
{
    return static_cast<int>(static_cast<unsigned>(last) - static_cast<unsigned>(first) + 1U);
}

} // namespace

ConnectedComponent::ConnectedComponent() = default;

ConnectedComponent::ConnectedComponent(int label) : m_u32Label(static_cast<unsigned int>(label)) {}

ConnectedComponent::ConnectedComponent(const std::vector<cv::Point>& points, int label)
    : m_vecPoints(points), m_u32Label(static_cast<unsigned int>(label)), m_u64NrOfPoints(points.size())
{}

ConnectedComponent::~ConnectedComponent() = default;
ConnectedComponent::ConnectedComponent(const ConnectedComponent& other) = default;
ConnectedComponent& ConnectedComponent::operator=(const ConnectedComponent& other) = default;
ConnectedComponent::ConnectedComponent(ConnectedComponent&& other) noexcept = default;
ConnectedComponent& ConnectedComponent::operator=(ConnectedComponent&& other) noexcept = default;

void ConnectedComponent::addPoint(const cv::Point& point)
{
    m_vecPoints.push_back(point);
    ++*m_u64NrOfPoints;
}

void ConnectedComponent::join(const ConnectedComponent& other)
{
    // Not insert: its range must not come from the vector itself.
    const std::size_t before = m_vecPoints.size(), added = other.m_vecPoints.size();
    m_vecPoints.resize(before + added);
    std::copy_n(other.m_vecPoints.data(), added, m_vecPoints.data() + before);
    *m_u64NrOfPoints = m_vecPoints.size();
}

void ConnectedComponent::setLabel(unsigned int label)
{
    m_u32Label = label;
}

unsigned int ConnectedComponent::getLabel() const
{
    return m_u32Label;
}

std::size_t ConnectedComponent::getNrOfPoints() const
{
    return *m_u64NrOfPoints;
}

std::vector<cv::Point> ConnectedComponent::getPoints() const
{
    return m_vecPoints;
}

cv::Point2d ConnectedComponent::getCenterOfGravity() const
{
    if (*m_u64NrOfPoints == 0)
        return {0.0, 0.0};
    const cv::Point2d sum = sumOf(m_vecPoints.data(), *m_u64NrOfPoints);
    const auto count = static_cast<double>(*m_u64NrOfPoints);
    return {sum.x / count, sum.y / count};
}

double ConnectedComponent::getElongation() const
{
    if (*m_u64NrOfPoints == 0)
        return 0.0;
    const cv::Point2d mean = getCenterOfGravity();
    const cv::Point centre(wholePixel(mean.x), wholePixel(mean.y));
    const SquaredReach reach = squaredReachOf(m_vecPoints.data(), *m_u64NrOfPoints, centre);
    // 0 / 0 where all points lie on the centre: the NaN is the answer.
    return static_cast<double>(std::min(reach.x, reach.y)) / static_cast<double>(std::max(reach.x, reach.y));
}

cv::Rect ConnectedComponent::getBoundingBox() const
{
    if (m_vecPoints.empty())
        return {0, 0, 0, 0};
    const PointExtents extents = extentsOf(m_vecPoints.data(), m_vecPoints.size());
    return {extents.minX, extents.minY, inclusiveLength(extents.minX, extents.maxX),
            inclusiveLength(extents.minY, extents.maxY)};
}

std::vector<cv::Point> ConnectedComponent::getConvexHull() const
{
    std::vector<cv::Point> hull;
    if (!m_vecPoints.empty()) // which cv::convexHull refuses
        cv::convexHull(cv::Mat(m_vecPoints), hull, false, true);
    return hull;
}

std::shared_ptr<cv::PCA> ConnectedComponent::getPCA() const
{
    return principalComponents(rowColumnMatrix(m_vecPoints));
}

} // namespace velmo::exp::vision
