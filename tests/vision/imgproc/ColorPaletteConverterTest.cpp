#include "vision/imgproc/ColorPaletteConverter.h"

#include "tests/Support.h"

using namespace velmo::vision;
using velmo::exp::MarkedFloat;

using Frame = ColorPaletteConverter::Frame;
using Picture = ColorPaletteConverter::Picture;
using Palette = std::vector<unsigned char>;
using Values = std::vector<int>;
using Colors = std::vector<unsigned>;

/// Three points that a span of three values shows as they are, and their colours.
const Palette threePoints = {1, 2, 3, 11, 12, 13, 21, 22, 23};
constexpr unsigned p0 = 0x010203, p1 = 0x0b0c0d, p2 = 0x151617;

/// In two rows, if they are even in number.
const auto frameOf = [](const Values& values) {
    Frame frame(1, static_cast<int>(values.size()));
    std::copy(values.begin(), values.end(), frame.begin());
    return frame.reshape(1, values.size() % 2 == 0 ? 2 : 1);
};

/// The pixels as 0xAABBCC, the first byte in memory on top.
const auto colorsOf = [](const Picture& picture) {
    Colors colors;
    for (const auto& pixel : picture)
        colors.push_back(pixel[0] * 0x10000u + pixel[1] * 0x100u + pixel[2]);
    return colors;
};

const auto palettized = [](ColorPaletteConverter& converter, const Values& values, int min, int max,
                           Palette palette = threePoints, bool rebuild = true) {
    Picture picture;
    converter.palletize(frameOf(values), picture, static_cast<unsigned short>(min),
                        static_cast<unsigned short>(max), rebuild, palette);
    return colorsOf(picture);
};

/// In the colours of the last build.
const auto shown = [](ColorPaletteConverter& converter, const Values& values) {
    return palettized(converter, values, 0, 1, {9, 9, 9}, false);
};

const auto humid = [](ColorPaletteConverter& converter, const Values& values, MarkedFloat air,
                      MarkedFloat percent, Palette palette, bool rebuild = false) {
    Picture picture;
    converter.palletizeHumid(frameOf(values), picture, ColorPaletteConverter::AirTemperature(air),
                             ColorPaletteConverter::AirHumidity(percent), rebuild, palette);
    return colorsOf(picture);
};

TEST(ColorPaletteConverter, ShowsTheHottestValueInTheSecondHottestColor)
{
    ColorPaletteConverter rgb(false), bgr(true);
    EXPECT_EQ(palettized(rgb, {0, 10, 11, 12, 13, 65535, 0, 0}, 10, 12),
              (Colors{p0, p0, p1, p1, p1, p1, p0, p0}));
    EXPECT_EQ(palettized(bgr, {0, 11, 12, 13}, 10, 12), (Colors{0x030201, 0x0d0c0b, 0x0d0c0b, 0x0d0c0b}));
    // Six pixels take the slow path: it reaches the hottest colour, and clamps.
    EXPECT_EQ(palettized(rgb, {0, 10, 11, 12, 13, 65535}, 10, 12), (Colors{p0, p0, p1, p2, p2, p2}));
    EXPECT_EQ(palettized(bgr, {10, 11, 12}, 10, 12), (Colors{0x030201, 0x0d0c0b, 0x171615}));
}

TEST(ColorPaletteConverter, StretchesLinearlyBetweenThePoints)
{
    // 256 entries of two points: a quarter of the way lies outside the centres of the points at either end.
    // Entry 64 is 1/256 of the way from one to the other, entry 127 127/256.
    ColorPaletteConverter converter(false);
    EXPECT_EQ(palettized(converter, {0, 63, 64, 127, 128, 192, 254, 255}, 0, 255, {0, 0, 0, 255, 255, 255}),
              (Colors{0, 0, 0x010101, 0x7f7f7f, 0x808080, 0xffffff, 0xffffff, 0xffffff}));
    for (const auto& [min, max] : {std::pair(100, 100), {0, 65535}})
        EXPECT_EQ(palettized(converter, {0, 99, 100, 65535}, min, max, {7, 8, 9}), Colors(4, 0x070809));
}

