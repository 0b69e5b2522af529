#include "tests/apps/ProgramFixture.h"

#include "camera/pixels/PixelMap.h"
#include "recordings/PixelFiles.h"

using namespace testing;
using namespace velmo::camera;

struct Pixels : ProgramFixture
{
    /// A wall whose level rises by 100 from frame to frame, with a faint gradient; then `spoil` has its way.
    template <class Spoil>
    void writeFrames(const std::string& name, int count, int level, Spoil spoil)
    {
        for (int n = 0; n < count; ++n) {
            Frame frame = matrixOf<unsigned short>({20, 12}, [&](int, int x) { return level + 100 * n + x; });
            spoil(frame, n);
            write(name + std::to_string(n) + ".pgm", frame);
        }
    }
};

TEST_F(Pixels, AreFoundReplacedAndShown)
{
    writeFrames("f", 3, 10000, [](Frame& frame, int n) {
        frame(2, 3) = 7;                                               // dead
        frame(11, 19) = 9000;                                          // does not rise
        frame(5, 5) = static_cast<unsigned short>(n == 1 ? 1 : 10205); // odd once, and falls
    });
    EXPECT_THAT(said("pixels detect f*.pgm --spread 2 --monotony --out map.pgm --csv"),
                AllOf(HasSubstr("spread,64,2,"), HasSubstr("monotony,32,3,"), HasSubstr("any,,3,1.25")));
    EXPECT_EQ(bytes("map.csv"), "x,y,flags,reasons\n3,2,96,spread+monotony\n5,5,32,monotony\n"
                                "19,11,96,spread+monotony\n");
    EXPECT_EQ(velmo::recordings::readPixelMap(path("map.pgm"))(2, 3), 96);
    EXPECT_EQ(picture("map.png")(2 * 8 + 4, 3 * 8 + 4), cv::Vec3b(60, 60, 255));

    said("pixels records map.pgm --radius 3 --out records.pgm");
    EXPECT_EQ(said("pixels show records.pgm --csv"), "x,y,right,below,above,left\n"
                                                     "3,2,\"4,2\",\"3,3\",\"3,1\",\"2,2\"\n"
                                                     "5,5,\"6,5\",\"5,6\",\"5,4\",\"4,5\"\n"
                                                     "19,11,\"19,10\",\"18,11\",\"19,10\",\"18,11\"\n");
    said("render f0.pgm --bad-pixels records.pgm --range 10000:10019 --out clean.png");
    said("render f0.pgm --range 10000:10019 --out raw.png");
    EXPECT_GT(cv::norm(picture("raw.png"), picture("clean.png")), 100);
}

TEST_F(Pixels, AreFoundByNetdAndInLines)
{
    // Noise of a digit up and down; a pixel without response, one with much noise, a row that is dead.
    const auto spoil = [](Frame& frame, int n) {
        const int level = frame(0, 0) - 100 * n;
        frame = matrixOf<unsigned short>({20, 12}, [&](int y, int x) {
            const int noise = (x + y + n) % 2 * (x == 9 && y == 9 ? 40 : 2);
            return (y == 4 || (x == 1 && y == 1) ? 5000 : level) + noise;
        });
    };
    writeFrames("cold", 4, 8000, spoil);
    writeFrames("warm", 4, 9000, spoil);
    const std::string netd = "pixels detect --netd cold*.pgm 20 warm*.pgm 30 --rows-columns 5:15 --out ";
    EXPECT_THAT(said(netd + "map.pgm --csv"), AllOf(HasSubstr("columns,16,20,"), HasSubstr("netd,2,22,")));
    const PixelMap map = velmo::recordings::readPixelMap(path("map.pgm"));
    EXPECT_TRUE(map(1, 1) == 2 && map(9, 9) == 2 && cv::countNonZero(map.row(4) == 18) == 20);
    EXPECT_THAT(said(netd + "other.pgm --json"), // one document
                AllOf(StartsWith("{\"netd\":\n["), HasSubstr("\n]\n,\"pixels\":\n[")));
}

TEST_F(Pixels, AreFoundByOneCommandThatServesThePicture)
{
    const auto spoil = [](Frame& frame, int) {
        frame(2, 3) = 0;
        frame(7, 12) += 500;
    };
    writeFrames("clean", 20, 10000, [](Frame&, int) {});
    writeFrames("f", 20, 10000, spoil);
    EXPECT_THAT(said("pixels find f*.pgm --out map.pgm --json"), HasSubstr("\"dead\""));
    EXPECT_THAT(bytes("map.csv"), testing::MatchesRegex("x,y,flags,reasons,deviations,cluster\n"
                                                        "3,2,64,dead,-[0-9.]+,1\n12,7,64,hot,[0-9.]+,1\n"));
    // The wall rises evenly, so that what replaces them is what was there.
    said("render clean19.pgm --range 11000:12000 --out clean.png");
    said("render f*.pgm --bad-pixels auto --range 11000:12000 --out all");
    EXPECT_EQ(cv::norm(picture("clean.png"), picture("all/frame_0019.png")), 0);
}

