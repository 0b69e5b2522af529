#include "camera/colours/Colouring.h"
#include "camera/colours/LegendBar.h"
#include "camera/measures/FineNoise.h"
#include "tests/camera/Support.h"

/// A slope of `rise` counts a pixel from the left to the right, with white noise.
const auto slope = [](double base, double rise, double noise, unsigned seed = 1) {
    std::mt19937 rng(seed);
    std::normal_distribution<double> of(0, 1);
    return matrixOf<unsigned short>({128, 96}, [&](int, int x) { return base + rise * x + noise * of(rng); });
};

const auto deviationOf = [](const cv::Mat& values) {
    cv::Scalar mean, deviation;
    cv::meanStdDev(values, mean, deviation);
    return deviation[0];
};

const auto with = [](const char* tone, const char* detail, const char* isotherms = "") {
    return Colouring(settingsWith({{"colours/palette", "Grayscale"},
                                   {"colours/tone", tone},
                                   {"colours/detail", detail},
                                   {"colours/isotherms", isotherms}}),
                     Thermometer());
};

TEST(FineNoise, IsThatOfWhatIsFlatHoweverItSlopes)
{
    std::vector<float> memory;
    for (const double noise : {1.0, 8.0, 300.0}) {
        EXPECT_NEAR(fineNoise(slope(20000, 0, noise), memory), noise, 0.1 * noise);
        Frame half = slope(20000, 7, noise);
        for (int x = 0; x < 64; ++x)
            half.col(x) = x % 2 == 0 ? 9000 : 60000;
        EXPECT_NEAR(fineNoise(half, memory), noise, 0.15 * noise);
    }
    EXPECT_NEAR(fineNoise(Frame(96, 128, 65535), memory), std::sqrt(1 / 12.0), 1e-6);
    EXPECT_GT(fineNoise(Frame(5, 128, 7), memory), 0);
}

TEST(Plateau, GivesMoreColoursToWhatIsThereUpToItsLimit)
{
    // Nine tenths of the pixels lie in a tenth of the range.
    Frame frame(100, 100);
    for (int i = 0; i < 10000; ++i)
        frame(i / 100, i % 100) = static_cast<unsigned short>(i < 9000 ? 2000 + i % 100 : 1500 + i % 1000);
    const ValueRange range{1500, 2500};
    for (const auto& [noise, limit] : {std::pair(1.0, 5.0), {4.0, 3 * 1000 / (255 * 4.0)}, {100.0, 1.0}}) {
        EXPECT_DOUBLE_EQ(Plateau::slopeLimit(range, noise), limit);
        const std::vector<unsigned short> places = Plateau().places(frame, range, noise);
        ASSERT_EQ(places.size(), 1001U);
        EXPECT_TRUE(places.front() == 0 && places.back() == 65535);
        for (std::size_t i = 1; i < places.size(); ++i) {
            ASSERT_GE(places[i], places[i - 1]) << i;
            ASSERT_LE(places[i] - places[i - 1], 1.01 * limit * 65.535 + 1) << i;
        }
        // 2000 to 2100 have the most they can.
        EXPECT_NEAR(places[600] - places[500], limit * 6553.5, 200 * limit);
    }
}

TEST(Plateau, GlidesAndJumpsToAnotherScene)
{
    const ValueRange range{1000, 3000};
    const Frame before = slope(1300, 5, 20), after = slope(1500, 5, 20), other = slope(2600, 2, 20);
    const auto fresh = [&](const Frame& frame) { return Plateau().places(frame, range, 1); };
    const auto far = [](const std::vector<unsigned short>& a, const std::vector<unsigned short>& b) {
        return cv::norm(a, b, cv::NORM_INF);
    };
    Plateau plateau;
    plateau.places(before, range, 1);
    const double way = far(fresh(before), fresh(after));
    EXPECT_LT(far(plateau.places(after, range, 1), fresh(before)), way / 4);
    for (int i = 0; i < 60; ++i)
        plateau.places(after, range, 1);
    EXPECT_LT(far(plateau.places(after, range, 1), fresh(after)), way / 20);
    EXPECT_LT(far(plateau.places(other, range, 1), fresh(other)), 3);
}

