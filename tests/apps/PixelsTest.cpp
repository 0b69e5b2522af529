#include "tests/apps/ProgramRun.h"

#include "camera/Frame.h"
#include "camera/pixels/PixelMap.h"
#include "recordings/PixelFiles.h"

#include <opencv2/imgcodecs.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace {

using testing::HasSubstr;
using velmo::camera::Frame;
using velmo::camera::PixelMap;

class Pixels : public testing::Test
{
protected:
    /// A wall whose level rises by 100 from frame to frame, with a faint gradient; then `spoil` has its way.
    template <class Spoil>
    void writeFrames(const std::string& name, int count, int level, Spoil spoil)
    {
        for (int n = 0; n < count; ++n) {
            Frame frame(12, 20);
            for (int y = 0; y < frame.rows; ++y)
                for (int x = 0; x < frame.cols; ++x)
                    frame(y, x) = static_cast<unsigned short>(level + 100 * n + x);
            spoil(frame, n);
            cv::imwrite(path(name + std::to_string(n) + ".pgm"), frame);
        }
    }

    std::string path(const std::string& name) const { return folder.path() / name; }

    std::string textOf(const std::string& name) const
    {
        std::ostringstream all;
        all << std::ifstream(path(name)).rdbuf();
        return all.str();
    }

    ProgramRun run(const std::string& arguments) { return runProgram(arguments, folder.path()); }

    TemporaryFolder folder;
};

TEST_F(Pixels, AreFoundReplacedAndShown)
{
    writeFrames("f", 3, 10000, [](Frame& frame, int n) {
        frame(2, 3) = 7;                                               // dead
        frame(11, 19) = 9000;                                          // does not rise
        frame(5, 5) = static_cast<unsigned short>(n == 1 ? 1 : 10205); // odd once, and falls
    });
    const ProgramRun detect = run("pixels detect 'f*.pgm' --spread 2 --monotony --out map.pgm --csv");
    ASSERT_EQ(detect.code, 0) << detect.errors;
    EXPECT_THAT(detect.output, HasSubstr("spread,64,2,"));
    EXPECT_THAT(detect.output, HasSubstr("monotony,32,3,"));
    EXPECT_THAT(detect.output, HasSubstr("any,,3,1.25"));
    EXPECT_EQ(textOf("map.csv"), "x,y,flags,reasons\n3,2,96,spread+monotony\n5,5,32,monotony\n"
                                 "19,11,96,spread+monotony\n");
    EXPECT_EQ(velmo::recordings::readPixelMap(path("map.pgm"))(2, 3), 96);
    EXPECT_EQ(cv::imread(path("map.png")).at<cv::Vec3b>(2 * 8 + 4, 3 * 8 + 4), cv::Vec3b(60, 60, 255));

    const ProgramRun records = run("pixels records map.pgm --radius 3 --out records.pgm");
    ASSERT_EQ(records.code, 0) << records.errors;
    const ProgramRun show = run("pixels show records.pgm --csv");
    EXPECT_EQ(show.output, "x,y,right,below,above,left\n"
                           "3,2,\"4,2\",\"3,3\",\"3,1\",\"2,2\"\n"
                           "5,5,\"6,5\",\"5,6\",\"5,4\",\"4,5\"\n"
                           "19,11,\"19,10\",\"18,11\",\"19,10\",\"18,11\"\n");
    const ProgramRun render =
        run("render f0.pgm --bad-pixels records.pgm --range 10000:10019 --out clean.png");
    ASSERT_EQ(render.code, 0) << render.errors;
    ASSERT_EQ(run("render f0.pgm --range 10000:10019 --out raw.png").code, 0);
    EXPECT_GT(cv::norm(cv::imread(path("raw.png")), cv::imread(path("clean.png"))), 100);
}

