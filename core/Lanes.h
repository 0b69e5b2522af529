// Not installed.
#pragma once

#include "core/Clones.h"

/// Small operations for loops that are to become vectors of 16-bit lanes.

namespace velmo::exp {

VELMO_INLINE short lower(short a, short b)
{
    return a < b ? a : b;
}

VELMO_INLINE short higher(short a, short b)
{
    return a < b ? b : a;
}

} // namespace velmo::exp
