#include "camera/colours/Legend.h"

#include "camera/drawing/Text.h"

#include "vision/radiometry/RadiometricTools.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>

namespace velmo::camera {
namespace {

constexpr int s32Gap = 8;
constexpr int s32BarWidth = 14;
constexpr int s32LabelPitch = 48; ///< labels at least that far apart
const cv::Scalar ink(230, 230, 230);

/// The range from the hottest value down, one row per value.
Frame ramp(ValueRange range, int rows)
{
    Frame values(rows, s32BarWidth);
    for (int r = 0; r < rows; ++r) {
        const double share = rows > 1 ? static_cast<double>(r) / (rows - 1) : 0;
        values.row(r) =
            static_cast<unsigned short>(std::lround(range.high - share * (range.high - range.low)));
    }
    return values;
}

using Label = std::function<std::string(unsigned short)>;

Picture withBar(const Picture& picture, Colouring& colouring, ValueRange range, const Label& textOf)
{
    const int labels = 1 + std::clamp((picture.rows - s32TextHeight - 2) / s32LabelPitch, 1, 4);
    const auto valueOf = [&](int label) {
        return static_cast<unsigned short>(range.high - (range.high - range.low) * label / (labels - 1));
    };
    int width = 0;
    for (int i = 0; i < labels; ++i)
        width = std::max(width, textWidth(textOf(valueOf(i))));

    const int barLeft = picture.cols + s32Gap;
    const int textLeft = barLeft + s32BarWidth + s32Gap;
    Picture whole(picture.rows, textLeft + width + s32Gap, cv::Vec3b(24, 24, 24));
    picture.copyTo(whole(cv::Rect(0, 0, picture.cols, picture.rows)));

    // The ends of the bar stand beside the middle of the first and last label.
    const int top = std::min(s32TextHeight / 2 + 1, picture.rows / 4);
    const int bottom = picture.rows - top;
    const Picture bar = colouring.paint(ramp(range, bottom - top), range);
    bar.copyTo(whole(cv::Rect(barLeft, top, bar.cols, bar.rows)));
    for (int i = 0; i < labels; ++i) {
        const int y = top + (bottom - 1 - top) * i / (labels - 1);
        cv::line(whole, {barLeft + s32BarWidth, y}, {barLeft + s32BarWidth + 3, y}, ink);
        drawText(whole, textOf(valueOf(i)), {textLeft, y - s32TextHeight / 2}, ink);
    }
    return whole;
}

/// Tenths of a percent.
std::string percentText(unsigned short value)
{
    return std::to_string(value / 10) + " %";
}

} // namespace

std::string valueText(unsigned short value, bool celsius)
{
    if (!celsius)
        return std::to_string(value);
    char text[32];
    std::snprintf(text, sizeof text, "%.1f °C", double{vision::RadiometricTools::getFloat(value)});
    return text;
}

Picture withLegend(const Picture& picture, Colouring& colouring, ValueRange range, bool celsius)
{
    if (!colouring.air())
        return withBar(picture, colouring, range,
                       [celsius](unsigned short value) { return valueText(value, celsius); });
    Colouring percent(colouring.palette());
    return withBar(picture, percent, {0, 1000}, percentText);
}

} // namespace velmo::camera
