#include "vision/imgproc/ColorConvert.h"

#include "tests/Support.h"

#include <opencv2/imgproc.hpp>

using namespace velmo::vision;

using Byte = unsigned char;
using Bytes = std::vector<Byte>;
using Image = ColorConvert::Image;
using Converter = void (*)(const cv::Mat&, Image&);

/// One row of pixels of that many bytes.
const auto row = [](const Bytes& bytes, int channels) { return cv::Mat(bytes, true).reshape(channels, 1); };

const auto bytesOf = [](const cv::Mat& image) {
    const cv::Mat whole = image.clone().reshape(1, 1);
    return Bytes(whole.begin<Byte>(), whole.end<Byte>());
};

const auto converted = [](Converter convert, const Bytes& bytes, int channels = 2) {
    Image dst;
    convert(row(bytes, channels), dst);
    return bytesOf(dst);
};

const Converter yuyvToBgr = ColorConvert::convertYUYVToBGR, uyvyToBgr = ColorConvert::convertUYVYToBGR,
                uyvyToRgb = ColorConvert::convertUYVYToRGB, uy1vy0ToBgr = ColorConvert::convertUY1VY0ToBGR,
                uy1vy0ToRgb = ColorConvert::convertUY1VY0ToRGB, ycbcrToBgr = ColorConvert::convertYCbCrtoBRG;

TEST(ColorConvert, CutsUyvyAndRoundsTheOthersAndLimitsAtBothEnds)
{
    const std::tuple<Converter, int, Bytes, Bytes> cases[] = {
        // 219 x 1.164 = 254.916; (160 - 16) x 1.164 = 167.616.
        {uyvyToBgr,
         2,
         {128, 16, 128, 235, 128, 160, 128, 0},
         {0, 0, 0, 254, 254, 254, 167, 167, 167, 0, 0, 0}},
        // d0 = 32, d2 = -28 on luma 84 x 1.164 = 97.776: red +51.072, green -26.016 + 10.948, blue -56.504.
        {uyvyToBgr, 2, {160, 100, 100, 100}, {41, 82, 148, 41, 82, 148}},
        {uyvyToRgb, 2, {160, 100, 100, 100}, {148, 82, 41, 148, 82, 41}},
        // Green: 254.916 - 0.813 x 127 = 151.665; 0.813 x 128 = 104.064.
        {uyvyToRgb, 2, {255, 235, 128, 235}, {255, 151, 254, 255, 151, 254}},
        {uyvyToRgb, 2, {0, 16, 128, 16}, {0, 104, 0, 0, 104, 0}},
        // 218 x 1.1644 = 253.84, which is cut to 253 above; 100 x 1.1644 = 116.44. The second luma is first.
        {uyvyToRgb, 2, {128, 234, 128, 234}, {253, 253, 253, 253, 253, 253}},
        {uy1vy0ToRgb, 2, {128, 234, 128, 116}, {116, 116, 116, 254, 254, 254}},
        // Blue has two factors: 28 x 2.018 = 56.504 of the first pixel, 28 x 2.0172 = 56.4816 of the second.
        {uy1vy0ToBgr, 2, {128, 16, 156, 16}, {57, 0, 0, 56, 0, 0}},
        {uy1vy0ToRgb, 2, {128, 16, 156, 16}, {0, 0, 57, 0, 0, 56}},
        // Y' = 84 x 1.1644 = 97.8096; red + 1.596 x 32 = 148.88; green - 26.016 + 10.97 = 82.76; blue
        // - 56.504.
        // The last: green 278.29 - 103.25 - 49.76 = 125.28.
        {ycbcrToBgr, 3, {100, 100, 160, 16, 128, 128, 255, 255, 255}, {41, 83, 149, 0, 0, 0, 255, 125, 255}}};
    for (const auto& [convert, channels, from, to] : cases)
        EXPECT_EQ(converted(convert, from, channels), to) << testing::PrintToString(from);
    for (const auto& [type, first] :
         {std::pair(BGR, 57), {RGB, 0}, {ColorType(7), 0}}) { // any other is red first
        Image dst;
        convertUY1VY0toX(row({128, 16, 156, 16}, 2), dst, type);
        EXPECT_EQ(dst(0, 0)[0], first) << type;
    }
}

