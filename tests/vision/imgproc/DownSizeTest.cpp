#include "vision/imgproc/DownSize.h"

#include "tests/Support.h"

using namespace velmo::exp::vision;

namespace {

using Frame = cv::Mat_<short>;

template <void (*resize)(Frame&, Frame&)>
Frame resized(Frame in)
{
    Frame out;
    resize(in, out);
    return out;
}

const auto twoThirds = resized<DownSize::resize240To160>, half = resized<DownSize::resize240To120>;

/// The pattern repeated over a whole frame, by default an input.
Frame tile(const Frame& pattern, cv::Size size = {240, 180})
{
    Frame frame;
    cv::repeat(pattern, size.height / pattern.rows, size.width / pattern.cols, frame);
    return frame;
}

} // namespace

TEST(DownSize, WeighsTheNearerPixelTwice)
{
    // Rows first: (2*30 + 60) / 3 = 40 and (60 + 2*90) / 3 = 80; the other rows give 0 and 300.
    const Frame out = twoThirds(tile((Frame(3, 3) << 30, 60, 90, 0, 0, 0, 300, 300, 300)));
    EXPECT_TRUE(same(out, tile((Frame(2, 2) << 26, 53, 200, 200), {160, 120}))) << out(cv::Rect(0, 0, 4, 4));
    // 2 and 15: 8.
    EXPECT_TRUE(same(half(tile((Frame(2, 2) << 1, 4, 10, 20))), Frame(90, 120, 8)));
}

TEST(DownSize, RoundsTowardZeroInEachPass)
{
    // (-2 - 1) / 3 = -1 and (-1 + 0) / 3 = 0 along the row; the rows are alike.
    EXPECT_TRUE(same(twoThirds(tile((Frame(1, 3) << -1, -1, 0))), tile((Frame(1, 2) << -1, 0), {160, 120})));
    // (-1 + 0) / 2 = 0 in one row, (-1 - 1) / 2 = -1 in the other, (0 - 1) / 2 = 0.
    EXPECT_TRUE(same(half(tile((Frame(2, 2) << -1, 0, -1, -1))), Frame(90, 120, short{0})));
    for (const short value : {-32768, -1, 1, 32767}) {
        EXPECT_TRUE(same(twoThirds(Frame(180, 240, value)), Frame(120, 160, value)));
        EXPECT_TRUE(same(half(Frame(180, 240, value)), Frame(90, 120, value)));
    }
}

TEST(DownSize, RefusesFramesOfAnotherSizeAndShrinksIntoItsInput)
{
    for (const cv::Size size : {cv::Size(0, 0), cv::Size(180, 240), cv::Size(240, 181), cv::Size(241, 180)}) {
        Frame in(size), out(3, 3, 7);
        EXPECT_THROW(DownSize::resize240To160(in, out), velmo::exp::Exception) << size;
        EXPECT_THROW(DownSize::resize240To120(in, out), velmo::exp::Exception) << size;
        EXPECT_TRUE(same(out, Frame(3, 3, 7)));
    }
    Frame both = tile((Frame(2, 2) << 1, 4, 10, 20));
    DownSize::resize240To120(both, both);
    EXPECT_TRUE(same(both, Frame(90, 120, 8)));
}
