#include "vision/imgproc/SpatialNoiseRemover.h"

#include "tests/Support.h"

using namespace velmo::exp::vision;

using Frame = cv::Mat_<short>;

static_assert(std::has_virtual_destructor_v<SpatialNoiseRemover>);

const auto smoothed = [](int gain, const Frame& in) {
    Frame out;
    SpatialNoiseRemover(gain).process(in, out);
    return out;
};

TEST(SpatialNoiseRemover, PullsAHotPixelToTheMeanAndSpreadsIt)
{
    // Centre: offset values sum to 9 * 33768 + 90 + 5 = 304007; 266007 after the eighth is taken off;
    // (266007 + 4156 + 64) >> 3 = 33778, which is 1010. Activity 80 + 8 * 10 = 160, a fifth of it: 160 / 31.
    // 13 + 5 of 32 of the excess of 80 stay: 45. Neighbours lie 10 below the same mean and move by
    // (18 * -10 + 16) >> 5 = -6 from it at an activity of 160 too: 1004. The corners and edges see the hot
    // pixel once as well, since the frame repeats pixels of 1000 only.
    const Frame in = (Frame(3, 3) << 1000, 1000, 1000, 1000, 1090, 1000, 1000, 1000, 1000);
    const Frame expected = (Frame(3, 3) << 1004, 1004, 1004, 1004, 1055, 1004, 1004, 1004, 1004);
    EXPECT_TRUE(same(smoothed(31, in), expected)) << smoothed(31, in);
}

TEST(SpatialNoiseRemover, KeepsEdgesAndConstantFrames)
{
    const Frame edge = (Frame(2, 4) << 0, 0, 3000, 3000, 0, 0, 3000, 3000);
    EXPECT_TRUE(same(smoothed(31, edge), edge));
    for (const short value : {-32768, -1, 0, 1, 12345, 32767})
        for (const int gain : {1, 8, 31})
            EXPECT_TRUE(same(smoothed(gain, Frame(5, 7, value)), Frame(5, 7, value))) << value << gain;
}

TEST(SpatialNoiseRemover, RefusesGainsOutsideItsRange)
{
    const Frame in = (Frame(1, 3) << 0, 90, 0);
    Frame out;
    SpatialNoiseRemover one(30);
    EXPECT_TRUE(one.setGain(SpatialNoiseRemover::s32MaxGain) && !one.setGain(32) && !one.setGain(-1));
    one.process(in, out);
    EXPECT_TRUE(same(out, smoothed(31, in)) && !same(out, in));
    EXPECT_TRUE(one.setGain(0));
    one.process(in, out);
    EXPECT_TRUE(same(out, in));
    for (const int gain : {40, -1})
        EXPECT_TRUE(same(smoothed(gain, in), in)) << gain;
}
