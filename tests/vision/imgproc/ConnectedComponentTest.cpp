#include "vision/imgproc/ConnectedComponent.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

using namespace velmo::exp::vision;

namespace {

using Points = std::vector<cv::Point>;

constexpr int lowest = std::numeric_limits<int>::min(), highest = std::numeric_limits<int>::max();

ConnectedComponent blob(const Points& points)
{
    return ConnectedComponent(points, 1);
}

} // namespace

TEST(ConnectedComponent, IsEmptyWithLabelOneAtFirst)
{
    const ConnectedComponent component;
    EXPECT_EQ(component.getLabel(), 1U);
    EXPECT_EQ(component.getNrOfPoints(), 0U);
    EXPECT_EQ(component.getCenterOfGravity(), cv::Point2d(0, 0));
    EXPECT_EQ(component.getElongation(), 0.0);
    EXPECT_EQ(component.getBoundingBox(), cv::Rect(0, 0, 0, 0));
    EXPECT_TRUE(component.getConvexHull().empty());
    EXPECT_THROW(component.getPCA(), cv::Exception);
    const std::map<int, ConnectedComponent> implicitly{{7, 7}};
    EXPECT_EQ(implicitly.at(7).getLabel(), 7U);
}

TEST(ConnectedComponent, CountsThePixelsOfItsBoxInclusively)
{
    EXPECT_EQ(blob({{5, 7}}).getBoundingBox(), cv::Rect(5, 7, 1, 1));
    EXPECT_EQ(blob({{2, 2}, {0, 0}, {2, 0}, {0, 2}}).getBoundingBox(), cv::Rect(0, 0, 3, 3));
    EXPECT_EQ(blob({{-3, 9}, {4, -2}}).getBoundingBox(), cv::Rect(-3, -2, 8, 12));
}

TEST(ConnectedComponent, MeasuresElongationAlongTheImageAxes)
{
    EXPECT_EQ(blob({{5, 7}}).getCenterOfGravity(), cv::Point2d(5, 7));
    EXPECT_TRUE(std::isnan(blob({{5, 7}}).getElongation()));
    EXPECT_EQ(blob({{0, 0}, {2, 0}, {0, 2}, {2, 2}}).getElongation(), 1.0);
    EXPECT_EQ(blob({{0, 0}, {1, 1}, {2, 2}}).getElongation(), 1.0); // a diagonal bar
    EXPECT_EQ(blob({{0, 0}, {2, 6}}).getElongation(), 1.0 / 9.0);
}

TEST(ConnectedComponent, RoundsTheCentreWithTiesToEven)
{
    EXPECT_EQ(blob({{0, 0}, {3, 0}}).getCenterOfGravity(), cv::Point2d(1.5, 0));
    EXPECT_EQ(blob({{0, 0}, {3, 0}}).getElongation(), 0.0);
    // The mean of x lies half way between two pixels, the centre of y on row 1: 3 rows to the last point. The
    // point on the right is 4 pixels from the left one of the two, 3 from the right one.
    const std::pair<int, double> ties[] = {{-2, 9.0 / 16.0}, {-1, 1.0}, {0, 9.0 / 16.0}, {1, 1.0}};
    for (const auto& [x, elongation] : ties)
        EXPECT_EQ(blob({{x, 0}, {x + 2, 0}, {x + 2, 0}, {x + 6, 4}}).getElongation(), elongation) << x;
}

TEST(ConnectedComponent, WrapsDistancesAndTheirSquaresAt32Bits)
{
    // 46341 squared is the first to turn negative: it does not count. 92682 squared wraps to 18532.
    EXPECT_EQ(blob({{0, 0}, {92680, 2}}).getElongation(), 1.0 / 2147395600.0);
    EXPECT_EQ(blob({{0, 0}, {92682, 2}}).getElongation(), 0.0);
    EXPECT_EQ(blob({{0, 0}, {185364, 2}}).getElongation(), 1.0 / 18532.0);
    // 2^31 becomes 0, and 2^31 - 1 becomes 1.
    const ConnectedComponent widest = blob({{lowest, 0}, {highest, 4}});
    EXPECT_EQ(widest.getCenterOfGravity(), cv::Point2d(-0.5, 2));
    EXPECT_EQ(widest.getElongation(), 1.0 / 4.0);
    EXPECT_EQ(widest.getBoundingBox(), cv::Rect(lowest, 0, 0, 5));
    EXPECT_EQ(blob({{0, highest}, {1, 0}}).getBoundingBox(), cv::Rect(0, 0, 2, lowest));
}

