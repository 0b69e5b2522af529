#include "tests/Support.h"
#include "vision/imgproc/BadPixel.h"
#include "vision/kernels/BadPixelKernel.h"

using namespace velmo::exp::vision;

using Frame = cv::Mat_<short>;
using Map = cv::Mat_<int>;
using Tools = BadPixelTools;

/// A row that begins with the given values and goes on with `rest`.
const auto row = [](int count, const std::vector<short>& values, short rest) {
    Frame frame(1, count, rest);
    std::copy(values.begin(), values.end(), frame.begin());
    return frame;
};

TEST(BadPixelHistogram, FlagsWhatIsOutsideThePopulatedCoreWithOneBinMoreAboveThanBelow)
{
    // The mean is 50, so x falls into bin 100 + x; 150 is the peak, 149 and 151 have too few: the limits.
    const std::vector<short> values{49, 48, 47, 51, 52, 53};
    Map map(1, 100, 0);
    map(0, 0) = 2;
    map(0, 1) = 2;
    for (int n = 0; n < 2; ++n) { // counted again
        EXPECT_EQ(Tools::detectBadPixelHistogram(row(100, values, 50), map, 2), 3U);
        EXPECT_TRUE(same(map.colRange(0, 7), (Map(1, 7) << 2, 2 | 64, 64, 0, 0, 64, 0)));
    }
    EXPECT_EQ(Tools::detectBadPixelHistogram(row(100, values, 50), map = 0, 1), 0U); // one is enough

    // A negative mean turns the order of the values round, not that of the bins: -x falls where x fell.
    EXPECT_EQ(Tools::detectBadPixelHistogram(-row(100, values, 50), map = 0, 2), 3U);
    EXPECT_TRUE(same(map.colRange(0, 7), (Map(1, 7) << 0, 64, 64, 0, 0, 64, 0)));
}

TEST(BadPixelHistogram, SaysNothingOfAPeakAtAnEnd)
{
    // Six pixels of one value, four of another that keeps the mean at 200: x falls into bin 100 + x / 4.
    for (const auto& [most, others, flagged] : {std::tuple(794, -691, 4U), // bin 298.5
                                                {798, -697, 0U},           // 299.5
                                                {-390, 1085, 4U},          // 2.5
                                                {-394, 1091, 0U}}) {       // 1.5
        const auto other = static_cast<short>(others);
        const Frame line = row(10, {other, other, other, other}, static_cast<short>(most));
        for (const int rows : {1, 200}) { // fewer pixels than values, and more
            Map map;
            const unsigned long found = Tools::detectBadPixelHistogram(cv::repeat(line, rows, 1), map, 1);
            EXPECT_EQ(found, flagged * static_cast<unsigned>(rows)) << most << ", " << rows;
        }
    }
}

TEST(BadPixelHistogram, ReplacesAMapOfAnotherSizeOnly)
{
    for (const cv::Size size : {cv::Size(4, 6), {1, 1}, {6, 5}}) {
        Map map(size, 3);
        const Map before = map;
        EXPECT_EQ(Tools::detectBadPixelHistogram(Frame(4, 6, 100), map, 1), 0U);
        EXPECT_TRUE(same(map, Map(4, 6, 0)));
        EXPECT_TRUE(same(before, Map(size, 3)));
    }
    Map empty;
    EXPECT_EQ(Tools::detectBadPixelHistogram(Frame(), empty, 1), 0U);
}

TEST(BadPixelHistogram, SurvivesAMeanAtOrNearZero)
{
    Map map;
    EXPECT_EQ(Tools::detectBadPixelHistogram(Frame(8, 8, static_cast<short>(0)), map, 1), 0U);
    EXPECT_EQ(Tools::detectBadPixelHistogram(row(100, {7, -7}, 0), map, 1), 0U);
    // The mean is 0.00001, the scale 5,000,000: 0 is in bin 100, the others' bins do not fit 32 bits.
    EXPECT_EQ(Tools::detectBadPixelHistogram(row(100000, {30000, -29999}, 0), map, 1), 2U);
    EXPECT_TRUE(map(0, 0) == 64 && map(0, 1) == 64);

    const int least = std::numeric_limits<int>::min();
    for (const auto& [value, scale, bin] : {std::tuple(0.F, spreadScale(0), least), // 0 x infinity
                                            {5.F, spreadScale(0), least},
                                            {-5.F, spreadScale(0), least},
                                            {1.F, 2147483520.F, 2147483620},
                                            {1.F, 2147483648.F, least},
                                            {-1.F, 2147483648.F, least + 100},
                                            {-1.F, 4294967296.F, least},
                                            {-1.F, 100.5F, 0}}) // toward zero
        EXPECT_EQ(spreadBin(value, scale), bin) << value << " x " << scale;
}

