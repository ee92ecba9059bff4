#include "GeometryCopier.h"

#include <libPrepare/document/Numbers.h>
#include <libPrepare/document/Tree.h>

#include <algorithm>

namespace libPrepare {

bool isPrimitive(pugi::xml_node element)
{
    static constexpr const char* kinds[] = {"triangles", "polylist", "polygons",  "tristrips",
                                            "trifans",   "lines",    "linestrips"};
    const char* const name = element.name();
    return std::any_of(std::begin(kinds), std::end(kinds), [&](const char* kind) { return areEqual(name, kind); });
}

std::vector<pugi::xml_node> primitivesOf(pugi::xml_node geometry)
{
    std::vector<pugi::xml_node> result;
    for (const pugi::xml_node element : geometry.child("mesh").children()) {
        if (isPrimitive(element)) {
            result.push_back(element);
        }
    }
    return result;
}

pugi::xml_node GeometryCopier::copy(pugi::xml_node geometry)
{
    const std::uint64_t size = sizeOf(geometry);
    if (!m_document.takeBytes(size)) {
        return {};
    }
    ++m_copies;
    pugi::xml_node& last = m_last.emplace(geometry.hash_value(), geometry).first->second;
    const pugi::xml_node copy = geometry.parent().insert_child_after("geometry", last);
    last = copy;
    std::unordered_map<std::string, std::string> ids;
    std::vector<std::pair<pugi::xml_node, pugi::xml_node>> open = {{geometry, copy}};
    while (!open.empty()) { // children are appended in order, whatever the order of the elements is
        const pugi::xml_node from = open.back().first;
        pugi::xml_node to = open.back().second;
        open.pop_back();
        copyAttributes(from, to, ids);
        m_document.setOrigin(to, from);
        for (const pugi::xml_node child : from.children()) {
            if (is(child, "source") && is(from, "mesh")) {
                continue;
            }
            pugi::xml_node made = to.append_child(child.type());
            if (child.type() == pugi::node_element) {
                made.set_name(child.name());
                open.emplace_back(child, made);
            } else {
                made.set_name(child.name());
                made.set_value(child.value());
            }
        }
    }
    for (const pugi::xml_node primitive : primitivesOf(copy)) {
        for (const pugi::xml_node input : primitive.children("input")) {
            const std::string_view reference = trimmed(input.attribute("source").value());
            const std::size_t mark = reference.find('#');
            const auto id = ids.find(std::string(reference.substr(mark == std::string_view::npos ? 0 : mark + 1)));
            if (id != ids.end()) {
                setAttribute(input, "source", '#' + id->second);
            }
        }
    }
    return copy;
}

void GeometryCopier::copyAttributes(pugi::xml_node from, pugi::xml_node to,
                                    std::unordered_map<std::string, std::string>& ids)
{
    for (const pugi::xml_attribute attribute : from.attributes()) {
        if (std::string_view(attribute.name()) == "id") {
            const std::string old(trimmed(attribute.value()));
            // A number that grows: looking for a free one from the start would take ever longer.
            const std::string id = m_document.freshId(old + '-' + std::to_string(m_copies + 1));
            m_document.setId(to, id);
            ids.emplace(old, id);
        } else {
            to.append_attribute(attribute.name()).set_value(attribute.value());
        }
    }
}

// Bytes that a copy takes, about; worked out once.
std::uint64_t GeometryCopier::sizeOf(pugi::xml_node geometry)
{
    const auto [known, isNew] = m_sizes.try_emplace(geometry.hash_value(), 0);
    for (pugi::xml_node node = geometry; isNew && node;) {
        known->second +=
            2 * std::char_traits<char>::length(node.name()) + std::char_traits<char>::length(node.value()) + 8;
        for (const pugi::xml_attribute attribute : node.attributes()) {
            known->second += std::char_traits<char>::length(attribute.name()) +
                             std::char_traits<char>::length(attribute.value()) + 4;
        }
        const bool isSource = is(node, "source") && is(node.parent(), "mesh");
        node = isSource ? nextBeside(node, geometry) : next(node, geometry);
    }
    return known->second;
}

} // namespace libPrepare
