#pragma once

#include "../render/Sheet.h"

#include <cstddef>

namespace scenetool {

/// The way of a cell from a child process to its parent: memory that both have.
class SharedCell {
public:
    /// Room for a picture of that size. @throws std::system_error
    SharedCell(unsigned width, unsigned height);
    ~SharedCell();
    SharedCell(const SharedCell&) = delete;
    SharedCell& operator=(const SharedCell&) = delete;

    /// In the child; a longer fault is cut.
    void put(const SheetCell& cell);
    /// In the parent, when the child is done.
    SheetCell take() const;

private:
    struct Content;

    unsigned m_width;
    unsigned m_height;
    std::size_t m_size;
    Content* m_content;
};

} // namespace scenetool
