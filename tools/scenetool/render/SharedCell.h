#pragma once

#include "Sheet.h"

#include <cstddef>

namespace scenetool {

/// Passes a cell from a child process to its parent, in shared memory.
class SharedCell {
public:
    /// Makes room for a picture of that size. @throws std::system_error
    SharedCell(unsigned width, unsigned height);
    ~SharedCell();
    SharedCell(const SharedCell&) = delete;
    SharedCell& operator=(const SharedCell&) = delete;

    /// Called by the child. Truncates a long fault.
    void put(const SheetCell& cell);
    /// Called by the parent after the child has exited.
    SheetCell take() const;

private:
    struct Content;

    unsigned m_width;
    unsigned m_height;
    std::size_t m_size;
    Content* m_content;
};

} // namespace scenetool
