#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace testSupport {

/// Red, green and blue from 0 to 255.
using Pixel = std::array<int, 3>;

/// A picture in memory with access to single pixels.
class Image {
public:
    Image() = default;
    /// All black.
    Image(int width, int height) : m_width(width), m_height(height), m_pixels(std::size_t(width) * std::size_t(height))
    {}

    int width() const { return m_width; }
    int height() const { return m_height; }
    /// Counted from the upper left corner. @throws std::out_of_range
    Pixel& at(int x, int y) { return m_pixels.at(place(x, y)); }
    const Pixel& at(int x, int y) const { return m_pixels.at(place(x, y)); }
    /// The pixel at fractions of width and height, from 0 at the left and the top to 1.
    const Pixel& part(double x, double y) const;

private:
    std::size_t place(int x, int y) const;

    int m_width = 0;
    int m_height = 0;
    std::vector<Pixel> m_pixels;
};

/// @throws std::runtime_error if the file is no PNG image
Image readPng(const std::string& path);
/// Red, green, blue and alpha of each pixel, row by row from the top. @throws std::runtime_error
std::vector<std::array<int, 4>> readPngWithAlpha(const std::string& path);
/// The bytes of a PNG file.
std::string pngOf(const Image& image);
/// The bytes of a JPEG file of the best quality.
std::string jpegOf(const Image& image);

/// The difference of two pictures of the same size.
struct ImageDifference {
    double mean = 255.0;    ///< mean difference of the channels
    double strayPart = 1.0; ///< share of the pixels with a channel that differs by more than 32
};

/// The greatest values if the sizes differ.
ImageDifference difference(const Image& a, const Image& b);

} // namespace testSupport
