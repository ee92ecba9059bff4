#include "Reference.h"

#include <algorithm>

namespace libPrepare {

namespace {

int hexDigit(char character)
{
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    const char lower = static_cast<char>(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Whether a percent sign with two digits is at a place.
bool isEncoded(std::string_view text, std::size_t at)
{
    return text[at] == '%' && at + 2 < text.size() && hexDigit(text[at + 1]) >= 0 && hexDigit(text[at + 2]) >= 0;
}

bool isPathCharacter(char character)
{
    const char lower = static_cast<char>(character | 0x20);
    return (character >= '0' && character <= '9') || (lower >= 'a' && lower <= 'z' && (character & 0x40) != 0) ||
           std::string_view("/-._~!$&'()*+,;=:@").find(character) != std::string_view::npos;
}

void appendEncoded(std::string& target, char character)
{
    constexpr char digits[] = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(character);
    target += '%';
    target += digits[byte >> 4U];
    target += digits[byte & 15U];
}

} // namespace

std::string percentDecoded(std::string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isEncoded(text, i)) {
            result += static_cast<char>(16 * hexDigit(text[i + 1]) + hexDigit(text[i + 2]));
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

std::string percentEncoded(std::string_view path)
{
    std::string result;
    for (const char character : path) {
        if (isPathCharacter(character)) {
            result += character;
        } else {
            appendEncoded(result, character);
        }
    }
    return result;
}

std::string withSlashes(std::string path)
{
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

bool isReadableReference(std::string_view reference)
{
    for (std::size_t i = 0; i < reference.size(); ++i) {
        const bool isInnerBlank = reference[i] == ' ' && i > 0 && i + 1 < reference.size();
        if (!isPathCharacter(reference[i]) && !isEncoded(reference, i) && !isInnerBlank) {
            return false;
        }
    }
    return !reference.empty();
}

std::string readableReference(std::string_view reference)
{
    std::string result;
    for (std::size_t i = 0; i < reference.size(); ++i) {
        const bool isInnerBlank = reference[i] == ' ' && i > 0 && i + 1 < reference.size();
        if (reference[i] == '\\') {
            result += '/';
        } else if (isPathCharacter(reference[i]) || isEncoded(reference, i) || isInnerBlank || reference[i] == '?' ||
                   (reference[i] == '#' && result.find('#') == std::string::npos)) {
            result += reference[i];
        } else {
            appendEncoded(result, reference[i]);
        }
    }
    return result;
}

} // namespace libPrepare
