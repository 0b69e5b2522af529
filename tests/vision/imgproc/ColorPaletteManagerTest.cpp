#include "vision/imgproc/ColorPaletteManager.h"

#include "tests/Support.h"
#include "vision/imgproc/ColorPaletteTables.h"

#include <sys/stat.h>

#include <future>

using namespace velmo::vision;
using testing::IsEmpty;
using velmo::exp::Variant;

namespace {

using Manager = ColorPaletteManager;
using Palette = std::vector<unsigned char>;

/// Static start-up code of another source: colours have to be there already.
const Palette fromStartUpCode = ms_vecHightemp;
const std::string activeAtStartUp = Manager::m_strActivePalette;

/// The state that the manager has when the library is loaded.
struct ColorPaletteManagerTest : FilesTest
{
    ColorPaletteManagerTest()
    {
        Manager::m_stoAvailablePalettes.clear();
        Manager::m_stoSupportedPalettes.clear();
        Manager::m_strActivePalette = Id::Palette::Ironbow;
    }

    /// What loading a file of this content prints.
    std::string printedOn(const std::string& content) const
    {
        testing::internal::CaptureStdout();
        Manager::loadFile(put("palettes.xml", content));
        return testing::internal::GetCapturedStdout();
    }
};

const auto notThere = [](const std::string& name, const char* function) {
    return Refusal{"Color palette " + name + " not supported!", function};
};

} // namespace

TEST_F(ColorPaletteManagerTest, IsEmptyUntilFirstUsed)
{
    EXPECT_EQ(fromStartUpCode.size(), 369u);
    EXPECT_EQ(activeAtStartUp, "Ironbow");
    EXPECT_TRUE(Manager::getSupportedPalettesNames().empty() &&
                Manager::getSupportedPalettesColors().empty() &&
                Manager::getAvailableColorPalettes().empty());
    Manager::getPaletteColors(Id::Palette::Sepia);
    EXPECT_THAT(Manager::getAvailableColorPalettes(),
                ElementsAre("Bluered", "Dewpoint", "Grayscale", "GrayscaleInv", "Hightemp", "Hotcold",
                            "Humidity", "Ironbow", "Rainbow", "Rainbowhc", "Sepia", "Velmo"));
    EXPECT_THAT(Manager::getSupportedPalettesNames(), ElementsAre("Ironbow"));
}

TEST_F(ColorPaletteManagerTest, HasTheBuiltInColors)
{
    const std::tuple<const char*, std::size_t, std::uint32_t> palettes[] = {
        {"Grayscale", 2, 0x293250eeu},  {"GrayscaleInv", 2, 0x9335261cu}, {"Rainbow", 10, 0x830d771bu},
        {"Rainbowhc", 10, 0x60f78055u}, {"Hotcold", 9, 0xc948d910u},      {"Bluered", 53, 0x903677e5u},
        {"Sepia", 16, 0x681aea56u},     {"Velmo", 9, 0xd2e3800cu},        {"Dewpoint", 30, 0xac1afc6bu},
        {"Humidity", 20, 0x0f8fc588u},  {"Ironbow", 120, 0xaaad3bafu},    {"Hightemp", 123, 0x18b411f1u}};
    for (const auto& [name, points, hash] : palettes) {
        const Palette colors = Manager::getPaletteColors(name);
        EXPECT_EQ(colors.size(), 3 * points) << name;
        const auto fnv1a = [](std::uint32_t so, unsigned char byte) { return (so ^ byte) * 16777619u; };
        EXPECT_EQ(std::accumulate(colors.begin(), colors.end(), 2166136261u, fnv1a), hash) << name;
    }
}

