#include "Picture.h"

#include <png.h>
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

constexpr std::uintmax_t mostFileSize = 268435456;

std::string lastError()
{
    return std::generic_category().message(errno);
}

std::vector<unsigned char> readFile(const std::string& path)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        throw PictureError(std::filesystem::exists(path, error) ? "is no file" : "does not exist");
    }
    if (std::filesystem::file_size(path, error) > mostFileSize || error) {
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
    if (width == 0 || height == 0 || width > mostPictureSize || height > mostPictureSize) {
        throw PictureError("is " + std::to_string(width) + " by " + std::to_string(height) + " pixels, where " +
                           std::to_string(mostPictureSize) + " are the most");
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
        throw PictureError(std::string("is no JPEG image that can be read: ") + tjGetErrorStr2(decoder.get()));
    };
    if (tjDecompressHeader3(decoder.get(), bytes.data(), size, &width, &height, &sampling, &colors) != 0) {
        fail();
    }
    checkSize(static_cast<unsigned>(std::max(width, 0)), static_cast<unsigned>(std::max(height, 0)));
    Picture picture(static_cast<unsigned>(width), static_cast<unsigned>(height));
    // A warning leaves the image with a flaw, which is better than none.
    if (tjDecompress2(decoder.get(), bytes.data(), size, picture.bytes.data(), width, 0, height, TJPF_RGBA, 0) != 0 &&
        tjGetErrorCode(decoder.get()) == TJERR_FATAL) {
        fail();
    }
    return picture;
}

// A new file beside the one that it becomes, gone again unless it is kept.
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
            std::fclose(m_file); // NOLINT(cert-err33-c): nobody wants the file any more
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
    throw PictureError("is neither a PNG nor a JPEG image");
}

void writePicture(const Picture& picture, const std::string& path)
{
    std::error_code error;
    if (std::filesystem::exists(path, error) && !std::filesystem::is_regular_file(path, error)) {
        throw PictureError("cannot write " + path + ": it is no file");
    }
    std::vector<unsigned char> colors;
    colors.reserve(3 * (picture.bytes.size() / 4));
    for (std::size_t i = 0; i < picture.bytes.size(); ++i) {
        if (i % 4 != 3) {
            colors.push_back(picture.bytes[i]);
        }
    }
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = picture.width;
    image.height = picture.height;
    image.format = PNG_FORMAT_RGB;
    NewFile file(path);
    if (file.stream() == nullptr ||
        png_image_write_to_stdio(&image, file.stream(), 0, colors.data(), 0, nullptr) == 0) {
        throw PictureError("cannot write " + path + ": " + image.message);
    }
    file.keep();
}

} // namespace scenetool
