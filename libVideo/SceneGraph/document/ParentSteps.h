#pragma once

/// @file
/// Counts the "../" steps of a reference.

#include <cstddef>
#include <string_view>

namespace libVideo::detail {

/// Counts the steps to a parent folder in a text that comes in pieces. The time to resolve a reference grows with their
/// square.
class ParentSteps {
public:
    static constexpr std::size_t limit = 256; ///< Maximum number of steps in a reference.

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
    bool m_isOfDots = true;   // whether the current name of the path has only dots
    std::size_t m_length = 0; // of the current name
};

} // namespace libVideo::detail