TEST_F(Pixels, AreFoundByNetdAndInLines)
{
    // Noise of a digit up and down; a pixel without response, one with much noise, a row that is dead.
    const auto spoil = [](Frame& frame, int n) {
        const int level = frame(0, 0) - 100 * n;
        for (int y = 0; y < frame.rows; ++y)
            for (int x = 0; x < frame.cols; ++x) {
                const int noise = (x + y + n) % 2 * (x == 9 && y == 9 ? 40 : 2);
                const bool dead = y == 4 || (x == 1 && y == 1);
                frame(y, x) = static_cast<unsigned short>((dead ? 5000 : level) + noise);
            }
    };
    writeFrames("cold", 4, 8000, spoil);
    writeFrames("warm", 4, 9000, spoil);
    const ProgramRun detect = run("pixels detect --netd 'cold*.pgm' 20 'warm*.pgm' 30 --rows-columns 5:15 "
                                  "--out map.pgm --csv");
    ASSERT_EQ(detect.code, 0) << detect.errors;
    EXPECT_THAT(detect.output, HasSubstr("rows and columns,16,20,"));
    EXPECT_THAT(detect.output, HasSubstr("netd,2,22,"));
    const PixelMap map = velmo::recordings::readPixelMap(path("map.pgm"));
    EXPECT_EQ(map(1, 1), 2);
    EXPECT_EQ(map(9, 9), 2);
    EXPECT_EQ(cv::countNonZero(map.row(4) == 18), 20);
}

TEST_F(Pixels, AreNoneInACleanFrame)
{
    writeFrames("f", 1, 10000, [](Frame&, int) {});
    ASSERT_EQ(run("pixels detect f0.pgm --spread 1 --out map.pgm").code, 0);
    EXPECT_EQ(run("pixels records map.pgm --radius 3 --out records.pgm").output,
              "0 records in records.pgm\n");
    EXPECT_EQ(run("pixels show records.pgm --json").code, 0);
    EXPECT_EQ(run("render f0.pgm --bad-pixels records.pgm --out f.png").code, 0);
}

TEST_F(Pixels, RefuseWhatIsWrongInOneLine)
{
    writeFrames("f", 1, 10000, [](Frame& frame, int) { frame(0, 0) = 40000; });
    velmo::recordings::writePixelMap({path("bad.pgm"), "bad.pgm"}, PixelMap(3, 3, 64));
    const std::vector<std::pair<std::string, std::string>> wrong = {
        {"pixels", "subcommand"},
        {"pixels detect f0.pgm --out map.pgm", "say how"},
        {"pixels detect --spread 1 --out map.pgm", "INPUT"},
        {"pixels detect f0.pgm --spread 1 --out map.png", "map.png"},
        {"pixels detect f0.pgm --spread 0 --out map.pgm", "--spread"},
        {"pixels detect f0.pgm --spread 1 --out map.pgm", "40000"},
        {"pixels detect f0.pgm --monotony --rows-columns 5 --out map.pgm", "--rows-columns"},
        {"pixels detect --netd f0.pgm cold f0.pgm 30 --out map.pgm", "cold"},
        {"pixels detect --netd f0.pgm 20 30 --out map.pgm", "--netd"},
        {"pixels records missing.pgm --radius 3 --out r.pgm", "missing.pgm"},
        {"pixels records bad.pgm --radius 3 --out r.pgm", "no replace pixel"},
        {"pixels show missing.pgm", "missing.pgm"},
        {"render f0.pgm --bad-pixels missing.pgm --out f.png", "missing.pgm"}};
    const auto before = folder.entries();
    for (const auto& [arguments, word] : wrong) {
        const ProgramRun failed = run(arguments);
        EXPECT_EQ(failed.code, 2) << arguments;
        EXPECT_THAT(failed.errors, HasSubstr(word)) << arguments;
        EXPECT_EQ(std::count(failed.errors.begin(), failed.errors.end(), '\n'), 1) << failed.errors;
    }
    EXPECT_EQ(folder.entries(), before);
}

} // namespace
