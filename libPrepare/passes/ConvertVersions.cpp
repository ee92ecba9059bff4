#include "Passes.h"

#include "../document/Numbers.h"
#include "../document/Tree.h"

#include <cstring>
#include <string>
#include <unordered_map>

namespace libPrepare {

namespace {

constexpr const char* schema14 = "http://www.collada.org/2005/11/COLLADASchema";
constexpr const char* schema15 = "http://www.collada.org/2008/03/COLLADASchema";

bool isXmlns(const char* name)
{
    return std::strncmp(name, "xmlns", 5) == 0 && (name[5] == '\0' || name[5] == ':');
}

// Whether a namespace was meant to be that of COLLADA: schemas of other versions, other spellings.
bool isOfCollada(std::string_view uri)
{
    return uri.find("COLLADASchema") != std::string_view::npos;
}

// Removes prefixes from COLLADA elements such as <c:node>. A prefix is valid in the element that declares it and below,
// so declarations are tracked down the tree.
class Prefixes {
public:
    explicit Prefixes(Document& document) : m_document(document) {}

    unsigned takeOff()
    {
        pugi::xml_node node = m_document.root();
        // The namespace of the root counts as COLLADA's, whatever its name is.
        m_rootPrefix = prefixOf(node.name());
        while (node) {
            const bool isElement = node.type() == pugi::node_element;
            if (isElement) {
                enter(node);
            }
            if (node.first_child()) {
                node = node.first_child();
                continue;
            }
            leave(node);
            while (node != m_document.root() && !node.next_sibling()) {
                node = node.parent();
                leave(node);
            }
            node = node == m_document.root() ? pugi::xml_node() : node.next_sibling();
        }
        return m_count;
    }

private:
    static std::string prefixOf(const char* name)
    {
        const char* const colon = std::strchr(name, ':');
        return colon == nullptr ? std::string() : std::string(name, colon);
    }

    void enter(pugi::xml_node element)
    {
        for (const pugi::xml_attribute attribute : element.attributes()) {
            if (isXmlns(attribute.name()) && attribute.name()[5] == ':') {
                const std::string prefix = attribute.name() + 6;
                const bool isOurs =
                    isOfCollada(attribute.value()) || (element == m_document.root() && prefix == m_rootPrefix);
                m_scopes[prefix].push_back({element, isOurs});
            }
        }
        const std::string prefix = prefixOf(element.name());
        const auto scope = m_scopes.find(prefix);
        const bool isUndeclaredRoot = element == m_document.root() && scope == m_scopes.end();
        if (!prefix.empty() &&
            (isUndeclaredRoot || (scope != m_scopes.end() && !scope->second.empty() && scope->second.back().isOurs))) {
            element.set_name(std::string(element.name() + prefix.size() + 1).c_str());
            ++m_count;
        }
    }

    void leave(pugi::xml_node element)
    {
        for (const pugi::xml_attribute attribute : element.attributes()) {
            if (isXmlns(attribute.name()) && attribute.name()[5] == ':') {
                std::vector<Scope>& open = m_scopes[attribute.name() + 6];
                if (!open.empty() && open.back().element == element) {
                    open.pop_back();
                }
            }
        }
    }

    struct Scope {
        pugi::xml_node element;
        bool isOurs;
    };

