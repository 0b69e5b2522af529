#include "tests/TemporaryFolder.h"
#include "tests/apps/ProgramRun.h"

#include <opencv2/imgcodecs.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace {

using testing::HasSubstr;

class Convert : public testing::Test
{
protected:
    ProgramRun run(const std::string& arguments) const
    {
        return runProgram("convert " + arguments, folder.path());
    }

    void write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(folder.path() / name, std::ios::binary) << bytes;
    }

    std::string bytes(const std::string& name) const
    {
        std::ifstream file(folder.path() / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    cv::Mat_<cv::Vec3b> picture(const std::string& name) const
    {
        return cv::imread(folder.path() / name, cv::IMREAD_COLOR);
    }

    TemporaryFolder folder;
};

TEST_F(Convert, MakesPicturesOfEveryLayout)
{
    // One pair: dark, then bright, reddish; first the bytes with the lumas in second and fourth place.
    write("uyvy", "\xC0\x28\x80\xC8");
    write("uy1vy0", "\xC0\xC8\x80\x28");
    write("yuyv", "\x28\x80\xC8\xC0");
    write("ycbcr", "\x28\x80\xC0\xC8\x80\xC0");
    for (const std::string layout : {"uyvy", "uy1vy0", "ycbcr", "yuyv"}) {
        const ProgramRun done =
            run(layout + " --raw 2x1 --from " + layout + " --to png --out " + layout + ".png");
        ASSERT_EQ(done.code, 0) << done.errors;
        const cv::Mat_<cv::Vec3b> image = picture(layout + ".png");
        ASSERT_EQ(image.size(), cv::Size(2, 1));
        const cv::Vec3b dark = image(0, 0), bright = image(0, 1);
        EXPECT_GT(bright[2], bright[0] + 30) << layout;
        if (layout == "yuyv") {
            EXPECT_EQ(dark[2], 0) << "the first pixel of a frame has no red";
            continue;
        }
        EXPECT_GT(dark[2], dark[0] + 30) << layout;
        EXPECT_GT(bright[1], dark[1] + 30) << layout;
    }
    // 24 x 1.164 = 27.936 and 64 x 1.596 = 102.144; 184 x 1.164 = 214.176.
    EXPECT_EQ(picture("uyvy.png")(0, 0), cv::Vec3b(27, 0, 130));
    EXPECT_EQ(picture("uyvy.png")(0, 1), cv::Vec3b(214, 162, 255));
}

TEST_F(Convert, MakesWhatTheEncoderTakes)
{
    const cv::Mat_<cv::Vec3b> colours =
        (cv::Mat_<cv::Vec3b>(1, 2) << cv::Vec3b(10, 100, 200), cv::Vec3b(255, 255, 255));
    cv::imwrite(folder.path() / "colours.png", colours);
    ASSERT_EQ(run("colours.png --from png --to ycbcr --out encoder.ycbcr").code, 0);
    EXPECT_EQ(bytes("encoder.ycbcr"), "\x78\x42\xB9\xFF\x80\x80"); // 120, 66, 185; 255, 128, 128
    ASSERT_EQ(run("colours.png --from png --to yuv2 --out encoder.yuv2").code, 0);
    EXPECT_EQ(bytes("encoder.yuv2"), "\x80\xFF\x42\x78");
    // Frame by frame, without a detour by way of colours.
    write("two", "ABCDEFGHIJKL");
    ASSERT_EQ(run("two --raw 2x1 --from ycbcr --to yuv2 --out two.yuv2").code, 0);
    EXPECT_EQ(bytes("two.yuv2"), "FDBALJHG");
    ASSERT_EQ(run("- --raw 2x1 --from ycbcr --to yuv2 --out piped.yuv2 <two").code, 0);
    EXPECT_EQ(bytes("piped.yuv2"), "FDBALJHG");
    // What a sensor delivered goes to the encoder in one step: grey stays grey.
    write("uyvy", "\x80\x80\x80\x80");
    ASSERT_EQ(run("uyvy --raw 2x1 --from uyvy --to yuv2 --out grey.yuv2").code, 0);
    EXPECT_EQ(bytes("grey.yuv2"), "\x80\x82\x80\x82"); // (128 - 16) x 1.164 = 130.368
}

TEST_F(Convert, MakesOnePictureOfEachFrame)
{
    write("frames", std::string(3 * 8, '\x80'));
    ASSERT_EQ(run("frames --raw 2x2 --from uyvy --to png --out pictures").code, 0);
    EXPECT_EQ(picture("pictures/frame_0002.png").size(), cv::Size(2, 2));
    EXPECT_THAT(run("frames --raw 2x2 --from uyvy --to png --out one.png").errors, HasSubstr("more"));
}

TEST_F(Convert, SaysWhatIsWrongInOneLineAndLeavesNothing)
{
    write("frame", "\x80\x80\x80\x80");
    write("nine", "123456789");
    const std::pair<std::string, std::string> wrong[] = {
        {"frame --from uyvy --to png --out a.png", "--raw"},
        {"frame --raw 2x2 --from uyvy --to png --out a.png", "frame: 4 bytes"},
        {"frame --raw 2x1 --from rgb --to png --out a.png", "rgb"},
        {"frame --raw 2x1 --from uyvy --to jpg --out a.png", "jpg"},
        {"frame --raw 2x1 --from uyvy --to png --out a.jpg", "a.jpg"},
        {"frame --raw 1x1 --from uyvy --to png --out a.png", "1x1"},
        {"frame --from png --to yuv2 --out a", "frame: not a PNG, JPEG"},
        {"frame --raw 2x1 --from png --to yuv2 --out a", "--raw"},
        {"nine --raw 3x1 --from ycbcr --to yuv2 --out a", "3x1"},
        {"nine --raw 3x1 --from ycbcr --to ycbcr --out a", "--to ycbcr"},
        {"nine --raw 3x1 --from ycbcr --to yuv2 --out missing/a", "missing"},
        {"none --raw 3x1 --from ycbcr --to yuv2 --out a", "none"},
    };
    for (const auto& [arguments, words] : wrong) {
        const ProgramRun refused = run(arguments);
        EXPECT_EQ(refused.code, 2) << arguments;
        EXPECT_THAT(refused.errors, HasSubstr(words)) << arguments;
        EXPECT_EQ(std::count(refused.errors.begin(), refused.errors.end(), '\n'), 1) << refused.errors;
        EXPECT_EQ(folder.entries(), (std::vector<std::string>{"frame", "nine"})) << arguments;
    }
}

} // namespace
