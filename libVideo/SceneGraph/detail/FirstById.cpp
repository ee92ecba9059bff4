#include "FirstById.h"

#include "HashMix.h"

#include <cstdint>

namespace libVideo::detail {

unsigned NoCase::hash(const vesk::String& text)
{
    std::uint64_t state = hashSeed();
    for (unsigned i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text.data()[i]);
        const bool isUpper = byte >= 'A' && byte <= 'Z';
        state = hashMix(state, isUpper ? byte + 32u : byte);
    }
    return static_cast<unsigned>(state >> 32u);
}

} // namespace libVideo::detail
