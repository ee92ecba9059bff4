#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace scenetool {

/// Thrown if a picture cannot be drawn, read or written. The message is one line.
class PictureError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Pixels of one byte each for red, green, blue and alpha, row by row from the top.
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

/// Maximum width and height of a picture that is drawn or read.
constexpr unsigned maxPictureSize = 8192;

/// Reads a PNG, JPEG, TGA, BMP, GIF or PSD file, whatever its extension. Of an animated one it reads the first picture.
/// @throws PictureError
Picture readPicture(const std::string& path);

/// The path that stands for standard output.
constexpr const char* standardOutput = "-";

/// Writes a PNG file completely or not at all. An existing file is replaced.
/// @param path of the file, or `standardOutput`
/// @param hasAlpha keeps the alpha, by which the colors of the picture have been multiplied; otherwise all is opaque
/// @throws PictureError, also if the path names something other than a file
void writePicture(const Picture& picture, const std::string& path, bool hasAlpha = false);

} // namespace scenetool
