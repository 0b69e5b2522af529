#include "tests/apps/ProgramFixture.h"

using Convert = ProgramFixture;

TEST_F(Convert, MakesPicturesOfEveryLayout)
{
    // One pair: dark, then bright, reddish. 24 x 1.164 = 27.936 and 64 x 1.596 = 102.144; 184 x 1.164 =
    // 214.176, 64 x 0.813 = 52.032. One layout cuts and the others round; the first pixel of a frame of YUYV
    // has no red.
    const std::tuple<std::string, const char*, cv::Vec3b, cv::Vec3b> layouts[] = {
        {"uyvy", "\xC0\x28\x80\xC8", {27, 0, 130}, {214, 162, 255}},
        {"uy1vy0", "\xC0\xC8\x80\x28", {28, 0, 130}, {214, 162, 255}},
        {"ycbcr", "\x28\x80\xC0\xC8\x80\xC0", {28, 0, 130}, {214, 162, 255}},
        {"yuyv", "\x28\x80\xC8\xC0", {40, 131, 0}, {200, 154, 255}}};
    for (const auto& [layout, bytes, dark, bright] : layouts) {
        write(layout, bytes);
        said("convert " + layout + " --raw 2x1 --from " + layout + " --to png --out " + layout + ".png");
        EXPECT_THAT(picture(layout + ".png"), testing::ElementsAre(dark, bright)) << layout;
    }

    write("frames", std::string(3 * 8, '\x80'));
    said("convert frames --raw 2x2 --from uyvy --to png --out pictures");
    EXPECT_EQ(picture("pictures/frame_0002.png").size(), cv::Size(2, 2));
}

TEST_F(Convert, MakesWhatTheEncoderTakes)
{
    const cv::Mat colours = (cv::Mat_<cv::Vec3b>(1, 2) << cv::Vec3b(10, 100, 200), cv::Vec3b(255, 255, 255));
    cv::imwrite(path("colours.png"), colours);
    said("convert colours.png --from png --to ycbcr --out encoder.ycbcr");
    EXPECT_EQ(bytes("encoder.ycbcr"), "\x78\x42\xB9\xFF\x80\x80"); // 120, 66, 185; 255, 128, 128
    said("convert colours.png --from png --to yuv2 --out encoder.yuv2");
    EXPECT_EQ(bytes("encoder.yuv2"), "\x80\xFF\x42\x78");
    // Frame by frame, without a detour by way of colours.
    write("two", "ABCDEFGHIJKL");
    EXPECT_EQ(shell("convert - --raw 2x1 --from ycbcr --to yuv2 --out piped.yuv2 <two").code, 0);
    EXPECT_EQ(bytes("piped.yuv2"), "FDBALJHG");
    // What a sensor delivered goes to the encoder in one step: grey stays grey.
    write("uyvy", "\x80\x80\x80\x80");
    said("convert uyvy --raw 2x1 --from uyvy --to yuv2 --out grey.yuv2");
    EXPECT_EQ(bytes("grey.yuv2"), "\x80\x82\x80\x82"); // (128 - 16) x 1.164 = 130.368
}

TEST_F(Convert, SaysWhatIsWrongInOneLineAndLeavesNothing)
{
    write("frame", "\x80\x80\x80\x80");
    write("nine", "123456789");
    expectRefusals({{"convert frame --from uyvy --to png --out a.png", "--raw"},
                    {"convert frame --raw 2x2 --from uyvy --to png --out a.png", "frame: 4 bytes"},
                    {"convert frame --raw 2x1 --from rgb --to png --out a.png", "rgb"},
                    {"convert frame --raw 2x1 --from uyvy --to jpg --out a.png", "jpg"},
                    {"convert frame --raw 2x1 --from uyvy --to png --out a.jpg", "a.jpg"},
                    {"convert frame --from png --to yuv2 --out a", "frame: not a PNG, JPEG"},
                    {"convert frame --raw 2x1 --from png --to yuv2 --out a", "--raw"},
                    {"convert nine --raw 3x1 --from ycbcr --to yuv2 --out a", "3x1"},
                    {"convert nine --raw 3x1 --from ycbcr --to ycbcr --out a", "--to ycbcr"},
                    {"convert nine --raw 1x1 --from ycbcr --to png --out a.png", "more"},
                    {"convert none --raw 3x1 --from ycbcr --to yuv2 --out a", "none"}});
}
