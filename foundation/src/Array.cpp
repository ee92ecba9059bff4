#include <vesk/Array.h>

#include <cstdio>

namespace vesk::detail {

namespace {

alignas(std::max_align_t) ArrayHeader emptyBlock{0, 0};

} // namespace

ArrayHeader* const noElements = &emptyBlock;

unsigned arrayCapacity(unsigned size, std::size_t elementSize)
{
    unsigned capacity = smallestArrayCapacity;
    while (capacity < size) {
        capacity *= 2;
        if (capacity == 0) {
            capacity = size; // past the last power of two
        }
    }
    if (capacity > (0xFFFFFFFFu - sizeof(ArrayHeader)) / elementSize) {
        throwArraySize(size);
    }
    return capacity;
}

ArrayHeader* allocateArray(unsigned size, unsigned capacity, std::size_t elementSize)
{
    void* const memory = ::operator new(sizeof(ArrayHeader) + capacity * elementSize, std::nothrow);
    if (memory == nullptr) {
        throwArraySize(size);
    }
    return new (memory) ArrayHeader{0, capacity};
}

void freeArray(ArrayHeader* block) noexcept
{
    ::operator delete(block);
}

void throwArraySize(unsigned size)
{
    // Out of memory, so the message is built on the stack.
    char message[40] = {}; // 25 characters and at most ten digits
    static_cast<void>(std::snprintf(message, sizeof(message), "Asked for array of size: %u", size));
    throw NullPointer(message);
}

void throwArrayIndex(unsigned count, unsigned index)
{
    throw IndexOutOfBounds(0, static_cast<int>(count) - 1, static_cast<int>(index));
}

} // namespace vesk::detail
