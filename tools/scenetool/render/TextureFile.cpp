#include "TextureFile.h"

#include <filesystem>
#include <system_error>

namespace scenetool {

namespace {

int hexDigit(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::string percentDecoded(const std::string& text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = i + 2 < text.size() && text[i] == '%' ? hexDigit(text[i + 1]) : -1;
        const int low = high >= 0 ? hexDigit(text[i + 2]) : -1;
        if (low >= 0) {
            result += static_cast<char>(16 * high + low);
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

bool isFile(const std::filesystem::path& path)
{
    std::error_code error;
    return std::filesystem::is_regular_file(path, error);
}

} // namespace

std::string textureFile(const std::string& documentFile, const std::string& reference)
{
    std::string text = percentDecoded(reference);
    for (const char* const scheme : {"file://localhost/", "file:///", "file:/"}) {
        if (text.rfind(scheme, 0) == 0) {
            text = "/" + text.substr(std::string(scheme).size());
            break;
        }
    }
    if (text.rfind("file:", 0) == 0) {
        text.erase(0, 5);
    }
    const std::filesystem::path folder = std::filesystem::path(documentFile).parent_path();
    const std::filesystem::path path = text;
    for (const std::filesystem::path& place : {folder / path, folder / path.filename()}) {
        if (isFile(place)) {
            return place.string();
        }
    }
    return (folder / path).string();
}

} // namespace scenetool
