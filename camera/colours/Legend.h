#pragma once

#include "camera/Picture.h"
#include "camera/colours/ColourTable.h"
#include "camera/temperature/Thermometer.h"

#include "core/Export.h"

#include <cstddef>
#include <optional>

namespace velmo::camera {

/// A bar of the colours beside pictures with what they stand for: what the thermometer reads, or percents;
/// beside it the isotherms. Where colours are local the bar has no numbers, and it says so. Keeps its drawing
/// from picture to picture.
class VELMO_API Legend
{
public:
    explicit Legend(Thermometer thermometer) : m_oThermometer(std::move(thermometer)) {}

    /// @param picture  as the table colours it
    /// @param table    becomes that of the range
    /// @param range    of the values that the bar stands for
    /// @param whole    becomes the picture with the bar at its right; reused if it has that size already. It
    ///                 is as wide for each picture of one size
    void draw(const Picture& picture, ColourTable& table, ValueRange range, Picture& whole);

private:
    Thermometer m_oThermometer;
    Picture m_oPanel;
    std::optional<std::size_t> m_oDrawnFor; ///< the build of the table
};

} // namespace velmo::camera
