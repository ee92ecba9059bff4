#include "SharedCell.h"

#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace scenetool {

struct SharedCell::Content {
    bool hasPicture;
    char fault[255]; // zero-terminated
    unsigned char pixels[1];
};

SharedCell::SharedCell(unsigned width, unsigned height)
    : m_width(width), m_height(height), m_size(sizeof(Content) + std::size_t{4} * width * height)
{
    void* const memory = mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::system_error(errno, std::generic_category(), "no memory to share");
    }
    m_content = static_cast<Content*>(memory); // zeroed
}

SharedCell::~SharedCell()
{
    munmap(m_content, m_size);
}

void SharedCell::put(const SheetCell& cell)
{
    const std::size_t length = std::min(cell.fault.size(), sizeof(m_content->fault) - 1);
    std::memcpy(m_content->fault, cell.fault.data(), length);
    m_content->fault[length] = '\0';
    if (cell.picture && cell.picture->width == m_width && cell.picture->height == m_height) {
        std::memcpy(m_content->pixels, cell.picture->bytes.data(), cell.picture->bytes.size());
        m_content->hasPicture = true;
    }
}

SheetCell SharedCell::take() const
{
    SheetCell cell;
    cell.fault = m_content->fault;
    if (m_content->hasPicture) {
        cell.picture.emplace(m_width, m_height);
        std::memcpy(cell.picture->bytes.data(), m_content->pixels, cell.picture->bytes.size());
    }
    return cell;
}

} // namespace scenetool
