#pragma once

#include <libPrepare/document/Document.h>

#include <cstdint>

namespace libPrepare {

/// The next one of a walk over a whole subtree in document order, `top` being the first; null at its end.
inline pugi::xml_node next(pugi::xml_node node, pugi::xml_node top);
/// As `next`, but skips the descendants of `node`.
inline pugi::xml_node nextBeside(pugi::xml_node node, pugi::xml_node top)
{
    while (node != top) {
        if (const pugi::xml_node sibling = node.next_sibling()) {
            return sibling;
        }
        node = node.parent();
    }
    return {};
}

inline pugi::xml_node next(pugi::xml_node node, pugi::xml_node top)
{
    const pugi::xml_node child = node.first_child();
    return child ? child : nextBeside(node, top);
}

/// The `<visual_scene>` that the document shows; null if it shows none.
pugi::xml_node shownScene(Document& document);
/// All `<node>` elements in a subtree, in document order.
std::vector<pugi::xml_node> nodesIn(pugi::xml_node subtree);

/// The bytes that an element takes in the text of the document.
std::uint64_t sizeOf(pugi::xml_node element);
/// Gives all elements with an id in a subtree a new one, and lets references within the subtree follow.
/// @return what became of each id
std::unordered_map<std::string, std::string> renewIds(Document& document, pugi::xml_node subtree);

/// Removes an element and the blanks before it.
void removeElement(pugi::xml_node element);
/// Makes an element where the schema has the transforms of a `<node>`: before all others.
pugi::xml_node prependTransform(pugi::xml_node node, const char* name, const std::string& text);

/// A text made of letters, digits, `_`, `-` and `.` alone, for ids that references and targets name.
std::string plain(std::string_view text);

} // namespace libPrepare
