#include "Pixmap.h"

#include <cstddef>
#include <fstream>
#include <ios>
#include <stdexcept>

namespace docsTests {

Pixmap::Pixmap(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::string magic;
    int most = 0;
    file >> magic >> m_width >> m_height >> most;
    file.get();
    if (magic != "P6" || most != 255 || m_width <= 0 || m_height <= 0) {
        throw std::runtime_error("no picture in " + path);
    }
    m_bytes.resize(std::size_t(m_width) * std::size_t(m_height) * 3);
    file.read(m_bytes.data(), static_cast<std::streamsize>(m_bytes.size()));
    if (!file) {
        throw std::runtime_error("the picture is cut: " + path);
    }
}

Color Pixmap::at(int column, int row) const
{
    const std::size_t start = (std::size_t(row) * std::size_t(m_width) + std::size_t(column)) * 3;
    const auto byte = [this, start](std::size_t i) { return int(static_cast<unsigned char>(m_bytes.at(start + i))); };
    return {byte(0), byte(1), byte(2)};
}

} // namespace docsTests