TEST_F(Pixels, AreNotBelievedWhenTheyAreTooMany)
{
    writeFrames("f", 1, 10000, [](Frame& frame, int) {
        for (int n = 0; n < 15; ++n)
            frame(1 + n % 3 * 4, 1 + n / 3 * 4) = 0;
    });
    const ProgramRun find = call("pixels find f0.pgm --out map.pgm");
    EXPECT_THAT(find.errors, HasSubstr("15 of 240 pixels are flagged, most of them as dead"));
    EXPECT_EQ(find.code, 3);
    EXPECT_EQ(folder.entries().size(), 1U);
    call("pixels find f0.pgm --out map.pgm --force");
    EXPECT_EQ(cv::countNonZero(velmo::recordings::readPixelMap(path("map.pgm"))), 15);
}

TEST_F(Pixels, InTheMidstOfAClusterAreReplacedFromFurtherAway)
{
    PixelMap map(15, 15, 0);
    map(cv::Rect(3, 3, 9, 9)) = 64;
    velmo::recordings::writePixelMap(velmo::recordings::OutputFile(path("map.pgm"), "map.pgm"), map);
    EXPECT_THAT(call("pixels records map.pgm --radius 4 --out records.pgm").output,
                EndsWith("searched for them:\n  7,7\n"));
    EXPECT_THAT(said("pixels show records.pgm --csv"), HasSubstr("7,7,\"12,7\",\"7,12\",\"7,2\",\"2,7\"\n"));
}

TEST_F(Pixels, AreNoneInACleanFrame)
{
    write("f0.pgm", Frame(12, 20, 10000));
    said("pixels detect f0.pgm --spread 1 --out map.pgm");
    EXPECT_EQ(said("pixels records map.pgm --radius 3 --out records.pgm"), "0 records in records.pgm\n");
    EXPECT_EQ(said("pixels show records.pgm --json"), "[\n]\n");
    said("render f0.pgm --bad-pixels records.pgm --out f.png");
}

TEST_F(Pixels, RefuseWhatIsWrongInOneLine)
{
    writeFrames("f", 1, 10000, [](Frame& frame, int) { frame(0, 0) = 40000; });
    velmo::recordings::writePixelMap({path("bad.pgm"), "bad.pgm"}, PixelMap(3, 3, 64));
    write("list.csv", std::string("x,y\n19,11\n5,4\n"));
    expectRefusals({{"pixels", "subcommand"},
                    {"pixels detect f0.pgm --out map.pgm", "say how"},
                    {"pixels detect --spread 1 --out map.pgm", "INPUT"},
                    {"pixels detect f0.pgm --spread 1 --out map.pgm", "40000"},
                    {"pixels detect f0.pgm --monotony --rows-columns 5 --out map.pgm", "--rows-columns"},
                    {"pixels detect --netd f0.pgm cold f0.pgm 30 --out map.pgm", "cold"},
                    {"pixels detect --netd f0.pgm 20 30 --out map.pgm", "--netd"},
                    {"pixels merge list.csv --out l.pgm", "--size"},
                    {"pixels merge list.csv --size 19x12 --out l.pgm", "line 2"},
                    {"pixels records bad.pgm --radius 3 --out r.pgm", "without a good pixel"}});
    said("pixels detect f0.pgm --spread 1 --offset 9000 --out map.pgm");
}

TEST_F(Pixels, AreEvenedOutByAFlatField)
{
    const auto spoil = [](Frame& frame, int) {
        frame += matrixOf<unsigned short>({20, 12}, [](int y, int x) { return (x * 37 + y * 91) % 300; });
        frame(5, 6) = 0;
    };
    writeFrames("shutter", 2, 9000, spoil);
    writeFrames("scene", 1, 12000, spoil);
    EXPECT_THAT(said("flat learn shutter*.pgm --out flat --csv"), HasSubstr("defective pixels,defects,1\n"));
    said("clean scene0.pgm --flat flat --out even.pgm");
    double low = 0, high = 0;
    cv::minMaxLoc(stored("even.pgm"), &low, &high);
    EXPECT_LE(high - low, 1); // also in place of the dead pixel
    EXPECT_NEAR(low, 12150, 30);
    expectRefusals({{"clean scene0.pgm --flat scene0.pgm --out s.pgm", "scene0.pgm: not a flat field"},
                    {"clean scene0.pgm --flat flat --out flat", "flat"},
                    {"noise scene0.pgm --flat flat", "--compare"},
                    {"flat learn shutter*.pgm --out flat.png", ".npy"}});
}
