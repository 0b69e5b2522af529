#include "core/memory/ByteCursor.h"

#include "tests/Support.h"

using velmo::exp::ByteCursor;

namespace {

void refuse()
{
    VELMO_THROW("Too hot!");
}

} // namespace

TEST(Exception, CarriesTheMessageAndWhereItWasThrown)
{
    try {
        refuse();
        FAIL() << "nothing thrown";
    } catch (const Exception& error) {
        EXPECT_STREQ(error.what(), "Too hot!");
        EXPECT_THAT(error.location(),
                    testing::MatchesRegex("tests/core/ExceptionTest.cpp: [0-9]+: refuse\\(\\.\\.\\)\n"));
    }
}

TEST(ByteCursor, RefusesToReadPastTheEndAndStaysWhereItWas)
{
    const std::uint8_t bytes[] = {1, 2, 3};
    ByteCursor cursor(bytes, 3);
    EXPECT_EQ(*cursor.take(1), 1);
    EXPECT_THROW(cursor.take(3), Exception);
    EXPECT_THROW(cursor.take(SIZE_MAX), Exception);
    EXPECT_TRUE(cursor.left() == 2 && cursor.peek() == 2);
    EXPECT_EQ(cursor.take(2)[1], 3);
    EXPECT_EQ(cursor.peek(), -1);
}
