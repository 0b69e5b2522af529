#include "recordings/Outputs.h"

#include "tests/TemporaryFolder.h"

#include "core/Exception.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::HasSubstr;
using velmo::exp::Exception;
using velmo::recordings::OutputFile;
using velmo::recordings::Outputs;

class OutputsOfACommand : public testing::Test
{
protected:
    std::string path(const std::string& name) const { return folder.path() / name; }

    void put(const std::string& name, const std::string& text) const { std::ofstream(path(name)) << text; }

    std::string textOf(const std::string& name) const
    {
        std::ostringstream text;
        text << std::ifstream(path(name)).rdbuf();
        return text.str();
    }

    void write(Outputs& outputs, const std::string& name, const std::string& text) const
    {
        OutputFile file = outputs.file(path(name));
        file.write(text);
        file.finish();
    }

    template <class Use>
    static std::string refusal(Use use)
    {
        try {
            use();
        } catch (const Exception& error) {
            return error.what();
        }
        return "taken";
    }

    TemporaryFolder folder;
};

TEST_F(OutputsOfACommand, AreThereTogetherOrNotAtAll)
{
    put("old", "before");
    fs::create_directory(path("there"));
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
        EXPECT_EQ(textOf("old"), "before");
        EXPECT_FALSE(fs::exists(path("new")));
    }
    EXPECT_THAT(folder.entries(), ElementsAre("old", "there")); // taken back
    Outputs outputs;
    writeAll(outputs);
    outputs.commit();
    EXPECT_THAT(folder.entries(), ElementsAre("new", "old", "there"));
    EXPECT_EQ(textOf("old"), "after");
    EXPECT_EQ(textOf("new/a") + textOf("there/b") + textOf("there/kept"), "abkept");
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
    EXPECT_THAT(refusal([&] { outputs.commit(); }), HasSubstr("/c: cannot be written: "));
    EXPECT_EQ(textOf("a"), "before");
    EXPECT_FALSE(fs::exists(path("b")));
}

TEST_F(OutputsOfACommand, NeverReplaceAnInput)
{
    put("input", "read");
    fs::create_directory(path("in"));
    put("in/frame", "read");
    fs::create_symlink("input", path("link"));
    fs::create_hard_link(path("input"), path("twin"));
    Outputs outputs(true);
    outputs.protect({path("input"), path("in/frame"), path("missing")});
    for (const char* name : {"input", "link", "twin", "in/../input", "in/frame"})
        EXPECT_THAT(refusal([&] { outputs.file(path(name)); }), HasSubstr("is an input")) << name;
    EXPECT_THROW(outputs.companion(path("input")), Exception);
    outputs.folder(path("in"));
    EXPECT_THROW(outputs.file(path("in/frame")), Exception);

    Outputs late; // learns of the input after it has opened the output
    write(late, "input", "written");
    late.protect({path("input")});
    EXPECT_THROW(late.commit(), Exception);
    EXPECT_EQ(textOf("input"), "read");
}

TEST_F(OutputsOfACommand, GoToPlacesThatTakeThem)
{
    put("file", "");
    Outputs outputs;
    EXPECT_THROW(outputs.file(folder.path()), Exception);
    EXPECT_THROW(outputs.file(path("none/file")), Exception);
    EXPECT_THROW(outputs.file(path("file/file")), Exception);
    EXPECT_THROW(outputs.file("/dev/null"), Exception);
    EXPECT_THROW(outputs.file(""), Exception);
    EXPECT_THROW(outputs.folder(path("file")), Exception);
    EXPECT_THROW(outputs.folder(path("none/folder")), Exception);
    EXPECT_THROW(outputs.folder(""), Exception);
    write(outputs, "twice", "");
    EXPECT_THAT(refusal([&] { outputs.file(path("./twice")); }), HasSubstr("twice"));
}

TEST_F(OutputsOfACommand, ThatNobodyNamedReplaceWhatIsThereByForceOnly)
{
    put("map.csv", "before");
    EXPECT_THROW(Outputs().companion(path("map.csv")), Exception);
    EXPECT_NO_THROW(Outputs().companion(path("map.png")));
    EXPECT_NO_THROW(Outputs(true).companion(path("map.csv")));
    EXPECT_THAT(folder.entries(), ElementsAre("map.csv"));
}

TEST_F(OutputsOfACommand, OfAKilledRunAreRemovedThoseOfALiveOneStay)
{
    fs::create_directory(path(".velmo-partial-killed"));
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
    EXPECT_EQ(textOf("film.avi"), "next");
    live.commit();
    EXPECT_EQ(textOf("film.avi"), "live");
    EXPECT_THAT(folder.entries(), ElementsAre(".other", "film.avi"));
}

} // namespace
