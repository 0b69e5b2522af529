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

/// The bar with its labels, for a picture of so many rows.
Picture labelledBar(int rows, Colouring& colouring, ValueRange range, const Label& textOf)
{
    const int labels = 1 + std::clamp((rows - s32TextHeight - 2) / s32LabelPitch, 1, 4);
    const auto valueOf = [&](int label) {
        return static_cast<unsigned short>(range.high - (range.high - range.low) * label / (labels - 1));
    };
    int width = 0;
    for (int i = 0; i < labels; ++i)
        width = std::max(width, textWidth(textOf(valueOf(i))));

    constexpr int s32TextLeft = s32Gap + s32BarWidth + s32Gap;
    Picture whole(rows, s32TextLeft + width + s32Gap, cv::Vec3b(24, 24, 24));

    // The ends of the bar stand beside the middle of the first and last label.
    const int top = std::min(s32TextHeight / 2 + 1, rows / 4);
    const int bottom = rows - top;
    const Picture bar = colouring.paint(ramp(range, bottom - top), range);
    bar.copyTo(whole(cv::Rect(s32Gap, top, bar.cols, bar.rows)));
    for (int i = 0; i < labels; ++i) {
        const int y = top + (bottom - 1 - top) * i / (labels - 1);
        cv::line(whole, {s32Gap + s32BarWidth, y}, {s32Gap + s32BarWidth + 3, y}, ink);
        drawText(whole, textOf(valueOf(i)), {s32TextLeft, y - s32TextHeight / 2}, ink);
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

void Legend::draw(const Picture& picture, Colouring& colouring, ValueRange range, Picture& whole)
{
    const bool same = m_oDrawnFor && m_oDrawnFor->low == range.low && m_oDrawnFor->high == range.high;
    if (!same || m_oBar.rows != picture.rows) {
        const bool celsius = m_bCelsius;
        if (colouring.air()) {
            Colouring percent(colouring.palette());
            m_oBar = labelledBar(picture.rows, percent, {0, 1000}, percentText);
        } else {
            m_oBar = labelledBar(picture.rows, colouring, range,
                                 [celsius](unsigned short value) { return valueText(value, celsius); });
        }
        m_oDrawnFor = range;
    }
    whole.create(picture.rows, picture.cols + m_oBar.cols);
    picture.copyTo(whole(cv::Rect(0, 0, picture.cols, picture.rows)));
    m_oBar.copyTo(whole(cv::Rect(picture.cols, 0, m_oBar.cols, picture.rows)));
}

} // namespace velmo::camera
