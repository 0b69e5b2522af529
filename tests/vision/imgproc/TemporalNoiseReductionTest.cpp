#include "vision/imgproc/TemporalNoiseReduction.h"

#include "tests/Support.h"
#include "vision/imgproc/TemporalNoiseReductionRef.h"

using namespace velmo::exp::vision;

namespace {

using Frame = cv::Mat_<unsigned short>;
using Filter = TemporalNoiseReduction<unsigned short>;
using Reference = TemporalNoiseReductionRef<unsigned short>;
using Values = std::vector<int>;

/// As start-up code of a program finds it.
const unsigned short weightOfStartUpCode = *(std::as_const(mg_aFeedbackStrength) + 15);

/// A stream of single pixels: the output of each input in turn.
template <template <class> class AnyFilter, class T>
Values outputs(AnyFilter<T>& filter, const Values& inputs)
{
    Values results;
    for (const int input : inputs) {
        cv::Mat_<T> frame(1, 1, static_cast<T>(input));
        filter.process(frame);
        results.push_back(frame(0, 0));
    }
    return results;
}

template <class AnyFilter>
Values stream(int gain, int factor, const Values& inputs)
{
    AnyFilter filter(static_cast<unsigned char>(gain), static_cast<unsigned short>(factor));
    return outputs(filter, inputs);
}

} // namespace

TEST(FeedbackStrength, IsTheWeightCurveAndEndsWithNoWeight)
{
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
    const unsigned short *weights = mg_aFeedbackStrength, *alike = mg_aFeedbackStrengthRef;
    EXPECT_TRUE(std::equal(weights, weights + 1024, alike) && alike[1024] == 0);
}

TEST(TemporalNoiseReduction, HoldsNoisePullsStepsAndLetsJumpsPass)
{
    // 14 counts are held. 100 counts: 3931 * -100 / 32768 = -11.99..., rounded down to -12. 1024 pass.
    EXPECT_EQ(stream<Filter>(16, 2048, {900, 914, 886, 1000, 2013}), (Values{900, 900, 900, 988, 2013}));
    // The general path at the same index rounds the same pull half up: 12.
    EXPECT_EQ(stream<Filter>(16, 2047, {1000, 900}), (Values{1000, 912}));
    // Exactly half a count: 16384 x 1 of 32768, and one less.
    EXPECT_EQ(stream<Filter>(0, 1024, {1001, 1000}), (Values{1001, 1001}));
    EXPECT_EQ(stream<Filter>(0, 1023, {1001, 1000}), (Values{1001, 1000}));
    // A weight halfway between two: 7708 x 256 / 2048 = 963.5 pulls by 2, 963 would pull by 1.
    EXPECT_EQ(stream<Filter>(16, 256, {1000, 949}), (Values{1000, 951}));
    // Without gain a fixed average, without factor off.
    EXPECT_EQ(stream<Filter>(0, 1024, {1000, 3000, 3000}), (Values{1000, 2000, 2500}));
    EXPECT_EQ(stream<Filter>(0, 2048, {1000, 3000, 65535}), (Values{1000, 1000, 1000}));
    EXPECT_EQ(stream<Filter>(16, 0, {1000, 1003, 0}), (Values{1000, 1003, 0}));
    // Both ends of the range.
    EXPECT_EQ(stream<Filter>(16, 2048, {0, 65535, 65530, 0}), (Values{0, 65535, 65535, 0}));
    EXPECT_EQ(stream<TemporalNoiseReduction<short>>(15, 2048, {-32768, 32767, 32760, -32768}),
              (Values{-32768, 32767, 32767, -32768}));
}

TEST(TemporalNoiseReduction, HasTwoPathsThatRoundDifferently)
{
    for (const auto& [path, rounded] :
         {std::pair(&Filter::filterWithMaxParam, 911), {&Filter::filterWithAnyParam, 912}}) {
        Filter filter(16, 2048);
        Frame first(1, 1, 1000), next(1, 1, 900), other(3, 5, 777);
        filter.initFilter(first);
        (filter.*path)(next);
        (filter.*path)(other); // another size: the state is built
        EXPECT_TRUE(next(0, 0) == rounded && same(other, Frame(3, 5, 777))) << next;
    }
}

TEST(TemporalNoiseReduction, LimitsAndWarnsInSettersOnly)
{
    Filter filter(0, 0);
    testing::internal::CaptureStdout();
    filter.setControlGain(200);
    filter.setFeedbackFactor(4000);
    filter.setControlGain(16);
    filter.setFeedbackFactor(2048);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "TemporalNoiseReduction Attention: limiting ControlGain to 16!!\n"
              "TemporalNoiseReduction Attention: limiting m_u16FeedbackFactor to 2048!!\n");
    EXPECT_EQ(outputs(filter, {1000, 1100}), (Values{1000, 1088})); // both at their maximum
}

