#include "tests/apps/ProgramFixture.h"

using BlobsCommand = ProgramFixture;

TEST_F(BlobsCommand, PrintsWhatItMeasures)
{
    for (int i = 0; i < 3; ++i) {
        Frame frame(48, 64, 29315); // 20 degrees
        frame(cv::Rect(5 + 2 * i, 10, 8, 4)) = 30315;
        frame(cv::Rect(40, 30, 2, 1)) = 30316;
        write("f" + std::to_string(i) + ".png", frame);
    }
    const std::string values = said("blobs f*.png --above 30000 --csv --out drawn");
    EXPECT_THAT(values, HasSubstr("frame,label,pixels,x,y,box x,box y,box w,box h,elongation,"));
    EXPECT_THAT(values, HasSubstr("\n0,1,32,8.5,11.5,5,10,8,4,0.25,"));
    EXPECT_THAT(values, HasSubstr("\n2,1,32,12.5,11.5,9,10,8,4,0.25,"));
    EXPECT_THAT(values, Not(HasSubstr("\n0,2,")));
    EXPECT_EQ(picture("drawn/frame_0002.png").size(), cv::Size(64, 48));

    // The value itself does not count, whatever its form in degrees; a blob of two pixels does.
    const std::string degrees =
        said("blobs f1.png --above 30 --celsius --min-size 1 --json --scale 3 --out drawn.png");
    EXPECT_THAT(degrees, HasSubstr("\"pixels\": 2,"));
    EXPECT_THAT(degrees, HasSubstr("\"max_celsius\": 30.01}"));
    EXPECT_THAT(degrees, Not(HasSubstr("\"label\": 2,")));
    EXPECT_EQ(picture("drawn.png").size(), cv::Size(192, 144));

    // A palette of one's own choice; grey without one.
    said("blobs f1.png --above 30 --celsius --min-size 100 --palette Hotcold --out cold.png");
    said("blobs f1.png --above 30 --celsius --min-size 100 --out grey.png");
    EXPECT_EQ(picture("cold.png")(0, 0), cv::Vec3b(255, 0, 0));
    EXPECT_EQ(picture("grey.png")(0, 0), cv::Vec3b(0, 0, 0));

    EXPECT_EQ(said("blobs f1.png --below -5.5 --celsius --json --out none.png"), "[\n]\n");
}
