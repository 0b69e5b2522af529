#include "vision/imgproc/ColorPaletteManager.h"

#include "core/Exception.h"
#include "vision/imgproc/ColorPaletteTables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>

using namespace velmo::vision;
using testing::ElementsAre;
using testing::IsEmpty;
using velmo::exp::Variant;

namespace {

using Manager = ColorPaletteManager;
using Palette = std::vector<unsigned char>;

/// Static start-up code of another source: colours have to be there already.
const Palette fromStartUpCode = ms_vecHightemp;
const std::string activeAtStartUp = Manager::m_strActivePalette;

/// The state that the manager has when the library is loaded.
class ColorPaletteManagerTest : public testing::Test
{
protected:
    ColorPaletteManagerTest()
    {
        Manager::m_stoAvailablePalettes.clear();
        Manager::m_stoSupportedPalettes.clear();
        Manager::m_strActivePalette = Id::Palette::Ironbow;
    }
};

template <class Operation>
void expectError(const std::string& message, const std::string& function, Operation operation)
{
    try {
        operation();
        FAIL() << "no error \"" << message << '"';
    } catch (const velmo::exp::Exception& error) {
        EXPECT_EQ(error.what(), message);
        EXPECT_NE(error.location().find(": " + function + "(..)\n"), std::string::npos) << error.location();
    }
}

unsigned pointOf(const Palette& palette, std::size_t point)
{
    return palette.at(3 * point) * 0x10000u + palette.at(3 * point + 1) * 0x100u + palette.at(3 * point + 2);
}

/// A file in a folder of its own; removed with it.
class TemporaryFile
{
public:
    explicit TemporaryFile(const std::string& content)
        : m_oPath(std::filesystem::temp_directory_path() /
                  ("palettes-" + std::to_string(getpid()) + "-" +
                   std::to_string(reinterpret_cast<std::uintptr_t>(this)) + ".xml"))
    {
        std::ofstream(m_oPath, std::ios::binary) << content;
    }
    ~TemporaryFile() { std::filesystem::remove(m_oPath); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    std::string path() const { return m_oPath.string(); }

private:
    std::filesystem::path m_oPath;
};

/// What loading a file of this content prints.
std::string printedOn(const std::string& content)
{
    const TemporaryFile file(content);
    testing::internal::CaptureStdout();
    Manager::loadFile(file.path());
    return testing::internal::GetCapturedStdout();
}

} // namespace

TEST_F(ColorPaletteManagerTest, IsEmptyUntilFirstUsed)
{
    EXPECT_EQ(fromStartUpCode.size(), 369u);
    EXPECT_EQ(activeAtStartUp, "Ironbow");
    EXPECT_THAT(Manager::getSupportedPalettesNames(), IsEmpty());
    EXPECT_THAT(Manager::getAvailableColorPalettes(), IsEmpty());
    EXPECT_THAT(Manager::getSupportedPalettesColors(), IsEmpty());
    expectError("Color palette Ironbow not supported!", "setActivePalette",
                [] { Manager::setActivePalette("Ironbow"); });

    Manager::getPaletteColors(Id::Palette::Sepia);
    EXPECT_THAT(Manager::getAvailableColorPalettes(),
                ElementsAre("Bluered", "Dewpoint", "Grayscale", "GrayscaleInv", "Hightemp", "Hotcold",
                            "Humidity", "Ironbow", "Rainbow", "Rainbowhc", "Sepia", "Velmo"));
    EXPECT_THAT(Manager::getSupportedPalettesNames(), ElementsAre("Ironbow"));
}

TEST_F(ColorPaletteManagerTest, HasTheBuiltInColors)
{
    struct Known
    {
        const char* name;
        std::size_t points;
        unsigned first, middle, last; ///< the middle one is at points / 2
    };
    const Known palettes[] = {
        {"Grayscale", 2, 0x000000, 0xffffff, 0xffffff}, {"GrayscaleInv", 2, 0xffffff, 0x000000, 0x000000},
        {"Rainbow", 10, 0x8400b4, 0xfdff00, 0xa00000},  {"Rainbowhc", 10, 0x000040, 0xfdff00, 0xffffff},
        {"Hotcold", 9, 0x0000ff, 0x00ff00, 0xff0000},   {"Bluered", 53, 0x000052, 0xfff1c9, 0xde1c00},
        {"Sepia", 16, 0x370600, 0xb4943b, 0xd1c1aa},    {"Velmo", 9, 0x5d594f, 0xfee48f, 0xe76f00},
        {"Dewpoint", 30, 0xff0000, 0xffffff, 0x4fb52d}, {"Humidity", 20, 0x003200, 0x00dc00, 0xff0000},
        {"Ironbow", 120, 0x000000, 0xe74814, 0xfffff9}, {"Hightemp", 123, 0x0f0f0f, 0xdd314e, 0xfff9cb}};
    for (const Known& known : palettes) {
        const Palette colors = Manager::getPaletteColors(known.name);
        ASSERT_EQ(colors.size(), 3 * known.points) << known.name;
        EXPECT_EQ(pointOf(colors, 0), known.first) << known.name;
        EXPECT_EQ(pointOf(colors, known.points / 2), known.middle) << known.name;
        EXPECT_EQ(pointOf(colors, known.points - 1), known.last) << known.name;
    }
    const Palette hightemp = Manager::getPaletteColors("Hightemp");
    EXPECT_EQ(pointOf(hightemp, 14), 0xefefefu);
    EXPECT_EQ(pointOf(hightemp, 15), 0x0b0073u);
    EXPECT_EQ(pointOf(Manager::getPaletteColors("Dewpoint"), 7), 0xff0000u);
    EXPECT_EQ(pointOf(Manager::getPaletteColors("Dewpoint"), 8), 0xff3f00u);
}

TEST_F(ColorPaletteManagerTest, AddsPalettesOfWholePoints)
{
    for (const std::size_t size : {0u, 4u})
        expectError("Invalid palette size " + std::to_string(size), "addPalette",
                    [size] { Manager::addPalette("mine", Palette(size)); });
    for (const char* name : {"", "a/b", "/"})
        EXPECT_THROW(Manager::addPalette(name, {1, 2, 3}), velmo::exp::Exception) << name;
    EXPECT_THAT(Manager::getAvailableColorPalettes(), IsEmpty());
    Manager::addPalette("mine", {1, 2, 3});
    EXPECT_THAT(Manager::getAvailableColorPalettes(), ElementsAre("mine"));
    EXPECT_THAT(Manager::getSupportedPalettesNames(), ElementsAre("mine"));
    Manager::addPalette("mine", {4, 5, 6});
    EXPECT_THAT(Manager::getPaletteColors("mine"), ElementsAre(4, 5, 6));
    EXPECT_THAT(Manager::getSupportedPalettesColors(), ElementsAre(Palette{4, 5, 6}));
    // A registry that is not empty is not filled up with the built-in ones.
    expectError("Color palette Ironbow not supported!", "getPaletteColors",
                [] { Manager::getPaletteColors("Ironbow"); });
    EXPECT_EQ(Manager::m_stoAvailablePalettes.get("mine"), Manager::m_stoSupportedPalettes.get("mine"));
}

TEST_F(ColorPaletteManagerTest, OffersAvailablePalettesToTheUser)
{
    Manager::loadPalettes({});
    expectError("Color palette x not available!", "setSupportedColorPalettes", [] {
        Manager::setSupportedColorPalettes({"Sepia", "x", "Velmo"});
    });
    EXPECT_THAT(Manager::getSupportedPalettesNames(), ElementsAre("Ironbow", "Sepia"));
    Manager::setSupportedColorPalettes({});
    Manager::setSupportedColorPalettes({"Hotcold"});
    EXPECT_THAT(Manager::getSupportedPalettesColors(),
                ElementsAre(ms_vecHotcold, ms_vecIronbow, ms_vecSepia));
    Manager::setActivePalette("Sepia");
    EXPECT_EQ(Manager::m_strActivePalette, "Sepia");
    for (const char* name : {"sepia", "Velmo", "", "Sepia/x"})
        expectError(std::string("Color palette ") + name + " not supported!", "setActivePalette",
                    [name] { Manager::setActivePalette(name); });
    EXPECT_EQ(Manager::m_strActivePalette, "Sepia");
    for (const char* name : {"", "Ironbow/x", "/"})
        expectError(std::string("Color palette ") + name + " not supported!", "getPaletteColors",
                    [name] { Manager::getPaletteColors(name); });
}

TEST_F(ColorPaletteManagerTest, RegistersBuiltInColorsAnew)
{
    Manager::addPalette("Ironbow", {1, 2, 3});
    Manager::addPalette("mine", {1, 2, 3});
    Manager::loadPalettes({});
    EXPECT_EQ(Manager::getPaletteColors("Ironbow"), ms_vecIronbow);
    EXPECT_THAT(Manager::getSupportedPalettesNames(), ElementsAre("Ironbow", "mine"));
}

TEST_F(ColorPaletteManagerTest, RefusesColorsOfAnotherType)
{
    Manager::m_stoAvailablePalettes.set("text", Variant::create("0 0 0"));
    EXPECT_THROW(Manager::getPaletteColors("text"), velmo::exp::Exception);
    expectError(std::string("Variant-type (") + typeid(std::string).name() + ")!= Template-type (" +
                    typeid(Palette).name() + ")",
                "value", [] { Manager::getPaletteColors("text"); });
}

TEST_F(ColorPaletteManagerTest, ListsColorsWhileItRegistersThem)
{
    // Supported but nothing available: the first look-up registers the built-in palettes during the walk.
    Manager::m_stoSupportedPalettes.set("Sepia", Variant::create(Palette{1, 2, 3}));
    EXPECT_THAT(Manager::getSupportedPalettesColors(), ElementsAre(ms_vecSepia));
    Manager::m_stoSupportedPalettes.set("lost", Variant::create(Palette{1, 2, 3}));
    expectError("Color palette lost not supported!", "getPaletteColors",
                [] { Manager::getSupportedPalettesColors(); });
}

TEST_F(ColorPaletteManagerTest, ServesManyThreads)
{
    const Palette dark(30, 0), light(300, 255);
    std::atomic<int> mixed{0};
    const auto work = [&](int seed) {
        for (int n = 0; n < 200; ++n) {
            const std::string name = "p" + std::to_string((n * 7 + seed) % 20);
            Manager::addPalette(name, (n + seed) % 2 != 0 ? dark : light);
            const Palette colors = Manager::getPaletteColors(name);
            mixed += colors != dark && colors != light ? 1 : 0;
            Manager::setSupportedColorPalettes({name});
            Manager::setActivePalette(name);
            mixed += Manager::getSupportedPalettesColors().size() < 1 ? 1 : 0;
            if (n % 50 == 0)
                Manager::loadPalettes({});
        }
    };
    std::vector<std::thread> threads;
    for (int seed = 0; seed < 4; ++seed)
        threads.emplace_back(work, seed);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(mixed, 0);
    EXPECT_EQ(Manager::getSupportedPalettesNames().size(), 21u);
}

TEST_F(ColorPaletteManagerTest, LoadsFilesOfSeveralPalettes)
{
    const TemporaryFile file(R"(<?xml version="1.0"?>
<!-- two palettes -->
<group name="palettes">
    <item name="B" type="uint8[]">#0A141E #FF0000</item>
    <!-- replaces a built-in one -->
    <item name="Ironbow" type="uint8[]">1 2 3</item>
    <item name="A" type="uint8[]">0, 0, 0, 0xff, 0xff, 0xff</item>
</group>)");
    Manager::loadPalettes({"/no/such/file", file.path()});
    EXPECT_THAT(Manager::getSupportedPalettesNames(), ElementsAre("A", "B", "Ironbow"));
    EXPECT_THAT(Manager::getPaletteColors("A"), ElementsAre(0, 0, 0, 255, 255, 255));
    EXPECT_THAT(Manager::getPaletteColors("B"), ElementsAre(10, 20, 30, 255, 0, 0));
    EXPECT_THAT(Manager::getPaletteColors("Ironbow"), ElementsAre(1, 2, 3));
    EXPECT_EQ(Manager::m_stoAvailablePalettes.get("A"), Manager::m_stoSupportedPalettes.get("A"));
    Manager::loadPalettes({});
    EXPECT_EQ(Manager::getPaletteColors("Ironbow"), ms_vecIronbow);
}

TEST_F(ColorPaletteManagerTest, LoadsBinaryFiles)
{
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
    EXPECT_THROW(Manager::getPaletteColors("number"), velmo::exp::Exception);
    EXPECT_THROW(Manager::getPaletteColors("sub"), velmo::exp::Exception);
}

TEST_F(ColorPaletteManagerTest, PrintsWhatIsWrongWithAFileAndGoesOn)
{
    EXPECT_EQ(printedOn("<item name=\"a\" type=\"uint8[]\">1 2 3</item>"), "Root group element not found!\n");
    EXPECT_EQ(
        printedOn(R"(<group name="g"><item name="a" type="uint8[]">1 2 3</item><value/></group>)").back(),
        '\n');
    EXPECT_NE(printedOn(R"(<group name="g"><item name="a" type="uint8[]">1 2 300</item></group>)"), "");
    EXPECT_NE(printedOn(R"(<group name="g"><item type="uint8[]">1 2 3</item></group>)"), ""); // no name
    EXPECT_NE(printedOn(""), "");
    EXPECT_THAT(Manager::getAvailableColorPalettes(), IsEmpty());

    testing::internal::CaptureStdout();
    Manager::loadFile("/no/such/file");
    Manager::loadFile("");
    const TemporaryFile pipe("");
    std::filesystem::remove(pipe.path());
    ASSERT_EQ(mkfifo(pipe.path().c_str(), 0600), 0);
    Manager::loadFile(pipe.path()); // does not wait for a writer
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    testing::internal::CaptureStdout();
    Manager::loadFile(std::filesystem::temp_directory_path().string()); // a folder can be opened, not read
    testing::internal::GetCapturedStdout();
    EXPECT_THAT(Manager::getAvailableColorPalettes(), IsEmpty());
}
