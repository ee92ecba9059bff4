#pragma once

#include "Texts.h"

#include <vesk/Logging.h>

#include <string>
#include <vector>

namespace testSupport {

/// One line as a handler received it.
struct LogLine {
    std::string channel;
    int priority;
    std::string text; ///< whole, with the number in front
    /// Without the number and its blank. A text that does not start with both is returned whole, after "NO NUMBER: ".
    std::string words() const;
};

/// Takes all log lines while it lives, and puts the handler and the priority of before back at its end.
class LogCapture {
public:
    /// Shows the lines of one channel, or of all.
    explicit LogCapture(std::string channel = std::string());
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// The lines so far, in order.
    std::vector<LogLine> lines() const;
    /// The words of the lines so far, one line each, without a line feed after the last.
    std::string text() const;
    /// "channel: words" of each line so far. Of a line that is no error, the number of its priority comes first.
    Texts messages() const;
    void clear() { m_lines.clear(); }

private:
    std::string m_channel;
    std::vector<LogLine> m_lines;
    vesk::LogHandler m_before;
    vesk::LoggerPriority::LOGGER_PRIORITY m_priorityBefore;
};

} // namespace testSupport
