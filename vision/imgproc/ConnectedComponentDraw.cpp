#include "core/Exception.h"
#include "vision/imgproc/ConnectedComponent.h"
#include "vision/kernels/ConnectedComponentKernel.h"

#include <opencv2/imgproc.hpp>

#include <array>
#include <cmath>
#include <cstdint>
#include <string>

namespace velmo::exp::vision {
namespace {

using Canvas = cv::Mat_<cv::Vec<unsigned char, 3>>;
using Components = std::map<int, ConnectedComponent>;
using Color = cv::Vec<unsigned char, 3>;

/// What of a component may lie outside the canvas.
enum class Outside
{
    Nothing,   ///< its pixels are written one by one
    LeftAbove, ///< its lines are clipped by OpenCV
};

/// Whether a component fits the canvas. A length that does not fit 32 bits has wrapped to a negative one, or
/// to nothing, which no component but the one without points has: OpenCV cannot draw so far.
bool fits(const Canvas& canvas, const ConnectedComponent& component, Outside outside)
{
    const cv::Rect box = component.getBoundingBox();
    const bool lengthsFit = component.getNrOfPoints() == 0 || (box.width > 0 && box.height > 0);
    const bool startsWithin = outside == Outside::LeftAbove || (box.x >= 0 && box.y >= 0);
    return lengthsFit && startsWithin && box.x + std::int64_t{box.width} <= canvas.cols &&
           box.y + std::int64_t{box.height} <= canvas.rows;
}

Color randomColor()
{
    Color color;
    for (int channel = 0; channel < 3; ++channel)
        color[channel] = static_cast<unsigned char>(cv::theRNG().next());
    return color;
}

void drawEdge(Canvas& canvas, const cv::Point& from, const cv::Point& to, const cv::Scalar& color)
{
    cv::line(canvas, from, to, color, 1, cv::LINE_8);
}

/// What lies this far around a pixel of the canvas lies outside of it.
bool mayBeSeen(const Canvas& canvas, int radius)
{
    return radius <= std::int64_t{canvas.cols} + canvas.rows;
}

void drawPoints(Canvas& canvas, const std::vector<cv::Point>& points, const Color& color, bool circles,
                int radius)
{
    for (const cv::Point& point : points) {
        canvas(point) = color;
        if (circles)
            cv::circle(canvas, point, radius, color, 1, cv::LINE_8);
    }
}

void drawHull(Canvas& canvas, const std::vector<cv::Point>& hull, const cv::Scalar& color)
{
    if (hull.size() < 2)
        return;
    drawEdge(canvas, hull.back(), hull.front(), color);
    for (std::size_t n = 1; n < hull.size(); ++n)
        drawEdge(canvas, hull[n - 1], hull[n], color);
}

/// Half the length of what one column of the projection covers.
double halfLength(const cv::Mat& projection, int column)
{
    double low = 0, high = 0;
    cv::minMaxLoc(projection.col(column), &low, &high);
    return std::abs(high - low) * 0.5;
}

bool isInside(const Canvas& canvas, const cv::Point2d& point)
{
    return point.x >= 0 && point.y >= 0 && point.x <= canvas.cols - 1 && point.y <= canvas.rows - 1;
}

void drawAxes(Canvas& canvas, const std::vector<cv::Point>& points, const cv::Point2d& centre,
              const cv::Scalar& color)
{
    const cv::Mat_<float> data = rowColumnMatrix(points);
    const auto components = principalComponents(data);
    if (components->eigenvectors.size() != cv::Size(2, 2))
        return;
    const cv::Mat projection = components->project(data);
    std::array<cv::Point2d, 2> ends;
    for (int axis = 0; axis < 2; ++axis) {
        const auto* rowAndColumn = components->eigenvectors.ptr<float>(axis);
        const double length = halfLength(projection, axis);
        cv::Point2d& end = ends[static_cast<std::size_t>(axis)];
        end = {rowAndColumn[1] * length + centre.x, rowAndColumn[0] * length + centre.y};
        if (!isInside(canvas, end))
            return;
    }
    const cv::Point from(cvRound(centre.x), cvRound(centre.y));
    for (const cv::Point2d& end : ends)
        drawEdge(canvas, from, {cvRound(end.x), cvRound(end.y)}, color);
}

/// Calls draw(component, color) for one component after the other. Returns false at the first that does not
/// fit the canvas.
template <class Draw>
bool drawEach(Canvas& canvas, const Components& components, Outside outside, bool clear, Draw draw)
{
    if (clear)
        canvas.setTo(0);
    for (const auto& entry : components) {
        if (!fits(canvas, entry.second, outside))
            return false;
        draw(entry.second, randomColor());
    }
    return true;
}

} // namespace

void ConnectedComponent::drawComponents(Canvas& canvas, const Components& components, bool drawCircles,
                                        int radius, bool clear)
{
    if (drawCircles && radius < 0)
        VELMO_THROW("Circle radius " + std::to_string(radius) + " is below 0!");
    const bool circles = drawCircles && mayBeSeen(canvas, radius);
    const auto draw = [&](const ConnectedComponent& component, const Color& color) {
        drawPoints(canvas, component.m_vecPoints, color, circles, radius);
    };
    if (!drawEach(canvas, components, Outside::Nothing, clear, draw))
        VELMO_THROW("canvas to small");
}

void ConnectedComponent::drawComponentHulls(Canvas& canvas, const Components& components, bool clear)
{
    const auto draw = [&](const ConnectedComponent& component, const Color& color) {
        drawHull(canvas, component.getConvexHull(), color);
    };
    if (!drawEach(canvas, components, Outside::LeftAbove, clear, draw))
        VELMO_THROW("canvas to small");
}

void ConnectedComponent::drawPrincipalComponents(Canvas& canvas, const Components& components, bool clear)
{
    const auto draw = [&](const ConnectedComponent& component, const Color& color) {
        drawAxes(canvas, component.m_vecPoints, component.getCenterOfGravity(), color);
    };
    if (!drawEach(canvas, components, Outside::LeftAbove, clear, draw))
        VELMO_THROW("canvas to small");
}

} // namespace velmo::exp::vision
