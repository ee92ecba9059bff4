#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace libPrepare {

/// The indices in the first `tuples` complete tuples of an index list, column by column.
struct ColumnCensus {
    std::vector<std::int32_t> greatest; ///< -1 if a column names nothing.
    std::vector<bool> hasInvalid;       ///< Whether a column has an entry that `indices` reads as -1.
    std::size_t tuples = 0;             ///< Whole tuples that are there.
};

/// Of the first `tuples` whole tuples of an index list.
ColumnCensus censusOf(std::string_view text, std::size_t stride, std::size_t tuples);

} // namespace libPrepare