TEST(ColorPaletteConverter, KeepsItsColorsUntilTheNextBuild)
{
    ColorPaletteConverter converter(false);
    const Values four{10, 11, 12, 13};
    const Colors first = palettized(converter, four, 10, 13);
    EXPECT_EQ(shown(converter, four), first);
    palettized(converter, {0}, 0, 1); // the slow path leaves the table alone
    EXPECT_EQ(shown(converter, four), first);
    EXPECT_EQ(palettized(converter, four, 10, 13, {3, 2, 1, 3, 2, 1, 3, 2, 1}), Colors(4, 0x030201));
    EXPECT_EQ(palettized(converter, four, 10, 13), first);
}

TEST(ColorPaletteConverter, PaintsRegionsOverThePaletteFromTheNextBuildOn)
{
    const Values values{9, 10, 11, 12, 13, 14, 15, 65535};
    ColorPaletteConverter converter(false), bgr(true);
    palettized(converter, values, 10, 12);
    converter.createColorRegion(7, 13, 11, 0xff112233);
    converter.createColorRegion(3, 65535, 12, 0x445566);
    converter.createColorRegion(9, 8, 9, 0x777777); // upper < lower: ignored
    EXPECT_EQ(shown(converter, values), (Colors{p0, p0, p1, p1, p1, p1, p1, p1}));
    EXPECT_EQ(palettized(converter, values, 10, 12),
              (Colors{p0, p0, 0x112233, 0x112233, 0x112233, 0x445566, 0x445566, 0x445566}));

    converter.createColorRegion(7, 10, 10, 0x010101);
    converter.deleteColorRegion(3);
    converter.deleteColorRegion(42);
    EXPECT_EQ(palettized(converter, values, 10, 12), (Colors{p0, 0x010101, p1, p1, p1, p1, p1, p1}));

    bgr.createColorRegion(0, 65535, 0, 0xaabbcc);
    EXPECT_EQ(palettized(bgr, values, 10, 12), Colors(8, 0xccbbaa));
}

TEST(ColorPaletteConverter, TakesBandsOnTheSlowPathRelativeToTheRange)
{
    ColorPaletteConverter rgb(false), bgr(true);
    for (ColorPaletteConverter* converter : {&rgb, &bgr})
        converter->createColorRegion(1, 2, 1, 0x112233);
    EXPECT_EQ(palettized(rgb, {10, 11, 12}, 10, 12), (Colors{p0, 0x112233, 0x112233}));
    // Red and blue of the region exchanged against the fast path, those of the palette not.
    EXPECT_EQ(palettized(bgr, {10, 11, 12}, 10, 12), (Colors{0x030201, 0x112233, 0x112233}));

    rgb.createColorRegion(2, 3, 0, 0x445566); // leaves the three entries
    EXPECT_THROW(palettized(rgb, {10, 11, 12}, 10, 12), cv::Exception);
}

TEST(ColorPaletteConverter, PassesOnTheErrorsOfTheMatrixLibraryAndKeepsTheTable)
{
    ColorPaletteConverter converter(false);
    const Values four{10, 11, 12, 13};
    const Colors first = palettized(converter, four, 10, 12);
    for (const Palette& bad : {Palette{}, Palette{1}, Palette{1, 2, 3, 4}}) {
        EXPECT_THROW(palettized(converter, four, 10, 12, bad), cv::Exception) << bad.size();
        EXPECT_THROW(palettized(converter, {0}, 10, 12, bad), cv::Exception);
        EXPECT_THROW(humid(converter, four, 20, 50, bad, true), cv::Exception);
    }
    for (const int max : {11, 10})
        EXPECT_THROW(palettized(converter, four, 12, max), cv::Exception);
    EXPECT_EQ(shown(converter, four), first);
}

TEST(ColorPaletteConverter, ColorsFramesOfAnyCountFastButRefusesAnotherSize)
{
    ColorPaletteConverter converter(false);
    Palette palette = threePoints;
    converter.resizeLookupTable(10, 12, palette);
    const Frame frame = frameOf({9, 10, 11, 12, 11, 10, 11});
    Picture picture(1, 7), none;
    converter.palletizeFast(frame, picture);
    EXPECT_EQ(colorsOf(picture), (Colors{p0, p0, p1, p1, p1, p0, p1}));
    for (const cv::Size size : {cv::Size(7, 2), cv::Size(6, 1), cv::Size(1, 7)}) {
        Picture other(size, cv::Vec3b(1, 1, 1));
        EXPECT_THROW(converter.palletizeFast(frame, other), velmo::exp::Exception);
        EXPECT_TRUE(same(other, Picture(size, cv::Vec3b(1, 1, 1))));
    }
    converter.palletizeFast(Frame(), none);
}

