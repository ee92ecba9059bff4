#include "Image.h"

#include <png.h>
#include <turbojpeg.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace testSupport {

namespace {

std::vector<unsigned char> bytesOf(const Image& image)
{
    std::vector<unsigned char> bytes;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            for (const int value : image.at(x, y)) {
                bytes.push_back(static_cast<unsigned char>(value));
            }
        }
    }
    return bytes;
}

} // namespace

const Pixel& Image::part(double x, double y) const
{
    return at(static_cast<int>(x * m_width), static_cast<int>(y * m_height));
}

std::size_t Image::place(int x, int y) const
{
    if (x < 0 || y < 0 || x >= m_width || y >= m_height) {
        throw std::out_of_range("no pixel " + std::to_string(x) + ", " + std::to_string(y));
    }
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x);
}

Image readPng(const std::string& path)
{
    png_image source{};
    source.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&source, path.c_str()) == 0) {
        throw std::runtime_error(path + ": " + source.message);
    }
    source.format = PNG_FORMAT_RGB;
    std::vector<unsigned char> bytes(PNG_IMAGE_SIZE(source));
    if (png_image_finish_read(&source, nullptr, bytes.data(), 0, nullptr) == 0) {
        throw std::runtime_error(path + ": " + source.message);
    }
    Image image(static_cast<int>(source.width), static_cast<int>(source.height));
    auto byte = bytes.cbegin();
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            for (int& value : image.at(x, y)) {
                value = *byte++;
            }
        }
    }
    return image;
}

std::vector<std::array<int, 4>> readPngWithAlpha(const std::string& path)
{
    png_image source{};
    source.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&source, path.c_str()) == 0) {
        throw std::runtime_error(path + ": " + source.message);
    }
    source.format = PNG_FORMAT_RGBA;
    std::vector<unsigned char> bytes(PNG_IMAGE_SIZE(source));
    if (png_image_finish_read(&source, nullptr, bytes.data(), 0, nullptr) == 0) {
        throw std::runtime_error(path + ": " + source.message);
    }
    std::vector<std::array<int, 4>> pixels;
    for (std::size_t i = 0; i + 3 < bytes.size(); i += 4) {
        pixels.push_back({bytes[i], bytes[i + 1], bytes[i + 2], bytes[i + 3]});
    }
    return pixels;
}

std::string pngOf(const Image& image)
{
    png_image target{};
    target.version = PNG_IMAGE_VERSION;
    target.width = static_cast<png_uint_32>(image.width());
    target.height = static_cast<png_uint_32>(image.height());
    target.format = PNG_FORMAT_RGB;
    const std::vector<unsigned char> bytes = bytesOf(image);
    std::string file(PNG_IMAGE_PNG_SIZE_MAX(target), '\0');
    png_alloc_size_t size = file.size();
    if (png_image_write_to_memory(&target, file.data(), &size, 0, bytes.data(), 0, nullptr) == 0) {
        throw std::runtime_error(target.message);
    }
    file.resize(size);
    return file;
}

std::string jpegOf(const Image& image)
{
    const std::unique_ptr<void, int (*)(void*)> encoder(tjInitCompress(), tjDestroy);
    const std::vector<unsigned char> bytes = bytesOf(image);
    unsigned char* data = nullptr;
    unsigned long size = 0;
    const int result = tjCompress2(encoder.get(), bytes.data(), image.width(), 0, image.height(), TJPF_RGB, &data,
                                   &size, TJSAMP_444, 100, 0);
    const std::unique_ptr<unsigned char, void (*)(unsigned char*)> owner(data, tjFree);
    if (result != 0) {
        throw std::runtime_error("no JPEG image");
    }
    return {data, data + size};
}

ImageDifference difference(const Image& a, const Image& b)
{
    ImageDifference result;
    if (a.width() != b.width() || a.height() != b.height() || a.width() == 0) {
        return result;
    }
    double sum = 0.0;
    double stray = 0.0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            int most = 0;
            for (std::size_t i = 0; i < 3; ++i) {
                const int distance = std::abs(a.at(x, y)[i] - b.at(x, y)[i]);
                sum += distance;
                most = std::max(most, distance);
            }
            stray += most > 32 ? 1.0 : 0.0;
        }
    }
    const double pixels = double(a.width()) * a.height();
    result.mean = sum / (3.0 * pixels);
    result.strayPart = stray / pixels;
    return result;
}

} // namespace testSupport
