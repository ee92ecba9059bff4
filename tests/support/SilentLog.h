#pragma once

#include <vesk/Logging.h>

namespace testSupport {

/// Drops all log lines while it lives, without asking for memory, and puts the handler of before back at its end.
class SilentLog {
public:
    SilentLog()
        : m_before(vesk::LogFactory::setHandler(
              [](const vesk::Logger&, vesk::LoggerPriority::LOGGER_PRIORITY, const vesk::String&) {}))
    {}
    ~SilentLog() { vesk::LogFactory::setHandler(m_before); }
    SilentLog(const SilentLog&) = delete;
    SilentLog& operator=(const SilentLog&) = delete;

private:
    vesk::LogHandler m_before;
};

} // namespace testSupport
