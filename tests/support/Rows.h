#pragma once

#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

/// Runs a suite with the rows of a table, each in braces. They are compiled once: those of `testing::Values` are compiled
/// twice, into a type for each number of rows.
#define INSTANTIATE_ROWS(prefix, suite, ...)                                                                           \
    std::vector<suite::ParamType> rowsOf##prefix##suite()                                                              \
    {                                                                                                                  \
        return {__VA_ARGS__};                                                                                          \
    }                                                                                                                  \
    INSTANTIATE_TEST_SUITE_P(prefix, suite, testing::ValuesIn(rowsOf##prefix##suite()), testSupport::rowName)

// The first value of a row is that of its base, which has no braces of its own.
#pragma GCC diagnostic ignored "-Wmissing-braces"

namespace testSupport {

/// The base of a row of a table of cases. Its name is all that a failure shows of it, and names its test:
///
///     struct SkipCase : Row { const char* xml; };
///     class SkipTest : public testing::TestWithParam<SkipCase> {};
///     INSTANTIATE_ROWS(Rows, SkipTest, {"Empty", ""}, {"Blank", " "});
struct Row {
    const char* name;
};

inline std::ostream& operator<<(std::ostream& out, const Row& row)
{
    return out << row.name;
}

/// A row that gives a test one thing, and says what comes of it, unless all rows come to the same.
template <class Given, class Expected = void>
struct Case : Row {
    Given given;
    Expected expected;
};

template <class Given>
struct Case<Given, void> : Row {
    Given given;
};

/// Gives the name of a row of any table.
constexpr struct {
    template <class AnyRow>
    std::string operator()(const testing::TestParamInfo<AnyRow>& row) const
    {
        return row.param.name;
    }
} rowName{};

} // namespace testSupport
