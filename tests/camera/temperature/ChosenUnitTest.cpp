#include "camera/temperature/ChosenUnit.h"

#include "tests/camera/Support.h"

using Choices = std::vector<std::pair<const char*, const char*>>;

const auto chosen = [](const Choices& choices, const std::string& recorded = "centikelvin") {
    return ChosenUnit(settingsWith(choices), recorded);
};

constexpr const char* heron = "planck:21106.77,1501,1,-7340,0.012545";

TEST(ChosenUnit, IsWhatIsTypedOrElseWhatTheRecordingSaysOrWhatIsNeeded)
{
    EXPECT_EQ(chosen({}).seen.text() + chosen({}, "").seen.text(), "centikelvincounts");
    for (const char* unit : {"kelvin/64", "counts"})
        EXPECT_EQ(chosen({{"temperature/unit", unit}}).seen.text(), unit);
    EXPECT_EQ(chosen({{"colours/humidity", "20:50"}}, "counts").seen.text(), "centikelvin");
    EXPECT_EQ(chosen({{"colours/insulation", "20:0"}}, "kelvin/16").seen.text(), "kelvin/16");
    EXPECT_EQ(chosen({}).radiometry, "");
}

TEST(ChosenUnit, ReadsObjectsAsTheirSurroundingsLeaveThem)
{
    // What looks like 30 degrees, solved by bisection from the forward form in double precision.
    const std::pair<Choices, double> objects[] = {
        {{{"temperature/emissivity", "0.95"}, {"temperature/reflected", "10"}}, 30.951826},
        {{{"temperature/reflected", "10"}, {"temperature/transmission", "0.9"}},
         31.999760}, // air as mirrored
        {{{"temperature/distance", "100"}, {"temperature/air", "20:50"}}, 30.634578},
        {{{"temperature/window", "0.8:40"}}, 27.351819},
        {{{"temperature/emissivity", "0.5"}, {"temperature/band", "total"}}, 39.098150},
        {{{"temperature/emissivity", "0.5"}, {"temperature/band", "1300,1.2"}}, 39.255406}};
    for (const auto& [choices, celsius] : objects) {
        const ChosenUnit unit = chosen(choices);
        EXPECT_NEAR(unit.thermometer.read(30315), celsius, 1e-4) << unit.radiometry;
        EXPECT_EQ(unit.seen.celsius(30315), 30);
    }
    const ChosenUnit mirror = chosen(
        {{"temperature/emissivity", "0.9"}, {"temperature/reflected", "50"}, {"temperature/degrees", "F"}},
        heron);
    EXPECT_NEAR(mirror.thermometer.read(17917), 23.874081 * 1.8 + 32, 1e-4);
    EXPECT_THAT(
        chosen({{"temperature/emissivity", "0.9"}, {"temperature/window", "0.8:5"}}, heron).radiometry,
        testing::AllOf(HasSubstr("0.9 mirror 20.0 °C"), HasSubstr("window of 5.0 °C"),
                       HasSubstr("band 1501,1")));
}

TEST(ChosenUnit, RefusesWhatContradictsItselfOrSaysNothing)
{
    const Choices wrong[] = {
        {{"temperature/unit", "celsius"}},
        {{"temperature/unit", "counts"}, {"temperature/emissivity", "0.9"}},
        {{"temperature/distance", "5"}},
        {{"temperature/air", "20:50"}},
        {{"temperature/distance", "5"}, {"temperature/air", "20:50"}, {"temperature/transmission", "0.9"}},
        {{"temperature/emissivity", "0.9"}, {"temperature/reflected", "-274"}},
        {{"temperature/unit", heron}, {"temperature/emissivity", "0.9"}, {"temperature/band", "1430"}}};
    for (const Choices& choices : wrong)
        EXPECT_THROW(chosen(choices), Exception) << choices.back().first;
}
