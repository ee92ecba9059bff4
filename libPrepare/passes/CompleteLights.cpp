#include "Passes.h"

#include <libPrepare/document/Document.h>
#include <libPrepare/document/LightElement.h>
#include <libPrepare/document/Looks.h>
#include <libPrepare/document/Motion.h>
#include <libPrepare/document/Numbers.h>
#include <libPrepare/document/SceneSize.h>
#include <libPrepare/document/Transforms.h>
#include <libPrepare/document/Tree.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace libPrepare {

namespace {

double dot(const Vector3& a, const Vector3& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

double length(const Vector3& vector)
{
    return std::sqrt(dot(vector, vector));
}

Vector3 difference(const Vector3& a, const Vector3& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

bool isSameDirection(const Vector3& a, const Vector3& b)
{
    return dot(a, b) > (1 - 1e-9) * length(a) * length(b);
}

Vector3 positionOf(const Matrix4& matrix)
{
    return {matrix[3], matrix[7], matrix[11]};
}

Vector3 backOf(const Matrix4& matrix)
{
    return {matrix[2], matrix[6], matrix[10]};
}

bool isSame(const Matrix4& a, const Matrix4& b)
{
    for (unsigned i = 0; i < 16; ++i) {
        if (!(a[i] == b[i])) {
            return false;
        }
    }
    return true;
}

Matrix4 translation(const Vector3& by)
{
    Matrix4 result = identity();
    for (unsigned row = 0; row < 3; ++row) {
        result(row, 3) = by[row];
    }
    return result;
}

std::string idOf(pugi::xml_node element)
{
    return element.attribute("id").value();
}

std::string foldCase(std::string text)
{
    for (char& character : text) {
        if (character >= 'A' && character <= 'Z') {
            character = static_cast<char>(character + ('a' - 'A'));
        }
    }
    return text;
}

// ---------------------------------------------------------------------------------------- ids that differ only in case

// Instances find their light or camera by id, ignoring case.
void separateCases(Document& document, const char* library, const char* kind, const char* instance)
{
    std::unordered_set<std::string> ids;
    std::unordered_set<std::string> known; // in lower case
    std::unordered_map<std::string, std::string> newIds;
    std::vector<pugi::xml_node> clashing;
    for (const pugi::xml_node each : document.root().children(library)) {
        for (const pugi::xml_node element : each.children(kind)) {
            const std::string id = idOf(element);
            if (!id.empty() && ids.insert(id).second && !known.insert(foldCase(id)).second) {
                clashing.push_back(element);
            }
        }
    }
    for (const pugi::xml_node element : clashing) {
        std::string newId = document.freshId(idOf(element) + "-2");
        while (!known.insert(foldCase(newId)).second) {
            newId = document.freshId(newId);
        }
        newIds.emplace(idOf(element), newId);
    }
    for (const pugi::xml_node each : elementsBelow(clashing.empty() ? pugi::xml_node() : document.root(), nullptr)) {
        if (is(each, instance)) {
            const auto found = newIds.find(idOf(document.resolve(each.attribute("url").value(), {kind})));
            if (found != newIds.end()) {
                setAttribute(each, "url", '#' + found->second);
            }
        } else if (is(each, "channel")) {
            const std::string target = each.attribute("target").value();
            const std::size_t slash = std::min(target.find('/'), target.size());
            const auto found = newIds.find(target.substr(0, slash));
            if (found != newIds.end()) {
                setAttribute(each, "target", found->second + target.substr(slash));
            }
        }
    }
    for (const pugi::xml_node element : clashing) {
        const std::string oldId = idOf(element);
        const std::string& newId = newIds[oldId];
        document.setId(element, newId);
        document.rewritten(element, "id", "The id \"" + oldId + "\" differs from another one only in case.",
                           "it is \"" + newId + "\" now");
    }
}

// -------------------------------------------------------------------------------------------------------------- lights

class LightCompleter {
public:
    explicit LightCompleter(Document& document) : m_document(document), m_scene(shownScene(document)) {}

    void run()
    {
        const std::vector<pugi::xml_node> nodes =
            m_document.census().hasLightInstances ? nodesIn(m_scene) : std::vector<pugi::xml_node>();
        for (const pugi::xml_node node : nodes) {
            readInstances(node);
        }
        for (const pugi::xml_node library : m_document.root().children("library_lights")) {
            for (const pugi::xml_node light : library.children("light")) {
                completeValues(light);
            }
        }
        if (m_spots.empty() && m_directionals.empty() && m_ambients.empty()) {
            return;
        }
        const Motion motion(m_document);
        Pose pose(motion, {});
        aimSpots(nodes, motion, pose);
        if (m_document.options().approximations) {
            moveDirectionals(pose);
            foldAmbients();
        } else {
            reportInexpressible();
        }
    }

private:
    struct Shown {
        pugi::xml_node node;
        pugi::xml_node instance;
        pugi::xml_node light;
    };

    void readInstances(pugi::xml_node node)
    {
        for (pugi::xml_node instance = node.child("instance_light"); instance;) {
            const pugi::xml_node next = instance.next_sibling("instance_light");
            const std::string url = instance.attribute("url").value();
            const pugi::xml_node light = m_document.resolve(url, {"light"});
            const pugi::xml_node shape = shapeOf(light);
            if (!light) {
                m_document.lost(instance, "light", "A node shows a light that is not there: \"" + url + "\".",
                                "add the light, or take out the <instance_light>");
                m_document.rewritten(instance, "light", "A light that is not there hides those after it.", "taken out");
                removeElement(instance);
            } else if (!shape) {
                m_document.lost(light, "light", "The light \"" + idOf(light) + "\" is of no common kind.",
                                "give it a <point>, <spot>, <directional> or <ambient>");
            } else if (is(shape, "spot")) {
                m_spots.push_back({node, instance, light});
            } else if (is(shape, "directional")) {
                m_directionals.push_back({node, instance, light});
            } else if (is(shape, "ambient")) {
                m_ambients.push_back({node, instance, light});
            }
            instance = next;
        }
    }

    // All lights are read, even if they are not shown.
    void completeValues(pugi::xml_node light)
    {
        const pugi::xml_node shape = shapeOf(light);
        if (!is(shape, "point") && !is(shape, "spot")) {
            return;
        }
        const std::string missing = completeShape(shape);
        if (!missing.empty()) {
            m_document.rewritten(light, "light", "The light \"" + idOf(light) + "\" does not say its " + missing + ".",
                                 "written out as the standard has it");
        }
        if (is(shape, "spot") && completeOuterCone(light)) {
            m_document.rewritten(light, "light", "The light \"" + idOf(light) + "\" has no outer cone.",
                                 "it is the cone of the standard");
        }
    }

    // --------------------------------------------------------------------------------------------------------- spots

    void aimSpots(const std::vector<pugi::xml_node>& nodes, const Motion& motion, Pose& pose)
    {
        for (const pugi::xml_node node : m_spots.empty() ? std::vector<pugi::xml_node>() : nodes) {
            const std::size_t parent = node.parent().hash_value();
            if (motion.isNodeAnimated(node) || m_moving.count(parent) > 0) { // parents go before their children
                m_moving.insert(node.hash_value());
            }
            m_nodes.insert(node.hash_value());
        }
        std::unordered_map<std::size_t, unsigned> users;
        for (const Shown& spot : m_spots) {
            ++users[spot.light.hash_value()];
        }
        for (Shown& spot : m_spots) {
            if (isAimed(spot, pose)) {
                continue;
            }
            unsigned& others = users[spot.light.hash_value()];
            if (others > 1) {
                const pugi::xml_node copy = copyLight(spot);
                if (!copy) {
                    continue;
                }
                --others;
                spot.light = copy;
            }
            aim(spot, pose);
        }
    }

    bool isMoving(pugi::xml_node node) const { return m_moving.count(node.hash_value()) > 0; }

    // Whether a spot light has a target in the direction of its node, both as the light computes it and in the scene.
    bool isAimed(const Shown& spot, Pose& pose)
    {
        const pugi::xml_node target = m_document.byId(targetOf(spot.light), {"node"});
        if (!target || m_nodes.count(target.hash_value()) == 0) {
            return false;
        }
        const Vector3 ahead{0, 0, -1};
        if (isMoving(spot.node) || isMoving(target)) {
            return target.parent() == spot.node && isSameDirection(positionOf(localMatrix(target)), ahead);
        }
        const Matrix4& world = pose.world(spot.node);
        const Vector3 direction = transformVector(world, ahead);
        if (!(length(direction) > 0) || !std::isfinite(length(direction) + length(positionOf(world)))) {
            return true; // it points nowhere
        }
        return isSameDirection(difference(positionOf(pose.world(target)), positionOf(world)), direction) &&
               isSameDirection(difference(positionOf(localMatrix(target)), positionOf(localMatrix(spot.node))),
                               direction);
    }

    pugi::xml_node copyLight(const Shown& spot)
    {
        if (!m_document.takeBytes(sizeOf(spot.light))) {
            m_document.lost(spot.instance, "spot", "The result would become too large with a light for each node.",
                            "raise the limit for the size of the result");
            return {};
        }
        pugi::xml_node copy = spot.light.parent().insert_copy_after(spot.light, spot.light);
        for (pugi::xml_node inner : elementsBelow(copy, nullptr)) {
            inner.remove_attribute("id");
        }
        const std::string id = m_document.freshId(idOf(spot.light) + '-' + plain(idOf(spot.node)));
        m_document.setId(copy, id);
        m_document.setOrigin(copy, spot.light);
        pugi::xml_node instance = spot.instance;
        setAttribute(instance, "url", '#' + id);
        m_document.rewritten(instance, "spot", "Several nodes show the spot light \"" + idOf(spot.light) + "\".",
                             "this one shows a copy, \"" + id + "\"");
        return copy;
    }

    // Gives a spot light a target. Its direction is read from the local positions of both nodes, so both have to be
    // directly under the scene if their parents are rotated. A moving light keeps its node, and the target moves with
    // it.
    void aim(Shown& spot, Pose& pose)
    {
        const Matrix4 world = pose.world(spot.node);
        const std::string targetId = m_document.freshId(plain(idOf(spot.node)) + "-target");
        const double reach = std::max(1.0, length(positionOf(world)));
        const double scale = length(backOf(world));
        const Vector3 ahead{0, 0, scale > 0 && std::isfinite(reach / scale) ? -reach / scale : -1};
        pugi::xml_node target;
        if (isMoving(spot.node)) {
            target = appendNode(spot.node);
            prependTransform(target, "matrix", text(translation(ahead)));
        } else {
            pugi::xml_node top = spot.node;
            while (!is(top.parent(), "visual_scene")) {
                top = top.parent();
            }
            pugi::xml_node& last = m_lastAdded[top.hash_value()]; // what is added keeps the order of the lights
            last = last ? last : top;
            if (!isSame(localMatrix(spot.node), world)) {
                last = moveToScene(spot, last, world);
            }
            target = last = m_scene.insert_child_after("node", last);
            prependTransform(target, "matrix", text(translation(transformPoint(world, ahead))));
        }
        m_document.setOrigin(target, spot.node);
        m_document.setId(target, targetId);
        setTarget(spot.light, targetId);
        m_document.rewritten(spot.light, "spot",
                             "The spot light \"" + idOf(spot.light) + "\" has no target where it points.",
                             "the node \"" + targetId + "\" is its target");
    }

    pugi::xml_node moveToScene(Shown& spot, pugi::xml_node last, const Matrix4& world)
    {
        pugi::xml_node node = m_scene.insert_child_after("node", last);
        m_document.setOrigin(node, spot.node);
        const std::string id = m_document.freshId(plain(idOf(spot.node)) + "-light");
        m_document.setId(node, id);
        if (const pugi::xml_attribute name = spot.node.attribute("name")) {
            node.append_attribute("name").set_value(name.value());
        }
        prependTransform(node, "matrix", text(world));
        m_document.rewritten(spot.instance, "spot",
                             "A spot light is aimed by positions that are read without the nodes above.",
                             "it is in the node \"" + id + "\" of the scene");
        spot.instance = node.append_move(spot.instance);
        spot.node = node;
        return node;
    }

    static pugi::xml_node appendNode(pugi::xml_node parent)
    {
        const pugi::xml_node extra = parent.child("extra");
        return extra ? parent.insert_child_before("node", extra) : parent.append_child("node");
    }

    // --------------------------------------------------------------------------------------------------- directional

    void moveDirectionals(Pose& pose)
    {
        double size = m_directionals.empty() ? 1 : sizeOfScene(m_document, m_scene, pose);
        for (const Shown& shown : m_directionals) {
            const double away = length(positionOf(pose.world(shown.node)));
            size = std::isfinite(away) ? std::max(size, away) : size;
        }
        const double distance = std::min(1e4 * std::pow(10.0, std::ceil(std::log10(size))), 1e30);
        for (const Shown& shown : m_directionals) {
            pugi::xml_node shape = shapeOf(shown.light);
            if (is(shape, "directional")) {
                shape.set_name("point");
                completeShape(shape);
            }
            const double scale = length(backOf(pose.world(shown.node)));
            const double local = distance / scale;
            pugi::xml_node node = appendNode(shown.node);
            m_document.setOrigin(node, shown.node);
            const std::string id = m_document.freshId(plain(idOf(shown.node)) + "-light");
            m_document.setId(node, id);
            if (const pugi::xml_attribute name = shown.node.attribute("name")) {
                node.append_attribute("name").set_value(name.value());
            }
            prependTransform(node, "matrix", text(translation({0, 0, std::isfinite(local) ? local : distance})));
            node.append_move(shown.instance);
            Approximation numbers = approximationOf(shown.light, Approximation::Kind::directionalLight);
            numbers.nodeId = id;
            m_document.approximated(shown.light, "directional",
                                    "The directional light \"" + idOf(shown.light) + "\" is a point light far away.",
                                    "it is in the node \"" + id + '"', numbers);
        }
    }

    // ------------------------------------------------------------------------------------------------------- ambient

    void foldAmbients()
    {
        std::vector<double> sum(3, 0.0);
        for (const Shown& shown : m_ambients) {
            const std::vector<double> color = colorOf(shown.light);
            for (std::size_t i = 0; i < 3; ++i) {
                sum[i] += color[i];
            }
        }
        if (std::any_of(sum.begin(), sum.end(), [](double value) { return value != 0; })) {
            std::unordered_set<std::size_t> known;
            for (const pugi::xml_node material : shownMaterials(m_document)) {
                const pugi::xml_node effect = effectOf(m_document, material);
                const Shading shading = shadingOf(effect);
                if (shading && known.insert(effect.hash_value()).second) {
                    fold(effect, shading.shader, sum);
                }
            }
        }
        for (const Shown& shown : m_ambients) {
            Approximation numbers = approximationOf(shown.light, Approximation::Kind::ambientLight);
            numbers.nodeId = idOf(shown.node);
            m_document.approximated(shown.instance, "ambient",
                                    "The ambient light \"" + idOf(shown.light) +
                                        "\" is in the emission of the materials.",
                                    "its <instance_light> is taken out", numbers);
            removeElement(shown.instance);
        }
    }

    void fold(pugi::xml_node effect, pugi::xml_node shader, const std::vector<double>& sum)
    {
        const pugi::xml_node ambient = shader.child("ambient");
        const bool isPlain = isPlainColor(ambient);
        const std::vector<double> reflected = isPlain ? numbersOf(ambient.child("color")) : std::vector<double>(3, 1.0);
        std::vector<double> glow(3);
        for (std::size_t i = 0; i < 3; ++i) {
            glow[i] = reflected[i] * sum[i];
        }
        if (!ambient || std::all_of(glow.begin(), glow.end(), [](double value) { return value == 0; })) {
            return;
        }
        const pugi::xml_node emission = shader.child("emission");
        if (!isPlain || (emission && !isPlainColor(emission))) {
            m_document.lost(shader, "ambient",
                            "The effect \"" + idOf(effect) + "\" has a texture where ambient lights shine.",
                            "give it a plain color for <ambient> and <emission>");
            return;
        }
        std::vector<double> color = emission ? numbersOf(emission.child("color")) : std::vector<double>{0, 0, 0, 1};
        for (std::size_t i = 0; i < 3; ++i) {
            color[i] += glow[i];
        }
        setColor(needChannel(shader, "emission"), text(color));
        m_document.rewritten(shader, "ambient", "Ambient lights shine on the effect \"" + idOf(effect) + "\".",
                             "they are in its emission: " + text(color));
    }

    // --------------------------------------------------------------------------------------------------------- losses

    static Approximation approximationOf(pugi::xml_node light, Approximation::Kind kind)
    {
        Approximation result;
        result.kind = kind;
        result.id = idOf(light);
        const std::vector<double> color = colorOf(light);
        std::copy(color.begin(), color.begin() + 3, result.color);
        return result;
    }

    void reportInexpressible()
    {
        for (const Shown& shown : m_directionals) {
            m_document.lost(shown.light, "directional", "Directional lights are not read.",
                            "allow approximations: a point light far away");
        }
        for (const Shown& shown : m_ambients) {
            m_document.lost(shown.light, "ambient", "Ambient lights are not read.",
                            "allow approximations: the emission of the materials");
        }
    }

    Document& m_document;
    pugi::xml_node m_scene;
    std::vector<Shown> m_spots;
    std::vector<Shown> m_directionals;
    std::vector<Shown> m_ambients;
    std::unordered_set<std::size_t> m_nodes;
    std::unordered_set<std::size_t> m_moving;                    // nodes that move, or one above them
    std::unordered_map<std::size_t, pugi::xml_node> m_lastAdded; // to the scene, after each of its nodes
};

} // namespace

void completeLights(Document& document)
{
    separateCases(document, "library_lights", "light", "instance_light");
    separateCases(document, "library_cameras", "camera", "instance_camera");
    LightCompleter(document).run();
}

} // namespace libPrepare
