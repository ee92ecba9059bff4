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

/// A name in a document, by its parts. Both stay where they are until the document has been read, and equal parts have
/// one address.
struct QualifiedName {
    const char* local = nullptr;
    const char* prefix = nullptr; ///< Null if it has none.

    std::string whole() const { return prefix == nullptr ? local : std::string(prefix) + ':' + local; }
};

/// Makes the elements of one document while it is read, as the document model's own reader would: the same elements with
/// the same values, at the same places, and the same warnings. What only a change of a document needs is left out: the
/// ranks of the children of an element, and what it has chosen.
///
/// An element belongs to its document from the start. Its children find their places at its end, when it is known how
/// many there are.
class ElementBuilder {
public:
    /// @param document is given a root by `finish()`, and has to stay until all elements are gone
    /// @param line the line that the parser has reached, for warnings
    ElementBuilder(DAE& dae, ElementTypes& types, daeDocument& document, std::function<int()> line);

    /// An element begins. Its namespaces and attributes follow.
    /// @return false if the document model would not survive it
    bool start(const QualifiedName& name);
    /// An attribute of the element that began last. @return false if it costs too much to resolve
    bool setAttribute(const QualifiedName& name, std::string_view value);
    /// All attributes have been set. @return false if the element is a root of another version
    bool finishStart();
    /// Text in the current element, a piece of it. @return false if it costs too much to resolve
    bool addText(std::string_view text);
    /// Something that is neither text nor an element parts the text.
    void partText() { endText(); }
    /// The current element ends.
    void end();

    /// Whether the root has begun and ended.
    bool isWhole() const { return m_root != nullptr && m_levels.empty(); }
    /// Gives the document its root. @return the ids of its elements
    IdIndex finish();
    /// Whether `finish()` gives all ids; otherwise a walk has to tell which of several comes first.
    bool areIdsKnown() const { return m_areIdsKnown; }

private:
    struct Level {
        daeElementRef element; // null if it is skipped
        const ElementType* type;
        std::size_t firstChild; // among those that wait
        bool hasAttributes;
        bool hasReference; // in its text
    };
    struct Child {
        daeElementRef element;
        const ChildType* type; // null for the root
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
    std::vector<Child> m_children; // that wait for the ends of their parents
    daeElementRef m_root;
    std::deque<ChildType> m_childTypes;
    AddressPairMap<const ChildType*> m_childTypesByName;
    AddressPairMap<Attribute> m_attributes;

    // The current run of text, up to the next thing that is no text.
    std::string m_text;
    bool m_hasCharacters = false; // other than blanks
    ListReader m_list;
    ParentSteps m_steps;

    IdIndex m_ids;
    bool m_areIdsKnown = true;
    std::string m_value; // of an attribute

    // Of the children that are being placed.
    std::vector<int> m_targets;
    std::vector<daeInt> m_counts;
    std::vector<int> m_chosen;
    std::vector<std::pair<daeUInt, daeElement*>> m_contents;
};

} // namespace libVideo::detail
