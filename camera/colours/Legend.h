#pragma once

#include "camera/colours/Colouring.h"

#include "core/Export.h"

#include <string>

namespace velmo::camera {

/// A raw value as a text: itself, or in degrees Celsius if values are hundredths of a kelvin.
VELMO_API std::string valueText(unsigned short value, bool celsius);

/// The picture with a bar of its colours at the right and the values that they stand for: raw values, degrees
/// Celsius, or percent if the colours show humidity.
VELMO_API Picture withLegend(const Picture& picture, Colouring& colouring, ValueRange range, bool celsius);

} // namespace velmo::camera
