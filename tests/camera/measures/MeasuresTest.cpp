#include "camera/measures/Fidelity.h"

#include "camera/measures/Noise.h"
#include "camera/measures/Statistics.h"
#include "tests/camera/Support.h"

#include <opencv2/imgproc.hpp>

namespace {

/// Figures of frames whose pixels are `value(frame, row, column)`.
NoiseFigures figuresOf(const std::function<double(int, int, int)>& value, int frames = 40)
{
    NoiseMeter meter;
    for (int i = 0; i < frames; ++i)
        meter.add(matrixOf<unsigned short>({80, 60}, [&](int y, int x) { return value(i, y, x); }));
    return meter.figures();
}

struct Measures : testing::Test
{
    double normal(double deviation) { return std::normal_distribution<>(0, deviation)(random); }

    cv::Mat_<double> normals(int rows, double deviation)
    {
        cv::Mat_<double> values(rows, 80);
        for (double& value : values)
            value = normal(deviation);
        return values;
    }

    std::mt19937 random{3};
};

TEST_F(Measures, NoiseInTimeIsThatOfThePixelsWhateverTheLevelDoes)
{
    const NoiseFigures figures =
        figuresOf([&](int frame, int row, int) { return 9000 + 3 * row + 150 * (frame / 10) + normal(20); });
    EXPECT_NEAR(figures.temporal, 20, 0.6);
    EXPECT_NEAR(figures.columnsInTime, 20 / std::sqrt(60.0), 0.4); // the mean of 60 rows
    EXPECT_NEAR(figures.rowsInTime, 20 / std::sqrt(80.0), 0.4);
}

TEST_F(Measures, SlowNoiseIsNotLostBetweenConsecutiveFrames)
{
    cv::Mat_<double> walk = normals(60, 20);
    const NoiseFigures figures = figuresOf([&](int frame, int row, int column) {
        double& value = walk(row, column);
        value = row < 6 ? 0 : 0.8 * value + 0.6 * normal(20); // keeps its deviation, and 0.8 of itself
        return 9000 + 150 * (frame / 10) + value;
    });
    // 40 frames are as many as 40 / 9 fresh ones.
    EXPECT_NEAR(figures.slow, 20 * std::sqrt(1 - 9.0 / 40), 1.2);
    EXPECT_NEAR(figures.temporal, 20 * std::sqrt(1 - 0.8), 1);
    EXPECT_EQ(figures.unchanged, 0);
    EXPECT_EQ(figuresOf([](int frame, int row, int) { return row < 15 ? 7 : frame; }).unchanged, 0.25);
}

TEST_F(Measures, StripesOfColumnsAreNotThoseOfRows)
{
    const cv::Mat_<double> steps = normals(1, 30);
    const NoiseFigures figures = figuresOf([&](int, int y, int x) { return 9000 + 5 * y + steps(0, x); });
    // The average over nine columns holds a ninth of the column itself.
    EXPECT_NEAR(figures.columns, 30 * std::sqrt(8.0 / 9), 6);
    EXPECT_LT(figures.rows, 1);
    EXPECT_LT(figures.pattern, 6);
    EXPECT_EQ(figures.temporal, 0);
}

TEST_F(Measures, PatternIsWhatStaysPerPixel)
{
    const cv::Mat_<double> offsets = normals(60, 25);
    const NoiseFigures still = figuresOf([&](int, int y, int x) { return 9000 + offsets(y, x); });
    EXPECT_NEAR(still.pattern, 25, 6);
    EXPECT_EQ(still.temporal, 0);
    const NoiseFigures moving = figuresOf([&](int, int, int) { return 9000 + normal(25); });
    EXPECT_LT(moving.pattern, 6); // averaged away
}

TEST_F(Measures, DriftIsTheWayOfTheLevelAndTooFewFramesShowNone)
{
    const NoiseFigures figures = figuresOf([](int n, int, int x) { return 9000 + 2 * n + 7 * x; }, 11);
    EXPECT_NEAR(figures.drift, 20, 1e-9);
    EXPECT_TRUE(figures.low == 9000 && figures.high == 9000 + 20 + 7 * 79);

    const NoiseFigures one = figuresOf([](int, int, int) { return 7; }, 1);
    EXPECT_TRUE(std::isnan(one.temporal) && std::isnan(one.drift) && one.columns == 0);
    NoiseMeter meter;
    meter.add(Frame::zeros(4, 4));
    EXPECT_TRUE(std::isnan(meter.figures().columns)); // no room for an average over nine
    for (const int rows : {1, 2, 3}) {
        NoiseMeter lines;
        lines.add(Frame::zeros(rows, 80));
        EXPECT_EQ(std::isnan(lines.figures().commonColumns), rows == 1) << rows; // which has no halves
    }
    EXPECT_THROW(meter.add(Frame::zeros(4, 5)), Exception);
    EXPECT_THROW(NoiseMeter().add(Frame::zeros(4096, 4097)), Exception);
}

/// A bright bar of 12 columns that moves 3 columns per frame.
const auto barAt = [](int frame) {
    Frame picture(20, 90, static_cast<unsigned short>(9000));
    picture.colRange(10 + 3 * frame, 22 + 3 * frame) = 9600;
    return picture;
};

TEST(Fidelity, IsThatOfEdgesAndOfWhatLagsBehind)
{
    for (const int late : {0, 1}) {
        FidelityMeter meter;
        for (int i = 0; i < 8; ++i) {
            Frame after = barAt(i);
            barAt(std::max(0, i - late)).rowRange(0, 10).copyTo(after.rowRange(0, 10)); // the upper half
            meter.add(barAt(i), after);
        }
        EXPECT_DOUBLE_EQ(meter.figures().ghosting, late / 2.0);
        EXPECT_TRUE(late == 1 || meter.figures().edges == 1);
    }
    // Steps of 600 become 200, 400, 600: over two pixels 400 instead of 600.
    Frame blurred;
    cv::blur(barAt(0), blurred, {3, 1});
    FidelityMeter meter;
    meter.add(barAt(0), blurred);
    EXPECT_NEAR(meter.figures().edges, 2.0 / 3, 1e-3);
    EXPECT_TRUE(std::isnan(meter.figures().ghosting));
}

TEST(Statistics, QuantilesGoFromTheLeastValueToTheLargest)
{
    for (const auto& [share, value] : {std::pair(0.0, 1), {0.5, 3}, {0.75, 4}, {1.0, 9}})
        EXPECT_EQ(quantileOf((cv::Mat_<double>(1, 5) << 9, 1, 4, 2, 3), share), value) << share;
    EXPECT_EQ(medianOf((cv::Mat_<double>(1, 5) << 9, 1, 4, 2, 3)), 3);
    EXPECT_EQ(medianOf((cv::Mat_<double>(1, 4) << 9, 1, 4, 2)), 3); // between two
}

} // namespace
