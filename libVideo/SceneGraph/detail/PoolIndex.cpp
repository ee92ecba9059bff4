#include "PoolIndex.h"

namespace libVideo::detail {

unsigned NoCase::hash(const vesk::String& text)
{
    unsigned hash = 2166136261u;
    for (unsigned i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text.data()[i]);
        const bool isUpper = byte >= 'A' && byte <= 'Z';
        hash = (hash ^ (isUpper ? byte + 32u : byte)) * 16777619u;
    }
    return hash ^ (hash >> 15u);
}

} // namespace libVideo::detail
