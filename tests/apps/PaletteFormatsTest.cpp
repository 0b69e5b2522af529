#include "tests/apps/ProgramRun.h"

#include "apps/thermal/Error.h"
#include "recordings/PaletteFormats.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace {

using testing::HasSubstr;
using thermal::exportPalette;
using thermal::importPalette;
using thermal::Palette;
using thermal::UsageError;

class PaletteFormats : public testing::Test
{
protected:
    std::string write(const std::string& name, const std::string& bytes)
    {
        std::ofstream(folder.path() / name, std::ios::binary) << bytes;
        return folder.path() / name;
    }

    std::string refusal(const std::string& name, const std::string& bytes)
    {
        try {
            importPalette(write(name, bytes));
        } catch (const UsageError& error) {
            return error.what();
        }
        return "taken";
    }

    TemporaryFolder folder;
};

const Palette twoPoints = {0, 128, 255, 10, 20, 30};

TEST_F(PaletteFormats, ReadsTextsOfOtherPrograms)
{
    EXPECT_EQ(importPalette(write("a.csv", "red,green,blue\n0,128,255\n\n10; 20; 30\n")), twoPoints);
    EXPECT_EQ(importPalette(write("b.CSV", "0\t128\t255\r\n10\t20\t30")), twoPoints);
    EXPECT_EQ(importPalette(write("c.pal", "JASC-PAL\r\n0100\r\n2\r\n0 128 255\r\n10 20 30\r\n")), twoPoints);
    EXPECT_EQ(importPalette(write("d.gpl", "GIMP Palette\nName: Two\nColumns: 2\n# a comment\n"
                                           "  0 128 255\tSky blue\n 10  20  30\n")),
              twoPoints);
}

TEST_F(PaletteFormats, ReadsTablesOfBytes)
{
    std::string table(768, '\0');
    for (std::size_t n = 0; n < table.size(); ++n)
        table[n] = static_cast<char>(n % 251);
    const Palette bytes(table.begin(), table.end());
    EXPECT_EQ(importPalette(write("a.act", table)), bytes);
    // Two colours, none of them transparent.
    EXPECT_EQ(importPalette(write("b.act", table + std::string("\0\2\377\377", 4))),
              (Palette{0, 1, 2, 3, 4, 5}));

    const Palette planes = importPalette(write("c.lut", table));
    ASSERT_EQ(planes.size(), 768u);
    EXPECT_EQ(planes[3], 1);               // the second red
    EXPECT_EQ(planes[4], (256 + 1) % 251); // the second green
    EXPECT_EQ(planes[5], (512 + 1) % 251);
}

TEST_F(PaletteFormats, SayWhichLineIsWrong)
{
    EXPECT_THAT(refusal("a.csv", "1,2,3\n1,2\n"), HasSubstr("a.csv: line 2: blue"));
    EXPECT_THAT(refusal("a.csv", "1,2,3\n1,2,256\n"), HasSubstr("line 2: blue"));
    EXPECT_THAT(refusal("a.csv", "red,green,blue\n"), HasSubstr("no colour"));
    EXPECT_THAT(refusal("b.pal", "JASC-PAL\n0100\n3\n1 2 3\n"), HasSubstr("3 colours expected, there are 1"));
    EXPECT_THAT(refusal("b.pal", "RIFF"), HasSubstr("line 1: 'JASC-PAL' expected"));
    EXPECT_THAT(refusal("b.pal", "JASC-PAL\n0100\n99999999999\n"), HasSubstr("number of colours"));
    EXPECT_THAT(refusal("c.gpl", "1 2 3\n"), HasSubstr("'GIMP Palette' expected"));
    EXPECT_THAT(refusal("d.act", std::string(767, 'x')), HasSubstr("767"));
    EXPECT_THAT(refusal("d.act", std::string(772, '\0')), HasSubstr("1 to 256 colours, this says 0"));
    EXPECT_THAT(refusal("e.lut", std::string(772, 'x')), HasSubstr("772"));
    EXPECT_THAT(refusal("f.txt", "1 2 3"), HasSubstr(".csv"));
    EXPECT_THROW(importPalette(folder.path() / "missing.csv"), UsageError);
    EXPECT_THROW(importPalette(folder.path()), UsageError);
}

TEST_F(PaletteFormats, WrittenPalettesLoadBackToTheSameBytes)
{
    const std::string path = folder.path() / "out.xml";
    Palette palette;
    for (int n = 0; n < 3 * 256; ++n)
        palette.push_back(static_cast<unsigned char>(n * 7));
    const std::string name = "Grün & \"<heiß>\"";
    exportPalette(path, name, palette);
    EXPECT_EQ(thermal::loadPaletteFile(path), name);
    EXPECT_EQ(thermal::findPalette(name), palette);

    for (const char* bad : {"", "a/b", "two\nlines"})
        EXPECT_THROW(exportPalette(path, bad, palette), UsageError) << bad;
    EXPECT_THROW(exportPalette(folder.path() / "none" / "out.xml", "A", palette), UsageError);
    EXPECT_EQ(folder.entries(), std::vector<std::string>{"out.xml"});
}

TEST_F(PaletteFormats, GoThroughTheProgram)
{
    write("two.csv", "0,128,255\n10,20,30\n");
    EXPECT_EQ(callProgram("palettes import two.csv --name Two --out two.xml", folder.path()).code, 0);
    EXPECT_EQ(callProgram("palettes export two --file two.xml --out again.xml", folder.path()).code, 0);
    EXPECT_THAT(callProgram("palettes --csv --file again.xml", folder.path()).output, HasSubstr("two"));
    EXPECT_EQ(callProgram("palettes export Nowhere --out no.xml", folder.path()).code, 2);
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"again.xml", "two.csv", "two.xml"}));
}

} // namespace
