#include "vision/imgproc/ColorConvert.h"

#include "core/Exception.h"
#include "vision/kernels/ColorConvertKernel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <memory>
#include <vector>

using namespace velmo::vision;
using testing::ElementsAre;
using velmo::exp::Exception;

namespace {

using Byte = unsigned char;
using Bytes = std::vector<Byte>;
using Image = ColorConvert::Image;
using Converter = void (*)(const cv::Mat&, Image&);

/// One row of packed pairs.
cv::Mat packed(const Bytes& bytes)
{
    return cv::Mat(bytes, true).reshape(2, 1);
}

Bytes bytesOf(const cv::Mat& image)
{
    const cv::Mat whole = image.clone().reshape(1, 1);
    return Bytes(whole.begin<Byte>(), whole.end<Byte>());
}

Bytes converted(Converter convert, const cv::Mat& src)
{
    Image dst;
    convert(src, dst);
    EXPECT_EQ(dst.size(), src.size());
    return bytesOf(dst);
}

cv::Mat randomImage(int rows, int cols, int channels, unsigned seed = 1)
{
    cv::Mat image(rows, cols, CV_8UC(channels));
    cv::RNG(seed).fill(image, cv::RNG::UNIFORM, 0, 256);
    return image;
}

TEST(ColorConvert, UyvyIsCutNotRounded)
{
    // 219 x 1.164 = 254.916; (160 - 16) x 1.164 = 167.616.
    EXPECT_THAT(converted(ColorConvert::convertUYVYToBGR, packed({128, 16, 128, 235, 128, 160, 128, 0})),
                ElementsAre(0, 0, 0, 254, 254, 254, 167, 167, 167, 0, 0, 0));
    // d0 = 32, d2 = -28 on luma 84 x 1.164 = 97.776: red +51.072, green -26.016 + 10.948, blue -56.504.
    const cv::Mat coloured = packed({160, 100, 100, 100});
    EXPECT_THAT(converted(ColorConvert::convertUYVYToBGR, coloured), ElementsAre(41, 82, 148, 41, 82, 148));
    EXPECT_THAT(converted(ColorConvert::convertUYVYToRGB, coloured), ElementsAre(148, 82, 41, 148, 82, 41));
}

TEST(ColorConvert, UyvyIsLimitedAtBothEnds)
{
    EXPECT_THAT(converted(ColorConvert::convertUYVYToRGB, packed({255, 235, 128, 235})),
                ElementsAre(255, 151, 254, 255, 151, 254)); // green 254.916 - 0.813 x 127 = 151.665
    EXPECT_THAT(converted(ColorConvert::convertUYVYToRGB, packed({0, 16, 128, 16})),
                ElementsAre(0, 104, 0, 0, 104, 0)); // green 0.813 x 128 = 104.064
}

TEST(ColorConvert, Uy1vy0HasItsSecondLumaFirstAndIsRounded)
{
    // 218 x 1.1644 = 253.84, which the layout above cuts to 253; 100 x 1.1644 = 116.44.
    EXPECT_THAT(converted(ColorConvert::convertUY1VY0ToRGB, packed({128, 234, 128, 116})),
                ElementsAre(116, 116, 116, 254, 254, 254));
    EXPECT_THAT(converted(ColorConvert::convertUYVYToRGB, packed({128, 234, 128, 234})),
                ElementsAre(253, 253, 253, 253, 253, 253));
    // Blue has two factors: 28 x 2.018 = 56.504 of the first pixel, 28 x 2.0172 = 56.4816 of the second.
    EXPECT_THAT(converted(ColorConvert::convertUY1VY0ToBGR, packed({128, 16, 156, 16})),
                ElementsAre(57, 0, 0, 56, 0, 0));
    EXPECT_THAT(converted(ColorConvert::convertUY1VY0ToRGB, packed({128, 16, 156, 16})),
                ElementsAre(0, 0, 57, 0, 0, 56));
}

TEST(ColorConvert, AnyTypeButBgrIsRedFirst)
{
    const cv::Mat src = packed({200, 120, 90, 60});
    Image bgr, rgb, other;
    convertUY1VY0toX(src, bgr, BGR);
    convertUY1VY0toX(src, rgb, RGB);
    convertUY1VY0toX(src, other, static_cast<ColorType>(7));
    EXPECT_EQ(bytesOf(rgb), bytesOf(other));
    ColorConvert::swapRB(other);
    EXPECT_EQ(bytesOf(bgr), bytesOf(other));
    EXPECT_NE(bytesOf(bgr), bytesOf(rgb));
}

TEST(ColorConvert, YcbcrBecomesBlueGreenRed)
{
    // Y' = 84 x 1.1644 = 97.8096; red + 1.596 x 32 = 148.88; green - 26.016 + 10.97 = 82.76; blue - 56.504.
    const cv::Mat src = (cv::Mat_<Byte>(1, 9) << 100, 100, 160, 16, 128, 128, 255, 255, 255);
    EXPECT_THAT(converted(ColorConvert::convertYCbCrtoBRG, src.reshape(3, 1)),
                ElementsAre(41, 83, 149, 0, 0, 0, 255, 125, 255)); // 278.29 - 103.25 - 49.76 = 125.28
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
    ColorConvert::convertRGBToYCbCr(nullptr, nullptr, 0);
    EXPECT_THROW(ColorConvert::convertRGBToYCbCr(nullptr, dst.data(), 1), Exception);
    EXPECT_THROW(ColorConvert::convertBGR888ToYCbCr(src.data(), nullptr, 1), Exception);
}

TEST(ColorConvert, TablesHoldTheProductsOfTheEncoder)
{
    float* table = nullptr;
    ColorConvert::PrecalculateRgb888ToYCbCrValues(&table);
    const std::unique_ptr<float, void (*)(float*)> owner(
        table, ColorConvert::DeletePrecalculatedRgb888ToYCbCrValues);
    EXPECT_EQ(table[0], 0.0f);
    EXPECT_FLOAT_EQ(table[100], 29.9f);
    EXPECT_FLOAT_EQ(table[256 + 100], 58.7f);
    EXPECT_FLOAT_EQ(table[512 + 100], 11.4f);
    EXPECT_FLOAT_EQ(table[3 * 256 + 100], 16.874f);
    EXPECT_FLOAT_EQ(table[4 * 256 + 100], 33.126f);
    EXPECT_EQ(table[5 * 256 + 255], 127.5f);
    EXPECT_FLOAT_EQ(table[6 * 256 + 100], 41.869f);
    EXPECT_FLOAT_EQ(table[7 * 256 + 255], 20.73456f);
    EXPECT_THROW(ColorConvert::PrecalculateRgb888ToYCbCrValues(nullptr), Exception);
}

TEST(ColorConvert, Yuv2TakesOneChromaOfEachPixelAndReadsBackwards)
{
    Bytes src = {10, 11, 12, 20, 21, 22, 30, 31, 32}, dst(6, 77);
    ColorConvert::convertYCbCrtoYUV2(src.data(), dst.data(), 3);
    EXPECT_THAT(dst, ElementsAre(22, 20, 11, 10, 77, 77));
    ColorConvert::convertYCbCrtoYUV2(src.data(), dst.data(), 1);
    ColorConvert::convertYCbCrtoYUV2(nullptr, nullptr, 1);
    EXPECT_EQ(dst[0], 22);
    EXPECT_THROW(ColorConvert::convertYCbCrtoYUV2(src.data(), nullptr, 2), Exception);
}

TEST(ColorConvert, YuyvChromaLagsByHalfAPair)
{
    const cv::Mat src = packed({100, 120, 101, 140, 50, 90, 51, 200});
    const cv::Mat lumaCrCb = (cv::Mat_<Byte>(1, 12) << 100, 0, 120, 101, 140, 120, 50, 140, 90, 51, 200, 90);
    cv::Mat expected;
    cv::cvtColor(lumaCrCb.reshape(3, 1), expected, cv::COLOR_YCrCb2BGR);
    EXPECT_EQ(converted(ColorConvert::convertYUYVToBGR, src), bytesOf(expected));
}

TEST(ColorConvert, YuyvInBlocksIsYuyvAtOnce)
{
    // Rows of odd length begin in the middle of a pair; long ones are blocks of their own.
    for (const cv::Size size : {cv::Size(640, 40), cv::Size(333, 77), cv::Size(5000, 3), cv::Size(1, 9),
                                cv::Size(2, 5000), cv::Size(4095, 5), cv::Size(17, 1)}) {
        const cv::Mat src = randomImage(size.height, size.width, 2);
        cv::Mat lumaCrCb(size, CV_8UC3), expected;
        lagYuyv.plain(src.data, lumaCrCb.data, 0, src.total());
        cv::cvtColor(lumaCrCb, expected, cv::COLOR_YCrCb2BGR);
        EXPECT_EQ(converted(ColorConvert::convertYUYVToBGR, src), bytesOf(expected)) << size;
    }
}

TEST(ColorConvert, SwapsTheOuterBytesOfEveryThree)
{
    cv::Mat image = (cv::Mat_<Byte>(2, 6) << 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12);
    image = image.reshape(3);
    ColorConvert::swapRB(image);
    EXPECT_THAT(bytesOf(image), ElementsAre(3, 2, 1, 6, 5, 4, 9, 8, 7, 12, 11, 10));
    cv::Mat pairs = (cv::Mat_<Byte>(1, 6) << 1, 2, 3, 4, 5, 6);
    pairs = pairs.reshape(2);
    ColorConvert::swapRB(pairs); // of three times two bytes
    EXPECT_THAT(bytesOf(pairs), ElementsAre(3, 2, 1, 6, 5, 4));

    cv::Mat none;
    ColorConvert::swapRB(none);
    cv::Mat two(1, 1, CV_8UC2, cv::Scalar(1, 2));
    try {
        ColorConvert::swapRB(two);
        FAIL() << "two bytes were taken for a pixel";
    } catch (const Exception& error) {
        EXPECT_STREQ(error.what(), "Image buffer size does not fit to a 24BIT color image!");
        EXPECT_THAT(error.location(), testing::HasSubstr("swapRB(..)"));
    }
    EXPECT_EQ(two.at<cv::Vec2b>(0), cv::Vec2b(1, 2));
}

TEST(ColorConvert, SwapLeavesPaddingAlone)
{
    for (const int channels : {3, 1}) { // single bytes: groups of three reach from row to row
        cv::Mat large = randomImage(8, 19, channels);
        const cv::Mat before = large.clone();
        const cv::Rect middle(4, 1, 10, 6);
        cv::Mat view = large(middle), expected = view.clone();
        swapRb.plain(expected.data, expected.data, expected.total() * expected.elemSize() / 3);
        ColorConvert::swapRB(view);
        EXPECT_EQ(bytesOf(large(middle)), bytesOf(expected));
        before(middle).copyTo(large(middle));
        EXPECT_EQ(bytesOf(large), bytesOf(before));
    }
}

struct ImageConverter
{
    const char* name;
    Converter convert;
    int channels;
    bool bPairs;
};

const ImageConverter imageConverters[] = {
    {"YuyvToBgr", ColorConvert::convertYUYVToBGR, 2, false},
    {"UyvyToBgr", ColorConvert::convertUYVYToBGR, 2, true},
    {"UyvyToRgb", ColorConvert::convertUYVYToRGB, 2, true},
    {"Uy1vy0ToBgr", ColorConvert::convertUY1VY0ToBGR, 2, true},
    {"Uy1vy0ToRgb", ColorConvert::convertUY1VY0ToRGB, 2, true},
    {"YcbcrToBgr", ColorConvert::convertYCbCrtoBRG, 3, false},
};

class EveryImageConverter : public testing::TestWithParam<ImageConverter>
{
protected:
    Bytes of(const cv::Mat& src) const { return converted(GetParam().convert, src); }
};

TEST_P(EveryImageConverter, RefusesOtherPixelsBeforeTheOutputChanges)
{
    Image dst(1, 2, cv::Vec3b(1, 2, 3));
    EXPECT_THROW(GetParam().convert(randomImage(2, 4, GetParam().channels + 1), dst), Exception);
    const int sizes[] = {2, 2, 2};
    EXPECT_THROW(GetParam().convert(cv::Mat(3, sizes, CV_8UC(GetParam().channels)), dst), Exception);
    const cv::Mat odd = randomImage(3, 5, GetParam().channels);
    if (GetParam().bPairs) {
        EXPECT_THROW(GetParam().convert(odd, dst), Exception);
    }
    EXPECT_THAT(bytesOf(dst), ElementsAre(1, 2, 3, 1, 2, 3));
    GetParam().convert(cv::Mat(), dst);
    EXPECT_TRUE(dst.empty());
}

TEST_P(EveryImageConverter, TakesPaddedRowsAndWritesIntoViews)
{
    for (const cv::Size size : {cv::Size(20, 3), cv::Size(5, 4), cv::Size(33, 2), cv::Size(1, 2)}) {
        const cv::Rect middle({3, 1}, size);
        const cv::Mat source = randomImage(size.height + 2, size.width + 5, GetParam().channels);
        const Bytes expected = of(source(middle).clone());
        EXPECT_EQ(of(source(middle)), expected) << size;

        Image large(size.height + 2, size.width + 5, cv::Vec3b(7, 7, 7));
        Image view = large(middle);
        GetParam().convert(source(middle), view);
        EXPECT_EQ(bytesOf(large(middle)), expected) << size;
        GetParam().convert(source(middle).clone(), view);
        EXPECT_EQ(bytesOf(large(middle)), expected) << size;
        view = cv::Vec3b(7, 7, 7);
        EXPECT_EQ(cv::norm(large, Image(large.size(), cv::Vec3b(7, 7, 7)), cv::NORM_INF), 0) << size;
    }
}

INSTANTIATE_TEST_SUITE_P(ColorConvert, EveryImageConverter, testing::ValuesIn(imageConverters),
                         [](const auto& converter) { return converter.param.name; });

TEST(ColorConvert, SourceAndDestinationMayShareTheirPixels)
{
    Image image = randomImage(9, 40, 3);
    const Bytes expected = converted(ColorConvert::convertYCbCrtoBRG, image.clone());
    Image shifted = image.clone();
    ColorConvert::convertYCbCrtoBRG(image, image);
    EXPECT_EQ(bytesOf(image), expected);

    const cv::Rect from(0, 0, 30, 8), to(5, 1, 30, 8);
    const Bytes moved = converted(ColorConvert::convertYCbCrtoBRG, shifted(from).clone());
    Image view = shifted(to);
    ColorConvert::convertYCbCrtoBRG(shifted(from), view);
    EXPECT_EQ(bytesOf(view), moved);
}

} // namespace
