#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

namespace testSupport {

/// An object that is default-constructed in memory without zero bytes.
template <class T>
class MadeInUsedMemory {
public:
    MadeInUsedMemory() : m_memory(new Memory)
    {
        // The compiler cannot see into the call, so it cannot drop writes before the object's lifetime.
        static void* (*const volatile fill)(void*, int, std::size_t) = std::memset;
        fill(m_memory.get(), 0xA5, sizeof(T));
        m_object = new (m_memory.get()) T;
    }
    ~MadeInUsedMemory() { m_object->~T(); }
    MadeInUsedMemory(const MadeInUsedMemory&) = delete;
    MadeInUsedMemory& operator=(const MadeInUsedMemory&) = delete;
    T& operator*() const { return *m_object; }

private:
    struct alignas(T) Memory {
        unsigned char bytes[sizeof(T)];
    };

    std::unique_ptr<Memory> m_memory;
    T* m_object;
};

} // namespace testSupport
