#include "camera/stages/BadPixelStage.h"

#include "tests/camera/Support.h"

TEST(BadPixelStage, TakesAllMeansBeforeItReplaces)
{
    // Each stands in for the other.
    velmo::exp::vision::BadPixel left{{0, 0}, {{1, 0}, {1, 0}, {1, 0}, {1, 0}}};
    velmo::exp::vision::BadPixel right{{1, 0}, {{0, 0}, {0, 0}, {0, 0}, {2, 0}}};
    const auto stage = makeBadPixelStage({}, {"records", {left, right}});
    EXPECT_EQ(stage->name(), "bad pixels 2");
    Frame frame = (Frame(1, 3) << 10, 65535, 16);
    stage->apply(frame);
    EXPECT_THAT(frame, ElementsAre(65535, 11, 16)); // (26 * 8 + 20 * 14) / 44: above and below differ less

    Frame narrow(1, 2), none;
    EXPECT_THROW(stage->apply(narrow), Exception);
    left.replacePixel[2] = {-1, 0};
    EXPECT_THROW(makeBadPixelStage({}, {"records", {left}})->apply(none), Exception);
    EXPECT_THROW(makeBadPixelStage({}, {"records", {left}})->apply(frame), Exception);
    EXPECT_EQ(makeBadPixelStage({}, {}), nullptr);
}

TEST(BadPixelStage, FollowsEdges)
{
    const auto value = [](int right, int below, int above, int left) {
        const auto stage = makeBadPixelStage({}, {"records", {{{1, 1}, {{2, 1}, {1, 2}, {1, 0}, {0, 1}}}}});
        Frame frame = (Frame(3, 3) << 0, above, 0, left, 0, right, 0, below, 0);
        stage->apply(frame);
        return frame(1, 1);
    };
    EXPECT_EQ(value(10, 11, 11, 10), 11); // all agree: their mean, half is up
    EXPECT_EQ(value(1000, 500, 500, 0), 500);
    EXPECT_EQ(value(1000, 900, 900, 0), 897); // an edge from top to bottom: (1000 * 8 + 1800 * 1008) / 2032
    EXPECT_EQ(value(65535, 65535, 0, 0), 32768); // nothing wraps
}

TEST(BadPixelStage, LearnsOnTwentyFrames)
{
    const auto stage = makeBadPixelStage(settingsWith({{"pixels/records", "auto"}}), {});
    for (int n = 0; n < 25; ++n) {
        Frame frame = matrixOf<unsigned short>(
            {30, 20}, [&](int y, int x) { return 5000 + 40 * n + 3 * x + (x * 7 + y * 5 + n) % 4; });
        frame(9, 12) = 0;
        const Frame before = frame.clone();
        stage->apply(frame);
        EXPECT_EQ(cv::countNonZero(frame != before), n < 19 ? 0 : 1) << n;
        EXPECT_NEAR(frame(9, 12), n < 19 ? 0 : 5036 + 40 * n, n < 19 ? 0 : 4);
    }
    EXPECT_EQ(stage->name(), "bad pixels 1");
}
