#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace libPrepare {

/// What the columns of an index list hold.
struct ColumnCensus {
    std::vector<std::int32_t> greatest; ///< Of the indices in a column; -1 if there are none.
    std::vector<bool> hasInvalid;       ///< Whether a column has an entry that is no whole number from 0 to 2^31 - 1.
    std::size_t tuples = 0;             ///< Whole tuples that are there.
};

/// @param stride entries in a tuple
/// @param tuples how many tuples at the start of the list count
ColumnCensus censusOf(std::string_view text, std::size_t stride, std::size_t tuples);

} // namespace libPrepare