TEST(BadPixelHistogram, SumsInSinglePrecisionInOrder)
{
    // From 2^24 on, adding 1 changes nothing, so the mean is smaller than it should be by the million ones:
    // 69 lands in bin 305. With the true mean it would be 294 and good.
    const int large = 1024, ones = 1000000;
    Frame frame(1, large + ones + 1, 1);
    frame.colRange(0, large) = 16384;
    frame(0, large + ones) = 69;
    Map map;
    EXPECT_EQ(Tools::detectBadPixelHistogram(frame, map, 0), 1025U);
    EXPECT_EQ(map(0, large + ones), 64);
}

TEST(BadPixelLines, AreFlaggedAboveTheirLimits)
{
    const Map map = (Map(4, 5) << 64, 0, 2, 0, 0, //
                     0, 0, 1, 0, -5,              //
                     0, 0, 0, 0, -5,              //
                     9, 0, 7, 3, 0);
    const auto flagged = [&](unsigned int columns, unsigned int rows) {
        Map after = map.clone();
        Tools::detectBadRowsAndColumns(after, columns, rows);
        EXPECT_TRUE(same(after | 16, map | 16)); // no other flag changes
        std::vector<std::string> places(4, ".....");
        for (int n = 0; n < 20; ++n)
            places[n / 5][n % 5] = after(n / 5, n % 5) == map(n / 5, n % 5) ? '.' : '#';
        return places;
    };
    // Rows hold 2, 1, 0, 3; columns 2, 0, 3, 1, 0: negative values do not count, and have the flag already.
    EXPECT_THAT(flagged(2, 2), ElementsAre("..#..", "..#..", "..#..", "#####"));
    // The first limit is the columns'. A flagged row adds nothing to them: columns 1 and 4 stay good.
    EXPECT_THAT(flagged(0, 2), ElementsAre("#.##.", "#.##.", "#.##.", "#####"));
    EXPECT_THAT(flagged(100, 0), ElementsAre("#####", "####.", ".....", "#####"));

    Map empty;
    Tools::detectBadRowsAndColumns(empty, 0, 0);
}

TEST(BadPixelMonotony, FlagsWhatDoesNotRiseFromEachFrameToTheNext)
{
    // The last one rises above the first frame, but not above the one before.
    const std::vector<Frame> frames{(Frame(1, 7) << 10, 10, -5, 32767, -32768, 3, 1),
                                    (Frame(1, 7) << 12, 12, -4, -32768, 32767, 2, 9),
                                    (Frame(1, 7) << 12, 13, -3, -32767, 32767, 1, 5)};
    Map map(1, 7, 1);
    Tools::checkMonotonic(frames, map);
    EXPECT_TRUE(same(map, (Map(1, 7) << 33, 1, 1, 33, 33, 33, 33)));
    Tools::checkMonotonic({frames[0], frames[1]}, map = 0);
    EXPECT_TRUE(same(map, (Map(1, 7) << 0, 0, 0, 32, 0, 32, 0)));
}

TEST(BadPixelMonotony, RefusesASeriesThatIsNone)
{
    const Frame frame(2, 3, static_cast<short>(1));
    Map map(2, 3, 0), other(3, 2, 0);
    EXPECT_EQ(refusal([&] { Tools::checkMonotonic({frame}, other); }),
              (Refusal{"Need at least 2 frames to check monotony!", "checkMonotonic"}));
    const std::vector<Frame> two{frame, frame};
    EXPECT_EQ(refusal([&] { Tools::checkMonotonic(two, other); }),
              (Refusal{"Size of matBadPixel does not fit to the frames!", "checkMonotonic"}));
    for (const Frame& odd : {Frame(), Frame(2, 4), Frame(1, 3)})
        EXPECT_THROW(Tools::checkMonotonic({frame, frame, odd}, map), Exception);
    EXPECT_EQ(cv::countNonZero(map), 0);
}

