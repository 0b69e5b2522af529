#include "recordings/Outputs.h"

#include "tests/Support.h"

namespace {

namespace fs = std::filesystem;

using namespace velmo::recordings;

struct OutputsOfACommand : FilesTest
{
    void write(Outputs& outputs, const std::string& name, const std::string& text) const
    {
        OutputFile file = outputs.file(path(name));
        file.write(text);
        file.finish();
    }
};

TEST_F(OutputsOfACommand, AreThereTogetherOrNotAtAll)
{
    put("old", "before");
    put("there/kept", "kept");
    const auto writeAll = [&](Outputs& outputs) {
        write(outputs, "old", "after");
        outputs.folder(path("new/"));
        write(outputs, "new/a", "a");
        outputs.folder(path("there"));
        write(outputs, "there/b", "b");
    };
    {
        Outputs outputs;
        writeAll(outputs);
        EXPECT_TRUE(bytes("old") == "before" && !fs::exists(path("new")));
    }
    EXPECT_THAT(folder.entries(), ElementsAre("old", "there")); // taken back
    Outputs outputs;
    writeAll(outputs);
    outputs.commit();
    EXPECT_THAT(folder.entries(), ElementsAre("new", "old", "there"));
    EXPECT_EQ(bytes("old") + bytes("new/a") + bytes("there/b") + bytes("there/kept"), "afterabkept");
    EXPECT_EQ(std::distance(fs::directory_iterator(path("there")), {}), 2);
}

TEST_F(OutputsOfACommand, LeaveEverythingAsItWasIfOneCannotGetItsName)
{
    put("a", "before");
    Outputs outputs;
    write(outputs, "a", "after");
    write(outputs, "b", "new");
    write(outputs, "c", "new");
    fs::create_directories(path("c/meanwhile")); // by somebody else
    EXPECT_THAT(refusal([&] { outputs.commit(); }).message, HasSubstr("/c: cannot be written: "));
    EXPECT_TRUE(bytes("a") == "before" && !fs::exists(path("b")));

    Outputs late;
    write(late, "a", "after");
    late.folder(path("d"));
    write(late, "d/x", "new");
    put("d", "meanwhile"); // seen only when the folder is to get its name
    EXPECT_THAT(refusal([&] { late.commit(); }).message, HasSubstr("/d: cannot be written: "));
    EXPECT_EQ(bytes("a") + bytes("d"), "beforemeanwhile");
}

TEST_F(OutputsOfACommand, NeverReplaceAnInput)
{
    put("in/frame", "read");
    Outputs outputs(true);
    outputs.protect({path("in/frame"), path("missing")});
    EXPECT_THROW(outputs.companion(path("in/frame")), Exception);
    outputs.folder(path("in"));
    EXPECT_THROW(outputs.file(path("in/frame")), Exception);

    Outputs late; // learns of the input after it has opened the output
    write(late, "in/frame", "written");
    late.protect({path("in/frame")});
    EXPECT_THROW(late.commit(), Exception);
    EXPECT_EQ(bytes("in/frame"), "read");
}

TEST_F(OutputsOfACommand, GoToPlacesThatTakeThem)
{
    put("file", "");
    Outputs outputs;
    write(outputs, "twice", "");
    for (const std::string& target :
         {path(""), path("none/a"), path("file/a"), path("./twice"), std::string("/dev/null"), std::string()})
        EXPECT_THROW(outputs.file(target), Exception) << target;
    for (const std::string& target : {path("file"), path("none/a"), std::string()})
        EXPECT_THROW(outputs.folder(target), Exception) << target;
}

TEST_F(OutputsOfACommand, ThatNobodyNamedReplaceWhatIsThereByForceOnly)
{
    put("map.csv", "before");
    EXPECT_THROW(Outputs().companion(path("map.csv")), Exception);
    Outputs().companion(path("map.png"));
    Outputs(true).companion(path("map.csv"));
    EXPECT_THAT(folder.entries(), ElementsAre("map.csv"));
}

TEST_F(OutputsOfACommand, OfAKilledRunAreRemovedThoseOfALiveOneStay)
{
    put(".velmo-partial-killed/film.avi", "half");
    fs::create_directory(path(".other"));
    Outputs live;
    write(live, "film.avi", "live");
    {
        Outputs next;
        write(next, "film.avi", "next");
        EXPECT_EQ(folder.entries().size(), 3U); // .other and two places
        next.commit();
    }
    EXPECT_EQ(bytes("film.avi"), "next");
    live.commit();
    EXPECT_EQ(bytes("film.avi"), "live");
    EXPECT_THAT(folder.entries(), ElementsAre(".other", "film.avi"));
}

} // namespace
