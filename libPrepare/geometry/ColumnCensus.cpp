#include "ColumnCensus.h"

#include "IndexReader.h"

#include <algorithm>

namespace libPrepare {

ColumnCensus censusOf(std::string_view text, std::size_t stride, std::size_t tuples)
{
    ColumnCensus result;
    stride = std::min(stride, text.size() + 1); // a longer tuple does not fit in it
    result.greatest.assign(stride, -1);
    result.hasInvalid.assign(stride, false);
    std::int32_t* const greatest = result.greatest.data(); // a copy, which stays in a register
    std::size_t column = 0;
    std::size_t left = tuples;
    IndexReader entries(text);
    while (left > 0 && entries.next()) {
        const std::int32_t index = entries.index();
        if (index < 0) {
            result.hasInvalid[column] = true;
        }
        greatest[column] = std::max(greatest[column], index);
        if (++column == stride) {
            column = 0;
            --left;
        }
    }
    result.tuples = tuples - left;
    return result;
}

} // namespace libPrepare
