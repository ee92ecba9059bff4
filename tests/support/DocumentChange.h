#pragma once

/// @file
/// Changes documents so that they stay well-formed: one change after the other, or at random.

#include <pugixml.hpp>

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace testSupport {

/// One change of one element. The meaning of the numbers depends on the kind; each is taken modulo the number of
/// choices.
struct DocumentChange {
    enum Kind : unsigned {
        attributeReplaced, ///< attribute `part` becomes value `value` of its sort: numbers, references, words
        attributeRemoved,  ///< attribute `part`
        tokenReplaced,     ///< word `part` of the text becomes value `value` of its sort
        tokenRemoved,      ///< word `part`
        textReplaced,      ///< the whole text becomes empty, twice itself, or blanks
        elementRemoved,
        elementEmptied,
        elementDoubled, ///< a copy is inserted after it
        elementNested,  ///< a copy is inserted after its children
        elementSwapped, ///< it trades places with its next sibling
        elementMoved,   ///< it becomes the last child of element `value`, unless that is inside it
        elementRenamed, ///< it gets name `value` of the schema
        attributeAdded, ///< it gets attribute `value` of the schema, with value `part`
        elementAdded,   ///< an element with name `value` of the schema is added after its children
        kindCount
    };

    Kind kind = attributeReplaced;
    std::size_t element = 0; ///< in document order
    std::size_t part = 0;
    std::size_t value = 0;
};

/// A document that can be changed.
class ChangeableDocument {
public:
    /// @return false if the text is not well-formed or has no element
    bool read(const std::string& text);
    std::string text() const;

    std::size_t elementCount() const { return m_elements.size(); }
    /// Renumbers the elements. @return whether there was anything to change
    bool apply(const DocumentChange& change);

    /// All changes of the kinds up to `elementSwapped`, and some of `elementMoved` and `elementRenamed`, in document
    /// order. In a long text, ten words spread evenly are changed.
    std::vector<DocumentChange> everyChange() const;

    /// Copies a random element of another document into a random element of this one, after its children.
    void graft(const ChangeableDocument& other, std::size_t from, std::size_t to);

private:
    enum class Sort { number, reference, target, word };

    void collect();
    static Sort sortOf(const std::string& name, const std::string& value);
    std::string replacement(Sort sort, const pugi::xml_node& element, const std::string& old, std::size_t value) const;
    std::size_t replacementCount(Sort sort) const;
    void addChangesOf(std::size_t element, std::vector<DocumentChange>& changes) const;
    bool applyToText(pugi::xml_node element, const DocumentChange& change);
    bool applyToElement(pugi::xml_node element, const DocumentChange& change);

    pugi::xml_document m_document;
    std::vector<pugi::xml_node> m_elements; // in document order
    std::vector<std::string> m_ids;
    std::vector<std::string> m_sids;
};

/// Changes documents at random; equal seeds give equal changes.
class DocumentMutator {
public:
    explicit DocumentMutator(std::uint32_t seed) : m_random(seed) {}

    /// Makes one to four changes. @return false, and leaves the text alone, if it is not well-formed
    bool mutate(std::string& text);
    /// Copies an element of the other document into this one, and may change the result.
    bool crossOver(std::string& text, const std::string& other);

private:
    std::size_t below(std::size_t bound);
    void change(ChangeableDocument& document);

    std::minstd_rand m_random;
};

} // namespace testSupport
