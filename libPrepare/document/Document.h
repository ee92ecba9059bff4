#pragma once

#include <libPrepare/Prepare.h>
#include <libPrepare/document/Census.h>
#include <libPrepare/document/Lines.h>
#include <libPrepare/document/Names.h>

#include <pugixml.hpp>
#include <tsl/ordered_map.h>

#include <cstring>
#include <initializer_list>
#include <memory>
#include <memory_resource>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace libPrepare {

/// The first child element on a path such as "technique_common/accessor"; null if there is none.
pugi::xml_node descend(pugi::xml_node element, std::string_view path);
/// The text of an element: of all its runs, character data sections included, joined as by an XML reader.
/// @param scratch where the text is joined if it has several runs
std::string_view textOf(pugi::xml_node element, std::string& scratch);
std::string textOf(pugi::xml_node element);
/// Takes an element out of the document. Its memory stays until the passes have ended, so that handles of it, such as
/// those by id, stay valid.
void discard(pugi::xml_node element);
/// Frees the memory of all discarded elements.
void freeDiscarded(pugi::xml_document& xml);
/// Replaces everything in an element by a text.
void setText(pugi::xml_node element, const std::string& text);
/// All numbers of an element's text, as `numbers` reads them.
std::vector<double> numbersOf(pugi::xml_node element);
/// Sets an attribute, and creates it if it is missing.
void setAttribute(pugi::xml_node element, const char* name, const std::string& value);

/// A copy of a text that lives as long as the memory.
std::string_view copyTo(std::pmr::memory_resource& memory, std::string_view text);

class Sources;

/// The document that the passes work on: its tree, its ids, the origin of each element, and the report.
class Document {
public:
    /// @param lines those of the text that the tree was parsed from; may be empty
    /// @param isPlain whether no name in the document has a prefix for certain
    Document(pugi::xml_document& xml, std::filesystem::path file, const Options& options, Report& report,
             Lines lines = {}, bool isPlain = false);
    ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    pugi::xml_node root() const { return m_xml.document_element(); } ///< `<COLLADA>`.
    pugi::xml_document& xml() const { return m_xml; }
    const Options& options() const { return m_options; }
    /// Where the document comes from.
    const std::filesystem::path& file() const { return m_file; }
    /// Path of the result; by default the path of the document.
    const std::filesystem::path& target() const { return m_target; }
    void setTarget(std::filesystem::path target) { m_target = std::move(target); }
    Report& report() { return m_report; }
    bool canHavePrefixes() const { return !m_isPlain; }

    /// Whether transforms now declare their values at second 0 instead of those given in the document.
    bool isAtStart() const { return m_isAtStart; }
    void setAtStart() { m_isAtStart = true; }

    /// The census of the document. Its lists are those of the last walk; see `forgetCensus`.
    const Census& census();
    /// Has to be called by the first passes when they have changed something.
    void forgetCensus() { m_census.reset(); }
    /// Frees the lists of the census, which later passes do not need. What it says about names stays true, because
    /// passes only make elements of kinds that exist.
    void closeCensus();

    /// The sources of its meshes that passes have requested.
    Sources& sources() { return *m_sources; }

    /// The first element with an id among those of these kinds, in document order; of any kind if none is named.
    pugi::xml_node byId(std::string_view id, std::initializer_list<const char*> kinds = {});
    pugi::xml_node byId(std::string_view id, const Kinds& kinds);
    /// The element that a reference within the document names, such as `#id`, also with this file's own name before the
    /// `#`. Null if it leads nowhere or to another document. Ignores blanks around it and decodes percent encoding.
    pugi::xml_node resolve(std::string_view reference, std::initializer_list<const char*> kinds = {});
    pugi::xml_node resolve(std::string_view reference, const Kinds& kinds);
    /// Reserves an id that no element has had so far: the wish itself if it is free, otherwise with a number appended.
    std::string freshId(std::string_view wish);
    /// Gives an element an id and registers it.
    void setId(pugi::xml_node element, const std::string& id);
    /// Registers the ids of a subtree that was copied or moved in.
    void registerIds(pugi::xml_node subtree);
    /// Whether each id has had only one element since the ids were read.
    bool areIdsUnique();
    /// Has to be called after elements with ids were removed, before the next look-up.
    void forgetIds() { m_areIdsKnown = false; }

    /// Records that an element made by a pass, or a copy, comes from another one, whose line reports give.
    void setOrigin(pugi::xml_node made, pugi::xml_node origin);
    /// Whether a pass made an element, or copied it.
    bool isMade(pugi::xml_node element) const { return m_origins.count(element.hash_value()) > 0; }
    Place placeOf(pugi::xml_node element) const;

    /// Reports that something now says the same with other elements.
    void rewritten(pugi::xml_node where, const char* kind, std::string text, std::string remedy = {});
    /// Reports an approximation.
    void approximated(pugi::xml_node where, const char* kind, std::string text, std::string remedy,
                      Approximation numbers);
    /// Reports that the result cannot express something.
    void lost(pugi::xml_node where, const char* kind, std::string text, std::string remedy);

    /// Counts bytes that a pass adds to the document. @return false once more than `Options::maxSize` would be reached,
    /// and nothing is counted then; the pass leaves the rest out and reports it
    bool takeBytes(std::uint64_t bytes);
    /// Bytes that passes have added.
    std::uint64_t takenBytes() const { return m_bytes - m_lines.size(); }

private:
    template <class IsFitting>
    pugi::xml_node find(std::string_view id, const IsFitting& isFitting);
    template <class Find>
    pugi::xml_node follow(std::string_view reference, const Find& find);
    std::string step(pugi::xml_node element) const;
    void indexIds();
    void add(pugi::xml_node where, Outcome outcome, const char* kind, std::string text, std::string remedy);

    pugi::xml_document& m_xml;
    std::filesystem::path m_file;
    std::filesystem::path m_target;
    const Options& m_options;
    Report& m_report;
    Lines m_lines;
    std::uint64_t m_bytes;
    bool m_areIdsKnown = false;
    // Elements with an id, in document order: most ids have one.
    struct Bearers {
        pugi::xml_node first;
        std::vector<pugi::xml_node> others;

        void add(pugi::xml_node element);
        void remove(pugi::xml_node element);
    };
    void registerId(pugi::xml_node element, std::string_view id); // which has to be in the arena
    Bearers& bearersOf(std::string_view id);
    bool takeId(std::string_view id);

    // Its places are small and its values lie side by side.
    template <class Key, class Value>
    using FlatMap = tsl::ordered_map<Key, Value, std::hash<Key>, std::equal_to<Key>,
                                     std::allocator<std::pair<Key, Value>>, std::vector<std::pair<Key, Value>>>;

    std::pmr::monotonic_buffer_resource m_arena;             // of the ids, which are never given back
    FlatMap<std::string_view, Bearers> m_ids;                // of all ids that were ever taken
    std::unordered_map<std::string, unsigned> m_nextNumbers; // after wishes for ids
    std::optional<Census> m_census;
    std::unique_ptr<Sources> m_sources;
    bool m_isPlain;
    bool m_areIdsUnique = true;
    bool m_isAtStart = false;
    std::unordered_map<std::size_t, pugi::xml_node> m_origins;
    // Among the children of one name, from 1, and 0 for an only one: of parents for whose children it was asked.
    mutable std::unordered_map<std::size_t, std::unordered_map<std::size_t, unsigned>> m_numbers;
};

} // namespace libPrepare
