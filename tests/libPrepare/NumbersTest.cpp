#include <libPrepare/document/Numbers.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>

namespace {

using namespace libPrepare;

TEST(NumbersTest, ReadsWhatTheSchemaWrites)
{
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ((std::vector<double>{1, -2.5, 3000, 0.5, infinity, -infinity}),
              numbers(" 1\t-2.5\n+3e3 .5\r\nINF -INF "));
}

TEST(NumbersTest, WhatIsNoNumberKeepsItsPlace)
{
    const std::vector<double> values = numbers("1 x 1,5 2");
    ASSERT_EQ(4U, values.size());
    EXPECT_TRUE(std::isnan(values[1]));
    EXPECT_TRUE(std::isnan(values[2]));
    EXPECT_EQ(2, values[3]);
    EXPECT_EQ((std::vector<long long>{1, -1, -1, 7}), integers("1 1.5 99999999999999999999 7"));
}

TEST(NumbersTest, OutOfRangeIsInfiniteOrZero)
{
    EXPECT_EQ(std::numeric_limits<double>::infinity(), number("1e999"));
    EXPECT_EQ(-std::numeric_limits<double>::infinity(), number("-1e999"));
    EXPECT_EQ(0, number("1e-999"));
}

// Few digits are read in another way than many, and both round once.
TEST(NumbersTest, ReadsDecimalsAsExactlyAsTheStandardLibrary)
{
    for (const char* const word :
         {"0", "-0", "0.1", "-0.3", ".5", "5.", "-.25", "123456789012345", "1234567.12345678", "0.00000000000001",
          "1234567890123456", "0.1234567890123456", "9007199254740993", "00000000000000000001.5", "2.5e-3", "7e300"}) {
        const std::vector<double> values = numbers(word);
        ASSERT_EQ(1U, values.size()) << word;
        EXPECT_EQ(std::strtod(word, nullptr), values[0]) << word;
        EXPECT_EQ(*word == '-', std::signbit(values[0])) << word;
    }
}

TEST(NumbersTest, OddWordsAreNoDecimals)
{
    for (const char* const word : {".", "-", "-.", "1.2.3", "1-2", "--1", "1x", "0x10"}) {
        const std::vector<double> values = numbers(word);
        ASSERT_EQ(1U, values.size()) << word;
        EXPECT_TRUE(std::isnan(values[0])) << word;
    }
}

TEST(NumbersTest, ReadsOnlyTheFirstNumbers)
{
    double values[2] = {};
    EXPECT_EQ(2U, readNumbers(" 1 2 3", values, 2));
    EXPECT_EQ(1, values[0]);
    EXPECT_EQ(2, values[1]);
    EXPECT_EQ(1U, readNumbers("4", values, 2));
    EXPECT_EQ(0U, readNumbers("", values, 2));
}

TEST(NumbersTest, WritesTheShortestTextThatReadsBack)
{
    EXPECT_EQ("0.1 1 -2.5 NaN INF", text({0.1, 1, -2.5, std::nan(""), std::numeric_limits<double>::infinity()}));
    EXPECT_EQ(1.0 / 3.0, number(text(1.0 / 3.0)));
}

} // namespace
