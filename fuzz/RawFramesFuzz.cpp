// Raw frames as a user hands them over: by path. The first bytes choose the size and the byte order.

#include "recordings/RawFrames.h"

#include "core/Exception.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace velmo::recordings;
    static const int file = memfd_create("raw", 0);
    if (size < 3 || ftruncate(file, 0) != 0)
        return 0;
    const RawFormat format{{1 + data[0] % 16, 1 + data[1] % 16}, data[2] % 2 == 1};
    const std::uint8_t* const values = data + 3;
    const std::size_t bytes = size - 3;
    if (pwrite(file, values, bytes, 0) != static_cast<ssize_t>(bytes))
        std::abort();

    const std::size_t frameBytes = 2 * static_cast<std::size_t>(format.size.area());
    const bool whole = bytes > 0 && bytes % frameBytes == 0;
    try {
        const auto source = openRawFrames("raw", {"/proc/self/fd/" + std::to_string(file)}, format);
        std::size_t place = 0;
        for (Frame frame; source->next(frame);)
            for (const unsigned short value : frame) {
                const int first = values[place++];
                const int second = values[place++];
                if (value != (format.bigEndian ? first << 8 | second : second << 8 | first))
                    std::abort();
            }
        if (!whole || place != bytes || source->count() != bytes / frameBytes)
            std::abort();
    } catch (const velmo::exp::Exception&) {
        if (whole)
            std::abort();
    }
    return 0;
}
