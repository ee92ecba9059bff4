#include "NumberCensus.h"

#include "Numbers.h"
#include "Words.h"

#include <cmath>
#include <cstdint>

namespace libPrepare {

namespace {

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

// Counts entries one by one. Computes their values only if their form does not show that they are finite.
void countEach(std::string_view list, NumberCensus& result)
{
    forEachWord(list, [&](const char* const start, const char* const end) {
        ++result.words;
        const char* at = start + (*start == '-' ? 1 : 0);
        const char* const digits = at;
        while (at != end && isDigit(*at)) {
            ++at;
        }
        std::ptrdiff_t digitCount = at - digits;
        if (at != end && *at == '.') {
            const char* const fraction = ++at;
            while (at != end && isDigit(*at)) {
                ++at;
            }
            digitCount += at - fraction;
        }
        const bool isPlain = digitCount > 0 && digitCount < 100 && at == end;
        if (!isPlain && result.isFinite) {
            result.isFinite = std::isfinite(number(std::string_view(start, static_cast<std::size_t>(end - start))));
        }
        return true;
    });
}

// Whether the words in a block are numbers without an exponent, which are finite because they are no longer than the
// block.
// @param inside the bytes of the words, which all end in the block
// @param starts their first bytes
bool arePlain(const ByteBlock& block, std::uint64_t inside, std::uint64_t starts)
{
    const std::uint64_t digits = block.digits() & inside;
    const std::uint64_t points = block.places('.') & inside;
    const std::uint64_t signs = inside & ~(digits | points);
    const std::uint64_t fractions = points << 1;
    // A sum runs from the first digit of a fraction to what comes after the last one.
    const std::uint64_t ends = (digits + (fractions & digits)) | fractions;
    const bool areSigns = (signs & ~(block.places('-') & starts)) == 0 && (signs << 1 & ~(digits | points)) == 0;
    const bool haveDigits = (points & ~(digits << 1) & ~(digits >> 1)) == 0;
    return areSigns && haveDigits && (ends & points) == 0;
}

} // namespace

NumberCensus numberCensusOf(std::string_view list)
{
    NumberCensus result;
    const auto countBlock = [&](const char*, const ByteBlock& block, std::uint64_t inside) {
        const std::uint64_t starts = inside & ~(inside << 1);
        const bool isPlain = arePlain(block, inside, starts);
        result.words += isPlain ? static_cast<std::size_t>(__builtin_popcountll(starts)) : 0;
        return isPlain;
    };
    forEachPiece(list, countBlock, [&](std::string_view piece) { countEach(piece, result); });
    return result;
}

} // namespace libPrepare
