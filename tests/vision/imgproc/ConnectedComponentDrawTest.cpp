#include "core/Exception.h"
#include "vision/imgproc/ConnectedComponent.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

using namespace velmo::exp::vision;
using velmo::exp::Exception;

namespace {

using Color = cv::Vec<unsigned char, 3>;
using Canvas = cv::Mat_<Color>;
using Components = std::map<int, ConnectedComponent>;
using Points = std::vector<cv::Point>;

constexpr int highest = std::numeric_limits<int>::max();

Canvas black(int rows, int cols)
{
    return Canvas(rows, cols, Color(0, 0, 0));
}

Components one(const Points& points)
{
    return {{1, ConnectedComponent(points, 1)}};
}

/// The colours that the generator holds next, in the order in which components get them.
std::vector<Color> nextColors(int count)
{
    cv::RNG ahead = cv::theRNG();
    std::vector<Color> colors;
    while (count-- > 0) {
        const unsigned first = ahead.next(), second = ahead.next(), third = ahead.next();
        colors.emplace_back(static_cast<unsigned char>(first & 255U),
                            static_cast<unsigned char>(second & 255U),
                            static_cast<unsigned char>(third & 255U));
    }
    return colors;
}

Points painted(const Canvas& canvas)
{
    Points points;
    for (int y = 0; y < canvas.rows; ++y)
        for (int x = 0; x < canvas.cols; ++x)
            if (canvas(y, x) != Color(0, 0, 0))
                points.emplace_back(x, y);
    return points;
}

/// What a drawing throws: "message, function".
template <class Draw>
std::string thrown(Draw draw)
{
    try {
        draw();
    } catch (const Exception& e) {
        const std::string& place = e.location();
        const auto name = place.rfind(": ") + 2;
        return e.what() + std::string(", ") + place.substr(name, place.find("(..)") - name);
    }
    return "nothing";
}

/// Every drawing of some components, on canvases of its own.
std::vector<std::string> everyDrawing(const Components& components, int rows, int cols)
{
    Canvas canvas = black(rows, cols);
    return {thrown([&] { ConnectedComponent::drawComponents(canvas, components, false, 0, true); }),
            thrown([&] { ConnectedComponent::drawComponentHulls(canvas, components, true); }),
            thrown([&] { ConnectedComponent::drawPrincipalComponents(canvas, components, true); })};
}

class ComponentDrawing : public testing::Test
{
protected:
    ComponentDrawing() { cv::theRNG().state = 4711; }
};

const std::vector<std::string> refused = {"canvas to small, drawComponents",
                                          "canvas to small, drawComponentHulls",
                                          "canvas to small, drawPrincipalComponents"};
const std::vector<std::string> drawn(3, "nothing");

} // namespace

TEST_F(ComponentDrawing, PaintsEveryPixelInTheColorOfItsComponent)
{
    // Visited by key, whatever the labels are; an empty component uses up a colour too.
    Components components = one({{0, 0}, {2, 1}});
    components[-4] = ConnectedComponent({{4, 2}}, 99);
    components[0] = ConnectedComponent();
    const std::vector<Color> colors = nextColors(4);
    Canvas canvas = black(3, 5);
    ConnectedComponent::drawComponents(canvas, components, false, 0, false);
    EXPECT_EQ(painted(canvas), (Points{{0, 0}, {2, 1}, {4, 2}}));
    EXPECT_EQ(canvas(2, 4), colors[0]);
    EXPECT_EQ(canvas(0, 0), colors[2]);
    EXPECT_EQ(canvas(1, 2), colors[2]);
    EXPECT_EQ(nextColors(1)[0], colors[3]);
}

TEST_F(ComponentDrawing, RepeatsItsPictureFromTheSameSeed)
{
    Components components = one({{1, 1}, {5, 2}, {3, 6}});
    components[2] = ConnectedComponent({{6, 6}, {7, 1}}, 2);
    Canvas first = black(8, 8), second = black(8, 8);
    ConnectedComponent::drawComponents(first, components, true, 2, true);
    cv::theRNG().state = 4711;
    ConnectedComponent::drawComponents(second, components, true, 2, true);
    EXPECT_EQ(cv::norm(first, second), 0);
    ConnectedComponent::drawComponents(second, components, true, 2, true);
    EXPECT_NE(cv::norm(first, second), 0);
}

