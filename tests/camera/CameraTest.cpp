#include "camera/Camera.h"

#include "tests/camera/Support.h"

/// A wall, and a warm square that moves.
const auto frameAt = [](int time) {
    Frame frame(40, 60, static_cast<unsigned short>(1000));
    frame(cv::Rect(10 + time, 10, 8, 8)) = 2000;
    return frame;
};

TEST(Camera, ShowsWhatItCleansAndPaints)
{
    const Settings settings = settingsWith({{"noise/denoise", "normal"},
                                            {"colours/palette", "Hotcold"},
                                            {"colours/range", "1000:1900"},
                                            {"picture/scale", "2"},
                                            {"picture/legend", "true"}});
    Camera one(settings), other(settings);
    for (int time = 0; time < 4; ++time) {
        const Frame raw = frameAt(time), before = raw.clone();
        const Picture shown = one.show(raw).clone();
        EXPECT_TRUE(same(shown, other.paint(other.clean(raw))) &&
                    same(raw, before)); // its input is as it was
        EXPECT_TRUE(shown.rows == 80 && shown.cols > 120) << shown.size();
        EXPECT_EQ(shown(0, 0), cv::Vec3b(255, 0, 0));
        EXPECT_EQ(shown(2 * 14, 2 * (14 + time)), cv::Vec3b(0, 0, 255));
    }
    EXPECT_EQ(one.chain().size(), 1U);
}

TEST(Camera, MeasuresFramesAndFollowsBlobs)
{
    Camera camera(settingsWith({{"blobs/above", "1500"}, {"colours/palette", "Grayscale"}}));
    for (int time = 0; time < 3; ++time) {
        const auto& found = camera.measure(camera.clean(frameAt(time)));
        EXPECT_TRUE(found.low == 1000 && found.high == 2000);
        EXPECT_DOUBLE_EQ(found.mean, 1000 + 1000 * 64 / 2400.0);
        ASSERT_EQ(found.blobs.size(), 1U);
        EXPECT_EQ(found.blobs[0].component.getLabel(), 1U);
    }
    const Picture marked = camera.show(frameAt(3));
    EXPECT_NE(marked(10, 13)[0], marked(10, 13)[1]); // not grey: marked
}

TEST(Camera, RefusesSettingsThatContradictEachOther)
{
    const std::vector<std::pair<const char*, const char*>> wrong[] = {
        {{"colours/humidity", "20:50"}, {"colours/insulation", "20:0"}},
        {{"blobs/above", "1"}, {"blobs/below", "2"}},
        {{"blobs/above", "65536"}},
        {{"blobs/below", "-300"}, {"temperature/unit", "centikelvin"}},
        {{"colours/palette", "Pink"}}};
    for (const auto& each : wrong)
        EXPECT_THROW(Camera(settingsWith(each)), Exception) << each[0].second;
    Camera small(settingsWith({{"frame/downsize", "160x120"}}));
    EXPECT_THROW(small.show(frameAt(0)), Exception);
}
