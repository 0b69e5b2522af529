#include "camera/settings/Parse.h"

#include "camera/temperature/Thermometer.h"
#include "tests/camera/Support.h"

using namespace testing;

using Edge = Thermometer::Edge;

constexpr float below = fBelow;

// Constants of five cameras.
constexpr const char* plant = "planck:17096.453,1428,1,-488,0.049869";
constexpr const char* heron = "planck:21106.77,1501,1,-7340,0.012545";
constexpr const char* flame = "planck:35354.77,1819.3,1,-8320,1.013437";
constexpr const char* ducks = "planck:16327.723,1424.8,1.35,-6872,0.023158";
constexpr const char* canopy = "planck:482576,1620.9,1,-1377,1";

TEST(Scale, GivesTheTemperaturesOfItsUnit)
{
    // Those of Planck's form were found by bisecting its forward form in double precision.
    const std::pair<const char*, std::vector<std::pair<int, double>>> units[] = {
        {"centikelvin", {{0, -273.15}, {27316, 0.01}, {30315, 30}, {65535, 382.2}}},
        {"decikelvin", {{2931, 19.95}}},
        {"kelvin/16", {{4784, 25.85}, {65535, 3822.7875}}},
        {"kelvin/64", {{19160, 26.225}}},
        {"celsius/10", {{32768, 0}, {33133, 36.5}, {30037, -273.1}, {30036, below}, {65535, 3276.7}}},
        {"linear:0.04:-273.15", {{7000, 6.85}}},
        {"linear:0.1:-1000", {{7268, below}, {7269, -273.1}}},
        {plant, {{0, below}, {488, below}, {489, -161.105928653095}, {3539, 28.713341577590}}},
        {heron,
         {{7340, below}, {7341, -168.446962892685}, {17917, 22.577886567754}, {65535, 168.550339705220}}},
        {flame, {{8320, below}, {8400, 26.071806325994}, {65535, 3548.348666955463}}},
        {ducks, {{6873, -167.343069714972}, {12679, 23.049412341134}}},
        {canopy, {{1378, -149.293278881806}, {3854, 34.000936965801}}},
        {"planck:1000,1400,0.5,0,1", {{1999, 5597626.820822}, {2000, fAbove}}}}; // where the logarithm ends
    for (const auto& [unit, values] : units)
        for (const auto& [value, celsius] : values)
            EXPECT_EQ(Scale::parse(unit).celsius(static_cast<unsigned short>(value)),
                      static_cast<float>(celsius))
                << unit << " " << value;
}

TEST(Scale, IsWrittenBackAsItIsRead)
{
    EXPECT_FALSE(Scale::parse("counts").hasDegrees());
    for (const char* unit : {"counts", "centikelvin", "decikelvin", "kelvin/16", "kelvin/64", "celsius/10",
                             "linear:0.04:-273.15", plant, heron, flame, ducks, canopy}) {
        EXPECT_EQ(Scale::parse(unit).text(), unit);
        EXPECT_EQ(Scale::parse(unit).isSigned(), unit == std::string("celsius/10"));
    }
    EXPECT_EQ(Scale::parse("linear:1e-2:-2.7315e2").text(), "linear:0.01:-273.15");
    const std::string text = Scale::linearText(1.0 / 3, -100.1 / 7);
    EXPECT_EQ(Scale::parse(text).text(), text);
}

TEST(Scale, RefusesWhatIsNoUnitWithTheValueAndTheLimit)
{
    expectRefused<std::string>(
        {{"", "centikelvin"},
         {"kelvin", "'kelvin' is not counts, centikelvin"},
         {"kelvin/32", "planck:R1,B,F,O,R2"},
         {"linear:1", "unit linear: '1' is not GAIN:OFFSET"},
         {"linear:0:20", "GAIN is 0, not above 0"},
         {"linear:nan:20", "GAIN: 'nan' is not a number"},
         {"linear:1:inf", "OFFSET: 'inf' is not a number"},
         {"linear:1e-7:20", "the values 0 and 1 are both 20.0000"},
         {"linear:0.001:-1000", "no value from 0 to 65535 has a temperature"},
         {"planck:1,2,3,4", "unit planck: '1,2,3,4' is not R1,B,F,O,R2"},
         {"planck:0,1428,1,-488,1", "R1 is 0, not above 0"},
         {"planck:17000,-1428,1,-488,1", "B is -1428, not above 0"},
         {"planck:17000,1428,x,-488,1", "F: 'x' is not a number"},
         {"planck:17000,1428,1,-488,0", "R2 is 0, not above 0"},
         {"planck:17000,1428,1,-65536,1", "no value from 0 to 65535 has a temperature"},
         {"planck:17000,1428,1,1e9,1", "in single precision"}},
        [](const std::string& unit) { Scale::parse(unit); });
}

