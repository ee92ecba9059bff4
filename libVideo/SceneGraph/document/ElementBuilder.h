#pragma once

/// @file
/// Makes the elements of a document.

#include "AddressPairMap.h"
#include "ElementTypes.h"
#include "IdIndex.h"
#include "ListReader.h"
#include "ParentSteps.h"

#include <libVideo/ColladaDom.h>

#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace libVideo::detail {

/// A name in a document, in two parts. The parts keep their addresses until the document has been read, and equal parts
/// have the same address.
struct QualifiedName {
    const char* local = nullptr;
    const char* prefix = nullptr; ///< Null if it has none.

    std::string whole() const { return prefix == nullptr ? local : std::string(prefix) + ':' + local; }
};

/// Makes the elements of a document while it is parsed, just as the document model's own reader does: the same elements
/// with the same values in the same places, and the same warnings. It omits what is needed only to modify a document:
/// the ranks of an element's children, and the choices made in its content model.
///
/// An element belongs to its document from the start. Its children are placed when it ends, because only then is
/// their number known.
class ElementBuilder {
public:
    /// @param document gets its root from `finish()`; has to outlive the elements
    /// @param line returns the line that the parser has reached, for warnings
    ElementBuilder(DAE& dae, ElementTypes& types, daeDocument& document, std::function<int()> line);

    /// Starts an element. Its namespaces and attributes follow.
    /// @return false if the element would crash the document model
    bool start(const QualifiedName& name);
    /// Sets an attribute of the current element. @return false if the attribute would take too long to resolve
    bool setAttribute(const QualifiedName& name, std::string_view value);
    /// Ends the attributes. @return false if the element is the root and has another version
    bool finishStart();
    /// Adds a piece of the current element's text. @return false if the text would take too long to resolve
    bool addText(std::string_view text);
    /// Ends a run of text at something that is neither text nor an element, such as a comment.
    void partText() { endText(); }
    /// Ends the current element.
    void end();

    /// Whether the root has started and ended.
    bool isWhole() const { return m_root != nullptr && m_levels.empty(); }
    /// Sets the root of the document. @return the ids of its elements
    IdIndex finish();
    /// Whether the result of `finish()` is right. False if an id repeats or an element found no place, because then
    /// only a walk through the whole tree finds the first element of each id.
    bool areIdsKnown() const { return m_areIdsKnown; }

private:
    struct Level {
        daeElementRef element; // null if skipped
        const ElementType* type;
        std::size_t firstChild; // in `m_children`
        bool hasAttributes;
        bool hasReference; // its text is a reference that has been set
    };
    struct Child {
        daeElementRef element;
        const ChildType* type;
    };
    struct Attribute {
        daeMetaAttribute* meta = nullptr; // null if the type has none of that name
        std::size_t index = 0;
    };

    const ChildType& childType(const ElementType& parent, const QualifiedName& name);
    Attribute attribute(const ElementType& type, const QualifiedName& name);
    daeElementRef make(const ChildType& child, const QualifiedName& name);
    void endText();
    void warn(const std::string& text, const char* end) const;
    void placeChildren(const Level& level);
    void placeAtPlaces(daeElement& parent, const ElementType& type, std::size_t first);
    void fillContents(daeElement& parent);

    DAE& m_dae;
    ElementTypes& m_types;
    daeDocument& m_document;
    std::function<int()> m_line;
    std::vector<Level> m_levels;
    std::vector<Child> m_children; // of unfinished elements, not placed yet
    daeElementRef m_root;
    std::deque<ChildType> m_childTypes;
    AddressPairMap<const ChildType*> m_childTypesByName;
    AddressPairMap<Attribute> m_attributes;

    // The current run of text.
    std::string m_text;
    bool m_hasCharacters = false; // besides blanks
    ListReader m_list;
    ParentSteps m_steps;

    IdIndex m_ids;
    bool m_areIdsKnown = true;
    std::string m_value; // of an attribute

    // Scratch memory for placing children.
    std::vector<int> m_targets;
    std::vector<daeInt> m_counts;
    std::vector<int> m_chosen;
    std::vector<std::pair<daeUInt, daeElement*>> m_contents;
};

} // namespace libVideo::detail