TEST(TemporalNoiseReduction, StartsAnewWithOtherWeightsAfterASetter)
{
    // Half weight, whatever the difference; a quarter; the curve at gain 8: 100 becomes 50, 7862 / 32768 of
    // 100.
    Filter filter(0, 1024);
    EXPECT_EQ(outputs(filter, {1000, 1100}), (Values{1000, 1050}));
    filter.setFeedbackFactor(512);
    EXPECT_EQ(outputs(filter, {1000, 1100}), (Values{1000, 1075}));
    filter.setFeedbackFactor(512);
    EXPECT_EQ(outputs(filter, {1200}), (Values{1200}));
    filter.setFeedbackFactor(2047);
    outputs(filter, {1000, 1100});
    filter.setControlGain(8);
    EXPECT_EQ(outputs(filter, {1000, 1100}), (Values{1000, 1076}));
    filter.setControlGain(8);
    EXPECT_EQ(outputs(filter, {1200}), (Values{1200}));
}

TEST(TemporalNoiseReduction, KeepsTheWeightsOfItsConstructionInCopiesToo)
{
    const unsigned short before = mg_aFeedbackStrength[10];
    mg_aFeedbackStrength[10] = 16384;
    Filter edited(16, 2048);
    mg_aFeedbackStrength[10] = before;
    Filter copy(edited), assigned(16, 2048);
    assigned = edited;
    for (Filter* filter : {&edited, &copy, &assigned})
        EXPECT_EQ(outputs(*filter, {1000, 1010}), (Values{1000, 1005}));
    EXPECT_EQ(stream<Filter>(16, 2048, {1000, 1010}), (Values{1000, 1000}));
}

TEST(TemporalNoiseReductionRef, RoundsOnlyWhatItHandsOut)
{
    // A quarter of the way each time: 100, 175, 231.25, 273.44, 305.08. A state of whole numbers would give
    // 304 at the end.
    EXPECT_EQ(stream<Reference>(0, 1536, {100, 400, 400, 400, 400}), (Values{100, 175, 231, 273, 305}));
    // Halves go away from zero.
    EXPECT_EQ(stream<TemporalNoiseReductionRef<short>>(0, 1024, {-1, 0}), (Values{-1, -1}));
    EXPECT_EQ(stream<Reference>(0, 1024, {0, 1}), (Values{0, 1}));
}

TEST(TemporalNoiseReductionRef, HoldsNoiseAndLetsWhatIsBeyondTheTablePass)
{
    EXPECT_EQ(stream<Reference>(16, 2048, {1000, 1014, 986, 5000}), (Values{1000, 1000, 1000, 5000}));
    // 200 * 82 / 16 = 1025 and 200 * 81.84 / 16 = 1023: the last entry, and the one before it.
    EXPECT_EQ(stream<Reference>(200, 2048, {0, 82, 65535, 0}), (Values{0, 82, 65535, 0}));
    EXPECT_EQ(stream<TemporalNoiseReductionRef<short>>(255, 2048, {-32768, 32767, -32768}),
              (Values{-32768, 32767, -32768}));
    // 16368 / 16 = 1023, the last entry with a weight, 3: it pulls by 1.5.
    EXPECT_EQ(stream<Reference>(1, 2048, {0, 16368}), (Values{0, 16367}));
    // 232 / 16 is 14.5: half a step away from zero to 15, which has 96 percent.
    EXPECT_EQ(stream<Reference>(1, 2048, {1000, 1232}), (Values{1000, 1009}));
}

TEST(TemporalNoiseReductionRef, StaysDefinedWhenTheRecurrenceGrowsWithoutBound)
{
    // 16 times the difference: 898560, 14226960, 227481360, of which the output has the low 16 bits. From 32
    // bits on the output is 0, also where the state is infinite or not a number.
    Values inputs(60, 10000), expected(60, 0);
    inputs[0] = 65535;
    std::copy_n(std::begin({65535, 46592, 5648, 5904}), 4, expected.begin());
    EXPECT_EQ(stream<Reference>(0, 32768, inputs), expected);
}

TEST(TemporalNoiseReductionRef, StartsAnewAfterASetterAndNeitherLimitsNorWarns)
{
    Reference filter;
    testing::internal::CaptureStdout();
    EXPECT_EQ(outputs(filter, {1000, 1005}), (Values{1000, 1000}));
    filter.setControlGain(200);
    EXPECT_EQ(outputs(filter, {1005, 1087}), (Values{1005, 1087}));
    filter.setControlGain(0);
    filter.setFeedbackFactor(4096); // twice the difference
    EXPECT_EQ(outputs(filter, {1010, 1000}), (Values{1010, 1020}));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}
