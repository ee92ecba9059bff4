#include <libPrepare/document/ByteBlock.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>

// One byte of another kind at each place of a block.

namespace {

using libPrepare::ByteBlock;

std::string blockWith(int byte, std::size_t place, char others)
{
    std::string bytes(ByteBlock::size, others);
    bytes[place] = static_cast<char>(byte);
    return bytes;
}

bool isAmong(const std::string& characters, int byte)
{
    return characters.find(static_cast<char>(byte)) != std::string::npos;
}

TEST(ByteBlockTest, FindsEachCharacterThatHasToBeEscaped)
{
    for (std::size_t place = 0; place < ByteBlock::size; ++place) {
        for (int byte = 0; byte < 256; ++byte) {
            const std::string bytes = blockWith(byte, place, 'a');
            EXPECT_EQ(isAmong("&<>\r", byte), ByteBlock(bytes.data()).hasMarkup()) << byte << " at " << place;
        }
    }
}

TEST(ByteBlockTest, KnowsTheCharactersOfNumbers)
{
    for (std::size_t place = 0; place < ByteBlock::size; ++place) {
        for (int byte = 0; byte < 256; ++byte) {
            const std::string bytes = blockWith(byte, place, '7');
            EXPECT_EQ(isAmong("0123456789+-.,e \n", byte), ByteBlock(bytes.data()).isOfNumbers())
                << byte << " at " << place;
        }
    }
}

TEST(ByteBlockTest, HasABitForEachBlank)
{
    for (std::size_t place = 0; place < ByteBlock::size; ++place) {
        for (int byte = 0; byte < 256; ++byte) {
            const std::string bytes = blockWith(byte, place, 'x');
            EXPECT_EQ(isAmong(" \t\r\n", byte) ? std::uint64_t(1) << place : 0, ByteBlock(bytes.data()).blanks())
                << byte << " at " << place;
        }
    }
    EXPECT_EQ(~std::uint64_t(0), ByteBlock(std::string(ByteBlock::size, '\n').data()).blanks());
}

TEST(ByteBlockTest, HasABitForEachDigitAndForEachOfACharacter)
{
    for (std::size_t place = 0; place < ByteBlock::size; ++place) {
        const std::uint64_t bit = std::uint64_t(1) << place;
        for (int byte = 0; byte < 256; ++byte) {
            const std::string bytes = blockWith(byte, place, 'x');
            EXPECT_EQ(isAmong("0123456789", byte) ? bit : 0, ByteBlock(bytes.data()).digits())
                << byte << " at " << place;
            EXPECT_EQ(isAmong("-", byte) ? bit : 0, ByteBlock(bytes.data()).places('-')) << byte << " at " << place;
        }
    }
}

} // namespace
