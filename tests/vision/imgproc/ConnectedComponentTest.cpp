#include "vision/imgproc/ConnectedComponent.h"

#include "tests/Support.h"

using namespace velmo::exp::vision;

using Points = std::vector<cv::Point>;

constexpr int lowest = std::numeric_limits<int>::min(), highest = std::numeric_limits<int>::max();

const auto blob = [](const Points& points) { return ConnectedComponent(points, 1); };

TEST(ConnectedComponent, IsEmptyWithLabelOneAtFirst)
{
    const ConnectedComponent component;
    EXPECT_TRUE(component.getLabel() == 1 && component.getNrOfPoints() == 0);
    EXPECT_TRUE(component.getElongation() == 0 && component.getConvexHull().empty());
    EXPECT_TRUE(component.getCenterOfGravity() == cv::Point2d() && component.getBoundingBox() == cv::Rect());
    EXPECT_THROW(component.getPCA(), cv::Exception);
    const std::map<int, ConnectedComponent> implicitly{{7, 7}, {-1, -1}};
    EXPECT_TRUE(implicitly.at(7).getLabel() == 7 && implicitly.at(-1).getLabel() == 4294967295);
}

TEST(ConnectedComponent, MeasuresItsBoxInclusivelyAndItsElongationAlongTheImageAxes)
{
    const std::tuple<Points, cv::Rect, cv::Point2d, double> cases[] = {
        {{{2, 2}, {0, 0}, {2, 0}, {0, 2}}, {0, 0, 3, 3}, {1, 1}, 1.0},
        {{{0, 0}, {1, 1}, {2, 2}}, {0, 0, 3, 3}, {1, 1}, 1.0}, // a diagonal bar
        {{{0, 0}, {2, 6}}, {0, 0, 3, 7}, {1, 3}, 1.0 / 9.0},
        {{{-3, 9}, {4, -2}}, {-3, -2, 8, 12}, {0.5, 3.5}, 16.0 / 36.0}, // from (0, 4)
        {{{0, 0}, {3, 0}}, {0, 0, 4, 1}, {1.5, 0}, 0.0},
        // The mean of x lies half way between two pixels, ties to even; the centre of y is on row 1, 3 rows
        // from the last point. That is 4 pixels from the left one of the two, 3 from the right one.
        {{{-2, 0}, {0, 0}, {0, 0}, {4, 4}}, {-2, 0, 7, 5}, {0.5, 1}, 9.0 / 16.0},
        {{{-1, 0}, {1, 0}, {1, 0}, {5, 4}}, {-1, 0, 7, 5}, {1.5, 1}, 1.0},
        {{{0, 0}, {2, 0}, {2, 0}, {6, 4}}, {0, 0, 7, 5}, {2.5, 1}, 9.0 / 16.0},
        // 46341 squared is the first to turn negative: it does not count. 92682 squared wraps to 18532.
        {{{0, 0}, {92680, 2}}, {0, 0, 92681, 3}, {46340, 1}, 1.0 / 2147395600.0},
        {{{0, 0}, {92682, 2}}, {0, 0, 92683, 3}, {46341, 1}, 0.0},
        {{{0, 0}, {185364, 2}}, {0, 0, 185365, 3}, {92682, 1}, 1.0 / 18532.0},
        // 2^31 becomes 0, and 2^31 - 1 becomes 1.
        {{{lowest, 0}, {highest, 4}}, {lowest, 0, 0, 5}, {-0.5, 2}, 1.0 / 4.0}};
    for (const auto& [points, box, centre, elongation] : cases) {
        SCOPED_TRACE(testing::PrintToString(points));
        EXPECT_EQ(blob(points).getBoundingBox(), box);
        EXPECT_EQ(blob(points).getCenterOfGravity(), centre);
        EXPECT_EQ(blob(points).getElongation(), elongation);
    }
    EXPECT_EQ(blob({{5, 7}}).getBoundingBox(), cv::Rect(5, 7, 1, 1));
    EXPECT_TRUE(std::isnan(blob({{5, 7}}).getElongation()));
    EXPECT_EQ(blob({{0, highest}, {1, 0}}).getBoundingBox(), cv::Rect(0, 0, 2, lowest));
}

