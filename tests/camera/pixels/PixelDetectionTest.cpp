#include "camera/pixels/PixelDetection.h"

#include <gtest/gtest.h>

namespace {

using velmo::camera::Frame;
using velmo::camera::PixelMap;

TEST(Pixels, MeasureNoiseInFractionsOfADigit)
{
    velmo::camera::StillSeries first, second;
    for (const int value : {10, 11, 10, 11}) {
        first.add(Frame(1, 1, static_cast<unsigned short>(value)));
        second.add(Frame(1, 1, static_cast<unsigned short>(value + 100)));
    }
    PixelMap map(1, 1, 0);
    const auto results = velmo::camera::checkNetd(first, 20, second, 30, {}, map);
    EXPECT_EQ(results.dMeanResponsivity, 10);
    EXPECT_NEAR(results.dMeanNoise, 0.577, 0.03); // the square root of 1/3, in steps of 1/16
    EXPECT_NEAR(results.dMeanNetd, 0.0577, 0.003);
}

} // namespace
