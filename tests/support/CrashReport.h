#pragma once

#include <string>

namespace testSupport {

/// While an object exists, a crash or a step that takes too long first writes to standard error what was being done.
/// The process then ends as it would have without it. Only one object may exist at a time.
class CrashReport {
public:
    /// @param seconds how long a step may take
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
