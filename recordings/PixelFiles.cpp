#include "recordings/PixelFiles.h"

#include "recordings/RawSink.h"

#include "core/Exception.h"
#include "core/codecs/ImageDecoderPxM.h"

namespace velmo::recordings {
namespace {

using exp::Exception;
using exp::vision::BadPixel;
using exp::vision::BadPixelTools;

/// A binary PGM of 16 bits; the picture libraries write none without rows, which is how no record looks.
template <class T>
std::string pgm(const cv::Mat_<T>& image)
{
    std::string bytes = "P5\n" + std::to_string(image.cols) + " " + std::to_string(image.rows) + "\n65535\n";
    for (int r = 0; r < image.rows; ++r)
        for (int c = 0; c < image.cols; ++c) {
            const auto value = static_cast<unsigned short>(image(r, c));
            bytes += static_cast<char>(value >> 8);
            bytes += static_cast<char>(value & 0xff);
        }
    return bytes;
}

} // namespace

cv::Mat_<int> readPixelMap(const std::string& path)
{
    exp::ImageDecoderPxM decoder;
    if (!decoder.open(path))
        VELMO_THROW(path + ": not a readable PGM map");
    cv::Mat image;
    try {
        decoder.grab(image, nullptr);
    } catch (const Exception& error) {
        VELMO_THROW(path + ": " + error.what());
    }
    if (image.channels() != 1 || image.empty())
        VELMO_THROW(path + ": not a map: it has " + std::to_string(image.channels()) + " channels and " +
                    std::to_string(image.total()) + " pixels");
    cv::Mat_<int> map;
    image.convertTo(map, CV_32S);
    return map;
}

void writePixelMap(const std::string& path, const cv::Mat_<int>& map)
{
    writeFile(path, pgm(map));
}

std::vector<BadPixel> readRecords(const std::string& path)
{
    try {
        return BadPixelTools::loadBadPixelFromPxm(path);
    } catch (const Exception& error) {
        VELMO_THROW(path + ": " + error.what());
    }
}

void writeRecords(const std::string& path, const std::vector<BadPixel>& records)
{
    writeFile(path, pgm(cv::Mat_<short>(BadPixelTools::convertBadPixelToPxmFormat(records))));
}

} // namespace velmo::recordings
