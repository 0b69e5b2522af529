#include "tests/apps/ProgramFixture.h"

using namespace testing;

struct Temperatures : ProgramFixture
{
    /// A wall of 20 °C in hundredths of a kelvin, on it a plate of 30 °C.
    Temperatures()
    {
        Frame frame(30, 40, static_cast<unsigned short>(29315));
        frame(cv::Rect(10, 5, 8, 4)) = 30315;
        frame(12, 3) = 29215;
        write("plate.png", frame);
    }
};

TEST_F(Temperatures, AreTypedInTheDegreesOfTheUnit)
{
    said("render plate.png --out counts.png --range 29315:31315 --region 30000:30400:00FF00");
    const cv::Mat counts = stored("counts.png");
    for (const char* const typed :
         {"--celsius --range 20:40 --region 26.85:30.85:00FF00",
          "--unit linear:0.01:-273.15 --range 29315n:31315n --region 30000n:30.85:00FF00",
          "--unit centikelvin --degrees F --range 68:104 --isotherm between:80.33:87.53:00FF00",
          "--unit centikelvin --degrees K --range 293.15:313.15 --isotherm above:299.99:00FF00:solid"}) {
        said(std::string("render plate.png --out degrees.png ") + typed);
        EXPECT_TRUE(same(stored("degrees.png"), counts)) << typed;
    }
    EXPECT_THAT(said("blobs plate.png --celsius --above 29.99 --csv --out b.png"), HasSubstr("\n0,1,32,"));
    EXPECT_EQ(said("blobs plate.png --celsius --above 30 --json --out b.png"), "[\n]\n"); // strictly
    EXPECT_THAT(said("noise plate.png --celsius --csv"), HasSubstr("least value,min_celsius,19\n"));
}

TEST_F(Temperatures, ThatCanHardlyBeTrueAreDoubtedOnce)
{
    said("measure plate.png --unit kelvin/64 --csv"); // 184.9 °C: a wrong unit within the world passes
    const ProgramRun wrong = call("measure plate.png plate.png --unit celsius/10 --csv");
    EXPECT_EQ(wrong.code, 0);
    EXPECT_THAT(wrong.errors, AllOf(HasSubstr("2931.5 °C"), HasSubstr("try centikelvin (20.0 °C) or")));
    EXPECT_EQ(std::count(wrong.errors.begin(), wrong.errors.end(), '\n'), 1);
}

TEST_F(Temperatures, OfSignedUnitsAreInOrderInsideAndInTwosComplementInFiles)
{
    // -0.5 °C, 0.3 °C
    const Frame frame = (Frame(2, 4) << 0xFFFB, 3, 0xFFFB, 3, 0xFFFB, 3, 0xFFFB, 3);
    write("frost.png", frame);
    EXPECT_THAT(said("measure frost.png --unit celsius/10 --csv"),
                HasSubstr("\n0,whole,8,0,-0.5,0,0,-0.1,0.3,1,0,"));
    said("clean frost.png --unit celsius/10 --out same.pgm");
    EXPECT_TRUE(same(stored("same.pgm"), frame));
    // The average of both is near 0, not in the middle of all values.
    said("clean frost.png --unit celsius/10 --spatial 31 --out smooth.png");
    EXPECT_THAT(said("measure smooth.png --csv"), HasSubstr("\n0,whole,8,0,-0."));
}

TEST_F(Temperatures, TravelWithTheFramesThroughEveryFormat)
{
    Random random(3);
    for (const std::string i : {"0", "1", "2"})
        write("run_" + i + ".png", random.frame<unsigned short>({6, 4}, 0, 65535));
    for (const std::string made : {"a.tiff", "a.npy", "a.raw", "a.mkv", "folder"}) {
        const std::string raw = made == "a.raw" ? " --raw 6x4" : "";
        said("clean run_0.png run_1.png run_2.png --unit kelvin/64 --out " + made +
             (made == "folder" ? " --format pgm" : ""));
        said("clean " + made + raw + " --out back");
        for (const std::string i : {"0", "1", "2"})
            EXPECT_TRUE(same(stored("back/frame_000" + i + ".png"), stored("run_" + i + ".png"))) << made;
        const bool hasUnit = said("measure " + made + raw + " --csv").find("min °C") != std::string::npos;
        EXPECT_EQ(hasUnit, made != "a.npy" && made != "a.raw") << made; // which have no room for one
    }
    EXPECT_THAT(said("measure a.tiff --unit counts --csv"), Not(HasSubstr("°C"))); // what is typed wins
    EXPECT_EQ(shell("clean a.tiff --quiet --out -").output, bytes("a.raw"));
    EXPECT_EQ(shell("clean - --raw 6x4 --out - <a.raw").output, bytes("a.raw"));
    expectRefusals({{"measure a.tiff run_0.png", "kelvin/64"}});
}

