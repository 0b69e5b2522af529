#pragma once

#include "camera/colours/Colouring.h"

#include "core/Export.h"

#include <optional>
#include <string>

namespace velmo::camera {

/// A raw value as a text: itself, or in degrees Celsius if values are hundredths of a kelvin.
VELMO_API std::string valueText(unsigned short value, bool celsius);

/// A bar of the colours beside pictures, with the values that they stand for: raw values, degrees Celsius, or
/// percent if the colours show humidity. Keeps the bar from picture to picture.
class VELMO_API Legend
{
public:
    explicit Legend(bool celsius) : m_bCelsius(celsius) {}

    /// @param whole  becomes the picture with the bar at its right; reused if it has that size already
    void draw(const Picture& picture, Colouring& colouring, ValueRange range, Picture& whole);

private:
    bool m_bCelsius;
    Picture m_oBar;
    std::optional<ValueRange> m_oDrawnFor;
};

} // namespace velmo::camera
