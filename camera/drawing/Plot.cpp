#include "camera/drawing/Plot.h"

#include "camera/drawing/Text.h"
#include "camera/drawing/Ticks.h"
#include "camera/settings/Parse.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <utility>

namespace velmo::camera {
namespace {

constexpr int s32Gap = 10;
constexpr int s32TickLength = 4;
constexpr int s32LabelGap = s32TickLength + 4;
constexpr int s32XPitch = 80; ///< ticks at least about that far apart
constexpr int s32YPitch = 32;
const cv::Vec3b paper(24, 24, 24);
const cv::Scalar ink(230, 230, 230);
const cv::Scalar grid(56, 56, 56);

struct Interval
{
    double low = 0;
    double high = 1;
};

/// Holds all numbers that are finite, with a little room.
Interval intervalOf(const std::vector<double>& numbers)
{
    Interval all = {HUGE_VAL, -HUGE_VAL};
    for (const double number : numbers)
        if (std::isfinite(number))
            all = {std::min(all.low, number), std::max(all.high, number)};
    if (all.low > all.high)
        return {};
    const double room = all.low < all.high ? 0.05 * (all.high - all.low) : 0.5;
    return {all.low - room, all.high + room};
}

/// Where the curves lie in the picture and what its sides stand for.
struct Canvas
{
    cv::Rect place;
    Interval x;
    Interval y;
    Ticks xTicks;
    Ticks yTicks;

    cv::Point2d at(double atX, double atY) const
    {
        return {place.x + (atX - x.low) / (x.high - x.low) * (place.width - 1),
                place.br().y - 1 - (atY - y.low) / (y.high - y.low) * (place.height - 1)};
    }
};

Canvas layOut(cv::Size size, Interval x, Interval y, int namesWidth)
{
    Canvas canvas = {{},
                     x,
                     y,
                     Ticks::of(x.low, x.high, std::max(3, size.width / s32XPitch)),
                     Ticks::of(y.low, y.high, std::max(3, size.height / s32YPitch))};
    int labels = 0;
    for (const double tick : canvas.yTicks.places)
        labels = std::max(labels, textWidth(numberText(tick, canvas.yTicks.decimals)));
    const int left = s32Gap + labels + s32LabelGap, right = namesWidth + 2 * s32Gap;
    const int top = 2 * s32Gap + s32TextHeight, bottom = 2 * s32Gap + s32LabelGap + 2 * s32TextHeight;
    canvas.place = {left, top, std::max(2, size.width - left - right),
                    std::max(2, size.height - top - bottom)};
    return canvas;
}

void drawAxes(Picture& picture, const Canvas& canvas)
{
    const int left = canvas.place.x, right = canvas.place.br().x - 1;
    const int top = canvas.place.y, foot = canvas.place.br().y - 1;
    for (const double tick : canvas.yTicks.places) {
        const int y = cvRound(canvas.at(canvas.x.low, tick).y);
        const std::string text = numberText(tick, canvas.yTicks.decimals);
        cv::line(picture, {left - s32TickLength, y}, {right, y}, grid);
        drawText(picture, text, {left - s32LabelGap - textWidth(text), y - s32TextHeight / 2}, ink);
    }
    for (const double tick : canvas.xTicks.places) {
        const int x = cvRound(canvas.at(tick, canvas.y.low).x);
        const std::string text = numberText(tick, canvas.xTicks.decimals);
        cv::line(picture, {x, top}, {x, foot + s32TickLength}, grid);
        drawText(picture, text, {x - textWidth(text) / 2, foot + s32LabelGap}, ink);
    }
    cv::line(picture, {left, top}, {left, foot}, ink);
    cv::line(picture, {left, foot}, {right, foot}, ink);
}

void drawCurve(Picture& picture, const Canvas& canvas, const std::vector<double>& values, double step,
               const cv::Scalar& colour)
{
    constexpr int s32Shift = 4; // sixteenths of a pixel
    const auto at = [&](std::size_t i) {
        return cv::Point(canvas.at(static_cast<double>(i) * step, values[i]) * (1 << s32Shift));
    };
    const auto known = [&](std::size_t i) { return i < values.size() && std::isfinite(values[i]); };
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (known(i) && known(i + 1))
            cv::line(picture, at(i), at(i + 1), colour, 1, cv::LINE_AA, s32Shift);
        else if (known(i) && (i == 0 || !known(i - 1))) // alone
            cv::line(picture, at(i), at(i), colour, 3, cv::LINE_AA, s32Shift);
    }
}

} // namespace

void Plot::add(std::string name, std::vector<double> values, const cv::Scalar& colour)
{
    m_vecCurves.push_back({std::move(name), std::move(values), colour});
}

Picture Plot::draw(cv::Size size) const
{
    std::vector<double> all;
    std::size_t longest = 2;
    int names = 0;
    for (const Curve& curve : m_vecCurves) {
        all.insert(all.end(), curve.m_vecValues.begin(), curve.m_vecValues.end());
        longest = std::max(longest, curve.m_vecValues.size());
        names = std::max(names, textWidth(curve.m_strName));
    }
    const Interval x = {0, static_cast<double>(longest - 1) * m_dStep};
    const Canvas canvas = layOut(size, x, intervalOf(all), names);

    Picture picture(size, paper);
    drawAxes(picture, canvas);
    drawText(picture, m_strYLabel, {s32Gap, s32Gap}, ink);
    drawText(picture, m_strXLabel,
             {canvas.place.br().x - textWidth(m_strXLabel), size.height - s32Gap - s32TextHeight}, ink);
    int y = canvas.place.y;
    for (const Curve& curve : m_vecCurves) {
        drawCurve(picture, canvas, curve.m_vecValues, m_dStep, curve.m_oColour);
        drawText(picture, curve.m_strName, {canvas.place.br().x + s32Gap, y}, curve.m_oColour);
        y += 2 * s32TextHeight;
    }
    return picture;
}

} // namespace velmo::camera
