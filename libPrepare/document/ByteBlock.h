#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace libPrepare {

/// Bytes of a text that are compared at once: long lists of numbers are most of a large document.
class ByteBlock {
public:
    static constexpr std::size_t size = 64;

    /// @param bytes at least `size`
    explicit ByteBlock(const char* bytes) { std::memcpy(m_parts, bytes, size); }

    /// Whether all bytes are characters of a list of numbers: digits, signs, points, `e`, blanks and line ends.
    bool isOfNumbers() const
    {
        Part isOther = {};
        for (const Part part : m_parts) {
            const Part isOfNumber = (part >= all('+')) & (part <= all('9')) & (part != all('/'));
            isOther |= ~(isOfNumber | (part == all(' ')) | (part == all('\n')) | (part == all('e')));
        }
        return !hasAny(isOther);
    }

    /// Whether a byte has to be escaped in the text of an element.
    bool hasMarkup() const
    {
        Part isMarkup = {};
        for (const Part part : m_parts) {
            isMarkup |= (part == all('&')) | (part == all('<')) | (part == all('>')) | (part == all('\r'));
        }
        return hasAny(isMarkup);
    }

    /// A bit for each byte, the lowest for the first: whether it is a blank or a line end.
    std::uint64_t blanks() const
    {
        return bits([](Part part) {
            return (part == all(' ')) | (part == all('\n')) | (part == all('\t')) | (part == all('\r'));
        });
    }

    /// As `blanks`: whether it is a digit.
    std::uint64_t digits() const
    {
        return bits([](Part part) { return (part >= all('0')) & (part <= all('9')); });
    }

    /// As `blanks`: whether it is this character.
    std::uint64_t places(char character) const
    {
        return bits([&](Part part) { return part == all(character); });
    }

private:
    using Part = signed char __attribute__((vector_size(16)));

    static Part all(char c)
    {
        const auto byte = static_cast<signed char>(c);
        return Part{byte, byte, byte, byte, byte, byte, byte, byte, byte, byte, byte, byte, byte, byte, byte, byte};
    }

    template <class Test>
    std::uint64_t bits(const Test& test) const
    {
        std::uint64_t result = 0;
        for (std::size_t i = 0; i < size / sizeof(Part); ++i) {
            result |= bitsOf(test(m_parts[i])) << (i * sizeof(Part));
        }
        return result;
    }

    // A bit for each byte of a mask.
    static std::uint64_t bitsOf(Part mask)
    {
#ifdef __SSE2__
        __m128i bytes;
        std::memcpy(&bytes, &mask, sizeof bytes);
        return static_cast<std::uint64_t>(_mm_movemask_epi8(bytes));
#else
        std::uint64_t result = 0;
        for (std::size_t i = 0; i < sizeof(Part); ++i) {
            result |= std::uint64_t(mask[i] != 0) << i;
        }
        return result;
#endif
    }

    static bool hasAny(Part mask)
    {
        std::uint64_t halves[2];
        std::memcpy(halves, &mask, sizeof halves);
        return (halves[0] | halves[1]) != 0;
    }

    Part m_parts[size / sizeof(Part)];
};

} // namespace libPrepare
