#include "vision/imgproc/DistortionCorrection.h"

#include "core/Exception.h"
#include "core/codecs/ImageDecoderPxM.h"

#include <opencv2/core.hpp>

#include <cstdint>

namespace velmo::vision {
namespace {

constexpr int channels = 6;
using MapPixel = cv::Vec<unsigned short, channels>;

/// The place of the source pixel relative to the pixel itself, cut to 16 bits. Unsigned: in a wide map the
/// product leaves even 32 bits, and only the low 16 count.
short offsetOf(const MapPixel& pixel, int cols)
{
    const std::uint32_t offset = std::uint32_t{pixel[0]} * static_cast<std::uint32_t>(cols) + pixel[1];
    return static_cast<short>(static_cast<std::uint16_t>(offset));
}

bool isInside(const cv::Mat& map, std::int64_t index)
{
    return index >= 0 && index < std::int64_t{map.rows} * map.cols;
}

} // namespace

DistortionCorrection::DistortionCorrection(const std::vector<PixelCorrInfo>& records)
    : m_vecPixelCorrInfo(records)
{}

DistortionCorrection::DistortionCorrection(const std::string& path, int height, int width)
    : m_vecPixelCorrInfo(loadPixelCorrInfoFromPxm(path, height, width))
{}

std::vector<PixelCorrInfo> DistortionCorrection::loadPixelCorrInfoFromPxm(const std::string& path, int height,
                                                                          int width)
{
    velmo::exp::ImageDecoderPxM decoder;
    if (!decoder.open(path))
        VELMO_THROW("Can not open Distortion Correction file!");
    cv::Mat map;
    decoder.grab(map, nullptr);
    if (map.type() != CV_16UC(channels))
        VELMO_THROW("Need a distortion map of 6 channels of 16 bits, got " + std::to_string(map.channels()) +
                    "!");
    if (height != 0 && height != map.rows)
        VELMO_THROW("Distortion data height does not fit to the expected image heigth!");
    if (width != 0 && width != map.cols)
        VELMO_THROW("Distortion data width does not fit to the expected image width!");

    std::vector<PixelCorrInfo> records;
    if (map.empty()) // rows without a pixel may be two thousand million
        return records;
    records.reserve(map.total());
    for (int r = 0; r < map.rows; ++r)
        for (int c = 0; c < map.cols; ++c) {
            const MapPixel& pixel = map.at<MapPixel>(r, c);
            const short offset = offsetOf(pixel, map.cols);
            if (!isInside(map, std::int64_t{r} * map.cols + c + offset))
                VELMO_THROW("Invalid replacement pixel data for: x=" + std::to_string(c) +
                            " y=" + std::to_string(r) + "!");
            records.emplace_back(offset, pixel[2], pixel[3], pixel[4], pixel[5]);
        }
    return records;
}

} // namespace velmo::vision
