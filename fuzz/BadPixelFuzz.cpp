// The byte image of a bad-pixel record.

#include "fuzz/Fuzz.h"
#include "vision/imgproc/BadPixel.h"

#include <cstring>
#include <memory>

using namespace velmo::exp;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t bytes = 20;
    if (size < bytes)
        return 0;
    // Of exactly that size, so that a byte too many is seen.
    const auto image = std::make_unique<char[]>(bytes), native = std::make_unique<char[]>(bytes),
               swapped = std::make_unique<char[]>(bytes);
    std::memcpy(image.get(), data, bytes);
    vision::BadPixel record;
    unsigned long taken = size;
    record.deserialize(Endian::Native, image.get(), taken);
    require(taken == bytes && record.serialize(Endian::Native, native.get()) == bytes &&
            record.serialize(Endian::Swapped, swapped.get()) == bytes &&
            std::memcmp(image.get(), native.get(), bytes) == 0);
    for (std::size_t n = 0; n < bytes; ++n)
        require(swapped[n] == image[n ^ 1]);
    vision::BadPixel again;
    again.deserialize(Endian::Swapped, swapped.get(), taken);
    require(again == record && taken == bytes);
    return 0;
}
