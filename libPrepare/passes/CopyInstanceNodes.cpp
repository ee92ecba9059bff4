#include "Passes.h"

#include <libPrepare/document/Motion.h>
#include <libPrepare/document/Numbers.h>
#include <libPrepare/document/Tree.h>

#include <algorithm>
#include <deque>

namespace libPrepare {

namespace {

// Largest total number of copied nodes, because instances of instances double with each step.
constexpr std::size_t maxCopies = 1000000;

// The content of an <extra> is not part of the scene, whatever its names are.
bool isVendorData(pugi::xml_node element)
{
    while (element && !is(element, "extra")) {
        element = element.parent();
    }
    return static_cast<bool>(element);
}

class Copying {
public:
    explicit Copying(Document& document) : m_document(document) {}

    void run()
    {
        for (const char* const name : {"library_nodes", "library_visual_scenes"}) {
            for (const pugi::xml_node library : m_document.root().children(name)) {
                for (pugi::xml_node element = library; element; element = next(element, library)) {
                    if (is(element, "instance_node") && is(element.parent(), "node")) {
                        const pugi::xml_node target = m_document.resolve(element.attribute("url").value(), {"node"});
                        m_targets[element.hash_value()] = isVendorData(target) ? pugi::xml_node() : target;
                    }
                }
            }
        }
        if (m_targets.empty()) {
            return;
        }
        for (const pugi::xml_node node : nodesIn(shownScene(m_document))) {
            m_shown.insert(node.hash_value());
            for (const pugi::xml_node instance : node.children("instance_node")) {
                m_instances.push_back(instance);
            }
        }
        if (m_instances.empty()) {
            return;
        }
        m_motion.emplace(m_document);
        bool isFine = keepShownTargets();
        while (isFine && !m_instances.empty()) {
            const pugi::xml_node instance = m_instances.front();
            isFine = expand(instance);
            if (isFine) {
                m_instances.pop_front();
            }
        }
        if (!m_instances.empty()) {
            m_document.lost(m_instances.front(), "size", "Instances of nodes are left out: they would be too many.",
                            "Raise the limit of the size, or show less.");
        }
        m_document.forgetIds();
    }

private:
    // The original of a node or transform in a copy.
    pugi::xml_node originOf(pugi::xml_node element) const
    {
        const auto found = m_origins.find(element.hash_value());
        return found == m_origins.end() ? element : found->second;
    }

    // Targets in the shown scene change during the pass, so copies are made of their original state.
    bool keepShownTargets()
    {
        std::vector<pugi::xml_node> targets;
        for (const auto& [instance, target] : m_targets) {
            if (m_shown.count(target.hash_value()) > 0 && m_kept.try_emplace(target.hash_value()).second) {
                targets.push_back(target);
            }
        }
        for (const pugi::xml_node target : targets) {
            if (!m_document.takeBytes(sizeOf(target))) {
                return false;
            }
            const pugi::xml_node copy = m_keep.append_copy(target);
            m_kept[target.hash_value()] = copy;
            // Targets that are not in the shown scene stay where they are, with their ids.
            pair(target, copy, [this](pugi::xml_node original, pugi::xml_node) {
                if (is(original, "node")) {
                    m_shown.insert(original.hash_value());
                }
            });
        }
        return true;
    }

    // Walks over an element and its copy, and records the originals of nodes and transforms.
    template <class Visit>
    void pair(pugi::xml_node source, pugi::xml_node copy, const Visit& visit)
    {
        pugi::xml_node made = copy;
        for (pugi::xml_node element = source; element && made;
             element = next(element, source), made = next(made, copy)) {
            if (is(element, "node") || isTransform(element.name())) {
                m_origins[made.hash_value()] = originOf(element);
            } else if (is(element, "instance_node")) {
                const auto target = m_targets.find(element.hash_value());
                if (target != m_targets.end()) {
                    const pugi::xml_node leads = target->second;
                    m_targets[made.hash_value()] = leads;
                }
            }
            visit(element, made);
        }
    }

