#include "vision/imgproc/StaticPatternRemover.h"

#include "core/Exception.h"
#include "vision/kernels/StaticPatternRemoverKernel.h"

#include <gtest/gtest.h>

#include <random>
#include <utility>
#include <vector>

using namespace velmo::exp::vision;

namespace {

using Frame = cv::Mat_<short>;

bool equal(const cv::Mat& a, const cv::Mat& b)
{
    return a.size() == b.size() && cv::countNonZero(a != b) == 0;
}

Frame corrected(StaticPatternRemover& remover, const Frame& in)
{
    Frame out;
    remover.process(in, out);
    return out;
}

/// A flat scene with one column that reads `offset` too high.
Frame stripe(cv::Size size, int column, int offset)
{
    Frame frame(size, 5000);
    frame.col(column) += offset;
    return frame;
}

} // namespace

TEST(StaticPatternRemover, PassesTheFirstRowOfTheFirstFrame)
{
    StaticPatternRemover remover(30, 31, 31);
    const Frame in = stripe({9, 4}, 4, 20);
    EXPECT_TRUE(equal(corrected(remover, in).row(0), in.row(0)));
    EXPECT_TRUE(corrected(remover, Frame()).empty());
    EXPECT_TRUE(corrected(remover, Frame(0, 7)).empty());
}

TEST(StaticPatternRemover, LearnsAsTheStepsSay)
{
    // A row of nine, the middle one 8 too high; one row, so the block is that row three times.
    // Middle: both sums are 8 * 5000 (block: 6 neighbours of 5000 and, the row repeating above and below,
    // twice the middle itself: 8 * 5000 + 16). Line: mean 5000, deviation 8. Block: mean 5002, deviation 6.
    // Both calm and less than 30 >> 2 = 7 apart: pixel estimate (16 + 0) / 2 = 8 above 8 * 5000. The
    // correction of no columns is f(0) = (0 - (-25 >> 3)) >> 3 = (0 + 4) >> 3 = 0. So P = 64 - 8 = 56, a step
    // to zero: 55. Its correction 55 >> 5 = 1, f(1) = (1 + 3) >> 3 = 0.
    // Column: 8 - 2 - 0 = 6 <= 6: the line, Q = 64, less 4: 60.
    Frame in(1, 9, 1000);
    in(0, 4) = 1008;
    cv::Mat_<int> columns = cv::Mat_<int>::zeros(1, 9), pixels = cv::Mat_<int>::zeros(1, 9);
    Frame out(1, 9);
    std::vector<short> scratch;
    removeStaticPattern.plain(in, out, columns, pixels, {30, 21, 31, 31}, scratch);
    EXPECT_EQ(pixels(0, 4), 55);
    EXPECT_EQ(columns(0, 4), 60);
    // Its left neighbour: block of 5 * 0, and 3 * 8 above: sum 24, mean 3, deviation 5; line: 8, mean 1,
    // deviation 7. Pixel: (24 + 8) / 2 = 16 less, -16, a step to zero: -15. Line mean chosen for the column
    // if 7 - 1 - 0 = 6 <= 5, which it is not: Q = -24, four up: -20.
    EXPECT_EQ(pixels(0, 3), -15);
    EXPECT_EQ(columns(0, 3), -20);
    // The leftmost sees the middle in its line only: deviation 7 there, 0 in its block, not less than 7
    // apart, so that the block decides for both.
    EXPECT_EQ(pixels(0, 0), 0);
    EXPECT_EQ(columns(0, 0), 0);
}

TEST(StaticPatternRemover, RemovesStripesAndSingleOffsets)
{
    std::mt19937 random(1);
    std::normal_distribution<float> noise(0, 2);
    const Frame pattern = [] {
        Frame frame = stripe({32, 24}, 10, 12);
        frame(12, 20) = static_cast<short>(frame(12, 20) + 15);
        return frame;
    }();
    StaticPatternRemover remover(30, 31, 31);
    cv::Mat_<float> mean = cv::Mat_<float>::zeros(pattern.size());
    for (int n = 0; n < 300; ++n) {
        Frame in = pattern.clone();
        for (short& value : in)
            value = cv::saturate_cast<short>(static_cast<float>(value) + noise(random));
        const Frame out = corrected(remover, in);
        if (n >= 200)
            mean += cv::Mat_<float>(out) / 100;
    }
    EXPECT_NEAR(cv::mean(mean.col(10))[0], 5000, 3);
    EXPECT_NEAR(mean(12, 20), 5000, 5);
}

