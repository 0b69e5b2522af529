#include "camera/drawing/Ticks.h"

#include "camera/measures/ShapePicture.h"
#include "tests/camera/Support.h"

using namespace testing;

using Kind = Shape::Kind;

const cv::Size frameSize(12, 9);

/// '#' where the shape has pixels, rows that have none left out.
const auto drawn = [](Kind kind, const std::string& text) {
    const std::string empty(12, '.');
    std::vector<std::string> rows(9, empty);
    for (const Run& run : Shape::parse(kind, text).runs(frameSize, "shape"))
        for (int x = run.begin; x < run.end; ++x)
            rows.at(static_cast<std::size_t>(run.row)).at(static_cast<std::size_t>(x)) = '#';
    rows.erase(std::remove(rows.begin(), rows.end(), empty), rows.end());
    return rows;
};

TEST(Shape, HasThePixelsThatItsTextSays)
{
    using Rows = std::vector<std::string>;
    const std::tuple<Kind, const char*, Rows> shapes[] = {
        {Kind::Spot, "0,8", {"#..........."}},
        {Kind::Spot, "3,3:1", {"...#........", "..###.......", "...#........"}},
        {Kind::Spot, "3,3:1.5", Rows(3, "..###.......")},
        {Kind::Spot,
         "4,4:2",
         {"....#.......", "...###......", "..#####.....", "...###......", "....#......."}},
        {Kind::Box, "9,7,3,2", Rows(2, ".........###")},
        {Kind::Line, "1,1,1,1", {".#.........."}},
        {Kind::Line, "8,1,2,3", {".......##...", "....###.....", "..##........"}},
        {Kind::Line, "0,0,0,2", Rows(3, "#...........")},
        {Kind::Polygon,
         "1,1,6,1,1,6",
         {".######.....", ".#####......", ".####.......", ".###........", ".##.........", ".#.........."}},
        // An arrow head: inside by even and odd, not its hull.
        {Kind::Polygon,
         "0,0,3,2,6,0,3,7",
         {"#.....#.....", "###.###.....", ".#####......", ".#####......", "..###.......", "..###.......",
          "...#........", "...#........"}},
        {Kind::Whole, "", Rows(9, "############")}};
    for (const auto& [kind, text, rows] : shapes)
        EXPECT_EQ(drawn(kind, text), rows) << text;
}

TEST(Shape, IsRefusedWithTheValueAndTheLimit)
{
    expectRefused<Kind, const char*>(
        {
            {Kind::Spot, "", "spot: '' is not X,Y"},
            {Kind::Spot, "1,-2", "spot Y: '-2' is not a whole number from 0"},
            {Kind::Spot, "1,2:-1", "spot R: '-1' is not a number from 0"},
            {Kind::Box, "1,2,3", "box: '1,2,3' is not X,Y,W,H"},
            {Kind::Box, "1,2,0,4", "box W: '0' is not a whole number from 1"},
            {Kind::Line, "1,2,3,4,5,6", "line: '1,2,3,4,5,6' is not X,Y,X,Y"},
            {Kind::Polygon, "1,2,3,4,5,6,7", "polygon: '1,2,3,4,5,6,7' is not X,Y"},
            {Kind::Spot, "5,1:2", "row -1"},
            {Kind::Box, "0,0,13,1", "hot: reaches to column 12, frames of 12x9 have 0 to 11"},
            {Kind::Line, "0,0,5,9", "hot: reaches to row 9, frames of 12x9 have 0 to 8"},
            {Kind::Polygon, "0,0,5,5,30,2", "column 30"},
        },
        [](Kind kind, const char* text) { Shape::parse(kind, text).runs(frameSize, "hot"); });
}

ShapeMeter meterOf(const std::string& unit, const std::vector<std::pair<Kind, const char*>>& shapes,
                   Degrees degrees = {})
{
    ShapeMeter meter(Thermometer(Scale::parse(unit), degrees), true);
    for (const auto& [kind, text] : shapes)
        meter.add(Shape::parse(kind, text));
    return meter;
}

TEST(ShapeMeter, MeasuresAsTheThermometerReads)
{
    auto meter = meterOf("decikelvin", {{Kind::Box, "1,0,5,1"}, {Kind::Spot, "0,1"}, {Kind::Box, "0,0,3,2"}});
    // Tenths of a kelvin: 2931.5 is 20 degrees Celsius. The first row without its first pixel is
    // 20, 25, 25, 35 and 15 degrees less a twentieth.
    meter.measure((Frame(2, 6) << 0, 2931, 2981, 2981, 3081, 2881, 2831, 0, 0, 0, 0, 0));
    const auto& all = meter.entries();
    ASSERT_EQ(all.size(), 3U);
    EXPECT_EQ(all[0].name + all[1].name + all[2].name, "box1spot1box2");
    const Figures& box = all[0].figures;
    // The deviation is the root of 44; the first percentile a fifth of the way from 14.95 to 19.95.
    EXPECT_THAT((std::vector{box.low, box.high, box.mean, box.deviation, box.p5, box.p50, box.p95}),
                Pointwise(DoubleNear(1e-5), {14.95, 34.95, 23.95, 6.63324958, 15.95, 24.95, 32.95}));
    EXPECT_TRUE(box.pixels == 5 && box.without == 0);
    EXPECT_TRUE(box.lowAt == cv::Point(5, 0) && box.highAt == cv::Point(4, 0));
    EXPECT_NEAR(all[1].figures.mean, 9.95, 1e-5);
    EXPECT_TRUE(all[1].figures.deviation == 0 && all[2].figures.lowAt == cv::Point()); // first of three zeros
}

