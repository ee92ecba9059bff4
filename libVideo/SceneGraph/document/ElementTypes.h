#pragma once

/// @file
/// What the schema makes of the names in a document.

#include <libVideo/ColladaDom.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace libVideo::detail {

/// A place that the content model of a type has for children.
struct ChildPlace {
    std::string name;               ///< Of the children.
    daeMetaElement* meta = nullptr; ///< Of the children.
    daeInt offset = 0;              ///< Of the member of the element that holds them.
    std::size_t member = 0;         ///< The first place with that offset: names may share a member.
    bool isArray = false;           ///< The member is an array, not a single reference.
    daeInt maximum = 1;             ///< How many it takes; -1 for any number.
    daeUInt ordinal = 0;            ///< The rank of these children among all of the element.
    int choice = -1;                ///< Which of the either-or choices of the type it belongs to; -1 for none.
};

/// How the document model types an element.
struct ElementType {
    enum class Kind {
        known,
        any,     ///< taken in although it is not known
        skipped, ///< passed over, with everything below
    };
    enum class Content {
        places,   ///< children go to the places that are listed
        anything, ///< every child is taken, in the order of the document
        asked,    ///< only the document model knows where a child goes
    };
    enum class Value {
        none,
        text,    ///< anything but the following
        doubles, ///< a list, as the following
        unsigneds,
        signeds,
        names,
    };

    Kind kind = Kind::skipped;
    daeMetaElement* meta = nullptr; ///< Of a known one.
    Content content = Content::anything;
    std::vector<ChildPlace> places; ///< In the order of the content model.
    unsigned choiceCount = 0;
    Value value = Value::none;
    bool holdsReference = false;         ///< Its text is one.
    std::vector<std::size_t> references; ///< The attributes that are references.
};

/// What a child of an element becomes.
struct ChildType {
    const ElementType* type = nullptr; ///< Null if the document model does not survive such a child.
    bool isRenamed = false;            ///< Its name is not that of its type.
    bool isAbstract = false;           ///< It is made, and finds no place.
    std::vector<unsigned> places;      ///< Of the parent: where it may go, the first one with room.
};

/// The types of elements of one `DAE`, by the type of their parent and their name. All of it is worked out from the
/// tables of the document model, when it is asked for.
class ElementTypes {
public:
    explicit ElementTypes(DAE& dae);
    ~ElementTypes() = default;
    ElementTypes(const ElementTypes&) = delete;
    ElementTypes& operator=(const ElementTypes&) = delete;

    const ElementType& known(daeMetaElement& meta);
    const ElementType& any() const { return m_any; }
    const ElementType& skipped() const { return m_skipped; }

    /// @param hasPrefix whether the name has one; no name of the schema does
    /// @return what becomes of a child of that name
    ChildType child(const ElementType& parent, const char* name, bool hasPrefix);

    /// The children of an element, in the order of the document model, without its search for doubles.
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
