#pragma once

#include <libPrepare/document/Document.h>

#include <cstdint>

namespace libPrepare {

/// The next element in a walk over the subtree of `top` in document order; null at its end.
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

/// The size of an element in the text of the document, in bytes.
std::uint64_t sizeOf(pugi::xml_node element);
/// Gives all elements with an id in a subtree a new one, and updates references within the subtree.
/// @return the new ids by the old ones
std::unordered_map<std::string, std::string> renewIds(Document& document, pugi::xml_node subtree);

/// Discards an element and the blanks before it.
void removeElement(pugi::xml_node element);
/// Makes a transform of a `<node>` before all others.
pugi::xml_node prependTransform(pugi::xml_node node, const char* name, const std::string& text);

/// Replaces everything but letters, digits, `_`, `-` and `.` for an id that references and targets can name.
std::string plain(std::string_view text);

} // namespace libPrepare
