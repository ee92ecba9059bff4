#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

namespace scenetool {

/// What a document may take of the machine.
struct SandboxLimits {
    std::chrono::seconds time{60};                      ///< processor time; twice as much on the clock
    std::size_t memory = std::size_t{4096} * 1'048'576; ///< address space in bytes; 0 sets no limit
};

/// How an action in a sandbox ended.
struct SandboxResult {
    int status = 0;      ///< what the action returned; undefined if it did not come to its end
    std::string failure; ///< why it did not; empty if it did
};

/// Runs an action in a child process, so that a crash, a hang or a hunger for memory ends there. What the action writes
/// arrives as usual; what it changes in memory does not.
/// @throws std::system_error if there can be no child process
SandboxResult runInSandbox(const SandboxLimits& limits, const std::function<int()>& action);

} // namespace scenetool
