#include "ColumnCensus.h"

#include "IndexReader.h"

#include <libPrepare/document/Words.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace libPrepare {

namespace {

constexpr unsigned mostDigits = 8; // of an entry that is compared without computing its value

// The values of digits, the first in the highest byte.
std::uint64_t digitsAt(const char* bytes)
{
    std::uint64_t digits = 0;
    std::memcpy(&digits, bytes, mostDigits);
    digits ^= 0x3030303030303030U;
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    digits = __builtin_bswap64(digits);
#endif
    return digits;
}

std::int32_t valueOf(std::uint64_t digits)
{
    std::int32_t value = 0;
    for (unsigned i = mostDigits; i-- > 0;) {
        value = 10 * value + static_cast<std::int32_t>(digits >> (8 * i) & 0xF);
    }
    return value;
}

// Whether more than `mostDigits` bits follow one another.
bool hasLongRun(std::uint64_t bits)
{
    std::uint64_t runs = bits & bits >> 1; // of two; then of four and of eight
    runs &= runs >> 2;
    runs &= runs >> 4;
    return (runs & bits >> mostDigits) != 0;
}

// Takes the entries of a list in order.
class ColumnCounter {
public:
    // @param limit of the entries that count
    ColumnCounter(std::size_t stride, std::size_t limit)
        : m_stride(stride), m_left(limit), m_greatest(stride, -1), m_digits(stride), m_hasInvalid(stride)
    {}

    // @return false if the words in a block have to be taken one by one
    bool takeBlock(const char* bytes, const ByteBlock& block, std::uint64_t inside)
    {
        constexpr std::size_t mostWords = ByteBlock::size / 2;
        if ((inside & ~block.digits()) != 0 || hasLongRun(inside) || m_left < mostWords) {
            return false;
        }
        std::uint64_t starts = inside & ~(inside << 1);
        std::uint64_t ends = ~inside & inside << 1;
        std::uint64_t* const greatest = m_digits.data();
        std::size_t column = m_column;
        std::size_t left = m_left;
        for (; starts != 0; starts &= starts - 1, ends &= ends - 1) {
            const unsigned start = static_cast<unsigned>(__builtin_ctzll(starts));
            const unsigned length = static_cast<unsigned>(__builtin_ctzll(ends)) - start;
            const std::uint64_t digits = digitsAt(bytes + start) >> (8 * (mostDigits - length));
            greatest[column] = std::max(greatest[column], digits | isSeen);
            column = column + 1 == m_stride ? 0 : column + 1;
            --left;
        }
        m_column = column;
        m_left = left;
        return true;
    }

    void takeEach(std::string_view list)
    {
        IndexReader entries(list);
        while (m_left > 0 && entries.next()) {
            const std::int32_t index = entries.index();
            m_hasInvalid[m_column] = m_hasInvalid[m_column] || index < 0;
            m_greatest[m_column] = std::max(m_greatest[m_column], index);
            m_column = m_column + 1 == m_stride ? 0 : m_column + 1;
            --m_left;
        }
    }

    std::size_t left() const { return m_left; }

    ColumnCensus census()
    {
        for (std::size_t column = 0; column < m_stride; ++column) {
            if (m_digits[column] != 0) {
                m_greatest[column] = std::max(m_greatest[column], valueOf(m_digits[column]));
            }
        }
        return {std::move(m_greatest), std::move(m_hasInvalid), 0};
    }

private:
    static constexpr std::uint64_t isSeen = std::uint64_t(1) << 63; // digits leave this bit free

    std::size_t m_stride;
    std::size_t m_left; // entries that still count
    std::size_t m_column = 0;
    std::vector<std::int32_t> m_greatest;
    std::vector<std::uint64_t> m_digits; // of the greatest entry among those in plain blocks
    std::vector<bool> m_hasInvalid;
};

} // namespace

ColumnCensus censusOf(std::string_view text, std::size_t stride, std::size_t tuples)
{
    stride = std::min(stride, text.size() + 1); // a longer tuple does not fit in it
    const std::size_t limit = std::min(tuples, text.size()) * stride;
    ColumnCounter counter(stride, limit);
    forEachPiece(
        text,
        [&](const char* bytes, const ByteBlock& block, std::uint64_t inside) {
            return counter.takeBlock(bytes, block, inside);
        },
        [&](std::string_view piece) { counter.takeEach(piece); });
    ColumnCensus result = counter.census();
    result.tuples = (limit - counter.left()) / stride;
    return result;
}

} // namespace libPrepare
