#include "camera/lens/LensMap.h"

#include "apps/thermal/Error.h"
#include "tests/apps/ProgramRun.h"
#include "tests/apps/TemporaryFolder.h"

#include <opencv2/imgcodecs.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace {

using testing::HasSubstr;
using thermal::Frame;
using thermal::LensModel;
using velmo::vision::DistortionCorrection;
using velmo::vision::PixelCorrInfo;

DistortionCorrection whole(cv::Size size, const PixelCorrInfo& record)
{
    return DistortionCorrection(std::vector<PixelCorrInfo>(static_cast<std::size_t>(size.area()), record));
}

TEST(Undistorted, PixelsAreWeightedMeansOfTheirSources)
{
    const Frame frame = (Frame(2, 3) << 100, 200, 400, 1000, 3000, 65535);
    const Frame same = thermal::undistorted(frame, whole(frame.size(), {0, 7, 0, 0, 0}));
    EXPECT_EQ(cv::norm(same, frame, cv::NORM_INF), 0);
    std::vector<PixelCorrInfo> records(6, PixelCorrInfo(0, 1, 0, 0, 0));
    records[0] = {1, 1, 2, 3, 4}; // 200, 400, 3000, 65535: 272,140 / 10
    records[1] = {0, 1, 1, 0, 0}; // 200, 400
    records[2] = {0, 1, 1, 0, 0}; // at the right edge its own neighbour
    records[3] = {0, 1, 0, 3, 0}; // and at the lower one
    records[4] = {-4, 3, 1, 0, 0};
    records[5] = {-1, 0, 0, 0, 0};
    const Frame mixed = thermal::undistorted(frame, DistortionCorrection(records));
    EXPECT_THAT(std::vector<unsigned short>(mixed.begin(), mixed.end()),
                testing::ElementsAre(27214, 300, 400, 1000, 125, 3000));
    records[4] = {0, 1, 0, 0, 1}; // 3000 and, beyond the lower edge, 65535: 34267.5
    EXPECT_EQ(thermal::undistorted(frame, DistortionCorrection(records))(1, 1), 34268);
    EXPECT_EQ(thermal::undistorted(Frame(1, 1, 65535), whole({1, 1}, {0, 65535, 65535, 65535, 65535}))(0, 0),
              65535);
}

TEST(Undistorted, RefusesMapsThatDoNotFit)
{
    const Frame frame(2, 3, 5);
    EXPECT_THROW(thermal::undistorted(frame, whole({2, 2}, {0, 1, 0, 0, 0})), thermal::UsageError);
    EXPECT_THROW(thermal::undistorted(frame, whole({3, 2}, {1, 1, 0, 0, 0})), thermal::UsageError);
}

TEST(LensMap, ALensThatDoesNotBendMovesNothing)
{
    const cv::Mat map = thermal::makeLensMap(LensModel::parse("0,0,50,60,1.5,1", "--make"), {4, 3});
    ASSERT_EQ(map.type(), CV_16UC(6));
    using MapPixel = cv::Vec<unsigned short, 6>;
    EXPECT_EQ(cv::countNonZero(map.reshape(1, 12).col(1)), 0);
    EXPECT_EQ((map.at<MapPixel>(2, 3)), (MapPixel{0, 0, 32768, 0, 0, 0}));
}

TEST(LensMap, SourcesFollowTheModel)
{
    // On the axis y = 10: x = 30 is 20 pixels, 0.2 focal lengths off: 20 x (1 - 0.5 x 0.04) = 19.6, so that
    // the source is at 29.6; x = 10 is the middle and stays.
    using MapPixel = cv::Vec<unsigned short, 6>;
    const cv::Mat map = thermal::makeLensMap(LensModel::parse("-0.5,0,100,100,10,10", "--make"), {40, 21});
    const MapPixel moved = map.at<MapPixel>(10, 30), middle = map.at<MapPixel>(10, 10);
    EXPECT_EQ(moved[0], 0);
    EXPECT_EQ(moved[1], 65535); // one pixel to the left, and 0.6 of the way back
    EXPECT_NEAR(moved[3], 0.6 * 32768, 1);
    EXPECT_EQ(moved[2] + moved[3] + moved[4] + moved[5], 32768);
    EXPECT_EQ(middle, (MapPixel{0, 0, 32768, 0, 0, 0}));
    // With k2 alone: 20 x (1 + 10 x 0.0016) = 20.32.
    const cv::Mat fourth = thermal::makeLensMap(LensModel::parse("0,10,100,100,10,10", "--make"), {40, 21});
    EXPECT_NEAR(fourth.at<MapPixel>(10, 30)[3], 0.32 * 32768, 1);
}

