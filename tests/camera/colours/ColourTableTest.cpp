#include "camera/colours/LegendBar.h"

#include "tests/camera/Support.h"

const cv::Vec3b red(0, 0, 255);
const Thermometer counts;
const Thermometer centikelvin(Scale::parse("centikelvin"));

const auto isotherm = [](const std::string& text, const Thermometer& thermometer = counts) {
    return Isotherm::parse(text, "isotherm", thermometer);
};

TEST(Palette, FillsItsRangeFromEndToEnd)
{
    const Palette palette = {0, 0, 0, 255, 100, 10};
    EXPECT_THAT(expandPalette(palette, 1), ElementsAre(cv::Vec3b(0, 0, 0)));
    EXPECT_THAT(expandPalette(palette, 2), ElementsAre(cv::Vec3b(0, 0, 0), cv::Vec3b(10, 100, 255)));
    EXPECT_THAT(expandPalette(palette, 4), ElementsAre(cv::Vec3b(0, 0, 0), cv::Vec3b(3, 33, 85),
                                                       cv::Vec3b(7, 67, 170), cv::Vec3b(10, 100, 255)));
    // Fewer colours than points still end with the last point.
    EXPECT_THAT(expandPalette({1, 1, 1, 5, 5, 5, 9, 9, 9}, 2),
                ElementsAre(cv::Vec3b(1, 1, 1), cv::Vec3b(9, 9, 9)));
    EXPECT_THROW(expandPalette({}, 2), Exception);
}

TEST(ColourTable, IsReadBackwardsWhereverNoColourComesTwice)
{
    int clear = 0;
    for (const std::string& name : paletteNames())
        for (const ValueRange range : {ValueRange{0, 65535}, ValueRange{29000, 31000}, ValueRange{7, 27}}) {
            const Palette palette = findPalette(name);
            ColourTable table(palette);
            table.build(range);
            const std::vector<cv::Vec3b>& colours = table.colours();
            const auto *first = palette.data(), *last = first + palette.size() - 3;
            for (const auto& colour : {colours[0], colours[range.low]})
                EXPECT_EQ(colour, cv::Vec3b(first[2], first[1], first[0])) << name;
            for (const auto& colour : {colours[65535], colours[range.high]})
                EXPECT_EQ(colour, cv::Vec3b(last[2], last[1], last[0])) << name;
            const bool unambiguous = table.isUnambiguous();
            clear += unambiguous;
            for (int value = range.low; value <= range.high; ++value) {
                const cv::Vec3b& seen = colours[static_cast<std::size_t>(value)];
                const auto found = table.valueAt(seen);
                ASSERT_TRUE(found && colours[found->low] == seen && colours[found->high] == seen) << value;
                ASSERT_TRUE(!unambiguous || (found->low <= value && value <= found->high)) << value;
            }
        }
    EXPECT_GE(clear, 20); // of 36
    ColourTable table({0, 0, 0, 255, 255, 255, 0, 0, 0});
    table.build({100, 200});
    EXPECT_FALSE(table.isUnambiguous() || table.valueAt({1, 2, 3}));
}

TEST(ColourTable, IsBuiltAgainWhenSomethingChanges)
{
    ColourTable table(findPalette("Grayscale"));
    EXPECT_TRUE(table.build({100, 200}) && !table.build({100, 200}));
    EXPECT_TRUE(table.build({100, 201}) && table.build({99, 201}));
    table.add(isotherm("above:150:FF0000"));
    EXPECT_TRUE(table.build({99, 201}));
    EXPECT_TRUE(table.colours()[151] == red && table.colours()[65535] == red);
}

