#include "tests/apps/ProgramFixture.h"

#include <opencv2/videoio.hpp>

struct Program : ProgramFixture
{
    /// Frames of a warm square that moves over a gradient.
    void writeFrames(int count) const
    {
        for (int i = 0; i < count; ++i) {
            Frame frame = matrixOf<unsigned short>({64, 48}, [](int r, int c) { return 29000 + 4 * r + c; });
            frame(cv::Rect(5 + i, 10, 8, 8)) = 30500;
            write("run/run_" + std::to_string(i) + ".png", frame);
        }
    }
};

TEST_F(Program, TellsItsVersionAndHelp)
{
    EXPECT_THAT(shell("--version").output, testing::MatchesRegex("thermal [0-9]+\\.[0-9]+\\.[0-9]+\n"));
    EXPECT_THAT(said("render --help"), HasSubstr("--range"));
}

TEST_F(Program, RefusesBadArgumentsInOneLine)
{
    writeFrames(2);
    expectRefusals({{"", "command"},
                    {"render run", "--out"},
                    {"render run --out o --range 300:200", "less than two values"},
                    {"render run --out o --palette Pink", "Rainbow"},
                    {"render run --out o --rows 5:5", "has no row"},
                    {"render run --out o --rows 6:5", "has no row"},
                    {"render run --out o --tone local --humidity 20:50", "--tone and --detail"},
                    {"render run --out o --settings none.ini", "none.ini"},
                    {"blobs run --out o.png", "--above"},
                    {"blobs run --above 1 --range lock --out o", "lock"},
                    {"blobs run --above 1", "--out"},
                    {"noise run --spatial 3", "--compare"},
                    {"noise run --skip 2", "--skip"},
                    {"noise", "INPUT"},
                    {"noise run --anchors", "--compare"},
                    {"noise run --json --csv", "--csv"},
                    {"palettes --out sheet", "sheet"},
                    {"palettes export Nowhere --out no.xml", "Nowhere"}});
}

TEST_F(Program, RefusesBadFilesInOneLineAndLeavesNothing)
{
    writeFrames(3);
    write("run/run_1.png", "no picture");
    expectRefusals({{"render run --out o", "run_1.png"}, {"render run --out o.avi", "run_1.png"}});
    std::filesystem::remove(path("run/run_1.png"));
    std::filesystem::resize_file(path("run/run_0.png"), 300);
    write("odd.raw", "12345");
    write("empty.raw", "");
    std::filesystem::create_directory(path("empty"));
    expectRefusals({{"render run --out o", "run_0.png"},
                    {"render none*.pgm --out o", "none*.pgm"},
                    {"render empty.raw --raw 4x4 --out o", "empty.raw"},
                    {"render odd.raw --raw 2x1 --out o", "5 bytes"},
                    {"render - --out o", "--raw"},
                    {"render empty --out o", "empty"}});
}

TEST_F(Program, RendersAFilmOfAPatternInNaturalOrder)
{
    writeFrames(12);
    said("render run/run_*.png --range 29000:30500 --out film.avi --fps 12.5"); // and no bar is drawn here
    cv::VideoCapture film(path("film.avi"), cv::CAP_OPENCV_MJPEG);
    EXPECT_EQ(film.get(cv::CAP_PROP_FPS), 12.5);
    cv::Mat last;
    for (int i = 0; i < 12; ++i)
        ASSERT_TRUE(film.read(last)) << i;
    EXPECT_FALSE(film.grab());
    // In the last one the square stands at its last place: columns 16 to 23, as light as it gets.
    const auto light = [&](int column) { return cv::sum(last.at<cv::Vec3b>(14, column))[0]; };
    EXPECT_GT(light(22), light(8) + 200);
}

TEST_F(Program, HoldsTheRangeOfTheFirstFramesAlsoForThePicturesBefore)
{
    // Fewer frames than the range is learnt from, and more; every frame is one value, which alone gives a
    // range from 10 below to 10 above.
    for (const auto& [count, range] : {std::pair(3, "990:1210"), {12, "990:1910"}}) {
        const std::string in = "in" + std::to_string(count);
        for (int i = 0; i < count; ++i)
            write(in + "/" + std::to_string(i) + ".png",
                  Frame(4, 4, static_cast<unsigned short>(1000 + 100 * std::min(i, 9))));
        said("render " + in + " --range lock --out lock");
        said("render " + in + " --range " + range + " --out fixed");
        for (int i = 0; i < count; ++i) {
            const std::string name = "/frame_00" + std::to_string(100 + i).substr(1) + ".png";
            EXPECT_EQ(cv::norm(picture("lock" + name), picture("fixed" + name), cv::NORM_INF), 0) << i;
        }
    }
}

