#include "Printable.h"

namespace scenetool {

std::string printable(const std::string& text)
{
    std::string result = text;
    unsigned char before = 0;
    for (char& c : result) {
        const auto byte = static_cast<unsigned char>(c);
        // C2 leads the second set of control characters, 80 to 9F, in UTF-8.
        if (byte < 0x20u || byte == 0x7Fu || (before == 0xC2u && byte >= 0x80u && byte < 0xA0u)) {
            c = '?';
        }
        before = byte;
    }
    return result;
}

} // namespace scenetool
