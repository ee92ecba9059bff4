#include "MemoryBudget.h"

#include <limits>

namespace libVideo::detail {

namespace {

constexpr std::uint64_t bytesToStartWith = 134'217'728;
constexpr std::uint64_t bytesForEachOfADocument = 64;

thread_local MemoryBudget* currentBudget = nullptr;

std::uint64_t product(std::uint64_t a, std::uint64_t b)
{
    constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
    return b != 0 && a > largest / b ? largest : a * b;
}

} // namespace

MemoryBudget::MemoryBudget() : m_left(bytesToStartWith), m_before(currentBudget)
{
    currentBudget = this;
}

MemoryBudget::~MemoryBudget()
{
    currentBudget = m_before;
}

void MemoryBudget::addDocument(std::uint64_t size)
{
    if (currentBudget != nullptr) {
        currentBudget->m_left += product(size, bytesForEachOfADocument);
    }
}

bool MemoryBudget::take(std::uint64_t count, std::uint64_t bytesEach)
{
    if (currentBudget == nullptr) {
        return true;
    }
    const std::uint64_t bytes = product(count, bytesEach);
    if (bytes > currentBudget->m_left) {
        return false;
    }
    currentBudget->m_left -= bytes;
    return true;
}

} // namespace libVideo::detail
