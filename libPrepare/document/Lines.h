#pragma once

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace libPrepare {

/// Where the lines of a text begin.
class Lines {
public:
    Lines() = default;
    explicit Lines(std::string_view text);

    bool isEmpty() const { return m_starts.empty(); }
    /// Bytes of the text.
    std::size_t size() const { return m_size; }
    /// Line and column of a byte, both from 1; columns count bytes.
    std::pair<unsigned, unsigned> at(std::size_t offset) const;

private:
    std::vector<std::size_t> m_starts;
    std::size_t m_size = 0;
};

} // namespace libPrepare
