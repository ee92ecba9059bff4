#pragma once

#include <pugixml.hpp>

#include <array>
#include <functional>
#include <optional>
#include <string>

namespace libPrepare {

/// Names of elements, ended by a null; any element if there is none.
using Kinds = std::array<const char*, 6>;

/// A place in a document that names an element of this or another document.
struct Reference {
    enum class Form {
        uri,  ///< `#id`, with or without a document before it.
        id,   ///< An id alone.
        path, ///< An id, and what follows it after a `/`.
        ids,  ///< A list of ids.
    };
    pugi::xml_node element;
    pugi::xml_attribute attribute; ///< Null if the text of the element holds the reference.
    Form form = Form::uri;
    Kinds kinds{}; ///< What it may lead to.

    std::string text() const;
    void setText(const std::string& text) const;
};

/// The reference in an attribute; nothing in most.
/// @param name of the attribute
std::optional<Reference> referenceIn(pugi::xml_node element, pugi::xml_attribute attribute, const char* name);
/// The reference in the text of an element; nothing in most.
/// @param name of the element
/// @param isInExtra whether the element is below an `<extra>`
std::optional<Reference> referenceInText(pugi::xml_node element, const char* name, bool isInExtra);

/// Calls `use` for each reference in a subtree, in document order. Sids do not count.
void forEachReference(pugi::xml_node subtree, const std::function<void(const Reference&)>& use);

} // namespace libPrepare
