#include "recordings/PaletteFormats.h"

#include "tests/Support.h"

using namespace velmo::recordings;

using PaletteFormats = FilesTest;

const Palette twoPoints = {0, 128, 255, 10, 20, 30};

TEST_F(PaletteFormats, ReadsTextsOfOtherPrograms)
{
    EXPECT_EQ(importPalette(put("a.csv", "red,green,blue\n0,128,255\n\n10; 20; 30\n")), twoPoints);
    EXPECT_EQ(importPalette(put("b.CSV", "0\t128\t255\r\n10\t20\t30")), twoPoints);
    EXPECT_EQ(importPalette(put("c.pal", "JASC-PAL\r\n0100\r\n2\r\n0 128 255\r\n10 20 30\r\n")), twoPoints);
    EXPECT_EQ(importPalette(put("d.gpl", "GIMP Palette\nName: Two\nColumns: 2\n# a comment\n"
                                         "  0 128 255\tSky blue\n 10  20  30\n")),
              twoPoints);
}

TEST_F(PaletteFormats, ReadsTablesOfBytes)
{
    std::string table(768, '\0');
    for (std::size_t n = 0; n < table.size(); ++n)
        table[n] = static_cast<char>(n % 251);
    const Palette bytes(table.begin(), table.end());
    EXPECT_EQ(importPalette(put("a.act", table)), bytes);
    // Two colours, none of them transparent.
    EXPECT_EQ(importPalette(put("b.act", table + std::string("\0\2\377\377", 4))),
              (Palette{0, 1, 2, 3, 4, 5}));

    const Palette planes = importPalette(put("c.lut", table));
    ASSERT_EQ(planes.size(), 768u);
    EXPECT_THAT(Palette(planes.begin() + 3, planes.begin() + 6),
                ElementsAre(1, 257 - 251, 513 - 502)); // the second
}

TEST_F(PaletteFormats, SayWhichLineIsWrong)
{
    expectRefused<const char*, std::string>(
        {{"a.csv", "1,2,3\n1,2\n", "a.csv: line 2: blue"},
         {"a.csv", "1,2,3\n1,2,256\n", "line 2: blue"},
         {"a.csv", "red,green,blue\n", "no colour"},
         {"b.pal", "JASC-PAL\n0100\n3\n1 2 3\n", "3 colours expected, there are 1"},
         {"b.pal", "RIFF", "line 1: 'JASC-PAL' expected"},
         {"b.pal", "JASC-PAL\n0100\n99999999999\n", "number of colours"},
         {"c.gpl", "1 2 3\n", "'GIMP Palette' expected"},
         {"d.act", std::string(767, 'x'), "767"},
         {"d.act", std::string(772, '\0'), "1 to 256 colours, this says 0"},
         {"e.lut", std::string(772, 'x'), "772"},
         {"f.txt", "1 2 3", ".csv"}},
        [&](const char* name, const std::string& bytes) { importPalette(put(name, bytes)); });
    EXPECT_THROW(importPalette(path("missing.csv")), Exception);
    EXPECT_THROW(importPalette(path("")), Exception);
}
