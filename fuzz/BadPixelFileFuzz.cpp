// Map files of bad pixels, by path.

#include "core/codecs/ImageDecoderPxM.h"
#include "fuzz/MemoryFile.h"
#include "vision/imgproc/BadPixel.h"

#include <cstring>

using namespace velmo::exp::vision;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static MemoryFile file;
    return unlessRefused([&] {
        const std::string& path = file.filled(data, size);
        const auto records = BadPixelTools::loadBadPixelFromPxm(path);
        const cv::Mat written = BadPixelTools::convertBadPixelToPxmFormat(records);
        // Each is what the first ten columns of a row hold, a byte of the file at least each.
        velmo::exp::ImageDecoderPxM decoder;
        cv::Mat image;
        require(decoder.open(path));
        decoder.grab(image);
        require(image.type() == CV_16UC1 && image.rows == written.rows && 10 * records.size() <= size &&
                (image.rows == 0 || image.cols >= 10));
        for (int row = 0; row < image.rows; ++row)
            require(std::memcmp(written.ptr(row), image.ptr(row), 20) == 0);
    });
}
