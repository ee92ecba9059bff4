#pragma once // SPDX-License-Identifier: MIT

#include <vesk/Export.h>
#include <vesk/String.h>

#include <functional>

namespace vesk {

class Logger;
class LoggerStream;

/// Scope of the priorities. A larger value is a more severe message.
struct LoggerPriority {
    /// Priorities of messages, and thresholds below and above all of them.
    enum LOGGER_PRIORITY : int {
        PRIORITY_ALL = 0,   ///< threshold below every message
        PRIORITY_TRACE = 1, ///< entry and exit of a scope
        PRIORITY_INFO = 2,  ///< not used by the library itself
        PRIORITY_ERROR = 3, ///< every message of the library: something failed, was skipped or refused
        PRIORITY_OFF = 4    ///< threshold above every message
    };
};

/// Receives the messages of all channels. What it throws passes through the log statement.
using LogHandler = std::function<void(const Logger&, LoggerPriority::LOGGER_PRIORITY, const String&)>;

/// Owns all channels and the process-wide threshold. Belongs to one thread, like all of the library.
class VESK_API LogFactory {
public:
    LogFactory() = delete;

    /// Makes or finds the channel of that name, and stores its address in `logger`; it lives as long as the process.
    static void createLogger(const char* channel, Logger*& logger);
    /// @return the channel of that name, or null if nothing was logged on it yet
    static Logger* findLogger(const char* channel);

    /// The threshold of all channels: a message passes if its priority is equal or higher. `PRIORITY_ERROR` at start.
    static LoggerPriority::LOGGER_PRIORITY getPriority();
    static void setPriority(LoggerPriority::LOGGER_PRIORITY priority); ///< Changes the threshold of all channels.

    /// Replaces the handler of messages. An empty one restores the default, which writes `[channel] text` and a line feed
    /// to standard error.
    /// @return the previous handler, empty if it was the default
    static LogHandler setHandler(LogHandler handler);
};

/// A named log channel, made and owned by `LogFactory`.
class VESK_API Logger {
public:
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    /// The channel's own threshold: a message passes only if its priority is higher. `PRIORITY_ALL` at start.
    LoggerPriority::LOGGER_PRIORITY priority = LoggerPriority::PRIORITY_ALL;

    const String& channel() const { return m_channel; } ///< The name of the channel, such as "libVideo.scene".

    /// Passes the message to the handler, whatever the thresholds.
    void log(LoggerPriority::LOGGER_PRIORITY messagePriority, const LoggerStream& line);

private:
    friend class LogFactory;
    explicit Logger(const char* channel) : m_channel(channel) {}

    String m_channel;
};

/// Builder of one log message: a text to which numbers can be appended.
class VESK_API LoggerStream : public String {
public:
    LoggerStream() = default;

    /// Appends the signed decimal text of `number`.
    LoggerStream& operator+(int number);
    /// Appends the decimal text of `number`.
    LoggerStream& operator+(unsigned number);
};

/// Traces one scope: `> function (file:line)` at its start, `< function` at its end, both with
/// `PRIORITY_TRACE`. A null logger makes it silent.
class VESK_API TraceLogger {
public:
    /// @param function,file literals, kept by address
    TraceLogger(Logger* logger, const char* function, const char* file, int line);
    ~TraceLogger();
    TraceLogger(const TraceLogger&) = delete;
    TraceLogger& operator=(const TraceLogger&) = delete;

private:
    Logger* m_logger;
    const char* m_function;
};

} // namespace vesk
