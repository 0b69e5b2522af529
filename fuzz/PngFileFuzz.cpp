// PNG files, as frames and as pictures of colours.

#include "fuzz/ImageFuzz.h"

#include "recordings/PngFile.h"

#include <zlib.h>

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

// Of the engine; there is none where the corpus is replayed.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize)
    __attribute__((weak));

/// Mends the checksum of every chunk behind a change: with wrong ones nothing would be read but refused.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned)
{
    size = LLVMFuzzerMutate(data, size, maxSize);
    std::size_t place = 8;
    while (size >= place + 12) {
        const auto byte = [&](std::size_t n) { return std::size_t{data[place + n]} << (24 - 8 * n); };
        const std::size_t length = byte(0) | byte(1) | byte(2) | byte(3);
        if (length > size - place - 12)
            break;
        const auto sum = crc32(0, data + place + 4, static_cast<unsigned>(length + 4));
        for (std::size_t n = 0; n < 4; ++n)
            data[place + 8 + length + n] = static_cast<std::uint8_t>(sum >> (24 - 8 * n));
        place += 12 + length;
    }
    return size;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace velmo::recordings;
    if (size == 0 || !isSmall(data, size))
        return 0;
    unlessRefused([&] { readPngColours(fileOf(data, size), "file"); });
    return readAll(data, size, openPng);
}
