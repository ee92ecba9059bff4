#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

namespace scenetool {

/// The time and memory that a document may use.
struct SandboxLimits {
    std::chrono::seconds time{60};                      ///< processor time; the limit in real time is twice as long
    std::size_t memory = std::size_t{4096} * 1'048'576; ///< address space in bytes; 0 for no limit
};

/// Result of an action in a sandbox.
struct SandboxResult {
    int status = 0;      ///< what the action returned; meaningless if it did not finish
    std::string failure; ///< why it did not finish; empty if it did
};

/// Runs an action in a child process, so that a crash, a hang or excessive memory use affects only that process. Output
/// of the action appears as usual; its changes to memory are lost.
/// @throws std::system_error if no child process can be started
SandboxResult runInSandbox(const SandboxLimits& limits, const std::function<int()>& action);

} // namespace scenetool
