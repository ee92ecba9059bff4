#pragma once

#include <libPrepare/document/Words.h>

#include <cstdint>
#include <cstring>
#include <string_view>

namespace libPrepare {

/// Takes the entries of an index list one after the other.
class IndexReader {
public:
    explicit IndexReader(std::string_view list) : m_list(list.data()), m_words(list) {}

    /// Goes to the first entry, and after that to the next one. @return false if there is none
    bool next() { return m_words.next(); }

    /// -1 for anything but a whole number from 0 to 2^31 - 1.
    std::int32_t index() const
    {
        const std::int32_t value = fewDigits();
        return value >= 0 ? value : manyDigits(start(), end());
    }

    /// At most so many entries are left.
    std::size_t left() const { return m_words.left(); }

    const char* start() const { return m_words.start(); }
    const char* end() const { return m_words.end(); }

private:
    // The value of up to eight digits, read at once; -1 if the entry is something else or is too close to the start of the list.
    std::int32_t fewDigits() const
    {
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
        std::uint64_t word = 0;
        constexpr std::ptrdiff_t most = sizeof word;
        const std::ptrdiff_t length = end() - start();
        if (length > most || end() - m_list < most) {
            return -1;
        }
        std::memcpy(&word, end() - most, sizeof word);
        word ^= 0x3030303030303030U;                        // digits become their values
        word &= ~std::uint64_t(0) << (8 * (most - length)); // zeros before them
        if (((word | (word + 0x7676767676767676U)) & 0x8080808080808080U) != 0) {
            return -1;
        }
        word = (word * 10 + (word >> 8)) & 0x00FF00FF00FF00FFU;
        word = (word * 100 + (word >> 16)) & 0x0000FFFF0000FFFFU;
        return static_cast<std::int32_t>((word * 10'000 + (word >> 32)) & 0xFFFFFFFFU);
#else
        return -1;
#endif
    }
    // Static, because a call on the reader would keep its fields out of registers.
    static std::int32_t manyDigits(const char* start, const char* end);

    const char* m_list;
    WordReader m_words;
};

} // namespace libPrepare
