#include "Passes.h"

#include "../document/Numbers.h"
#include "../document/PlainIds.h"
#include "../document/Reference.h"
#include "../document/References.h"
#include "../document/Tree.h"

#include <algorithm>
#include <unordered_map>

namespace libPrepare {

namespace {

class IdRepair {
public:
    explicit IdRepair(Document& document) : m_document(document) {}

    void run()
    {
        const Census& census = m_document.census();
        if (census.areIdsPlain && census.areReferencesPlain && m_document.areIdsUnique()) {
            return; // the usual case
        }
        listReferences();
        listRenames();
        for (const auto& [reference, targets] : m_references) {
            rewrite(reference, targets);
        }
        for (const pugi::xml_node element : m_order) {
            setAttribute(element, "id", m_renames.at(element));
        }
        if (!m_order.empty()) {
            m_document.forgetIds();
        }
    }

private:
    struct Hash {
        std::size_t operator()(pugi::xml_node node) const { return node.hash_value(); }
    };

    void listReferences()
    {
        for (const Reference& reference : m_document.census().references) {
            std::vector<pugi::xml_node> targets;
            const std::string text = reference.text();
            switch (reference.form) {
            case Reference::Form::uri:
                targets.push_back(find(text, true, reference.kinds));
                break;
            case Reference::Form::id:
                targets.push_back(find(text, false, reference.kinds));
                break;
            case Reference::Form::path:
                targets.push_back(findTargeted(text));
                break;
            case Reference::Form::ids:
                for (const std::string_view word : words(text)) {
                    targets.push_back(find(std::string(word), false, reference.kinds));
                }
                break;
            }
            for (const pugi::xml_node target : targets) {
                if (target && !*target.attribute("id").value()) {
                    m_isNamed[target] = true;
                }
            }
            m_references.emplace_back(reference, std::move(targets));
        }
    }

    // The result is cached, because many elements may have the same id.
    pugi::xml_node find(const std::string& text, bool isUri, const Kinds& kinds)
    {
        const std::string key = (isUri ? '#' : '=') + std::string(kinds[0] != nullptr ? kinds[0] : "") + ' ' + text;
        const auto [place, isNew] = m_found.try_emplace(key);
        if (isNew) {
            const std::string_view id = trimmed(text);
            place->second = isUri ? m_document.resolve(id, kinds) : m_document.byId(id, kinds);
            if (!place->second && isUri) {
                place->second = m_document.resolve(id);
            } else if (!place->second && !id.empty() && id.front() == '#') { // a URI in the place of an id
                place->second = m_document.resolve(id, kinds);
            }
        }
        return place->second;
    }

    // A channel drives something in the first element with that id that is no scene, because scenes have nothing to
    // drive.
    pugi::xml_node findTargeted(std::string_view target)
    {
        const std::string id(trimmed(target.substr(0, target.find('/'))));
        for (const std::string& each : {id, percentDecoded(id)}) {
            const pugi::xml_node driven =
                find(each, false, {"node", "camera", "light", "source", "morph", "controller"});
            if (driven) {
                return driven;
            }
        }
        return find(id, false, {});
    }

    void listRenames()
    {
        for (const Census::Bearer& bearer : m_document.census().bearers) {
            const pugi::xml_node element = bearer.element;
            const std::string id(bearer.id);
            if (id.empty()) {
                if (m_isNamed.count(element) != 0) {
                    rename(element, m_document.freshId(element.name()), "odd-id",
                           "An id is empty, but references name it.");
                }
                continue;
            }
            const std::string simple = is(element, "image") ? plainImageId(id) : plainId(id);
            if (m_document.byId(id) != element) {
                rename(element, m_document.freshId(simple), "doubled-id",
                       "The id " + id + " is borne by several elements.");
            } else if (simple != id) {
                rename(element, m_document.freshId(simple), "odd-id",
                       "The id " + id + " has characters that a reference cannot hold.");
            } else if (id != element.attribute("id").value()) {
                rename(element, id, "odd-id", "The id " + id + " has blanks around it.");
            }
        }
    }

    void rename(pugi::xml_node element, std::string id, const char* kind, std::string text)
    {
        m_document.rewritten(element, kind, std::move(text), "made " + id + "; references follow");
        m_renames[element] = std::move(id);
        m_order.push_back(element);
    }

    std::string newId(pugi::xml_node element) const
    {
        const auto renamed = m_renames.find(element);
        return renamed != m_renames.end() ? renamed->second : std::string(trimmed(element.attribute("id").value()));
    }

    void rewrite(const Reference& reference, const std::vector<pugi::xml_node>& targets)
    {
        const std::string before = reference.text();
        std::string after = before;
        bool followsRename = false;
        switch (reference.form) {
        case Reference::Form::uri:
            if (!targets[0]) {
                return;
            }
            after = '#' + newId(targets[0]);
            // Readers ignore blanks around a text.
            if (!reference.attribute && trimmed(before) == after) {
                return;
            }
            followsRename = m_renames.count(targets[0]) != 0;
            break;
        case Reference::Form::id:
            followsRename = targets[0] && m_renames.count(targets[0]) != 0 && !isSid(reference, before);
            after = followsRename ? newId(targets[0]) : before;
            break;
        case Reference::Form::path:
            followsRename = targets[0] && m_renames.count(targets[0]) != 0;
            after =
                followsRename ? newId(targets[0]) + before.substr(std::min(before.find('/'), before.size())) : before;
            break;
        case Reference::Form::ids: {
            std::string list;
            const std::vector<std::string_view> old = words(before);
            for (std::size_t i = 0; i < targets.size(); ++i) {
                const bool isRenamed = targets[i] && m_renames.count(targets[i]) != 0;
                followsRename = followsRename || isRenamed;
                list += (i == 0 ? "" : " ") + (isRenamed ? newId(targets[i]) : std::string(old[i]));
            }
            after = followsRename ? list : before;
            break;
        }
        }
        if (after == before) {
            return;
        }
        reference.setText(after);
        if (!followsRename) {
            m_document.rewritten(reference.element, "odd-reference",
                                 "The reference " + before + " says more than an id.", "made " + after);
        }
    }

    // Whether a texture or a sampler names a parameter of its effect, which comes before an image of that id.
    static bool isSid(const Reference& reference, const std::string& name)
    {
        if (!is(reference.element, "texture") && !is(reference.element, "source")) {
            return false;
        }
        for (pugi::xml_node parent = reference.element.parent(); parent; parent = parent.parent()) {
            for (const pugi::xml_node child : parent.children("newparam")) {
                if (trimmed(name) == child.attribute("sid").value()) {
                    return true;
                }
            }
        }
        return false;
    }

    Document& m_document;
    std::vector<std::pair<Reference, std::vector<pugi::xml_node>>> m_references;
    std::unordered_map<std::string, pugi::xml_node> m_found;
    std::unordered_map<pugi::xml_node, bool, Hash> m_isNamed; // with an empty id
    std::unordered_map<pugi::xml_node, std::string, Hash> m_renames;
    std::vector<pugi::xml_node> m_order; // of the renames
};

} // namespace

void repairIds(Document& document)
{
    IdRepair(document).run();
    document.closeCensus();
}

} // namespace libPrepare
