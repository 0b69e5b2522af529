#include "camera/Settings.h"

#include "camera/settings/Keys.h"
#include "camera/settings/Reference.h"
#include "tests/camera/Support.h"

#include <set>

const auto settingsIn = [](const std::string& text) {
    std::istringstream file(text);
    return Settings::read(file);
};

TEST(Keys, HaveAnOptionOfTheirOwnASentenceAndADefaultThatIsTaken)
{
    std::set<std::string> paths, options;
    for (const Key& key : keys()) {
        EXPECT_TRUE(paths.insert(key.path).second) << key.path;
        EXPECT_TRUE(options.insert(key.option).second) << key.option;
        EXPECT_EQ(std::count(key.path.begin(), key.path.end(), '/'), 1) << key.path;
        EXPECT_FALSE(key.sentence.empty() || key.sentence.back() == '.') << key.path;
        EXPECT_NO_THROW(key.kind.read(key.fallback, key.path)) << key.path;
    }
}

TEST(Settings, AreAtTheirDefaultsUntilTheyAreSet)
{
    Settings settings;
    EXPECT_EQ(settings.text("noise/temporal"), "off");
    EXPECT_TRUE(settings.numbers("noise/temporal").empty() && !settings.flag("picture/legend"));
    settings.set("noise/temporal", "16:1843");
    settings.set("picture/legend", true);
    settings.set("picture/scale", 3);
    settings.set("blobs/above", 30.5);
    settings.set("colours/regions", "1:2:FF0000 ,3:4:00FF00");
    EXPECT_THAT(settings.numbers("noise/temporal"), ElementsAre(16, 1843));
    EXPECT_TRUE(settings.flag("picture/legend"));
    for (const bool on : {true, false}) {
        settings.set("noise/denoise", on);
        EXPECT_EQ(settings.text("noise/denoise"), on ? "normal" : "off");
    }
    EXPECT_THAT(settings.numbers("picture/scale"), ElementsAre(3));
    EXPECT_THAT(settings.numbers("blobs/above"), ElementsAre(30.5));
    EXPECT_THAT(settings.list("colours/regions"), ElementsAre("1:2:FF0000", "3:4:00FF00"));
    EXPECT_EQ(settings.tree().get("picture/scale")->value<std::int64_t>(), 3);
}

TEST(Settings, ComeFromXmlAndIni)
{
    const Settings xml = settingsIn("<?xml version=\"1.0\"?><group name=\"camera\"><group name=\"noise\">"
                                    "<item name=\"spatial\" type=\"uint8\">5</item></group>"
                                    "<item name=\"picture/legend\" type=\"bool\">true</item></group>");
    const Settings ini = settingsIn("\n; a comment\n[noise]\nspatial = 5\n[picture]\nlegend = true\n");
    EXPECT_EQ(xml.tree(), ini.tree());
    EXPECT_THAT(ini.numbers("noise/spatial"), ElementsAre(5));
    EXPECT_EQ(settingsIn("").tree().size(), 0U);
    std::istringstream failed;
    failed.setstate(std::ios::failbit);
    EXPECT_THROW(Settings::read(failed), Exception);
}

TEST(Settings, AreWrittenAsAFileThatReadsBack)
{
    Settings settings;
    settings.set("colours/palette", "007"); // a text, although it looks like a number
    settings.set("pixels/records", " \"a\" file ");
    settings.set("colours/range", "p0.5:p99");
    settings.set("blobs/below", -5.5);
    const Settings back = settingsIn(settings.ini());
    for (const Key& key : keys())
        EXPECT_EQ(back.text(key.path), settings.text(key.path)) << key.path;
}

TEST(Settings, RefuseWhatIsNotInTheTable)
{
    expectRefused<const char*, const char*>(
        {{"noise/temporel", "16:2048", "the nearest is noise/temporal"},
         {"blobs/spatial", "4", "the nearest is noise/spatial"},
         {"", "4", "no setting ''; the nearest is temperature/air"},
         {std::string(100, 'a').c_str(), "4", ("'" + std::string(64, 'a') + "'; the nearest is").c_str()},
         {"noise/temporal/gain", "4", "noise/temporal"},
         {"noise/temporal", "16", "'16' is not off or GAIN:FACTOR"},
         {"noise/temporal", "17:0", "noise/temporal GAIN: '17' is not a whole number from 0 to 16"},
         {"noise/temporal", "0:2049", "FACTOR: '2049' is not a whole number from 0 to 2048"},
         {"noise/pattern", "0:0:-1", "FRAME: '-1'"},
         {"noise/spatial", "32", "0 to 31"},
         {"picture/legend", "yes", "'yes' is not false or true"},
         {"colours/range", "5", "'5' is not auto, lock, MIN:MAX or pLOW:pHIGH"},
         {"colours/range", "p5:p5", "5 is not above 5"},
         {"colours/range", "p1:200", "'200' is not a percentile"},
         {"colours/regions", "1:2:FF000", "'FF000'"},
         {"colours/humidity", "20:101", "PERCENT: '101'"},
         {"colours/palette", "two\nlines", "one line"},
         {"picture/scale", "17", "1 to 16"}},
        [](auto... key) { Settings().set(key...); });
    for (const char* text : {"[noise]\ntemporal = 1,2\n", "noise = 3\n", "no settings", "<group/>"})
        EXPECT_THROW(settingsIn(text), std::exception) << text;

    Settings settings;
    settings.set("picture/scale", 2);
    EXPECT_THROW(settings.set("picture/scale", 0), Exception);
    EXPECT_THAT(settings.numbers("picture/scale"), ElementsAre(2)); // as it was
}

TEST(Settings, HaveAPageThatSaysThemAll)
{
    EXPECT_EQ(contentOf(SETTINGS_PAGE), settingsReference()) << "thermal settings --reference writes it";
}
