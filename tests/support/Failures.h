#pragma once

#include "LogCapture.h"
#include "Words.h"

#include <vesk/Exception.h>

#include <string>

#include <gtest/gtest.h>

namespace testSupport {

/// The assertion that a call violates, as "file: expression". The call must not log.
template <class Call>
std::string assertionOf(const Call& call)
{
    const LogCapture log;
    try {
        call();
    } catch (const vesk::AssertionFailure& failure) {
        EXPECT_GT(failure.line(), 0u);
        EXPECT_TRUE(log.lines().empty());
        return std::string(failure.file()) + ": " + failure.expression();
    }
    return "none";
}

/// "low high index" of the exception that a call throws.
template <class Call>
std::string boundsOf(const Call& call)
{
    try {
        call();
    } catch (const vesk::IndexOutOfBounds& failure) {
        return std::to_string(failure.low()) + " " + std::to_string(failure.high()) + " " +
               std::to_string(failure.index());
    }
    return "none";
}

template <class Call>
void expectIndexOutOfBounds(int high, int index, const Call& call)
{
    EXPECT_EQ("0 " + std::to_string(high) + " " + std::to_string(index), boundsOf(call));
}

/// Expects a log to hold exactly these messages, all of them errors of one channel.
inline void expectErrors(const std::string& channel, const std::string& lines, const LogCapture& log)
{
    Texts expected;
    for (const std::string& line : linesOf(lines)) {
        expected.push_back(channel + ": " + line);
    }
    EXPECT_EQ(expected, log.messages());
}

/// The texts of all messages that a call logs at trace priority, without the line number: it comes last in a trace and
/// first in any other message. Each message must have its expected priority.
template <class Call>
Texts tracedTexts(const Call& call, const std::string& channel = std::string())
{
    const LogCapture log(channel);
    vesk::LogFactory::setPriority(vesk::LoggerPriority::PRIORITY_TRACE);
    call();
    Texts texts;
    for (const LogLine& line : log.lines()) {
        const bool isTrace = line.text[0] == '>' || line.text[0] == '<';
        EXPECT_EQ(isTrace ? vesk::LoggerPriority::PRIORITY_TRACE : vesk::LoggerPriority::PRIORITY_ERROR, line.priority);
        texts.push_back(isTrace ? line.text.substr(0, line.text.find(':', line.text.find('/'))) : line.words());
    }
    return texts;
}

} // namespace testSupport