TEST(Scale, OfASignedUnitKeepsTheOrderOfTemperatures)
{
    // -5.0, -0.1, 0 and 0.1 degrees Celsius in two's complement.
    std::vector<unsigned short> values = {0xFFCE, 0xFFFF, 0, 1};
    const Scale scale = Scale::parse("celsius/10");
    scale.reorder(values);
    EXPECT_THAT(values, ElementsAre(32718, 32767, 32768, 32769));
    EXPECT_EQ(scale.celsius(values[0]), -5);
    scale.reorder(values);
    Scale::parse("centikelvin").reorder(values);
    EXPECT_THAT(values, ElementsAre(0xFFCE, 0xFFFF, 0, 1));
}

TEST(Scale, DoubtsAMedianThatIsNotOfThisWorld)
{
    const std::tuple<const char*, unsigned short, const char*> cases[] = {
        // no words: no doubt
        {"centikelvin", 21315, ""}, // -60
        {"centikelvin", 21314, "try kelvin/64 (59.9 °C)"},
        {"centikelvin", 18005,
         "is -93.1 °C in centikelvin, outside -60.0 °C to 1500.0 °C: try kelvin/64 (8.2 °C) or the camera's "
         "Planck constants"},
        {"decikelvin", 30000, "try centikelvin (26.9 °C) or"},
        {"kelvin/16", 19000, ""}, // nobody can tell
        {"centikelvin", 4700, "try kelvin/16 (20.6 °C) or"},
        {"centikelvin", 230, "try celsius/10 (23.0 °C) or"},
        {flame, 8300, "is below all temperatures"},
        {flame, 8400, ""},
        {"linear:1:-250", 5, "try celsius/10 (0.5 °C) or"},
    };
    for (const auto& [unit, median, says] : cases) {
        const std::string doubt = Scale::parse(unit).doubt(median, Degrees::Celsius);
        EXPECT_TRUE(doubt.empty() == (*says == 0)) << unit << " " << doubt;
        EXPECT_THAT(doubt, HasSubstr(says)) << unit << " " << median;
    }
    EXPECT_THAT(Scale::parse("centikelvin").doubt(1, Degrees::Fahrenheit), HasSubstr("-76.0 °F to 2732.0"));
}

TEST(Radiometry, SeesTheObjectBehindWhatIsSeen)
{
    // Found by bisecting the sum of radiances in double precision.
    const std::tuple<Radiometry::Settings, const char*, double, double, double> cases[] = {
        {{0.95, 20, 1, 20, 1, 20}, "1430,1", 60, 58.279549970305, 30.500904061554},
        {{0.95, 20, 1, 20, 1, 20}, "1430,1", 2500, 2392.129010035012, 30.500904061554},
        {{0.3, 22, 1, 20, 1, 20}, "1430,1", 100, 50.453095754513, 46.687152717093},
        {{0.85, 25, 0.92, 15, 0.8, 30}, "1430,1", 150, 112.888123491793, 32.266890077376},
        {{0.98, 20, 1, 20, 1, 20}, "total", 36.5, 36.195001707398, 30.194017480959},
        {{0.6, 30, 0.97, 25, 1, 20}, "total", 800, 665.242038499800, 30.251113248949},
        {{0.93, 10, 1, 20, 1, 20}, "1424.8,1.35", 25, 24.021087782982, 31.358110182083},
    };
    for (const auto& [settings, band, object, apparent, objectOf30] : cases) {
        const Radiometry radiometry(settings, Band::parse(band));
        EXPECT_NEAR(radiometry.apparent(object), apparent, 1e-8) << object;
        EXPECT_NEAR(radiometry.object(apparent), object, 1e-8) << object;
        EXPECT_NEAR(radiometry.object(30), objectOf30, 1e-8) << object;
    }
}