TEST(ConnectedComponent, AppendsTheOthersPointsWhenItJoins)
{
    ConnectedComponent component({{1, 1}, {2, 2}}, 7);
    const ConnectedComponent other({{3, 3}, {1, 1}, {5, 5}}, 9);
    component.join(other);
    EXPECT_EQ(component.getPoints(), (Points{{1, 1}, {2, 2}, {3, 3}, {1, 1}, {5, 5}}));
    EXPECT_EQ(component.getNrOfPoints(), 5U);
    EXPECT_EQ(component.getLabel(), 7U);
    EXPECT_EQ(other.getNrOfPoints(), 3U);
    component.join(ConnectedComponent(3));
    EXPECT_EQ(component.getNrOfPoints(), 5U);
}

TEST(ConnectedComponent, JoinsItself)
{
    ConnectedComponent component(-1);
    component.join(component);
    EXPECT_EQ(component.getNrOfPoints(), 0U);
    component.addPoint({1, 2});
    component.addPoint({3, 4});
    component.addPoint({5, 6});
    component.join(component);
    EXPECT_EQ(component.getPoints(), (Points{{1, 2}, {3, 4}, {5, 6}, {1, 2}, {3, 4}, {5, 6}}));
    EXPECT_EQ(component.getNrOfPoints(), 6U);
    EXPECT_EQ(component.getLabel(), 4294967295U);
    component.setLabel(12);
    EXPECT_EQ(component.getLabel(), 12U);
}

TEST(ConnectedComponent, CountsItsPointsAfterCopiesAndMoves)
{
    ConnectedComponent component({{1, 1}, {2, 2}}, 7);
    ConnectedComponent copy(component);
    copy.addPoint({3, 3});
    ConnectedComponent moved(std::move(component));
    EXPECT_EQ(moved.getNrOfPoints(), 2U);
    EXPECT_EQ(moved.getLabel(), 7U);
    EXPECT_EQ(component.getNrOfPoints(), 0U); // NOLINT: what a moved-from component is like
    EXPECT_EQ(component.getCenterOfGravity(), cv::Point2d(0, 0));
    component = std::move(copy);
    EXPECT_EQ(component.getCenterOfGravity(), cv::Point2d(2, 2));
    EXPECT_EQ(copy.getNrOfPoints(), 0U); // NOLINT
}

TEST(ConnectedComponent, HasTheCornersAsItsHullCounterclockwise)
{
    Points hull = blob({{0, 0}, {1, 1}, {4, 0}, {2, 0}, {4, 3}, {0, 3}, {2, 2}}).getConvexHull();
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
    EXPECT_FLOAT_EQ(line->mean.at<float>(0, 0), 0.0F);
    EXPECT_FLOAT_EQ(line->mean.at<float>(0, 1), 1.5F);
    EXPECT_NEAR(line->eigenvectors.at<float>(0, 0), 0, 1e-6);
    EXPECT_NEAR(std::abs(line->eigenvectors.at<float>(0, 1)), 1, 1e-6);
    EXPECT_NEAR(line->eigenvalues.at<float>(0), 1.25, 1e-6);
    EXPECT_NEAR(line->eigenvalues.at<float>(1), 0, 1e-6);

    // Two to the right for each one down.
    const auto slope = blob({{10, 20}, {12, 21}, {14, 22}}).getPCA();
    EXPECT_FLOAT_EQ(slope->mean.at<float>(0, 0), 21.0F);
    EXPECT_FLOAT_EQ(slope->mean.at<float>(0, 1), 12.0F);
    EXPECT_NEAR(slope->eigenvectors.at<float>(0, 1) / slope->eigenvectors.at<float>(0, 0), 2, 1e-5);
    EXPECT_EQ(blob({{5, 7}}).getPCA()->eigenvectors.rows, 1);
}
