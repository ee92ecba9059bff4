#pragma once

#include <cstdint>
#include <cstring>
#include <initializer_list>

#include <gtest/gtest.h>

namespace testSupport {

/// Where an object starts.
template <class T>
std::uintptr_t place(const T& object)
{
    return reinterpret_cast<std::uintptr_t>(&object);
}

/// That these follow each other in memory.
inline void expectAscending(std::initializer_list<const void*> places)
{
    const void* const* before = nullptr;
    for (const void* const& each : places) {
        if (before != nullptr) {
            EXPECT_LT(reinterpret_cast<std::uintptr_t>(*before), reinterpret_cast<std::uintptr_t>(each))
                << "member " << &each - places.begin();
        }
        before = &each;
    }
}

/// The place of a virtual operation among those of its class, as g++ and clang++ on 64-bit processors of this family lay
/// it out: a pointer to it starts with the place in bytes plus 1.
template <class Operation>
std::uintptr_t slotOf(Operation operation)
{
    std::uintptr_t word = 0;
    std::memcpy(&word, &operation, sizeof(word));
    return (word - 1) / sizeof(void*);
}

} // namespace testSupport