TEST(ColorConvert, ColoursBecomeYcbcr)
{
    Bytes src = {0, 0, 0, 255, 255, 255, 10, 100, 200}, dst(9);
    // Red 200, green 100, blue 10: Y 119.64 + 0.499; Cb -33.748 - 33.126 + 5 + 128 = 66.126;
    // Cr 100 - 41.869 - 0.813 + 128 = 185.318.
    ColorConvert::convertBGR888ToYCbCr(src.data(), dst.data(), 3);
    EXPECT_THAT(dst, ElementsAre(0, 128, 128, 255, 128, 128, 120, 66, 185));
    std::swap(src[6], src[8]);
    ColorConvert::convertRGBToYCbCr(src.data(), src.data(), 3); // in place
    EXPECT_EQ(src, dst);
}

TEST(ColorConvert, TablesHoldTheProductsOfTheEncoder)
{
    float* table = nullptr;
    ColorConvert::PrecalculateRgb888ToYCbCrValues(&table);
    const std::unique_ptr<float, void (*)(float*)> owner(
        table, ColorConvert::DeletePrecalculatedRgb888ToYCbCrValues);
    const float factors[] = {0.299f, 0.587f, 0.114f, 0.16874f, 0.33126f, 0.5f, 0.41869f, 0.081312f};
    for (int k = 0; k < 8; ++k)
        for (int i = 0; i < 256; ++i)
            ASSERT_EQ(table[256 * k + i], static_cast<float>(i) * factors[k]) << k << ", " << i;
    EXPECT_THROW(ColorConvert::PrecalculateRgb888ToYCbCrValues(nullptr), Exception);
}

TEST(ColorConvert, Yuv2TakesOneChromaOfEachPixelAndReadsBackwards)
{
    Bytes src = {10, 11, 12, 20, 21, 22, 30, 31, 32}, dst(6, 77);
    ColorConvert::convertYCbCrtoYUV2(src.data(), dst.data(), 3);
    EXPECT_THAT(dst, ElementsAre(22, 20, 11, 10, 77, 77));
    dst[0] = 77;
    ColorConvert::convertYCbCrtoYUV2(src.data(), dst.data(), 1);
    EXPECT_EQ(dst[0], 77);
}

TEST(ColorConvert, BuffersMayOverlapButNotBeNull)
{
    const auto yuv2 = [](void* src, void* dst, unsigned long pixels) {
        ColorConvert::convertYCbCrtoYUV2(static_cast<Byte*>(src), static_cast<Byte*>(dst), pixels);
    };
    using Buffers = void (*)(void*, void*, unsigned long);
    for (const Buffers convert : {Buffers(ColorConvert::convertBGR888ToYCbCr),
                                  Buffers(ColorConvert::convertRGBToYCbCr), Buffers(yuv2)}) {
        Bytes all(900), expected(300);
        std::iota(all.begin(), all.end(), Byte(3));
        convert(all.data() + 300, expected.data(), 100);
        const std::size_t written = convert == Buffers(yuv2) ? 200 : 300;
        for (const std::ptrdiff_t shift : {-300, -299, -3, -1, 0, 1, 3, 150, 299, 300}) {
            Bytes buffer = all;
            Byte* const dst = buffer.data() + 300 + shift;
            convert(buffer.data() + 300, dst, 100);
            ASSERT_TRUE(std::equal(dst, dst + written, expected.begin())) << shift;
        }
        convert(nullptr, nullptr, 0);
        EXPECT_THROW(convert(nullptr, all.data(), 2), Exception);
        EXPECT_THROW(convert(all.data(), nullptr, 2), Exception);
    }
    yuv2(nullptr, nullptr, 1); // not a pair
}

