#pragma once

#include "apps/thermal/Options.h"

namespace thermal {

// Parts of the command pixels with files of their own.

void addPixelsFind(const Command& pixels);
void addPixelsMaps(const Command& pixels); ///< merge and diff

} // namespace thermal
