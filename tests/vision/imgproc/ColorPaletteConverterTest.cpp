#include "vision/imgproc/ColorPaletteConverter.h"

#include "core/Exception.h"

#include <gtest/gtest.h>

#include <utility>

using namespace velmo::vision;

namespace {

using Frame = ColorPaletteConverter::Frame;
using Picture = ColorPaletteConverter::Picture;
using Air = ColorPaletteConverter::AirTemperature;
using Humidity = ColorPaletteConverter::AirHumidity;
using Palette = std::vector<unsigned char>;
using Colors = std::vector<unsigned>;

/// Three points that a span of three values shows as they are.
const Palette threePoints = {1, 2, 3, 11, 12, 13, 21, 22, 23};

Frame frameOf(int rows, int cols, const std::vector<int>& values)
{
    Frame frame(rows, cols);
    std::copy(values.begin(), values.end(), frame.begin());
    return frame;
}

/// The pixels as 0xAABBCC, the first byte in memory on top.
Colors colorsOf(const Picture& picture)
{
    Colors colors;
    for (const auto& pixel : picture)
        colors.push_back(pixel[0] * 0x10000u + pixel[1] * 0x100u + pixel[2]);
    return colors;
}

Colors palettized(ColorPaletteConverter& converter, const Frame& frame, int min, int max, bool rebuild,
                  Palette palette = threePoints)
{
    Picture picture;
    converter.palletize(frame, picture, static_cast<unsigned short>(min), static_cast<unsigned short>(max),
                        rebuild, palette);
    return colorsOf(picture);
}

Colors humid(ColorPaletteConverter& converter, const Frame& frame, float air, float percent, bool rebuild,
             Palette palette)
{
    Picture picture;
    converter.palletizeHumid(frame, picture, Air(air), Humidity(percent), rebuild, palette);
    return colorsOf(picture);
}

} // namespace

TEST(ColorPaletteConverter, ShowsTheHottestValueInTheSecondHottestColor)
{
    const Frame frame = frameOf(2, 3, {0, 10, 11, 12, 13, 65535});
    const Colors rgb = {0x010203, 0x010203, 0x0b0c0d, 0x0b0c0d, 0x0b0c0d, 0x0b0c0d};
    const Colors bgr = {0x030201, 0x030201, 0x0d0c0b, 0x0d0c0b, 0x0d0c0b, 0x0d0c0b};
    ColorPaletteConverter inRgb(false), inBgr(true);
    const Frame eight = frameOf(2, 4, {0, 10, 11, 12, 13, 65535, 0, 0});
    Colors tail = rgb;
    tail.insert(tail.end(), {0x010203, 0x010203});
    EXPECT_EQ(palettized(inRgb, eight, 10, 12, true), tail);
    EXPECT_EQ(palettized(inBgr, eight, 10, 12, true)[2], 0x0d0c0bu);

    // Six pixels take the slow path: it reaches the hottest colour, and clamps.
    Colors slow = rgb;
    slow[3] = slow[4] = slow[5] = 0x151617;
    EXPECT_EQ(palettized(inRgb, frame, 10, 12, false), slow);
    slow = bgr;
    slow[3] = slow[4] = slow[5] = 0x171615;
    EXPECT_EQ(palettized(inBgr, frame, 10, 12, true), slow);
}

TEST(ColorPaletteConverter, StretchesLinearlyBetweenThePoints)
{
    // 256 entries of two points: a quarter of the way lies outside the centres of the points at either end.
    // Entry 64 is 1/256 of the way from one to the other, entry 127 127/256.
    const Palette gray = {0, 0, 0, 255, 255, 255};
    ColorPaletteConverter converter(false);
    const Frame frame = frameOf(2, 4, {0, 63, 64, 127, 128, 192, 254, 255});
    EXPECT_EQ(palettized(converter, frame, 0, 255, true, gray),
              (Colors{0, 0, 0x010101, 0x7f7f7f, 0x808080, 0xffffff, 0xffffff, 0xffffff}));
}

