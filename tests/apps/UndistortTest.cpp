#include "tests/apps/ProgramFixture.h"

#include "camera/lens/LensMap.h"

namespace {

using namespace velmo::camera;

using Undistort = ProgramFixture;

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
    for (const char* name : {"in/0.png", "in/1.png"})
        write(name, bent);

    said("undistort --make " + lens + " --size 96x72 --out lens.pam");
    said("undistort in --map lens.pam --out straight");
    for (const char* name : {"straight/frame_0000.png", "straight/frame_0001.png"}) {
        const Frame straight = cv::imread(path(name), cv::IMREAD_UNCHANGED);
        ASSERT_EQ(straight.size(), bent.size());
        EXPECT_LT(bend(straight), 0.4);
    }
}

TEST_F(Undistort, SaysWhatIsWrongInOneLineAndLeavesNothing)
{
    write("frame.png", Frame(4, 6, 1000));
    said("undistort --make 0,0,5,5,2,2 --size 6x5 --out other.pam");
    expectRefusals({{"undistort frame.png --out a.png", "--map"},
                    {"undistort --map other.pam --out a.png", "INPUT"},
                    {"undistort frame.png --map frame.png --out a.png", "frame.png: Can not open"},
                    {"undistort frame.png --map other.pam --out a.png", "heigth"},
                    {"undistort frame.png --map other.pam --out a.avi", "a.avi"},
                    {"undistort frame.png --map other.pam --size 6x4 --out a.png", "--size"},
                    {"undistort --make 0,0,5,5,2 --size 6x4 --out a.pam", "K1,K2,FX,FY,CX,CY"},
                    {"undistort --make 0,0,0,5,2,2 --size 6x4 --out a.pam", "--make"},
                    {"undistort --make 0,0,5,5,2,2 --out a.pam", "--size"},
                    {"undistort frame.png --make 0,0,5,5,2,2 --size 6x4 --out a.pam", "INPUT"},
                    {"undistort --make 0.5,0,500,500,1000,1000 --size 2000x2000 --out a.pam", "rows away"}});
}

} // namespace
