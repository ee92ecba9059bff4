#include "Printable.h"

namespace scenetool {

std::string printable(const std::string& text)
{
    std::string result = text;
    unsigned char before = 0;
    for (char& c : result) {
        const auto byte = static_cast<unsigned char>(c);
        // In UTF-8, the control characters U+0080 to U+009F begin with C2.
        if (byte < 0x20u || byte == 0x7Fu || (before == 0xC2u && byte >= 0x80u && byte < 0xA0u)) {
            c = '?';
        }
        before = byte;
    }
    return result;
}

} // namespace scenetool
