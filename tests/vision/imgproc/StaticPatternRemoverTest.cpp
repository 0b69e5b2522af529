#include "vision/imgproc/StaticPatternRemover.h"

#include "tests/Support.h"
#include "vision/kernels/StaticPatternRemoverKernel.h"

using namespace velmo::exp::vision;

using Frame = cv::Mat_<short>;

/// The output of the last of some equal frames.
const auto corrected = [](StaticPatternRemover& remover, const Frame& in, int frames = 1) {
    Frame out;
    while (frames-- > 0)
        remover.process(in, out);
    return out;
};

/// A flat scene with one column that reads `offset` too high.
const auto stripe = [](cv::Size size, int column, int offset) {
    Frame frame(size, 5000);
    frame.col(column) += offset;
    return frame;
};

const auto byTheSteps = [](const Frame& in, Frame& out, cv::Mat_<int>& columns, cv::Mat_<int>& pixels,
                           const PatternParameters& parameters) {
    std::vector<short> scratch;
    out.create(in.size());
    removeStaticPattern.plain(in, out, columns, pixels, parameters, scratch);
};

TEST(StaticPatternRemover, LearnsAsTheStepsSay)
{
    // A row of nine, the middle one 8 too high; one row, so the block is that row three times.
    // Middle: both sums are 8 * 5000 (block: 6 neighbours of 5000 and, the row repeating above and below,
    // twice the middle itself: 8 * 5000 + 16). Line: mean 5000, deviation 8. Block: mean 5002, deviation 6.
    // Both calm and less than 30 >> 2 = 7 apart: pixel estimate (16 + 0) / 2 = 8 above 8 * 5000. The
    // correction of no columns is f(0) = (0 - (-25 >> 3)) >> 3 = (0 + 4) >> 3 = 0. So P = 64 - 8 = 56, a step
    // to zero: 55. Its correction 55 >> 5 = 1, f(1) = (1 + 3) >> 3 = 0.
    // Column: 8 - 2 - 0 = 6 <= 6: the line, Q = 64, less 4: 60.
    Frame in(1, 9, 1000), out;
    in(0, 4) = 1008;
    cv::Mat_<int> columns = cv::Mat_<int>::zeros(1, 9), pixels = cv::Mat_<int>::zeros(1, 9);
    byTheSteps(in, out, columns, pixels, {30, 21, 31, 31});
    EXPECT_TRUE(pixels(0, 4) == 55 && columns(0, 4) == 60) << pixels << columns;
    // Its left neighbour: block of 5 * 0, and 3 * 8 above: sum 24, mean 3, deviation 5; line: 8, mean 1,
    // deviation 7. Pixel: (24 + 8) / 2 = 16 less, -16, a step to zero: -15. Line mean chosen for the column
    // if 7 - 1 - 0 = 6 <= 5, which it is not: Q = -24, four up: -20.
    EXPECT_TRUE(pixels(0, 3) == -15 && columns(0, 3) == -20) << pixels << columns;
    // About 7/64 of an offset: (32 - 0) / 8 and (-32 + 8) / 8.
    EXPECT_TRUE(patternCounts(32) == 4 && patternCounts(-32) == -3);
    // The leftmost sees the middle in its line only: deviation 7 there, 0 in its block, not less than 7
    // apart, so that the block decides for both.
    EXPECT_TRUE(pixels(0, 0) == 0 && columns(0, 0) == 0) << pixels << columns;
}

TEST(StaticPatternRemover, TakesItsParametersAsTheyAre)
{
    // The low threshold is seven tenths, cut; values that differ where the others would be taken for them.
    Random random(3);
    for (const auto& [threshold, low] : {std::pair(0, 0), {1, 0}, {10, 7}, {30, 21}, {49, 34}, {100, 70}}) {
        StaticPatternRemover first(0, 0, 0);
        EXPECT_TRUE(first.setThreshold(threshold) && first.setLineLimit(9) && first.setFrameLimit(31));
        StaticPatternRemover remover(std::move(first));
        cv::Mat_<int> columns = cv::Mat_<int>::zeros(1, 37), pixels = cv::Mat_<int>::zeros(11, 37);
        const Frame fixed = random.frame<short>({37, 11}, 0, threshold + 40);
        for (int n = 0; n < 60; ++n) {
            Frame in = fixed + random.frame<short>(fixed.size(), 0, 5), expected;
            in(5, 7) = 32767; // saturated
            byTheSteps(in, expected, columns, pixels, {threshold, low, 9, 31});
            ASSERT_TRUE(same(corrected(remover, in), expected)) << threshold << ", frame " << n;
        }
    }
}

TEST(StaticPatternRemover, NeverCorrectsSaturatedPixels)
{
    Frame in(6, 8, 32767);
    in.col(3).setTo(32747);
    StaticPatternRemover remover(100, 31, 31);
    const Frame out = corrected(remover, in, 30);
    EXPECT_EQ(cv::countNonZero(out == 32767), 6 * 7);
    EXPECT_GT(out(3, 3), 32747); // learnt next to them all the same
}

TEST(StaticPatternRemover, RefusesParametersOutsideTheirRange)
{
    const Frame in = stripe({20, 10}, 5, 15);
    for (const auto& [threshold, limit] : {std::pair(0, 31), {30, 0}, {101, 31}, {30, -1}, {30, 32}}) {
        StaticPatternRemover remover(threshold, limit, limit);
        EXPECT_TRUE(same(corrected(remover, in, 30), in)) << threshold << ", " << limit;
    }
    StaticPatternRemover remover(30, 31, 31), untouched(30, 31, 31);
    EXPECT_FALSE(remover.setThreshold(101) || remover.setThreshold(-1) || remover.setLineLimit(32) ||
                 remover.setLineLimit(-1) || remover.setFrameLimit(32) || remover.setFrameLimit(-5));
    EXPECT_TRUE(same(corrected(remover, in, 30), corrected(untouched, in, 30)));
    EXPECT_LT(corrected(remover, in)(5, 5), 5008); // more than half of the stripe is gone
    EXPECT_TRUE(remover.setThreshold(100) && remover.setLineLimit(31) && remover.setFrameLimit(0));
    EXPECT_THROW(remover.init({-1, 5}), velmo::exp::Exception);
    EXPECT_THROW(remover.init({5, -1}), velmo::exp::Exception);
}

TEST(StaticPatternRemover, ForgetsWhenItIsToldTo)
{
    const Frame in = stripe({20, 10}, 5, 15);
    StaticPatternRemover remover(30, 31, 31);
    const Frame first = corrected(remover, in);
    EXPECT_TRUE(same(first.row(0), in.row(0)));
    corrected(remover, in, 30);
    remover.validateInput(in.size()); // keeps what was learnt
    EXPECT_FALSE(same(corrected(remover, in), first));
    remover.init(in.size());
    EXPECT_TRUE(same(corrected(remover, in), first));
}
