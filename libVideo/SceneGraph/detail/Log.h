#pragma once

/// @file
/// How a module of the scene graph logs, traces and asserts. A module names its channel and its source path once, in
/// its source file:
///
///     VIDEO_LOG_CHANNEL("libVideo.light")
///     VIDEO_SOURCE_PATH("libVideo/SceneGraph/Light")
///
/// Each log statement is on one source line, because compilers number the lines of a split one differently.

#include <vesk/Exception.h>
#include <vesk/Logging.h>
#include <vesk/String.h>

namespace libVideo::detail {

/// Whether a message passes both thresholds: that of the factory, which must not be above its priority, and that of the
/// module's logger, which must be below it. The logger is created only after the first test passes.
inline bool passesThresholds(vesk::Logger*& logger, const char* channel, vesk::LoggerPriority::LOGGER_PRIORITY priority)
{
    if (vesk::LogFactory::getPriority() > priority) {
        return false;
    }
    if (logger == nullptr) {
        vesk::LogFactory::createLogger(channel, logger);
    }
    return logger->priority < priority;
}

inline void appendPiece(vesk::LoggerStream& line, const char* text)
{
    line.append(text);
}

inline void appendPiece(vesk::LoggerStream& line, const vesk::String& text)
{
    line.append(text);
}

inline void appendPiece(vesk::LoggerStream& line, int number)
{
    line + number;
}

inline void appendPiece(vesk::LoggerStream& line, unsigned number)
{
    line + number;
}

template <class... Pieces>
void appendPieces(vesk::LoggerStream& line, const Pieces&... pieces)
{
    (appendPiece(line, pieces), ...);
}

} // namespace libVideo::detail

#define VIDEO_TEXT_OF(value) #value
#define VIDEO_LITERAL(value) VIDEO_TEXT_OF(value)

/// Declares the logger of a module, which is null until a message passes the factory's threshold.
#define VIDEO_LOG_CHANNEL(channel)                                                                                     \
    namespace {                                                                                                        \
    vesk::Logger* moduleLogger = nullptr;                                                                              \
    constexpr const char* moduleChannel = channel;                                                                     \
    }

/// Declares the path that assertions and traces of a module show as their file.
#define VIDEO_SOURCE_PATH(path)                                                                                        \
    namespace {                                                                                                        \
    constexpr const char* modulePath = path;                                                                           \
    }

/// Logs the line number, a blank and the pieces: literals, `String`s, `int`s and `unsigned`s. The pieces are evaluated
/// only if the message passes the thresholds.
#define VIDEO_LOG(...)                                                                                                 \
    do {                                                                                                               \
        constexpr auto videoLogPriority = vesk::LoggerPriority::PRIORITY_ERROR;                                        \
        if (libVideo::detail::passesThresholds(moduleLogger, moduleChannel, videoLogPriority)) {                       \
            vesk::LoggerStream videoLogLine;                                                                           \
            videoLogLine.append(VIDEO_LITERAL(__LINE__) " ");                                                          \
            libVideo::detail::appendPieces(videoLogLine, __VA_ARGS__);                                                 \
            moduleLogger->log(videoLogPriority, videoLogLine);                                                         \
        }                                                                                                              \
    } while (false)

/// Traces the rest of the scope, under the name of a function.
#define VIDEO_TRACE(function)                                                                                          \
    const vesk::TraceLogger videoTraceScope(                                                                           \
        libVideo::detail::passesThresholds(moduleLogger, moduleChannel, vesk::LoggerPriority::PRIORITY_TRACE)          \
            ? moduleLogger                                                                                             \
            : nullptr,                                                                                                 \
        function, modulePath, __LINE__)

/// Checks an invariant in every build. @throws vesk::AssertionFailure with the text of the expression
#define VIDEO_ASSERT(expression)                                                                                       \
    do {                                                                                                               \
        if (!(expression)) {                                                                                           \
            throw vesk::AssertionFailure(modulePath, __LINE__, #expression);                                           \
        }                                                                                                              \
    } while (false)
