#pragma once

/// @file
/// Sixteen bytes at a step, for loops over the long texts of a document.

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace libVideo::detail {

/// Operators work on all bytes at once; a comparison gives 0xFF where it holds and 0 where it does not.
using Bytes = unsigned char __attribute__((vector_size(16)));
using ByteMask = decltype(Bytes() == Bytes());

inline Bytes bytesAt(const char* text)
{
    Bytes bytes;
    std::memcpy(&bytes, text, sizeof(bytes));
    return bytes;
}

inline bool isAnySet(const ByteMask& mask)
{
    std::uint64_t halves[2];
    static_assert(sizeof(halves) == sizeof(mask));
    std::memcpy(halves, &mask, sizeof(mask));
    return (halves[0] | halves[1]) != 0;
}

/// What separates the tokens of a list.
inline ByteMask areBlank(const Bytes& bytes)
{
    return (bytes == ' ') | (bytes == '\t') | (bytes == '\n') | (bytes == '\r');
}

} // namespace libVideo::detail
