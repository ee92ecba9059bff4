#include "HashMix.h"

#include <exception>
#include <random>

namespace libVideo::detail {

std::uint64_t hashSeed()
{
    static const std::uint64_t seed = [] {
        try {
            std::random_device device;
            return std::uint64_t{device()} << 32u | device();
        } catch (const std::exception&) {
            // No source of random numbers. The address of this function is hard to guess, too.
            return static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(&hashSeed));
        }
    }();
    return seed;
}

} // namespace libVideo::detail
