#include "FailingAllocator.h"

#include <cstdlib>
#include <new>

namespace {

thread_local bool isArmed = false;
thread_local long requestCount = 0;
thread_local long failAt = -1;
thread_local bool failsForGood = false;

void* allocate(std::size_t size) noexcept
{
    if (isArmed) {
        const long request = requestCount;
        ++requestCount;
        if (request == failAt || (failsForGood && failAt >= 0 && request > failAt)) {
            return nullptr;
        }
    }
    return std::malloc(size == 0 ? 1 : size);
}

void* allocateOrThrow(std::size_t size)
{
    void* const memory = allocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

} // namespace

void* operator new(std::size_t size)
{
    return allocateOrThrow(size);
}

void* operator new[](std::size_t size)
{
    return allocateOrThrow(size);
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return allocate(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept
{
    std::free(memory);
}

namespace testSupport {

FailingAllocator::FailingAllocator(long successes, Failure failure)
{
    requestCount = 0;
    failAt = successes;
    failsForGood = failure == Failure::forGood;
    isArmed = true;
}

FailingAllocator::~FailingAllocator()
{
    isArmed = false;
}

long FailingAllocator::requests() const
{
    return requestCount;
}

bool FailingAllocator::hasFailed() const
{
    return failAt >= 0 && requestCount > failAt;
}

} // namespace testSupport
