#include "camera/drawing/Ticks.h"

#include "camera/measures/Course.h"
#include "camera/measures/ShapePicture.h"
#include "tests/Support.h"

namespace {

using namespace testing;
using namespace velmo::camera;

using Kind = Shape::Kind;

const cv::Size frameSize(12, 9);

/// '#' where the shape has pixels, rows that have none left out.
std::vector<std::string> drawn(Kind kind, const std::string& text)
{
    std::vector<std::string> rows(static_cast<std::size_t>(frameSize.height),
                                  std::string(static_cast<std::size_t>(frameSize.width), '.'));
    for (const Run& run : Shape::parse(kind, text).runs(frameSize, "shape"))
        for (int x = run.begin; x < run.end; ++x)
            rows[static_cast<std::size_t>(run.row)][static_cast<std::size_t>(x)] = '#';
    rows.erase(std::remove(rows.begin(), rows.end(), std::string(rows[0].size(), '.')), rows.end());
    return rows;
}

TEST(Shape, HasThePixelsThatItsTextSays)
{
    EXPECT_THAT(drawn(Kind::Spot, "0,8"), ElementsAre("#..........."));
    EXPECT_THAT(drawn(Kind::Spot, "3,3:1"), ElementsAre("...#........", "..###.......", "...#........"));
    EXPECT_THAT(drawn(Kind::Spot, "3,3:1.5"), ElementsAre("..###.......", "..###.......", "..###......."));
    EXPECT_THAT(drawn(Kind::Spot, "4,4:2"),
                ElementsAre("....#.......", "...###......", "..#####.....", "...###......", "....#......."));
    EXPECT_THAT(drawn(Kind::Box, "9,7,3,2"), ElementsAre(".........###", ".........###"));
    EXPECT_THAT(drawn(Kind::Line, "1,1,1,1"), ElementsAre(".#.........."));
    EXPECT_THAT(drawn(Kind::Line, "8,1,2,3"), ElementsAre(".......##...", "....###.....", "..##........"));
    EXPECT_THAT(drawn(Kind::Line, "0,0,0,2"), ElementsAre("#...........", "#...........", "#..........."));
    EXPECT_THAT(drawn(Kind::Polygon, "1,1,6,1,1,6"),
                ElementsAre(".######.....", ".#####......", ".####.......", ".###........", ".##.........",
                            ".#.........."));
    // An arrow head: inside by even and odd, not its hull.
    EXPECT_THAT(drawn(Kind::Polygon, "0,0,3,2,6,0,3,7"),
                ElementsAre("#.....#.....", "###.###.....", ".#####......", ".#####......", "..###.......",
                            "..###.......", "...#........", "...#........"));
    EXPECT_THAT(drawn(Kind::Whole, ""), testing::SizeIs(9));
}

TEST(Shape, IsRefusedWithTheValueAndTheLimit)
{
    const std::tuple<Kind, const char*, const char*> texts[] = {
        {Kind::Spot, "", "spot: '' is not X,Y"},
        {Kind::Spot, "1", "spot: '1' is not X,Y"},
        {Kind::Spot, "1,2,3", "spot: '1,2,3' is not X,Y"},
        {Kind::Spot, "1,-2", "spot Y: '-2' is not a whole number from 0"},
        {Kind::Spot, "1,2:-1", "spot R: '-1' is not a number from 0"},
        {Kind::Spot, "1,2:nan", "spot R: 'nan'"},
        {Kind::Box, "1,2,3", "box: '1,2,3' is not X,Y,W,H"},
        {Kind::Box, "1,2,0,4", "box W: '0' is not a whole number from 1"},
        {Kind::Line, "1,2,3,4,5,6", "line: '1,2,3,4,5,6' is not X,Y,X,Y"},
        {Kind::Polygon, "1,2,3,4", "polygon: '1,2,3,4' is not X,Y,X,Y,X,Y"},
        {Kind::Polygon, "1,2,3,4,5,6,7", "polygon: '1,2,3,4,5,6,7' is not X,Y"},
        {Kind::Spot, "12,0", "hot: reaches to column 12, frames of 12x9 have 0 to 11"},
        {Kind::Spot, "0,9", "hot: reaches to row 9, frames of 12x9 have 0 to 8"},
        {Kind::Spot, "5,1:2", "row -1"},
        {Kind::Box, "0,0,13,1", "column 12"},
        {Kind::Line, "0,0,5,9", "row 9"},
        {Kind::Polygon, "0,0,5,5,30,2", "column 30"},
    };
    const auto runs = [](Kind kind, const char* text) { Shape::parse(kind, text).runs(frameSize, "hot"); };
    for (const auto& [kind, text, says] : texts)
        EXPECT_THAT(refusal(runs, kind, text).message, HasSubstr(says));
}

ShapeMeter meterOf(const std::string& unit, Degrees degrees = {})
{
    return ShapeMeter(Thermometer(Scale::parse(unit), degrees), true);
}

TEST(ShapeMeter, MeasuresAsTheThermometerReads)
{
    ShapeMeter meter = meterOf("decikelvin");
    meter.add(Shape::parse(Kind::Box, "1,0,5,1"));
    meter.add(Shape::parse(Kind::Spot, "0,1"));
    meter.add(Shape::parse(Kind::Box, "0,0,3,2"));
    // Tenths of a kelvin: 2931.5 is 20 degrees Celsius. The first row without its first pixel is
    // 20, 25, 25, 35 and 15 degrees less a twentieth.
    meter.measure((Frame(2, 6) << 0, 2931, 2981, 2981, 3081, 2881, 2831, 0, 0, 0, 0, 0));
    ASSERT_EQ(meter.entries().size(), 3U);
    EXPECT_EQ(meter.entries()[0].name, "box1");
    EXPECT_EQ(meter.entries()[1].name, "spot1");
    EXPECT_EQ(meter.entries()[2].name, "box2");
    const Figures& box = meter.entries()[0].figures;
    EXPECT_EQ(box.pixels, 5U);
    EXPECT_EQ(box.without, 0U);
    EXPECT_NEAR(box.low, 14.95, 1e-5);
    EXPECT_EQ(box.lowAt, cv::Point(5, 0));
    EXPECT_NEAR(box.high, 34.95, 1e-5);
    EXPECT_EQ(box.highAt, cv::Point(4, 0));
    EXPECT_NEAR(box.mean, 23.95, 1e-5);
    EXPECT_NEAR(box.deviation, 6.63324958, 1e-5); // root of 44
    EXPECT_NEAR(box.p5, 15.95, 1e-5);             // a fifth of the way from 14.95 to 19.95
    EXPECT_NEAR(box.p50, 24.95, 1e-5);
    EXPECT_NEAR(box.p95, 32.95, 1e-5);
    const Figures& spot = meter.entries()[1].figures;
    EXPECT_NEAR(spot.mean, 9.95, 1e-5);
    EXPECT_EQ(spot.deviation, 0);
    EXPECT_EQ(meter.entries()[2].figures.lowAt, cv::Point(0, 0)); // the first of three zeros
}

TEST(ShapeMeter, LeavesValuesWithoutTemperatureOutOfTheMean)
{
    constexpr double below = fBelow;
    ShapeMeter meter = meterOf("linear:1:-283.15"); // 10 and more have a temperature
    meter.add(Shape::parse(Kind::Whole, ""));
    meter.add(Shape::parse(Kind::Spot, "0,0"));
    meter.addDelta("whole-spot1");
    meter.measure((Frame(1, 4) << 0, 9, 310, 300));
    const Figures& whole = meter.entries()[0].figures;
    EXPECT_EQ(whole.without, 2U);
    EXPECT_EQ(whole.low, below);
    EXPECT_NEAR(whole.mean, 21.85, 1e-5);
    EXPECT_NEAR(whole.deviation, 5, 1e-5);
    EXPECT_EQ(whole.p5, below);
    EXPECT_EQ(whole.p50, below); // halfway from none to one
    EXPECT_NEAR(whole.p95, 25.35, 1e-4);
    EXPECT_EQ(meter.entries()[1].figures.mean, below);
    EXPECT_TRUE(std::isnan(meter.entries()[1].figures.deviation));
    EXPECT_TRUE(std::isnan(meter.deltas()[0].difference));
    EXPECT_EQ(meter.thermometer().text(whole.low), "below");
}

TEST(ShapeMeter, TakesDifferencesOfMeans)
{
    for (const Degrees degrees : {Degrees::Celsius, Degrees::Fahrenheit}) {
        ShapeMeter meter = meterOf("centikelvin", degrees);
        meter.add(Shape::parse(Kind::Spot, "0,0"));
        meter.add(Shape::parse(Kind::Spot, "1,0"));
        meter.addDelta("spot2-spot1");
        meter.measure((Frame(1, 2) << 29000, 30000));
        EXPECT_NEAR(meter.deltas()[0].difference, degrees.kind() == Degrees::Celsius ? 10 : 18, 1e-4);
        for (const char* text : {"spot1", "spot1-", "-spot1", "spot1-spot3", "spot1-spot2-spot1", ""})
            EXPECT_THAT([&] { meter.addDelta(text); }, ThrowsMessage<Exception>(HasSubstr("spot1, spot2")))
                << text;
    }
}

TEST(ShapeMeter, CountsValuesIntoEqualSteps)
{
    ShapeMeter meter = meterOf("linear:1:-283.15");
    meter.add(Shape::parse(Kind::Whole, ""));
    meter.measure((Frame(1, 4) << 0, 300, 310, 309));
    meter.measure((Frame(1, 4) << 304, 305, 301, 340));
    const auto histogram = histogramOf(meter.counts()[0], meter.thermometer(), 4);
    ASSERT_EQ(histogram.size(), 4U); // from 16.85 to 56.85 in steps of 10
    const std::uint64_t pixels[] = {5, 1, 0, 1};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(histogram[i].from, 16.85 + 10 * static_cast<double>(i), 1e-4);
        EXPECT_NEAR(histogram[i].to, 26.85 + 10 * static_cast<double>(i), 1e-4);
        EXPECT_EQ(histogram[i].pixels, pixels[i]) << i;
    }
    EXPECT_EQ(histogramOf(meter.counts()[0], Thermometer(), 1)[0].pixels, 8U);

