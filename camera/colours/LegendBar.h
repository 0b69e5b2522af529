#pragma once

#include "camera/colours/ColourTable.h"
#include "camera/temperature/Thermometer.h"
#include "core/Export.h"

#include <opencv2/core.hpp>

#include <string>
#include <vector>

namespace velmo::camera {

/// What a legend says at one row of its bar.
struct LegendTick
{
    int row;   ///< 0 is the top
    int value; ///< of the frame, or tenths of a percent where colours show percents
    std::string text;
};

/// The bar of a legend, the highest value at the top, one colour per row. The palette is spread evenly over
/// it, so that with places in the table values are not.
struct VELMO_API LegendBar
{
    std::vector<cv::Vec3b> rows;
    std::vector<LegendTick> ticks; ///< from the top: the upper end, round numbers, the lower end; none
                                   ///< where colours are of places

    /// The row of a tick has exactly the colour that the table has for its value, and its text is what that
    /// value reads.
    ///
    /// @param table        becomes that of the range
    /// @param range        of the values that the bar stands for
    /// @param thermometer  from values to temperatures
    /// @param rows         1 or more; where they are few, only some ticks have room
    LegendBar(ColourTable& table, ValueRange range, const Thermometer& thermometer, int rows);
};

} // namespace velmo::camera
