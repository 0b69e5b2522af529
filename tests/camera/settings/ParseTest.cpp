#include "camera/settings/Parse.h"

#include "tests/camera/Support.h"

TEST(Parse, TakesWholeNumbersAndNothingElse)
{
    const auto whole = [](const char* text) {
        return parseForm(text, "gain", {{"GAIN", Field::Kind::Whole, 0, 16}})[0];
    };
    EXPECT_EQ(whole("16"), 16);
    for (const char* text : {"", "17", "-1", "1.5", "1 ", " 1", "+1", "0x1", "99999999999999999999", "one"})
        EXPECT_THROW(whole(text), Exception) << text;
    for (const char* text : {"", "nan", "inf", "101", "-0.1", "1e", "5%"})
        EXPECT_THROW(parseNumber(text, "share", 0, 100), Exception) << text;
    const auto colour = [](const char* text) {
        return parseForm(text, "colour", {{"RRGGBB", Field::Kind::Colour}})[0];
    };
    EXPECT_EQ(colour("FF8000"), 0xFF8000);
    for (const char* text : {"", "FF800", "FF80000", "GG0000", "-F8000"})
        EXPECT_THROW(colour(text), Exception) << text;
    EXPECT_EQ(parseSize("160x120", "size"), cv::Size(160, 120));
    for (const char* text : {"", "4", "4x0", "4x16385", "4x4x4", "x"})
        EXPECT_THROW(parseSize(text, "size"), Exception) << text;
}
