#include <libPrepare/document/Numbers.h>

#include <gtest/gtest.h>

#include <cmath>
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

TEST(NumbersTest, WritesTheShortestTextThatReadsBack)
{
    EXPECT_EQ("0.1 1 -2.5 NaN INF", text({0.1, 1, -2.5, std::nan(""), std::numeric_limits<double>::infinity()}));
    EXPECT_EQ(1.0 / 3.0, number(text(1.0 / 3.0)));
}

} // namespace
