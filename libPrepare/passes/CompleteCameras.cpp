#include "Optics.h"
#include "Passes.h"

#include <libPrepare/document/FlatCurve.h>
#include <libPrepare/document/Numbers.h>
#include <libPrepare/document/Tree.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include <strings.h>

namespace libPrepare {

namespace {

constexpr double radiansPerDegree = 3.14159265358979323846 / 180.0;
// How far an orthographic camera moves back, in half widths of its picture. An object that is ten widths farther away
// than another then looks two percent smaller.
constexpr double orthographicDistance = 1000;
constexpr double maxTurn = 1e-5; // between the direction to a target and that of the node

Vector3 columnOf(const Matrix4& matrix, unsigned column)
{
    return {matrix[column], matrix[4 + column], matrix[8 + column]};
}

double lengthOf(const Vector3& vector)
{
    return std::sqrt(vector[0] * vector[0] + vector[1] * vector[1] + vector[2] * vector[2]);
}

Vector3 directionOf(const Matrix4& world)
{
    const Vector3 back = columnOf(world, 2);
    const double length = lengthOf(back);
    return length > 0 ? Vector3{-back[0] / length, -back[1] / length, -back[2] / length} : Vector3{0, 0, -1};
}

// The element whose text names the target: the first element with a text in a vendor's technique.
struct TargetPlace {
    pugi::xml_node text;      // null if none has one
    pugi::xml_node technique; // the first; null if there is none
};

TargetPlace findTarget(pugi::xml_node camera)
{
    TargetPlace result;
    for (const pugi::xml_node extra : camera.children("extra")) {
        for (const pugi::xml_node technique : extra.children("technique")) {
            if (strcasecmp(technique.attribute("profile").value(), "FCOLLADA") != 0) {
                continue;
            }
            if (!result.technique) {
                result.technique = technique;
            }
            for (const pugi::xml_node child : technique.children()) {
                if (child.type() == pugi::node_element && !trimmed(textOf(child)).empty()) {
                    result.text = child;
                    return result;
                }
            }
        }
    }
    return result;
}

void setLookAtTarget(pugi::xml_node camera, const std::string& id)
{
    TargetPlace place = findTarget(camera);
    if (!place.technique) {
        place.technique = camera.append_child("extra").append_child("technique");
        place.technique.append_attribute("profile") = "FCOLLADA";
    } else if (place.text && place.text.parent() != place.technique) {
        place.text = {};
    }
    const bool isTarget = place.text && is(place.text, "target");
    setText(isTarget ? place.text : place.technique.prepend_child("target"), '#' + id);
}

// The world matrix of a node over time. Transforms that do not move are multiplied only once.
class Way {
public:
    Way(const Motion& motion, pugi::xml_node node) : m_motion(motion)
    {
        std::vector<pugi::xml_node> nodes;
        for (; is(node, "node"); node = node.parent()) {
            nodes.push_back(node);
        }
        m_steps.emplace_back();
        for (auto each = nodes.rbegin(); each != nodes.rend(); ++each) {
            for (const pugi::xml_node child : each->children()) {
                if (!isTransform(child.name())) {
                    continue;
                }
                const std::vector<double> declared = motion.values(child, {});
                m_rest = m_rest * transformMatrix(child.name(), declared);
                if (!motion.isAnimated(child)) {
                    m_steps.back().still = m_steps.back().still * transformMatrix(child.name(), declared);
                    continue;
                }
                for (const std::size_t index : motion.channelsOf(child)) {
                    m_curves.push_back(motion.channels()[index].curve.get());
                }
                m_steps.back().moving = child;
                m_steps.back().declared = declared;
                m_steps.emplace_back();
            }
        }
    }

    const std::vector<const Curve*>& curves() const { return m_curves; }
    const Matrix4& rest() const { return m_rest; }

    Matrix4 at(double time) const
    {
        Matrix4 result = identity();
        std::vector<double> values;
        for (const Step& step : m_steps) {
            result = result * step.still;
            if (step.moving) {
                values = step.declared;
                m_motion.apply(step.moving, time, values);
                result = result * transformMatrix(step.moving.name(), values);
            }
        }
        return result;
    }

private:
    struct Step {
        Matrix4 still = identity();
        pugi::xml_node moving; // follows `still`
        std::vector<double> declared;
    };

