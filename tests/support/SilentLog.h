#pragma once

#include <vesk/Logging.h>

namespace testSupport {

/// While it exists, drops all log messages without allocating memory. The destructor restores the previous handler.
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
