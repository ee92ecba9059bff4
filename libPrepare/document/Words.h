#pragma once

#include "ByteBlock.h"
#include "Numbers.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace libPrepare {

/// Takes the words of a list one after the other.
class WordReader {
public:
    explicit WordReader(std::string_view list)
        : m_end(list.data() + list.size()), m_block(list.data()), m_following(m_block), m_start(m_block)
    {}

    /// Goes to the first word, and after that to the next one. @return false if there is none
    bool next()
    {
        const char* start = m_following;
        while (true) {
            for (; m_blanks == 0; findBlanks()) {
                if (m_block == m_end) {
                    return take(start, m_end, m_end);
                }
            }
            const char* const blank = m_base + __builtin_ctzll(m_blanks);
            m_blanks &= m_blanks - 1;
            if (blank != start) {
                return take(start, blank, blank + 1);
            }
            start = blank + 1;
        }
    }

    /// At most so many words are left.
    std::size_t left() const { return static_cast<std::size_t>(m_end - m_following + 1) / 2; }

    const char* start() const { return m_start; }
    const char* end() const { return m_wordEnd; }

private:
    bool take(const char* start, const char* end, const char* following)
    {
        m_start = start;
        m_wordEnd = end;
        m_following = following;
        return start != end;
    }

    // Of the next block.
    void findBlanks()
    {
        m_base = m_block;
        if (m_end - m_block >= static_cast<std::ptrdiff_t>(ByteBlock::size)) {
            m_blanks = ByteBlock(m_block).blanks();
            m_block += ByteBlock::size;
            return;
        }
        for (; m_block != m_end; ++m_block) {
            m_blanks |= std::uint64_t(isBlank(*m_block)) << (m_block - m_base);
        }
    }

    const char* m_end;
    const char* m_block;          // what was not looked at yet
    const char* m_base = nullptr; // of the blanks
    std::uint64_t m_blanks = 0;   // that were not passed yet
    const char* m_following;      // after the word and its blank
    const char* m_start;
    const char* m_wordEnd = nullptr;
};

/// Calls `use` with the begin and the end of each word of a list until it returns false.
template <class Use>
void forEachWord(std::string_view list, const Use& use)
{
    WordReader words(list);
    while (words.next() && use(words.start(), words.end())) {
    }
}

/// Cuts a list of words into pieces of whole words, most of them no longer than a block. Calls `useBlock` for such a piece
/// with its start, the block there and a bit for each byte of its words; eight bytes after the block can be read too. Calls
/// `useText` for all other pieces, and again for a piece that `useBlock` returns false for.
template <class UseBlock, class UseText>
void forEachPiece(std::string_view list, const UseBlock& useBlock, const UseText& useText)
{
    while (list.size() >= ByteBlock::size + sizeof(std::uint64_t)) {
        const ByteBlock block(list.data());
        const std::uint64_t blanks = block.blanks();
        if (blanks == 0) { // a long word
            const std::size_t end = std::min(list.find_first_of(" \n\t\r", ByteBlock::size), list.size());
            useText(list.substr(0, end));
            list.remove_prefix(end);
            continue;
        }
        const int last = 63 - __builtin_clzll(blanks);
        const std::uint64_t inside = ~blanks & ((std::uint64_t(1) << last) - 1);
        if (!useBlock(list.data(), block, inside)) {
            useText(list.substr(0, static_cast<std::size_t>(last)));
        }
        list.remove_prefix(static_cast<std::size_t>(last) + 1);
    }
    useText(list);
}

} // namespace libPrepare
