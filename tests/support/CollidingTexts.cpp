#include "CollidingTexts.h"

#include <array>
#include <cstdint>

namespace testSupport {

namespace {

constexpr std::uint64_t multiplier = 0x9E3779B97F4A7C15u; // of the hash

const std::string& letters()
{
    static const std::string all = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.";
    return all;
}

// By Newton's method, which doubles the number of right bits.
std::uint64_t inverse(std::uint64_t odd)
{
    std::uint64_t result = odd;
    for (int i = 0; i < 6; ++i) {
        result *= 2 - odd * result;
    }
    return result;
}

unsigned char byteOf(std::uint64_t word, unsigned index)
{
    return static_cast<unsigned char>(word >> (8 * index));
}

// The hash turns two words into
//     s0 = 16 * multiplier,  p = (s0 ^ first) * multiplier,  s1 = p ^ (p >> 32),  (s1 ^ second) * multiplier ...
// so all pairs with the same s1 ^ second collide. A choice of `second` gives s1, p and `first`. The lower i bytes of
// `first` depend on the bytes 0 to i and 4 to 4 + i of `second` alone, so these are chosen two at a time.
class Search {
public:
    explicit Search(unsigned count) : m_count(count)
    {
        for (const char letter : letters()) {
            m_isLetter[static_cast<unsigned char>(letter)] = true;
        }
        choose(0, 0);
    }

    std::vector<std::string> texts;

private:
    static constexpr std::uint64_t start = 16 * multiplier;
    static constexpr std::uint64_t target = 0x0123456789ABCDEFu; // any number

    std::uint64_t firstFor(std::uint64_t second) const
    {
        const std::uint64_t mixed = target ^ second;
        return ((mixed ^ (mixed >> 32u)) * m_inverse) ^ start;
    }

    void choose(unsigned index, std::uint64_t second)
    {
        for (const char low : letters()) {
            for (const char high : letters()) {
                const std::uint64_t chosen = second | std::uint64_t{static_cast<unsigned char>(low)} << (8 * index) |
                                             std::uint64_t{static_cast<unsigned char>(high)} << (8 * index + 32);
                const std::uint64_t first = firstFor(chosen);
                if (!m_isLetter[byteOf(first, index)] || (index == 0 && byteOf(first, 0) < 'A')) {
                    continue;
                }
                if (index < 3) {
                    choose(index + 1, chosen);
                } else if (m_isLetter[byteOf(first, 4)] && m_isLetter[byteOf(first, 5)] &&
                           m_isLetter[byteOf(first, 6)] && m_isLetter[byteOf(first, 7)]) {
                    std::string text;
                    for (const std::uint64_t word : {first, chosen}) {
                        for (unsigned i = 0; i < 8; ++i) {
                            text += static_cast<char>(byteOf(word, i));
                        }
                    }
                    texts.push_back(text);
                }
                if (texts.size() == m_count) {
                    return;
                }
            }
        }
    }

    unsigned m_count;
    std::uint64_t m_inverse = inverse(multiplier);
    std::array<bool, 256> m_isLetter = {};
};

} // namespace

std::vector<std::string> collidingTexts(unsigned count)
{
    return Search(count).texts;
}

} // namespace testSupport
