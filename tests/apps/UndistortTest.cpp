#include "tests/apps/ProgramFixture.h"

#include "camera/lens/LensMap.h"

using namespace velmo::camera;

using Undistort = ProgramFixture;

TEST_F(Undistort, MovesThePixelsOfEveryFrame)
{
    Frame frame(72, 96);
    cv::randu(frame, 0, 65536);
    write("in/0.png", frame);
    write("in/1.png", Frame(frame.t()).reshape(1, 72));
    said("undistort --make -0.3,0.05,60,60,47.5,35.5 --size 96x72 --out lens.pam");
    said("undistort in --map lens.pam --out straight");
    const velmo::vision::DistortionCorrection lens(path("lens.pam"), 72, 96);
    for (const std::string n : {"0", "1"}) {
        const Frame in = stored("in/" + n + ".png");
        const Frame out = stored("straight/frame_000" + n + ".png");
        EXPECT_TRUE(same(out, undistorted(in, lens)) && !same(out, in));
    }
}

TEST_F(Undistort, SaysWhatIsWrongInOneLineAndLeavesNothing)
{
    write("frame.png", Frame(4, 6, 1000));
    said("undistort --make 0,0,5,5,2,2 --size 6x5 --out other.pam");
    expectRefusals({{"undistort frame.png --out a.png", "--map"},
                    {"undistort --map other.pam --out a.png", "INPUT"},
                    {"undistort frame.png --map other.pam --out a.png", "heigth"},
                    {"undistort frame.png --map other.pam --out a.avi", "a.avi"},
                    {"undistort frame.png --map other.pam --size 6x4 --out a.png", "--size"},
                    {"undistort --make 0,0,5,5,2 --size 6x4 --out a.pam", "K1,K2,FX,FY,CX,CY"},
                    {"undistort --make 0,0,5,5,2,2 --out a.pam", "--size"},
                    {"undistort frame.png --make 0,0,5,5,2,2 --size 6x4 --out a.pam", "INPUT"},
                    {"undistort --make 0.5,0,500,500,1000,1000 --size 2000x2000 --out a.pam", "rows away"}});
}