class Undistort : public testing::Test
{
protected:
    ProgramRun run(const std::string& arguments) const
    {
        return runProgram("undistort " + arguments, folder.path());
    }

    TemporaryFolder folder;
};

/// How far the bright spot of each row strays from a straight line.
double bend(const Frame& frame)
{
    double low = 1e9, high = 0;
    for (int r = 4; r < frame.rows - 4; ++r) {
        double sum = 0, moment = 0;
        for (int c = 0; c < frame.cols; ++c) {
            sum += frame(r, c);
            moment += c * static_cast<double>(frame(r, c));
        }
        low = std::min(low, moment / sum);
        high = std::max(high, moment / sum);
    }
    return high - low;
}

TEST_F(Undistort, StraightensALineThatTheLensBent)
{
    const std::string lens = "-0.3,0.05,60,60,47.5,35.5";
    // What the camera sees of a straight line at x = 80, from the model alone: each of its points is drawn
    // where the lens puts it.
    const LensModel model = LensModel::parse(lens, "");
    Frame bent(72, 96, static_cast<unsigned short>(0));
    for (double y = -20; y < 92; y += 0.01) {
        const cv::Point2d seen = model.source({80, y});
        const int c = static_cast<int>(std::floor(seen.x)), r = cvRound(seen.y);
        if (r < 0 || r >= bent.rows)
            continue;
        const double right = seen.x - c;
        bent(r, c) = static_cast<unsigned short>(10000 * (1 - right));
        bent(r, c + 1) = static_cast<unsigned short>(10000 * right);
    }
    ASSERT_GT(bend(bent), 1.5);
    cv::imwrite(folder.path() / "bent.png", bent);

    const ProgramRun made = run("--make " + lens + " --size 96x72 --out lens.pam");
    ASSERT_EQ(made.code, 0) << made.errors;
    const ProgramRun done = run("bent.png --map lens.pam --out straight.png");
    ASSERT_EQ(done.code, 0) << done.errors;
    const Frame straight = cv::imread(folder.path() / "straight.png", cv::IMREAD_UNCHANGED);
    ASSERT_EQ(straight.size(), bent.size());
    EXPECT_LT(bend(straight), 0.4);
}

TEST_F(Undistort, SaysWhatIsWrongInOneLineAndLeavesNothing)
{
    cv::imwrite(folder.path() / "frame.png", Frame(4, 6, 1000));
    ASSERT_EQ(run("--make 0,0,5,5,2,2 --size 6x5 --out other.pam").code, 0);
    const std::vector<std::string> before = folder.entries();
    const std::pair<std::string, std::string> wrong[] = {
        {"frame.png --out a.png", "--map"},
        {"--map other.pam --out a.png", "INPUT"},
        {"frame.png --map frame.png --out a.png", "frame.png: Can not open"},
        {"frame.png --map other.pam --out a.png", "heigth"},
        {"frame.png --map other.pam --out a.avi", "a.avi"},
        {"frame.png --map other.pam --size 6x4 --out a.png", "--size"},
        {"--make 0,0,5,5,2 --size 6x4 --out a.pam", "K1,K2,FX,FY,CX,CY"},
        {"--make 0,0,0,5,2,2 --size 6x4 --out a.pam", "--make"},
        {"--make 0,0,5,5,2,2 --out a.pam", "--size"},
        {"frame.png --make 0,0,5,5,2,2 --size 6x4 --out a.pam", "INPUT"},
        {"--make 0.5,0,500,500,1000,1000 --size 2000x2000 --out a.pam", "rows away"},
    };
    for (const auto& [arguments, words] : wrong) {
        const ProgramRun refused = run(arguments);
        EXPECT_EQ(refused.code, 2) << arguments;
        EXPECT_THAT(refused.errors, HasSubstr(words)) << arguments;
        EXPECT_EQ(std::count(refused.errors.begin(), refused.errors.end(), '\n'), 1) << refused.errors;
        EXPECT_EQ(folder.entries(), before) << arguments;
    }
}

} // namespace
