#include "tests/TemporaryFolder.h"

#include "recordings/PaletteFile.h"

#include "core/Exception.h"
#include "vision/imgproc/ColorPaletteManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace {

using testing::HasSubstr;
using velmo::exp::Exception;
using velmo::recordings::loadPaletteFile;
using velmo::recordings::Palette;
using velmo::recordings::writePaletteFile;
using velmo::vision::ColorPaletteManager;

class PaletteFile : public testing::Test
{
protected:
    std::string write(const std::string& text)
    {
        const std::string path = folder.path() / "palettes.xml";
        std::ofstream(path) << text;
        return path;
    }

    TemporaryFolder folder;
};

TEST_F(PaletteFile, GivesItsFirstPalette)
{
    const std::string path =
        write("<?xml version=\"1.0\"?>\n<group name=\"palettes\">\n"
              "<item name=\"Traffic\" type=\"uint8[]\">#00FF00 #FFFF00 #FF0000</item>\n"
              "<item name=\"Zebra\" type=\"uint8[]\">#000000 #FFFFFF</item>\n</group>\n");
    EXPECT_EQ(loadPaletteFile(path), "Traffic");
    EXPECT_EQ(ColorPaletteManager::getPaletteColors("Traffic"),
              (Palette{0, 0xFF, 0, 0xFF, 0xFF, 0, 0xFF, 0, 0}));
    EXPECT_EQ(ColorPaletteManager::getPaletteColors("Zebra"), (Palette{0, 0, 0, 0xFF, 0xFF, 0xFF}));
}

TEST_F(PaletteFile, ThatHoldsNoneIsRefusedByName)
{
    const char* const texts[] = {"", "no XML", "<group name=\"empty\"></group>",
                                 "<group name=\"g\"><item name=\"Half\" type=\"uint8[]\">1 2</item></group>",
                                 "<group name=\"g\"><item name=\"Word\" type=\"string\">red</item></group>"};
    for (const char* text : texts)
        try {
            loadPaletteFile(write(text));
            ADD_FAILURE() << text;
        } catch (const Exception& error) {
            EXPECT_THAT(error.what(), HasSubstr("palettes.xml")) << text;
        }
    EXPECT_THROW(loadPaletteFile(folder.path() / "missing.xml"), Exception);
    EXPECT_THROW(loadPaletteFile(folder.path()), Exception);
}

TEST_F(PaletteFile, WrittenPalettesLoadBackToTheSameBytes)
{
    const std::string path = folder.path() / "out.xml";
    Palette palette;
    for (int n = 0; n < 3 * 256; ++n)
        palette.push_back(static_cast<unsigned char>(n * 7));
    const std::string name = "Grün & \"<heiß>\"";
    writePaletteFile({path, path}, name, palette);
    EXPECT_EQ(loadPaletteFile(path), name);
    EXPECT_EQ(ColorPaletteManager::getPaletteColors(name), palette);

    for (const char* bad : {"", "a/b", "two\nlines"})
        EXPECT_THROW(writePaletteFile({folder.path() / "bad.xml", "bad.xml"}, bad, palette), Exception)
            << bad;
}

} // namespace
