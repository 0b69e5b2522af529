#include "tests/apps/ProgramRun.h"

#include "camera/lens/LensMap.h"

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
using velmo::camera::Frame;
using velmo::camera::LensModel;

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
