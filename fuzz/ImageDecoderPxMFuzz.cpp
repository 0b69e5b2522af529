#include "core/codecs/ImageDecoderPxM.h"
#include "fuzz/MemoryFile.h"

using namespace velmo::exp;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static MemoryFile file;
    ImageDecoderPxM decoder;
    if (!decoder.open(file.filled(data, size)))
        return 0;
    const int side = size > 0 ? data[size - 1] : 0;
    const cv::Rect corner(0, 0, 1, 1), inner(side & 3, side >> 2 & 3, 1 + (side >> 4 & 3), 1 + (side >> 6));
    for (const cv::Rect* region : {static_cast<const cv::Rect*>(nullptr), &corner, &inner})
        unlessRefused([&] {
            cv::Mat image;
            decoder.grab(image, region);
            // A sample takes a byte of the file at least.
            require(image.depth() == CV_16U && image.total() * image.elemSize() <= 2 * size);
        });
    return 0;
}
