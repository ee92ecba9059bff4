#pragma once

namespace testSupport {

/// While it lives, counts what this thread asks of `operator new` and lets one request fail: the one that comes behind
/// `successes` others. The throwing forms then throw `std::bad_alloc`, the others give null. Test programs that link
/// the source file of this class have its operators.
class FailingAllocator {
public:
    /// @param successes how many requests are served before one fails; negative: none fails
    explicit FailingAllocator(long successes);
    ~FailingAllocator();
    FailingAllocator(const FailingAllocator&) = delete;
    FailingAllocator& operator=(const FailingAllocator&) = delete;

    /// Requests since it was made, the failed one included.
    long requests() const;
    /// Whether the one request failed already.
    bool hasFailed() const;
};

} // namespace testSupport
