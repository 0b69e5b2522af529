#include "vision/imgproc/BadPixel.h"

#include <cstring>
#include <type_traits>

namespace velmo::exp::vision {
namespace {

static_assert(std::is_trivially_copyable_v<BadPixel>, "records are copied as bytes");

// Bytes, not values: the buffers lie at any address.
void copyValues(Endian endian, const char* from, char* to)
{
    if (endian != Endian::Swapped) {
        std::memcpy(to, from, sizeof(BadPixel));
        return;
    }
    for (std::size_t n = 0; n < sizeof(BadPixel); n += 2) {
        to[n] = from[n + 1];
        to[n + 1] = from[n];
    }
}

Pixel offset(Pixel pixel, int dx, int dy)
{
    return {static_cast<short>(pixel.x + dx), static_cast<short>(pixel.y + dy)};
}

} // namespace

const unsigned int BadPixelTools::u32BadNetd;
const unsigned int BadPixelTools::u32BadRowCol;
const unsigned int BadPixelTools::u32BadCurve;
const unsigned int BadPixelTools::u32BadHomogenity;

void BadPixel::setStandardReplacePixel()
{
    *this = {pixel, {offset(pixel, -1, 0), offset(pixel, 1, 0), offset(pixel, 0, -1), offset(pixel, 0, 1)}};
}

unsigned long BadPixel::sizeofType() const
{
    return 20;
}

unsigned long BadPixel::serialize(Endian endian, char* buffer) const
{
    copyValues(endian, reinterpret_cast<const char*>(this), buffer);
    return sizeofType();
}

void BadPixel::deserialize(Endian endian, const char* buffer, unsigned long& size)
{
    copyValues(endian, buffer, reinterpret_cast<char*>(this));
    size = sizeofType();
}

} // namespace velmo::exp::vision
