#pragma once

#include <cstddef>
#include <string_view>

namespace libPrepare {

/// What is known of a list of numbers whose values nobody needs.
struct NumberCensus {
    std::size_t words = 0;
    bool isFinite = true; ///< Every word is a finite number.
};

/// Much faster than reading the numbers.
NumberCensus numberCensusOf(std::string_view list);

} // namespace libPrepare
