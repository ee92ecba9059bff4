#include "Lines.h"

#include <algorithm>

namespace libPrepare {

Lines::Lines(std::string_view text) : m_size(text.size())
{
    if (!text.empty()) {
        m_starts.push_back(0);
    }
    for (std::size_t at = text.find('\n'); at != std::string_view::npos; at = text.find('\n', at + 1)) {
        m_starts.push_back(at + 1);
    }
}

std::pair<unsigned, unsigned> Lines::at(std::size_t offset) const
{
    if (m_starts.empty()) {
        return {0, 0};
    }
    const auto after = std::upper_bound(m_starts.begin(), m_starts.end(), offset);
    return {static_cast<unsigned>(after - m_starts.begin()), static_cast<unsigned>(offset - *(after - 1) + 1)};
}

} // namespace libPrepare
