#include <libPrepare/geometry/ColumnCensus.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace {

using libPrepare::ColumnCensus;

TEST(ColumnCensusTest, CountsWholeTuples)
{
    const ColumnCensus census = libPrepare::censusOf("1 20 3 -1 5 6", 2, 10);
    EXPECT_EQ(3U, census.tuples);
    EXPECT_EQ((std::vector<std::int32_t>{5, 20}), census.greatest);
    EXPECT_EQ((std::vector<bool>{false, true}), census.hasInvalid);
    EXPECT_EQ(1U, libPrepare::censusOf("1 20 3 -1 5 6", 2, 1).tuples);
}

TEST(ColumnCensusTest, ColumnWithoutAnEntryNamesNothing)
{
    const ColumnCensus census = libPrepare::censusOf("4 0", 3, 9);
    EXPECT_EQ(0U, census.tuples);
    EXPECT_EQ((std::vector<std::int32_t>{4, 0, -1}), census.greatest);
}

TEST(ColumnCensusTest, OnlyZerosNameTheFirstRecord)
{
    std::string list;
    for (int i = 0; i < 240; ++i) {
        list += i < 192 ? "0 " : "x "; // six blocks of zeros
    }
    const ColumnCensus census = libPrepare::censusOf(list, 2, 1000);
    EXPECT_EQ(120U, census.tuples);
    EXPECT_EQ((std::vector<std::int32_t>{0, 0}), census.greatest);
    EXPECT_EQ((std::vector<bool>{true, true}), census.hasInvalid);
}

// The same by a look at each word for itself.
ColumnCensus censusByWords(const std::vector<std::string>& words, std::size_t stride, std::size_t tuples)
{
    ColumnCensus result{std::vector<std::int32_t>(stride, -1), std::vector<bool>(stride), 0};
    const std::size_t count = std::min(words.size(), stride * tuples);
    for (std::size_t i = 0; i < count; ++i) {
        const std::string& word = words[i];
        const bool isWhole = word.find_first_not_of("0123456789") == std::string::npos;
        const double value = isWhole ? std::stod(word) : -1;
        if (value < 0 || value > 2147483647.0) {
            result.hasInvalid[i % stride] = true;
        } else {
            result.greatest[i % stride] = std::max(result.greatest[i % stride], static_cast<std::int32_t>(value));
        }
    }
    result.tuples = count / stride;
    return result;
}

// Long lists are read in blocks, so each kind of word has to come at each place of a block.
TEST(ColumnCensusTest, LongListsAreReadAsShortOnes)
{
    std::mt19937 random(5); // NOLINT(cert-msc32-c,cert-msc51-cpp): each run is the same
    const auto below = [&](std::size_t limit) { return random() % limit; };
    const std::vector<std::string> odd = {"-1",
                                          "1.5",
                                          "x",
                                          "2147483648",
                                          "2147483647",
                                          "00000000000000000000000012",
                                          "99999999999999999999",
                                          "123456789",
                                          "+7",
                                          std::string(90, '1')};
    for (int round = 0; round < 3000; ++round) {
        const std::size_t longest = 1 + below(9);
        const std::size_t oddness = round % 3 == 0 ? 40 : 100000;
        std::vector<std::string> words;
        std::string list(below(3), ' ');
        for (std::size_t i = 5 + below(200); i > 0; --i) {
            std::string word;
            for (std::size_t digits = 1 + below(longest); digits > 0; --digits) {
                word += static_cast<char>('0' + below(10));
            }
            words.push_back(below(oddness) == 0 ? odd[below(odd.size())] : word);
            list += words.back() + std::string(below(9) == 0 ? 1 + below(70) : 1, " \n\t\r"[below(4)]);
        }
        const std::size_t stride = 1 + below(5);
        const std::size_t tuples = below(2) == 0 ? 1000 : below(60);
        const ColumnCensus expected = censusByWords(words, stride, tuples);
        const ColumnCensus census = libPrepare::censusOf(list, stride, tuples);
        ASSERT_EQ(expected.greatest, census.greatest) << list;
        ASSERT_EQ(expected.hasInvalid, census.hasInvalid) << list;
        ASSERT_EQ(expected.tuples, census.tuples) << list;
    }
}

} // namespace