TEST(ShapeMeter, LeavesValuesWithoutTemperatureOutOfTheMean)
{
    ShapeMeter meter = meterOf("linear:1:-283.15", {{Kind::Whole, ""}, {Kind::Spot, "0,0"}});
    meter.addDelta("whole-spot1");
    meter.measure((Frame(1, 4) << 0, 9, 310, 300)); // 10 and more have a temperature
    const Figures &whole = meter.entries()[0].figures, &spot = meter.entries()[1].figures;
    EXPECT_EQ(whole.without, 2U);
    EXPECT_TRUE(whole.low == fBelow && whole.p5 == fBelow && whole.p50 == fBelow); // halfway from none to one
    EXPECT_THAT((std::vector{whole.mean, whole.deviation, whole.p95}),
                Pointwise(DoubleNear(1e-4), {21.85, 5.0, 25.35}));
    EXPECT_TRUE(spot.mean == fBelow && std::isnan(spot.deviation) &&
                std::isnan(meter.deltas()[0].difference));
    EXPECT_EQ(meter.thermometer().text(whole.low), "below");
}

TEST(ShapeMeter, TakesDifferencesOfMeans)
{
    for (const auto& [degrees, difference] :
         {std::pair(Degrees(Degrees::Celsius), 10), {Degrees::Fahrenheit, 18}}) {
        ShapeMeter meter = meterOf("centikelvin", {{Kind::Spot, "0,0"}, {Kind::Spot, "1,0"}}, degrees);
        meter.addDelta("spot2-spot1");
        meter.measure((Frame(1, 2) << 29000, 30000));
        EXPECT_NEAR(meter.deltas()[0].difference, difference, 1e-4);
        for (const char* text : {"spot1", "spot1-", "-spot1", "spot1-spot3", "spot1-spot2-spot1", ""})
            EXPECT_THAT(refusal([&] { meter.addDelta(text); }).message, HasSubstr("spot1, spot2")) << text;
    }
}

TEST(ShapeMeter, CountsValuesIntoEqualSteps)
{
    ShapeMeter meter = meterOf("linear:1:-283.15", {{Kind::Whole, ""}});
    meter.measure((Frame(1, 4) << 0, 300, 310, 309));
    meter.measure((Frame(1, 4) << 304, 305, 301, 340));
    std::vector<double> steps;
    for (const auto& step : histogramOf(meter.counts()[0], meter.thermometer(), 4))
        steps.insert(steps.end(), {step.from, step.to, static_cast<double>(step.pixels)});
    EXPECT_THAT(steps, Pointwise(DoubleNear(1e-4), {16.85, 26.85, 5.0, 26.85, 36.85, 1.0, //
                                                    36.85, 46.85, 0.0, 46.85, 56.85, 1.0}));
    EXPECT_EQ(histogramOf(meter.counts()[0], Thermometer(), 1)[0].pixels, 8U);

    ShapeMeter flat = meterOf("counts", {{Kind::Spot, "0,0"}});
    flat.measure(Frame(1, 1, static_cast<unsigned short>(7)));
    const auto one = histogramOf(flat.counts()[0], flat.thermometer(), 10);
    ASSERT_EQ(one.size(), 1U);
    EXPECT_TRUE(one[0].from + one[0].to == 14 && one[0].pixels == 1);
}

TEST(Ticks, AreRoundNumbersInTheRange)
{
    const auto places = [](double low, double high, int most) { return Ticks::of(low, high, most).places; };
    EXPECT_THAT(places(19.3, 31.2, 6), ElementsAre(20, 22, 24, 26, 28, 30));
    EXPECT_THAT(places(0, 100, 5), ElementsAre(0, 50, 100));
    EXPECT_THAT(places(-0.031, 0.052, 4), Pointwise(DoubleEq(), {-0.02, 0.0, 0.02, 0.04}));
    EXPECT_TRUE(Ticks::of(-0.031, 0.052, 4).decimals == 2 && Ticks::of(0, 9.9, 3).decimals == 0);
}

/// How many pixels of a row or column are of a colour that has hue, as curves do.
const auto colourful = [](const Picture& part) {
    int count = 0;
    for (const cv::Vec3b& pixel : part)
        count += std::max({pixel[0], pixel[1], pixel[2]}) - std::min({pixel[0], pixel[1], pixel[2]}) > 60;
    return count;
};

TEST(ShapePicture, MarksShapesWhereTheyAre)
{
    ShapeMeter meter = meterOf("counts", {{Kind::Box, "10,20,8,6"}});
    Frame frame(40, 60, static_cast<unsigned short>(100));
    frame(22, 12) = 200;
    frame(24, 15) = 50;
    meter.measure(frame);
    Picture picture(160, 240, cv::Vec3b(90, 90, 90));
    drawShapes(picture, meter, 4);
    // The corners, and the middle of the hottest pixel.
    for (const cv::Point& at : {cv::Point(40, 80), {71, 80}, {40, 103}, {71, 103}, {50, 90}})
        EXPECT_EQ(colourful(picture(cv::Rect(at, cv::Size(1, 1)))), 1) << at;
    EXPECT_EQ(picture(95, 65), cv::Vec3b(90, 90, 90));           // inside it stays as it is
    EXPECT_GT(colourful(picture(cv::Rect(40, 62, 60, 16))), 30); // the label
}
