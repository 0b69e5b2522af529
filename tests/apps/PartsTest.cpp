#include "tests/apps/TemporaryFolder.h"

#include "apps/thermal/Error.h"
#include "apps/thermal/Progress.h"
#include "apps/thermal/Simulator.h"
#include "apps/thermal/Table.h"
#include "camera/settings/Parse.h"
#include "recordings/PictureSink.h"

#include <opencv2/imgcodecs.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

namespace {

using testing::ElementsAre;
using thermal::Picture;
using thermal::Table;
using thermal::UsageError;

TEST(Parse, TakesWholeNumbersAndNothingElse)
{
    EXPECT_EQ(thermal::parseInt("16", "gain", 0, 16), 16);
    for (const char* text : {"", "17", "-1", "1.5", "1 ", " 1", "+1", "0x1", "99999999999999999999", "one"})
        EXPECT_THROW(thermal::parseInt(text, "gain", 0, 16), UsageError) << text;
    for (const char* text : {"", "nan", "inf", "101", "-0.1", "1e", "5%"})
        EXPECT_THROW(thermal::parseNumber(text, "share", 0, 100), UsageError) << text;
    EXPECT_EQ(thermal::parseColour("FF8000", "colour"), 0xFF8000U);
    for (const char* text : {"", "FF800", "FF80000", "GG0000", "-F8000"})
        EXPECT_THROW(thermal::parseColour(text, "colour"), UsageError) << text;
}

std::string printed(const Table& table, bool json, bool csv)
{
    std::ostringstream text;
    table.print(text, {json, csv});
    return text.str();
}

TEST(Table, IsForPeopleAndForPrograms)
{
    Table table({{"stage", "stage", 0}, {"µs", "us", 1}});
    table.add({std::string("a \"quoted\", long one"), 1.25});
    table.add({std::string("b"), std::nan("")});
    EXPECT_EQ(printed(table, false, false), "stage                  µs\n"
                                            "--------------------  ---\n"
                                            "a \"quoted\", long one  1.2\n"
                                            "b                       -\n");
    EXPECT_EQ(printed(table, true, false), "[\n  {\"stage\": \"a \\\"quoted\\\", long one\", \"us\": 1.25},\n"
                                           "  {\"stage\": \"b\", \"us\": null}\n]\n");
    EXPECT_EQ(printed(table, false, true), "stage,µs\n\"a \"\"quoted\"\", long one\",1.25\nb,\n");
}

TEST(Progress, FillsItsBar)
{
    EXPECT_EQ(thermal::progressBar(0, 8, 4), "[....] 0/8");
    EXPECT_EQ(thermal::progressBar(6, 8, 4), "[###.] 6/8");
    EXPECT_EQ(thermal::progressBar(9, 8, 4), "[####] 9/8");
}

TEST(Sink, LeavesNothingBehindUnlessFinished)
{
    const TemporaryFolder folder;
    const Picture picture(16, 16, cv::Vec3b(1, 2, 3));
    for (const char* name : {"one.png", "film.avi", "many"}) {
        thermal::openSink(folder.path() / name, std::nullopt, 9)->write(picture);
        EXPECT_THAT(folder.entries(), ElementsAre()) << name;
    }
    for (const char* name : {"one.png", "film.avi", "many"}) {
        const auto sink = thermal::openSink(folder.path() / name, std::nullopt, 9);
        sink->write(picture);
        sink->finish();
    }
    EXPECT_THAT(folder.entries(), ElementsAre("film.avi", "many", "one.png"));
}

TEST(Sink, KeepsWhatWasThereUntilItIsFinished)
{
    const TemporaryFolder folder;
    const auto write = [&](const char* name, int value, bool finish) {
        const auto sink = thermal::openSink(folder.path() / name, std::nullopt, 9);
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
    for (const char* name : {"file", "a.mp4", "nowhere/a.png", "nowhere/a", "file/a.png"})
        EXPECT_THROW(thermal::openSink(folder.path() / name, std::nullopt, 9), UsageError) << name;
    EXPECT_THROW(thermal::openSink("/dev/null", std::nullopt, 9), UsageError);
    EXPECT_THROW(thermal::openSink(folder.path() / "a.png", 2, 9), UsageError);
    EXPECT_THROW(thermal::writePicture(folder.path() / "folder.png", Picture(1, 1)), UsageError);

    const auto film = thermal::openSink(folder.path() / "a.avi", std::nullopt, 9);
    film->write(Picture(16, 16, cv::Vec3b()));
    EXPECT_THROW(film->write(Picture(16, 17, cv::Vec3b())), UsageError);
}

TEST(Simulator, GivesTheSameFramesEveryTime)
{
    thermal::Simulator one(3);
    thermal::Simulator other(3);
    thermal::Frame left;
    thermal::Frame right;
    thermal::Frame before;
    int count = 0;
    while (one.next(left)) {
        ASSERT_TRUE(other.next(right));
        EXPECT_EQ(cv::norm(left, right, cv::NORM_INF), 0);
        EXPECT_TRUE(before.empty() || cv::norm(left, before, cv::NORM_INF) > 0);
        before = left;
        ++count;
    }
    EXPECT_EQ(count, 3);
}

TEST(Simulator, ShowsWhatItPromises)
{
    thermal::Simulator camera(1);
    thermal::Frame frame;
    ASSERT_TRUE(camera.next(frame));
    EXPECT_EQ(cv::countNonZero(frame == 65535) > 0, true); // the lamp saturates
    for (const cv::Point& pixel : camera.deadPixels())
        EXPECT_LT(frame(pixel), 20);
    // A wall at 21 degrees Celsius.
    EXPECT_NEAR(cv::mean(frame(cv::Rect(60, 80, 20, 40)))[0], 29415, 30);
}

} // namespace
