// Filters run at camera speed for as long as the camera does: once they have seen a frame of a stream they
// must not allocate for the next ones.

#include "tests/vision/imgproc/Filters.h"

#include "tests/Allocations.h"
#include "tests/Support.h"

TEST(Allocations, AreCounted)
{
    EXPECT_GE(allocationsOf([] { cv::Mat_<short> frame(24, 32); }), 100);
}

TEST(Allocations, DoNotHappenPerFrame)
{
    cv::RNG random(7);
    for (const FilterKind& kind : everyFilter()) {
        std::any filter = kind.filter;
        cv::Mat in(180, 240, kind.type), out;
        random.fill(in, cv::RNG::UNIFORM, 0, 101);
        EXPECT_EQ(allocationsOf([&] { kind.process(filter, in, out); }), 0) << kind.name;
    }

    // The range of colours follows the scene.
    velmo::vision::ColorPaletteConverter converter(true);
    const cv::Mat_<unsigned short> frame(180, 240, 8000);
    cv::Mat_<cv::Vec3b> picture;
    std::vector<unsigned char> palette{0, 0, 0, 255, 0, 0, 255, 255, 255};
    unsigned short min = 7000;
    EXPECT_EQ(allocationsOf([&] { converter.palletize(frame, picture, ++min, 9000, true, palette); }), 0);
}
