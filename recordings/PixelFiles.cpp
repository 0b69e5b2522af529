#include "recordings/PixelFiles.h"

#include "recordings/GreyWriters.h"

#include "core/Exception.h"
#include "core/codecs/ImageDecoderPxM.h"

namespace velmo::recordings {
namespace {

using exp::Exception;
using exp::vision::BadPixel;
using exp::vision::BadPixelTools;

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

void writePixelMap(OutputFile file, const cv::Mat_<int>& map)
{
    cv::Mat_<unsigned short> flags;
    map.convertTo(flags, CV_16U);
    writePgm(std::move(file), flags, "");
}

std::vector<BadPixel> readRecords(const std::string& path)
{
    try {
        return BadPixelTools::loadBadPixelFromPxm(path);
    } catch (const Exception& error) {
        VELMO_THROW(path + ": " + error.what());
    }
}

void writeRecords(OutputFile file, const std::vector<BadPixel>& records)
{
    // Signed values are kept as their 16-bit patterns.
    const cv::Mat_<short> values = BadPixelTools::convertBadPixelToPxmFormat(records);
    writePgm(std::move(file), cv::Mat(values.size(), CV_16U, values.data, values.step), "");
}

} // namespace velmo::recordings
