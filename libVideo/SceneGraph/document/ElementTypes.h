#pragma once

/// @file
/// The types that the schema gives to the elements of a document.

#include <libVideo/ColladaDom.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace libVideo::detail {

/// A place for children in the content model of a type.
struct ChildPlace {
    std::string name;               ///< Name of the children.
    daeMetaElement* meta = nullptr; ///< Type of the children.
    daeInt offset = 0;              ///< Offset of the member that holds them in the element.
    std::size_t member = 0;         ///< Index of the first place with that offset: several names may share a member.
    bool isArray = false;           ///< Whether the member is an array or a single reference.
    daeInt maximum = 1;             ///< Maximum number of children; -1 for no limit.
    daeUInt ordinal = 0;            ///< Rank of these children among all children of the element.
    int choice = -1;                ///< Index of the either-or choice that it belongs to; -1 for none.
};

/// What the document model knows about the elements of one type.
struct ElementType {
    enum class Kind {
        known,
        any,     ///< accepted although the schema does not know it
        skipped, ///< ignored, with all elements in it
    };
    enum class Content {
        places,   ///< children go to the listed places
        anything, ///< every child is accepted, in document order
        asked,    ///< the document model places the children
    };
    enum class Value {
        none,
        text,    ///< a value of any other type
        doubles, ///< a list, like those below
        unsigneds,
        signeds,
        names,
    };

    Kind kind = Kind::skipped;
    daeMetaElement* meta = nullptr; ///< Null unless known.
    Content content = Content::anything;
    std::vector<ChildPlace> places; ///< In the order of the content model.
    unsigned choiceCount = 0;
    Value value = Value::none;
    bool holdsReference = false;         ///< Whether its text is a reference.
    std::vector<std::size_t> references; ///< Indices of the attributes that are references.
};

/// How the document model treats a child of an element.
struct ChildType {
    const ElementType* type = nullptr; ///< Null if such a child would crash the document model.
    bool isRenamed = false;            ///< Whether its name differs from that of its type.
    bool isAbstract = false;           ///< Whether it is made without being placed.
    std::vector<unsigned> places;      ///< Indices of places of the parent. It goes to the first one with room.
};

/// Finds the types of the elements of one `DAE`, by their name and the type of their parent. They are derived from the
/// tables of the document model on first use.
class ElementTypes {
public:
    explicit ElementTypes(DAE& dae);
    ~ElementTypes() = default;
    ElementTypes(const ElementTypes&) = delete;
    ElementTypes& operator=(const ElementTypes&) = delete;

    const ElementType& known(daeMetaElement& meta);
    const ElementType& any() const { return m_any; }
    const ElementType& skipped() const { return m_skipped; }

    /// @param name without its prefix
    /// @param hasPrefix whether the name has a prefix, which no name of the schema has
    ChildType child(const ElementType& parent, const char* name, bool hasPrefix);

    /// Appends the children of an element in the order of the document model, without its search for duplicates.
    void appendChildren(daeElement& element, std::vector<daeElement*>& children);

private:
    daeMetaElement* topLevel(const char* name);

    DAE& m_dae;
    ElementType m_skipped;
    ElementType m_any;
    std::unordered_map<daeMetaElement*, std::unique_ptr<ElementType>> m_known;
    std::unordered_map<std::string_view, daeMetaElement*> m_topLevel;
};

} // namespace libVideo::detail