TEST_F(ComponentDrawing, ClearsOnlyIfAsked)
{
    Canvas canvas(4, 6, Color(9, 8, 7));
    for (const Components& components : {Components{}, one({{1, 2}})}) {
        ConnectedComponent::drawComponents(canvas, components, false, 0, false);
        ConnectedComponent::drawComponentHulls(canvas, components, false);
        ConnectedComponent::drawPrincipalComponents(canvas, components, false);
    }
    canvas(2, 1) = Color(9, 8, 7); // the one dot
    EXPECT_EQ(cv::norm(canvas, Canvas(4, 6, Color(9, 8, 7))), 0);
    ConnectedComponent::drawComponentHulls(canvas, {}, true);
    EXPECT_TRUE(painted(canvas).empty());

    Canvas large(6, 6, Color(1, 1, 1));
    Canvas view = large(cv::Rect(1, 1, 3, 3));
    ConnectedComponent::drawPrincipalComponents(view, {}, true);
    EXPECT_EQ(painted(large).size(), 27U);
}

TEST_F(ComponentDrawing, DrawsCirclesAroundPixels)
{
    Canvas canvas = black(9, 9);
    ConnectedComponent::drawComponents(canvas, one({{4, 4}}), true, 3, true);
    for (const cv::Point& point : Points{{4, 4}, {4, 1}, {4, 7}, {1, 4}, {7, 4}})
        EXPECT_NE(canvas(point), Color(0, 0, 0)) << point;
    EXPECT_EQ(canvas(4, 5), Color(0, 0, 0));
    EXPECT_EQ(canvas(1, 1), Color(0, 0, 0));

    // Nothing of so large a circle is on the canvas; it takes no time either.
    ConnectedComponent::drawComponents(canvas, one(Points(10000, {4, 4})), true, highest, true);
    EXPECT_EQ(painted(canvas), (Points{{4, 4}}));
    // One that is just large enough to reach from corner to corner is: 8 * sqrt(2) is 11.3.
    ConnectedComponent::drawComponents(canvas, one({{0, 0}}), true, 11, true);
    EXPECT_GT(painted(canvas).size(), 1U);
}

TEST_F(ComponentDrawing, RefusesANegativeRadiusBeforeItClears)
{
    Canvas canvas(2, 2, Color(5, 5, 5));
    EXPECT_EQ(thrown([&] { ConnectedComponent::drawComponents(canvas, {}, true, -1, true); }),
              "Circle radius -1 is below 0!, drawComponents");
    EXPECT_EQ(painted(canvas).size(), 4U);
    ConnectedComponent::drawComponents(canvas, one({{0, 0}}), false, -1, true);
    EXPECT_EQ(painted(canvas).size(), 1U);
}

TEST_F(ComponentDrawing, RefusesWhatLeavesTheCanvas)
{
    EXPECT_EQ(everyDrawing(one({{0, 0}, {9, 4}}), 5, 10), drawn);
    EXPECT_EQ(everyDrawing(one({{0, 0}, {10, 4}}), 5, 10), refused);
    EXPECT_EQ(everyDrawing(one({{0, 0}, {9, 5}}), 5, 10), refused);
    const std::vector<std::string> clipped{refused[0], drawn[1], drawn[2]};
    EXPECT_EQ(everyDrawing(one({{-1, 0}, {3, 3}}), 5, 10), clipped);
    EXPECT_EQ(everyDrawing(one({{0, -1}}), 5, 10), clipped);
    EXPECT_EQ(everyDrawing(one({{-highest, -highest}, {-1, -1}}), 5, 10), clipped);
    EXPECT_EQ(everyDrawing(one({{-highest, 0}, {0, 0}}), 5, 10), refused); // 2^31 pixels long
    // Sums of position and extent that overflow to something small.
    EXPECT_EQ(everyDrawing(one({{0, 0}, {highest, 0}}), 5, 10), refused);
    EXPECT_EQ(everyDrawing(one({{highest, 1}}), 5, 10), refused);
    EXPECT_EQ(everyDrawing(one({{1, 0}, {1, highest}}), 5, 10), refused);
    EXPECT_EQ(everyDrawing(one({{-highest - 1, 0}, {highest, 0}}), 5, 10), refused);
    EXPECT_EQ(everyDrawing(one({{0, 0}}), 0, 0), refused);
}

