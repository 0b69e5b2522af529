#include "recordings/PaletteFile.h"

#include "tests/Support.h"
#include "vision/imgproc/ColorPaletteManager.h"

using namespace velmo::recordings;
using velmo::vision::ColorPaletteManager;

using PaletteFile = FilesTest;

TEST_F(PaletteFile, ThatHoldsNoneIsRefusedByName)
{
    for (const char* xml : {"", "no XML", "<group name=\"empty\"></group>",
                            "<group name=\"g\"><item name=\"Half\" type=\"uint8[]\">1 2</item></group>",
                            "<group name=\"g\"><item name=\"Word\" type=\"string\">red</item></group>"})
        EXPECT_THAT(refusal([&] { loadPaletteFile(put("a.xml", xml)); }).message, HasSubstr("a.xml")) << xml;
    for (const char* name : {"missing.xml", ""})
        EXPECT_THROW(loadPaletteFile(path(name)), Exception) << name;
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
