#include "vision/imgproc/ColorConvert.h"

#include "core/Exception.h"
#include "vision/kernels/ColorConvertKernel.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <memory>
#include <string>

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

void checkBuffers(const void* src, const void* dst, unsigned long pixels)
{
    if (pixels > 0 && (src == nullptr || dst == nullptr))
        VELMO_THROW("Need two buffers of " + std::to_string(pixels) + " pixels, got a null pointer!");
}

/// Whether both are regions of one image that are not the same region: writing one pixel may then change
/// another one that is still to be read.
bool overlapsElsewhere(const cv::Mat& a, const cv::Mat& b)
{
    return a.datastart == b.datastart && (a.data != b.data || a.step != b.step);
}

/// Converts `src`, which has been checked. Pairs may reach from one row into the next.
void convert(const cv::Mat& src, Image& dst, ColorKernels::Convert kernel, bool bPairs)
{
    cv::Mat in = src; // `dst` may be the same object
    dst.create(in.rows, in.cols);
    if (in.empty())
        return;
    if (overlapsElsewhere(in, dst))
        in = in.clone();
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

void convertPairs(const cv::Mat& src, Image& dst, ColorKernels::Convert kernel)
{
    checkPairs(src);
    convert(src, dst, kernel, true);
}

} // namespace

void ColorConvert::convertYUYVToBGR(const cv::Mat& src, Image& dst)
{
    checkPixels(src, 2);
    const cv::Mat in = src.isContinuous() ? src : src.clone();
    dst.create(in.rows, in.cols);
    if (in.empty())
        return;
    // A few rows at a time: what lies between the two steps stays in the cache, and images this small OpenCV
    // does not spread over threads.
    constexpr int blockPixels = 4096;
    const int blockRows = std::clamp(blockPixels / in.cols, 1, in.rows);
    Image lumaChroma(blockRows, in.cols);
    for (int r = 0; r < in.rows; r += blockRows) {
        const cv::Range rows(r, std::min(r + blockRows, in.rows));
        const cv::Mat part = lumaChroma.rowRange(0, rows.size());
        fastColorKernels.lagYuyv(in.data, part.data, static_cast<std::size_t>(r) * in.cols, part.total());
        cv::Mat out = dst.rowRange(rows);
        cv::cvtColor(part, out, cv::COLOR_YCrCb2BGR);
    }
}

void ColorConvert::convertUYVYToBGR(const cv::Mat& src, Image& dst)
{
    convertPairs(src, dst, fastColorKernels.uyvyToBgr);
}

void ColorConvert::convertUYVYToRGB(const cv::Mat& src, Image& dst)
{
    convertPairs(src, dst, fastColorKernels.uyvyToRgb);
}

void convertUY1VY0toX(const cv::Mat& src, Image& dst, ColorType type)
{
    convertPairs(src, dst, type == BGR ? fastColorKernels.uy1vy0ToBgr : fastColorKernels.uy1vy0ToRgb);
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
    convert(src, dst, fastColorKernels.ycbcrToBgr, false);
}

void ColorConvert::convertBGR888ToYCbCr(void* src, void* dst, unsigned long pixels)
{
    checkBuffers(src, dst, pixels);
    fastColorKernels.bgrToYcbcr(static_cast<Byte*>(src), static_cast<Byte*>(dst), pixels);
}

void ColorConvert::convertRGBToYCbCr(void* src, void* dst, unsigned long pixels)
{
    checkBuffers(src, dst, pixels);
    fastColorKernels.rgbToYcbcr(static_cast<Byte*>(src), static_cast<Byte*>(dst), pixels);
}

void ColorConvert::convertYCbCrtoYUV2(unsigned char* src, unsigned char* dst, unsigned long pixels)
{
    checkBuffers(src, dst, pixels / 2);
    fastColorKernels.ycbcrToYuv2(src, dst, pixels);
}

void ColorConvert::swapRB(cv::Mat& image)
{
    if (image.dims == 0)
        return;
    const std::size_t bytes = image.total() * image.elemSize();
    if (bytes % 3 != 0)
        VELMO_THROW("Image buffer size does not fit to a 24BIT color image!");
    if (image.isContinuous()) {
        fastColorKernels.swapRb(image.data, image.data, bytes / 3);
        return;
    }
    // A group of three may reach from one row into the next.
    const cv::Mat whole = image.clone();
    fastColorKernels.swapRb(whole.data, whole.data, bytes / 3);
    whole.copyTo(image);
}

void ColorConvert::PrecalculateRgb888ToYCbCrValues(float** table)
{
    if (table == nullptr)
        VELMO_THROW("Need a place for the table, got a null pointer!");
    auto values = std::make_unique<float[]>(encodeTables * 256);
    for (std::size_t k = 0; k < encodeTables; ++k)
        for (std::size_t i = 0; i < 256; ++i)
            values[256 * k + i] = static_cast<float>(i) * encodeFactors[k];
    *table = values.release();
}

void ColorConvert::DeletePrecalculatedRgb888ToYCbCrValues(float* table)
{
    delete[] table;
}

} // namespace velmo::vision
