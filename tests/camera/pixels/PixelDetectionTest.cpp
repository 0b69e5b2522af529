#include "camera/pixels/PixelDetection.h"

#include "tests/camera/Support.h"

TEST(Pixels, MeasureNoiseInFractionsOfADigit)
{
    StillSeries first, second;
    for (const int value : {10, 11, 10, 11}) {
        first.add(Frame(1, 1, static_cast<unsigned short>(value)));
        second.add(Frame(1, 1, static_cast<unsigned short>(value + 100)));
    }
    PixelMap map(1, 1, 0);
    const auto results = checkNetd(first, 20, second, 30, {}, map);
    EXPECT_EQ(results.dMeanResponsivity, 10);
    EXPECT_NEAR(results.dMeanNoise, 0.577, 0.03); // the square root of 1/3, in steps of 1/16
    EXPECT_NEAR(results.dMeanNetd, 0.0577, 0.003);
}

TEST(Pixels, HaveToRiseFromEachFrameToTheNext)
{
    PixelDetection detection(0, true);
    // The first pixel falls at last, and stays above where it began.
    for (const auto& [first, second] : {std::pair(1000, 900), {1200, 1000}, {1100, 1100}})
        detection.add((Frame(1, 2) << first, second));
    EXPECT_EQ(detection.map()(0, 0), 32);
    EXPECT_EQ(detection.map()(0, 1), 0);
}
