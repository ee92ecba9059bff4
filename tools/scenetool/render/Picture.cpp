#include "Picture.h"

#include <png.h>
#include <stb/stb_image.h>
#include <turbojpeg.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <system_error>

namespace scenetool {

namespace {

constexpr std::uintmax_t maxFileSize = 268435456;

std::string lastError()
{
    return std::generic_category().message(errno);
}

std::vector<unsigned char> readFile(const std::string& path)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        throw PictureError(std::filesystem::exists(path, error) ? "is not a file" : "does not exist");
    }
    if (std::filesystem::file_size(path, error) > maxFileSize || error) {
        throw PictureError("is too large");
    }
    std::ifstream file(path, std::ios::binary);
    std::vector<unsigned char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.is_open() || file.bad()) {
        throw PictureError("cannot be read");
    }
    return bytes;
}

void checkSize(unsigned width, unsigned height)
{
    if (width == 0 || height == 0 || width > maxPictureSize || height > maxPictureSize) {
        throw PictureError("is " + std::to_string(width) + " by " + std::to_string(height) + " pixels, more than " +
                           std::to_string(maxPictureSize) + " per side");
    }
}

Picture readPng(const std::vector<unsigned char>& bytes)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    const std::unique_ptr<png_image, void (*)(png_image*)> guard(&image, png_image_free);
    if (png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()) == 0) {
        throw PictureError(std::string("is no PNG image that can be read: ") + image.message);
    }
    checkSize(image.width, image.height);
    image.format = PNG_FORMAT_RGBA;
    Picture picture(image.width, image.height);
    if (png_image_finish_read(&image, nullptr, picture.bytes.data(), 0, nullptr) == 0) {
        throw PictureError(std::string("is no PNG image that can be read: ") + image.message);
    }
    return picture;
}

Picture readJpeg(const std::vector<unsigned char>& bytes)
{
    struct Close {
        void operator()(void* decoder) const { tjDestroy(decoder); }
    };
    const std::unique_ptr<void, Close> decoder(tjInitDecompress());
    const auto size = static_cast<unsigned long>(bytes.size());
    int width = 0;
    int height = 0;
    int sampling = 0;
    int colors = 0;
    const auto fail = [&decoder] {
        throw PictureError(std::string("is not a readable JPEG image: ") + tjGetErrorStr2(decoder.get()));
    };
    if (tjDecompressHeader3(decoder.get(), bytes.data(), size, &width, &height, &sampling, &colors) != 0) {
        fail();
    }
    checkSize(static_cast<unsigned>(std::max(width, 0)), static_cast<unsigned>(std::max(height, 0)));
    Picture picture(static_cast<unsigned>(width), static_cast<unsigned>(height));
    // A warning means a damaged image, which is better than none.
    if (tjDecompress2(decoder.get(), bytes.data(), size, picture.bytes.data(), width, 0, height, TJPF_RGBA, 0) != 0 &&
        tjGetErrorCode(decoder.get()) == TJERR_FATAL) {
        fail();
    }
    return picture;
}

// Reads the formats that need no library of their own.
Picture readOther(const std::vector<unsigned char>& bytes)
{
    const auto size = static_cast<int>(bytes.size()); // fits, because files are limited to `maxFileSize`
    int width = 0;
    int height = 0;
    int channels = 0;
    if (stbi_info_from_memory(bytes.data(), size, &width, &height, &channels) == 0) {
        throw PictureError("is not an image in a supported format (PNG, JPEG, TGA, BMP, GIF, PSD)");
    }
    checkSize(static_cast<unsigned>(std::max(width, 0)), static_cast<unsigned>(std::max(height, 0)));
    const std::unique_ptr<stbi_uc, void (*)(void*)> pixels(
        stbi_load_from_memory(bytes.data(), size, &width, &height, &channels, STBI_rgb_alpha), stbi_image_free);
    if (pixels == nullptr) {
        throw PictureError(std::string("is not a readable image: ") + stbi_failure_reason());
    }
    Picture picture(static_cast<unsigned>(width), static_cast<unsigned>(height));
    std::copy_n(pixels.get(), picture.bytes.size(), picture.bytes.data());
    return picture;
}

