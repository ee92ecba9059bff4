#pragma once

namespace testSupport {

/// While an object exists, counts the calls of `operator new` in this thread and lets the one after `successes` others
/// fail, alone or with all that follow. The throwing forms then throw `std::bad_alloc`; the others return null. Test
/// programs that link this class's source file use its operators.
class FailingAllocator {
public:
    /// Which requests fail after the successful ones.
    enum class Failure { once, forGood };

    /// @param successes how many requests are served before one fails; negative: none fails
    explicit FailingAllocator(long successes, Failure failure = Failure::once);
    ~FailingAllocator();
    FailingAllocator(const FailingAllocator&) = delete;
    FailingAllocator& operator=(const FailingAllocator&) = delete;

    /// Requests since construction, including failed ones.
    long requests() const;
    /// Whether a request has failed.
    bool hasFailed() const;
};

} // namespace testSupport
