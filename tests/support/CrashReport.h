#pragma once

#include <string>

namespace testSupport {

/// While it lives, a crash, or a step that takes too long, first writes to standard error what was being done, and then
/// ends the process as it would have ended without. There is one at a time.
class CrashReport {
public:
    /// @param seconds that a step may take
    explicit CrashReport(unsigned seconds);
    ~CrashReport();
    CrashReport(const CrashReport&) = delete;
    CrashReport& operator=(const CrashReport&) = delete;

    /// Starts a step, described in words.
    void begin(const std::string& step);

private:
    unsigned m_seconds;
};

} // namespace testSupport