TEST_F(ColorPaletteManagerTest, AddsPalettesOfWholePoints)
{
    for (const std::size_t size : {0u, 4u})
        EXPECT_EQ(refusal([&] { Manager::addPalette("mine", Palette(size)); }),
                  (Refusal{"Invalid palette size " + std::to_string(size), "addPalette"}));
    for (const char* name : {"", "a/b", "/"})
        EXPECT_THROW(Manager::addPalette(name, {1, 2, 3}), Exception) << name;
    EXPECT_THAT(Manager::getAvailableColorPalettes(), IsEmpty());
    Manager::addPalette("mine", {1, 2, 3});
    EXPECT_THAT(Manager::getAvailableColorPalettes(), ElementsAre("mine"));
    EXPECT_THAT(Manager::getSupportedPalettesNames(), ElementsAre("mine"));
    Manager::addPalette("mine", {4, 5, 6});
    EXPECT_THAT(Manager::getPaletteColors("mine"), ElementsAre(4, 5, 6));
    EXPECT_THAT(Manager::getSupportedPalettesColors(), ElementsAre(Palette{4, 5, 6}));
    EXPECT_EQ(Manager::m_stoAvailablePalettes.get("mine"), Manager::m_stoSupportedPalettes.get("mine"));
    // A registry that is not empty is not filled up with the built-in ones, but by loadPalettes.
    EXPECT_EQ(refusal([] { Manager::getPaletteColors("Ironbow"); }), notThere("Ironbow", "getPaletteColors"));
    Manager::addPalette("Ironbow", {1, 2, 3});
    Manager::loadPalettes({});
    EXPECT_EQ(Manager::getPaletteColors("Ironbow"), ms_vecIronbow);
    EXPECT_THAT(Manager::getSupportedPalettesNames(), ElementsAre("Ironbow", "mine"));
}

TEST_F(ColorPaletteManagerTest, OffersAvailablePalettesToTheUser)
{
    Manager::loadPalettes({});
    const std::vector<std::string> names{"Sepia", "x", "Velmo"};
    EXPECT_EQ(refusal([&] { Manager::setSupportedColorPalettes(names); }),
              (Refusal{"Color palette x not available!", "setSupportedColorPalettes"}));
    EXPECT_THAT(Manager::getSupportedPalettesNames(), ElementsAre("Ironbow", "Sepia"));
    Manager::setSupportedColorPalettes({});
    Manager::setSupportedColorPalettes({"Hotcold"});
    EXPECT_THAT(Manager::getSupportedPalettesColors(),
                ElementsAre(ms_vecHotcold, ms_vecIronbow, ms_vecSepia));
    Manager::setActivePalette("Sepia");
    for (const char* name : {"sepia", "Velmo", "", "Sepia/x"})
        EXPECT_EQ(refusal([&] { Manager::setActivePalette(name); }), notThere(name, "setActivePalette"));
    EXPECT_EQ(Manager::m_strActivePalette, "Sepia");
    for (const char* name : {"", "Ironbow/x", "/"})
        EXPECT_EQ(refusal([&] { Manager::getPaletteColors(name); }), notThere(name, "getPaletteColors"));
}

TEST_F(ColorPaletteManagerTest, ListsColorsWhileItRegistersThem)
{
    // Supported but nothing available: the first look-up registers the built-in palettes during the walk.
    Manager::m_stoSupportedPalettes.set("Sepia", Variant::create(Palette{1, 2, 3}));
    EXPECT_THAT(Manager::getSupportedPalettesColors(), ElementsAre(ms_vecSepia));
    Manager::m_stoSupportedPalettes.set("lost", Variant::create(Palette{1, 2, 3}));
    EXPECT_EQ(refusal([] { Manager::getSupportedPalettesColors(); }), notThere("lost", "getPaletteColors"));
}

TEST_F(ColorPaletteManagerTest, ServesManyThreads)
{
    const Palette dark(30, 0), light(300, 255);
    Manager::loadPalettes({});
    Manager::addPalette("mine", dark);
    // An operation a thread: one that does not lock is in step with none of the others.
    const std::function<bool(int)> operations[] = {
        [&](int n) { return Manager::addPalette("mine", n % 2 != 0 ? dark : light), true; },
        [&](int) {
            const Palette colors = Manager::getPaletteColors("mine");
            return colors == dark || colors == light;
        },
        [](int) { return Manager::setSupportedColorPalettes({"mine"}), true; },
        [](int n) { return Manager::setActivePalette(n % 2 != 0 ? "mine" : "Ironbow"), true; },
        [](int) { return !Manager::getSupportedPalettesColors().empty(); },
        [](int) { return !Manager::getSupportedPalettesNames().empty(); },
        [](int) { return !Manager::getAvailableColorPalettes().empty(); },
        [](int n) { return n % 50 == 0 ? Manager::loadPalettes({}), true : true; }};
    std::vector<std::future<bool>> threads;
    for (const auto& operation : operations)
        threads.push_back(std::async(std::launch::async, [&] {
            bool good = true;
            for (int n = 0; n < 200; ++n)
                good &= operation(n);
            return good;
        }));
    for (std::future<bool>& thread : threads)
        EXPECT_TRUE(thread.get());
    EXPECT_THAT(Manager::getSupportedPalettesNames(), ElementsAre("Ironbow", "mine"));
}

