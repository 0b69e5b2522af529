// Raw frames as a user hands them over: by path. The first bytes choose the size and the byte order.

#include "fuzz/MemoryFile.h"

#include "recordings/RawFrames.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace velmo::recordings;
    static MemoryFile file;
    if (size < 3)
        return 0;
    const RawFormat format{{1 + data[0] % 16, 1 + data[1] % 16}, data[2] % 2 == 1};
    const std::uint8_t* const values = data + 3;
    const std::size_t bytes = size - 3;
    const std::size_t frameBytes = 2 * static_cast<std::size_t>(format.size.area());
    const bool whole = bytes > 0 && bytes % frameBytes == 0;
    try {
        const auto source = openRawFrames("raw", {file.filled(values, bytes)}, format);
        std::size_t place = 0;
        for (Frame frame; source->next(frame);)
            for (const unsigned short value : frame) {
                const int first = values[place++];
                const int second = values[place++];
                require(value == (format.bigEndian ? first << 8 | second : second << 8 | first));
            }
        require(whole && place == bytes && source->count() == bytes / frameBytes);
    } catch (const velmo::exp::Exception&) {
        require(!whole);
    }
    return 0;
}
