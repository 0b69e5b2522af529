// PNG files, as frames and as pictures of colours.

#include "fuzz/ImageFuzz.h"

#include "recordings/PngFile.h"

#include <algorithm>

namespace {

/// Pictures of so few pixels that an input takes microseconds: the header says it at a fixed place.
bool isSmall(const std::uint8_t* data, std::size_t size)
{
    const auto side = [&](std::size_t place) {
        return data[place] == 0 && data[place + 1] == 0 && data[place + 2] <= 1;
    };
    return size < 24 || (side(16) && side(20));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace velmo::recordings;
    if (size == 0 || !isSmall(data, size))
        return 0;
    try {
        readPngColours(fileOf(data, size), "file");
    } catch (const velmo::exp::Exception&) {
    }
    return readAll(data, size, openPng);
}
