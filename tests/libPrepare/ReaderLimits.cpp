#include "ReaderLimits.h"

#include <libPrepare/document/Numbers.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace test {

namespace {

struct Limit {
    const char* path;
    const char* reason;
};

constexpr Limit unreadElements[] = {
    {"//skew", "it aborts at a <skew>"},
    {"//init_from[normalize-space()='']", "it aborts at an image without a file"},
    {"//morph", "it looks for the mesh of a <morph> under a name with the number sign"},
    {"//convex_mesh", "it does not show a <convex_mesh>"},
    {"//lookat", "it takes the up vector of a <lookat> as it is, also where that is not at a right angle"},
    {"//skin[not(bind_shape_matrix)]", "it takes a missing <bind_shape_matrix> for zeros"},
    {"//vertex_weights[contains(concat(' ', normalize-space(vcount), ' '), ' 0 ')]",
     "it does not leave a vertex without weights where it is"},
    {"//instance_controller[@url = following::instance_controller/@url]", "it poses a skin by one skeleton alone"},
    {"//p[contains(., '-')] | //v[contains(., '-')]", "it takes an index below 0 for 0"},
    {"//instance_node[//channel]", "it does not move what is instanced"},
    {"//asset[not(parent::COLLADA)]/*[self::unit or self::up_axis]", "it reads the <asset> of the document alone"},
};

constexpr Limit unreadLooks[] = {
    {"//profile_COMMON//*[self::phong or self::blinn or self::lambert][not(diffuse)]",
     "it takes a missing diffuse color for a gray one, not for black"},
    {"//profile_COMMON//constant", "it gives a <constant> a gray diffuse color"},
    {"//diffuse/param | //instance_effect/setparam", "it does not follow parameters to a color"},
};

template <std::size_t count>
std::string reasonAgainst(const Limit (&limits)[count], const pugi::xml_document& document)
{
    const auto found = std::find_if(std::begin(limits), std::end(limits), [&](const Limit& limit) {
        return document.select_node(limit.path) != pugi::xpath_node();
    });
    return found == std::end(limits) ? std::string() : found->reason;
}

// It uses the last one, but the first counts.
bool hasDoubledId(const pugi::xml_document& document)
{
    std::set<std::string_view> ids;
    const pugi::xpath_node_set bearers = document.select_nodes("//@id");
    return std::any_of(bearers.begin(), bearers.end(),
                       [&](const pugi::xpath_node& bearer) { return !ids.insert(bearer.attribute().value()).second; });
}

// It reads everything after the first dot as a member, and does not search the children of the node for the target.
bool hasOddTarget(const pugi::xml_document& document)
{
    const pugi::xpath_node_set channels = document.select_nodes("//channel/@target");
    return std::any_of(channels.begin(), channels.end(), [](const pugi::xpath_node& channel) {
        const std::string_view target = channel.attribute().value();
        return std::count(target.begin(), target.end(), '/') > 1 || target.find('.') < target.find('/');
    });
}

// A symbol that is the id of another material than the one bound to it means that one to the reader.
bool hasMisleadingSymbol(const pugi::xml_document& document)
{
    const pugi::xpath_node_set bindings = document.select_nodes("//instance_material");
    return std::any_of(bindings.begin(), bindings.end(), [&](const pugi::xpath_node& binding) {
        const std::string symbol = binding.node().attribute("symbol").value();
        return binding.node().attribute("target").value() != "#" + symbol &&
               document.find_node([&](const pugi::xml_node& node) {
                   return std::string_view(node.name()) == "material" && node.attribute("id").value() == symbol;
               });
    });
}

// Other ids become plain ones.
bool isPlain(const std::string& id)
{
    return !id.empty() && std::all_of(id.begin(), id.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-' ||
               c == '.';
    });
}

pugi::xml_node elementOf(const pugi::xml_document& document, const char* name, const std::string& reference)
{
    return document.find_node([&](const pugi::xml_node& node) {
        return std::string_view(node.name()) == name && "#" + std::string(node.attribute("id").value()) == reference;
    });
}

std::map<std::string, std::set<std::string>> channelsOf(const pugi::xml_document& document)
{
    std::map<std::string, std::set<std::string>> channels;
    for (const pugi::xpath_node& found : document.select_nodes("//library_materials/material")) {
        const pugi::xml_node material = found.node();
        const std::string name = material.attribute(material.attribute("name") ? "name" : "id").value();
        const pugi::xml_node effect =
            elementOf(document, "effect", material.child("instance_effect").attribute("url").value());
        const bool isFirst = channels.count(name) == 0;
        std::set<std::string>& given = channels[name];
        for (const pugi::xpath_node& value : effect.select_nodes(
                 "profile_COMMON[1]/technique/*[self::phong or self::blinn]/*[color or float or texture]")) {
            given.insert(value.node().name());
        }
        if (!isFirst) {
            given.clear(); // two of one name cannot be told apart
        }
    }
    return channels;
}

std::vector<double> keysOf(const pugi::xml_document& document, const std::string& sampler)
{
    const pugi::xml_node input =
        elementOf(document, "sampler", sampler).find_child_by_attribute("input", "semantic", "INPUT");
    const pugi::xml_node source = elementOf(document, "source", input.attribute("source").value());
    return libPrepare::numbers(source.child("float_array").text().get());
}

std::map<std::string, std::vector<double>> timesOf(const pugi::xml_document& document)
{
    std::map<std::string, std::vector<double>> times;
    for (const pugi::xpath_node& channel : document.select_nodes("//channel")) {
        const std::string target = channel.node().attribute("target").value();
        std::vector<double> keys = keysOf(document, channel.node().attribute("source").value());
        const auto [found, isNew] = times.emplace(target.substr(0, target.find('/')), keys);
        if (!isNew) {
            std::vector<double> common;
            std::set_intersection(found->second.begin(), found->second.end(), keys.begin(), keys.end(),
                                  std::back_inserter(common));
            found->second = std::move(common);
        }
    }
    for (auto& [node, common] : times) {
        common.erase(common.begin(), std::lower_bound(common.begin(), common.end(), 0.0)); // earlier keys are removed
    }
    return times;
}

// It does not sort the keys.
bool hasUnsortedKeys(const pugi::xml_document& document)
{
    const pugi::xpath_node_set channels = document.select_nodes("//channel/@source");
    return std::any_of(channels.begin(), channels.end(), [&](const pugi::xpath_node& channel) {
        const std::vector<double> keys = keysOf(document, channel.attribute().value());
        return !std::is_sorted(keys.begin(), keys.end());
    });
}

} // namespace

ReaderLimits::ReaderLimits(const pugi::xml_document& document)
    : unread(reasonAgainst(unreadElements, document)),
      looks(reasonAgainst(unreadLooks, document).empty() && !hasMisleadingSymbol(document)),
      cameras(!document.select_node("//orthographic")),
      emission(!document.select_node("//light/technique_common/ambient")),
      channels(channelsOf(document)),
      times(timesOf(document))
{
    if (hasDoubledId(document)) {
        unread = "it takes the last of equal ids";
    } else if (hasOddTarget(document)) {
        unread = "it does not find what an animation moves";
    } else if (hasUnsortedKeys(document)) {
        unread = "it does not sort the keys of a curve";
    }
    for (const pugi::xpath_node& node : document.select_nodes("//node/@id")) {
        if (isPlain(node.attribute().value())) {
            nodes.insert(node.attribute().value());
        }
    }
}

} // namespace test
