#include "Sandbox.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>
#include <system_error>

// Sanitizers reserve more address space than any sensible limit allows.
#if defined(__SANITIZE_ADDRESS__)
#define SCENETOOL_HAS_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define SCENETOOL_HAS_ADDRESS_SANITIZER 1
#endif
#endif
#ifndef SCENETOOL_HAS_ADDRESS_SANITIZER
#define SCENETOOL_HAS_ADDRESS_SANITIZER 0
#endif

namespace scenetool {

namespace {

constexpr int uncaughtException = 125;

void limit(int resource, rlim_t value, rlim_t grace = 0)
{
    const rlimit softAndHard{value, value + grace};
    static_cast<void>(setrlimit(static_cast<__rlimit_resource>(resource), &softAndHard)); // without a limit if it fails
}

[[noreturn]] void runChild(const SandboxLimits& limits, const std::function<int()>& action)
{
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_CPU, static_cast<rlim_t>(limits.time.count()), 1);
    if (limits.memory != 0 && SCENETOOL_HAS_ADDRESS_SANITIZER == 0) {
        limit(RLIMIT_AS, limits.memory);
    }
    // Stops a process that waits without using the processor, such as in a read that never returns.
    static_cast<void>(std::signal(SIGALRM, SIG_DFL));
    alarm(static_cast<unsigned>(limits.time.count()) * 2);

    int status = uncaughtException;
    try {
        status = action();
        std::cout.flush();
        std::cerr.flush();
    } catch (const std::exception& exception) {
        std::cerr << "scenetool: " << exception.what() << std::endl;
    }
    static_cast<void>(std::fflush(nullptr));
    _exit(status); // skips exit handlers, which the parent will run
}

std::string reasonOf(int signal, const SandboxLimits& limits)
{
    switch (signal) {
    case SIGXCPU:
    case SIGALRM:
        return "did not finish within " + std::to_string(limits.time.count()) + " s";
    case SIGKILL: // such as from the kernel if the machine runs out of memory
        return "was killed";
    default:
        return std::string("crashed (") + strsignal(signal) + ")";
    }
}

SandboxResult resultOf(int status, const SandboxLimits& limits)
{
    if (WIFSIGNALED(status)) {
        return {0, reasonOf(WTERMSIG(status), limits)};
    }
    if (WEXITSTATUS(status) == uncaughtException) {
        return {0, "failed with an exception"};
    }
    return {WEXITSTATUS(status), std::string()};
}

} // namespace

pid_t Sandbox::start(const std::function<int()>& action)
{
    m_running.reserve(m_running.size() + 1);
    std::cout.flush(); // otherwise the child would write it again
    std::cerr.flush();
    const pid_t child = fork();
    if (child < 0) {
        throw std::system_error(errno, std::generic_category(), "cannot start a process");
    }
    if (child == 0) {
        runChild(m_limits, action);
    }
    m_running.push_back(child);
    return child;
}

Sandbox::Ended Sandbox::wait()
{
    while (true) {
        int status = 0;
        const pid_t any = -1; // which may be a child that this program inherited from the one that it replaced
        const pid_t child = waitpid(m_running.size() == 1 ? m_running.front() : any, &status, 0);
        if (child < 0 && errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "cannot wait for a process");
        }
        const auto found = std::find(m_running.begin(), m_running.end(), child);
        if (found != m_running.end()) {
            m_running.erase(found);
            return {child, resultOf(status, m_limits)};
        }
    }
}

SandboxResult runInSandbox(const SandboxLimits& limits, const std::function<int()>& action)
{
    Sandbox sandbox(limits);
    sandbox.start(action);
    return sandbox.wait().result;
}

} // namespace scenetool
