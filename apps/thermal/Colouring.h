#pragma once

#include "apps/thermal/PictureSink.h"
#include "apps/thermal/Range.h"

#include <string>

namespace thermal {

/// Turns frames into pictures in the colours of a palette.
class Colouring
{
public:
    Picture paint(const Frame& frame, ValueRange range);
};

} // namespace thermal
