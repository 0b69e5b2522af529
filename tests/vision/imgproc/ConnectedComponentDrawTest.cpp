#include "tests/Support.h"
#include "vision/imgproc/ConnectedComponent.h"

using namespace velmo::exp::vision;

namespace {

using Color = cv::Vec<unsigned char, 3>;
using Canvas = cv::Mat_<Color>;
using Components = std::map<int, ConnectedComponent>;
using Points = std::vector<cv::Point>;

constexpr int highest = std::numeric_limits<int>::max();

const auto black = [](int rows, int cols) { return Canvas(rows, cols, Color(0, 0, 0)); };

const auto one = [](const Points& points) -> Components { return {{1, ConnectedComponent(points, 1)}}; };

/// The colours that the generator holds next, in the order in which components get them.
const auto nextColors = [](std::size_t count) {
    cv::RNG ahead = cv::theRNG();
    std::vector<Color> colors(count);
    for (Color& color : colors)
        for (int n = 0; n < 3; ++n)
            color[n] = static_cast<unsigned char>(ahead.next());
    return colors;
};

const auto painted = [](const Canvas& canvas) {
    cv::Mat dark;
    cv::inRange(canvas, cv::Scalar::all(0), cv::Scalar::all(0), dark);
    Points points;
    cv::findNonZero(dark == 0, points);
    return points;
};

template <void (*draw)(Canvas&, const Components&, bool)>
Points drawn(const Points& points, int rows, int cols)
{
    Canvas canvas = black(rows, cols);
    draw(canvas, one(points), true);
    return painted(canvas);
}

const auto withAxes = drawn<ConnectedComponent::drawPrincipalComponents>;
const auto withHull = drawn<ConnectedComponent::drawComponentHulls>;

/// Every drawing of some components on a canvas.
std::vector<Refusal> everyDrawing(const Components& components, int rows, int cols)
{
    Canvas canvas = black(rows, cols);
    return {refusal([&] { ConnectedComponent::drawComponents(canvas, components, false, 0, true); }),
            refusal([&] { ConnectedComponent::drawComponentHulls(canvas, components, true); }),
            refusal([&] { ConnectedComponent::drawPrincipalComponents(canvas, components, true); })};
}

struct ComponentDrawing : testing::Test
{
    ComponentDrawing() { cv::theRNG().state = 4711; }
};

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
    EXPECT_TRUE(canvas(2, 4) == colors[0] && canvas(0, 0) == colors[2] && canvas(1, 2) == colors[2]);
    EXPECT_EQ(nextColors(1)[0], colors[3]);
}

TEST_F(ComponentDrawing, ClearsOnlyIfAsked)
{
    Canvas large(6, 6, Color(9, 8, 7));
    Canvas view = large(cv::Rect(1, 1, 3, 3));
    for (const Components& components : {Components{}, one({{1, 2}})}) {
        ConnectedComponent::drawComponents(view, components, false, 0, false);
        ConnectedComponent::drawComponentHulls(view, components, false);
        ConnectedComponent::drawPrincipalComponents(view, components, false);
    }
    view(2, 1) = Color(9, 8, 7); // the one dot
    EXPECT_TRUE(same(large, Canvas(6, 6, Color(9, 8, 7))));
    ConnectedComponent::drawPrincipalComponents(view, {}, true);
    EXPECT_EQ(painted(large).size(), 27U);
}

TEST_F(ComponentDrawing, DrawsCirclesAroundPixels)
{
    Canvas canvas = black(9, 9);
    ConnectedComponent::drawComponents(canvas, one({{4, 4}}), true, 3, true);
    for (const cv::Point& point : Points{{4, 4}, {4, 1}, {4, 7}, {1, 4}, {7, 4}})
        EXPECT_NE(canvas(point), Color(0, 0, 0)) << point;
    EXPECT_TRUE(canvas(4, 5) == Color(0, 0, 0) && canvas(1, 1) == Color(0, 0, 0));

    // Nothing of so large a circle is on the canvas; it takes no time either.
    ConnectedComponent::drawComponents(canvas, one(Points(10000, {4, 4})), true, highest, true);
    EXPECT_EQ(painted(canvas), (Points{{4, 4}}));
    // One that is just large enough to reach from corner to corner is: 8 * sqrt(2) is 11.3.
    ConnectedComponent::drawComponents(canvas, one({{0, 0}}), true, 11, true);
    EXPECT_GT(painted(canvas).size(), 1U);

    canvas = Color(5, 5, 5); // refused before it is cleared
    EXPECT_EQ(refusal([&] { ConnectedComponent::drawComponents(canvas, {}, true, -1, true); }),
              (Refusal{"Circle radius -1 is below 0!", "drawComponents"}));
    EXPECT_EQ(painted(canvas).size(), 81U);
    ConnectedComponent::drawComponents(canvas, one({{0, 0}}), false, -1, true);
    EXPECT_EQ(painted(canvas).size(), 1U);
}

