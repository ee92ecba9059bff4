#pragma once

#include "LogCapture.h"

#include <vesk/Exception.h>

#include <string>

#include <gtest/gtest.h>

namespace testSupport {

/// The assertion that a call breaks, as "file: expression"; it may not log.
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

/// "low high index" of the failure that a call ends in.
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

} // namespace testSupport
