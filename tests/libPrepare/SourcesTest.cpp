#include <libPrepare/geometry/Sources.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TEST(IndexListTest, NumbersOfAnyLengthAreRead)
{
    EXPECT_EQ((std::vector<std::int32_t>{0, 7, 12, 345, 6789, 12345, 678901, 2345678, 90123456, 2147483647, 0, 12}),
              libPrepare::indices(" 0 7\t12\n345 6789\r12345 678901 2345678 90123456 2147483647 00000000000000000000 "
                                  "0000000000000000000000012"));
}

TEST(IndexListTest, NumbersAtTheEndAreReadWhole)
{
    std::string digits;
    std::int32_t value = 0;
    for (int digit = 1; digit < 10; ++digit) {
        digits += static_cast<char>('0' + digit);
        value = 10 * value + digit;
        EXPECT_EQ(std::vector<std::int32_t>{value}, libPrepare::indices(digits));
        EXPECT_EQ((std::vector<std::int32_t>{value, 1}), libPrepare::indices(digits + " 1"));
        EXPECT_EQ((std::vector<std::int32_t>{-1, 1}), libPrepare::indices(digits + "x 1      "));
    }
}

TEST(IndexListTest, WhatIsNoIndexKeepsItsPlace)
{
    EXPECT_EQ((std::vector<std::int32_t>{-1, -1, -1, -1, -1, 3}),
              libPrepare::indices("-1 1.5 x 2147483648 99999999999999999999 3"));
}

} // namespace
