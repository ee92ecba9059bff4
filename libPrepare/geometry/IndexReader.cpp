#include "IndexReader.h"

#include <algorithm>

namespace libPrepare {

std::int32_t IndexReader::manyDigits(const char* start, const char* end)
{
    constexpr std::uint64_t limit = std::uint64_t(1) << 31;
    constexpr std::ptrdiff_t maxDigits = 18; // of a number that cannot overflow
    const char* const first = std::find_if(start, end - 1, [](char digit) { return digit != '0'; });
    if (end - first > maxDigits || !std::all_of(first, end, [](char c) { return c >= '0' && c <= '9'; })) {
        return -1;
    }
    std::uint64_t value = 0;
    for (const char* at = first; at != end; ++at) {
        value = 10 * value + static_cast<std::uint64_t>(*at - '0');
    }
    return value < limit ? static_cast<std::int32_t>(value) : -1;
}

} // namespace libPrepare