    ShapeMeter flat = meterOf("counts");
    flat.add(Shape::parse(Kind::Spot, "0,0"));
    flat.measure(Frame(1, 1, static_cast<unsigned short>(7)));
    const auto one = histogramOf(flat.counts()[0], flat.thermometer(), 10);
    ASSERT_EQ(one.size(), 1U);
    EXPECT_EQ(one[0].from + one[0].to, 14);
    EXPECT_EQ(one[0].pixels, 1U);
}

TEST(Ticks, AreRoundNumbersInTheRange)
{
    const auto places = [](double low, double high, int most) { return Ticks::of(low, high, most).places; };
    EXPECT_THAT(places(19.3, 31.2, 6), ElementsAre(20, 22, 24, 26, 28, 30));
    EXPECT_THAT(places(0, 100, 5), ElementsAre(0, 50, 100));
    EXPECT_THAT(places(-0.031, 0.052, 4), Pointwise(DoubleEq(), std::vector<double>{-0.02, 0, 0.02, 0.04}));
    EXPECT_EQ(Ticks::of(-0.031, 0.052, 4).decimals, 2);
    EXPECT_EQ(Ticks::of(0, 9.9, 3).decimals, 0);
}

/// How many pixels of a row or column are of a colour that has hue, as curves do.
int colourful(const Picture& part)
{
    int count = 0;
    for (const cv::Vec3b& pixel : part)
        count += std::max({pixel[0], pixel[1], pixel[2]}) - std::min({pixel[0], pixel[1], pixel[2]}) > 60;
    return count;
}

