#pragma once

namespace testSupport {

/// While it lives, counts what this thread asks of `operator new` and lets the request that comes after `successes`
/// others fail, alone or with all that follow. The throwing forms then throw `std::bad_alloc`, the others give null. Test
/// programs that link the source file of this class have its operators.
class FailingAllocator {
public:
    /// Which requests fail after those that succeed.
    enum class Failure { once, forGood };

    /// @param successes how many requests are served before one fails; negative: none fails
    explicit FailingAllocator(long successes, Failure failure = Failure::once);
    ~FailingAllocator();
    FailingAllocator(const FailingAllocator&) = delete;
    FailingAllocator& operator=(const FailingAllocator&) = delete;

    /// Requests since it was made, the failed ones included.
    long requests() const;
    /// Whether a request has failed.
    bool hasFailed() const;
};

} // namespace testSupport