    bool expand(pugi::xml_node instance)
    {
        pugi::xml_node parent = instance.parent();
        const auto known = m_targets.find(instance.hash_value());
        const pugi::xml_node target = known == m_targets.end() ? pugi::xml_node() : known->second;
        const std::string url = instance.attribute("url").value();
        if (!target) {
            m_document.lost(parent, "instance_node", "An <instance_node> names no node: \"" + url + "\".",
                            "Correct its url.");
            m_document.report().changed = true;
            removeElement(instance);
            return true;
        }
        for (pugi::xml_node above = parent; above; above = above.parent()) {
            if (originOf(above) == target) {
                m_document.lost(parent, "instance_node",
                                "The node \"" + url + "\" would hold itself; the inner instance is left out.",
                                "Take the circle out.");
                m_document.report().changed = true;
                removeElement(instance);
                return true;
            }
        }
        const auto kept = m_kept.find(target.hash_value());
        const pugi::xml_node source = kept == m_kept.end() ? target : kept->second;
        if (m_copies >= maxCopies || !m_document.takeBytes(sizeOf(source))) {
            return false;
        }
        const pugi::xml_node copy = parent.insert_copy_before(source, instance);
        m_document.rewritten(instance, "instance_node", "The node \"" + url + "\" is copied in.");
        m_document.setOrigin(copy, target);
        std::vector<std::pair<pugi::xml_node, pugi::xml_node>> moving; // a transform that is animated, and its copy
        pair(source, copy, [&](pugi::xml_node original, pugi::xml_node made) {
            if (is(made, "node")) {
                ++m_copies;
            } else if (is(made, "instance_node")) {
                if (isShownBelow(made, copy)) {
                    m_instances.push_back(made);
                }
            } else if (m_motion->isAnimated(originOf(made)) && isTransform(made.name())) {
                moving.emplace_back(originOf(made), made);
            }
            takeId(original, made);
        });
        for (const auto& [original, made] : moving) {
            if (!isRepresentative(made.parent())) {
                animate(original, made);
            }
        }
        removeElement(instance);
        return true;
    }

    // Whether there are only nodes between an instance and the node that is shown.
    static bool isShownBelow(pugi::xml_node instance, pugi::xml_node shown)
    {
        pugi::xml_node above = instance.parent();
        while (above != shown && is(above, "node")) {
            above = above.parent();
        }
        return above == shown;
    }

    // Skins, targets and other references mean what is shown: if a node itself is not shown, its first copy.
    bool isRepresentative(pugi::xml_node copy) const { return m_representatives.count(copy.hash_value()) > 0; }

    void takeId(pugi::xml_node source, pugi::xml_node copy)
    {
        pugi::xml_attribute id = copy.attribute("id");
        if (is(copy, "node")) {
            const pugi::xml_node original = originOf(copy);
            if (m_shown.count(original.hash_value()) == 0 && m_represented.insert(original.hash_value()).second) {
                m_representatives.insert(copy.hash_value());
                if (id) {
                    const std::string fresh = m_document.freshId(trimmed(id.value()));
                    m_namesake.emplace(original.hash_value(), std::string(id.value()));
                    setAttribute(source, "id", fresh);
                }
                return;
            }
            const auto namesake = m_namesake.find(original.hash_value());
            if (id && namesake != m_namesake.end()) {
                id.set_value(namesake->second.c_str());
            }
        }
        if (id) {
            setAttribute(copy, "id", m_document.freshId(trimmed(id.value())));
        }
    }

    // Lets all channels of a transform drive a copy of it too.
    void animate(pugi::xml_node original, pugi::xml_node copy)
    {
        pugi::xml_node node = copy.parent();
        if (!node.attribute("id")) {
            setAttribute(node, "id", m_document.freshId("node"));
        }
        std::string sid = copy.attribute("sid").value();
        if (sid.empty() || sid.find_first_of("()/") != std::string::npos) { // which a target cannot name
            const std::string start = std::string("animated-") + original.name();
            sid = start;
            for (unsigned number = 2; node.find_child_by_attribute("sid", sid.c_str()); ++number) {
                sid = start + '-' + std::to_string(number);
            }
            setAttribute(copy, "sid", sid);
        }
        for (const std::size_t index : m_motion->channelsOf(original)) {
            const Channel& channel = m_motion->channels()[index];
            std::string target = std::string(node.attribute("id").value()) + '/' + sid;
            if (channel.slot) {
                target += '(' + std::to_string(*channel.slot) + ')';
            }
            if (!m_document.takeBytes(target.size() + 64)) {
                return;
            }
            pugi::xml_node made = channel.element.parent().insert_child_after("channel", channel.element);
            made.append_attribute("source") = channel.element.attribute("source").value();
            made.append_attribute("target") = target.c_str();
        }
    }

    Document& m_document;
    std::optional<Motion> m_motion;
    pugi::xml_document m_keep;
    std::unordered_map<std::size_t, pugi::xml_node> m_kept;    // targets to copies of them before any change
    std::unordered_map<std::size_t, pugi::xml_node> m_targets; // of <instance_node> elements
    std::unordered_map<std::size_t, pugi::xml_node> m_origins;
    std::unordered_map<std::size_t, std::string> m_namesake; // ids of nodes whose first copy has them now
    std::unordered_set<std::size_t> m_shown;
    std::unordered_set<std::size_t> m_represented;
    std::unordered_set<std::size_t> m_representatives;
    std::deque<pugi::xml_node> m_instances;
    std::size_t m_copies = 0;
};

} // namespace

void copyInstanceNodes(Document& document)
{
    if (document.census().hasNodeInstances) {
        Copying(document).run();
    }
}

} // namespace libPrepare
