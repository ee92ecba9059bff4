#include "Passes.h"

#include <libPrepare/document/Looks.h>
#include <libPrepare/document/Tree.h>
#include <libPrepare/geometry/GeometryCopier.h>

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace libPrepare {

namespace {

// The scene graph shows a geometry once, and knows one material for each symbol in the whole scene.
class Separator {
public:
    explicit Separator(Document& document) : m_document(document), m_copier(document) {}

    void run()
    {
        std::vector<pugi::xml_node> instances;
        for (const pugi::xml_node node : nodesIn(shownScene(m_document))) {
            for (const pugi::xml_node instance : node.children("instance_geometry")) {
                instances.push_back(instance);
            }
        }
        for (const pugi::xml_node instance : instances) {
            separate(instance);
        }
        for (const auto& pair : m_pairs) {
            bind(pair.first);
        }
        for (const auto& pair : m_pairs) {
            tellApart(pair.first, pair.second);
        }
    }

private:
    static std::vector<pugi::xml_node> bindingsOf(pugi::xml_node instance)
    {
        const pugi::xml_node common = descend(instance, "bind_material/technique_common");
        std::vector<pugi::xml_node> result;
        for (const pugi::xml_node binding : common.children("instance_material")) {
            result.push_back(binding);
        }
        return result;
    }

    void separate(pugi::xml_node instance)
    {
        pugi::xml_node geometry = m_document.resolve(instance.attribute("url").value(), {"geometry"});
        if (!geometry) {
            return;
        }
        if (!m_shown.insert(geometry.hash_value()).second) {
            const pugi::xml_node copy = m_copier.copy(geometry);
            if (!copy) {
                m_document.lost(instance, "size",
                                "A geometry that is shown more than once would make the result too big.",
                                "This instance was taken out. Allow a bigger result.");
                m_document.report().changed = true;
                removeElement(instance);
                return;
            }
            m_document.rewritten(instance, "instance_geometry",
                                 "A geometry that is shown more than once is not read again.",
                                 "It has a geometry of its own now, #" + std::string(copy.attribute("id").value()) +
                                     ", with the same sources.");
            setAttribute(instance, "url", '#' + std::string(copy.attribute("id").value()));
            geometry = copy;
        }
        m_pairs.emplace_back(instance, geometry);
    }

    // Records the material of each symbol that an instance is the first to use.
    void bind(pugi::xml_node instance)
    {
        for (const pugi::xml_node binding : bindingsOf(instance)) {
            const std::string symbol = binding.attribute("symbol").value();
            const pugi::xml_node material = repairedMaterialOf(m_document, binding);
            if (isWord(symbol)) {
                m_meanings.emplace(symbol, material);
            }
        }
    }

    // Replaces blanks, at which the reading of a symbol would stop.
    static bool isWord(std::string_view symbol) { return symbol.find_first_of(" \t\r\n") == std::string_view::npos; }

    void tellApart(pugi::xml_node instance, pugi::xml_node geometry)
    {
        std::unordered_map<std::string, std::string> renamed;
        std::unordered_set<std::string> bound;
        for (const pugi::xml_node binding : bindingsOf(instance)) {
            const std::string symbol = binding.attribute("symbol").value();
            if (!bound.insert(symbol).second) {
                continue; // the first binding of a symbol counts
            }
            const pugi::xml_node material = materialOf(m_document, binding);
            std::string other = symbolFor(symbol, material);
            if (other != symbol) {
                renamed.emplace(symbol, other);
                m_document.rewritten(binding, "symbol",
                                     "The symbol " + symbol + " means another material elsewhere, or holds blanks.",
                                     "It is " + other + " here now.");
            }
        }
        for (const pugi::xml_node binding : bindingsOf(instance)) {
            const auto other = renamed.find(binding.attribute("symbol").value());
            if (other != renamed.end()) {
                setAttribute(binding, "symbol", other->second);
            }
        }
        for (const pugi::xml_node primitive : primitivesOf(geometry)) {
            const std::string symbol = primitive.attribute("material").value();
            if (symbol.empty()) {
                continue;
            }
            auto other = renamed.find(symbol);
            if (bound.count(symbol) == 0 && other == renamed.end()) {
                other = renamed.emplace(symbol, unboundSymbol(primitive, instance, symbol)).first;
            }
            if (other != renamed.end() && other->second != symbol) {
                setAttribute(primitive, "material", other->second);
            }
        }
    }

    // A symbol that only means this material: the given one if it is free or means it already.
    std::string symbolFor(const std::string& symbol, pugi::xml_node material)
    {
        if (isWord(symbol) && m_meanings.emplace(symbol, material).first->second == material) {
            return symbol;
        }
        const auto [known, isNew] = m_replacements.try_emplace(symbol + '\n' + std::to_string(material.hash_value()));
        if (isNew) {
            known->second = freshSymbol(symbol);
            m_meanings.emplace(known->second, material);
        }
        return known->second;
    }

    // A symbol that an instance does not bind must not get its meaning from elsewhere. If it is a material's id, it
    // means that material.
    std::string unboundSymbol(pugi::xml_node primitive, pugi::xml_node instance, const std::string& symbol)
    {
        const pugi::xml_node material = m_document.byId(symbol, {"material"});
        const auto meaning = m_meanings.find(symbol);
        if (meaning == m_meanings.end() || meaning->second == material) {
            if (material) {
                m_meanings.emplace(symbol, material);
            }
            return symbol;
        }
        std::string other = symbolFor(symbol, material);
        m_document.rewritten(primitive, "symbol",
                             "The symbol " + symbol + " is bound to a material by another instance alone.",
                             "It is " + other + " here now.");
        if (material) {
            addBinding(instance, other, symbol);
        }
        return other;
    }

    static void addBinding(pugi::xml_node instance, const std::string& symbol, const std::string& material)
    {
        pugi::xml_node bind = instance.child("bind_material");
        bind = bind ? bind : instance.prepend_child("bind_material");
        pugi::xml_node common = bind.child("technique_common");
        common = common ? common : bind.append_child("technique_common");
        pugi::xml_node binding = common.append_child("instance_material");
        setAttribute(binding, "symbol", symbol);
        setAttribute(binding, "target", '#' + material);
    }

    // All symbols in use, collected before the first is replaced: a new one must also differ from later ones.
    void readUsedSymbols()
    {
        for (const auto& pair : m_pairs) {
            for (const pugi::xml_node primitive : primitivesOf(pair.second)) {
                m_usedSymbols.insert(primitive.attribute("material").value());
            }
            for (const pugi::xml_node binding : bindingsOf(pair.first)) {
                m_usedSymbols.insert(binding.attribute("symbol").value());
            }
        }
    }

    std::string freshSymbol(const std::string& wish)
    {
        if (m_usedSymbols.empty()) { // at least the wish itself is used
            readUsedSymbols();
        }
        const std::string base = plain(wish);
        std::string symbol = base;
        unsigned& number = m_numbers.try_emplace(base, 2).first->second;
        while (!m_usedSymbols.insert(symbol).second) {
            symbol = base + '-' + std::to_string(number++);
        }
        return symbol;
    }

    Document& m_document;
    GeometryCopier m_copier;
    std::vector<std::pair<pugi::xml_node, pugi::xml_node>> m_pairs; // instance and its geometry
    std::unordered_set<std::size_t> m_shown;
    std::unordered_set<std::string> m_usedSymbols;
    std::unordered_map<std::string, unsigned> m_numbers;
    std::unordered_map<std::string, pugi::xml_node> m_meanings; // the material of each symbol
    std::unordered_map<std::string, std::string> m_replacements;
};

} // namespace

void separateGeometries(Document& document)
{
    if (document.census().hasGeometryInstances) {
        Separator(document).run();
    }
}

} // namespace libPrepare