TEST(ColorConvert, YuyvChromaLagsByHalfAPair)
{
    cv::Mat wanted;
    cv::cvtColor(row({100, 0, 120, 101, 140, 120, 50, 140, 90, 51, 200, 90}, 3), wanted, cv::COLOR_YCrCb2BGR);
    EXPECT_EQ(converted(yuyvToBgr, {100, 120, 101, 140, 50, 90, 51, 200}), bytesOf(wanted));

    // In blocks it is what it is at once. Rows of odd length begin in the middle of a pair; long ones are
    // several.
    for (const cv::Size size :
         {cv::Size(640, 40), {333, 77}, {5000, 3}, {9001, 1}, {1, 9}, {2, 5000}, {4095, 5}, {17, 1}}) {
        cv::Mat src(size, CV_8UC2), lumaCrCb(size, CV_8UC3);
        cv::randu(src, 0, 256);
        Byte chroma[2] = {0, 0};
        for (std::size_t i = 0; i < src.total(); ++i) {
            chroma[i % 2] = src.data[2 * i + 1];
            const Byte pixel[] = {src.data[2 * i], chroma[1], chroma[0]};
            std::copy_n(pixel, 3, lumaCrCb.data + 3 * i);
        }
        Image dst;
        yuyvToBgr(src, dst);
        cv::cvtColor(lumaCrCb, wanted, cv::COLOR_YCrCb2BGR);
        EXPECT_TRUE(same(dst, wanted)) << size;
    }
}

TEST(ColorConvert, SwapsTheOuterBytesOfEveryThree)
{
    for (const int channels :
         {3, 2, 1}) { // groups reach from pixel to pixel and from row to row, not into padding
        cv::Mat large(4, 24 / channels, CV_8UC(channels), cv::Scalar::all(99));
        cv::Mat image = large(cv::Rect(0, 1, 12 / channels, 2));
        for (int n = 0; n < 24; ++n)
            image.ptr(n / 12)[n % 12] = static_cast<Byte>(n);
        ColorConvert::swapRB(image);
        for (int n = 0; n < 24; ++n)
            EXPECT_EQ(image.ptr(n / 12)[n % 12], n / 3 * 3 + 2 - n % 3) << channels;
        image.setTo(cv::Scalar::all(99));
        EXPECT_TRUE(same(large, cv::Mat(large.size(), large.type(), cv::Scalar::all(99))));
    }
    cv::Mat none, two(1, 1, CV_8UC2, cv::Scalar(1, 2));
    ColorConvert::swapRB(none);
    EXPECT_EQ(refusal([&] { ColorConvert::swapRB(two); }),
              (Refusal{"Image buffer size does not fit to a 24BIT color image!", "swapRB"}));
    EXPECT_THAT(bytesOf(two), ElementsAre(1, 2));
}

TEST(ColorConvert, RefusesOtherPixelsBeforeTheOutputChanges)
{
    for (const auto& [name, convert, channels, pairs] : {std::tuple("yuyv", yuyvToBgr, 2, false),
                                                         {"uyvy", uyvyToBgr, 2, true},
                                                         {"uyvy to RGB", uyvyToRgb, 2, true},
                                                         {"uy1vy0", uy1vy0ToBgr, 2, true},
                                                         {"uy1vy0 to RGB", uy1vy0ToRgb, 2, true},
                                                         {"ycbcr", ycbcrToBgr, 3, false}}) {
        Image dst(1, 2, cv::Vec3b(1, 2, 3));
        const int sizes[] = {2, 2, 2};
        EXPECT_THROW(convert(cv::Mat(2, 4, CV_8UC(channels + 1)), dst), Exception);
        EXPECT_THROW(convert(cv::Mat(3, sizes, CV_8UC(channels)), dst), Exception);
        const cv::Mat odd(3, 5, CV_8UC(channels), cv::Scalar::all(0));
        EXPECT_EQ(refusal([&](Converter run) { run(odd, dst); }, convert) != Refusal{}, pairs) << name;
        const Bytes untouched{1, 2, 3, 1, 2, 3};
        EXPECT_EQ(bytesOf(dst) == untouched, pairs) << name;
    }
}
