#include "vision/imgproc/TemporalNoiseReduction.h"

#include "tests/vision/imgproc/PixelStream.h"

#include <gtest/gtest.h>

#include <utility>

using namespace velmo::exp::vision;

namespace {

using Frame = cv::Mat_<unsigned short>;

/// As start-up code of a program finds it.
const unsigned short weightOfStartUpCode = *(std::as_const(mg_aFeedbackStrength) + 15);

Values stream(unsigned char gain, unsigned short factor, const Values& inputs)
{
    TemporalNoiseReduction<unsigned short> filter(gain, factor);
    return outputsOf(filter, inputs);
}

} // namespace

TEST(TemporalNoiseReduction, HasTheWeightCurve)
{
    const std::pair<int, int> telling[] = {{0, 32768}, {14, 32768}, {15, 31457}, {33, 16384}, {47, 9175},
                                           {48, 9175}, {49, 8847},  {50, 7862},  {64, 6143},  {100, 3931},
                                           {895, 439}, {896, 438},  {1008, 48},  {1023, 3}};
    for (const auto& [k, weight] : telling)
        EXPECT_EQ(mg_aFeedbackStrength[k], weight) << "k " << k;
    const int percent[] = {96, 93, 91, 88, 86, 83, 80, 78, 75, 72, 70, 67, 65, 62, 60, 57, 55, 53,
                           50, 48, 46, 44, 42, 40, 38, 36, 35, 33, 32, 31, 30, 29, 28, 28, 27};
    for (int k = 0; k < 1024; ++k) {
        const int pull = 39321600 / (100 * k + 1);
        const int weight = k < 15    ? 32768
                           : k < 50  ? 32768 * percent[k - 15] / 100
                           : k < 896 ? pull
                                     : pull * (1024 - k) / 128;
        ASSERT_EQ(mg_aFeedbackStrength[k], weight) << "k " << k;
    }
    EXPECT_EQ(weightOfStartUpCode, 31457);
}

TEST(TemporalNoiseReduction, HoldsNoisePullsStepsAndLetsJumpsPass)
{
    // 14 counts are held. 100 counts: 3931 * -100 / 32768 = -11.99..., rounded down to -12. 1024 pass.
    EXPECT_EQ(stream(16, 2048, {1000, 1014, 986, 1100, 2113}), (Values{1000, 1000, 1000, 1088, 2113}));
    // The general path at the same index rounds the same pull half up: 12.
    EXPECT_EQ(stream(16, 2047, {1000, 900}), (Values{1000, 912}));
}

TEST(TemporalNoiseReduction, RoundsDownOnTheFastPathAndHalfUpOnTheGeneralOne)
{
    TemporalNoiseReduction<unsigned short> filter(16, 2048), general(16, 2048);
    Frame first(1, 1, 1000), down(1, 1, 900), up(1, 1, 900);
    filter.initFilter(first);
    general.initFilter(first);
    filter.filterWithMaxParam(down);
    general.filterWithAnyParam(up);
    EXPECT_EQ(down(0, 0), 911);
    EXPECT_EQ(up(0, 0), 912);
}

TEST(TemporalNoiseReduction, IsAFixedAverageWithoutGainAndOffWithoutFactor)
{
    EXPECT_EQ(stream(0, 1024, {1000, 3000, 3000}), (Values{1000, 2000, 2500}));
    EXPECT_EQ(stream(0, 2048, {1000, 3000, 65535}), (Values{1000, 1000, 1000}));
    EXPECT_EQ(stream(16, 0, {1000, 1003, 0}), (Values{1000, 1003, 0}));
}

TEST(TemporalNoiseReduction, StaysInsideTheTableAtBothEndsOfTheRange)
{
    EXPECT_EQ(stream(16, 2048, {0, 65535, 65530, 0}), (Values{0, 65535, 65535, 0}));
    TemporalNoiseReduction<short> filter(15, 2048);
    EXPECT_EQ(outputsOf(filter, {-32768, 32767, 32760, -32768}), (Values{-32768, 32767, 32767, -32768}));
}

TEST(TemporalNoiseReduction, StartsAnewAfterASetterOrAnotherSize)
{
    TemporalNoiseReduction<unsigned short> filter(16, 2048);
    EXPECT_EQ(outputsOf(filter, {1000, 1005}), (Values{1000, 1000}));
    filter.setControlGain(16);
    EXPECT_EQ(outputsOf(filter, {1005, 1000}), (Values{1005, 1005}));
    Frame other(1, 2, 1000);
    filter.process(other);
    EXPECT_EQ(outputsOf(filter, {1010}), (Values{1010}));
}

TEST(TemporalNoiseReduction, LimitsAndWarnsInSettersOnly)
{
    TemporalNoiseReduction<unsigned short> filter(0, 0);
    testing::internal::CaptureStdout();
    filter.setControlGain(200);
    filter.setFeedbackFactor(4000);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "TemporalNoiseReduction Attention: limiting ControlGain to 16!!\n"
              "TemporalNoiseReduction Attention: limiting m_u16FeedbackFactor to 2048!!\n");
    EXPECT_EQ(outputsOf(filter, {1000, 1100}), (Values{1000, 1088})); // both at their maximum
}

TEST(TemporalNoiseReduction, FiltersViewsAndLeavesTheirSurroundingsAlone)
{
    Frame large(6, 9, 1000);
    Frame view = large(cv::Rect(2, 1, 5, 4));
    TemporalNoiseReduction<unsigned short> filter(16, 2048);
    filter.process(view);
    large.setTo(1008);
    filter.process(view);
    EXPECT_EQ(cv::countNonZero(large == 1000), 20);
    EXPECT_EQ(cv::countNonZero(view == 1000), 20);

    Frame none;
    filter.process(none);
    EXPECT_TRUE(none.empty());
}

TEST(TemporalNoiseReduction, BuildsItsStateFromTheFrameIfAPathIsCalledFirst)
{
    TemporalNoiseReduction<unsigned short> filter(8, 1000);
    Frame frame(3, 5, 777);
    filter.filterWithAnyParam(frame);
    EXPECT_EQ(cv::countNonZero(frame == 777), 15);
    Frame other(5, 3, 42);
    filter.filterWithMaxParam(other);
    EXPECT_EQ(cv::countNonZero(other == 42), 15);
}

TEST(TemporalNoiseReduction, CopiesDeeplyAndIsUsableAfterAMove)
{
    TemporalNoiseReduction<unsigned short> filter(16, 2048);
    outputsOf(filter, {1000});
    TemporalNoiseReduction<unsigned short> copy(filter);
    EXPECT_EQ(outputsOf(filter, {1100}), (Values{1088}));
    EXPECT_EQ(outputsOf(copy, {1005}), (Values{1000}));

    TemporalNoiseReduction<unsigned short> moved(std::move(copy));
    EXPECT_EQ(outputsOf(moved, {1005}), (Values{1000}));
    EXPECT_EQ(outputsOf(copy, {500, 505}), (Values{500, 500}));
    copy = filter;
    EXPECT_EQ(outputsOf(copy, {1090}), (Values{1088}));
}
