#include "camera/measures/ShapePicture.h"

#include "camera/drawing/MarkColour.h"
#include "camera/drawing/Text.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>

namespace velmo::camera {
namespace {

using Entry = ShapeMeter::Entry;

constexpr int s32Reach = 3; ///< of the marks at the ends
const cv::Scalar shade(0, 0, 0);

/// Draws twice, first broader and dark: readable on any ground.
template <class Draw>
void onShade(const cv::Scalar& colour, const Draw& draw)
{
    draw(shade, 3);
    draw(colour, 1);
}

/// The middle of a pixel that has become a square.
cv::Point middle(cv::Point pixel, int scale)
{
    return {pixel.x * scale + scale / 2, pixel.y * scale + scale / 2};
}

void drawOutline(Picture& picture, const Shape& shape, int scale, const cv::Scalar& colour)
{
    std::vector<cv::Point> points;
    for (const cv::Point& point : shape.points())
        points.push_back(middle(point, scale));
    onShade(colour, [&](const cv::Scalar& ink, int thickness) {
        switch (shape.kind()) {
        case Shape::Kind::Spot:
            cv::circle(picture, points[0], std::max(2, cvRound((shape.radius() + 0.5) * scale)), ink,
                       thickness, cv::LINE_AA);
            break;
        case Shape::Kind::Box: // around its pixels
            cv::rectangle(picture, shape.points()[0] * scale,
                          (shape.points()[1] + cv::Point(1, 1)) * scale - cv::Point(1, 1), ink, thickness);
            break;
        default:
            cv::polylines(picture, points, shape.kind() == Shape::Kind::Polygon, ink, thickness, cv::LINE_AA);
        }
    });
}

void drawEnds(Picture& picture, const Figures& figures, int scale, const cv::Scalar& colour)
{
    const cv::Point across(s32Reach, 0), down(0, s32Reach);
    const cv::Point low = middle(figures.lowAt, scale), high = middle(figures.highAt, scale);
    onShade(colour, [&](const cv::Scalar& ink, int thickness) {
        cv::line(picture, low - across, low + across, ink, thickness);
        cv::line(picture, high - across, high + across, ink, thickness);
        cv::line(picture, high - down, high + down, ink, thickness);
    });
}

/// Above the shape, or below it where there is no room above.
void drawLabel(Picture& picture, const Entry& entry, const std::string& text, int scale,
               const cv::Scalar& colour)
{
    const Run &first = entry.runs.front(), &last = entry.runs.back();
    int y = first.row * scale - s32TextHeight - 4;
    if (y < 0)
        y = std::min((last.row + 1) * scale + 4, picture.rows - s32TextHeight - 4);
    const int x = std::clamp(first.begin * scale, 2, std::max(2, picture.cols - textWidth(text) - 3));
    const cv::Rect ground(x - 2, y - 3, textWidth(text) + 4, s32TextHeight + 6);
    cv::rectangle(picture, ground, shade, cv::FILLED);
    drawText(picture, text, {x, y}, colour);
}

} // namespace

void drawShapes(Picture& picture, const ShapeMeter& meter, int scale)
{
    const Thermometer& thermometer = meter.thermometer();
    unsigned number = 0;
    for (const Entry& entry : meter.entries()) {
        const cv::Scalar colour = markColour(++number);
        if (entry.shape.kind() != Shape::Kind::Whole)
            drawOutline(picture, entry.shape, scale, colour);
        if (entry.figures.pixels > 1)
            drawEnds(picture, entry.figures, scale, colour);
    }
    number = 0; // labels over all lines
    for (const Entry& entry : meter.entries())
        drawLabel(picture, entry, entry.name + " " + thermometer.text(entry.figures.mean), scale,
                  markColour(++number));
}

} // namespace velmo::camera
