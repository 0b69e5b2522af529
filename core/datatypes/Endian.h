#pragma once

#include "core/Export.h"

namespace velmo::exp {

/// Byte order of serialised values relative to the host's.
enum class Endian : int
{
    Swapped = 0, ///< against the host's order: big-endian data on a little-endian host
    Native = 1   ///< the host's own order
};

/// The host's byte order.
class VELMO_API Endianness
{
public:
    static bool isBigEndianSystem();
};

} // namespace velmo::exp