TEST(StaticPatternRemover, NeverCorrectsSaturatedPixels)
{
    Frame in(6, 8, 32767);
    in.col(3).setTo(32747);
    StaticPatternRemover remover(100, 31, 31);
    Frame out;
    for (int n = 0; n < 50; ++n)
        out = corrected(remover, in);
    EXPECT_EQ(cv::countNonZero(out == 32767), 6 * 7);
    EXPECT_GT(out(3, 3), 32747); // learnt next to them all the same
}

TEST(StaticPatternRemover, LearnsNothingWithoutThresholdOrLimits)
{
    const Frame in = stripe({20, 10}, 5, 15);
    for (const auto& [threshold, limit] :
         {std::pair(0, 31), std::pair(30, 0), std::pair(101, 31), std::pair(30, -1)}) {
        StaticPatternRemover remover(threshold, limit, limit);
        Frame out;
        for (int n = 0; n < 30; ++n)
            out = corrected(remover, in);
        EXPECT_TRUE(equal(out, in)) << threshold << ", " << limit;
    }
}

TEST(StaticPatternRemover, RefusesParametersOutsideTheirRange)
{
    StaticPatternRemover remover(30, 31, 31), same(30, 31, 31);
    EXPECT_FALSE(remover.setThreshold(101));
    EXPECT_FALSE(remover.setThreshold(-1));
    EXPECT_FALSE(remover.setLineLimit(32));
    EXPECT_FALSE(remover.setFrameLimit(-5));
    const Frame in = stripe({20, 10}, 5, 15);
    for (int n = 0; n < 30; ++n)
        ASSERT_TRUE(equal(corrected(remover, in), corrected(same, in)));
    EXPECT_TRUE(remover.setThreshold(100) && remover.setLineLimit(31) && remover.setFrameLimit(0));
    EXPECT_THROW(remover.init({-1, 5}), velmo::exp::Exception);
}

TEST(StaticPatternRemover, StartsAnewWithAnotherSize)
{
    const Frame wide = stripe({20, 10}, 5, 15), tall = stripe({10, 20}, 5, 15);
    StaticPatternRemover remover(30, 31, 31), fresh(30, 31, 31);
    for (int n = 0; n < 30; ++n)
        corrected(remover, wide);
    const Frame expected = corrected(fresh, tall);
    EXPECT_TRUE(equal(corrected(remover, tall), expected));
    for (int n = 0; n < 30; ++n)
        corrected(remover, tall);
    EXPECT_FALSE(equal(corrected(remover, tall), expected));
    remover.validateInput(tall.size()); // keeps what was learnt
    EXPECT_FALSE(equal(corrected(remover, tall), expected));
    remover.init(tall.size());
    EXPECT_TRUE(equal(corrected(remover, tall), expected));
}

TEST(StaticPatternRemover, CopiesDeeplyAndIsUsableAfterAMove)
{
    const Frame in = stripe({20, 10}, 5, 15), other = stripe({20, 10}, 9, -20);
    StaticPatternRemover remover(30, 31, 31);
    for (int n = 0; n < 30; ++n)
        corrected(remover, in);
    StaticPatternRemover copy(remover), assigned;
    assigned = remover;
    for (int n = 0; n < 30; ++n)
        corrected(remover, other);
    const Frame expected = corrected(copy, in);
    EXPECT_TRUE(equal(corrected(assigned, in), expected));
    EXPECT_FALSE(equal(corrected(remover, in), expected));

    StaticPatternRemover moved(std::move(copy));
    const Frame next = corrected(moved, in);
    EXPECT_TRUE(equal(corrected(assigned, in), next));
    StaticPatternRemover fresh(30, 31, 31);
    EXPECT_TRUE(equal(corrected(copy, in), corrected(fresh, in)));
    copy = std::move(moved);
    EXPECT_TRUE(equal(corrected(copy, in), corrected(assigned, in)));
}

TEST(StaticPatternRemover, WorksOnViewsAndInPlace)
{
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(1, 9), cv::Size(9, 1), cv::Size(37, 11)}) {
        StaticPatternRemover plain(50, 31, 31), views(50, 31, 31), inPlace(50, 31, 31);
        for (int n = 0; n < 20; ++n) {
            Frame large(size + cv::Size(5, 2));
            cv::randu(large, 300, 340);
            const cv::Rect place({2, 1}, size);
            const Frame expected = corrected(plain, large(place).clone());

            Frame canvas(large.size(), 99);
            Frame out = canvas(place);
            views.process(large(place), out);
            ASSERT_TRUE(equal(canvas(place), expected)) << size;
            canvas(place).setTo(99);
            ASSERT_EQ(cv::countNonZero(canvas != 99), 0) << "wrote outside the view, " << size;

            Frame both = large(place);
            inPlace.process(both, both);
            ASSERT_TRUE(equal(both, expected)) << size;
        }
    }
}