TEST_F(Program, TakesARawStreamFromStandardInput)
{
    std::string stream;
    for (int i = 0; i < 2 * 16 * 12; ++i)
        stream += {static_cast<char>(i & 0xFF), static_cast<char>(i >> 8)};
    write("stream", stream + "the beginning of a third frame");
    const ProgramRun run = shell("render - --raw 16x12 --out o < stream");
    EXPECT_THAT(run.errors, HasSubstr("cut off"));
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(path("o")), {}), 2);
    // Low byte first: of the first frame the last pixel is the hottest.
    const cv::Mat_<cv::Vec3b> first = picture("o/frame_0000.png");
    EXPECT_GT(cv::sum(first(11, 15))[0], cv::sum(first(0, 0))[0] + 300);
    // That there are two is known only when the second one comes.
    EXPECT_THAT(shell("render - --raw 16x12 --out o.png < stream").errors, HasSubstr("more"));
    EXPECT_FALSE(std::filesystem::exists(path("o.png")));
}

TEST_F(Program, TakesSettingsFromAFileAndOptionsAboveThem)
{
    writeFrames(1);
    write("camera.ini", said("settings --palette Hotcold --scale 2 --range 29000:30500"));
    said("render run --settings camera.ini --scale 3 --out o.png");
    said("render run --palette hotcold --range 29000:30500 --scale 3 --out same.png");
    EXPECT_TRUE(same(picture("o.png"), picture("same.png")));
    EXPECT_THAT(said("render run --humidity 20:50 --celsius --out o.png"), HasSubstr("air: 9.3 °C\n"));
}

TEST_F(Program, MeasuresNoiseBeforeAndAfter)
{
    writeFrames(6);
    write("run/run_0.png", Frame(48, 64, static_cast<unsigned short>(40000)));
    EXPECT_THAT(said("noise run --skip 2 --csv"), HasSubstr("frames,frames,4\n"));
    EXPECT_THAT(said("noise run --csv"), HasSubstr("frames,frames,6\n"));
    const std::string both = said("noise run --compare --skip 1 --out both.png --json");
    EXPECT_THAT(both, HasSubstr("\"key\": \"temporal\", \"before\": 0, \"after\": "));
    EXPECT_GT(picture("both.png").cols, 3 * 6 * 64);
    EXPECT_THAT(said("noise run --compare --skip 5 --anchors --csv"),
                HasSubstr("measure (counts),key,before,after,medianBlur,bilateralFilter,addWeighted,"));
}

TEST_F(Program, SaysThatASingleFrameHasOnlyItsOwnNeighboursToBeSmoothedBy)
{
    writeFrames(2);
    for (const char* command : {"render run/run_0.png --out o.png", "clean run/run_0.png --out o.pgm"})
        EXPECT_THAT(call(command + std::string(" --denoise")).errors,
                    HasSubstr("a single frame is smoothed within itself alone"));
    said("clean run --denoise --out o.npy");
    said("clean run/run_0.png --out o.pgm");
}

TEST_F(Program, MakesThePicturesOfThePageAboutBadPixels)
{
    const std::string page = contentOf(PAGES "/bad-pixels.md");
    const std::size_t begin = page.find("```sh\n") + 6;
    std::istringstream lines(page.substr(begin, page.find("```\n", begin) - begin));
    int commands = 0;
    for (std::string line; std::getline(lines, line); ++commands)
        EXPECT_EQ(call(line.substr(line.find(' ') + 1)).code, 0) << line;
    EXPECT_EQ(commands, 4);
    const std::string list = bytes("map.csv");
    // The seven; a few edges of warm things that a person passes by.
    EXPECT_LE(std::count(list.begin(), list.end(), '\n'), 1 + 7 + 4) << list;
    for (const auto& [shown, made] : {std::pair{"bad-pixels", "map"},
                                      {"pixels-raw", "raw/frame_0199"},
                                      {"pixels-repaired", "repaired/frame_0199"}}) {
        const cv::Mat expected = cv::imread(PAGES "/pictures/" + (shown + std::string(".png")));
        const cv::Mat actual = picture(made + std::string(".png"));
        ASSERT_EQ(actual.size(), expected.size()) << shown;
        EXPECT_LT(cv::norm(actual, expected, cv::NORM_L1) / actual.size().area(), 0.2) << shown;
    }
}
