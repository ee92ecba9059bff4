#pragma once

/// @file
/// Hashes of what a document holds, for tables whose order nobody sees. They differ from process to process, so that no
/// document can be written whose keys all share one: all 128 bits of each product come back into the state, so a
/// difference of two keys spreads in a way that depends on the start.

#include <cstdint>

namespace libVideo::detail {

/// Where a hash starts; the same for the life of the process.
std::uint64_t hashSeed();

/// Takes the next word into a hash.
inline std::uint64_t hashMix(std::uint64_t state, std::uint64_t word)
{
    __extension__ using Product = unsigned __int128;
    const Product product = Product(state ^ word) * 0x9E3779B97F4A7C15u;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64u);
}

} // namespace libVideo::detail
