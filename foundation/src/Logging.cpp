#include <vesk/Logging.h>

#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

namespace vesk {

namespace {

struct Registry {
    LoggerPriority::LOGGER_PRIORITY priority = LoggerPriority::PRIORITY_ERROR;
    LogHandler handler; // empty: standard error
    std::vector<std::unique_ptr<Logger>> loggers;
};

// Never destroyed: modules keep addresses of loggers, and may log while the process exits.
Registry& registry()
{
    static Registry* const instance = new Registry;
    return *instance;
}

void writeToStandardError(const Logger& logger, const String& text)
{
    static_cast<void>(std::fprintf(stderr, "[%s] %s\n", logger.channel().data(), text.data()));
}

template <class Number>
void appendDecimal(String& text, Number number)
{
    char digits[16] = {}; // a sign, ten digits and the terminating zero
    std::to_chars(digits, digits + sizeof(digits) - 1, number);
    text.append(digits);
}

} // namespace

void LogFactory::createLogger(const char* channel, Logger*& logger)
{
    logger = findLogger(channel);
    if (logger == nullptr) {
        std::unique_ptr<Logger> made(new Logger(channel));
        registry().loggers.push_back(std::move(made));
        logger = registry().loggers.back().get();
    }
}

Logger* LogFactory::findLogger(const char* channel)
{
    for (const std::unique_ptr<Logger>& logger : registry().loggers) {
        if (std::strcmp(logger->channel().data(), channel) == 0) {
            return logger.get();
        }
    }
    return nullptr;
}

LoggerPriority::LOGGER_PRIORITY LogFactory::getPriority()
{
    return registry().priority;
}

void LogFactory::setPriority(LoggerPriority::LOGGER_PRIORITY priority)
{
    registry().priority = priority;
}

LogHandler LogFactory::setHandler(LogHandler handler)
{
    std::swap(registry().handler, handler);
    return handler;
}

void Logger::log(LoggerPriority::LOGGER_PRIORITY messagePriority, const LoggerStream& line)
{
    // A copy, so that a handler may replace itself while it runs.
    const LogHandler handler = registry().handler;
    if (handler) {
        handler(*this, messagePriority, line);
    } else {
        writeToStandardError(*this, line);
    }
}

LoggerStream& LoggerStream::operator+(int number)
{
    appendDecimal(*this, number);
    return *this;
}

LoggerStream& LoggerStream::operator+(unsigned number)
{
    appendDecimal(*this, number);
    return *this;
}

TraceLogger::TraceLogger(Logger* logger, const char* function, const char* file, int line)
    : m_logger(logger), m_function(function)
{
    if (m_logger != nullptr) {
        LoggerStream text;
        text.append("> ").append(function).append(" (").append(file).append(":");
        text + line;
        text.append(")");
        m_logger->log(LoggerPriority::PRIORITY_TRACE, text);
    }
}

TraceLogger::~TraceLogger()
{
    if (m_logger == nullptr) {
        return;
    }
    try {
        LoggerStream text;
        text.append("< ").append(m_function);
        m_logger->log(LoggerPriority::PRIORITY_TRACE, text);
    } catch (...) {
        // An exception may be leaving the scope; a second one would terminate the process.
        static_cast<void>(0);
    }
}

} // namespace vesk