TEST(ColorPaletteConverter, TakesOneColorForASpanOfOne)
{
    const Palette one = {7, 8, 9};
    ColorPaletteConverter converter(false);
    EXPECT_EQ(palettized(converter, frameOf(1, 4, {0, 99, 100, 65535}), 100, 100, true, one),
              (Colors(4, 0x070809)));
    EXPECT_EQ(palettized(converter, frameOf(1, 4, {0, 1, 2, 65535}), 0, 65535, true, one),
              (Colors(4, 0x070809)));
}

TEST(ColorPaletteConverter, KeepsItsColorsUntilTheNextBuild)
{
    ColorPaletteConverter converter(false);
    const Frame frame = frameOf(1, 4, {10, 11, 12, 13});
    const Colors first = palettized(converter, frame, 10, 13, true);
    EXPECT_EQ(palettized(converter, frame, 0, 1, false, {9, 9, 9}), first);
    palettized(converter, frameOf(1, 1, {0}), 0, 1, true); // the slow path leaves the table alone
    EXPECT_EQ(palettized(converter, frame, 0, 1, false, {9, 9, 9}), first);
    EXPECT_EQ(palettized(converter, frame, 10, 13, true, {9, 9, 9}), Colors(4, 0x090909));
    EXPECT_EQ(palettized(converter, frame, 10, 13, true), first);
}

TEST(ColorPaletteConverter, PaintsRegionsOverThePaletteFromTheNextBuildOn)
{
    const Frame frame = frameOf(2, 4, {9, 10, 11, 12, 13, 14, 15, 65535});
    const unsigned p0 = 0x010203, p1 = 0x0b0c0d;
    ColorPaletteConverter converter(false);
    palettized(converter, frame, 10, 12, true);
    converter.createColorRegion(7, 13, 11, 0xff112233);
    converter.createColorRegion(3, 65535, 12, 0x445566);
    converter.createColorRegion(9, 8, 9, 0x777777); // upper < lower: ignored
    EXPECT_EQ(palettized(converter, frame, 10, 12, false), (Colors{p0, p0, p1, p1, p1, p1, p1, p1}));
    EXPECT_EQ(palettized(converter, frame, 10, 12, true),
              (Colors{p0, p0, 0x112233, 0x112233, 0x112233, 0x445566, 0x445566, 0x445566}));

    converter.createColorRegion(7, 10, 10, 0x010101);
    converter.deleteColorRegion(3);
    converter.deleteColorRegion(42);
    EXPECT_EQ(palettized(converter, frame, 10, 12, true), (Colors{p0, 0x010101, p1, p1, p1, p1, p1, p1}));

    ColorPaletteConverter bgr(true);
    bgr.createColorRegion(0, 65535, 0, 0xaabbcc);
    EXPECT_EQ(palettized(bgr, frame, 10, 12, true), Colors(8, 0xccbbaa));
}

TEST(ColorPaletteConverter, TakesBandsOnTheSlowPathRelativeToTheRange)
{
    const Frame frame = frameOf(1, 3, {10, 11, 12});
    ColorPaletteConverter rgb(false), bgr(true);
    for (ColorPaletteConverter* converter : {&rgb, &bgr})
        converter->createColorRegion(1, 2, 1, 0x112233);
    EXPECT_EQ(palettized(rgb, frame, 10, 12, true), (Colors{0x010203, 0x112233, 0x112233}));
    // Red and blue of the region exchanged against the fast path, those of the palette not.
    EXPECT_EQ(palettized(bgr, frame, 10, 12, true), (Colors{0x030201, 0x112233, 0x112233}));

    rgb.createColorRegion(2, 3, 0, 0x445566); // leaves the three entries
    EXPECT_THROW(palettized(rgb, frame, 10, 12, true), cv::Exception);
}

TEST(ColorPaletteConverter, PassesOnTheErrorsOfTheMatrixLibraryAndKeepsTheTable)
{
    ColorPaletteConverter converter(false);
    const Frame frame = frameOf(1, 4, {10, 11, 12, 13});
    const Colors first = palettized(converter, frame, 10, 12, true);
    for (const Palette& bad : {Palette{}, Palette{1}, Palette{1, 2, 3, 4}}) {
        EXPECT_THROW(palettized(converter, frame, 10, 12, true, bad), cv::Exception) << bad.size();
        EXPECT_THROW(palettized(converter, frameOf(1, 1, {0}), 10, 12, true, bad), cv::Exception);
        EXPECT_THROW(humid(converter, frame, 20, 50, true, bad), cv::Exception);
    }
    EXPECT_THROW(palettized(converter, frame, 12, 11, true), cv::Exception);
    EXPECT_THROW(palettized(converter, frame, 12, 10, true), cv::Exception);
    EXPECT_EQ(palettized(converter, frame, 0, 0, false), first);
}

