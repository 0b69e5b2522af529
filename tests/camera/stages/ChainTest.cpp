#include "camera/stages/Chain.h"

#include "tests/camera/Support.h"

#include "vision/imgproc/TemporalNoiseReduction.h"

TEST(Chain, HasItsStagesInTheOrderInWhichTheyBuildOnEachOther)
{
    const Chain chain(settingsWith({{"frame/downsize", "120x90"},
                                    {"noise/spatial", "3"},
                                    {"noise/denoise", "light"},
                                    {"noise/temporal", "16:2048"},
                                    {"noise/pattern", "10:1:2"}}),
                      {"records", {{{0, 0}, {}}}});
    std::string names;
    for (std::size_t i = 0; i < chain.size(); ++i)
        names += chain.name(i) + ", ";
    EXPECT_EQ(names,
              "bad pixels 1, pattern 10:1:2, temporal 16:2048, spatial 3, denoise light, downsize 120x90, ");
    EXPECT_EQ(Chain(Settings()).size(), 0U);
}

/// Values of the upper and the lower half of the 16-bit range side by side, and full scale.
const auto wideFrame = []() {
    Frame frame(180, 240, static_cast<unsigned short>(32760));
    frame.colRange(100, 200) = 32780;
    frame.colRange(200, 240) = 65535;
    return frame;
};

TEST(Chain, KeepsCalmFramesOfAnyValue)
{
    // What all filters have in common: a still scene without noise stays, on both sides of 32768.
    Chain chain(
        settingsWith({{"noise/pattern", "5:10:10"}, {"noise/temporal", "8:1800"}, {"noise/spatial", "1"}}));
    for (int i = 0; i < 3; ++i) {
        Frame frame = wideFrame();
        chain.apply(frame);
        for (const auto& [from, to, most] : {std::tuple(0, 95, 0), {95, 198, 6}, {202, 240, 0}})
            EXPECT_LE(cv::norm(frame.colRange(from, to), wideFrame().colRange(from, to), cv::NORM_INF), most);
    }
    EXPECT_GT(chain.microseconds(0), 0);
}

TEST(Chain, HandsItsNumbersOnInTheirOrder)
{
    Chain chain(settingsWith({{"noise/temporal", "3:700"}}));
    velmo::exp::vision::TemporalNoiseReduction<unsigned short> filter(3, 700);
    Random random(3);
    for (int i = 0; i < 3; ++i) {
        Frame frame = random.frame<unsigned short>({8, 8}, 1000, 1100), expected = frame.clone();
        chain.apply(frame);
        filter.process(expected);
        EXPECT_TRUE(same(frame, expected));
    }
}

TEST(Chain, DownSizeKeepsTheOrderOfValues)
{
    Chain chain(settingsWith({{"frame/downsize", "160x120"}}));
    Frame frame = wideFrame();
    chain.apply(frame);
    ASSERT_EQ(frame.size(), cv::Size(160, 120));
    EXPECT_EQ(frame(60, 10), 32760);
    EXPECT_EQ(frame(60, 100), 32780);
    EXPECT_EQ(frame(60, 150), 65535);
    EXPECT_THROW(chain.apply(frame), Exception);
}
