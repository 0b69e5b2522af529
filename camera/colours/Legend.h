#pragma once

#include "camera/colours/Colouring.h"

#include <string>

namespace thermal {

/// A raw value as a text: itself, or in degrees Celsius if values are hundredths of a kelvin.
std::string valueText(unsigned short value, bool celsius);

/// The picture with a bar of its colours at the right and the values that they stand for: raw values, degrees
/// Celsius, or percent if the colours show humidity.
Picture withLegend(const Picture& picture, Colouring& colouring, ValueRange range, bool celsius);

} // namespace thermal
