#pragma once

#include "Texts.h"

#include <vesk/Logging.h>

#include <string>
#include <vector>

namespace testSupport {

/// One message as a handler receives it.
struct LogLine {
    std::string channel;
    int priority;
    std::string text; ///< complete, with the number in front
    /// Without the number and the blank after it. A text that does not start with both is returned unchanged, after "NO
    /// NUMBER: ".
    std::string words() const;
};

/// Captures all log messages while it exists. The destructor restores the previous handler and priority.
class LogCapture {
public:
    /// Captures the messages of one channel, or of all channels.
    explicit LogCapture(std::string channel = std::string());
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// The messages so far, in order.
    std::vector<LogLine> lines() const;
    /// The texts of the messages so far, one per line, without a line feed after the last.
    std::string text() const;
    /// "channel: text" of each message so far. Messages that are no errors start with the number of their priority.
    Texts messages() const;
    void clear() { m_lines.clear(); }

private:
    std::string m_channel;
    std::vector<LogLine> m_lines;
    vesk::LogHandler m_before;
    vesk::LoggerPriority::LOGGER_PRIORITY m_priorityBefore;
};

} // namespace testSupport
