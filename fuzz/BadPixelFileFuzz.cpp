// Map files of bad pixels, by path.

#include "fuzz/MemoryFile.h"
#include "vision/imgproc/BadPixel.h"

#include <algorithm>

using namespace velmo::exp::vision;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static MemoryFile file;
    try {
        const auto records = BadPixelTools::loadBadPixelFromPxm(file.filled(data, size));
        const cv::Mat image = BadPixelTools::convertBadPixelToPxmFormat(records);
        // A value takes a byte of the file at least, and ten make a record.
        if (10 * records.size() > size || image.rows != static_cast<int>(records.size()) || image.cols != 10)
            std::abort();
        for (std::size_t n = 0; n < records.size(); ++n) {
            const auto* values = image.ptr<short>(static_cast<int>(n));
            const BadPixel& record = records[n];
            if (values[0] != record.pixel.x || values[1] != record.pixel.y ||
                values[8] != record.replacePixel[3].x)
                std::abort();
        }
    } catch (const velmo::exp::Exception&) {
    }
    return 0;
}
