#pragma once

/// @file
/// Counts the steps to a parent folder in a reference.

#include <cstddef>
#include <string_view>

namespace libVideo::detail {

/// Counts steps to a parent folder, in text that comes in pieces. Resolving a reference costs time with their square.
class ParentSteps {
public:
    static constexpr std::size_t limit = 256; ///< What a reference may have.

    void restart() { *this = ParentSteps(); }
    bool areTooMany() const { return m_count > limit; }

    void add(std::string_view piece)
    {
        for (const char c : piece) {
            if (c == '/') {
                m_count += m_isOfDots && m_length == 2 ? 1 : 0;
                m_isOfDots = true;
                m_length = 0;
            } else {
                m_isOfDots = m_isOfDots && c == '.';
                ++m_length;
            }
        }
    }

private:
    std::size_t m_count = 0;
    bool m_isOfDots = true; // the current name of the path
    std::size_t m_length = 0;
};

} // namespace libVideo::detail
