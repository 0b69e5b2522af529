#include "camera/Camera.h"

#include "tests/Allocations.h"
#include "tests/Support.h"

using namespace velmo::camera;

TEST(Camera, AllocatesNothingPerFrameOnceItRuns)
{
    Frame raw(180, 240);
    cv::randu(raw, 8000, 8060);
    Settings settings;
    settings.set("noise/denoise", "normal");
    settings.set("noise/pattern", "15:8:4");
    settings.set("noise/temporal", "16:1843");
    settings.set("noise/spatial", 4);
    settings.set("colours/range", "8000:8060");
    settings.set("picture/scale", 3);
    settings.set("picture/legend", true);
    for (const char* size : {"off", "120x90"}) {
        settings.set("frame/downsize", size);
        Camera camera(settings);
        EXPECT_EQ(allocationsOf([&] { camera.show(raw); }), 0) << size;
        EXPECT_EQ(allocationsOf([&] { camera.measure(camera.clean(raw)); }), 0) << size;
    }
    Camera automatic;
    EXPECT_EQ(allocationsOf([&] { automatic.show(raw); }), 0);
    Settings toned;
    toned.set("colours/tone", "plateau");
    toned.set("colours/detail", 3);
    Camera equalising(toned);
    EXPECT_EQ(allocationsOf([&] { equalising.show(raw); }), 0);
}
