#pragma once

#include <pugixml.hpp>

#include <string_view>

namespace libPrepare {

/// What an element holds by its name.
struct ElementTraits {
    bool holdsOnlyValue = false; ///< A value and no elements.
    bool holdsNumbers = false;   ///< Numbers, which may have a fraction.
};

ElementTraits traitsOf(std::string_view name);

/// Whether an element may be in another one, of those that later passes take out or write anew. What references lead to
/// would go with it.
bool canHold(pugi::xml_node holder, const char* child);

/// Whether an element of this name holds data of other programs.
bool isForeign(const char* name);

} // namespace libPrepare
