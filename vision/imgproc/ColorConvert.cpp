#include "vision/imgproc/ColorConvert.h"

#include "core/Exception.h"
#include "core/memory/Overlap.h"
#include "vision/kernels/ColorConvertKernel.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace velmo::vision {
namespace {

using Image = ColorConvert::Image;
using Byte = unsigned char;

void checkPixels(const cv::Mat& src, std::size_t bytes)
{
    if (src.dims > 2)
        VELMO_THROW("Need an image of 2 dimensions, got " + std::to_string(src.dims) + "!");
    if (!src.empty() && src.elemSize() != bytes)
        VELMO_THROW("Need " + std::to_string(bytes) + " bytes per pixel, got " +
                    std::to_string(src.elemSize()) + "!");
}

void checkPairs(const cv::Mat& src)
{
    checkPixels(src, 2);
    if (src.total() % 2 != 0)
        VELMO_THROW("Need an even number of pixels, got " + std::to_string(src.total()) + "!");
}

/// Converts a buffer of three bytes per pixel to one of `bytesOut`.
void convertBuffer(const void* src, void* dst, unsigned long pixels, std::size_t bytesOut,
                   ConvertPixels* kernel)
{
    if (pixels == 0)
        return;
    if (src == nullptr || dst == nullptr)
        VELMO_THROW("Need two buffers of " + std::to_string(pixels) + " pixels, got a null pointer!");
    const auto* in = static_cast<const Byte*>(src);
    std::vector<Byte> copy;
    if (src != dst && exp::overlap({src, 3 * pixels}, {dst, bytesOut * pixels})) {
        copy.assign(in, in + 3 * pixels);
        in = copy.data();
    }
    kernel(in, static_cast<Byte*>(dst), pixels);
}

/// Converts `src`, which has been checked. Pairs may reach from one row into the next.
void convert(const cv::Mat& src, Image& dst, ConvertPixels* kernel, bool bPairs)
{
    const cv::Mat image = src; // `dst` may be the same object
    dst.create(image.rows, image.cols);
    if (image.empty())
        return;
    const cv::Mat in = exp::untouched(image, dst);
    if (in.isContinuous() && dst.isContinuous()) {
        kernel(in.data, dst.data, in.total());
    } else if (!bPairs || in.cols % 2 == 0) {
        for (int r = 0; r < in.rows; ++r)
            kernel(in.ptr(r), dst.ptr(r), static_cast<std::size_t>(in.cols));
    } else {
        const cv::Mat whole = in.isContinuous() ? in : in.clone();
        Image out(in.rows, in.cols);
        kernel(whole.data, out.data, whole.total());
        out.copyTo(dst);
    }
}

void convertPairs(const cv::Mat& src, Image& dst, ConvertPixels* kernel)
{
    checkPairs(src);
    convert(src, dst, kernel, true);
}

} // namespace

void ColorConvert::convertYUYVToBGR(const cv::Mat& src, Image& dst)
{
    checkPixels(src, 2);
    const cv::Mat image = src; // `dst` may be the same object
    dst.create(image.rows, image.cols);
    if (image.empty())
        return;
    const cv::Mat apart = exp::untouched(image, dst), in = apart.isContinuous() ? apart : apart.clone();
    // In blocks of some rows, or of a part of a long one: what lies between the two steps stays in the cache,
    // and images this small OpenCV does not spread over threads.
    constexpr int blockPixels = 4096;
    unsigned char lumaChroma[3 * blockPixels];
    const int width = std::min(in.cols, blockPixels), height = std::clamp(blockPixels / in.cols, 1, in.rows);
    for (int r = 0; r < in.rows; r += height)
        for (int c = 0; c < in.cols; c += width) {
            cv::Mat out =
                dst(cv::Range(r, std::min(r + height, in.rows)), cv::Range(c, std::min(c + width, in.cols)));
            const std::size_t first = static_cast<std::size_t>(r) * in.cols + static_cast<std::size_t>(c);
            lagYuyv(in.data, lumaChroma, first, out.total());
            cv::cvtColor(cv::Mat(out.size(), CV_8UC3, lumaChroma), out, cv::COLOR_YCrCb2BGR);
        }
}

void ColorConvert::convertUYVYToBGR(const cv::Mat& src, Image& dst)
{
    convertPairs(src, dst, uyvyToBgr.fast);
}

void ColorConvert::convertUYVYToRGB(const cv::Mat& src, Image& dst)
{
    convertPairs(src, dst, uyvyToRgb.fast);
}

void convertUY1VY0toX(const cv::Mat& src, Image& dst, ColorType type)
{
    convertPairs(src, dst, type == BGR ? uy1vy0ToBgr.fast : uy1vy0ToRgb.fast);
}

void ColorConvert::convertUY1VY0ToBGR(const cv::Mat& src, Image& dst)
{
    convertUY1VY0toX(src, dst, BGR);
}

void ColorConvert::convertUY1VY0ToRGB(const cv::Mat& src, Image& dst)
{
    convertUY1VY0toX(src, dst, RGB);
}

void ColorConvert::convertYCbCrtoBRG(const cv::Mat& src, Image& dst)
{
    checkPixels(src, 3);
    convert(src, dst, ycbcrToBgr.fast, false);
}

void ColorConvert::convertBGR888ToYCbCr(void* src, void* dst, unsigned long pixels)
{
    convertBuffer(src, dst, pixels, 3, bgrToYcbcr.fast);
}

void ColorConvert::convertRGBToYCbCr(void* src, void* dst, unsigned long pixels)
{
    convertBuffer(src, dst, pixels, 3, rgbToYcbcr.fast);
}

void ColorConvert::convertYCbCrtoYUV2(unsigned char* src, unsigned char* dst, unsigned long pixels)
{
    convertBuffer(src, dst, pixels / 2 * 2, 2, ycbcrToYuv2.fast);
}

void ColorConvert::swapRB(cv::Mat& image)
{
    if (image.dims == 0)
        return;
    const std::size_t bytes = image.total() * image.elemSize();
    if (bytes % 3 != 0)
        VELMO_THROW("Image buffer size does not fit to a 24BIT color image!");
    if (image.isContinuous()) {
        swapRb(image.data, image.data, bytes / 3);
        return;
    }
    // A group of three may reach from one row into the next.
    const cv::Mat whole = image.clone();
    swapRb(whole.data, whole.data, bytes / 3);
    whole.copyTo(image);
}

void ColorConvert::PrecalculateRgb888ToYCbCrValues(float** table)
{
    if (table == nullptr)
        VELMO_THROW("Need a place for the table, got a null pointer!");
    auto values = std::make_unique<float[]>(encodeTables * 256);
    fillEncodeTables(values.get());
    *table = values.release();
}

void ColorConvert::DeletePrecalculatedRgb888ToYCbCrValues(float* table)
{
    delete[] table;
}

} // namespace velmo::vision
