#pragma once

#include <libPrepare/document/Document.h>
#include <libPrepare/geometry/ColumnCensus.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace libPrepare {

/// How the accessor of a `<source>` selects its numbers.
struct SourceLayout {
    pugi::xml_node source;
    pugi::xml_node accessor;
    pugi::xml_node array; ///< `<float_array>` or `<int_array>`, maybe of another source.
    std::size_t offset = 0;
    std::size_t stride = 1;
    std::vector<std::size_t> columns; ///< Positions of the selected values within a record.
    std::size_t count = 0;            ///< Records that the array holds, at most as many as the accessor says.
    bool isFinite = true;             ///< Every entry of the array is a finite number.

    std::size_t width() const { return columns.size(); }
    /// Whether the records are all that the array holds, or the first of them.
    bool isDense() const { return offset == 0 && width() == stride; }
};

/// A cache of the records of a document's sources, shared by the passes. Keeps each requested source until `forget`.
class Sources {
public:
    explicit Sources(Document& document) : m_document(document) {}

    /// Null if there is no accessor or it does not lead to numbers.
    const SourceLayout* find(pugi::xml_node source);
    /// All records, `width()` numbers each; NaN for words that are no numbers. Valid until the next call: only the last
    /// source is kept, because the primitives of a mesh use the same one.
    const std::vector<double>& values(const SourceLayout& layout);
    /// As `censusOf`, of the text of a `<p>`. Valid until the next call.
    const ColumnCensus& census(pugi::xml_node list, std::size_t stride, std::size_t tuples);
    /// Keeps a census of a `<p>` that does not change until `forget`.
    void keepCensus(pugi::xml_node list, std::size_t stride, std::size_t tuples, ColumnCensus census);
    /// Frees the memory of `values`.
    void freeValues();
    /// Has to be called after sources were changed.
    void forget();

private:
    std::optional<SourceLayout> read(pugi::xml_node source);

    Document& m_document;
    std::unordered_map<std::size_t, std::optional<SourceLayout>> m_layouts;
    pugi::xml_node m_valuesOf;
    std::vector<double> m_values;
    struct KnownCensus {
        std::size_t stride;
        std::size_t limit;
        ColumnCensus census;
    };
    std::unordered_map<std::size_t, KnownCensus> m_censuses;
    ColumnCensus m_lastCensus; // of a list without a kept census
};

/// One `<input>` of a primitive or of `<vertices>`.
struct Input {
    pugi::xml_node element;
    std::string semantic;
    std::size_t offset = 0;
    long long set = 0;
};

/// The inputs of an element, in document order.
std::vector<Input> inputsOf(pugi::xml_node element);
/// Indices that a corner takes: the greatest offset and one more.
std::size_t strideOf(const std::vector<Input>& inputs);
/// The first input with a semantic; null if there is none.
const Input* firstInput(const std::vector<Input>& inputs, std::string_view semantic);
/// As `Document::resolve`, but first looks among the first children of an element: most references in a mesh lead to its
/// own children.
pugi::xml_node resolveNear(Document& document, std::string_view reference, std::initializer_list<const char*> kinds,
                           pugi::xml_node parent);
/// The positions of a primitive; null if there are none.
const SourceLayout* positionsOf(Document& document, Sources& sources, const std::vector<Input>& inputs);

/// An empty `<source>` of a geometry's mesh, named after both.
pugi::xml_node addVectorSource(Document& document, pugi::xml_node geometry, const char* role);
/// Adds an array and an accessor with three numbers per record.
void fillVectorSource(Document& document, pugi::xml_node source, const std::vector<double>& values);

/// The value of an attribute that holds a whole number from 0.
std::size_t wholeOr(std::string_view text, std::size_t otherwise);
/// All entries of an index list; -1 for anything but a whole number from 0 to 2^31 - 1.
std::vector<std::int32_t> indices(std::string_view text);

/// Appends an entry, with a blank before it if there is one already.
void appendEntry(std::string& list, long long value);

} // namespace libPrepare
