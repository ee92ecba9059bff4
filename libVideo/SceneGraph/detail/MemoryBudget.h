#pragma once

/// @file
/// A bound on the memory that a document can make a load take.

#include <cstdint>

namespace libVideo::detail {

/// What the load that runs in this thread may still allocate for things that a few bytes of a document can ask for: an
/// array that many elements share, a record of many components, a count that nothing backs. It is a multiple of the
/// size of the documents that were opened, and far beyond what any of them needs that was made to be shown.
///
/// Without a load, when a host builds a part of a scene by itself, everything is allowed.
class MemoryBudget {
public:
    /// Stands for the current load of this thread from here to its end.
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
