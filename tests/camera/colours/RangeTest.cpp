#include "camera/colours/Range.h"

#include "tests/camera/Support.h"

const auto ruleOf = [](const char* rule) { return RangeRule(settingsWith({{"colours/range", rule}})); };

const auto rangeOf = [](const char* rule, const Frame& frame) -> std::pair<int, int> {
    const ValueRange range = ruleOf(rule).of(frame);
    return {range.low, range.high};
};

const auto flat = [](int value) { return Frame(10, 10, static_cast<unsigned short>(value)); };

TEST(Range, IsOfThePixelsThatItsRuleNames)
{
    // 10000, 10001 ..., but for a dead and a saturated pixel.
    Frame frame = matrixOf<unsigned short>({1000, 1}, [](int, int column) { return 10000 + column; });
    frame(0, 0) = 0;
    frame(0, 999) = 65535;
    const std::tuple<const char*, int, int> rules[] = {{"p0:p100", 0, 65535},
                                                       {"p1:p99", 10009, 10989},
                                                       {"p0.5:p50", 10004, 10499},
                                                       {"auto", 10001, 10997},
                                                       {"29000:30000", 29000, 30000}};
    for (const auto& [rule, low, high] : rules) // automatically 0.2 percent at either end are left out
        EXPECT_EQ(rangeOf(rule, frame), std::pair(low, high)) << rule;
    Frame wide(4, 40, static_cast<unsigned short>(60000));
    wide(cv::Rect(0, 0, 20, 4)) = 300;
    EXPECT_EQ(rangeOf("p0:p100", wide(cv::Rect(0, 0, 20, 4))), std::pair(300, 300)); // rows are padded
    for (const int value : {0, 5000, 65535}) { // a flat frame is not stretched
        const auto [low, high] = rangeOf("auto", flat(value));
        EXPECT_TRUE(high - low == 20 && low <= value && value <= high) << low;
    }
}

TEST(Range, AutomaticGlidesAndJumpsToAnotherScene)
{
    const auto between = [](int low, int high) {
        Frame frame = flat(low);
        frame.rowRange(5, 10) = high;
        return frame;
    };
    RangeRule rule = ruleOf("auto");
    EXPECT_EQ(rule.of(between(1000, 2000)).high, 2000);
    EXPECT_EQ(rule.of(between(1080, 2160)).low, 1010); // an eighth of the way
    EXPECT_EQ(rule.of(between(1080, 2160)).high, 2038);
    for (int i = 0; i < 60; ++i)
        rule.of(between(1080, 2160));
    EXPECT_EQ(rule.of(between(1080, 2160)).high, 2160);
    EXPECT_EQ(rule.of(between(1600, 2700)).low, 1600); // has but a third in common with the last one
    EXPECT_TRUE(rule.of(between(1080, 9000)).high == 9000 && rule.of(between(30000, 30900)).low == 30000);
}

TEST(Range, LockIsThatOfTheFirstFramesTogether)
{
    for (const int frames : {3, 10}) { // a recording of fewer frames ends before
        RangeRule rule = ruleOf("lock");
        for (int i = 0; i < frames; ++i) {
            EXPECT_TRUE(rule.learning());
            rule.learn(flat(1000 + 100 * ((i + frames / 2) % frames))); // up, down, up
        }
        if (frames < 10)
            rule.hold();
        EXPECT_FALSE(rule.learning());
        Frame later = flat(1000);
        later(0, 0) = 5000; // 1 percent
        EXPECT_EQ(rule.of(later).low, 990);
        EXPECT_EQ(rule.of(later).high, 1010 + 100 * (frames - 1));
        EXPECT_EQ(rule.widenings(), 0U);
        later(0, 1) = 5000;
        EXPECT_TRUE(rule.of(later).high == 5000 && rule.of(flat(5000)).low == 990);
        EXPECT_EQ(rule.widenings(), 1U);
    }
}