TEST(Isotherm, PaintsItsValuesAndNoOthers)
{
    const std::tuple<const char*, const Thermometer&, int, int, const char*> cases[] = {
        {"above:1500:FF0000", counts, 1501, 65535, "above 1500"},
        {"below:1500:FF0000:solid", counts, 0, 1499, "below 1500"},
        {"between:1500:1600:FF0000", counts, 1500, 1600, "1500 to 1600"},
        {"between:500:600:FF0000", counts, 500, 600, "500 to 600"},
        {"above:37.5:FF0000", centikelvin, 31066, 65535, "above 37.5 °C"},
        {"below:0:FF0000", centikelvin, 0, 27314, "below 0 °C"},
        {"between:29000n:20:FF0000", centikelvin, 29000, 29315, "29000n to 20 °C"},
    };
    for (const auto& [text, thermometer, low, high, label] : cases) {
        const Isotherm parsed = isotherm(text, thermometer);
        EXPECT_EQ(parsed.label, label);
        ColourTable table(findPalette("Grayscale"));
        table.add(parsed);
        table.build({1000, 2000});
        for (int value = 0; value < 65536; ++value)
            ASSERT_EQ(table.colours()[static_cast<std::size_t>(value)] == red, value >= low && value <= high)
                << text << " " << value;
        const ValueRange varying = table.varying();
        EXPECT_EQ(table.colours()[0], table.colours()[varying.low]) << text;
        EXPECT_EQ(table.colours()[65535], table.colours()[varying.high]) << text;
    }
}

TEST(Isotherm, BlendedKeepsTheBrightnessOfThePalette)
{
    ColourTable plain(findPalette("Ironbow")), table(findPalette("Ironbow"));
    table.add(isotherm("between:200:800:00A0FF:blend"));
    plain.build({0, 1000});
    table.build({0, 1000});
    const auto brightness = [](const cv::Vec3b& bgr) {
        return 0.114 * bgr[0] + 0.587 * bgr[1] + 0.299 * bgr[2];
    };
    for (std::size_t value = 0; value <= 1000; ++value) {
        const cv::Vec3b &under = plain.colours()[value], &over = table.colours()[value];
        ASSERT_NEAR(brightness(over), brightness(under), 0.6) << value;
        ASSERT_EQ(over != under, value >= 200 && value <= 800) << value;
        ASSERT_TRUE(over == under || over[0] >= over[2]) << value; // a blue one
    }
}

TEST(Isotherm, IsRefusedWithWhatIsWrong)
{
    expectRefused<std::string>({{"", "'' is not above:LOW:RRGGBB"},
                                {"above:37.5:FF0000:soft", "is not above:LOW:RRGGBB"},
                                {"between:1:FF0000", "between:LOW:HIGH:RRGGBB"},
                                {"above:37.5:FF000", "'FF000' is not a colour"},
                                {"above:hot:FF0000", "isotherm above: 'hot' is not a number"},
                                {"above:500:FF0000", "isotherm above: no value is above '500'"},
                                {"between:30:20:FF0000", "no value lies in 'between:30:20:FF0000'"},
                                {"between:20.001:20.002:FF0000", "no value lies in"}},
                               [](const std::string& text) { isotherm(text, centikelvin); });
    for (const char* region :
         {"", "1:2", "1:2:3", "2:1:FFFFFF", "0:65536:FFFFFF", "-1:5:FFFFFF", "1:2:FFFFFF:4"})
        EXPECT_THROW(Isotherm::parseRegion(region, "region", counts), Exception) << region;
}

TEST(ColourTable, ShowsHumidityAndWhereMouldGrows)
{
    const Palette ramp = {0, 0, 0, 255, 255, 255};
    const Air air = Air::parse("20:50", "humidity");
    for (const char* unit : {"centikelvin", "kelvin/16", "celsius/10"}) {
        const Thermometer thermometer(Scale::parse(unit));
        ColourTable table(ramp), mould(ramp);
        table.showHumidity(air, thermometer.scale(), false);
        mould.showHumidity(air, thermometer.scale(), true);
        table.build({0, 1});
        mould.build({0, 1});
        const auto at = [&](const ColourTable& from, const char* celsius) {
            return from.colours()[thermometer.valueOf(celsius, Thermometer::Edge::AtOrAbove, "x")];
        };
        // Saturation over water by Magnus: 23.34 hPa at 20 °C, so 11.67 hPa of vapour; 80 % of 14.59 hPa at
        // 12.61 °C, 100 % at 9.26 °C, 25 % of 46.7 hPa at 31.8 °C.
        EXPECT_NEAR(at(table, "20")[0], 127.5, 1.5) << unit;
        for (const char* const wet : {"9", "-100"})
            EXPECT_EQ(at(table, wet), cv::Vec3b(255, 255, 255)) << unit;
        EXPECT_NEAR(at(table, "31.8")[0], 63.75, 1.5) << unit;
        EXPECT_EQ(at(mould, "13")[0], at(mould, "13")[2]) << unit; // still grey
        EXPECT_TRUE(at(mould, "12.4")[2] > 200 && at(mould, "12.4")[0] == 0) << unit;
        EXPECT_EQ(at(mould, "5"), red) << unit;
        EXPECT_FALSE(table.build({5, 6})); // ranges play no role
        EXPECT_EQ(mould.percentColours()[799], cv::Vec3b(255, 255, 255));
        EXPECT_EQ(mould.percentColours()[800], cv::Vec3b(0, 224, 255));
    }
    EXPECT_THROW(ColourTable(ramp).showHumidity(air, Scale(), false), Exception);
}

