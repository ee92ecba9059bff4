#include "CrashReport.h"

#include <csignal>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

namespace testSupport {

namespace {

constexpr int watchedSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGALRM};
constexpr std::size_t signalCount = sizeof(watchedSignals) / sizeof(watchedSignals[0]);

char currentStep[2048] = "";
struct sigaction actionsBefore[signalCount];
alignas(16) char signalStack[65536]; // for a handler after a stack overflow

void writeText(const char* text)
{
    if (write(STDERR_FILENO, text, std::strlen(text)) < 0) {
        return; // nothing more can be done
    }
}

// Restores all handlers, so that the signal reaches the previous one when it is raised again.
void report(int signal)
{
    writeText(signal == SIGALRM ? "\nTOO LONG: " : "\nCRASH: ");
    writeText(currentStep);
    writeText("\n");
    for (std::size_t i = 0; i < signalCount; ++i) {
        sigaction(watchedSignals[i], &actionsBefore[i], nullptr);
    }
    if (signal == SIGALRM) {
        std::abort();
    }
}

// The sanitizers install a signal stack of their own.
void provideSignalStack()
{
    stack_t before{};
    if (sigaltstack(nullptr, &before) == 0 && (before.ss_flags & SS_DISABLE) != 0) {
        stack_t stack{};
        stack.ss_sp = signalStack;
        stack.ss_size = sizeof(signalStack);
        sigaltstack(&stack, nullptr);
    }
}

} // namespace

CrashReport::CrashReport(unsigned seconds) : m_seconds(seconds)
{
    provideSignalStack();
    struct sigaction action {};
    action.sa_handler = &report;
    action.sa_flags = SA_ONSTACK;
    for (std::size_t i = 0; i < signalCount; ++i) {
        sigaction(watchedSignals[i], &action, &actionsBefore[i]);
    }
}

CrashReport::~CrashReport()
{
    alarm(0);
    for (std::size_t i = 0; i < signalCount; ++i) {
        sigaction(watchedSignals[i], &actionsBefore[i], nullptr);
    }
}

void CrashReport::begin(const std::string& step)
{
    const std::size_t size = step.copy(currentStep, sizeof(currentStep) - 1);
    currentStep[size] = '\0';
    alarm(m_seconds);
}

} // namespace testSupport
