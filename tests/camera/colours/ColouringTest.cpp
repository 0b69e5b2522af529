#include "camera/colours/Colouring.h"

#include "camera/colours/Legend.h"
#include "camera/drawing/Text.h"
#include "tests/camera/Support.h"

#include <set>

const Thermometer centikelvin(Scale::parse("centikelvin"));

const auto with = [](const std::string& palette) { return Colouring(findPalette(palette)); };

const auto withLegend = [](const Picture& picture, Colouring& colouring, ValueRange range,
                           const Thermometer& thermometer) {
    Picture whole;
    Legend(thermometer).draw(picture, colouring.table(), range, whole);
    return whole;
};

TEST(Colouring, PaintsRegionsByRawValueWhateverTheFrameSize)
{
    Colouring colouring(settingsWith({{"colours/palette", "Grayscale"},
                                      {"colours/regions", "1500:1600:FF8000, 1550:65535:0000FF"}}),
                        Thermometer());
    for (const int columns : {4, 5}) { // the converter has another path for odd pixel counts
        const Frame frame = (Frame(1, 5) << 1000, 1500, 1600, 1000, 1000);
        const Picture picture = colouring.paint(frame.colRange(0, columns), {1000, 2000});
        EXPECT_THAT(Picture(picture.colRange(0, 3)), // the last region wins
                    ElementsAre(cv::Vec3b(), cv::Vec3b(0x00, 0x80, 0xFF), cv::Vec3b(0xFF, 0, 0)));
    }
}

TEST(Colouring, ShowsTheHumidityOfTheRoomsAirAtEachSurface)
{
    Colouring colouring(settingsWith({{"colours/humidity", "20:50"}}), centikelvin);
    // Air of 20 degrees and 50 percent condenses below 9.3 degrees: all red there.
    const cv::Vec3b red(0, 0, 0xFF);
    EXPECT_THAT(colouring.paint((Frame(1, 3) << 28000, 29315, 37315), {0, 1}),
                ElementsAre(red, testing::Ne(red), testing::Ne(red)));
    EXPECT_NEAR(colouring.air()->dewPoint(), 9.3, 0.05);
    const Picture whole = withLegend(Picture(120, 160, cv::Vec3b()), colouring, {0, 1}, centikelvin);
    EXPECT_EQ(whole(5, 160 + 12), red); // 100 percent above
}

TEST(Colouring, FollowsTheRange)
{
    Colouring colouring = with("Grayscale");
    for (const auto& [range, grey] :
         {std::pair(ValueRange{1500, 2000}, 0), {{1000, 2000}, 127}, {{1000, 1500}, 255}, {{1500, 2000}, 0}})
        EXPECT_NEAR(colouring.paint(Frame(1, 1, 1500), range)(0, 0)[0], grey, 1);
}

/// The row in the legend beside a picture where a label stands; -1 if it stands nowhere.
const auto rowOf = [](const Picture& whole, const std::string& label) {
    const cv::Size size(textWidth(label), s32TextHeight);
    Picture drawn(size.height + 8, size.width + 8, cv::Vec3b::all(24)); // letters reach a little beyond
    drawText(drawn, label, {4, 4}, cv::Scalar(230, 230, 230));
    const Picture line = drawn(cv::Rect({4, 4}, size));
    for (int y = 0; y + line.rows <= whole.rows; ++y)
        for (int x = 0; x + line.cols <= whole.cols; ++x)
            if (cv::norm(whole(cv::Rect({x, y}, line.size())), line, cv::NORM_INF) == 0)
                return y;
    return -1;
};

TEST(Legend, PutsLabelsBesideTheirValues)
{
    Colouring colouring = with("Hotcold");
    Legend legend{Thermometer()};
    Picture whole;
    std::set<int> widths;
    for (const ValueRange range : {ValueRange{1000, 2000}, {1000, 3000}, {0, 20000}}) {
        legend.draw(Picture(120, 20, cv::Vec3b(1, 2, 3)), colouring.table(), range, whole);
        EXPECT_NEAR(rowOf(whole, std::to_string(range.high)), 1, 2);
        EXPECT_NEAR(rowOf(whole, std::to_string((range.low + range.high) / 2)), 56, 3);
        EXPECT_NEAR(rowOf(whole, std::to_string(range.low)), 110, 3);
        EXPECT_EQ((widths.insert(whole.cols), widths.size()), 1U);
    }
    Colouring marked(settingsWith({{"colours/isotherms", "above:1500:FF0000"}}), Thermometer());
    whole = withLegend(Picture(120, 20, cv::Vec3b(1, 2, 3)), marked, {1000, 2000}, Thermometer());
    EXPECT_GE(rowOf(whole, "above 1500"), 0);
}
