#include "core/physics/DewPoint.h"

#include "tests/Support.h"

using namespace velmo::exp;
using Air = quantity::Temperature<MarkedFloat>;
using Percent = quantity::Relation<MarkedFloat>;

const auto moisture = [](float surface, float air, float percent) {
    return DewPoint::calcSurfaceMoisture({surface}, Air(air), Percent(percent)).front();
};

TEST(DewPoint, HasTheSaturationPressuresOfPublishedTables)
{
    // Over water, in hPa, from the Goff-Gratch tables; the form claims a few tenths of a percent.
    const std::pair<double, double> published[] = {{-40, 0.1891}, {-20, 1.2540}, {-10, 2.8627}, {0, 6.1078},
                                                   {10, 12.272},  {20, 23.373},  {30, 42.430},  {50, 123.40}};
    for (const auto& [celsius, pressure] : published)
        EXPECT_NEAR(DewPoint::calcSaturationPressure(celsius), pressure, 0.006 * pressure) << celsius;
    EXPECT_EQ(DewPoint::calcSaturationPressure(0), 6.112);
    EXPECT_EQ(DewPoint::calcSaturationPressure(-243.12), 0.0);
}

TEST(DewPoint, GivesHumidityAtSurfaces)
{
    EXPECT_FLOAT_EQ(moisture(20, 20, 50), 50.0f);
    // Twice the pressure at 9.27 degrees is that at 20: half-saturated air is saturated there.
    EXPECT_NEAR(moisture(9.27f, 20, 50), 100.0f, 0.1f);
    EXPECT_NEAR(moisture(30, 20, 50), 50.0f * 23.373f / 42.430f, 0.1f);
    EXPECT_EQ(moisture(5, 20, 50), 100.0f);
    EXPECT_EQ(moisture(5, 20, 0), 0.0f);
    EXPECT_TRUE(DewPoint::calcSurfaceMoisture({}, Air(20.0f), Percent(50.0f)).empty());
    MarkedFloat full(100.0f);
    full.setMark(7);
    EXPECT_EQ(DewPoint::calcSurfaceMoisture({20.0f}, Air(20.0f), Percent(full)).front(), 100.0f);
    // Computed in double precision: 57.910219778 and 19.669868048 percent, worked out to 40 digits.
    EXPECT_EQ(moisture(15.5f, 12.25f, 71.5f), 57.9102198f);
    EXPECT_EQ(moisture(28.5f, 19.75f, 33.25f), 19.6698680f);
    // The ratio first: both pressures are near the smallest number, times the percentage one would vanish.
    EXPECT_GT(moisture(-237.2f, -237.2f, 1e-30f), 0.0f);
}

TEST(DewPoint, StaysInItsRangeAroundThePoleAndForWhatIsNoNumber)
{
    const float pole = -243.12f;
    const float hot = 3e38f;
    const float values[] = {
        pole, std::nextafter(pole, 0.0f), std::nextafter(pole, -300.0f), -273.15f, 382.2f, hot, -hot};
    for (const float air : values)
        for (const float surface : values)
            for (const float percent : {0.0f, 50.0f, 100.0f}) {
                const float result = moisture(surface, air, percent);
                EXPECT_TRUE(result >= 0.0f && result <= 100.0f) << air << " " << surface << " " << result;
            }
    EXPECT_EQ(moisture(pole, 20, 50), 100.0f);
    EXPECT_EQ(moisture(NAN, 20, 50), 0.0f);
    // Air that cannot be is refused.
    for (const float air : {INFINITY, -INFINITY, NAN})
        EXPECT_THROW(moisture(20, air, 50), Exception) << air;
    for (const float percent : {-0.1f, 100.1f, NAN})
        EXPECT_THROW(moisture(20, 20, percent), Exception) << percent;
}

TEST(DewPoint, FindsTheDewPoint)
{
    EXPECT_NEAR(DewPoint::calcDewPoint(Air(20.0f), Percent(50.0f)), 9.27f, 0.02f);
    EXPECT_NEAR(DewPoint::calcDewPoint(Air(25.0f), Percent(60.0f)), 16.7f, 0.05f);
    EXPECT_NEAR(DewPoint::calcDewPoint(Air(-12.5f), Percent(100.0f)), -12.5f, 1e-4f);
    // Dry air, and air beyond the pole of the form.
    EXPECT_EQ(DewPoint::calcDewPoint(Air(20.0f), Percent(0.0f)), -243.12f);
    EXPECT_EQ(DewPoint::calcDewPoint(Air(-250.0f), Percent(50.0f)), -243.12f);
}
