#include "vision/imgproc/SpatialNoiseRemover.h"

#include <gtest/gtest.h>

#include <type_traits>

using namespace velmo::exp::vision;

namespace {

using Frame = cv::Mat_<short>;

static_assert(std::has_virtual_destructor_v<SpatialNoiseRemover>);

bool equal(const Frame& a, const Frame& b)
{
    return a.size() == b.size() && cv::countNonZero(a != b) == 0;
}

Frame smoothed(int gain, const Frame& in)
{
    Frame out;
    SpatialNoiseRemover(gain).process(in, out);
    return out;
}

} // namespace

TEST(SpatialNoiseRemover, PullsAHotPixelToTheMeanAndSpreadsIt)
{
    // Centre: offset values sum to 9 * 33768 + 90 + 5 = 304007; 266007 after the eighth is taken off;
    // (266007 + 4156 + 64) >> 3 = 33778, which is 1010. Activity 80 + 8 * 10 = 160, a fifth of it: 160 / 31.
    // 13 + 5 of 32 of the excess of 80 stay: 45. Neighbours lie 10 below the same mean and move by
    // (18 * -10 + 16) >> 5 = -6 from it at an activity of 160 too: 1004. The corners and edges see the hot
    // pixel once as well, since the frame repeats pixels of 1000 only.
    const Frame in = (Frame(3, 3) << 1000, 1000, 1000, 1000, 1090, 1000, 1000, 1000, 1000);
    const Frame expected = (Frame(3, 3) << 1004, 1004, 1004, 1004, 1055, 1004, 1004, 1004, 1004);
    EXPECT_TRUE(equal(smoothed(31, in), expected)) << smoothed(31, in);
}

TEST(SpatialNoiseRemover, KeepsEdgesAndConstantFrames)
{
    const Frame edge = (Frame(2, 4) << 0, 0, 3000, 3000, 0, 0, 3000, 3000);
    EXPECT_TRUE(equal(smoothed(31, edge), edge));
    for (const int value : {-32768, -1, 0, 1, 12345, 32767})
        for (const int gain : {1, 8, 31}) {
            const Frame flat(5, 7, static_cast<short>(value));
            EXPECT_TRUE(equal(smoothed(gain, flat), flat)) << "value " << value << ", gain " << gain;
        }
}

TEST(SpatialNoiseRemover, RefusesGainsOutsideItsRange)
{
    const Frame in = (Frame(1, 3) << 0, 90, 0);
    SpatialNoiseRemover filter(31);
    EXPECT_FALSE(filter.setGain(32));
    EXPECT_FALSE(filter.setGain(-1));
    Frame out;
    filter.process(in, out);
    EXPECT_TRUE(equal(out, smoothed(31, in)));
    EXPECT_FALSE(equal(out, in));
    EXPECT_TRUE(filter.setGain(0));
    filter.process(in, out);
    EXPECT_TRUE(equal(out, in));
    EXPECT_TRUE(equal(smoothed(40, in), in));
    EXPECT_TRUE(smoothed(8, Frame()).empty());
    EXPECT_TRUE(smoothed(8, Frame(0, 5)).empty());
}

TEST(SpatialNoiseRemover, WorksOnViewsAndInPlace)
{
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(1, 9), cv::Size(9, 1), cv::Size(37, 11)}) {
        Frame large(size + cv::Size(5, 2));
        cv::randu(large, -50, 50);
        const cv::Rect place({2, 1}, size);
        const Frame expected = smoothed(31, large(place).clone());

        Frame canvas(large.size(), 99);
        Frame out = canvas(place);
        SpatialNoiseRemover(31).process(large(place), out);
        EXPECT_TRUE(equal(canvas(place), expected)) << size;
        canvas(place).setTo(99);
        EXPECT_EQ(cv::countNonZero(canvas != 99), 0) << "wrote outside the view, " << size;

        Frame both = large.clone()(place);
        SpatialNoiseRemover(31).process(both, both);
        EXPECT_TRUE(equal(both, expected)) << size;
    }
}
