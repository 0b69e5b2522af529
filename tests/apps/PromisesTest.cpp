#include "tests/apps/ProgramFixture.h"

#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <ctime>
#include <thread>

/// What holds for every command: nothing lost, nothing hung.
struct Promises : ProgramFixture
{
    Promises()
    {
        for (const char* name : {"f.pgm", "in/frame_0000.png", "in/frame_0001.png", "g.png"}) {
            Frame noise(48, 64);
            cv::randu(noise, 1000, 9000);
            write(name, noise);
        }
        write("c.yuv", std::string(64 * 48 * 2, '\x80'));
        write("p.xml", "<group name=\"g\"><item name=\"P\" type=\"uint8[]\">#000000 #FFFFFF</item></group>");
        write("p.csv", "0,0,0\n9,9,9\n");
    }

    void pipe(const std::string& name) const { ASSERT_EQ(mkfifo(path(name).c_str(), 0600), 0); }
};

TEST_F(Promises, AFullDiskLeavesWhatWasThere)
{
    const std::pair<const char*, const char*> commands[] = {
        {"film.avi", "render in --scale 8 --out film.avi"},
        {"film.mp4", "render in --scale 8 --out film.mp4"},
        {"film.mkv", "blobs in --above 5 --out film.mkv"},
        {"o.png", "render f.pgm --out o.png"},
        {"out/frame_0001.png", "render in --out out"},
        {"m.pgm", "pixels detect f.pgm --spread 1 --force --out m.pgm"},
        {"m2.csv", "pixels merge f.pgm --out m2.csv"},
        {"m2.npy", "pixels merge f.pgm --out m2.npy"},
        {"l.pam", "undistort --make -0.1,0,60,60,31.5,23.5 --size 64x48 --out l.pam"},
        {"k.tiff", "clean in --out k.tiff"},
        {"k.npy", "clean in --out k.npy"},
        {"k.raw", "clean in --out k.raw"},
        {"k.mkv", "clean in --out k.mkv"},
        {"k.pgm", "clean f.pgm --out k.pgm"},
        {"t/frame_0001.csv", "measure in --csv-frames t"},
        {"plot.png", "measure in --plot plot.png"},
        {"s.png", "palettes --out s.png"},
        {"c.png", "convert g.png --from png --to ycbcr --out c.png"},
        {"n.png", "noise in --compare --out n.png"}};
    for (const auto& [target, command] : commands) {
        EXPECT_EQ(shell(command).code, 0) << command;
        const auto last = (std::filesystem::file_size(path(target)) - 1) / 512;
        write(target, "good");
        const auto before = folder.entries();
        for (const auto blocks : {(last + 1) / 2, last}) { // by the last one, only the file's end is missing
            const ProgramRun run = shell(command, "ulimit -f " + std::to_string(blocks) + "; ");
            EXPECT_THAT(run.errors, testing::MatchesRegex("thermal: [^\n]*: File too large\n")) << command;
            EXPECT_TRUE(run.code == 2 && run.output.empty() && bytes(target) == "good") << command;
            EXPECT_EQ(folder.entries(), before) << command;
        }
    }
    for (const char* command : {"palettes", "settings", "clean in --out -"}) {
        const ProgramRun run = shell(command + std::string(" >/dev/full"));
        EXPECT_THAT(run.errors, testing::MatchesRegex("thermal: [^\n]*standard output[^\n]*\n")) << command;
        EXPECT_EQ(run.code, 2) << command;
    }
}

TEST_F(Promises, NoOutputReplacesAnInputAndNoneGoesWhereNoFileIs)
{
    std::filesystem::create_hard_link(path("f.pgm"), path("twin.pgm"));
    std::filesystem::create_symlink("g.png", path("link.png"));
    write("m.csv", "kept");
    write("zero.pgm", Frame(4, 4, static_cast<unsigned short>(0)));
    pipe("pipe.png");
    const std::string before = bytes("in/frame_0001.png");
    expectRefusals({{"render in --out in", "is an input"},
                    {"render g.png --out g.png", "is an input"},
                    {"render g.png --out ./in/../link.png", "is an input"},
                    {"pixels detect f.pgm --spread 1 --force --out twin.pgm", "is an input"},
                    {"pixels records zero.pgm --radius 3 --out zero.pgm", "is an input"},
                    {"convert c.yuv --raw 64x48 --from uyvy --to ycbcr --out c.yuv", "is an input"},
                    {"palettes export P --file p.xml --out p.xml", "is an input"},
                    {"palettes import p.csv --name C --out p.csv", "is an input"},
                    {"undistort in --map g.png --out g.png", "is an input"},
                    {"noise in --compare --out in/frame_0000.png", "is an input"},
                    {"clean f.pgm --out twin.pgm", "is an input"},
                    {"measure g.png --plot link.png", "is an input"},
                    {"measure in --overlay in", "is an input"},
                    {"pixels detect f.pgm --spread 1 --out m.pgm", "by force"},
                    {"render f.pgm --out pipe.png", "no file"},
                    {"demo --out pipe.png", "no folder"}});
    EXPECT_EQ(bytes("in/frame_0001.png"), before);
    said("pixels detect f.pgm --spread 1 --force --out m.pgm");
    EXPECT_NE(bytes("m.csv"), "kept");
}

