#include "tests/TemporaryFolder.h"
#include "tests/apps/ProgramRun.h"

#include "camera/Frame.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/videoio.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

/// Frames of a warm square that moves over a gradient.
void writeFrames(const std::filesystem::path& folder, int count, cv::Size size = {64, 48})
{
    std::filesystem::create_directories(folder);
    for (int i = 0; i < count; ++i) {
        velmo::camera::Frame frame(size);
        for (int r = 0; r < frame.rows; ++r)
            for (int c = 0; c < frame.cols; ++c)
                frame(r, c) = static_cast<unsigned short>(29000 + 4 * r + c);
        frame(cv::Rect(5 + i, 10, 8, 8)) = 30500;
        cv::imwrite(folder / ("run_" + std::to_string(i) + ".png"), frame);
    }
}

class Program : public testing::Test
{
protected:
    /// Every refusal looks like this: code 2, one line that names what is wrong, nothing left behind.
    void expectRefusal(const std::string& arguments, const std::string& named)
    {
        const ProgramRun run = callProgram(arguments, folder.path());
        EXPECT_EQ(run.code, 2) << arguments;
        EXPECT_THAT(run.errors, HasSubstr(named)) << arguments;
        EXPECT_THAT(run.errors, MatchesRegex("thermal: [^\n]+\n")) << arguments;
        EXPECT_EQ(run.output, "") << arguments;
    }

    TemporaryFolder folder;
};

TEST_F(Program, TellsItsVersionAndHelp)
{
    EXPECT_THAT(runProgram("--version", folder.path()).output, MatchesRegex("thermal [0-9.]+\n"));
    const ProgramRun help = runProgram("render --help", folder.path());
    EXPECT_EQ(help.code, 0);
    EXPECT_THAT(help.output, HasSubstr("--range"));
}

TEST_F(Program, EndsARefusedRunWithCode2)
{
    std::ofstream(folder.path() / "broken.png", std::ios::binary) << "\x89PNG\r\n\x1a\n broken";
    const ProgramRun run = runProgram("render broken.png --out o.png", folder.path());
    EXPECT_EQ(run.code, 2);
    EXPECT_THAT(run.errors,
                MatchesRegex("thermal: broken.png: [^\n]+\n")); // nor do the picture libraries speak
    EXPECT_EQ(run.output, "");
}

TEST_F(Program, RefusesBadArgumentsInOneLine)
{
    writeFrames(folder.path() / "run", 2);
    expectRefusal("", "command");
    expectRefusal("paint", "paint");
    expectRefusal("render run", "--out");
    expectRefusal("render run --out o --colour", "--colour");
    expectRefusal("render run --out o --range 5", "'5'");
    expectRefusal("render run --out o --range 300:200", "less than two values");
    expectRefusal("render run --out o --range -5:200", "0 to 65535");
    expectRefusal("render run --out o --unit celcius", "celcius");
    expectRefusal("render run --out o --unit centikelvin --range -300:20", "-273.15");
    expectRefusal("render run --out o --range p1:200", "'200'");
    expectRefusal("render run --out o --range p99:p1", "not above");
    expectRefusal("render run --out o --temporal 17:2048", "0 to 16");
    expectRefusal("render run --out o --temporal 16:2049", "0 to 2048");
    expectRefusal("render run --out o --temporal 16", "GAIN:FACTOR");
    expectRefusal("render run --out o --scale 0", "--scale");
    expectRefusal("render run --out o --palette Pink", "Rainbow");
    expectRefusal("render run --out o --palette-file none.xml", "none.xml");
    expectRefusal("render run --out o --region 5:4:FFFFFF", "5:4:FFFFFF");
    expectRefusal("render run --out o --pattern 101:0:0", "0 to 100");
    expectRefusal("render run --out o --spatial 32", "0 to 31");
    expectRefusal("render run --out o --downsize 160x120", "64x48");
    expectRefusal("noise run --spatial 3", "--compare");
    expectRefusal("noise run --skip 2", "--skip");
    expectRefusal("noise run --json --csv", "--csv");
    expectRefusal("palettes --out sheet", "sheet");
    expectRefusal("render run --out o.png", "o.png");
    expectRefusal("render run --out o.jpg", "o.jpg");
    expectRefusal("render run --out missing/o.avi", "missing");
    EXPECT_THAT(folder.entries(), testing::ElementsAre("run"));
}

TEST_F(Program, RefusesBadFilesInOneLineAndLeavesNothing)
{
    writeFrames(folder.path() / "run", 3);
    std::ofstream(folder.path() / "run/run_1.png", std::ios::binary) << "no picture";
    expectRefusal("render run --out o", "run_1.png");
    expectRefusal("render run --out o.avi", "run_1.png");
    std::filesystem::remove(folder.path() / "run/run_1.png");
    std::filesystem::resize_file(folder.path() / "run/run_0.png", 300);
    expectRefusal("render run --out o", "run_0.png");

    std::ofstream(folder.path() / "short.pgm", std::ios::binary) << "P5 64 48 65535\nshort";
    expectRefusal("render short.pgm --out o", "short.pgm");
    cv::imwrite(folder.path() / "colour.png", cv::Mat(4, 4, CV_8UC3, cv::Scalar(7)));
    expectRefusal("render colour.png --out o.png", "16-bit");
    std::ofstream(folder.path() / "odd.raw", std::ios::binary) << "12345";
    expectRefusal("render odd.raw --raw 2x1 --out o", "5 bytes");
    expectRefusal("render - --out o", "--raw");
    std::filesystem::create_directory(folder.path() / "empty");
    expectRefusal("render empty --out o", "empty");
    EXPECT_THAT(folder.entries(),
                testing::UnorderedElementsAre("run", "short.pgm", "colour.png", "odd.raw", "empty"));
}

