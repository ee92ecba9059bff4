#include <libPrepare/geometry/ColumnCensus.h>

#include <gtest/gtest.h>

#include <vector>

namespace {

using libPrepare::ColumnCensus;

TEST(ColumnCensusTest, CountsWholeTuples)
{
    const ColumnCensus census = libPrepare::censusOf("1 20 3 -1 5 6", 2, 10);
    EXPECT_EQ(3U, census.tuples);
    EXPECT_EQ((std::vector<std::int32_t>{5, 20}), census.greatest);
    EXPECT_EQ((std::vector<bool>{false, true}), census.hasInvalid);
    EXPECT_EQ(1U, libPrepare::censusOf("1 20 3 -1 5 6", 2, 1).tuples);
}

} // namespace
