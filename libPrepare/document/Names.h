#pragma once

#include <pugixml.hpp>

#include <cstring>

namespace libPrepare {

/// Whether two names are equal. Most differ at the first letter.
inline bool areEqual(const char* name, const char* other)
{
    return *name == *other && std::strcmp(name, other) == 0;
}

/// Whether an element has this name. Namespaces prefixes are gone after the first passes.
inline bool is(pugi::xml_node element, const char* name)
{
    return areEqual(element.name(), name);
}

} // namespace libPrepare