TEST_F(Program, RendersAFolderOfFrames)
{
    writeFrames(folder.path() / "run", 12);
    const ProgramRun run = runProgram("render run --out pictures --legend --scale 2", folder.path());
    ASSERT_EQ(run.code, 0) << run.errors;
    EXPECT_EQ(run.errors, ""); // no progress bar where nobody looks
    for (const char* name : {"frame_0000.png", "frame_0011.png"}) {
        const cv::Mat picture = cv::imread(folder.path() / "pictures" / name, cv::IMREAD_UNCHANGED);
        EXPECT_EQ(picture.type(), CV_8UC3);
        EXPECT_EQ(picture.rows, 96);
        EXPECT_GT(picture.cols, 128);
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path() / "pictures"), {}), 12);
}

TEST_F(Program, RendersAPatternInNaturalOrderAsAFilm)
{
    writeFrames(folder.path() / "run", 12);
    const ProgramRun run = runProgram("render 'run/run_*.png' --range lock --out film.avi", folder.path());
    ASSERT_EQ(run.code, 0) << run.errors;
    cv::VideoCapture film(folder.path() / "film.avi", cv::CAP_OPENCV_MJPEG);
    cv::Mat last;
    int count = 0;
    for (cv::Mat picture; film.read(picture); ++count)
        last = picture.clone();
    EXPECT_EQ(count, 12);
    // In the last one the square stands at its last place: columns 16 to 23, as light as it gets.
    EXPECT_EQ(last.size(), cv::Size(64, 48));
    const auto light = [&](int column) { return cv::sum(last.at<cv::Vec3b>(14, column))[0]; };
    EXPECT_GT(light(22), light(8) + 200);
}

TEST_F(Program, RendersARawStreamFromStandardInput)
{
    {
        std::ofstream stream(folder.path() / "stream", std::ios::binary);
        for (int i = 0; i < 2 * 16 * 12; ++i)
            stream.put(static_cast<char>(i & 0xFF)).put(static_cast<char>(i >> 8));
        stream << "the beginning of a third frame";
    }
    const ProgramRun run = runProgram("render - --raw 16x12 --out o < stream", folder.path());
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.errors, HasSubstr("cut off"));
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "o/frame_0001.png"));
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "o/frame_0002.png"));
    // Little-endian: of the first frame the last pixel is the hottest.
    const cv::Mat picture = cv::imread(folder.path() / "o/frame_0000.png");
    EXPECT_GT(cv::sum(picture.at<cv::Vec3b>(11, 15))[0], cv::sum(picture.at<cv::Vec3b>(0, 0))[0] + 300);
}

TEST_F(Program, MeasuresNoiseBeforeAndAfter)
{
    writeFrames(folder.path() / "run", 6);
    const ProgramRun plain = runProgram("noise run", folder.path());
    ASSERT_EQ(plain.code, 0) << plain.errors;
    EXPECT_THAT(plain.output, HasSubstr("temporal noise per pixel"));
    const ProgramRun both = runProgram("noise run --compare --skip 1 --out both.png --json", folder.path());
    ASSERT_EQ(both.code, 0) << both.errors;
    EXPECT_THAT(both.output, HasSubstr("\"key\": \"temporal\", \"before\": 0, \"after\": "));
    EXPECT_GT(cv::imread(folder.path() / "both.png").cols, 3 * 6 * 64);
}

TEST_F(Program, ListsAndDrawsThePalettes)
{
    const ProgramRun run = runProgram("palettes --csv --out sheet.png", folder.path());
    ASSERT_EQ(run.code, 0) << run.errors;
    EXPECT_THAT(run.output, HasSubstr("Ironbow,120,#000000,#FFFFF9\n"));
    EXPECT_EQ(std::count(run.output.begin(), run.output.end(), '\n'), 1 + 12);
    EXPECT_FALSE(cv::imread(folder.path() / "sheet.png").empty());
}

TEST_F(Program, DemoWritesPicturesAndATable)
{
    const ProgramRun run = runProgram("demo --out demo --json", folder.path());
    ASSERT_EQ(run.code, 0) << run.errors;
    EXPECT_THAT(run.output, HasSubstr("\"us_per_frame\": "));
    const cv::Mat sheet = cv::imread(folder.path() / "demo/contact-sheet.png");
    EXPECT_GT(sheet.cols, 2 * 240);
    EXPECT_THAT(folder.entries(), testing::ElementsAre("demo"));
}

} // namespace
