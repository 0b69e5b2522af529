#include "core/Exception.h"
#include "core/codecs/ImageDecoderPxM.h"
#include "fuzz/MemoryFile.h"

using namespace velmo::exp;

namespace {

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
    static MemoryFile file;
    ImageDecoderPxM decoder;
    if (!decoder.open(file.filled(data, size)))
        return 0;
    grab(decoder, nullptr, size);
    const cv::Rect corner(0, 0, 1, 1);
    grab(decoder, &corner, size);
    const int side = size > 0 ? data[size - 1] : 0;
    const cv::Rect inner(side & 3, side >> 2 & 3, 1 + (side >> 4 & 3), 1 + (side >> 6));
    grab(decoder, &inner, size);
    return 0;
}
