#include "recordings/PictureSink.h"
#include "recordings/ThreadedSink.h"
#include "tests/Support.h"

#include <chrono>
#include <thread>

namespace {

using namespace velmo::camera;
using namespace velmo::recordings;

using Sink = FilesTest;

TEST_F(Sink, KnowsWhichFramesOfAFolderItWouldReplace)
{
    Outputs outputs;
    outputs.protect({put("run/frame_0003.png", "")});
    EXPECT_NO_THROW(openSink(outputs, path("run"), 3, 9));
    EXPECT_THROW(openSink(outputs, path("run"), 4, 9), Exception);
}

TEST_F(Sink, RefusesPlacesThatCannotTakeIt)
{
    Outputs outputs;
    std::filesystem::create_directory(path("folder.png"));
    put("file", "");
    for (const char* name : {"file", "a.mov", "nowhere/a.png", "nowhere/a", "file/a.png"})
        EXPECT_THROW(openSink(outputs, path(name), std::nullopt, 9), Exception) << name;
    EXPECT_THROW(openSink(outputs, "/dev/null", std::nullopt, 9), Exception);
    EXPECT_THROW(openSink(outputs, path("a.png"), 2, 9), Exception);
    EXPECT_THROW(writePicture(outputs, path("folder.png"), Picture(1, 1)), Exception);

    const auto film = openSink(outputs, path("a.avi"), std::nullopt, 9);
    film->write(Picture(16, 16, cv::Vec3b()));
    film->write(Picture(16, 17, cv::Vec3b()));
    EXPECT_THROW(film->finish(), Exception); // films are packed on a thread of their own
}

/// Notes what comes; fails at the picture of a value.
struct NotingSink : ImageWriter
{
    NotingSink(std::vector<int>& noted, int failing) : values(noted), failAt(failing) {}

    void write(const cv::Mat& picture) override
    {
        const int value = picture.at<unsigned char>(0, 0);
        if (value == failAt)
            VELMO_THROW("disk full");
        values.push_back(value);
        std::this_thread::sleep_for(std::chrono::milliseconds(value % 3));
    }
    void finish() override { values.push_back(1000); }

    std::vector<int>& values;
    int failAt;
};

TEST(ThreadedSink, KeepsTheOrderAndEndsWithTheErrorOfEitherSide)
{
    const auto run = [](int failAt, int stopAt) {
        std::vector<int> values;
        {
            ThreadedSink sink(std::make_unique<NotingSink>(values, failAt));
            cv::Mat picture(4, 4, CV_8UC3); // one for all: the sink takes copies
            for (int i = 0; i < stopAt; ++i)
                sink.write(picture.setTo(cv::Scalar::all(i)));
            if (stopAt == 50)
                sink.finish();
        }
        return values;
    };
    std::vector<int> all(50);
    std::iota(all.begin(), all.end(), 0);
    all.push_back(1000);
    EXPECT_EQ(run(-1, 50), all);
    EXPECT_THROW(run(7, 50), Exception);
    EXPECT_THROW(run(49, 50), Exception); // known only when finished
    EXPECT_THAT(run(-1, 20), testing::Not(testing::Contains(1000)));
}

TEST_F(Sink, OfFramesRefusesWhatLosesThem)
{
    Outputs outputs;
    for (const char* name : {"a.avi", "a.jpg", "folder/a.npy"})
        EXPECT_THROW(openFrameSink(outputs, path(name), 1), Exception) << name;
    FrameFormat format;
    format.degrees = true;
    EXPECT_THROW(openFrameSink(outputs, path("a.mkv"), 1, format), Exception);
}

} // namespace