    const Motion& m_motion;
    std::vector<Step> m_steps;
    std::vector<const Curve*> m_curves;
    Matrix4 m_rest = identity();
};

class Cameras {
public:
    explicit Cameras(Document& document)
        : m_document(document), m_scene(shownScene(document)), m_sampling(document.options())
    {
        for (const pugi::xml_node library : document.root().children("library_cameras")) {
            for (const pugi::xml_node camera : library.children("camera")) {
                keepFirstOptics(camera);
                if (const pugi::xml_node perspective = perspectiveOf(camera)) {
                    completePerspective(document, perspective);
                }
            }
        }
        if (!document.census().hasCameraInstances) {
            return;
        }
        for (const pugi::xml_node node : nodesIn(m_scene)) {
            for (const pugi::xml_node instance : node.children("instance_camera")) {
                m_instances.push_back(instance);
            }
        }
        for (const pugi::xml_node child : m_scene.children("node")) {
            m_lastNode = child;
        }
    }

    void run()
    {
        if (m_instances.empty()) {
            return;
        }
        m_motion.emplace(m_document);
        for (const Channel& channel : m_motion->channels()) {
            m_end = std::max(m_end, channel.curve->lastTime());
        }
        for (const pugi::xml_node instance : m_instances) {
            complete(instance);
        }
    }

private:
    // A camera has one <perspective> or <orthographic>; of more the first counts.
    void keepFirstOptics(pugi::xml_node camera)
    {
        bool hasOptics = false;
        bool hasMore = false;
        for (pugi::xml_node optic = descend(camera, "optics/technique_common").first_child(); optic;) {
            const pugi::xml_node following = optic.next_sibling();
            const bool isOptic = is(optic, "perspective") || is(optic, "orthographic");
            if (isOptic && hasOptics) {
                removeElement(optic);
                hasMore = true;
            }
            hasOptics = hasOptics || isOptic;
            optic = following;
        }
        if (hasMore) {
            m_document.rewritten(camera, "optics", "The camera has more than one <perspective> or <orthographic>.",
                                 "The first stays.");
        }
    }

    void drop(pugi::xml_node instance, const char* text, const char* remedy)
    {
        m_document.lost(instance, "camera", text, remedy);
        m_document.report().changed = true;
        removeElement(instance);
    }

    void complete(pugi::xml_node instance)
    {
        pugi::xml_node camera = m_document.resolve(instance.attribute("url").value(), {"camera"});
        if (!camera) {
            drop(instance, "The <instance_camera> names no camera and is left out.", "Correct its url.");
            return;
        }
        double back = 0;
        const pugi::xml_node optics = descend(camera, "optics/technique_common");
        const bool isOrthographic = static_cast<bool>(optics.child("orthographic")) && !optics.child("perspective");
        if (isOrthographic && !m_document.options().approximations) {
            drop(instance, "The orthographic camera is left out.", "Allow approximations.");
            return;
        }
        if (!isOrthographic && !optics.child("perspective")) {
            drop(instance, "The camera has no optics that all readers share, and its instance is left out.",
                 "Give the camera a <perspective> in a <technique_common>.");
            return;
        }
        if (isOrthographic) {
            makePerspective(camera, optics.child("orthographic"));
        }
        const auto approximated = m_approximations.find(camera.attribute("id").value());
        if (approximated != m_approximations.end()) {
            back = orthographicDistance * std::max(approximated->second.xmag, approximated->second.ymag);
        }
        const bool isFirst = m_used.insert(camera.attribute("id").value()).second;
        const pugi::xml_node node = instance.parent();
        const Way way(*m_motion, node);
        if (back == 0 && isFirst && isLookedThrough(node, camera, way)) {
            return;
        }
        if (!m_document.takeBytes(1000)) {
            drop(instance, "The camera is left out: the document is too large.", "Raise the limit of the size.");
            return;
        }
        if (!isFirst) {
            if (!copyCamera(camera)) {
                drop(instance, "The camera is left out: the document is too large.", "Raise the limit of the size.");
                return;
            }
            setAttribute(instance, "url", '#' + std::string(camera.attribute("id").value()));
        }
        place(instance, camera, way, back);
        if (approximated != m_approximations.end()) {
            Approximation numbers = approximated->second;
            numbers.id = camera.attribute("id").value();
            numbers.nodeId = instance.parent().attribute("id").value();
            m_document.approximated(camera, "orthographic",
                                    "The orthographic camera is a perspective one far away now.",
                                    "The report has its size, for hosts that know parallel projections.", numbers);
        }
    }

