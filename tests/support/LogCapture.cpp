#include "LogCapture.h"

#include <cctype>
#include <utility>

namespace testSupport {

std::string LogLine::words() const
{
    std::size_t digits = 0;
    while (digits < text.size() && std::isdigit(static_cast<unsigned char>(text[digits])) != 0) {
        ++digits;
    }
    if (digits == 0 || digits == text.size() || text[digits] != ' ') {
        return "NO NUMBER: " + text;
    }
    return text.substr(digits + 1);
}

LogCapture::LogCapture(std::string channel)
    : m_channel(std::move(channel)), m_priorityBefore(vesk::LogFactory::getPriority())
{
    m_before = vesk::LogFactory::setHandler(
        [this](const vesk::Logger& logger, vesk::LoggerPriority::LOGGER_PRIORITY priority, const vesk::String& text) {
            m_lines.push_back({logger.channel().data(), priority, text.data()});
        });
}

LogCapture::~LogCapture()
{
    vesk::LogFactory::setHandler(m_before);
    vesk::LogFactory::setPriority(m_priorityBefore);
}

std::vector<LogLine> LogCapture::lines() const
{
    std::vector<LogLine> shown;
    for (const LogLine& line : m_lines) {
        if (m_channel.empty() || line.channel == m_channel) {
            shown.push_back(line);
        }
    }
    return shown;
}

std::string LogCapture::text() const
{
    std::string all;
    for (const LogLine& line : lines()) {
        all += (all.empty() ? "" : "\n") + line.words();
    }
    return all;
}

Texts LogCapture::messages() const
{
    Texts all;
    for (const LogLine& line : lines()) {
        const bool isError = line.priority == vesk::LoggerPriority::PRIORITY_ERROR;
        all.push_back((isError ? "" : std::to_string(line.priority) + " ") + line.channel + ": " + line.words());
    }
    return all;
}

} // namespace testSupport
