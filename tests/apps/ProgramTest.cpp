#include <gtest/gtest.h>

#include <cstdlib>

TEST(Program, Runs)
{
    EXPECT_EQ(std::system(THERMAL_PROGRAM), 0);
}