    // Whether the camera's node and target already give the view of the node, at rest and at each key.
    bool isLookedThrough(pugi::xml_node node, pugi::xml_node camera, const Way& way)
    {
        std::string scratch;
        const TargetPlace place = findTarget(camera);
        const pugi::xml_node target =
            place.text ? m_document.resolve(textOf(place.text, scratch), {"node"}) : pugi::xml_node();
        if (!target || node.parent() != m_scene || target.parent() != m_scene) {
            return false;
        }
        const Way goal(*m_motion, target);
        const auto isAhead = [](const Matrix4& eye, const Matrix4& interest) {
            const Vector3 reach{interest[3] - eye[3], interest[7] - eye[7], interest[11] - eye[11]};
            const double length = lengthOf(reach);
            const Vector3 wanted = directionOf(eye);
            if (!std::isfinite(length + wanted[0] + wanted[1] + wanted[2])) {
                return true; // no other place would be better
            }
            return std::abs(reach[0] / length - wanted[0]) < maxTurn &&
                   std::abs(reach[1] / length - wanted[1]) < maxTurn &&
                   std::abs(reach[2] / length - wanted[2]) < maxTurn;
        };
        std::vector<const Curve*> curves = way.curves();
        curves.insert(curves.end(), goal.curves().begin(), goal.curves().end());
        const std::vector<double> times = keyTimes(curves);
        return isAhead(way.rest(), goal.rest()) && std::all_of(times.begin(), times.end(), [&](double time) {
                   return isAhead(way.at(time), goal.at(time));
               });
    }

    void makePerspective(pugi::xml_node camera, pugi::xml_node orthographic)
    {
        const auto value = [&](const char* name) {
            const double number = numberOr(textOf(orthographic.child(name)), 0);
            return std::isfinite(number) ? number : 0;
        };
        Approximation numbers;
        numbers.kind = Approximation::Kind::orthographicCamera;
        const double own = value("aspect_ratio");
        const double wish = m_document.options().aspect.value_or(own > 0 ? own : 1);
        const double aspect = std::isfinite(wish) && wish > 0 ? wish : 1;
        numbers.xmag = std::abs(value("xmag"));
        numbers.ymag = std::abs(value("ymag"));
        if (numbers.xmag == 0) {
            numbers.xmag = numbers.ymag > 0 ? numbers.ymag * aspect : 1;
        }
        if (numbers.ymag == 0) {
            numbers.ymag = numbers.xmag / aspect;
        }
        numbers.znear = value("znear");
        numbers.zfar = value("zfar");
        const double back = orthographicDistance * std::max(numbers.xmag, numbers.ymag);
        pugi::xml_node perspective = orthographic.parent().insert_child_before("perspective", orthographic);
        discard(orthographic);
        const std::pair<const char*, double> values[] = {
            {"xfov", 2 * std::atan(numbers.xmag / back) / radiansPerDegree},
            {"yfov", 2 * std::atan(numbers.ymag / back) / radiansPerDegree},
            {"znear", back + numbers.znear},
            {"zfar", back + (numbers.zfar > numbers.znear ? numbers.zfar : numbers.znear + back)}};
        for (const auto& [name, number] : values) {
            setText(perspective.append_child(name), text(number));
        }
        m_approximations.emplace(camera.attribute("id").value(), numbers);
    }

    // A camera has one target, so each node needs its own camera.
    bool copyCamera(pugi::xml_node& camera)
    {
        const std::string id = camera.attribute("id").value();
        std::vector<pugi::xml_node> animations;
        for (const Channel& channel : m_motion->channels()) {
            const pugi::xml_node owner = channel.target.parent().parent().parent().parent();
            if (isOptic(channel.target) && owner == camera) {
                animations.push_back(channel.element.parent());
            }
        }
        if (!m_document.takeBytes(sizeOf(camera))) {
            return false;
        }
        pugi::xml_node copy = camera.parent().insert_copy_after(camera, camera);
        renewIds(m_document, copy);
        m_document.setOrigin(copy, camera);
        const std::string copyId = copy.attribute("id").value();
        for (const pugi::xml_node animation : animations) {
            if (!m_document.takeBytes(sizeOf(animation))) {
                return false;
            }
            pugi::xml_node moving = animation.parent().append_copy(animation);
            renewIds(m_document, moving);
            const std::string target = moving.child("channel").attribute("target").value();
            setAttribute(moving.child("channel"), "target", copyId + target.substr(std::min(id.size(), target.size())));
        }
        m_document.rewritten(camera, "camera shown more than once",
                             "The camera has a copy, \"" + copyId + "\", for another node.");
        camera = copy;
        return true;
    }

