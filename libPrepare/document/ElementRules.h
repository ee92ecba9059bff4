#pragma once

#include <pugixml.hpp>

#include <string_view>

namespace libPrepare {

/// What an element with a name contains.
struct ElementTraits {
    bool holdsOnlyValue = false; ///< A value and no elements.
    bool holdsNumbers = false;   ///< Numbers, which may have a fraction.
    bool isDefinition = false;   ///< Something that others refer to by its id.
};

ElementTraits traitsOf(std::string_view name);

/// Whether an element may be in another one. Only covers elements that later passes remove or rewrite, together with
/// anything in them that references name, and definitions, which readers do not find where they cannot be.
bool canHold(pugi::xml_node holder, const char* child, ElementTraits traitsOfChild);

/// Whether an element of this name holds data of other programs.
bool isForeign(const char* name);

} // namespace libPrepare