TEST(Radiometry, HasNoNumberForWhatLiesOutsideTheFormula)
{
    Radiometry::Settings mirror;
    mirror.emissivity = 0.1;
    const Radiometry radiometry(mirror, Band());
    for (const double cold : {10.0F, below}) // less than the surroundings alone send
        EXPECT_EQ(radiometry.object(cold), below);
    EXPECT_EQ(radiometry.object(fAbove), fAbove);
    // With F above 1 there is a temperature without end: 1430 / ln 1.35 K.
    EXPECT_EQ(Radiometry(mirror, Band::parse("1430,1.35")).object(4600), fAbove);
    EXPECT_EQ(Radiometry(mirror, Band::parse("1430,0.5")).object(3000), fAbove);
    EXPECT_TRUE(Radiometry().changesNothing() && Radiometry().object(-270) == -270);
}

TEST(Radiometry, RefusesValuesBeyondTheirLimits)
{
    expectRefused<Radiometry::Settings>(
        {
            {{0.009}, "emissivity: 0.009 is not from 0.01 to 1"},
            {{std::nan("")}, "emissivity: nan"},
            {{1, -274}, "reflected temperature: -274 °C"},
            {{1, 5000}, "beyond what the band 1430,1.35 knows"},
            {{1, 20, 0}, "transmission: 0 is"},
            {{1, 20, 1, INFINITY}, "temperature of the air: inf"},
            {{1, 20, 1, 20, 2}, "transmission of the window: 2"},
            {{1, 20, 1, 20, 1, -300}, "temperature of the window: -300"},
        },
        [](const auto& settings) { Radiometry(settings, Band::parse("1430,1.35")); });
    for (const char* band : {"", "0", "-1", "1430,1,1", "1430,", "Total", "nan"})
        EXPECT_THROW(Band::parse(band), Exception) << band;
}

TEST(Radiometry, KnowsWhatAirLetsThrough)
{
    const double cases[][4] = {{0, 20, 50, 1},
                               {100, -10, 80, 0.966533012751},
                               {1000, 20, 50, 0.786085214356},
                               {50, 35, 95, 0.902798811560}};
    for (const auto& [metres, celsius, percent, share] : cases)
        EXPECT_NEAR(airTransmission(metres, celsius, percent), share, 1e-12) << metres;
    // The form falls below zero on a long way through wet heat.
    EXPECT_THAT([] { airTransmission(2000, 40, 100); },
                ThrowsMessage<Exception>(AllOf(HasSubstr("2000 m"), HasSubstr("-1.38"))));
}

TEST(Scale, OfObjectsGivesTheirTemperatures)
{
    Radiometry::Settings settings;
    settings.emissivity = 0.95;
    const Scale scale = Scale::parse("centikelvin").ofObjects(Radiometry(settings, Band()));
    EXPECT_EQ(scale.text(), "centikelvin");
    EXPECT_NEAR(scale.celsius(30315), 30.500904, 1e-5);
    EXPECT_TRUE(scale.celsius(5000) == below && scale.first() > 5000); // colder than what is mirrored
    EXPECT_THROW(Scale().ofObjects(Radiometry(settings, Band())), Exception);
}

const auto valueOf = [](const char* unit, const char* typed, Edge edge, Degrees degrees = {}) {
    return Thermometer(Scale::parse(unit), degrees).valueOf(typed, edge, "--range");
};

TEST(Thermometer, TurnsDegreesIntoValues)
{
    const Degrees C = Degrees::Celsius, K = Degrees::Kelvin, F = Degrees::Fahrenheit;
    // From what is typed on, up to it, above it and below it; -1 is not asked for.
    const std::tuple<const char*, Degrees, const char*, std::vector<int>> cases[] = {
        {"centikelvin", C, "30.15", {30330, 30330, 30331, 30329}},
        {"centikelvin", C, "30.155", {30331, 30330, 30331, 30330}},
        {"centikelvin", K, "303.3", {30330, 30330, 30331, 30329}},
        {"centikelvin", F, "86.27", {30330, 30330, 30331, 30329}},
        {"centikelvin", C, "7000n", {7000, 7000, 7001, 6999}},
        {"centikelvin", K, "0", {0, 0, 1, -1}},
        {"counts", C, "7000.5", {7001, 7000, 7001, 7000}},
        {"counts", C, "7000n", {7000, 7000, 7001, 6999}},
        {"kelvin/16", C, "20", {4691, 4690, 4691, 4690}}, // 20.0375, 19.975
        {"celsius/10", C, "-0.1", {32767, 32767, 32768, 32766}},
        {flame, C, "-200", {8321, -1, 8321, 8320}}};
    const Edge edges[] = {Edge::AtOrAbove, Edge::AtOrBelow, Edge::Above, Edge::Below};
    for (const auto& [unit, degrees, typed, values] : cases)
        for (std::size_t n = 0; n < 4; ++n) {
            const int value = values[n] < 0 ? -1 : valueOf(unit, typed, edges[n], degrees);
            EXPECT_EQ(value, values[n]) << unit << " " << typed;
        }
}