TEST(Course, DrawsRisingMeansAsARisingCurve)
{
    ShapeMeter meter = meterOf("centikelvin");
    meter.add(Shape::parse(Kind::Spot, "0,0"));
    Course course;
    for (int i = 0; i < 20; ++i) {
        meter.measure(Frame(1, 1, static_cast<unsigned short>(29000 + 50 * i)));
        course.add(meter);
    }
    const Picture plot = course.draw(meter, 9.0);
    const auto curve = [&](double x) { // its mean height in a narrow band
        const Picture band = plot.colRange(cvRound(x * plot.cols), cvRound(x * plot.cols) + 4);
        double sum = 0;
        int rows = 0;
        for (int r = 0; r < band.rows; ++r)
            if (colourful(band.row(r)) > 0) {
                sum += r;
                ++rows;
            }
        return rows ? sum / rows : -1;
    };
    const double left = curve(0.2), middle = curve(0.5), right = curve(0.8);
    EXPECT_GT(left, middle + 50);
    EXPECT_GT(middle, right + 50);
    EXPECT_NEAR(left - middle, middle - right, 3); // straight
}

TEST(ShapePicture, MarksShapesWhereTheyAre)
{
    ShapeMeter meter = meterOf("counts");
    meter.add(Shape::parse(Kind::Box, "10,20,8,6"));
    Frame frame(40, 60, static_cast<unsigned short>(100));
    frame(22, 12) = 200;
    frame(24, 15) = 50;
    meter.measure(frame);
    Picture picture(160, 240, cv::Vec3b(90, 90, 90));
    drawShapes(picture, meter, 4);
    for (const cv::Point corner :
         {cv::Point(40, 80), cv::Point(71, 80), cv::Point(40, 103), cv::Point(71, 103),
          cv::Point(50, 90)}) // and the middle of the hottest pixel
        EXPECT_EQ(colourful(picture(cv::Rect(corner, cv::Size(1, 1)))), 1) << corner;
    EXPECT_EQ(picture(95, 65), cv::Vec3b(90, 90, 90));           // inside it stays as it is
    EXPECT_GT(colourful(picture(cv::Rect(40, 62, 60, 16))), 30); // the label
}

} // namespace
