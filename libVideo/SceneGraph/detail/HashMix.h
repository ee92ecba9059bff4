#pragma once

/// @file
/// Hashes for tables whose keys come from a document, and whose order is never visible. They start with a random seed,
/// so that no document can choose keys that collide: all 128 bits of each product return to the state, so how a
/// difference between two keys spreads depends on the seed.

#include <cstdint>

namespace libVideo::detail {

/// The initial state of a hash: random, and the same for the whole process.
std::uint64_t hashSeed();

/// The state of a hash after the next word.
inline std::uint64_t hashMix(std::uint64_t state, std::uint64_t word)
{
    __extension__ using Product = unsigned __int128;
    const Product product = Product(state ^ word) * 0x9E3779B97F4A7C15u;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64u);
}

} // namespace libVideo::detail
