#include <libPrepare/document/Words.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
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

// The words of all pieces, in order. Refuses every other block if `isPicky`.
std::vector<std::string> wordsOfPieces(const std::string& list, bool isPicky)
{
    std::vector<std::string> words;
    const char* const end = list.data() + list.size();
    bool isTaken = true;
    libPrepare::forEachPiece(
        list,
        [&](const char* bytes, const libPrepare::ByteBlock&, std::uint64_t inside) {
            EXPECT_LE(72, end - bytes) << "a block and eight bytes can be read";
            isTaken = !isPicky || !isTaken;
            for (int i = 0; i < 64 && isTaken; ++i) {
                if ((inside >> i & 1) != 0) {
                    if (i == 0 || (inside >> (i - 1) & 1) == 0) {
                        words.emplace_back();
                    }
                    words.back() += bytes[i];
                }
            }
            return isTaken;
        },
        [&](std::string_view piece) {
            const std::vector<std::string> some = wordsOf(std::string(piece));
            words.insert(words.end(), some.begin(), some.end());
        });
    return words;
}

TEST(WordsTest, PiecesHaveEachWordOnceAndWhole)
{
    for (std::size_t before = 0; before < 140; ++before) {
        for (std::size_t length = 1; length < 140; length += 3) {
            std::string list = "1 " + std::string(before, '\n') + std::string(length, 'a') + "\t23";
            std::vector<std::string> expected = {"1", std::string(length, 'a'), "23"};
            for (int i = 0; i < 45; ++i) { // any number of bytes is left after some block
                list += " 7";
                expected.emplace_back("7");
            }
            ASSERT_EQ(expected, wordsOfPieces(list, false)) << length << " letters after " << before << " blanks";
            ASSERT_EQ(expected, wordsOfPieces(list, true)) << length << " letters after " << before << " blanks";
        }
    }
}

} // namespace
