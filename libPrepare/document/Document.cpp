#include "Document.h"

#include "Numbers.h"
#include "Reference.h"
#include "Tree.h"

#include <libPrepare/geometry/Sources.h>

#include <algorithm>
#include <tuple>

namespace libPrepare {

std::string_view copyTo(std::pmr::memory_resource& memory, std::string_view text)
{
    auto* const copy = static_cast<char*>(memory.allocate(text.size() + 1, 1));
    std::copy(text.begin(), text.end(), copy);
    return {copy, text.size()};
}

pugi::xml_node descend(pugi::xml_node element, std::string_view path)
{
    while (element && !path.empty()) {
        const std::size_t slash = std::min(path.find('/'), path.size());
        element = element.child(std::string(path.substr(0, slash)).c_str());
        path.remove_prefix(std::min(slash + 1, path.size()));
    }
    return element;
}

std::string_view textOf(pugi::xml_node element, std::string& scratch)
{
    std::string_view only;
    unsigned runs = 0;
    pugi::xml_node child = element.first_child();
    for (pugi::xml_node_type type = child.type(); type != pugi::node_null; type = child.type()) {
        const bool isText = type == pugi::node_pcdata || type == pugi::node_cdata;
        runs += isText ? 1 : 0;
        if (isText && runs == 1) {
            only = child.value();
        } else if (isText) {
            if (runs == 2) {
                scratch.assign(only);
            }
            scratch += child.value();
        }
        child = child.next_sibling();
    }
    return runs > 1 ? std::string_view(scratch) : only;
}

std::string textOf(pugi::xml_node element)
{
    std::string scratch;
    return std::string(textOf(element, scratch));
}

namespace {

constexpr char discardedName[] = "discarded"; // a second element beside the root

}

void discard(pugi::xml_node element)
{
    pugi::xml_node document = element.root();
    pugi::xml_node place = document.last_child();
    if (!is(place, discardedName)) {
        place = document.append_child(discardedName);
    }
    place.append_move(element);
}

void freeDiscarded(pugi::xml_document& xml)
{
    if (is(xml.last_child(), discardedName) && xml.last_child() != xml.document_element()) {
        xml.remove_child(xml.last_child());
    }
}

void setText(pugi::xml_node element, const std::string& text)
{
    for (pugi::xml_node child = element.first_child(); child; child = element.first_child()) {
        if (child.type() == pugi::node_element) {
            discard(child);
        } else {
            element.remove_child(child);
        }
    }
    if (!text.empty()) {
        element.append_child(pugi::node_pcdata).set_value(text.c_str());
    }
}

std::vector<double> numbersOf(pugi::xml_node element)
{
    std::string scratch;
    return numbers(textOf(element, scratch));
}

void setAttribute(pugi::xml_node element, const char* name, const std::string& value)
{
    pugi::xml_attribute attribute = element.attribute(name);
    if (!attribute) {
        attribute = element.append_attribute(name);
    }
    attribute.set_value(value.c_str());
}

Document::Document(pugi::xml_document& xml, std::filesystem::path file, const Options& options, Report& report,
                   Lines lines, bool isPlain)
    : m_xml(xml),
      m_file(std::move(file)),
      m_target(m_file),
      m_options(options),
      m_report(report),
      m_lines(std::move(lines)),
      m_bytes(m_lines.size()),
      m_sources(std::make_unique<Sources>(*this)),
      m_isPlain(isPlain)
{}

Document::~Document()
{
    freeDiscarded(m_xml);
}

const Census& Document::census()
{
    if (!m_census) {
        m_census = Census::of(root(), m_arena);
    }
    return *m_census;
}

void Document::closeCensus()
{
    if (m_census) {
        m_census->references = {};
        m_census->bearers = {};
        m_census->isOpen = false;
    }
}

void Document::Bearers::add(pugi::xml_node element)
{
    if (first) {
        others.push_back(element);
    } else {
        first = element;
    }
}

void Document::Bearers::remove(pugi::xml_node element)
{
    if (first == element) {
        first = others.empty() ? pugi::xml_node() : others.front();
        others.erase(others.begin(), others.begin() + (others.empty() ? 0 : 1));
        return;
    }
    others.erase(std::remove(others.begin(), others.end(), element), others.end());
}

void Document::indexIds()
{
    if (m_areIdsKnown) {
        return;
    }
    for (auto each = m_ids.begin(); each != m_ids.end(); ++each) {
        each.value() = {};
    }
    m_areIdsKnown = true;
    m_areIdsUnique = true;
    if (!m_census || !m_census->isOpen) {
        registerIds(root());
        return;
    }
    m_ids.reserve(m_census->bearers.size());
    for (const Census::Bearer& bearer : m_census->bearers) {
        registerId(bearer.element, bearer.id);
    }
}

void Document::registerId(pugi::xml_node element, std::string_view id)
{
    Bearers& bearers = m_ids[id];
    m_areIdsUnique = m_areIdsUnique && !bearers.first;
    bearers.add(element);
}

bool Document::takeId(std::string_view id)
{
    if (m_ids.find(id) != m_ids.end()) {
        return false;
    }
    bearersOf(id);
    return true;
}

Document::Bearers& Document::bearersOf(std::string_view id)
{
    auto found = m_ids.find(id);
    if (found != m_ids.end()) {
        return found.value();
    }
    return m_ids[copyTo(m_arena, id)];
}

bool Document::areIdsUnique()
{
    indexIds();
    return m_areIdsUnique;
}

void Document::registerIds(pugi::xml_node subtree)
{
    if (!m_areIdsKnown) {
        return; // the next look-up reads them all
    }
    for (pugi::xml_node element = subtree; element; element = next(element, subtree)) {
        if (const pugi::xml_attribute id = element.attribute("id")) {
            registerId(element, copyTo(m_arena, trimmed(id.value()))); // nearly all are new
        }
    }
}

template <class IsFitting>
pugi::xml_node Document::find(std::string_view id, const IsFitting& isFitting)
{
    indexIds();
    const auto found = m_ids.find(id);
    if (found == m_ids.end()) {
        return {};
    }
    const Bearers& bearers = found->second;
    if (bearers.first && isFitting(bearers.first)) {
        return bearers.first;
    }
    const auto element = std::find_if(bearers.others.begin(), bearers.others.end(), isFitting);
    return element == bearers.others.end() ? pugi::xml_node() : *element;
}

pugi::xml_node Document::byId(std::string_view id, std::initializer_list<const char*> kinds)
{
    return find(id, [&](pugi::xml_node element) {
        return kinds.size() == 0 ||
               std::any_of(kinds.begin(), kinds.end(), [&](const char* kind) { return is(element, kind); });
    });
}

pugi::xml_node Document::byId(std::string_view id, const Kinds& kinds)
{
    return find(id, [&](pugi::xml_node element) {
        return kinds[0] == nullptr || std::any_of(kinds.begin(), kinds.end(), [&](const char* kind) {
                   return kind != nullptr && is(element, kind);
               });
    });
}

template <class Find>
pugi::xml_node Document::follow(std::string_view reference, const Find& find)
{
    reference = trimmed(reference);
    const std::size_t mark = reference.find('#');
    if (mark == std::string_view::npos) {
        return {};
    }
    const std::string file = percentDecoded(reference.substr(0, mark));
    if (!file.empty() && file.substr(file.find_last_of("/\\") + 1) != m_file.filename().string()) {
        return {};
    }
    const std::string_view id = reference.substr(mark + 1);
    const pugi::xml_node found = find(id);
    return found ? found : find(percentDecoded(id));
}

pugi::xml_node Document::resolve(std::string_view reference, std::initializer_list<const char*> kinds)
{
    return follow(reference, [&](std::string_view id) { return byId(id, kinds); });
}

pugi::xml_node Document::resolve(std::string_view reference, const Kinds& kinds)
{
    return follow(reference, [&](std::string_view id) { return byId(id, kinds); });
}

std::string Document::freshId(std::string_view wish)
{
    indexIds();
    std::string id(wish);
    if (takeId(id)) {
        return id;
    }
    unsigned& number = m_nextNumbers.try_emplace(id, 2).first->second;
    do {
        id = std::string(wish) + '-' + std::to_string(number++);
    } while (!takeId(id));
    return id;
}

void Document::setId(pugi::xml_node element, const std::string& id)
{
    indexIds();
    if (const pugi::xml_attribute old = element.attribute("id")) {
        bearersOf(trimmed(old.value())).remove(element);
    }
    setAttribute(element, "id", id);
    bearersOf(id).add(element);
}

void Document::setOrigin(pugi::xml_node made, pugi::xml_node origin)
{
    const auto known = m_origins.find(origin.hash_value());
    m_origins[made.hash_value()] = known == m_origins.end() ? origin : known->second;
}

// An element's name with its id, or with its number among its siblings.
std::string Document::step(pugi::xml_node element) const
{
    std::string result = element.name();
    if (const pugi::xml_attribute id = element.attribute("id")) {
        return result + "[@id='" + id.value() + "']";
    }
    const pugi::xml_node parent = element.parent();
    const auto [place, isNew] = m_numbers.try_emplace(parent.hash_value());
    if (isNew) { // all children at once, because there may be very many
        std::unordered_map<std::string_view, std::pair<unsigned, pugi::xml_node>> counts;
        for (const pugi::xml_node child : parent.children()) {
            if (child.type() == pugi::node_element) {
                auto& [count, first] = counts[child.name()];
                first = count == 0 ? child : first;
                place->second[child.hash_value()] = ++count;
            }
        }
        for (const auto& each : counts) {
            if (each.second.first == 1) {
                place->second[each.second.second.hash_value()] = 0;
            }
        }
    }
    const auto number = place->second.find(element.hash_value());
    if (number != place->second.end() && number->second > 0) {
        result += '[' + std::to_string(number->second) + ']';
    }
    return result;
}

Place Document::placeOf(pugi::xml_node element) const
{
    while (element && element.type() != pugi::node_element) {
        element = element.parent();
    }
    const auto origin = m_origins.find(element.hash_value());
    if (origin != m_origins.end()) {
        element = origin->second;
    }
    Place place;
    if (!m_lines.isEmpty() && element.offset_debug() > 0) {
        const auto nameOffset = static_cast<std::size_t>(element.offset_debug());
        std::tie(place.line, place.column) = m_lines.at(nameOffset - 1); // of the angle bracket
    }
    constexpr std::size_t maxSteps = 40; // the innermost
    std::vector<std::string> steps;
    for (; element && element.type() == pugi::node_element && steps.size() < maxSteps; element = element.parent()) {
        steps.push_back(step(element));
    }
    place.path = element.type() == pugi::node_element ? "..." : "";
    for (auto each = steps.rbegin(); each != steps.rend(); ++each) {
        place.path += (place.path.empty() ? "" : "/") + *each;
    }
    return place;
}

void Document::add(pugi::xml_node where, Outcome outcome, const char* kind, std::string text, std::string remedy)
{
    m_report.changed = m_report.changed || outcome != Outcome::lost;
    m_report.findings.push_back({outcome, kind, std::move(text), std::move(remedy), placeOf(where)});
}

void Document::rewritten(pugi::xml_node where, const char* kind, std::string text, std::string remedy)
{
    add(where, Outcome::rewritten, kind, std::move(text), std::move(remedy));
}

void Document::approximated(pugi::xml_node where, const char* kind, std::string text, std::string remedy,
                            Approximation numbers)
{
    add(where, Outcome::approximated, kind, std::move(text), std::move(remedy));
    m_report.approximations.push_back(std::move(numbers));
}

void Document::lost(pugi::xml_node where, const char* kind, std::string text, std::string remedy)
{
    add(where, Outcome::lost, kind, std::move(text), std::move(remedy));
}

bool Document::takeBytes(std::uint64_t bytes)
{
    if (bytes > m_options.maxSize || m_bytes > m_options.maxSize - bytes) {
        return false;
    }
    m_bytes += bytes;
    return true;
}

} // namespace libPrepare
