// Records to and from map images.

#include "core/Exception.h"
#include "core/codecs/ImageDecoderPxM.h"
#include "vision/imgproc/BadPixel.h"

#include <cstring>

namespace velmo::exp::vision {
namespace {

constexpr std::size_t maxRecords = 65535; // files count their rows in 16 bits
constexpr int valuesPerRecord = 10;

void checkCount(std::size_t count)
{
    if (count > maxRecords)
        VELMO_THROW(std::to_string(count) + " bad pixels are more than the " + std::to_string(maxRecords) +
                    " of a map image!");
}

void checkLayout(const cv::Mat& image)
{
    if (image.type() != CV_16UC1)
        VELMO_THROW("Bad pixel file has " + std::to_string(image.channels()) + " channels instead of 1!");
    if (image.rows > 0 && image.cols < valuesPerRecord)
        VELMO_THROW("Bad pixel file has " + std::to_string(image.cols) + " columns instead of " +
                    std::to_string(valuesPerRecord) + "!");
    checkCount(static_cast<std::size_t>(image.rows));
}

} // namespace

cv::Mat BadPixelTools::convertBadPixelToPxmFormat(std::vector<BadPixel> badPixels)
{
    checkCount(badPixels.size());
    cv::Mat image(static_cast<int>(badPixels.size()), valuesPerRecord, CV_16SC1);
    for (int row = 0; row < image.rows; ++row)
        std::memcpy(image.ptr(row), &badPixels[static_cast<std::size_t>(row)], sizeof(BadPixel));
    return image;
}

std::vector<BadPixel> BadPixelTools::loadBadPixelFromPxm(const std::string& path)
{
    ImageDecoderPxM decoder;
    if (!decoder.open(path))
        VELMO_THROW("Can not open bad pixel file!");
    cv::Mat image;
    decoder.grab(image, nullptr);
    checkLayout(image);
    std::vector<BadPixel> badPixels(static_cast<std::size_t>(image.rows));
    for (int row = 0; row < image.rows; ++row)
        std::memcpy(&badPixels[static_cast<std::size_t>(row)], image.ptr(row), sizeof(BadPixel));
    return badPixels;
}

} // namespace velmo::exp::vision
