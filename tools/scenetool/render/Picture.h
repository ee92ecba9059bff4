#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace scenetool {

/// What keeps a picture from being drawn, read or written, in one line.
class PictureError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Red, green, blue and alpha, a byte each, row by row from the top.
struct Picture {
    Picture() = default;
    /// All black and transparent.
    Picture(unsigned pictureWidth, unsigned pictureHeight)
        : width(pictureWidth), height(pictureHeight), bytes(4 * std::size_t(pictureWidth) * pictureHeight)
    {}

    unsigned char* row(unsigned y) { return bytes.data() + 4 * std::size_t(width) * y; }
    const unsigned char* row(unsigned y) const { return bytes.data() + 4 * std::size_t(width) * y; }

    unsigned width = 0;
    unsigned height = 0;
    std::vector<unsigned char> bytes;
};

/// Largest width and height that is drawn or read.
constexpr unsigned mostPictureSize = 8192;

/// Reads a PNG, JPEG, TGA, BMP, GIF or PSD file, told by what is in it. Of moving ones it is the first picture.
/// @throws PictureError
Picture readPicture(const std::string& path);

/// Writes to standard output in place of a file.
constexpr const char* standardOutput = "-";

/// Writes a PNG file. It appears, or replaces the one before, when it is whole.
/// @param path of the file, or `standardOutput`
/// @param hasAlpha keeps the alpha, by which the colors of the picture are multiplied already; else all is opaque
/// @throws PictureError, also for a path that names something else than a file
void writePicture(const Picture& picture, const std::string& path, bool hasAlpha = false);

} // namespace scenetool
