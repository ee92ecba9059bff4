#pragma once

/// @file
/// Limits the memory that a document can make a load allocate.

#include <cstdint>

namespace libVideo::detail {

/// Memory budget of the load running in this thread: 128 MiB plus 64 bytes per document byte, far more than any real
/// document needs. Only allocations that a few bytes of a document can inflate are charged: an array that many elements
/// share, a record of many components, a count without an array.
///
/// There is no limit outside of a load, when a host builds a part of a scene by itself.
class MemoryBudget {
public:
    /// The log message of a loader that exceeds the budget.
    static constexpr const char* exceeded = "Asks for more memory than the size of the document allows";

    /// Becomes the budget of this thread; the destructor restores the previous one.
    MemoryBudget();
    ~MemoryBudget();
    MemoryBudget(const MemoryBudget&) = delete;
    MemoryBudget& operator=(const MemoryBudget&) = delete;

    /// Raises the budget of the current load by its share for a document of `size` bytes.
    static void addDocument(std::uint64_t size);
    /// Charges the current load. @return false, without a charge, if the rest of the budget is too small
    static bool take(std::uint64_t count, std::uint64_t bytesEach);

private:
    std::uint64_t m_left;
    MemoryBudget* m_before;
};

} // namespace libVideo::detail