    pugi::xml_node addNode(const std::string& idWish)
    {
        pugi::xml_node node = m_scene.insert_child_after("node", m_lastNode);
        m_lastNode = node;
        m_document.setId(node, m_document.freshId(idWish));
        return node;
    }

    // Gives the camera a node and a target directly under the scene.
    void place(pugi::xml_node instance, pugi::xml_node camera, const Way& way, double back)
    {
        const pugi::xml_node old = instance.parent();
        const std::string cameraId = camera.attribute("id").value();
        const std::string oldId = old.attribute("id").value();
        double distance = 1;
        const auto sight = [&](const Matrix4& world, double* result) {
            Matrix4 eye = world;
            const Vector3 direction = directionOf(eye);
            for (unsigned i = 0; i < 3; ++i) {
                eye[4 * i + 3] -= direction[i] * back;
            }
            for (unsigned i = 0; i < 16; ++i) {
                result[i] = eye[i];
            }
            for (unsigned i = 0; i < 3; ++i) {
                result[16 + i] = eye[4 * i + 3] + direction[i] * distance;
            }
        };
        const auto widen =
            [&](const Matrix4& world) { // single precision measures the way to the target from the origin
                const double length = lengthOf(columnOf(world, 3)) + back;
                distance = std::isfinite(length) ? std::max(distance, length) : distance;
            };
        std::vector<double> rest(19);
        const std::vector<double> times = keyTimes(way.curves());
        widen(way.rest());
        for (const double time : times) {
            widen(way.at(time));
        }
        sight(times.empty() ? way.rest() : way.at(0), rest.data()); // what is declared is what the curves begin with
        pugi::xml_node eye = addNode(plain(oldId.empty() ? cameraId : oldId) + "-camera");
        if (const pugi::xml_attribute name = old.attribute("name")) {
            eye.append_attribute("name") = name.value();
        }
        m_document.setOrigin(eye, old);
        pugi::xml_node matrix = eye.append_child("matrix");
        setText(matrix, text(std::vector<double>(rest.begin(), rest.begin() + 16)));
        pugi::xml_node target = addNode(plain(cameraId) + "-target");
        pugi::xml_node translate = target.append_child("translate");
        setText(translate, text(std::vector<double>(rest.begin() + 16, rest.end())));
        setLookAtTarget(camera, target.attribute("id").value());
        m_document.rewritten(instance, "camera without a look-at node",
                             "The camera is at a node directly under the scene now, \"" +
                                 std::string(eye.attribute("id").value()) + "\", and looks at \"" +
                                 target.attribute("id").value() + "\".");
        eye.append_move(instance);
        if (times.size() < 2) {
            return;
        }
        FlatCurve both = FlatCurve::sample(
            19, [&](double time, double* result) { sight(way.at(time), result); }, times, Measure::matrix, m_sampling);
        both.extendTo(m_end);
        write(both.part(0, 16), eye, matrix);
        write(both.part(16, 3), target, translate);
    }

    void write(const FlatCurve& curve, pugi::xml_node node, pugi::xml_node transform)
    {
        const std::string id = node.attribute("id").value();
        if (!m_document.takeBytes(curve.size())) {
            m_document.lost(node, "size", "The motion of the camera is too large.", "Raise the limit of the size.");
            return;
        }
        setAttribute(transform, "sid", transform.name());
        pugi::xml_node animation = m_document.root().child("library_animations").append_child("animation");
        m_document.setId(animation, m_document.freshId(id + '-' + transform.name()));
        curve.write(m_document, animation, animation.attribute("id").value(), id + '/' + transform.name());
    }

    Document& m_document;
    pugi::xml_node m_scene;
    Sampling m_sampling;
    std::optional<Motion> m_motion;
    std::vector<pugi::xml_node> m_instances;
    pugi::xml_node m_lastNode;
    std::unordered_set<std::string> m_used; // ids of cameras that have a node
    std::unordered_map<std::string, Approximation> m_approximations;
    double m_end = 0;
};

} // namespace

void completeCameras(Document& document)
{
    Cameras(document).run();
}

} // namespace libPrepare
