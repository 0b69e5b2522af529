#pragma once

#include "core/Exception.h"
#include "core/Export.h"

#include <opencv2/core.hpp>

namespace velmo::vision {

/// Byte order of a colour image: red or blue first.
enum ColorType : int
{
    RGB = 0,
    BGR = 1,
};

/// Conversions between the layouts of the visual sensor, of the video encoder and of the library's colour
/// images. Each has its own coefficients and its own rounding, as the device at the other end expects them;
/// they are not inverse to one another to the last bit.
///
/// All members are static, keep nothing between calls and may run on several threads at once. Whatever is
/// refused is refused before any output changes.
///
/// What holds for the members that take images: the source is a two-dimensional image of any size, also
/// empty, whose rows may be padded (a region of a larger image). `dst` becomes an image of the source's rows
/// and columns; if it has that size already, also as a region of a larger image, its pixels are written in
/// place. It may share pixels with the source, at the cost of a copy.
class VELMO_API ColorConvert
{
public:
    using Image = cv::Mat_<cv::Vec<unsigned char, 3>>;

    /// YUYV, two bytes per pixel (Y0 U Y1 V), by way of cv::cvtColor. Chroma lags: the first pixel of a pair
    /// takes the V of the pair before, the very first one V = 0. An odd number of pixels is fine.
    /// @throws Exception  if the source has other than two bytes per pixel
    static void convertYUYVToBGR(const cv::Mat& src, Image& dst);

    /// Pairs of pixels in four bytes: chroma, first luma, chroma, second luma. The first chroma byte drives
    /// red, the other one blue. Results are cut to whole numbers, not rounded.
    /// @throws Exception  if the source has other than two bytes per pixel or an odd number of pixels
    static void convertUYVYToBGR(const cv::Mat& src, Image& dst);
    /// The same, red first.
    static void convertUYVYToRGB(const cv::Mat& src, Image& dst);

    /// Pairs of pixels in four bytes: chroma, second luma, chroma, first luma. The first chroma byte drives
    /// red, the other one blue. Results are rounded, halves up.
    /// @throws Exception  if the source has other than two bytes per pixel or an odd number of pixels
    static void convertUY1VY0ToBGR(const cv::Mat& src, Image& dst);
    /// The same, red first.
    static void convertUY1VY0ToRGB(const cv::Mat& src, Image& dst);

    /// Y, Cb, Cr to blue, green, red, rounded, halves up. In place without a copy.
    /// @throws Exception  if the source has other than three bytes per pixel
    static void convertYCbCrtoBRG(const cv::Mat& src, Image& dst);

    /// Full-range Y, Cb, Cr of a buffer of blue, green, red; three bytes per pixel each. Source and
    /// destination may be the same buffer, or overlap, at the cost of a copy.
    /// @throws Exception  if a buffer is null and `pixels` is not 0
    static void convertBGR888ToYCbCr(void* src, void* dst, unsigned long pixels);
    /// The same for red, green, blue.
    static void convertRGBToYCbCr(void* src, void* dst, unsigned long pixels);

    /// Halves the chroma of a buffer of Y, Cb, Cr: each pair of pixels becomes the four bytes Cr of the
    /// second, Y of the second, Cb of the first, Y of the first, which is a YUY2 word read backwards. A last
    /// odd pixel is left out. Source and destination may be the same buffer, or overlap.
    /// @param src     3 bytes per pixel
    /// @param dst     2 bytes per pixel
    /// @param pixels  of the source
    /// @throws Exception  if a buffer is null and there is a pair
    static void convertYCbCrtoYUV2(unsigned char* src, unsigned char* dst, unsigned long pixels);

    /// Exchanges the first and the third byte of every three, in place; any matrix, whatever its type and
    /// number of dimensions. The bytes between padded rows are left alone.
    /// @throws Exception  if the matrix does not hold a multiple of three bytes
    static void swapRB(cv::Mat& image);

    /// Hands out a table of 8 x 256 floats, entry 256 k + i being i times the k-th coefficient of the
    /// conversion to Y, Cb, Cr: red, green, blue to Y; red, green to Cb; blue to Cb and red to Cr; green,
    /// blue to Cr. The caller gives it back to the function below.
    /// @throws Exception  if `table` is null
    static void PrecalculateRgb888ToYCbCrValues(float** table);
    /// Frees such a table; null is fine.
    static void DeletePrecalculatedRgb888ToYCbCrValues(float* table);
};

/// What ColorConvert::convertUY1VY0ToBGR and convertUY1VY0ToRGB do, the order of the output being an
/// argument.
/// @param type  BGR; any other value gives red first
VELMO_API void convertUY1VY0toX(const cv::Mat& src, cv::Mat_<cv::Vec<unsigned char, 3>>& dst, ColorType type);

} // namespace velmo::vision