TEST_F(Promises, PipesAreNoFiles)
{
    for (const char* name : {"p.pgm", "p.png", "p.avi", "p.pam", "p.ini", "q.xml", "q.csv", "p.raw"})
        pipe(name);
    expectRefusals({{"render p.pgm --out o", "p.pgm"},
                    {"noise p.png", "p.png"},
                    {"blobs p.avi --above 5 --out o", "p.avi"},
                    {"render f.pgm --palette-file q.xml --out o", "q.xml"},
                    {"render f.pgm --bad-pixels p.pgm --out o", "p.pgm"},
                    {"render f.pgm --settings p.ini --out o", "p.ini"},
                    {"undistort f.pgm --map p.pam --out o", "p.pam"},
                    {"palettes import q.csv --name Q --out o.xml", "q.csv"},
                    {"pixels detect --netd f.pgm 20 p.pgm 30 --out o.pgm", "p.pgm"},
                    {"pixels records p.pgm --radius 3 --out o.pgm", "p.pgm"},
                    {"pixels show p.pgm", "p.pgm"},
                    {"convert p.png --from png --to ycbcr --out o", "p.png"}});
    EXPECT_EQ(shell("render p.raw --raw 8x6 --out o", "(head -c 288 /dev/zero >p.raw) & ").code, 0);
    EXPECT_TRUE(std::filesystem::exists(path("o/frame_0002.png")));
}

TEST_F(Promises, AnInterruptEndsEveryCommandAndLeavesNothing)
{
    using Clock = std::chrono::steady_clock;
    pipe("never");
    const std::pair<int, const char*> runs[] = {
        {SIGINT, "render - --raw 64x48 --out film.avi <>never"}, // waits for what never comes
        {SIGTERM, "undistort --make -0.0001,0,4000,4000,2999.5,2999.5 --size 6000x6000 --out l.pam <&-"},
        {SIGINT, "demo --out demo"}};
    const auto before = folder.entries();
    for (const auto& [signal, arguments] : runs) {
        const pid_t process = start(arguments);
        for (const auto begin = Clock::now(); folder.entries() == before;) { // until it begins to write
            ASSERT_LT(Clock::now() - begin, std::chrono::seconds(20)) << arguments;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        const auto begin = Clock::now();
        kill(process, signal);
        const ProgramRun run = end(process);
        EXPECT_LT(Clock::now() - begin, std::chrono::seconds(1)) << arguments; // 200 ms on a free machine
        EXPECT_EQ(run.code, 130) << arguments;
        EXPECT_EQ(run.errors, "thermal: interrupted\n") << arguments;
        EXPECT_EQ(folder.entries(), before) << arguments;
    }
}

TEST_F(Promises, TextsFromOutsideCannotSpeakToTheTerminal)
{
    const std::string escape = "\x1b]0;title\x07\xC2\x9B";
    const ProgramRun run = call("render " + escape + ".pgm --out o");
    EXPECT_EQ(run.errors, "thermal: \\x1b]0;title\\x07\\xc2\\x9b.pgm: no such file or folder\n");
    EXPECT_LT(call("render f.pgm --out o --range 5:" + std::string(900000, '9')).errors.size(), 1100U);
    write("evil.pgm", "P5 9999999999 1" + escape);
    EXPECT_EQ(call("render evil.pgm --out o").errors.find('\x1b'), std::string::npos);
}

TEST_F(Promises, TenThousandPalettesAreListedAtOnce)
{
    const auto file = [](int count) {
        std::string text = "<group name=\"g\">";
        for (int i = 0; i < count; ++i)
            text += "<item name=\"P" + std::to_string(i) + "\" type=\"uint8[]\">#000000 #FFFFFF</item>";
        return text + "</group>";
    };
    write("many.xml", file(10001));
    expectRefusals({{"palettes --file many.xml", "at most 10000"}});
    write("many.xml", file(10000));
    const std::clock_t begin = std::clock();
    const std::string list = said("palettes --csv --file many.xml");
    // A tenth of a second, and one where the processor is emulated. A search for each of them takes 11.
    EXPECT_LT(std::clock() - begin, 4 * CLOCKS_PER_SEC);
    EXPECT_THAT(list, HasSubstr("\nP9999,2,#000000,#FFFFFF\n"));
    expectRefusals({{"palettes --file many.xml --out sheet.png", "at most 500 palettes, there are 100"}});
}
