#include "Optics.h"
#include "Passes.h"

#include <libPrepare/document/Motion.h>
#include <libPrepare/document/Numbers.h>
#include <libPrepare/document/Tree.h>

#include <algorithm>
#include <memory>
#include <unordered_map>

namespace libPrepare {

namespace {

struct Words {
    const char* what;
    const char* remedy;
};

Words describe(pugi::xml_node target)
{
    for (pugi::xml_node element = target; element; element = element.parent()) {
        if (is(element, "controller") || is(element, "geometry")) {
            return {"a shape", "Take one pose by preparing the document for a time."};
        }
        if (is(element, "effect") || is(element, "material")) {
            return {"a material", "Animate the material in the host."};
        }
        if (is(element, "light")) {
            return {"a light", "Animate the light in the host, or the node that holds it."};
        }
        if (is(element, "camera")) {
            return {"a camera beyond its angles and planes", "Animate <xfov>, <yfov>, <znear> or <zfar>."};
        }
        if (is(element, "node")) {
            return {"a node that is not shown, or no transform of it",
                    "Animate a transform of a node that the scene shows."};
        }
    }
    return {"nothing in the document", "Correct the target of the <channel>."};
}

class Keeping {
public:
    explicit Keeping(Document& document) : m_document(document)
    {
        for (const pugi::xml_node node : nodesIn(shownScene(document))) {
            m_shown.insert(node.hash_value());
            for (const pugi::xml_node instance : node.children("instance_camera")) {
                m_shown.insert(document.resolve(instance.attribute("url").value(), {"camera"}).hash_value());
            }
        }
    }

    // The element with the id at the start of a target.
    pugi::xml_node startOf(pugi::xml_node channel)
    {
        const std::string target = channel.attribute("target").value();
        const pugi::xml_node element = m_document.resolve('#' + target.substr(0, target.find('/')));
        return element ? element : m_document.resolve('#' + target.substr(0, target.find_first_of("./(")));
    }

    // Whether the scene graph finds the target of an animation.
    bool isOfUse(pugi::xml_node animation)
    {
        const pugi::xml_node channel = animation.child("channel");
        const std::string target = channel.attribute("target").value();
        const std::size_t slash = target.find('/');
        const pugi::xml_node owner = startOf(channel);
        if (slash == std::string::npos || animation.child("animation") || channel.next_sibling("channel") ||
            m_shown.count(owner.hash_value()) == 0) {
            return false;
        }
        const std::string sid = target.substr(slash + 1, target.find('.', slash) - slash - 1);
        const bool isCamera = is(owner, "camera");
        const pugi::xml_node parent = isCamera ? perspectiveOf(owner) : owner;
        const auto children = parent.children();
        return std::any_of(children.begin(), children.end(), [&](pugi::xml_node child) {
            return sid == child.attribute("sid").value() && (isCamera ? isOptic(child) : isTransform(child.name()));
        });
    }

private:
    Document& m_document;
    std::unordered_set<std::size_t> m_shown; // nodes and cameras
};

// Sets animated values of materials, lights and otherwise undriven cameras to those at the requested time.
class Stills {
public:
    Stills(Document& document, bool isNeeded) : m_document(document)
    {
        if (!isNeeded || !document.options().time) {
            return;
        }
        m_motion = std::make_unique<Motion>(document);
        for (const Channel& channel : m_motion->channels()) {
            if (isInLook(channel.target)) {
                m_targets.emplace(channel.element.hash_value(), channel.target);
            }
        }
    }

    /// @return whether the target of a channel has its value now
    bool take(pugi::xml_node channel)
    {
        const auto found = m_targets.find(channel.hash_value());
        if (found == m_targets.end()) {
            return false;
        }
        const pugi::xml_node target = found->second;
        // The value includes all channels of the target.
        if (m_done.insert(target.hash_value()).second) {
            setText(target, text(m_motion->values(target, m_document.options().time)));
        }
        m_document.rewritten(channel, "animation",
                             "The animation of \"" + std::string(channel.attribute("target").value()) +
                                 "\" cannot be written.",
                             "it has the value of the time that was asked for");
        return true;
    }

private:
    // Whether an element only holds numbers and is in a light, an effect, a material or a camera.
    static bool isInLook(pugi::xml_node target)
    {
        const pugi::xml_node child = target.first_child();
        const bool isText = child && !child.next_sibling() && child.type() == pugi::node_pcdata;
        for (pugi::xml_node above = target.parent(); isText && above; above = above.parent()) {
            if (is(above, "light") || is(above, "effect") || is(above, "material") || is(above, "camera")) {
                return true;
            }
        }
        return false;
    }

    Document& m_document;
    std::unique_ptr<Motion> m_motion;                          // null where the values stay
    std::unordered_map<std::size_t, pugi::xml_node> m_targets; // of channels
    std::unordered_set<std::size_t> m_done;
};

} // namespace

void dropAnimations(Document& document)
{
    std::vector<pugi::xml_node> idle;
    std::optional<Keeping> keeping;
    for (const pugi::xml_node library : document.root().children("library_animations")) {
        for (const pugi::xml_node animation : library.children("animation")) {
            if (!keeping) {
                keeping.emplace(document);
            }
            if (!keeping->isOfUse(animation)) {
                idle.push_back(animation);
            }
        }
    }
    Stills stills(document, !idle.empty());
    for (const pugi::xml_node animation : idle) {
        bool hasChannel = false;
        for (pugi::xml_node element = animation; element; element = next(element, animation)) {
            if (is(element, "channel")) {
                hasChannel = true;
                if (stills.take(element)) {
                    continue;
                }
                const Words words = describe(keeping->startOf(element));
                document.lost(element, "animation",
                              "The animation of \"" + std::string(element.attribute("target").value()) +
                                  "\" is left out: it drives " + words.what + ".",
                              words.remedy);
            }
        }
        if (!hasChannel) {
            document.rewritten(animation, "animation", "An <animation> that drives nothing is left out.");
        }
    }
    for (const pugi::xml_node animation : idle) {
        document.report().changed = true;
        removeElement(animation);
    }
    if (!idle.empty()) {
        document.forgetIds();
    }
}

} // namespace libPrepare
