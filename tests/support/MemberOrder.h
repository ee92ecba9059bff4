#pragma once

#include <cstdint>
#include <cstring>
#include <initializer_list>

#include <gtest/gtest.h>

namespace testSupport {

/// The address of an object.
template <class T>
std::uintptr_t place(const T& object)
{
    return reinterpret_cast<std::uintptr_t>(&object);
}

/// Expects these members to follow each other in memory.
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

/// The index of a virtual function in the table of its class. With g++ and clang++ on x86-64, a pointer to it starts
/// with the offset in the table plus 1.
template <class Operation>
std::uintptr_t slotOf(Operation operation)
{
    std::uintptr_t word = 0;
    std::memcpy(&word, &operation, sizeof(word));
    return (word - 1) / sizeof(void*);
}

} // namespace testSupport
