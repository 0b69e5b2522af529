#include "camera/pixels/PixelStatistics.h"

#include "tests/camera/Support.h"
#include "tests/kernels/KernelTest.h"

TEST(PixelStatistics, HaveKernelsThatLeaveTheBitsOfTheirPlainForms)
{
    const auto lines = [](Random& random, int count) {
        return random.frame<short>({count, 5}, -32768, random.pick({-32767, -32700, 32767}));
    };
    std::vector<KernelCase> kernels;
    kernels.push_back(kernel(lookAround, 400, [lines](Random& random, int, auto& form) {
        const int count = random(5, 70);
        const auto in = lines(random, count);
        const short* const rows[5] = {in[0], in[1], in[2], in[3], in[4]};
        const auto size = static_cast<std::size_t>(count);
        Guarded<short> median(size), calm(size);
        std::vector<short> scratch(5 * size);
        form(rows, count, scratch.data(), {median.data(), calm.data()});
        return Left() << median.all << calm.all;
    }));
    kernels.push_back(kernel(standOut, 400, [lines](Random& random, int round, auto& form) {
        const int count = random(2, 70);
        const auto in = lines(random, count);
        Guarded<int> out(static_cast<std::size_t>(count));
        form(in[round % 3 == 0 ? 2 : 0], in[1], in[2], count, out.data());
        return Left() << out.all;
    }));
    Random random(7);
    for (const KernelCase& kernel : kernels)
        for (int round = 0; round < kernel.rounds && !HasFatalFailure(); ++round)
            kernel.round(random, round);
}

/// The mean of what one series is off its own mean, times what another is, to some power.
const auto moment = [](const std::vector<double>& one, const std::vector<double>& other, int power = 1) {
    double sum = 0;
    for (std::size_t n = 0; n < one.size(); ++n)
        sum += (one[n] - cv::mean(one)[0]) * std::pow(other[n] - cv::mean(other)[0], power);
    return sum / static_cast<double>(one.size());
};

TEST(PixelStatistics, AreTheMomentsOfEachPixelInTime)
{
    // One pixel jumps and stands out by as much, as all around it is flat; the whole moves up and down.
    PixelStatistics statistics(Frame(9, 9, static_cast<unsigned short>(100)));
    std::mt19937 random(3);
    std::vector<double> levels, heights;
    double above = 0, changes = 0;
    for (int n = 0; n < 50; ++n) {
        const int level = static_cast<int>(random() % 40), height = static_cast<int>(random() % 90);
        Frame frame(9, 9, static_cast<unsigned short>(1000 + level));
        frame(4, 5) = static_cast<unsigned short>(1000 + level + height);
        changes += n > 0 && levels.back() + heights.back() != level + height ? 1 : 0;
        levels.push_back(level);
        heights.push_back(height);
        above += height > 4 ? 0.02 : 0;
        statistics.add(frame);
    }
    const double level = cv::mean(levels)[0], height = cv::mean(heights)[0];
    EXPECT_NEAR(statistics.mean()(4, 5), 900 + level + height, 1e-3);
    EXPECT_NEAR(statistics.mean()(0, 8), 900 + level, 1e-3);
    EXPECT_NEAR(statistics.m_oMovement(4, 5), moment(levels, levels), 1e-2);
    EXPECT_NEAR(statistics.m_oRestless(4, 5), moment(heights, heights), 1e-1);
    EXPECT_NEAR(statistics.m_oPeak(4, 5), height, 1e-3);
    EXPECT_NEAR(statistics.m_oVariance(4, 5), moment(heights, heights), 1e-1);
    const double fourth = moment(heights, heights, 3);
    EXPECT_NEAR(statistics.m_oSkew(4, 5), moment(heights, heights, 2), 1e-3 * fourth);
    EXPECT_NEAR(statistics.m_oKurtosis(4, 5), fourth, 1e-3 * fourth);
    EXPECT_NEAR(statistics.m_oPersistent(4, 5), above, 1e-5);
    EXPECT_EQ(statistics.m_oPersistent(4, 4), 0);
    EXPECT_EQ(statistics.m_oChanges(4, 5), changes);
    EXPECT_NEAR(statistics.m_oFollow(4, 5), moment(levels, heights), 1e-2);
}

TEST(PixelStatistics, RefuseFramesThatDoNotBelongTogether)
{
    EXPECT_THROW(PixelStatistics().add(Frame(4, 9, static_cast<unsigned short>(0))), Exception);
    EXPECT_THROW(PixelStatistics(Frame(6, 6)).add(Frame(7, 6)), Exception);
    PixelStatistics statistics;
    statistics.add(Frame(6, 6, 1));
    EXPECT_THROW(statistics.add(Frame(6, 7)), Exception);
}
