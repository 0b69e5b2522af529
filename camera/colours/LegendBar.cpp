#include "camera/colours/LegendBar.h"

#include "camera/drawing/Text.h"
#include "camera/drawing/Ticks.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace velmo::camera {
namespace {

constexpr int s32LabelPitch = 32; ///< about that far apart
constexpr int s32MaxTicks = 8;
constexpr int s32LineHeight = s32TextHeight + 5;

/// What the bar goes over: whole numbers, each with a colour and something that it reads, rising.
struct Axis
{
    int low;
    int high;
    std::function<double(int)> read;
    std::function<cv::Vec3b(int)> colour;
    std::string unit;
    int leastDecimals;
    int mostDecimals;
};

Axis axisOf(const ColourTable& table, ValueRange range, const Thermometer& thermometer)
{
    if (!table.percentColours().empty())
        return {0,
                ColourTable::s32PercentSteps - 1,
                [](int tenths) { return tenths / 10.0; },
                [&](int tenths) { return table.percentColours()[static_cast<std::size_t>(tenths)]; },
                " %",
                0,
                1};
    return {range.low,
            range.high,
            [&](int value) { return thermometer.read(static_cast<unsigned short>(value)); },
            [&](int value) { return table.colours()[static_cast<std::size_t>(value)]; },
            thermometer.unit(),
            thermometer.hasDegrees() ? 1 : 0,
            thermometer.hasDegrees() ? 6 : 0};
}

/// The place on the axis that reads a number most closely.
int placeOf(const Axis& axis, double number)
{
    int low = axis.low, high = axis.high;
    while (low < high) { // the first that reads no less
        const int middle = low + (high - low) / 2;
        if (axis.read(middle) < number)
            low = middle + 1;
        else
            high = middle;
    }
    const bool bCloser = low > axis.low && number - axis.read(low - 1) < axis.read(low) - number;
    return bCloser ? low - 1 : low;
}

/// The numbers that a legend of so many rows has room for, the greatest first.
std::vector<int> placesOf(const Axis& axis, int rows, int& decimals)
{
    // A range may begin below all temperatures.
    int low = axis.low, high = axis.high;
    while (low < high && std::isinf(axis.read(low)))
        ++low;
    while (high > low && std::isinf(axis.read(high)))
        --high;
    std::vector<int> places = {axis.high};
    decimals = axis.leastDecimals;
    if (std::isfinite(axis.read(low))) {
        const Ticks ticks =
            Ticks::of(axis.read(low), axis.read(high), std::clamp(rows / s32LabelPitch, 2, s32MaxTicks));
        decimals = std::clamp(ticks.decimals, axis.leastDecimals, axis.mostDecimals);
        for (auto tick = ticks.places.rbegin(); tick != ticks.places.rend(); ++tick)
            places.push_back(placeOf(axis, *tick));
    }
    places.push_back(axis.low);
    return places;
}

} // namespace

LegendBar::LegendBar(ColourTable& table, ValueRange range, const Thermometer& thermometer, int count)
{
    table.build(range);
    const Axis axis = axisOf(table, range, thermometer);
    const double span = std::max(axis.high - axis.low, 1);
    for (int row = 0; row < count; ++row)
        rows.push_back(axis.colour(cvRound(axis.high - span * row / std::max(count - 1, 1))));
    int decimals = 0;
    for (const int place : placesOf(axis, count, decimals)) {
        const int row = cvRound((axis.high - place) / span * (count - 1));
        // The ends are wanted most; what has no room between them is left out.
        const bool bEnd = place == axis.low || place == axis.high;
        if ((!ticks.empty() && row - ticks.back().row < s32LineHeight) ||
            (!bEnd && count - 1 - row < s32LineHeight))
            continue;
        const double number = axis.read(place);
        ticks.push_back(
            {row, place, degreesText(number, decimals) + (std::isfinite(number) ? axis.unit : "")});
        rows[static_cast<std::size_t>(row)] = axis.colour(place);
    }
}

} // namespace velmo::camera
