#pragma once

#include <string>
#include <vector>

namespace docsTests {

struct Color {
    int red;
    int green;
    int blue;
};

/// A picture as the example writes it: a portable pixmap.
class Pixmap {
public:
    /// @throws std::runtime_error if the file is no such picture, or is cut
    explicit Pixmap(const std::string& path);

    int width() const { return m_width; }
    int height() const { return m_height; }
    /// Of a column from the left and a row from the top.
    Color at(int column, int row) const;

private:
    int m_width = 0;
    int m_height = 0;
    std::vector<char> m_bytes;
};

} // namespace docsTests