TEST(BadPixelNetd, ComparesEachPixelWithTheMeans)
{
    // Over 10 kelvin: responsivities 10, 10, 10, 18, 10, 2; their mean is 10.
    const Frame cold(1, 6, 100), warm = (Frame(1, 6) << 200, 200, 200, 280, 200, 120);
    const Frame noise = (Frame(1, 6) << 2, 2, 2, 2, 2, 2);
    Map map(1, 6, 0);
    const auto results = Tools::checkNetd(cold, warm, noise, map, 20, 30, 0.5, 0.5, 100);
    EXPECT_DOUBLE_EQ(results.dMeanResponsivity, 10);
    EXPECT_DOUBLE_EQ(results.dMeanNoise, 2);
    EXPECT_DOUBLE_EQ(results.dMeanNetd, (4 * 0.2 + 2.0 / 18 + 1.0) / 6);
    EXPECT_TRUE(results.bBadPixelsFound && same(map, (Map(1, 6) << 0, 0, 0, 2, 0, 2))) << map;

    // A deviation as large as the limit is good: 8 of 10 here.
    EXPECT_FALSE(Tools::checkNetd(cold, warm, noise, map = 0, 20, 30, 0.8, 0.5, 100).bBadPixelsFound);
    EXPECT_TRUE(same(map, Map(1, 6, 0)));
    // The NETD of the last pixel, 1, is more than twice the mean away from it.
    EXPECT_TRUE(Tools::checkNetd(cold, warm, noise, map = 0, 20, 30, -0.8, 0.5, -2).bBadPixelsFound);
    EXPECT_TRUE(same(map, (Map(1, 6) << 0, 0, 0, 0, 0, 2)));
}

TEST(BadPixelNetd, ComparesOnlyTheNoiseOfPixelsItDidNotMeasure)
{
    // Good: 2. Flagged before, with a wild response: 2. Without response: 2. The noise of every second is
    // bad.
    const Frame cold(1, 6, static_cast<short>(0)), warm = (Frame(1, 6) << 100, 100, 9000, 9000, 0, 0);
    const Frame noise = (Frame(1, 6) << 4, 4, 4, 90, 4, 90);
    Map map = (Map(1, 6) << 0, 0, 32, 32, 0, 0);
    const auto results = Tools::checkNetd(cold, warm, noise, map, 0, 10, 0.5, 0.5, 0.5);
    EXPECT_DOUBLE_EQ(results.dMeanResponsivity, 10);
    EXPECT_DOUBLE_EQ(results.dMeanNoise, 4);
    EXPECT_DOUBLE_EQ(results.dMeanNetd, 0.4);
    EXPECT_TRUE(results.bBadPixelsFound && same(map, (Map(1, 6) << 0, 0, 32, 34, 2, 2))) << map;

    // With everything flagged there are no means, and nothing to compare with.
    const auto none = Tools::checkNetd(cold, warm, noise, map = 16, 0, 10, 0, 0, 0);
    for (const double mean : {none.dMeanResponsivity, none.dMeanNoise, none.dMeanNetd})
        EXPECT_TRUE(std::isnan(mean)) << mean;
    EXPECT_TRUE(!none.bBadPixelsFound && same(map, Map(1, 6, 16))) << map;
}

TEST(BadPixelNetd, WrapsADifferenceAt16Bits)
{
    // 60000 more is 5536 less.
    Map map(1, 1, 0);
    const auto results = Tools::checkNetd(Frame(1, 1, -30000), Frame(1, 1, 30000), Frame(1, 1, 5536), map, 0,
                                          10, 0.1, 0.1, 0.1);
    EXPECT_DOUBLE_EQ(results.dMeanResponsivity, -553.6);
    EXPECT_DOUBLE_EQ(results.dMeanNetd, -10);
    EXPECT_EQ(map(0, 0), 0);
}

TEST(BadPixelNetd, RefusesWhatCannotBeCompared)
{
    EXPECT_EQ(Tools::NetdCheckResults().dMeanNoise, 0);
    const Frame frame(2, 2, static_cast<short>(0)), odd(2, 3, static_cast<short>(0));
    Map map(2, 2, 0);
    for (int place = 0; place < 5; ++place) { // what is odd: a frame, the map, or the temperatures
        const auto at = [&](int n) { return n == place ? odd : frame; };
        Map flags = place == 3 ? Map(2, 3, 0) : map;
        const double warm = place == 4 ? 20 : 30;
        EXPECT_EQ(refusal([&] { Tools::checkNetd(at(0), at(1), at(2), flags, 20, warm, 1, 1, 1); }),
                  (Refusal{place == 4 ? "NETD compare temperatures must be diffrent!"
                                      : "NETD input frames must have same size!",
                           "checkNetd"}));
    }
    EXPECT_EQ(cv::countNonZero(map), 0);
}