TEST_F(ComponentDrawing, RefusesWhatLeavesTheCanvas)
{
    const std::string words = "canvas to small";
    const std::vector<Refusal> drawn(3), clipped{{words, "drawComponents"}, {}, {}},
        refused{clipped[0], {words, "drawComponentHulls"}, {words, "drawPrincipalComponents"}};
    const std::pair<Points, std::vector<Refusal>> cases[] = {
        {{{0, 0}, {9, 4}}, drawn},
        {{{0, 0}, {10, 4}}, refused},
        {{{0, 0}, {9, 5}}, refused},
        {{{-1, 0}, {3, 3}}, clipped},
        {{{0, -1}}, clipped},
        {{{-highest, -highest}, {-1, -1}}, clipped},
        {{{-highest, 0}, {0, 0}}, refused}, // 2^31 pixels long
        {{{0, -highest}, {0, 0}}, refused},
        // Sums of position and extent that overflow to something small.
        {{{0, 0}, {highest, 0}}, refused},
        {{{highest, 1}}, refused},
        {{{1, 0}, {1, highest}}, refused},
        {{{-highest - 1, 0}, {highest, 0}}, refused}};
    for (const auto& [points, expected] : cases)
        EXPECT_EQ(everyDrawing(one(points), 5, 10), expected) << testing::PrintToString(points);
    EXPECT_EQ(everyDrawing(one({{0, 0}}), 0, 0), refused);

    // What comes before is drawn, and no colour is used up for the one that does not fit.
    Components components = one({{1, 1}});
    components[2] = ConnectedComponent({{3, 0}, {40, 0}}, 2);
    components[3] = ConnectedComponent({{2, 2}}, 3);
    const std::vector<Color> colors = nextColors(2);
    Canvas canvas(3, 4, Color(7, 7, 7));
    EXPECT_THROW(ConnectedComponent::drawComponents(canvas, components, false, 0, true), Exception);
    EXPECT_EQ(painted(canvas), (Points{{1, 1}}));
    EXPECT_EQ(canvas(1, 1), colors[0]);
    EXPECT_EQ(nextColors(1)[0], colors[1]);
}

TEST_F(ComponentDrawing, OutlinesHulls)
{
    Canvas canvas = black(6, 8), expected = black(6, 8);
    const Color color = nextColors(1)[0];
    ConnectedComponent::drawComponentHulls(canvas, one({{1, 1}, {3, 2}, {6, 1}, {6, 4}, {1, 4}}), true);
    expected(cv::Rect(1, 1, 6, 4)).setTo(cv::Scalar(color));
    expected(cv::Rect(2, 2, 4, 2)).setTo(0);
    EXPECT_TRUE(same(canvas, expected));

    // Of what reaches left or above, the part on the canvas.
    for (const int far : {4, 8, 100000})
        EXPECT_EQ(withHull({{7 - far, 3 - far}, {7, 3}}, 6, 8), (Points{{4, 0}, {5, 1}, {6, 2}, {7, 3}}));
    EXPECT_EQ(withHull({{2, 3}, {5, 3}}, 6, 8), (Points{{2, 3}, {3, 3}, {4, 3}, {5, 3}}));
    EXPECT_TRUE(withHull({{2, 3}}, 6, 8).empty());
    EXPECT_TRUE(withHull({}, 6, 8).empty());
}

TEST_F(ComponentDrawing, DrawsAxesFromTheCentre)
{
    const Points left{{0, 5}, {1, 5}, {2, 5}, {3, 5}, {4, 5}, {5, 5}},
        right{{5, 5}, {6, 5}, {7, 5}, {8, 5}, {9, 5}, {10, 5}};
    EXPECT_THAT(withAxes({{0, 5}, {3, 5}, {5, 5}, {7, 5}, {10, 5}}, 11, 11), testing::AnyOf(left, right));

    // A bar of 9 x 3: half of its length of 8 along x, half of its height of 2 along y.
    Points bar;
    for (int n = 0; n < 27; ++n)
        bar.emplace_back(2 + n % 9, 3 + n / 9);
    const Points axes = withAxes(bar, 9, 13);
    ASSERT_EQ(axes.size(), 6U); // the centre, 4 along the first axis, 1 along the second
    const auto has = [&](const cv::Point& point) { return std::count(axes.begin(), axes.end(), point) > 0; };
    EXPECT_TRUE(has({6, 4}));
    EXPECT_TRUE(has({2, 4}) != has({10, 4}));
    EXPECT_TRUE(has({6, 3}) != has({6, 5}));

    EXPECT_TRUE(withAxes({{4, 1}}, 3, 11).empty());
    EXPECT_THROW(withAxes({}, 3, 3), cv::Exception);
}

/// By how much the ends of both axes keep away from the edges of a canvas; negative if one lies outside.
double room(const Points& points, int rows, int cols)
{
    const ConnectedComponent component(points, 1);
    const auto axes = component.getPCA();
    double least = 1e9;
    for (int axis = 0; axis < 2; ++axis) {
        const cv::Point2d along(axes->eigenvectors.at<float>(axis, 1), axes->eigenvectors.at<float>(axis, 0));
        std::vector<double> places;
        for (const cv::Point& point : points)
            places.push_back(along.dot(point));
        const auto [low, high] = std::minmax_element(places.begin(), places.end());
        const cv::Point2d end = component.getCenterOfGravity() + along * (*high - *low) / 2;
        least = std::min({least, end.x, end.y, cols - 1 - end.x, rows - 1 - end.y});
    }
    return least;
}

TEST_F(ComponentDrawing, DrawsNoAxisIfAnEndLiesOutside)
{
    Random random(5);
    int outside = 0;
    for (int n = 0; n < 2000; ++n) {
        Points points;
        for (int left = random(3, 6); left > 0; --left)
            points.emplace_back(random(0, 6), random(0, 5));
        const double left = room(points, 6, 7);
        if (std::abs(left) < 1e-4) // too near to tell here
            continue;
        ASSERT_EQ(withAxes(points, 6, 7).empty(), left < 0) << testing::PrintToString(points);
        outside += left < 0 ? 1 : 0;
    }
    EXPECT_TRUE(outside > 100 && outside < 1500) << outside;
}
