#include "vision/kernels/ConnectedComponentKernel.h"

#include "tests/kernels/KernelTest.h"

using namespace velmo::exp::vision;

/// On an image, around the origin, around what a block of sums may hold, anywhere.
const auto drawn = [](Random& random, int round) {
    const int least = std::numeric_limits<int>::min(), most = std::numeric_limits<int>::max();
    const auto [low, high] = random.pick<std::pair<int, int>>(
        {{0, 639}, {-3, 3}, {262000, 262200}, {262143, 262143}, {least, most}});
    const int count = round < 250 ? 1 + round / 5 : random.pick({16383, 16384, 16385, 40000});
    std::vector<cv::Point> all(static_cast<std::size_t>(count));
    for (cv::Point& point : all)
        point = {random(low, high), random(low, high)};
    return all;
};

std::vector<KernelCase> blobKernels()
{
    std::vector<KernelCase> kernels;
    kernels.push_back(kernel(extentsOf, 260, [](Random& random, int round, auto& form) {
        const auto all = drawn(random, round);
        const PointExtents extents = form(all.data(), all.size());
        return Left() << extents.minX << extents.maxX << extents.minY << extents.maxY;
    }));
    kernels.push_back(kernel(sumOf, 270, [](Random& random, int round, auto& form) {
        const auto all = drawn(random, round);
        const cv::Point2d sum = form(all.data(), all.size());
        return Left() << sum.x << sum.y;
    }));
    kernels.push_back(kernel(squaredReachOf, 260, [](Random& random, int round, auto& form) {
        const auto all = drawn(random, round);
        const SquaredReach reach = form(all.data(), all.size(), drawn(random, 0)[0]);
        return Left() << reach.x << reach.y;
    }));
    return kernels;
}

TEST(SumOfPoints, IsInSequenceWhereItIsNoLongerExact)
{
    const int lowest = std::numeric_limits<int>::min(), highest = std::numeric_limits<int>::max();
    std::vector<cv::Point> points(exactlySummedPoints, {lowest, highest});
    EXPECT_EQ(sumOf(points.data(), points.size()), cv::Point2d(-9007199254740992.0, 9007199250546688.0));
    // Past 2^53 doubles are even: 1 gets lost each time, at the end as well as in between.
    points.insert(points.end(), {{-1, 0}, {-1, 0}, {-1, 0}});
    EXPECT_EQ(sumOf(points.data(), points.size()).x, -9007199254740992.0);
}
