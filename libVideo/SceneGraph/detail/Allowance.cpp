#include "Allowance.h"

#include <limits>

namespace libVideo::detail {

namespace {

constexpr std::uint64_t bytesToStartWith = 134'217'728;
constexpr std::uint64_t bytesForEachOfADocument = 64;

thread_local Allowance* currentAllowance = nullptr;

std::uint64_t product(std::uint64_t a, std::uint64_t b)
{
    constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    return b != 0 && a > most / b ? most : a * b;
}

} // namespace

Allowance::Allowance() : m_left(bytesToStartWith), m_before(currentAllowance)
{
    currentAllowance = this;
}

Allowance::~Allowance()
{
    currentAllowance = m_before;
}

void Allowance::addDocument(std::uint64_t size)
{
    if (currentAllowance != nullptr) {
        currentAllowance->m_left += product(size, bytesForEachOfADocument);
    }
}

bool Allowance::take(std::uint64_t count, std::uint64_t bytesEach)
{
    if (currentAllowance == nullptr) {
        return true;
    }
    const std::uint64_t bytes = product(count, bytesEach);
    if (bytes > currentAllowance->m_left) {
        return false;
    }
    currentAllowance->m_left -= bytes;
    return true;
}

} // namespace libVideo::detail