TEST(ConnectedComponent, AppendsPointsItsOwnAmongThem)
{
    ConnectedComponent component({{1, 1}, {2, 2}}, 7);
    const ConnectedComponent other({{3, 3}, {1, 1}, {5, 5}}, 9);
    component.join(other);
    component.join(3);
    EXPECT_EQ(component.getPoints(), (Points{{1, 1}, {2, 2}, {3, 3}, {1, 1}, {5, 5}}));
    EXPECT_TRUE(component.getNrOfPoints() == 5 && component.getLabel() == 7 && other.getNrOfPoints() == 3);

    ConnectedComponent self(4);
    self.join(self);
    EXPECT_EQ(self.getNrOfPoints(), 0U);
    self.addPoint({1, 2});
    self.join(self);
    EXPECT_EQ(self.getPoints(), (Points{{1, 2}, {1, 2}}));
    self.setLabel(12);
    EXPECT_TRUE(self.getNrOfPoints() == 2 && self.getLabel() == 12);
}

TEST(ConnectedComponent, CountsItsPointsAfterCopiesAndMoves)
{
    ConnectedComponent component({{1, 1}, {2, 2}}, 7);
    ConnectedComponent copy(component), assigned;
    assigned = component;
    copy.addPoint({3, 3});
    ConnectedComponent moved(std::move(component));
    for (const ConnectedComponent* heir : {&moved, &assigned})
        EXPECT_TRUE(heir->getNrOfPoints() == 2 && heir->getLabel() == 7 &&
                    heir->getCenterOfGravity() == cv::Point2d(1.5, 1.5));
    EXPECT_TRUE(component.getNrOfPoints() == 0 && component.getCenterOfGravity() == cv::Point2d());
    component = std::move(copy);
    EXPECT_TRUE(component.getCenterOfGravity() == cv::Point2d(2, 2) && copy.getNrOfPoints() == 0);
}

TEST(ConnectedComponent, HasTheCornersAsItsHullCounterclockwise)
{
    const Points hull = blob({{0, 0}, {1, 1}, {4, 0}, {2, 0}, {4, 3}, {0, 3}, {2, 2}}).getConvexHull();
    ASSERT_EQ(hull.size(), 4U);
    int area = 0; // twice the area, positive if counterclockwise with y upward
    for (std::size_t n = 0; n < 4; ++n)
        area += hull[n].x * hull[(n + 1) % 4].y - hull[(n + 1) % 4].x * hull[n].y;
    EXPECT_EQ(area, 24);
    EXPECT_EQ(blob({{5, 7}}).getConvexHull(), (Points{{5, 7}}));
}

TEST(ConnectedComponent, HasPrincipalComponentsWithTheRowFirst)
{
    const auto line = blob({{0, 0}, {1, 0}, {2, 0}, {3, 0}}).getPCA();
    EXPECT_THAT(cv::Mat_<float>(line->mean), ElementsAre(0, 1.5F));
    EXPECT_NEAR(std::abs(line->eigenvectors.at<float>(0, 1)), 1, 1e-6);
    EXPECT_LT(cv::norm(line->eigenvalues, cv::Vec2f(1.25F, 0)), 1e-6);

    // Two to the right for each one down.
    const auto slope = blob({{10, 20}, {12, 21}, {14, 22}}).getPCA();
    EXPECT_THAT(cv::Mat_<float>(slope->mean), ElementsAre(21, 12));
    EXPECT_NEAR(slope->eigenvectors.at<float>(0, 1) / slope->eigenvectors.at<float>(0, 0), 2, 1e-5);
    EXPECT_EQ(blob({{5, 7}}).getPCA()->eigenvectors.rows, 1);
}