    Document& m_document;
    std::string m_rootPrefix;
    std::unordered_map<std::string, std::vector<Scope>> m_scopes;
    unsigned m_count = 0;
};

void repairNamespaces(Document& document)
{
    const pugi::xml_node root = document.root();
    const std::string before = root.attribute("xmlns").value();
    if (const unsigned count = document.canHavePrefixes() ? Prefixes(document).takeOff() : 0) {
        document.rewritten(root, "namespace", "Names of elements have a prefix: " + std::to_string(count) + ".",
                           "taken off");
    }
    if (before != schema14) {
        for (pugi::xml_node element = root; element; element = next(element, root)) {
            const pugi::xml_attribute declared = element.attribute("xmlns");
            const std::string_view uri = declared.value();
            if (element != root && declared && (isOfCollada(uri) || (!before.empty() && uri == before))) {
                element.remove_attribute(declared);
            }
        }
        setAttribute(root, "xmlns", schema14);
        document.rewritten(root, before.empty() ? "no-namespace" : "namespace",
                           before.empty() ? "The document has no namespace."
                                          : "The namespace " + before + " is not that of COLLADA 1.4.",
                           std::string("made ") + schema14);
    }
}

// In 1.5 an image holds the name of its file in <ref>.
void convertImage(pugi::xml_node image)
{
    pugi::xml_node from = image.child("init_from");
    if (!from) { // <create_2d> and its kin hold it deeper
        for (pugi::xml_node element = image; element; element = next(element, image)) {
            if (is(element, "init_from")) {
                from = element;
                break;
            }
        }
    }
    const pugi::xml_node ref = from.child("ref");
    if (!ref) {
        return;
    }
    const std::string file = textOf(ref);
    for (pugi::xml_node child = image.first_child(); child;) {
        const pugi::xml_node after = child.next_sibling();
        if (is(child, "init_from") || is(child, "renderable") || std::strncmp(child.name(), "create_", 7) == 0) {
            discard(child);
        }
        child = after;
    }
    const pugi::xml_node made = image.child("asset") ? image.insert_child_after("init_from", image.child("asset"))
                                                     : image.prepend_child("init_from");
    setText(made, file);
}

// In 1.5 a sampler names its image; in 1.4 it names a surface, and that names the image.
void convertSampler(Document& document, pugi::xml_node sampler)
{
    const pugi::xml_node instance = sampler.child("instance_image");
    const pugi::xml_node parameter = sampler.parent();
    if (!instance || !is(parameter, "newparam")) {
        return;
    }
    const std::string url(trimmed(instance.attribute("url").value()));
    const pugi::xml_node image = document.resolve(url, {"image"});
    const std::string id = image ? image.attribute("id").value() : url.substr(url.find('#') + 1);
    std::string sid = std::string(parameter.attribute("sid").value()) + "-surface";
    while (parameter.parent().find_child_by_attribute("newparam", "sid", sid.c_str())) {
        sid += '-';
    }
    pugi::xml_node holder = parameter.parent().insert_child_before("newparam", parameter);
    document.setOrigin(holder, sampler);
    setAttribute(holder, "sid", sid);
    pugi::xml_node surface = holder.append_child("surface");
    setAttribute(surface, "type", "2D");
    setText(surface.append_child("init_from"), id);
    const pugi::xml_node source = sampler.insert_child_before("source", instance);
    setText(source, sid);
    discard(instance);
}

bool isOf15(const char* name)
{
    static constexpr const char* names[] = {"library_articulated_systems",
                                            "library_formulas",
                                            "library_joints",
                                            "library_kinematics_models",
                                            "library_kinematics_scenes",
                                            "instance_kinematics_scene",
                                            "brep",
                                            "instance_formula",
                                            "profile_GLES2",
                                            "profile_BRIDGE"};
    for (const char* const each : names) {
        if (std::strcmp(each, name) == 0) {
            return true;
        }
    }
    return false;
}

void convert15(Document& document)
{
    const pugi::xml_node root = document.root();
    std::vector<pugi::xml_node> samplers;
    std::vector<pugi::xml_node> strangers;
    for (pugi::xml_node element = root; element;) {
        if (isOf15(element.name())) {
            strangers.push_back(element);
            element = nextBeside(element, root);
            continue;
        }
        if (is(element, "image")) {
            convertImage(element);
        } else if (is(element, "sampler2D")) {
            samplers.push_back(element);
        }
        element = next(element, root);
    }
    for (const pugi::xml_node sampler : samplers) {
        convertSampler(document, sampler);
    }
    for (const pugi::xml_node element : strangers) {
        document.lost(element, element.name(), std::string("COLLADA 1.4 has no <") + element.name() + ">.",
                      "read it with a reader of COLLADA 1.5");
        removeElement(element);
    }
    document.forgetIds();
}

} // namespace

void convertVersions(Document& document)
{
    const pugi::xml_node root = document.root();
    const std::string version(trimmed(root.attribute("version").value()));
    bool is15 = version.rfind("1.5", 0) == 0;
    for (const pugi::xml_attribute attribute : root.attributes()) {
        is15 = is15 || (isXmlns(attribute.name()) && std::strcmp(attribute.value(), schema15) == 0);
    }
    if (version != "1.4.1") {
        document.rewritten(root, is15 ? "version-1.5" : "version",
                           version.empty() ? "The document names no version."
                                           : "The document is COLLADA " + version + ".",
                           "made 1.4.1");
        setAttribute(root, "version", "1.4.1");
    }
    repairNamespaces(document);
    if (is15) {
        convert15(document);
    }
}

} // namespace libPrepare
