#include "References.h"

#include "Document.h"
#include "Numbers.h"
#include "Tree.h"

#include <cstring>

namespace libPrepare {

namespace {

struct Rule {
    const char* element;
    const char* attribute;
    Reference::Form form;
    Kinds kinds;
};

constexpr Rule rules[] = {
    {"accessor",
     "source",
     Reference::Form::uri,
     {"float_array", "Name_array", "IDREF_array", "int_array", "bool_array"}},
    {"channel", "source", Reference::Form::uri, {"sampler"}},
    {"channel", "target", Reference::Form::path, {}},
    {"instance_material", "target", Reference::Form::uri, {"material"}},
    {"instance_rigid_body", "target", Reference::Form::uri, {"node"}},
    {"morph", "source", Reference::Form::uri, {"geometry", "controller"}},
    {"skin", "source", Reference::Form::uri, {"geometry", "controller"}},
    {"texture", "texture", Reference::Form::id, {"image"}},
};

bool hasText(pugi::xml_node element)
{
    for (const pugi::xml_node child : element.children()) {
        if (child.type() == pugi::node_element) {
            return false;
        }
    }
    return static_cast<bool>(element.first_child());
}

// The first ancestor with one of two names.
pugi::xml_node ancestor(pugi::xml_node element, const char* name, const char* other)
{
    while (element && !is(element, name) && !is(element, other)) {
        element = element.parent();
    }
    return element;
}

Kinds kindsOf(pugi::xml_node element, const char* attribute)
{
    if (std::strncmp(element.name(), "instance_", 9) == 0 && std::strcmp(attribute, "url") == 0) {
        return {element.name() + 9};
    }
    if (is(element, "input") && std::strcmp(attribute, "source") == 0) {
        return {std::strcmp(element.attribute("semantic").value(), "VERTEX") == 0 ? "vertices" : "source"};
    }
    return {};
}

// Some samplers name their image without a surface.
bool namesImage(pugi::xml_node element, const char* name)
{
    return areEqual(name, "init_from")
               ? !is(element.parent(), "image")
               : areEqual(name, "source") && std::strncmp(element.parent().name(), "sampler", 7) == 0;
}

} // namespace

std::string Reference::text() const
{
    return attribute ? std::string(attribute.value()) : textOf(element);
}

void Reference::setText(const std::string& text) const
{
    if (pugi::xml_attribute writable = attribute) {
        writable.set_value(text.c_str());
    } else {
        libPrepare::setText(element, text);
    }
}

std::optional<Reference> referenceIn(pugi::xml_node element, pugi::xml_attribute attribute, const char* const name)
{
    const bool isTexture = areEqual(name, "texture");
    const bool isPlain = areEqual(name, "url") || areEqual(name, "source") || areEqual(name, "target");
    if (!isTexture && !isPlain) {
        return std::nullopt; // none of those below
    }
    for (const Rule& rule : rules) {
        if (areEqual(rule.attribute, name) && is(element, rule.element)) {
            return Reference{element, attribute, rule.form, rule.kinds};
        }
    }
    if (isPlain && std::strchr(attribute.value(), '#') != nullptr) {
        return Reference{element, attribute, Reference::Form::uri, kindsOf(element, name)};
    }
    return std::nullopt;
}

std::optional<Reference> referenceInText(pugi::xml_node element, const char* const name, bool isInExtra)
{
    if (areEqual(name, "skeleton")) {
        return Reference{element, {}, Reference::Form::uri, {"node"}};
    }
    if (namesImage(element, name)) {
        return Reference{element, {}, Reference::Form::id, {"image"}};
    }
    if (areEqual(name, "IDREF_array")) {
        const bool isMorph = is(ancestor(element, "morph", "skin"), "morph");
        return Reference{element, {}, Reference::Form::ids, {isMorph ? "geometry" : "node"}};
    }
    if (!isInExtra || !hasText(element)) {
        return std::nullopt;
    }
    std::string scratch;
    const std::string_view text = trimmed(textOf(element, scratch));
    if (!text.empty() && text.front() == '#' && text.find_first_of(" \t\r\n") == std::string_view::npos) {
        return Reference{element, {}, Reference::Form::uri, {}};
    }
    if (areEqual(name, "target") && !text.empty()) {
        const bool isUri = text.find('#') != std::string_view::npos;
        return Reference{element, {}, isUri ? Reference::Form::uri : Reference::Form::id, {"node"}};
    }
    return std::nullopt;
}

void forEachReference(pugi::xml_node subtree, const std::function<void(const Reference&)>& use)
{
    unsigned extras = 0; // that are open
    pugi::xml_node node = subtree;
    while (node) {
        if (node.type() == pugi::node_element) {
            for (const pugi::xml_attribute attribute : node.attributes()) {
                if (const std::optional<Reference> reference = referenceIn(node, attribute, attribute.name())) {
                    use(*reference);
                }
            }
            if (const std::optional<Reference> reference = referenceInText(node, node.name(), extras > 0)) {
                use(*reference);
            }
        }
        if (const pugi::xml_node child = node.first_child()) {
            extras += is(node, "extra") ? 1 : 0;
            node = child;
            continue;
        }
        while (node != subtree && !node.next_sibling()) {
            node = node.parent();
            extras -= is(node, "extra") ? 1 : 0;
        }
        node = node == subtree ? pugi::xml_node() : node.next_sibling();
    }
}

} // namespace libPrepare
