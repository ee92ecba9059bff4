#include <cstddef>
#include <cstdlib>
#include <new>

// The document model leaves some values uninitialized if their text is no number. Zeroed memory makes both trees equal
// then.
void* operator new(std::size_t size)
{
    void* const memory = std::calloc(1, size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return std::calloc(1, size == 0 ? 1 : size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}