TEST(ColorPaletteConverter, ColorsViewsAndLeavesTheirSurroundingsAlone)
{
    ColorPaletteConverter converter(false);
    for (const int cols : {1, 4, 5, 16, 17, 33, 36}) {
        const cv::Rect part(2, 1, cols, 4);
        Frame large(6, cols + 5, static_cast<unsigned short>(0));
        Frame src = large(part);
        src.setTo(11);
        Picture canvas(6, cols + 5, cv::Vec3b(200, 200, 200));
        Picture dst = canvas(part);
        Palette palette = threePoints;
        converter.palletize(src, dst, 10, 12, true, palette);
        EXPECT_EQ(dst.data, canvas.ptr(1, 2)); // written in place
        Picture expected(6, cols + 5, cv::Vec3b(200, 200, 200));
        expected(part).setTo(cv::Scalar(11, 12, 13));
        EXPECT_EQ(colorsOf(canvas), colorsOf(expected)) << cols;
    }
}

TEST(ColorPaletteConverter, ColorsFramesOfAnyCountFastButRefusesAnotherSize)
{
    ColorPaletteConverter converter(false);
    Palette palette = threePoints;
    converter.resizeLookupTable(10, 12, palette);
    const Frame frame = frameOf(1, 7, {9, 10, 11, 12, 11, 10, 11});
    Picture picture(1, 7);
    converter.palletizeFast(frame, picture);
    EXPECT_EQ(colorsOf(picture),
              (Colors{0x010203, 0x010203, 0x0b0c0d, 0x0b0c0d, 0x0b0c0d, 0x010203, 0x0b0c0d}));
    for (const cv::Size size : {cv::Size(7, 2), cv::Size(6, 1), cv::Size(1, 7)}) {
        Picture other(size, cv::Vec3b(1, 1, 1));
        EXPECT_THROW(converter.palletizeFast(frame, other), velmo::exp::Exception);
        EXPECT_EQ(cv::norm(other, Picture(size, cv::Vec3b(1, 1, 1))), 0);
    }
    Picture none;
    converter.palletizeFast(Frame(), none);
    converter.palletize(Frame(), picture, 10, 12, true, palette);
    EXPECT_TRUE(picture.empty());
}

TEST(ColorPaletteConverter, CopiesDeeplyAndIsUsableAfterAMove)
{
    const Frame frame = frameOf(1, 4, {9, 10, 11, 12});
    ColorPaletteConverter converter(false);
    converter.createColorRegion(1, 9, 9, 0x112233);
    const Colors colors = palettized(converter, frame, 10, 12, true);
    ColorPaletteConverter copy(converter);
    palettized(copy, frame, 10, 12, true, {5, 5, 5});
    copy.deleteColorRegion(1);
    EXPECT_EQ(palettized(converter, frame, 0, 0, false), colors);

    ColorPaletteConverter moved(std::move(converter));
    EXPECT_EQ(palettized(moved, frame, 0, 0, false), colors);
    EXPECT_EQ(palettized(converter, frame, 10, 12, true), (Colors{0x010203, 0x010203, 0x0b0c0d, 0x0b0c0d}));
    ColorPaletteConverter other(true);
    palettized(other, frame, 10, 12, true); // the same palette and span, stretched in another order
    other = moved;
    EXPECT_EQ(palettized(other, frame, 10, 12, true), colors);
    converter = std::move(other);
    Picture picture(1, 4);
    other.palletizeFast(frame, picture); // nothing built yet, but no harm done
    EXPECT_EQ(palettized(converter, frame, 10, 12, true), colors);
}

