#include "vision/radiometry/RadiometricTools.h"

#include "tests/Support.h"

using velmo::vision::RadiometricTools;

TEST(RadiometricTools, CountsHundredthsOfAKelvin)
{
    EXPECT_FLOAT_EQ(RadiometricTools::getFloat(0), -273.15f);
    EXPECT_FLOAT_EQ(RadiometricTools::getFloat(65535), 382.2f);
    EXPECT_FLOAT_EQ(RadiometricTools::getFloat(3003), -243.12f);
    EXPECT_EQ(RadiometricTools::getFloat(27315), 0.0f);
    EXPECT_EQ(RadiometricTools::getFloat(29315), 20.0f);
    EXPECT_EQ(RadiometricTools::getFloat(27316), 0.01f);
}
