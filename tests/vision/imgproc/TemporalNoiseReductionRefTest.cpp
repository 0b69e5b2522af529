#include "vision/imgproc/TemporalNoiseReductionRef.h"

#include "tests/vision/imgproc/PixelStream.h"
#include "vision/imgproc/TemporalNoiseReduction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <utility>
#include <vector>

using namespace velmo::exp::vision;

namespace {

Values stream(unsigned char gain, unsigned short factor, const Values& inputs)
{
    TemporalNoiseReductionRef<unsigned short> filter(gain, factor);
    return outputsOf(filter, inputs);
}

} // namespace

TEST(TemporalNoiseReductionRef, SharesTheCurveAndEndsItWithNoWeight)
{
    const unsigned short *weights = mg_aFeedbackStrength, *same = mg_aFeedbackStrengthRef;
    EXPECT_TRUE(std::equal(weights, weights + 1024, same));
    EXPECT_EQ(mg_aFeedbackStrengthRef[1024], 0);
}

TEST(TemporalNoiseReductionRef, RoundsOnlyWhatItHandsOut)
{
    // A quarter of the way each time: 100, 175, 231.25, 273.44, 305.08. A state of whole numbers would give
    // 304 at the end.
    EXPECT_EQ(stream(0, 1536, {100, 400, 400, 400, 400}), (Values{100, 175, 231, 273, 305}));
    // Halves go away from zero.
    TemporalNoiseReductionRef<short> filter(0, 1024);
    EXPECT_EQ(outputsOf(filter, {-1, 0}), (Values{-1, -1}));
    EXPECT_EQ(stream(0, 1024, {0, 1}), (Values{0, 1}));
}

TEST(TemporalNoiseReductionRef, HoldsNoiseAndLetsWhatIsBeyondTheTablePass)
{
    EXPECT_EQ(stream(16, 2048, {1000, 1014, 986, 5000}), (Values{1000, 1000, 1000, 5000}));
    // 200 * 82 / 16 = 1025 and 200 * 81.84 / 16 = 1023: the last entry, and the one before it.
    EXPECT_EQ(stream(200, 2048, {0, 82, 65535, 0}), (Values{0, 82, 65535, 0}));
    TemporalNoiseReductionRef<short> filter(255, 2048);
    EXPECT_EQ(outputsOf(filter, {-32768, 32767, -32768}), (Values{-32768, 32767, -32768}));
}

TEST(TemporalNoiseReductionRef, StaysDefinedWhenTheRecurrenceGrowsWithoutBound)
{
    TemporalNoiseReductionRef<unsigned short> filter(0, 65535); // 32 times the difference, and again
    Values inputs(40, 10000);
    inputs[0] = 65535;
    const Values outputs = outputsOf(filter, inputs);
    // From 32 bits on the output is 0, also where the state is infinite or not a number.
    EXPECT_EQ((Values(outputs.end() - 30, outputs.end())), Values(30, 0));
}

TEST(TemporalNoiseReductionRef, StartsAnewAfterASetterOrAnotherSize)
{
    TemporalNoiseReductionRef<unsigned short> filter;
    EXPECT_EQ(outputsOf(filter, {1000, 1005}), (Values{1000, 1000}));
    filter.setControlGain(16);
    EXPECT_EQ(outputsOf(filter, {1005}), (Values{1005}));
    filter.setFeedbackFactor(2048);
    EXPECT_EQ(outputsOf(filter, {1010}), (Values{1010}));
    cv::Mat_<unsigned short> other(2, 1, 3000), none;
    filter.process(other);
    EXPECT_EQ(other(1, 0), 3000);
    filter.process(none);
    EXPECT_EQ(outputsOf(filter, {1000}), (Values{1000}));
}

TEST(TemporalNoiseReductionRef, CopiesDeeplyAndIsUsableAfterAMove)
{
    TemporalNoiseReductionRef<unsigned short> filter(0, 1024);
    outputsOf(filter, {1000});
    TemporalNoiseReductionRef<unsigned short> copy(filter);
    EXPECT_EQ(outputsOf(filter, {3000}), (Values{2000}));
    EXPECT_EQ(outputsOf(copy, {2000}), (Values{1500}));
    const TemporalNoiseReductionRef<unsigned short> moved(std::move(copy));
    EXPECT_EQ(outputsOf(copy, {500, 700}), (Values{500, 600}));
    copy = filter;
    EXPECT_EQ(outputsOf(copy, {3000}), (Values{2500}));
}

TEST(TemporalNoiseReductionRef, StaysCloseToTheFastFilterOnAViewOfANoisyStream)
{
    std::mt19937 random(7);
    std::uniform_int_distribution<int> noise(-20, 20);
    TemporalNoiseReductionRef<unsigned short> reference(12, 1800);
    TemporalNoiseReduction<unsigned short> fast(12, 1800);
    cv::Mat_<unsigned short> large(20, 30);
    for (int n = 0; n < 30; ++n) {
        for (unsigned short& value : large)
            value = static_cast<unsigned short>(30000 + noise(random));
        cv::Mat_<unsigned short> copy = large(cv::Rect(3, 2, 20, 15)).clone(),
                                 view = large(cv::Rect(3, 2, 20, 15));
        reference.process(view);
        fast.process(copy);
        // The fast one stops within a few counts of where it would converge; more would be another filter.
        ASSERT_LE(cv::norm(view, copy, cv::NORM_INF), 5) << "frame " << n;
    }
}