TEST(ColorPaletteConverter, ColorsByTheHumidityAtSurfaces)
{
    // Point k of 1001 is k in its red and green bytes.
    Palette palette;
    for (int k = 0; k < 1001; ++k)
        palette.insert(palette.end(), {static_cast<unsigned char>(k >> 8), static_cast<unsigned char>(k), 0});
    // Air of 20 degrees and 50 percent on surfaces of 20, 0, 30 and 380 degrees. At 30: 50 x 23.33 / 42.3.
    const Frame frame = frameOf(2, 2, {29315, 27315, 30315, 65315});
    ColorPaletteConverter rgb(false), bgr(true);
    const Colors colors = humid(rgb, frame, 20, 50, false, palette);
    EXPECT_EQ(colors[0], 0x01f400u);             // 500
    EXPECT_EQ(colors[1], 0x03e800u);             // 1000
    EXPECT_NEAR(colors[2] >> 8, 0x100u + 20, 1); // 27.6 percent
    EXPECT_EQ(colors[3], 0u);
    EXPECT_EQ(humid(bgr, frame, 20, 50, false, palette)[0], 0x00f401u);

    rgb.createColorRegion(1, 65535, 0, 0xffffff); // regions are for temperatures
    EXPECT_EQ(humid(rgb, frame, 20, 50, true, palette), colors);
}

TEST(ColorPaletteConverter, BuildsTheHumidityTableOnlyForOtherAirOrOnDemand)
{
    const Palette first = {0, 50, 0, 255, 0, 0}, second = {1, 1, 1};
    const Frame frame = frameOf(1, 4, {0, 3003, 27315, 65535});
    ColorPaletteConverter converter(false);
    const Colors colors = humid(converter, frame, 20, 50, false, first);
    EXPECT_EQ(colors[1], 0xff0000u);
    EXPECT_EQ(colors[3], 0x003200u);
    EXPECT_EQ(humid(converter, frame, 20, 50, false, second), colors);

    velmo::exp::MarkedFloat celsius(20.0f), percent(50.0f);
    celsius.setMark(5);
    percent.setMark(7);
    Palette palette = second;
    Picture picture;
    converter.palletizeHumid(frame, picture, Air(celsius), Humidity(percent), false, palette);
    EXPECT_EQ(colorsOf(picture), colors);

    EXPECT_EQ(humid(converter, frame, 20, 51, false, second), Colors(4, 0x010101));
    EXPECT_EQ(humid(converter, frame, 20, 51, true, first)[1], 0xff0000u);

    // A table built by palletize does not reset the air.
    const Colors byTemperature = palettized(converter, frame, 0, 1, true, second);
    EXPECT_EQ(humid(converter, frame, 20, 51, false, first), byTemperature);
}

TEST(ColorPaletteConverter, RemembersTheAirOfABuildThatFailed)
{
    ColorPaletteConverter converter(false);
    const Frame frame = frameOf(1, 4, {0, 3003, 27315, 65535});
    const Palette palette = {0, 50, 0, 255, 0, 0};
    const Colors colors = humid(converter, frame, 20, 50, false, palette);
    EXPECT_THROW(humid(converter, frame, 20, 101, false, palette), velmo::exp::Exception);
    EXPECT_EQ(humid(converter, frame, 20, 101, false, {1, 1, 1}), colors);
    EXPECT_THROW(humid(converter, frame, 20, 101, true, palette), velmo::exp::Exception);
    // What is not a number never equals itself: refused every time.
    for (int n = 0; n < 2; ++n)
        EXPECT_THROW(humid(converter, frame, NAN, 0, false, palette), velmo::exp::Exception);
}

TEST(ColorPaletteConverter, RefusesHumidityPicturesOfOddCounts)
{
    ColorPaletteConverter converter(false);
    Palette palette = {0, 0, 0, 255, 255, 255};
    Picture picture;
    try {
        converter.palletizeHumid(Frame(3, 3), picture, Air(20.0f), Humidity(50.0f), false, palette);
        FAIL() << "coloured nine pixels";
    } catch (const velmo::exp::Exception& error) {
        EXPECT_STREQ(error.what(), "Odd height or width is not suporrted for humid scaling!");
        EXPECT_NE(error.location().find(": palletizeHumid(..)\n"), std::string::npos);
    }
    EXPECT_EQ(picture.size(), cv::Size(3, 3));
}
