#include "Joints.h"

#include <libPrepare/document/Numbers.h>
#include <libPrepare/document/Tree.h>
#include <libPrepare/geometry/Sources.h>

#include <algorithm>

namespace libPrepare {

std::vector<std::string> wordRecords(Document& document, pugi::xml_node source)
{
    const pugi::xml_node accessor = descend(source, "technique_common/accessor");
    const pugi::xml_node array =
        document.resolve(accessor.attribute("source").value(), {"Name_array", "IDREF_array", "bool_array"});
    std::string scratch;
    const std::vector<std::string_view> all = words(textOf(array, scratch));
    const std::size_t count = wholeOr(accessor.attribute("count").value(), 0);
    const std::size_t stride = std::max<std::size_t>(1, wholeOr(accessor.attribute("stride").value(), 1));
    std::size_t at = wholeOr(accessor.attribute("offset").value(), 0);
    std::vector<std::string> result;
    for (; result.size() < count && at < all.size(); at += stride) {
        result.emplace_back(all[at]);
    }
    return result;
}

Joints::Joints(Document& document, pugi::xml_node scene) : m_document(document), m_scene(scene)
{
    index(scene);
    for (const pugi::xml_node library : document.root().children("library_nodes")) {
        index(library);
    }
    for (const pugi::xml_node node : nodesIn(scene)) {
        m_names.emplace(node.attribute("name").value(), node);
    }
}

void Joints::index(pugi::xml_node root)
{
    std::vector<pugi::xml_node> open;
    const auto close = [&](pugi::xml_node parent) {
        while (!open.empty() && open.back() != parent) {
            m_ranges[open.back().hash_value()].end = m_places;
            open.pop_back();
        }
    };
    for (const pugi::xml_node node : nodesIn(root)) {
        close(node.parent());
        open.push_back(node);
        m_ranges[node.hash_value()].first = m_places;
        if (const pugi::xml_attribute sid = node.attribute("sid")) {
            m_sids[sid.value()].push_back({m_places, node});
        }
        ++m_places;
    }
    close({});
}

pugi::xml_node Joints::findIn(pugi::xml_node root, const std::string& sid)
{
    const auto bearers = m_sids.find(sid);
    const auto range = m_ranges.find(root.hash_value());
    if (bearers == m_sids.end() || range == m_ranges.end()) {
        return {};
    }
    const auto found = std::lower_bound(bearers->second.begin(), bearers->second.end(), range->second.first,
                                        [](const Bearer& bearer, std::size_t place) { return bearer.place < place; });
    return found != bearers->second.end() && found->place < range->second.end ? found->node : pugi::xml_node();
}

pugi::xml_node Joints::find(const std::string& name, const std::vector<pugi::xml_node>& skeletons, bool isId)
{
    if (isId) {
        return m_document.byId(name, {"node"});
    }
    for (const pugi::xml_node skeleton : skeletons) {
        if (const pugi::xml_node found = findIn(skeleton, name)) {
            return found;
        }
    }
    const auto bearers = m_sids.find(name);
    if (bearers != m_sids.end()) { // nodes of the scene come before those of libraries
        return bearers->second.front().node;
    }
    if (const pugi::xml_node found = m_document.byId(name, {"node"})) {
        return found;
    }
    const auto named = m_names.find(name);
    return named == m_names.end() ? pugi::xml_node() : named->second;
}

bool Joints::isKnown(const std::string& name)
{
    return m_sids.count(name) > 0 || m_document.byId(name, {"node"}) || m_names.count(name) > 0;
}

std::vector<std::string> jointNames(Document& document, Joints& joints, pugi::xml_node source)
{
    std::vector<std::string> plain = wordRecords(document, source);
    pugi::xml_node array = source.child("Name_array");
    array = array ? array : source.child("IDREF_array");
    std::string scratch;
    const std::vector<std::string_view> all = words(textOf(array, scratch));
    if (all.size() <= wholeOr(array.attribute("count").value(), all.size())) {
        return plain;
    }
    std::vector<std::string> result;
    constexpr std::size_t maxWords = 8;
    for (std::size_t at = 0; at < all.size();) {
        std::string joined;
        std::string best(all[at]);
        std::size_t taken = 1;
        for (std::size_t i = 0; i < maxWords && at + i < all.size(); ++i) {
            joined += i == 0 ? "" : " ";
            joined += all[at + i];
            if (joints.isKnown(joined)) {
                best = joined;
                taken = i + 1;
            }
        }
        result.push_back(best);
        at += taken;
    }
    return result;
}

} // namespace libPrepare
