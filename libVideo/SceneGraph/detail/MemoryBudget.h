#pragma once

/// @file
/// A bound on the memory that a document can make a load take.

#include <cstdint>

namespace libVideo::detail {

/// Memory budget of the load running in this thread: 128 MiB plus 64 bytes per document byte, far more than any document
/// made to be shown needs. Only allocations that a few bytes of a document can inflate are charged: an array that many
/// elements share, a record of many components, a count that nothing backs.
///
/// Without a load, when a host builds a part of a scene by itself, everything is allowed.
class MemoryBudget {
public:
    /// The message of a loader for which the budget does not suffice.
    static constexpr const char* exceeded = "Asks for more memory than the size of the document allows";

    /// Becomes the budget of this thread until it is destroyed.
    MemoryBudget();
    ~MemoryBudget();
    MemoryBudget(const MemoryBudget&) = delete;
    MemoryBudget& operator=(const MemoryBudget&) = delete;

    /// The current load has opened a document of that many bytes.
    static void addDocument(std::uint64_t size);
    /// Takes some of what is left to the current load. @return false, with nothing taken, if that is not enough
    static bool take(std::uint64_t count, std::uint64_t bytesEach);

private:
    std::uint64_t m_left;
    MemoryBudget* m_before;
};

} // namespace libVideo::detail
