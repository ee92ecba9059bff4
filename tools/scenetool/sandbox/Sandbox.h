#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

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

/// Runs actions in child processes, so that a crash, a hang or excessive memory use affects only that process. Output of
/// an action appears as usual; its changes to memory are lost. To be used in programs of one thread: a child process has
/// only the thread that started it, and waits forever for a lock that another thread held.
class Sandbox {
public:
    /// How an action ended, and which.
    struct Ended {
        pid_t process;
        SandboxResult result;
    };

    explicit Sandbox(const SandboxLimits& limits) : m_limits(limits) {}

    /// Starts an action and returns its process.
    /// @throws std::system_error if no child process can be started
    pid_t start(const std::function<int()>& action);

    /// Number of actions that have been started and not been waited for.
    std::size_t runningCount() const { return m_running.size(); }

    /// Waits until one of the running actions has ended.
    /// @throws std::system_error if no action is running
    Ended wait();

private:
    SandboxLimits m_limits;
    std::vector<pid_t> m_running;
};

/// Runs an action in a sandbox and waits for its end.
/// @throws std::system_error if no child process can be started
SandboxResult runInSandbox(const SandboxLimits& limits, const std::function<int()>& action);

} // namespace scenetool
