#include "camera/Camera.h"

#include "tests/Allocations.h"
#include "tests/camera/Support.h"

TEST(Camera, AllocatesNothingPerFrameOnceItRuns)
{
    Frame raw(180, 240);
    cv::randu(raw, 8000, 8060);
    Settings settings = settingsWith({{"noise/denoise", "normal"},
                                      {"noise/pattern", "15:8:4"},
                                      {"noise/temporal", "16:1843"},
                                      {"noise/spatial", "4"},
                                      {"colours/range", "8000:8060"},
                                      {"picture/scale", "3"},
                                      {"picture/legend", "true"}});
    for (const char* size : {"off", "120x90"}) {
        settings.set("frame/downsize", size);
        Camera camera(settings);
        EXPECT_EQ(allocationsOf([&] { camera.show(raw); }), 0) << size;
        EXPECT_EQ(allocationsOf([&] { camera.measure(camera.clean(raw)); }), 0) << size;
    }
    Camera automatic, equalising(settingsWith({{"colours/tone", "plateau"}, {"colours/detail", "3"}}));
    for (Camera* camera : {&automatic, &equalising})
        EXPECT_EQ(allocationsOf([&] { camera->show(raw); }), 0);
}
