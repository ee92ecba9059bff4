#include "Looks.h"

#include "Document.h"
#include "Numbers.h"
#include "Tree.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>

namespace libPrepare {

namespace {

constexpr const char* shaders[] = {"constant", "lambert", "phong", "blinn"};
// What a shader holds, in the order of the schema.
constexpr const char* channels[] = {"emission",   "ambient",      "diffuse",     "specular",     "shininess",
                                    "reflective", "reflectivity", "transparent", "transparency", "index_of_refraction"};

std::size_t placeOfChannel(const char* name)
{
    return static_cast<std::size_t>(std::find_if(std::begin(channels), std::end(channels),
                                                 [&](const char* channel) { return std::strcmp(channel, name) == 0; }) -
                                    std::begin(channels));
}

bool startsWith(const char* text, const char* start)
{
    return std::strncmp(text, start, std::strlen(start)) == 0;
}

pugi::xml_node firstNumbers(pugi::xml_node parameter)
{
    for (const pugi::xml_node child : parameter.children()) {
        if (startsWith(child.name(), "float")) {
            return child;
        }
    }
    return {};
}

pugi::xml_node firstElement(pugi::xml_node parent)
{
    return parent.find_child([](pugi::xml_node child) { return child.type() == pugi::node_element; });
}

// Some references name an element as if it were a file.
pugi::xml_node resolveLoosely(Document& document, const char* reference, const char* kind)
{
    const pugi::xml_node found = document.resolve(reference, {kind});
    const std::string_view id = trimmed(reference);
    return found || id.empty() ? found : document.byId(id, {kind});
}

pugi::xml_node imageById(Document& document, std::string_view name)
{
    name = trimmed(name);
    if (name.empty()) {
        return {};
    }
    if (const pugi::xml_node image = document.byId(name, {"image"})) {
        return image;
    }
    return document.resolve(name.front() == '#' ? std::string(name) : '#' + std::string(name), {"image"});
}

// The image that a `<surface>` is made of.
pugi::xml_node imageOfSurface(Document& document, pugi::xml_node surface)
{
    for (const pugi::xml_node from : surface.children("init_from")) {
        if (const pugi::xml_node image = imageById(document, textOf(from))) {
            return image;
        }
    }
    for (const pugi::xml_node child : surface.children()) {
        if (!startsWith(child.name(), "init_")) {
            continue;
        }
        for (const pugi::xml_node from : child.children()) { // such as <init_planar><all ref="image"/></init_planar>
            if (const pugi::xml_node image = imageById(document, from.attribute("ref").value())) {
                return image;
            }
        }
    }
    return {};
}

// The name of the surface, in any kind of sampler.
std::string sourceOfSampler(pugi::xml_node parameter)
{
    for (const pugi::xml_node sampler : parameter.children()) {
        for (const pugi::xml_node source : sampler.children("source")) {
            std::string name(trimmed(textOf(source)));
            if (!name.empty()) {
                return name;
            }
        }
    }
    return {};
}

} // namespace

std::vector<pugi::xml_node> elementsBelow(pugi::xml_node top, const char* name)
{
    std::vector<pugi::xml_node> result;
    for (pugi::xml_node element = next(top, top); element; element = next(element, top)) {
        if (name == nullptr ? element.type() == pugi::node_element : is(element, name)) {
            result.push_back(element);
        }
    }
    return result;
}

pugi::xml_node materialOf(Document& document, pugi::xml_node instanceMaterial)
{
    return resolveLoosely(document, instanceMaterial.attribute("target").value(), "material");
}

pugi::xml_node repairedMaterialOf(Document& document, pugi::xml_node instanceMaterial)
{
    const std::string target = instanceMaterial.attribute("target").value();
    if (const pugi::xml_node material = document.resolve(target, {"material"})) {
        return material;
    }
    const std::string symbol = instanceMaterial.attribute("symbol").value();
    pugi::xml_node material = materialOf(document, instanceMaterial);
    if (!material) {
        material = document.byId(trimmed(symbol), {"material"});
    }
    if (material) {
        const std::string id(trimmed(material.attribute("id").value()));
        document.rewritten(instanceMaterial, "material",
                           "The target of the symbol \"" + symbol + "\" leads nowhere: \"" + target + "\".",
                           "it is bound to the material \"" + id + "\"");
        setAttribute(instanceMaterial, "target", '#' + id);
    }
    return material;
}

pugi::xml_node effectOf(Document& document, pugi::xml_node material)
{
    return resolveLoosely(document, material.child("instance_effect").attribute("url").value(), "effect");
}

std::vector<pugi::xml_node> shownMaterials(Document& document)
{
    std::vector<pugi::xml_node> result;
    if (!document.census().hasGeometryInstances) {
        return result;
    }
    std::unordered_set<std::size_t> known;
    for (const pugi::xml_node instance : elementsBelow(shownScene(document), "instance_geometry")) {
        for (const pugi::xml_node binding :
             descend(instance, "bind_material/technique_common").children("instance_material")) {
            const pugi::xml_node material = materialOf(document, binding);
            if (material && known.insert(material.hash_value()).second) {
                result.push_back(material);
            }
        }
    }
    return result;
}

pugi::xml_node shaderOf(pugi::xml_node technique)
{
    return technique.find_child([](pugi::xml_node child) {
        return std::any_of(std::begin(shaders), std::end(shaders),
                           [&](const char* shader) { return is(child, shader); });
    });
}

Shading shadingOf(pugi::xml_node effect)
{
    for (const pugi::xml_node profile : effect.children("profile_COMMON")) {
        const pugi::xml_node technique = profile.child("technique");
        if (const pugi::xml_node shader = shaderOf(technique)) {
            return {profile, technique, shader};
        }
    }
    return {};
}

Parameters::Parameters(pugi::xml_node effect, const Shading& shading)
{
    read(effect);
    read(shading.profile);
    read(shading.technique);
}

void Parameters::read(pugi::xml_node scope)
{
    for (const pugi::xml_node parameter : scope.children("newparam")) {
        m_byName[std::string(trimmed(parameter.attribute("sid").value()))] = parameter;
    }
}

void Parameters::set(pugi::xml_node setparam)
{
    const auto found = m_byName.find(std::string(trimmed(setparam.attribute("ref").value())));
    if (found != m_byName.end() && numbersIn(setparam)) {
        found->second = setparam;
    }
}

pugi::xml_node Parameters::numbersIn(pugi::xml_node setparam)
{
    const pugi::xml_node first = firstElement(setparam);
    return startsWith(first.name(), "float") ? first : pugi::xml_node();
}

pugi::xml_node Parameters::find(std::string_view name) const
{
    const auto found = m_byName.find(std::string(name));
    return found == m_byName.end() ? pugi::xml_node() : found->second;
}

pugi::xml_node Parameters::numbersOf(std::string_view name) const
{
    return firstNumbers(find(name));
}

TextureChain followTexture(Document& document, const Parameters& parameters, std::string_view name)
{
    TextureChain chain;
    std::string at(trimmed(name));
    for (unsigned step = 0; step < 3 && !at.empty(); ++step) { // sampler, surface, image
        const pugi::xml_node parameter = parameters.find(at);
        if (!parameter) {
            chain.image = imageById(document, at);
            break;
        }
        if (const pugi::xml_node surface = parameter.child("surface")) {
            chain.surface = parameter;
            chain.image = imageOfSurface(document, surface);
            break;
        }
        if (!chain.sampler) {
            chain.sampler = parameter;
        }
        at = sourceOfSampler(parameter);
    }
    if (!at.empty() && !chain.image && !chain.surface && !parameters.find(at)) {
        chain.image = imageById(document, at);
    }
    return chain;
}

bool isPlainColor(pugi::xml_node channel)
{
    return channel.child("color") && !channel.child("texture") && !channel.child("param") &&
           numbersOf(channel.child("color")).size() >= 3;
}

void setColor(pugi::xml_node channel, const std::string& text)
{
    const pugi::xml_node kept = channel.child("color"); // its sid stays
    for (pugi::xml_node child = channel.first_child(); child;) {
        const pugi::xml_node next = child.next_sibling();
        if (child.type() != pugi::node_element) {
            channel.remove_child(child);
        } else if (child != kept) {
            discard(child);
        }
        child = next;
    }
    setText(kept ? kept : channel.append_child("color"), text);
}

pugi::xml_node needChannel(pugi::xml_node shader, const char* name)
{
    if (const pugi::xml_node channel = shader.child(name)) {
        return channel;
    }
    const std::size_t place = placeOfChannel(name);
    for (const pugi::xml_node child : shader.children()) {
        if (child.type() == pugi::node_element && placeOfChannel(child.name()) > place) {
            return shader.insert_child_before(name, child);
        }
    }
    return shader.append_child(name);
}

} // namespace libPrepare