TEST_F(ComponentDrawing, KeepsWhatWasDrawnBeforeTheComponentThatDoesNotFit)
{
    Components components = one({{1, 1}});
    components[2] = ConnectedComponent({{3, 0}, {40, 0}}, 2);
    components[3] = ConnectedComponent({{2, 2}}, 3);
    const std::vector<Color> colors = nextColors(2);
    Canvas canvas(3, 4, Color(7, 7, 7));
    EXPECT_THROW(ConnectedComponent::drawComponents(canvas, components, false, 0, true), Exception);
    EXPECT_EQ(painted(canvas), (Points{{1, 1}}));
    EXPECT_EQ(canvas(1, 1), colors[0]);
    EXPECT_EQ(nextColors(1)[0], colors[1]); // none was used up for the one that does not fit
}

TEST_F(ComponentDrawing, OutlinesHulls)
{
    Canvas canvas = black(6, 8);
    const Color color = nextColors(1)[0];
    ConnectedComponent::drawComponentHulls(canvas, one({{1, 1}, {3, 2}, {6, 1}, {6, 4}, {1, 4}}), true);
    Canvas expected = black(6, 8);
    expected(cv::Rect(1, 1, 6, 4)).setTo(cv::Scalar(color));
    expected(cv::Rect(2, 2, 4, 2)).setTo(0);
    EXPECT_EQ(cv::norm(canvas, expected), 0);

    // Of what reaches left or above, the part on the canvas: from (-100000, -50000) to (7, 3), half as steep.
    for (const int far : {4, 100000}) {
        ConnectedComponent::drawComponentHulls(canvas, one({{7 - 2 * far, 3 - far}, {7, 3}}), true);
        EXPECT_EQ(painted(canvas).size(), 7U) << far;
        EXPECT_EQ(canvas(3, 7), canvas(0, 1)) << far;
    }
    ConnectedComponent::drawComponentHulls(canvas, one({{2, 3}, {5, 3}}), true);
    EXPECT_EQ(painted(canvas), (Points{{2, 3}, {3, 3}, {4, 3}, {5, 3}}));
    ConnectedComponent::drawComponentHulls(canvas, one({{2, 3}}), true);
    EXPECT_TRUE(painted(canvas).empty());
}

namespace {

Points line(int fromX, int toX, int y)
{
    Points points;
    for (int x = fromX; x <= toX; ++x)
        points.emplace_back(x, y);
    return points;
}

Points withAxes(const Points& points, int rows, int cols)
{
    Canvas canvas = black(rows, cols);
    ConnectedComponent::drawPrincipalComponents(canvas, one(points), true);
    return painted(canvas);
}

} // namespace

TEST_F(ComponentDrawing, DrawsAxesFromTheCentre)
{
    const Points flat = withAxes(line(0, 10, 5), 11, 11);
    EXPECT_TRUE(flat == line(0, 5, 5) || flat == line(5, 10, 5)) << testing::PrintToString(flat);

    // A bar of 9 x 3: half of its length of 8 along x, half of its height of 2 along y.
    Points bar;
    for (int y = 3; y <= 5; ++y)
        for (int x = 2; x <= 10; ++x)
            bar.emplace_back(x, y);
    const Points axes = withAxes(bar, 9, 13);
    ASSERT_EQ(axes.size(), 6U); // the centre, 4 along the first axis, 1 along the second
    const auto has = [&](const cv::Point& point) {
        return std::find(axes.begin(), axes.end(), point) != axes.end();
    };
    EXPECT_TRUE(has({6, 4}));
    EXPECT_TRUE(has({2, 4}) != has({10, 4}));
    EXPECT_TRUE(has({6, 3}) != has({6, 5}));
}

TEST_F(ComponentDrawing, DrawsNoAxisIfAnEndLiesOutside)
{
    // The centre is close to one end, and half of the length leads beyond it in one of the two directions.
    Points left(9, {0, 1}), right(9, {10, 1});
    left.emplace_back(10, 1);
    right.emplace_back(0, 1);
    EXPECT_NE(withAxes(left, 3, 11).empty(), withAxes(right, 3, 11).empty());
    EXPECT_TRUE(withAxes({{4, 1}}, 3, 11).empty());
}

TEST_F(ComponentDrawing, PassesOnTheErrorForAxesWithoutPoints)
{
    Canvas canvas = black(3, 3);
    EXPECT_THROW(ConnectedComponent::drawPrincipalComponents(canvas, one({}), true), cv::Exception);
    ConnectedComponent::drawComponentHulls(canvas, one({}), true);
    EXPECT_TRUE(painted(canvas).empty());
}
