#include "core/datatypes/Endian.h"

#include <cstdint>
#include <cstring>

namespace velmo::exp {

bool Endianness::isBigEndianSystem()
{
    const std::uint16_t one = 1;
    unsigned char first = 0;
    std::memcpy(&first, &one, 1);
    return first == 0;
}

} // namespace velmo::exp
