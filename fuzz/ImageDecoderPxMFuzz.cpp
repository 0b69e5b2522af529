#include "core/Exception.h"
#include "core/codecs/ImageDecoderPxM.h"

#include <cstdint>
#include <cstdlib>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

using namespace velmo::exp;

namespace {

/// A file in memory, by a name that can be opened.
struct MemoryFile
{
    MemoryFile(const std::uint8_t* data, std::size_t size) : handle(memfd_create("fuzz", 0))
    {
        if (handle < 0 || write(handle, data, size) != static_cast<ssize_t>(size))
            std::abort();
    }
    ~MemoryFile() { close(handle); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(handle); }

    int handle;
};

void grab(const ImageDecoderPxM& decoder, const cv::Rect* region, std::size_t size)
{
    try {
        cv::Mat image;
        decoder.grab(image, region);
        // A sample takes a byte of the file at least.
        if (image.depth() != CV_16U || image.total() * static_cast<std::size_t>(image.channels()) > size)
            std::abort();
    } catch (const Exception&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const MemoryFile file(data, size);
    ImageDecoderPxM decoder;
    if (!decoder.open(file.path()))
        return 0;
    grab(decoder, nullptr, size);
    const cv::Rect corner(0, 0, 1, 1);
    grab(decoder, &corner, size);
    const int side = size > 0 ? data[size - 1] : 0;
    const cv::Rect inner(side & 3, side >> 2 & 3, 1 + (side >> 4 & 3), 1 + (side >> 6));
    grab(decoder, &inner, size);
    return 0;
}
