#pragma once

/// @file
/// Changes of documents that leave them well-formed: one by one in order, or by chance.

#include <pugixml.hpp>

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace testSupport {

/// One change at one element. What its numbers mean depends on its kind; each counts modulo the choices that there are.
struct DocumentChange {
    enum Kind : unsigned {
        attributeReplaced, ///< attribute `part` by value `value` of its sort: numbers, references, words
        attributeRemoved,  ///< attribute `part`
        tokenReplaced,     ///< blank-separated token `part` of the text by value `value` of its sort
        tokenRemoved,      ///< token `part`
        textReplaced,      ///< the whole text: by nothing, by itself twice, by blanks
        elementRemoved,
        elementEmptied,
        elementDoubled, ///< a copy after it
        elementNested,  ///< a copy inside of itself, after its children
        elementSwapped, ///< with the next sibling
        elementMoved,   ///< to the end of element `value`, unless that lies inside of it
        elementRenamed, ///< to name `value` of the schema
        attributeAdded, ///< attribute `value` of the schema, with a value of `part`
        elementAdded,   ///< an element of name `value` of the schema, after its children
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
    /// @return whether anything was there to change. The elements are counted anew afterwards.
    bool apply(const DocumentChange& change);

    /// All changes of the kinds up to `elementSwapped`, and some of `elementMoved` and `elementRenamed`, in document
    /// order. Of long texts ten tokens are changed, evenly spread.
    std::vector<DocumentChange> everyChange() const;

    /// Puts a copy of some element of another document after the children of some element of this one.
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

/// Changes documents by chance; equal seeds make equal changes.
class DocumentMutator {
public:
    explicit DocumentMutator(std::uint32_t seed) : m_random(seed) {}

    /// One to four changes. @return false, with the text as it was, if it is not well-formed
    bool mutate(std::string& text);
    /// Takes some element of the other document over, and may change the result.
    bool crossOver(std::string& text, const std::string& other);

private:
    std::size_t below(std::size_t bound);
    void change(ChangeableDocument& document);

    std::minstd_rand m_random;
};

} // namespace testSupport