TEST_F(Temperatures, OfObjectsComeOutAsFloats)
{
    // By hand: with L(T) = 1 / (exp(1430/T) - 1), an object that sends half and mirrors 20 °C has to be at
    // 39.1514 °C to look like 30 °C; what looks like 20 °C is as warm as what it mirrors.
    const ProgramRun made =
        call("clean plate.png --celsius --emissivity 0.5 --reflected 20 --celsius-float --out a.npy");
    EXPECT_THAT(made.errors, AllOf(HasSubstr("emissivity 0.5"), HasSubstr("20.0 °C"), HasSubstr("1430,1")));
    std::string npy = bytes("a.npy");
    const cv::Mat_<float> floats(30, 40, reinterpret_cast<float*>(&npy.at(npy.size() - 30 * 40 * 4)));
    EXPECT_NEAR(floats(5, 10), 39.1514F, 1e-3F);
    EXPECT_NEAR(floats(0, 0), 20.F, 1e-4F);
    said("clean plate.png --celsius --celsius-float --out a.tiff");
    EXPECT_THAT(said("measure a.tiff --box 10,5,8,4 --csv"),
                HasSubstr("\n0,box1,32,0,30,10,5,30,30,10,5,0,30,30,30\n"));
}

TEST_F(Temperatures, OfShapesAreMeasuredInTheOrderInWhichTheyAreTyped)
{
    const std::string csv = said("measure plate.png --celsius --box 10,5,8,4 --spot 3,12 --line 0,0,3,0 "
                                 "--spot 3,12:1 --whole --delta box1-spot1 --csv");
    for (const char* const row :
         {"\n0,box1,32,0,30,10,5,30,30,10,5,0,30,30,30\n", "\n0,spot1,1,0,19,3,12,19,19,3,12,0,19,19,19\n",
          "\n0,line1,4,0,20,", "\n0,spot2,5,0,19,3,12,19.8,20,3,11,0.4,19.2,20,20\n",
          "\n0,whole,1200,0,19,3,12,", "\n0,box1-spot1,,,,,,11,,,,,,,\n"})
        EXPECT_THAT(csv, HasSubstr(row));
    EXPECT_LT(csv.find("line1"), csv.find("spot2"));

    const std::string json =
        said("measure plate.png plate.png --celsius --degrees F --whole --histogram 2 --json");
    EXPECT_THAT(json,
                AllOf(HasSubstr("\"frame\": 1, \"shape\": \"whole\""), HasSubstr("\"max_fahrenheit\": 86,"),
                      HasSubstr("\"from_fahrenheit\": 66.2, \"to_fahrenheit\": 76.1, \"pixels\": 2336}"),
                      HasSubstr("\"to_fahrenheit\": 86, \"pixels\": 64}")));
}

TEST_F(Temperatures, ThatCannotBeAreRefusedInOneLineThatNamesTheLimit)
{
    write("s.ini", "[temperature]\ndistance = 5\n");
    expectRefusals({{"clean plate.png --out o.npy --celsius-float", "--unit"},
                    {"clean plate.png --out o --format jpg", "jpg"},
                    {"clean plate.png --out o.tiff --format pgm", "o.tiff"},
                    {"clean plate.png --out o.raw --celsius --unit decikelvin", "decikelvin"},
                    {"measure plate.png --celsius --settings s.ini", ": temperature/distance: the way"},
                    {"measure plate.png --celsius --settings s.ini --distance 6", ": --distance: the way"},
                    {"measure plate.png --spot 40,3", "0 to 39"},
                    {"measure plate.png --histogram 0", "--histogram"},
                    {"measure plate.png --overlay o.png --range lock", "lock"},
                    {"measure plate.png --plot o.jpg", "o.jpg"},
                    {"render plate.png --out o.png --mould", "humidity"}});
}
