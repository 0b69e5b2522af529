#include "tests/apps/ProgramRun.h"

#include "camera/Frame.h"

#include <opencv2/imgcodecs.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;
using velmo::camera::Frame;

class BlobsCommand : public testing::Test
{
protected:
    BlobsCommand()
    {
        for (int i = 0; i < 3; ++i) {
            Frame frame(48, 64, 29315); // 20 degrees
            frame(cv::Rect(5 + 2 * i, 10, 8, 4)) = 30315;
            frame(cv::Rect(40, 30, 2, 1)) = 30316;
            cv::imwrite(folder.path() / ("f" + std::to_string(i) + ".png"), frame);
        }
    }

    ProgramRun run(const std::string& arguments) { return runProgram("blobs " + arguments, folder.path()); }

    TemporaryFolder folder;
};

} // namespace

TEST_F(BlobsCommand, PrintsWhatItMeasures)
{
    const ProgramRun values = run("'f*.png' --above 30000 --csv --out drawn");
    EXPECT_EQ(values.code, 0) << values.errors;
    EXPECT_THAT(values.output, HasSubstr("frame,label,pixels,x,y,box x,box y,box w,box h,elongation,"));
    EXPECT_THAT(values.output, HasSubstr("\n0,1,32,8.5,11.5,5,10,8,4,0.25,"));
    EXPECT_THAT(values.output, HasSubstr("\n2,1,32,12.5,11.5,9,10,8,4,0.25,"));
    EXPECT_THAT(values.output, Not(HasSubstr("\n0,2,")));
    EXPECT_EQ(cv::imread(folder.path() / "drawn/frame_0002.png").size(), cv::Size(64, 48));

    // The value itself does not count, whatever its form in degrees; a blob of two pixels does.
    const ProgramRun degrees =
        run("f1.png --above 30 --celsius --min-size 1 --json --scale 3 --out drawn.png");
    EXPECT_THAT(degrees.output, HasSubstr("\"pixels\": 2,"));
    EXPECT_THAT(degrees.output, HasSubstr("\"max_celsius\": 30.01}"));
    EXPECT_THAT(degrees.output, Not(HasSubstr("\"label\": 2,")));
    EXPECT_EQ(cv::imread(folder.path() / "drawn.png").size(), cv::Size(192, 144));

    // A palette of one's own choice; grey without one.
    run("f1.png --above 30 --celsius --min-size 100 --palette Hotcold --out cold.png");
    run("f1.png --above 30 --celsius --min-size 100 --out grey.png");
    EXPECT_EQ(cv::imread(folder.path() / "cold.png").at<cv::Vec3b>(0, 0), cv::Vec3b(255, 0, 0));
    EXPECT_EQ(cv::imread(folder.path() / "grey.png").at<cv::Vec3b>(0, 0), cv::Vec3b(0, 0, 0));

    const ProgramRun none = run("f1.png --below -5.5 --celsius --json --out none.png");
    EXPECT_EQ(none.code, 0) << none.errors;
    EXPECT_EQ(none.output, "[\n]\n");
}

TEST_F(BlobsCommand, RefusesBadArgumentsInOneLine)
{
    const std::pair<const char*, const char*> faults[] = {
        {"f0.png --out o.png", "--above"},
        {"f0.png --above 1 --below 2 --out o.png", "below"},
        {"f0.png --above warm --out o.png", "'warm'"},
        {"f0.png --above 65536 --out o.png", "0 to 65535"},
        {"f0.png --below -300 --celsius --out o.png", "-273.15"},
        {"f0.png --above 1 --min-size 0 --out o.png", "--min-size"},
        {"f0.png --above 1 --range lock --out o.png", "lock"},
        {"f0.png --above 1", "--out"}};
    for (const auto& [arguments, named] : faults) {
        const ProgramRun refused = run(arguments);
        EXPECT_EQ(refused.code, 2) << arguments;
        EXPECT_THAT(refused.errors, HasSubstr(named)) << arguments;
        EXPECT_EQ(refused.output, "") << arguments;
    }
    EXPECT_THAT(folder.entries(), testing::ElementsAre("f0.png", "f1.png", "f2.png"));
}
