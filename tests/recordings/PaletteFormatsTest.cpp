#include "tests/TemporaryFolder.h"

#include "recordings/PaletteFormats.h"

#include "core/Exception.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace {

using testing::HasSubstr;
using velmo::exp::Exception;
using velmo::recordings::importPalette;
using velmo::recordings::Palette;

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
        } catch (const Exception& error) {
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
    EXPECT_THROW(importPalette(folder.path() / "missing.csv"), Exception);
    EXPECT_THROW(importPalette(folder.path()), Exception);
}

} // namespace
