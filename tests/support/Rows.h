#pragma once

#include <ostream>
#include <string>

#include <gtest/gtest.h>

// The first value of a row is that of its base, which has no braces of its own.
#pragma GCC diagnostic ignored "-Wmissing-braces"

namespace testSupport {

/// The base of a row of a table of cases. Its name is all that a failure shows of it, and names its test:
///
///     struct SkipCase : Row { const char* xml; };
///     class SkipTest : public testing::TestWithParam<SkipCase> {};
///     INSTANTIATE_TEST_SUITE_P(Rows, SkipTest, testing::Values(SkipCase{"Empty", ""}), rowName);
struct Row {
    const char* name;
};

inline std::ostream& operator<<(std::ostream& out, const Row& row)
{
    return out << row.name;
}

/// Gives the name of a row of any table.
constexpr struct {
    template <class Case>
    std::string operator()(const testing::TestParamInfo<Case>& row) const
    {
        return row.param.name;
    }
} rowName{};

} // namespace testSupport
