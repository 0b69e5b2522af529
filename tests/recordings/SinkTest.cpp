#include "tests/TemporaryFolder.h"

#include "recordings/PictureSink.h"

#include "core/Exception.h"

#include <opencv2/imgcodecs.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using velmo::camera::Picture;
using velmo::exp::Exception;

TEST(Sink, LeavesNothingBehindUnlessFinished)
{
    const TemporaryFolder folder;
    const Picture picture(16, 16, cv::Vec3b(1, 2, 3));
    for (const char* name : {"one.png", "film.avi", "many"}) {
        velmo::recordings::openSink(folder.path() / name, std::nullopt, 9)->write(picture);
        EXPECT_THAT(folder.entries(), ElementsAre()) << name;
    }
    for (const char* name : {"one.png", "film.avi", "many"}) {
        const auto sink = velmo::recordings::openSink(folder.path() / name, std::nullopt, 9);
        sink->write(picture);
        sink->finish();
    }
    EXPECT_THAT(folder.entries(), ElementsAre("film.avi", "many", "one.png"));
}

TEST(Sink, KeepsWhatWasThereUntilItIsFinished)
{
    const TemporaryFolder folder;
    const auto write = [&](const char* name, int value, bool finish) {
        const auto sink = velmo::recordings::openSink(folder.path() / name, std::nullopt, 9);
        sink->write(Picture(4, 4, cv::Vec3b::all(static_cast<unsigned char>(value))));
        if (finish)
            sink->finish();
    };
    const auto stored = [&](const char* name) {
        return cv::imread(folder.path() / name).at<cv::Vec3b>(0, 0)[0];
    };
    write("one.png", 1, true);
    write("one.png", 2, false);
    EXPECT_EQ(stored("one.png"), 1);
    write("one.png", 3, true);
    EXPECT_EQ(stored("one.png"), 3);

    write("many", 1, true);
    cv::imwrite(folder.path() / "many/other.png", cv::Mat(1, 1, CV_8U));
    write("many", 2, true);
    EXPECT_EQ(stored("many/frame_0000.png"), 2);
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "many/other.png"));
}

TEST(Sink, RefusesPlacesThatCannotTakeIt)
{
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path() / "folder.png");
    std::filesystem::create_directory(folder.path() / "folder");
    cv::imwrite(folder.path() / "file.png", cv::Mat(1, 1, CV_8U));
    std::filesystem::rename(folder.path() / "file.png", folder.path() / "file");
    for (const char* name : {"file", "a.mov", "nowhere/a.png", "nowhere/a", "file/a.png"})
        EXPECT_THROW(velmo::recordings::openSink(folder.path() / name, std::nullopt, 9), Exception) << name;
    EXPECT_THROW(velmo::recordings::openSink("/dev/null", std::nullopt, 9), Exception);
    EXPECT_THROW(velmo::recordings::openSink(folder.path() / "a.png", 2, 9), Exception);
    EXPECT_THROW(velmo::recordings::writePicture(folder.path() / "folder.png", Picture(1, 1)), Exception);

    const auto film = velmo::recordings::openSink(folder.path() / "a.avi", std::nullopt, 9);
    film->write(Picture(16, 16, cv::Vec3b()));
    EXPECT_THROW(film->write(Picture(16, 17, cv::Vec3b())), Exception);
}

} // namespace