TEST_F(ColorPaletteManagerTest, LoadsFilesOfSeveralPalettes)
{
    const std::string path = put("palettes.xml", R"(<?xml version="1.0"?><group name="palettes">
    <item name="B" type="uint8[]">#0A141E #FF0000</item> <!-- the next one replaces a built-in one -->
    <item name="Ironbow" type="uint8[]">1 2 3</item>
    <item name="A" type="uint8[]">0, 0, 0, 0xff, 0xff, 0xff</item></group>)");
    Manager::loadPalettes({"/no/such/file", path});
    EXPECT_THAT(Manager::getSupportedPalettesNames(), ElementsAre("A", "B", "Ironbow"));
    EXPECT_THAT(Manager::getPaletteColors("A"), ElementsAre(0, 0, 0, 255, 255, 255));
    EXPECT_THAT(Manager::getPaletteColors("B"), ElementsAre(10, 20, 30, 255, 0, 0));
    EXPECT_THAT(Manager::getPaletteColors("Ironbow"), ElementsAre(1, 2, 3));
    EXPECT_EQ(Manager::m_stoAvailablePalettes.get("A"), Manager::m_stoSupportedPalettes.get("A"));

    const std::string xml = R"(<group name="g"><item name="bin" type="uint8[]" size="10"/></group>)";
    const std::string head = R"(<?storage version="1" values="binary" endian="big" size=")" +
                             std::to_string(xml.size()) + "\"?>\n";
    const std::string bytes{'\0', '\0', '\0', '\6', 1, 2, 3, 4, 5, 6};
    EXPECT_EQ(printedOn(head + xml + bytes), "");
    EXPECT_THAT(Manager::getPaletteColors("bin"), ElementsAre(1, 2, 3, 4, 5, 6));
    EXPECT_NE(printedOn(head + xml + bytes.substr(0, 9)), "");
}

TEST_F(ColorPaletteManagerTest, TakesValuesAsTheyAreAndRefusesThemWhenAskedForColors)
{
    EXPECT_EQ(printedOn(R"(<group name="g"><item name="number" type="int32">7</item>
        <item name="odd" type="uint8[]">1 2</item><item name="none" type="uint8[]"/>
        <group name="sub"><item name="p" type="uint8[]">1 2 3</item></group></group>)"),
              "");
    EXPECT_THAT(Manager::getSupportedPalettesNames(), ElementsAre("none", "number", "odd", "sub"));
    EXPECT_THAT(Manager::getPaletteColors("odd"), ElementsAre(1, 2));
    EXPECT_THAT(Manager::getPaletteColors("none"), IsEmpty());
    for (const char* name : {"number", "sub"})
        EXPECT_THROW(Manager::getPaletteColors(name), Exception) << name;
}

TEST_F(ColorPaletteManagerTest, PrintsWhatIsWrongWithAFileAndGoesOn)
{
    EXPECT_EQ(printedOn("<item name=\"a\" type=\"uint8[]\">1 2 3</item>"), "Root group element not found!\n");
    for (const char* content :
         {R"(<group name="g"><item name="a" type="uint8[]">1 2 3</item><value/></group>)",
          R"(<group name="g"><item name="a" type="uint8[]">1 2 300</item></group>)",
          R"(<group name="g"><item type="uint8[]">1 2 3</item></group>)", ""})
        EXPECT_THAT(printedOn(content), testing::EndsWith("\n")) << content;
    EXPECT_THAT(Manager::getAvailableColorPalettes(), IsEmpty());

    const std::string pipe = path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0); // where nobody writes
    const std::string large = put("large", "");
    std::filesystem::resize_file(large, (81 << 20) + 1);
    testing::internal::CaptureStdout();
    for (const std::string& name : {std::string("/no/such/file"), std::string(), pipe, // nothing to say
                                    path(""), large}) // the folder can be opened, not read
        Manager::loadFile(name);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Inputstream not readable!\nStorage text exceeds the limit of 84934656 bytes\n");
    EXPECT_THAT(Manager::getAvailableColorPalettes(), IsEmpty());
}
