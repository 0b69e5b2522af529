#include "tests/apps/ProgramRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace {

using testing::HasSubstr;

TEST(PalettesCommand, TakesPalettesInAndOut)
{
    const TemporaryFolder folder;
    std::ofstream(folder.path() / "two.csv") << "0,128,255\n10,20,30\n";
    EXPECT_EQ(callProgram("palettes import two.csv --name Two --out two.xml", folder.path()).code, 0);
    EXPECT_EQ(callProgram("palettes export two --file two.xml --out again.xml", folder.path()).code, 0);
    EXPECT_THAT(callProgram("palettes --csv --file again.xml", folder.path()).output, HasSubstr("two"));
    EXPECT_EQ(callProgram("palettes export Nowhere --out no.xml", folder.path()).code, 2);
    EXPECT_EQ(folder.entries(), (std::vector<std::string>{"again.xml", "two.csv", "two.xml"}));
}

} // namespace
