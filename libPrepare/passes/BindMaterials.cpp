#include "Passes.h"

#include <libPrepare/document/Document.h>
#include <libPrepare/document/Looks.h>
#include <libPrepare/document/Numbers.h>
#include <libPrepare/document/Tree.h>
#include <libPrepare/geometry/GeometryCopier.h>

#include <algorithm>
#include <map>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace libPrepare {

namespace {

// Of all its bodies.
std::vector<pugi::xml_node> allPrimitivesOf(pugi::xml_node geometry)
{
    std::vector<pugi::xml_node> result;
    for (const pugi::xml_node body : geometry.children()) {
        for (const pugi::xml_node child : body.children()) {
            if (isPrimitive(child)) {
                result.push_back(child);
            }
        }
    }
    return result;
}

// Symbols are read up to their first blank, so two of them may become the same.
bool isCutShort(const std::string& symbol)
{
    return std::any_of(symbol.begin(), symbol.end(), &isBlank);
}

// Binds the symbols of the shown scene to materials. A symbol means one material throughout the scene.
class Binder {
public:
    explicit Binder(Document& document) : m_document(document) {}

    void run()
    {
        const std::vector<pugi::xml_node> instances = elementsBelow(shownScene(m_document), "instance_geometry");
        for (const pugi::xml_node instance : instances) {
            readBindings(instance);
        }
        for (const pugi::xml_node instance : instances) {
            const pugi::xml_node geometry = m_document.resolve(instance.attribute("url").value(), {"geometry"});
            if (geometry && m_geometries.insert(geometry.hash_value()).second) { // the first instance alone shows it
                bind(instance, geometry);
            }
        }
    }

private:
    // Reads the existing bindings, and corrects their references.
    void readBindings(pugi::xml_node instance)
    {
        for (const pugi::xml_node binding :
             descend(instance, "bind_material/technique_common").children("instance_material")) {
            const std::string symbol = binding.attribute("symbol").value();
            m_takenSymbols.insert(symbol);
            const pugi::xml_node material = repairedMaterialOf(m_document, binding);
            if (!material) {
                m_document.lost(binding, "material",
                                "The symbol \"" + symbol + "\" is bound to a material that is not there: \"" +
                                    binding.attribute("target").value() + "\".",
                                "add the material, or bind another one");
                continue;
            }
            m_meanings.emplace(symbol, material);
        }
    }

    void bind(pugi::xml_node instance, pugi::xml_node geometry)
    {
        const std::vector<pugi::xml_node> primitives = allPrimitivesOf(geometry);
        std::map<std::string, pugi::xml_node> bindings;
        for (const pugi::xml_node binding :
             descend(instance, "bind_material/technique_common").children("instance_material")) {
            bindings.emplace(binding.attribute("symbol").value(), binding);
        }
        std::unordered_map<std::string, std::string> newNames;
        for (const pugi::xml_node primitive : primitives) {
            const pugi::xml_attribute attribute = primitive.attribute("material");
            const std::string symbol = attribute.value();
            if (!attribute || newNames.count(symbol) > 0) {
                continue;
            }
            auto bound = bindings.find(symbol);
            if (bound == bindings.end()) {
                const pugi::xml_node binding = bindByName(instance, primitive, symbol);
                if (!binding) {
                    continue;
                }
                bound = bindings.emplace(symbol, binding).first;
            }
            newNames.emplace(symbol, nameFor(bound->second, symbol));
        }
        for (const auto& [symbol, binding] : bindings) { // no mesh uses these, but they would be read as other symbols
            if (isCutShort(symbol) && newNames.count(symbol) == 0) {
                nameFor(binding, symbol);
            }
        }
        for (const pugi::xml_node primitive : primitives) {
            const auto name = newNames.find(primitive.attribute("material").value());
            if (name != newNames.end() && name->second != name->first) {
                setAttribute(primitive, "material", name->second);
            }
        }
    }

    // A symbol that is not bound but is the id of a material. @return null if it is not
    pugi::xml_node bindByName(pugi::xml_node instance, pugi::xml_node primitive, const std::string& symbol)
    {
        std::string_view id = trimmed(symbol);
        if (!id.empty() && id.front() == '#') {
            id.remove_prefix(1);
        }
        const pugi::xml_node material = m_document.byId(id, {"material"});
        if (!material || !m_document.takeBytes(id.size() + symbol.size() + 64)) {
            if (m_meanings.count(symbol) == 0 && m_unbound.insert(symbol).second) {
                m_document.lost(primitive, "material",
                                "The symbol \"" + symbol + "\" is bound to no material where the mesh is shown.",
                                "bind it in <bind_material>");
            }
            return {};
        }
        pugi::xml_node bind = instance.child("bind_material");
        if (!bind) { // the schema expects it before <extra>
            bind = instance.prepend_child("bind_material");
        }
        pugi::xml_node common = bind.child("technique_common");
        if (!common) {
            const pugi::xml_node technique = bind.child("technique");
            common = technique ? bind.insert_child_before("technique_common", technique)
                               : bind.append_child("technique_common");
        }
        pugi::xml_node binding = common.append_child("instance_material");
        binding.append_attribute("symbol").set_value(symbol.c_str());
        binding.append_attribute("target").set_value(('#' + std::string(id)).c_str());
        m_document.setOrigin(binding, instance);
        m_document.rewritten(instance, "material",
                             "The symbol \"" + symbol + "\" is not bound, but there is a material of this id.",
                             "bound to this material");
        return binding;
    }

    // The symbol of a binding throughout the scene. Renames the binding accordingly.
    std::string nameFor(pugi::xml_node binding, const std::string& symbol)
    {
        const pugi::xml_node material = materialOf(m_document, binding);
        const auto meaning = m_meanings.find(symbol);
        const bool isFree = meaning == m_meanings.end() || meaning->second == material || !material;
        if (isFree && !isCutShort(symbol)) {
            if (material) {
                m_meanings.emplace(symbol, material);
            }
            m_takenSymbols.insert(symbol);
            return symbol;
        }
        std::string& name = m_newSymbols[symbol + '\n' + std::to_string(material.hash_value())];
        if (name.empty()) {
            name = freshSymbol(symbol);
        }
        setAttribute(binding, "symbol", name);
        m_document.rewritten(binding, "symbol",
                             isCutShort(symbol) ? "The symbol \"" + symbol + "\" has blanks in it."
                                                : "The symbol \"" + symbol + "\" means another material elsewhere.",
                             "it is \"" + name + "\" now");
        return name;
    }

    std::string freshSymbol(const std::string& symbol)
    {
        std::string wish = symbol;
        std::replace_if(wish.begin(), wish.end(), &isBlank, '_');
        std::string name = wish;
        for (unsigned& number = m_numbers[wish]; !m_takenSymbols.insert(name).second;) {
            name = wish + '-' + std::to_string(++number);
        }
        return name;
    }

    Document& m_document;
    std::unordered_set<std::size_t> m_geometries;
    std::unordered_map<std::string, pugi::xml_node> m_meanings; // of the symbols as they are in the document
    std::unordered_map<std::string, std::string> m_newSymbols;
    std::unordered_map<std::string, unsigned> m_numbers; // the last ones given
    std::unordered_set<std::string> m_takenSymbols;
    std::unordered_set<std::string> m_unbound;
};

} // namespace

void bindMaterials(Document& document)
{
    if (document.census().hasGeometryInstances) {
        Binder(document).run();
    }
}

} // namespace libPrepare
