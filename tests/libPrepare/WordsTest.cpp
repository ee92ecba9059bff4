#include <libPrepare/document/Words.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

namespace {

std::vector<std::string> wordsOf(const std::string& list, std::size_t most = 1'000)
{
    std::vector<std::string> words;
    libPrepare::forEachWord(list, [&](const char* begin, const char* end) {
        words.emplace_back(begin, end);
        return words.size() < most;
    });
    return words;
}

TEST(WordsTest, AWordOfAnyLengthIsFoundAtAnyPlace)
{
    for (std::size_t before = 0; before < 140; ++before) {
        for (std::size_t length = 1; length < 140; ++length) {
            const std::string word(length, 'a');
            const std::vector<std::string> expected = {"1", word, "23"};
            ASSERT_EQ(expected, wordsOf("1 " + std::string(before, '\n') + word + "\t23"))
                << length << " letters after " << before << " blanks";
        }
    }
}

TEST(WordsTest, AListOfNothingButBlanksHasNone)
{
    for (std::size_t size = 0; size < 140; ++size) {
        EXPECT_TRUE(wordsOf(std::string(size, ' ')).empty()) << size << " blanks";
    }
}

TEST(WordsTest, EndsWhenItIsTold)
{
    std::string list;
    for (int i = 0; i < 200; ++i) {
        list += "w ";
    }
    list += "w";
    EXPECT_EQ(201U, wordsOf(list).size());
    for (std::size_t most = 1; most <= 201; ++most) {
        EXPECT_EQ(most, wordsOf(list, most).size());
    }
}

} // namespace
