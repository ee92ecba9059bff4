#pragma once

#include "ByteBlock.h"
#include "Numbers.h"

#include <cstdint>
#include <string_view>

namespace libPrepare {

/// Calls `use` with the begin and the end of each word of a list until it returns false.
template <class Use>
void forEachWord(std::string_view list, const Use& use)
{
    const char* const end = list.data() + list.size();
    const char* start = list.data(); // of the next word
    const char* at = start;
    for (; end - at >= static_cast<std::ptrdiff_t>(ByteBlock::size); at += ByteBlock::size) {
        for (std::uint64_t blanks = ByteBlock(at).blanks(); blanks != 0; blanks &= blanks - 1) {
            const char* const blank = at + __builtin_ctzll(blanks);
            if (blank != start && !use(start, blank)) {
                return;
            }
            start = blank + 1;
        }
    }
    for (; at != end; ++at) {
        if (isBlank(*at)) {
            if (at != start && !use(start, at)) {
                return;
            }
            start = at + 1;
        }
    }
    if (start != end) {
        use(start, end);
    }
}

} // namespace libPrepare