TEST(Detail, AmplifiesWhatStandsOutOfTheNoiseAndNothingElse)
{
    constexpr double noise = 5, edge = 150;
    constexpr int height = 12; // of details, up and down
    Frame frame = slope(20000, 0.5, noise), out;
    frame(cv::Rect(0, 48, 64, 48)) -= height;
    frame(cv::Rect(0, 48, 64, 48)) +=
        matrixOf<unsigned short>({64, 48}, [](int y, int x) { return (x / 2 + y / 2) % 2 * 2 * height; });
    frame.colRange(96, 128) += 2000;
    for (const double most : {1.0, 4.0}) {
        Detail(most).apply(frame, noise, edge, out);
        const cv::Rect flat(8, 8, 80, 32), fine(8, 56, 48, 32), beyond(100, 8, 24, 80);
        EXPECT_NEAR(deviationOf(out(flat)) / deviationOf(frame(flat)), 1, 0.03) << most;
        const double more = deviationOf(out(fine)) / deviationOf(frame(fine));
        EXPECT_TRUE(0.6 * most <= more && more <= most + 0.001) << more;
        EXPECT_NEAR(cv::mean(out(beyond))[0], cv::mean(frame(beyond))[0], 2); // edges stay where they are
        EXPECT_LT(cv::norm(frame.colRange(90, 128), out.colRange(90, 128), cv::NORM_INF), 60);
    }
    Frame full(6, 7, static_cast<unsigned short>(65535));
    full(2, 2) = 0;
    Detail(10).apply(full, 1, 1e6, out); // nothing wraps
    EXPECT_TRUE(out(0, 0) == 65535 && out(2, 2) == 0) << out;
    const Frame bare = slope(20000, 4, 0);
    Detail(4).apply(bare, 0, edge, out);
    EXPECT_TRUE(same(out, bare)); // a slope is no detail
    const Frame even(9, 5, static_cast<unsigned short>(700));
    Detail(4).apply(even, 1, 0, out);
    EXPECT_TRUE(same(out, even)); // nor is nothing at all
    // Blocks that are cut off below are like those to the right.
    Frame cut = frame(cv::Rect(0, 40, 29, 41)).clone(), turned;
    Detail(4).apply(cut, noise, edge, out);
    Detail(4).apply(cut.t(), noise, edge, turned);
    EXPECT_LE(cv::norm(out, turned.t(), cv::NORM_INF), 1);
}

TEST(Tone, KeepsColoursAndLegendOfOneTable)
{
    Colouring colouring = with("plateau", "off", "above:1900:FF0000");
    const Frame frame = slope(1000, 8, 3);
    const ValueRange range{1000, 3000};
    const Picture picture = colouring.paint(frame, range);
    EXPECT_EQ(picture(3, 127), cv::Vec3b(0, 0, 255));
    for (int x = 0; x < 100; ++x) {
        const auto values = colouring.valueAt(picture(3, x));
        ASSERT_TRUE(values && values->low <= frame(3, x) && frame(3, x) <= values->high) << x;
    }
    for (const int rows : {40, 300}) {
        const LegendBar bar(colouring.table(), range, Thermometer(), rows);
        EXPECT_TRUE(bar.ticks.front().value == 3000 && bar.ticks.back().value == 1000);
        EXPECT_GE(bar.ticks.size(), rows == 40 ? 2U : 7U);
        for (const auto& tick : bar.ticks)
            EXPECT_EQ(bar.rows[static_cast<std::size_t>(tick.row)],
                      colouring.table().colours()[static_cast<std::size_t>(tick.value)]);
    }
}

TEST(Tone, LeavesIsothermsWithTheTrueValues)
{
    const Frame frame = slope(1000, 8, 3);
    for (const auto& [tone, detail] : {std::pair("local", "off"), {"plateau", "6"}, {"local", "6"}}) {
        Colouring colouring = with(tone, detail, "above:1900:FF0000, below:1100:0000FF");
        const Picture picture = colouring.paint(frame, {1000, 2000});
        for (int x = 0; x < frame.cols; ++x) {
            EXPECT_EQ(picture(5, x) == cv::Vec3b(0, 0, 255), frame(5, x) > 1900) << tone << x;
            EXPECT_EQ(picture(5, x) == cv::Vec3b(255, 0, 0), frame(5, x) < 1100) << tone << x;
        }
        EXPECT_NE(colouring.table().note(), "");
        const bool local = tone == std::string("local");
        EXPECT_TRUE(!local || (!colouring.isUnambiguous() && !colouring.valueAt(picture(5, 60))));
        EXPECT_TRUE(!local || LegendBar(colouring.table(), {1000, 2000}, Thermometer(), 100).ticks.empty());
    }
    const Settings both = settingsWith({{"colours/humidity", "20:50"}, {"colours/tone", "plateau"}});
    EXPECT_THROW(Colouring(both, Thermometer(Scale::parse("centikelvin"))), Exception);
}

TEST(Tone, LocalShowsWhatIsFaintWithoutLiftingNoise)
{
    // Faint squares, dark to the left and bright to the right.
    for (const int noise : {2, 30}) {
        const auto squares = [](int y, int x) { return 2000 * (x / 64) + 60 * ((x / 8 + y / 8) % 2); };
        const Frame frame = slope(1000, 0, noise) + matrixOf<unsigned short>({128, 96}, squares);
        const ValueRange range{900, 3200};
        const auto linear = with("linear", "off").paint(frame, range).clone(),
                   local = with("local", "off").paint(frame, range).clone();
        const cv::Rect square(16, 40, 8, 8);
        EXPECT_LT(deviationOf(local(square)), 4.5) << noise; // of 255
        const auto contrast = [&](const Picture& picture) {
            return std::abs(cv::mean(picture(square))[0] - cv::mean(picture(square + cv::Point(8, 0)))[0]);
        };
        EXPECT_GT(contrast(local) / contrast(linear), noise == 2 ? 1.3 : 0.9);
    }
}
