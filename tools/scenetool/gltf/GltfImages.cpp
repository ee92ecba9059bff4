#include "GltfImages.h"

#include "../render/Picture.h"
#include "../render/TextureFile.h"

#include <png.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

namespace scenetool {

namespace {

constexpr std::uintmax_t maxFileBytes = std::uintmax_t(256) << 20U;

std::string contentOf(const std::string& file)
{
    std::error_code error;
    const std::uintmax_t size =
        std::filesystem::is_regular_file(file, error) ? std::filesystem::file_size(file, error) : 0;
    if (error || size == 0 || size > maxFileBytes) {
        return {};
    }
    std::ifstream in(file, std::ios::binary);
    std::stringstream content;
    content << in.rdbuf();
    return content.str();
}

bool startsWith(const std::string& content, const char* start, std::size_t size)
{
    return content.size() >= size && std::memcmp(content.data(), start, size) == 0;
}

// Keeps alpha, unlike `writePicture` by default.
std::vector<unsigned char> pngOf(const Picture& picture)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = picture.width;
    image.height = picture.height;
    image.format = PNG_FORMAT_RGBA;
    png_alloc_size_t size = 0;
    if (png_image_write_get_memory_size(image, size, 0, picture.bytes.data(), 0, nullptr) == 0) {
        return {};
    }
    std::vector<unsigned char> bytes(size);
    if (png_image_write_to_memory(&image, bytes.data(), &size, 0, picture.bytes.data(), 0, nullptr) == 0) {
        return {};
    }
    bytes.resize(size);
    return bytes;
}

} // namespace

std::string GltfImages::fileOf(const std::string& reference) const
{
    std::string path;
    for (const std::string& document : m_documentFiles) {
        path = textureFile(document, reference);
        std::error_code error;
        if (std::filesystem::is_regular_file(path, error)) {
            break;
        }
    }
    return path;
}

std::optional<GltfImages::Entry> GltfImages::image(const std::string& reference)
{
    const std::string file = fileOf(reference);
    const auto known = m_entries.find(file);
    if (known != m_entries.end()) {
        return known->second;
    }
    std::optional<Entry> entry = read(file);
    if (!entry) {
        m_notes->add("image", "An image cannot be read, so its texture is left out: " + reference);
    }
    m_entries.emplace(file, entry);
    return entry;
}

std::optional<GltfImages::Entry> GltfImages::read(const std::string& file)
{
    const std::string content = contentOf(file);
    Picture picture;
    try {
        picture = readPicture(file); // also checks that the file is a valid image
    } catch (const PictureError&) {
        return std::nullopt;
    }
    Entry entry;
    for (std::size_t i = 3; i < picture.bytes.size() && !entry.hasAlpha; i += 4) {
        entry.hasAlpha = picture.bytes[i] != 0xFF;
    }
    const bool isPng = startsWith(content, "\x89PNG\r\n\x1a\n", 8);
    const bool isJpeg = startsWith(content, "\xFF\xD8\xFF", 3);
    std::size_t view = 0;
    if (isPng || isJpeg) {
        view = m_document->addView(content.data(), content.size(), GltfDocument::none);
    } else {
        const std::vector<unsigned char> bytes = pngOf(picture);
        if (bytes.empty()) {
            return std::nullopt;
        }
        view = m_document->addView(bytes.data(), bytes.size(), GltfDocument::none);
        m_notes->add(ConversionNotes::imageFormat, "Images in other formats are converted to PNG.");
    }
    entry.image = m_document->add("images", {{"bufferView", view},
                                             {"mimeType", isJpeg ? "image/jpeg" : "image/png"},
                                             {"name", std::filesystem::path(file).stem().string()}});
    return entry;
}

} // namespace scenetool
