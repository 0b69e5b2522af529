#include "camera/pixels/PixelOverlay.h"

#include "camera/colours/Colouring.h"
#include "camera/colours/Range.h"
#include "camera/drawing/Text.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>

namespace velmo::camera {
namespace {

constexpr int s32WidthWanted = 800;
constexpr int s32MaxRings = 100;
constexpr int s32Margin = 8;

cv::Scalar colourOf(int flags, const std::vector<PixelReason>& reasons)
{
    for (const PixelReason& reason : reasons)
        if (static_cast<unsigned>(flags) & reason.flag)
            return reason.colour;
    return cv::Scalar::all(255);
}

/// The reasons that occur.
void drawKey(Picture& picture, int top, const PixelMap& map, const std::vector<PixelReason>& reasons)
{
    int left = s32Margin;
    for (const PixelReason& reason : reasons) {
        if (cv::countNonZero(PixelMap(map & static_cast<int>(reason.flag))) == 0)
            continue;
        cv::rectangle(picture, cv::Rect(left, top, s32TextHeight, s32TextHeight), reason.colour, cv::FILLED);
        left += s32TextHeight + s32Margin / 2;
        drawText(picture, reason.name, {left, top}, cv::Scalar::all(255));
        left += textWidth(reason.name) + 2 * s32Margin;
    }
}

} // namespace

Picture drawBadPixels(const Frame& frame, const PixelMap& map, const std::vector<PixelReason>& reasons)
{
    const int scale = std::clamp(s32WidthWanted / frame.cols, 1, 8);
    const int foot = s32TextHeight + 2 * s32Margin;
    Picture picture(frame.rows * scale + foot, std::max(frame.cols * scale, 560), cv::Vec3b(0, 0, 0));
    Picture enlarged = picture(cv::Rect(0, 0, frame.cols * scale, frame.rows * scale));
    Frame good = frame.clone(); // what the bad ones read is no part of the range
    good.setTo(cv::mean(frame, map == 0), map != 0);
    cv::resize(Colouring(findPalette("Grayscale")).paint(good, RangeRule().of(good)), enlarged,
               enlarged.size(), 0, 0, cv::INTER_NEAREST);
    const bool rings = cv::countNonZero(map) <= s32MaxRings;
    for (int y = 0; y < map.rows; ++y)
        for (int x = 0; x < map.cols; ++x)
            if (map(y, x) != 0) {
                const cv::Scalar colour = colourOf(map(y, x), reasons);
                cv::rectangle(enlarged, cv::Rect(x * scale, y * scale, scale, scale), colour, cv::FILLED);
                if (rings)
                    cv::circle(enlarged, {x * scale + scale / 2, y * scale + scale / 2}, 6 + 2 * scale,
                               colour);
            }
    drawKey(picture, picture.rows - s32TextHeight - s32Margin, map, reasons);
    return picture;
}

} // namespace velmo::camera
