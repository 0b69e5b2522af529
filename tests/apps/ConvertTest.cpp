#include "tests/apps/ProgramFixture.h"

namespace {

class Convert : public ProgramFixture
{
protected:
    void convert(const std::string& arguments) const { said("convert " + arguments); }
};

TEST_F(Convert, MakesPicturesOfEveryLayout)
{
    // One pair: dark, then bright, reddish; first the bytes with the lumas in second and fourth place.
    write("uyvy", "\xC0\x28\x80\xC8");
    write("uy1vy0", "\xC0\xC8\x80\x28");
    write("yuyv", "\x28\x80\xC8\xC0");
    write("ycbcr", "\x28\x80\xC0\xC8\x80\xC0");
    for (const std::string layout : {"uyvy", "uy1vy0", "ycbcr", "yuyv"}) {
        convert(layout + " --raw 2x1 --from " + layout + " --to png --out " + layout + ".png");
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

    write("frames", std::string(3 * 8, '\x80'));
    convert("frames --raw 2x2 --from uyvy --to png --out pictures");
    EXPECT_EQ(picture("pictures/frame_0002.png").size(), cv::Size(2, 2));
}

TEST_F(Convert, MakesWhatTheEncoderTakes)
{
    const cv::Mat_<cv::Vec3b> colours =
        (cv::Mat_<cv::Vec3b>(1, 2) << cv::Vec3b(10, 100, 200), cv::Vec3b(255, 255, 255));
    cv::imwrite(path("colours.png"), colours);
    convert("colours.png --from png --to ycbcr --out encoder.ycbcr");
    EXPECT_EQ(bytes("encoder.ycbcr"), "\x78\x42\xB9\xFF\x80\x80"); // 120, 66, 185; 255, 128, 128
    convert("colours.png --from png --to yuv2 --out encoder.yuv2");
    EXPECT_EQ(bytes("encoder.yuv2"), "\x80\xFF\x42\x78");
    // Frame by frame, without a detour by way of colours.
    write("two", "ABCDEFGHIJKL");
    convert("two --raw 2x1 --from ycbcr --to yuv2 --out two.yuv2");
    EXPECT_EQ(bytes("two.yuv2"), "FDBALJHG");
    EXPECT_EQ(shell("convert - --raw 2x1 --from ycbcr --to yuv2 --out piped.yuv2 <two").code, 0);
    EXPECT_EQ(bytes("piped.yuv2"), "FDBALJHG");
    // What a sensor delivered goes to the encoder in one step: grey stays grey.
    write("uyvy", "\x80\x80\x80\x80");
    convert("uyvy --raw 2x1 --from uyvy --to yuv2 --out grey.yuv2");
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
                    {"convert nine --raw 3x1 --from ycbcr --to yuv2 --out missing/a", "missing"},
                    {"convert nine --raw 1x1 --from ycbcr --to png --out a.png", "more"},
                    {"convert none --raw 3x1 --from ycbcr --to yuv2 --out a", "none"}});
}

} // namespace