TEST(Thermometer, FindsEveryValueByWhatItReads)
{
    for (const char* unit : {"centikelvin", "decikelvin", "kelvin/16", "celsius/10", plant, heron, flame})
        for (const Degrees degrees : {Degrees::Celsius, Degrees::Kelvin, Degrees::Fahrenheit}) {
            const Thermometer meter(Scale::parse(unit), degrees);
            for (int value = meter.scale().first(); value <= meter.scale().last(); value += 97) {
                const auto number = numberText(meter.read(static_cast<unsigned short>(value)));
                for (const Edge edge : {Edge::AtOrAbove, Edge::AtOrBelow})
                    ASSERT_EQ(meter.valueOf(number, edge, "x"), value) << unit << " " << number;
            }
        }
}

TEST(Thermometer, RefusesWhatTheScaleDoesNotReach)
{
    expectRefused<const char*, const char*, Edge>(
        {
            {"centikelvin", "400", Edge::AtOrAbove,
             "--range: no value is from '400'; centikelvin goes from -273.1 °C to 382.2 °C"},
            {"centikelvin", "382.2", Edge::Above, "no value is above '382.2'"},
            {"centikelvin", "-273.15", Edge::Below, "no value is below '-273.15'"},
            {flame, "-150", Edge::AtOrBelow, "no value is up to '-150'"},
            {"centikelvin", "-274", Edge::AtOrAbove, "--range: '-274' is not a number from -273.15"},
            {"centikelvin", "30C", Edge::AtOrAbove, "'30C' is not a number"},
            {"centikelvin", "65536n", Edge::AtOrAbove, "not a number from 0 to 65535"},
            {"counts", "65535", Edge::Above, "no value is above '65535'; counts goes from 0 to 65535"},
            {"counts", "7n0n", Edge::Above, "is not a number"},
        },
        [](auto... given) { valueOf(given...); });
}

TEST(Thermometer, SaysWhatAValueIs)
{
    const Thermometer counts, meter(Scale::parse(flame)),
        kelvin(Scale::parse("centikelvin"), Degrees::Kelvin),
        fahrenheit(Scale::parse("centikelvin"), Degrees::Fahrenheit);
    EXPECT_EQ(counts.text(27315) + counts.unit() + counts.key(), "27315");
    EXPECT_EQ(meter.text(meter.read(11527)), "462.0 °C");
    EXPECT_EQ(meter.text(meter.read(8320)), "below");
    EXPECT_EQ(kelvin.text(kelvin.read(30015), 2), "300.15 K");
    EXPECT_EQ(fahrenheit.text(fahrenheit.read(27315)), "32.0 °F");
    EXPECT_EQ(fahrenheit.unit() + fahrenheit.key(), " °F_fahrenheit");
}

TEST(Thermometer, ReadsDifferencesWithoutAZeroPoint)
{
    const auto difference = [](const char* unit, Degrees degrees, unsigned short around) {
        return Thermometer(Scale::parse(unit), degrees).readDifference(10, around);
    };
    EXPECT_EQ(difference("counts", Degrees::Celsius, 5), 10);
    EXPECT_NEAR(difference("centikelvin", Degrees::Kelvin, 65535), 0.1, 1e-4);
    EXPECT_NEAR(difference("centikelvin", Degrees::Fahrenheit, 0), 0.18, 1e-4);
    // By the derivative of Planck's form at 28.7133 °C.
    EXPECT_NEAR(difference(plant, Degrees::Celsius, 3539), 0.207301, 1e-4);
    EXPECT_EQ(difference(plant, Degrees::Celsius, 100), 0);
}
