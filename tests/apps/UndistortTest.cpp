#include "tests/apps/ProgramFixture.h"

using Undistort = ProgramFixture;

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
