#include "vision/radiometry/RadiometricTools.h"

#include "tests/Support.h"

using velmo::vision::RadiometricTools;

TEST(RadiometricTools, CountsHundredthsOfAKelvin)
{
    const std::pair<unsigned short, float> values[] = {{0, -273.15f}, {65535, 382.2f}, {3003, -243.12f},
                                                       {27315, 0.0f}, {29315, 20.0f},  {27316, 0.01f}};
    for (const auto& [value, celsius] : values)
        EXPECT_FLOAT_EQ(RadiometricTools::getFloat(value), celsius);
}
