#include "recordings/PaletteFile.h"

#include "tests/Support.h"

#include "vision/imgproc/ColorPaletteManager.h"

namespace {

using namespace velmo::recordings;
using velmo::vision::ColorPaletteManager;

using PaletteFile = FilesTest;

TEST_F(PaletteFile, GivesItsFirstPalette)
{
    const std::string path =
        put("a.xml", "<?xml version=\"1.0\"?>\n<group name=\"palettes\">\n"
                     "<item name=\"Traffic\" type=\"uint8[]\">#00FF00 #FFFF00 #FF0000</item>\n"
                     "<item name=\"Zebra\" type=\"uint8[]\">#000000 #FFFFFF</item>\n</group>\n");
    EXPECT_EQ(loadPaletteFile(path), "Traffic");
    EXPECT_EQ(ColorPaletteManager::getPaletteColors("Traffic"),
              (Palette{0, 0xFF, 0, 0xFF, 0xFF, 0, 0xFF, 0, 0}));
    EXPECT_EQ(ColorPaletteManager::getPaletteColors("Zebra"), (Palette{0, 0, 0, 0xFF, 0xFF, 0xFF}));
}

TEST_F(PaletteFile, ThatHoldsNoneIsRefusedByName)
{
    for (const char* text : {"", "no XML", "<group name=\"empty\"></group>",
                             "<group name=\"g\"><item name=\"Half\" type=\"uint8[]\">1 2</item></group>",
                             "<group name=\"g\"><item name=\"Word\" type=\"string\">red</item></group>"})
        EXPECT_THAT(refusal([&] { loadPaletteFile(put("a.xml", text)); }).message, HasSubstr("a.xml"))
            << text;
    EXPECT_THROW(loadPaletteFile(path("missing.xml")), Exception);
    EXPECT_THROW(loadPaletteFile(path("")), Exception);
}

TEST_F(PaletteFile, WrittenPalettesLoadBackToTheSameBytes)
{
    const std::string path = this->path("out.xml");
    Palette palette;
    for (int n = 0; n < 3 * 256; ++n)
        palette.push_back(static_cast<unsigned char>(n * 7));
    const std::string name = "Grün & \"<heiß>\"";
    writePaletteFile({path, path}, name, palette);
    EXPECT_EQ(loadPaletteFile(path), name);
    EXPECT_EQ(ColorPaletteManager::getPaletteColors(name), palette);

    for (const char* bad : {"", "a/b", "two\nlines"})
        EXPECT_THROW(writePaletteFile({this->path("bad.xml"), "bad.xml"}, bad, palette), Exception) << bad;
}

} // namespace
