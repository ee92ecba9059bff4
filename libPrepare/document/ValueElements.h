#pragma once

#include <string_view>

namespace libPrepare {

/// What an element holds by its name.
struct ElementTraits {
    bool holdsOnlyValue = false; ///< A value and no elements.
    bool holdsNumbers = false;   ///< Numbers, which may have a fraction.
};

ElementTraits traitsOf(std::string_view name);

} // namespace libPrepare
