#include "camera/stages/BadPixelStage.h"

#include "core/Exception.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using velmo::camera::Frame;
using velmo::camera::makeBadPixelStage;
using velmo::exp::Exception;

TEST(BadPixelStage, TakesAllMeansBeforeItReplaces)
{
    // Each stands in for the other.
    velmo::exp::vision::BadPixel left{{0, 0}, {{1, 0}, {1, 0}, {1, 0}, {1, 0}}};
    velmo::exp::vision::BadPixel right{{1, 0}, {{0, 0}, {0, 0}, {0, 0}, {2, 0}}};
    const auto stage = makeBadPixelStage({"records", {left, right}});
    EXPECT_EQ(stage->name(), "bad pixels 2");
    Frame frame = (Frame(1, 3) << 10, 65535, 16);
    stage->apply(frame);
    EXPECT_THAT(std::vector<int>(frame.begin(), frame.end()),
                testing::ElementsAre(65535, 12, 16)); // 46 / 4, rounded

    Frame narrow(1, 2);
    EXPECT_THROW(stage->apply(narrow), Exception);
    left.replacePixel[2] = {-1, 0};
    EXPECT_THROW(makeBadPixelStage({"records", {left}})->apply(frame), Exception);
    EXPECT_EQ(makeBadPixelStage({}), nullptr);
}

} // namespace