TEST(ColorPaletteConverter, CopiesRegionsAndTheOrderOfColors)
{
    const Values four{9, 10, 11, 12};
    ColorPaletteConverter converter(false), other(true);
    converter.createColorRegion(1, 9, 9, 0x112233);
    const Colors colors = palettized(converter, four, 10, 12);
    ColorPaletteConverter copy(converter), moved(std::move(converter));
    copy.deleteColorRegion(1);
    palettized(copy, four, 10, 12, {9, 9, 9}); // in a table of its own
    EXPECT_EQ(shown(moved, four), colors);
    EXPECT_EQ(palettized(moved, four, 10, 12), colors);
    EXPECT_EQ(palettized(converter, four, 10, 12), (Colors{p0, p0, p1, p1}));
    palettized(other, four, 10, 12); // the same palette and span, stretched in another order
    other = moved;
    EXPECT_EQ(palettized(other, four, 10, 12), colors);
}

TEST(ColorPaletteConverter, ColorsByTheHumidityAtSurfaces)
{
    // Point k of 1001 is k in its red and green bytes.
    Palette palette;
    for (int k = 0; k < 1001; ++k)
        palette.insert(palette.end(), {static_cast<unsigned char>(k >> 8), static_cast<unsigned char>(k), 0});
    // Air of 20 degrees and 50 percent on surfaces of 20, 0, 30 and 380 degrees. At 30: 50 x 23.33 / 42.3.
    const Values surfaces{29315, 27315, 30315, 65315};
    ColorPaletteConverter rgb(false), bgr(true);
    const Colors colors = humid(rgb, surfaces, 20, 50, palette);
    EXPECT_NEAR(colors[2] >> 8, 0x100u + 20, 1);                           // 27.6 percent
    EXPECT_THAT(colors, ElementsAre(0x01f400u, 0x03e800u, colors[2], 0u)); // 500, 1000
    EXPECT_EQ(humid(bgr, surfaces, 20, 50, palette)[0], 0x00f401u);

    rgb.createColorRegion(1, 65535, 0, 0xffffff); // regions are for temperatures
    EXPECT_EQ(humid(rgb, surfaces, 20, 50, palette, true), colors);
}

TEST(ColorPaletteConverter, BuildsTheHumidityTableOnlyForOtherAirOrOnDemand)
{
    const Palette first = {0, 50, 0, 255, 0, 0}, second = {1, 1, 1};
    const Values values{0, 3003, 27315, 65535};
    ColorPaletteConverter converter(false);
    const Colors colors = humid(converter, values, 20, 50, first);
    EXPECT_TRUE(colors[1] == 0xff0000 && colors[3] == 0x003200);
    EXPECT_EQ(humid(converter, values, 20, 50, second), colors);
    MarkedFloat celsius(20.0f), percent(50.0f);
    celsius.setMark(5);
    percent.setMark(7);
    EXPECT_EQ(humid(converter, values, celsius, percent, second), colors);
    ColorPaletteConverter copy(converter), moved(std::move(copy));
    EXPECT_EQ(humid(moved, values, 20, 50, second), colors);

    EXPECT_EQ(humid(converter, values, 20, 51, second), Colors(4, 0x010101));
    EXPECT_EQ(humid(converter, values, 20, 51, first, true)[1], 0xff0000u);
    // A table built by palletize does not reset the air.
    const Colors byTemperature = palettized(converter, values, 0, 1, second);
    EXPECT_EQ(humid(converter, values, 20, 51, first), byTemperature);
}

TEST(ColorPaletteConverter, RemembersTheAirOfABuildThatFailed)
{
    ColorPaletteConverter converter(false);
    const Values values{0, 3003, 27315, 65535};
    const Palette palette = {0, 50, 0, 255, 0, 0};
    const Colors colors = humid(converter, values, 20, 50, palette);
    EXPECT_THROW(humid(converter, values, 20, 101, palette), velmo::exp::Exception);
    EXPECT_EQ(humid(converter, values, 20, 101, {1, 1, 1}), colors);
    // What is not a number never equals itself: refused every time.
    for (int n = 0; n < 2; ++n)
        EXPECT_THROW(humid(converter, values, NAN, 0, palette), velmo::exp::Exception);
    EXPECT_EQ(refusal([&] { humid(converter, Values(9), 20, 50, palette); }),
              (Refusal{"Odd height or width is not suporrted for humid scaling!", "palletizeHumid"}));
}
