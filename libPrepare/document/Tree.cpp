#include "Tree.h"

#include "Numbers.h"

#include <cctype>

namespace libPrepare {

pugi::xml_node shownScene(Document& document)
{
    const pugi::xml_node link = descend(document.root(), "scene/instance_visual_scene");
    return document.resolve(link.attribute("url").value(), {"visual_scene"});
}

std::vector<pugi::xml_node> nodesIn(pugi::xml_node subtree)
{
    std::vector<pugi::xml_node> result;
    for (pugi::xml_node element = subtree; element;) {
        if (is(element, "node")) {
            result.push_back(element);
        }
        const bool canHoldNodes = element == subtree || is(element, "node");
        element = canHoldNodes ? next(element, subtree) : nextBeside(element, subtree);
    }
    return result;
}

std::uint64_t sizeOf(pugi::xml_node element)
{
    struct Counter : pugi::xml_writer {
        std::uint64_t bytes = 0;
        void write(const void*, std::size_t size) override { bytes += size; }
    } counter;
    element.print(counter, "", pugi::format_raw);
    return counter.bytes;
}

std::unordered_map<std::string, std::string> renewIds(Document& document, pugi::xml_node subtree)
{
    std::unordered_map<std::string, std::string> result;
    for (pugi::xml_node element = subtree; element; element = next(element, subtree)) {
        if (const pugi::xml_attribute id = element.attribute("id")) {
            const std::string fresh = document.freshId(trimmed(id.value()));
            result.emplace(trimmed(id.value()), fresh);
            setAttribute(element, "id", fresh);
        }
    }
    for (pugi::xml_node element = subtree; element; element = next(element, subtree)) {
        for (pugi::xml_attribute attribute : element.attributes()) {
            if (attribute.value()[0] != '#') {
                continue;
            }
            const auto found = result.find(attribute.value() + 1);
            if (found != result.end()) {
                attribute.set_value(('#' + found->second).c_str());
            }
        }
    }
    document.registerIds(subtree);
    return result;
}

void removeElement(pugi::xml_node element)
{
    pugi::xml_node parent = element.parent();
    const pugi::xml_node before = element.previous_sibling();
    if (before.type() == pugi::node_pcdata && trimmed(before.value()).empty()) {
        parent.remove_child(before);
    }
    discard(element);
}

pugi::xml_node prependTransform(pugi::xml_node node, const char* name, const std::string& text)
{
    const pugi::xml_node asset = node.child("asset");
    pugi::xml_node made = asset ? node.insert_child_after(name, asset) : node.prepend_child(name);
    setText(made, text);
    return made;
}

std::string plain(std::string_view text)
{
    std::string result;
    for (const char character : text) {
        const bool isPlain = std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_' ||
                             character == '-' || character == '.';
        result += isPlain && static_cast<signed char>(character) > 0 ? character : '_';
    }
    return result;
}

} // namespace libPrepare
