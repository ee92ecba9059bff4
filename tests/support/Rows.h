#pragma once

#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

/// Instantiates a suite with the rows of a table, each in braces. It compiles faster than `testing::Values`, which
/// makes a type for each number of rows.
#define INSTANTIATE_ROWS(prefix, suite, ...)                                                                           \
    std::vector<suite::ParamType> rowsOf##prefix##suite()                                                              \
    {                                                                                                                  \
        return {__VA_ARGS__};                                                                                          \
    }                                                                                                                  \
    INSTANTIATE_TEST_SUITE_P(prefix, suite, testing::ValuesIn(rowsOf##prefix##suite()), testSupport::rowName)

// The first value of a row initializes its base class, which has no braces of its own.
#pragma GCC diagnostic ignored "-Wmissing-braces"

namespace testSupport {

/// Base class of a row in a table of cases. The name identifies the row in failures and names its test:
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

/// A row with one input and the expected result, which a table omits if it is the same for all rows.
template <class Given, class Expected = void>
struct Case : Row {
    Given given;
    Expected expected;
};

template <class Given>
struct Case<Given, void> : Row {
    Given given;
};

/// Returns the name of a row of any table.
constexpr struct {
    template <class AnyRow>
    std::string operator()(const testing::TestParamInfo<AnyRow>& row) const
    {
        return row.param.name;
    }
} rowName{};

} // namespace testSupport