TEST(ColourTable, ShowsHowWellAWallInsulates)
{
    const Palette ramp = {0, 0, 0, 200, 200, 200};
    ColourTable table(ramp);
    table.showInsulation(20, -5, Scale::parse("centikelvin"));
    table.build({0, 1});
    // 18.75 °C: 95 %
    for (const auto& [value, grey] : {std::pair(29315, 200), {29190, 190}, {26815, 0}, {26000, 0}})
        EXPECT_EQ(table.colours()[static_cast<std::size_t>(value)], cv::Vec3b::all(static_cast<uchar>(grey)));
    table.showInsulation(-5, 20, Scale::parse("centikelvin")); // a cold store
    table.build({0, 1});
    EXPECT_EQ(table.colours()[29190], cv::Vec3b(10, 10, 10));
    EXPECT_THROW(table.showInsulation(20, 20, Scale::parse("centikelvin")), Exception);
    EXPECT_THROW(table.showInsulation(20, 0, Scale()), Exception);
}

TEST(LegendBar, HasAtEachTickTheColourOfWhatItReads)
{
    const Thermometer flame(Scale::parse("planck:35354.77,1819.3,1,-8320,1.013437"));
    const std::tuple<const Thermometer&, ValueRange, int, const char*> cases[] = {
        {centikelvin, {29315, 30315}, 200, "30.0 °C, 28.0 °C, 26.0 °C, 24.0 °C, 22.0 °C, 20.0 °C, "},
        {centikelvin, {29312, 30317}, 110, "30.0 °C, 25.0 °C, 20.0 °C, "},
        {centikelvin, {29300, 29320}, 200, "20.05 °C, 20.00 °C, 19.95 °C, 19.90 °C, 19.85 °C, "},
        {counts, {100, 101}, 200, "101, 100, "},
        {counts, {0, 65535}, 400, "65535, 60000, 50000, 40000, 30000, 20000, 10000, 0, "},
        {flame, {8101, 11527}, 200, "462.0 °C, 400.0 °C, 300.0 °C, 199.9 °C, 99.9 °C, below, "},
        {centikelvin, {29315, 30315}, 10, "30.0 °C, "}};
    for (const auto& [thermometer, range, rows, expected] : cases) {
        ColourTable table(findPalette("Ironbow"));
        const LegendBar bar(table, range, thermometer, rows);
        ASSERT_EQ(bar.rows.size(), static_cast<std::size_t>(rows));
        std::string texts;
        for (const LegendTick& tick : bar.ticks) {
            texts += tick.text + ", ";
            const cv::Vec3b colour = bar.rows[static_cast<std::size_t>(tick.row)];
            EXPECT_EQ(colour, table.colours()[static_cast<std::size_t>(tick.value)]);
            EXPECT_TRUE(table.valueAt(colour));
        }
        EXPECT_EQ(texts, expected);
        EXPECT_EQ(bar.rows.front(), table.colours()[range.high]);
        EXPECT_EQ(bar.rows.back(), table.colours()[range.low]);
    }
    ColourTable table(findPalette("Humidity"));
    table.showHumidity(Air::parse("20:50", "humidity"), centikelvin.scale(), false);
    const LegendBar bar(table, {0, 1}, centikelvin, 120);
    EXPECT_EQ(bar.ticks.front().text + bar.ticks.back().text, "100 %0 %");
    EXPECT_EQ(bar.ticks[1].row, 60); // 50 %
}
