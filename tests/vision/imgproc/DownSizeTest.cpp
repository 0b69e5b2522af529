#include "vision/imgproc/DownSize.h"

#include "core/Exception.h"

#include <gtest/gtest.h>

using namespace velmo::exp::vision;

namespace {

using Frame = cv::Mat_<short>;

bool equal(const Frame& a, const Frame& b)
{
    return a.size() == b.size() && cv::countNonZero(a != b) == 0;
}

Frame twoThirds(Frame in)
{
    Frame out;
    DownSize::resize240To160(in, out);
    return out;
}

Frame half(Frame in)
{
    Frame out;
    DownSize::resize240To120(in, out);
    return out;
}

/// The pattern repeated over a whole frame, by default an input.
Frame tiled(const Frame& pattern, cv::Size size = {240, 180})
{
    Frame frame;
    cv::repeat(pattern, size.height / pattern.rows, size.width / pattern.cols, frame);
    return frame;
}

} // namespace

TEST(DownSize, WeighsTheNearerPixelTwice)
{
    // Rows first: (2*30 + 60) / 3 = 40 and (60 + 2*90) / 3 = 80; the other rows give 0 and 300.
    const Frame out = twoThirds(tiled((Frame(3, 3) << 30, 60, 90, 0, 0, 0, 300, 300, 300)));
    EXPECT_TRUE(equal(out, tiled((Frame(2, 2) << 26, 53, 200, 200), {160, 120})))
        << out(cv::Rect(0, 0, 4, 4));
    // 2 and 15: 8.
    EXPECT_TRUE(equal(half(tiled((Frame(2, 2) << 1, 4, 10, 20))), Frame(90, 120, 8)));
}

TEST(DownSize, RoundsTowardZeroInEachPass)
{
    // (-2 - 1) / 3 = -1 and (-1 + 0) / 3 = 0 along the row; the rows are alike.
    const Frame thirds = twoThirds(tiled((Frame(1, 3) << -1, -1, 0)));
    EXPECT_EQ(thirds(7, 10), -1);
    EXPECT_EQ(thirds(7, 11), 0);
    // (-1 + 0) / 2 = 0 in one row, (-1 - 1) / 2 = -1 in the other, (0 - 1) / 2 = 0.
    EXPECT_TRUE(equal(half(tiled((Frame(2, 2) << -1, 0, -1, -1))), Frame(90, 120, short{0})));
}

TEST(DownSize, KeepsConstantFramesAndReusesItsOutput)
{
    Frame out(120, 160), in(180, 240);
    const short* pixels = out[0];
    for (const int value : {-32768, -1, 0, 1, 32767}) {
        in.setTo(value);
        DownSize::resize240To160(in, out);
        EXPECT_EQ(cv::countNonZero(out == value), 160 * 120) << value;
        EXPECT_EQ(cv::countNonZero(half(in) == value), 120 * 90) << value;
    }
    EXPECT_EQ(out[0], pixels);
}

TEST(DownSize, RefusesFramesOfAnotherSize)
{
    for (const cv::Size size : {cv::Size(0, 0), cv::Size(180, 240), cv::Size(240, 181), cv::Size(241, 180)}) {
        Frame in(size), out(3, 3, 7);
        EXPECT_THROW(DownSize::resize240To160(in, out), velmo::exp::Exception) << size;
        EXPECT_THROW(DownSize::resize240To120(in, out), velmo::exp::Exception) << size;
        EXPECT_TRUE(equal(out, Frame(3, 3, 7)));
    }
}

TEST(DownSize, WorksOnViewsAndIntoItsInput)
{
    Frame large(184, 250), canvas(124, 170, short{99});
    cv::randu(large, -32768, 32767);
    Frame view = large(cv::Rect(3, 2, 240, 180)), out = canvas(cv::Rect(5, 1, 160, 120));
    DownSize::resize240To160(view, out);
    EXPECT_TRUE(equal(out, twoThirds(view.clone())));
    out.setTo(99);
    EXPECT_EQ(cv::countNonZero(canvas != 99), 0);

    Frame both = view.clone();
    DownSize::resize240To120(both, both);
    EXPECT_TRUE(equal(both, half(view.clone())));
}