// A temporary file next to its final path. It is removed unless it is kept.
class NewFile {
public:
    explicit NewFile(const std::string& path) : m_path(path), m_name(path + ".XXXXXX")
    {
        const int number = mkstemp(m_name.data());
        if (number < 0) {
            throw PictureError("cannot write " + m_path + ": " + lastError());
        }
        const mode_t mask = umask(0);
        umask(mask);
        fchmod(number, 0666u & ~mask);
        m_file = fdopen(number, "wb");
        if (m_file == nullptr) {
            close(number);
        }
    }
    ~NewFile()
    {
        if (m_file != nullptr) {
            std::fclose(m_file); // NOLINT(cert-err33-c): the file is removed
        }
        if (!m_isKept) {
            unlink(m_name.c_str());
        }
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    FILE* stream() const { return m_file; }
    void keep()
    {
        FILE* const file = m_file;
        m_file = nullptr;
        if (file == nullptr || std::fclose(file) != 0 || std::rename(m_name.c_str(), m_path.c_str()) != 0) {
            throw PictureError("cannot write " + m_path + ": " + lastError());
        }
        m_isKept = true;
    }

private:
    std::string m_path;
    std::string m_name;
    FILE* m_file = nullptr;
    bool m_isKept = false;
};

std::vector<unsigned char> withoutAlpha(const Picture& picture)
{
    std::vector<unsigned char> colors;
    colors.reserve(3 * (picture.bytes.size() / 4));
    for (std::size_t i = 0; i < picture.bytes.size(); ++i) {
        if (i % 4 != 3) {
            colors.push_back(picture.bytes[i]);
        }
    }
    return colors;
}

// PNG stores colors that are not multiplied by alpha.
std::vector<unsigned char> withStraightAlpha(const Picture& picture)
{
    std::vector<unsigned char> bytes = picture.bytes;
    for (std::size_t i = 0; i + 3 < bytes.size(); i += 4) {
        const unsigned alpha = bytes[i + 3];
        for (std::size_t k = i; k < i + 3 && alpha > 0; ++k) {
            bytes[k] = static_cast<unsigned char>(std::min(255u, (bytes[k] * 255u + alpha / 2) / alpha));
        }
    }
    return bytes;
}

} // namespace

Picture readPicture(const std::string& path)
{
    const std::vector<unsigned char> bytes = readFile(path);
    const auto startsWith = [&bytes](const char* mark) {
        const std::size_t size = std::strlen(mark);
        return bytes.size() >= size && std::memcmp(bytes.data(), mark, size) == 0;
    };
    if (startsWith("\x89PNG")) {
        return readPng(bytes);
    }
    if (startsWith("\xFF\xD8\xFF")) {
        return readJpeg(bytes);
    }
    return readOther(bytes);
}

void writePicture(const Picture& picture, const std::string& path, bool hasAlpha)
{
    std::error_code error;
    const bool isFile = path != standardOutput;
    if (isFile && std::filesystem::exists(path, error) && !std::filesystem::is_regular_file(path, error)) {
        throw PictureError("cannot write " + path + ": it is not a file");
    }
    const std::vector<unsigned char> bytes = hasAlpha ? withStraightAlpha(picture) : withoutAlpha(picture);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = picture.width;
    image.height = picture.height;
    image.format = hasAlpha ? PNG_FORMAT_RGBA : PNG_FORMAT_RGB;
    const auto write = [&](FILE* stream) {
        if (stream == nullptr || png_image_write_to_stdio(&image, stream, 0, bytes.data(), 0, nullptr) == 0) {
            throw PictureError("cannot write " + (isFile ? path : "to standard output") + ": " + image.message);
        }
    };
    if (!isFile) {
        write(stdout);
        if (std::fflush(stdout) != 0) {
            throw PictureError("cannot write to standard output: " + lastError());
        }
        return;
    }
    NewFile file(path);
    write(file.stream());
    file.keep();
}

} // namespace scenetool
