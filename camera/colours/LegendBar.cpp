#include "camera/colours/LegendBar.h"

#include "camera/drawing/Text.h"
#include "camera/drawing/Ticks.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
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
    const std::vector<unsigned short>& heights; ///< of the numbers, 0 to 65535; none: evenly

    bool isEven() const { return static_cast<int>(heights.size()) != high - low + 1; }

    int rowOf(int place, int rows) const
    {
        const double down = isEven() ? (high - place) / double(std::max(high - low, 1))
                                     : 1 - heights[static_cast<std::size_t>(place - low)] / dFull;
        return cvRound(down * (rows - 1));
    }

    int placeAt(int row, int rows) const
    {
        const double down = double(row) / std::max(rows - 1, 1);
        if (isEven())
            return cvRound(high - std::max(high - low, 1) * down);
        const auto next = std::lower_bound(heights.begin(), heights.end() - 1, (1 - down) * dFull);
        const bool isCloser =
            next != heights.begin() && (1 - down) * dFull - *(next - 1) < *next - (1 - down) * dFull;
        return low + static_cast<int>(next - heights.begin()) - (isCloser ? 1 : 0);
    }

private:
    static constexpr double dFull = 65535;
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
                1,
                table.places()};
    return {range.low,
            range.high,
            [&](int value) { return thermometer.read(static_cast<unsigned short>(value)); },
            [&](int value) { return table.colours()[static_cast<std::size_t>(value)]; },
            thermometer.unit(),
            thermometer.hasDegrees() ? 1 : 0,
            thermometer.hasDegrees() ? 6 : 0,
            table.places()};
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

/// Adds the round numbers of a division that have room beside those that are there.
void addWithRoom(const Axis& axis, int rows, const Ticks& division, std::vector<int>& places)
{
    for (auto tick = division.places.rbegin(); tick != division.places.rend(); ++tick) {
        const int place = placeOf(axis, *tick), row = axis.rowOf(place, rows);
        if (std::all_of(places.begin(), places.end(),
                        [&](int other) { return std::abs(axis.rowOf(other, rows) - row) >= s32LabelPitch; }))
            places.push_back(place);
    }
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
        const int most = std::clamp(rows / s32LabelPitch, 2, s32MaxTicks);
        const Ticks ticks = Ticks::of(axis.read(low), axis.read(high), most);
        decimals = std::clamp(ticks.decimals, axis.leastDecimals, axis.mostDecimals);
        if (axis.isEven()) {
            for (auto tick = ticks.places.rbegin(); tick != ticks.places.rend(); ++tick)
                places.push_back(placeOf(axis, *tick));
        } else {
            places.push_back(axis.low);
            constexpr int finest = 64; // times as many: where values are far apart, there is room for more
            for (int times = 1; times <= finest; times *= 2)
                if (const Ticks finer = Ticks::of(axis.read(low), axis.read(high), times * most);
                    finer.decimals <= decimals)
                    addWithRoom(axis, rows, finer, places);
            std::sort(places.rbegin(), places.rend());
            places.pop_back();
        }
    }
    places.push_back(axis.low);
    return places;
}

} // namespace

LegendBar::LegendBar(ColourTable& table, ValueRange range, const Thermometer& thermometer, int count)
{
    table.build(range);
    const ValueRange all = table.showsPlaces() ? ValueRange{0, 65535} : range;
    const Axis axis = axisOf(table, all, thermometer);
    for (int row = 0; row < count; ++row)
        rows.push_back(axis.colour(axis.placeAt(row, count)));
    if (table.showsPlaces())
        return; // which value a colour has differs from place to place
    int decimals = 0;
    for (const int place : placesOf(axis, count, decimals)) {
        const int row = axis.rowOf(place, count);
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
