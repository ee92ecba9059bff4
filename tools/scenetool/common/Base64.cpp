#include "Base64.h"

namespace scenetool {

std::string base64(const unsigned char* bytes, std::size_t size)
{
    static constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string result;
    result.reserve((size + 2) / 3 * 4);
    for (std::size_t i = 0; i < size; i += 3) {
        const std::size_t left = size - i;
        const unsigned group = (unsigned(bytes[i]) << 16u) | (left > 1 ? unsigned(bytes[i + 1]) << 8u : 0u) |
                               (left > 2 ? unsigned(bytes[i + 2]) : 0u);
        result += digits[group >> 18u];
        result += digits[(group >> 12u) & 63u];
        result += left > 1 ? digits[(group >> 6u) & 63u] : '=';
        result += left > 2 ? digits[group & 63u] : '=';
    }
    return result;
}

} // namespace scenetool
