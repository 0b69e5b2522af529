#include "camera/measures/BlobPicture.h"

#include "camera/drawing/Enlarge.h"
#include "camera/drawing/MarkColour.h"
#include "camera/drawing/Text.h"

#include "core/Exception.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <string>

namespace velmo::camera {
namespace {

void tint(Picture& picture, const Blob& blob, const cv::Vec3b& colour)
{
    constexpr double dShare = 0.35; // how much of the blob's colour covers its pixels
    for (const cv::Point& point : blob.component.getPoints())
        picture(point) = colour * dShare + picture(point) * (1 - dShare);
}

void drawOutline(Picture& picture, const Blob& blob, const cv::Scalar& colour)
{
    cv::polylines(picture, std::vector<std::vector<cv::Point>>{blob.component.getConvexHull()}, true, colour);
}

/// The axes of the ellipse that spreads as far as the blob.
void drawAxes(Picture& picture, const Blob& blob, const cv::Scalar& colour)
{
    if (std::isnan(blob.angle))
        return;
    const double angle = blob.angle * CV_PI / 180; // above the horizontal; rows count down
    const auto draw = [&](double reachX, double reachY) {
        const cv::Point2d reach(reachX, reachY);
        cv::line(picture, cv::Point(blob.centre - reach), cv::Point(blob.centre + reach), colour);
    };
    draw(blob.length / 2 * std::cos(angle), -blob.length / 2 * std::sin(angle));
    draw(blob.width / 2 * std::sin(angle), blob.width / 2 * std::cos(angle));
}

void drawPath(Picture& picture, const std::vector<cv::Point2d>& path, int scale, const cv::Scalar& colour)
{
    // The middle of a pixel that has become a square.
    const auto place = [&](const cv::Point2d& centre) {
        return cv::Point(cvRound((centre.x + 0.5) * scale - 0.5), cvRound((centre.y + 0.5) * scale - 0.5));
    };
    for (std::size_t i = 1; i < path.size(); ++i)
        cv::line(picture, place(path[i - 1]), place(path[i]), colour, 1, cv::LINE_AA);
}

/// Above the box, or below it where there is no room above.
void drawLabel(Picture& picture, const Blob& blob, int scale, const cv::Scalar& colour)
{
    const std::string text = std::to_string(blob.component.getLabel());
    const int above = blob.box.y * scale - s32TextHeight - 3;
    const int y =
        above >= 0 ? above : std::min(blob.box.br().y * scale + 3, picture.rows - s32TextHeight - 1);
    const int x = std::clamp(blob.box.x * scale, 0, std::max(0, picture.cols - textWidth(text)));
    drawText(picture, text, {x, y}, colour);
}

} // namespace

Picture withBlobs(const Picture& picture, const std::vector<Blob>& blobs, const BlobTracker& tracker,
                  int scale)
{
    Picture drawn = picture.clone();
    const auto colourOf = [](const Blob& blob) { return markColour(blob.component.getLabel()); };
    for (const Blob& blob : blobs) {
        const cv::Rect box = blob.component.getBoundingBox();
        if ((box & cv::Rect({}, picture.size())) != box)
            VELMO_THROW("blob " + std::to_string(blob.component.getLabel()) + " reaches beyond the picture");
        tint(drawn, blob, colourOf(blob));
    }
    for (const Blob& blob : blobs) {
        drawOutline(drawn, blob, colourOf(blob));
        drawAxes(drawn, blob, colourOf(blob));
    }
    drawn = enlarged(drawn, scale);
    for (const Blob& blob : blobs) {
        drawPath(drawn, tracker.path(blob.component.getLabel()), scale, colourOf(blob));
        drawLabel(drawn, blob, scale, colourOf(blob));
    }
    return drawn;
}

} // namespace velmo::camera
