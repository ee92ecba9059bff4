#include "GltfNodes.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace scenetool {

namespace {

using Json = GltfDocument::Json;

constexpr float pi = 3.14159265358979f;
constexpr float degree = pi / 180.0f;
constexpr float maxConeAngle = 1.5707962f; // less than a right angle, even in double precision
constexpr const char* lightsExtension = "KHR_lights_punctual";
// A diffuse surface reflects 1 / pi of the light in glTF, and all of it in COLLADA.
constexpr float lightFactor = pi;

Json array(const float* values, std::size_t count)
{
    Json result = Json::array();
    for (std::size_t i = 0; i < count; ++i) {
        result.push_back(values[i]);
    }
    return result;
}

// The world matrix with these axes, which have to be orthonormal.
Matrix4 frame(const Vector3& right, const Vector3& up, const Vector3& back, const Vector3& position)
{
    Matrix4 result = identity();
    for (unsigned row = 0; row < 3; ++row) {
        result(row, 0) = right[row];
        result(row, 1) = up[row];
        result(row, 2) = back[row];
        result(row, 3) = position[row];
    }
    return result;
}

Vector3 crossed(const Vector3& a, const Vector3& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

// A frame that looks along a unit vector, upright if possible.
Matrix4 lookingAlong(const Vector3& direction, const Vector3& position)
{
    const Vector3 back = scaled(direction, -1.0f);
    const Vector3 hint = std::fabs(direction[1]) < 0.99f ? Vector3(0.0f, 1.0f, 0.0f) : Vector3(1.0f, 0.0f, 0.0f);
    const Vector3 right = crossed(hint, back).normalized();
    return frame(right, crossed(back, right), back, position);
}

// The frame of a view matrix of the library, converted back to the right-handed frame of the document.
Matrix4 worldOfView(const Matrix4& view, const Vector3& position)
{
    const Vector3 left(view[0], view[4], view[8]);
    const Vector3 up(view[1], view[5], view[9]);
    const Vector3 forward(view[2], view[6], view[10]);
    return frame(scaled(left, -1.0f), up, scaled(forward, -1.0f), position);
}

bool isSameDirection(const Matrix4& a, const Matrix4& b, unsigned column)
{
    const Vector3 first = columnOf(a, column);
    const Vector3 second = columnOf(b, column);
    const float product = length(first) * length(second);
    return product > 0.0f && first.dot(second) > (1.0f - 1e-6f) * product;
}

} // namespace

void putTrs(Json& node, const Trs& trs)
{
    const Trs rest;
    if (trs.translation != rest.translation) {
        node["translation"] = array(trs.translation.data(), trs.translation.size());
    }
    if (trs.rotation != rest.rotation) {
        node["rotation"] = array(trs.rotation.data(), trs.rotation.size());
    }
    if (trs.scale != rest.scale) {
        node["scale"] = array(trs.scale.data(), trs.scale.size());
    }
}

void GltfNodes::add()
{
    addTree();
    addMeshes();
    addCameras();
    addLights();
}

void GltfNodes::addTree()
{
    const std::vector<libVideo::Node*>& nodes = m_loaded->nodes();
    Json& list = m_document->list("nodes");
    list = Json::array();
    for (const libVideo::Node* const node : nodes) {
        const vesk::String& name = node->name().empty() ? node->id() : node->name();
        Json json = {{"name", name.data()}};
        if (!node->id().empty()) {
            json["extras"] = {{"id", node->id().data()}};
        }
        list.push_back(std::move(json));
    }
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        m_lower.push_back(i);
        const Matrix4& matrix = nodes[i]->transform();
        if (const std::optional<Trs> trs = trsOf(matrix)) {
            putTrs(list[i], *trs);
        } else {
            if (!isFinite(matrix)) {
                m_notes->add("matrix", "Matrices with infinite numbers are left out.");
            }
            const TrsPair pair = trsPairOf(matrix);
            putTrs(list[i], pair.outer);
            Json inner = {{"name", "shear"}};
            putTrs(inner, pair.inner);
            m_lower[i] = list.size();
            list.push_back(std::move(inner));
            list[i]["children"] = Json::array({m_lower[i]});
        }
    }
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        for (const libVideo::NodeLink& below : nodes[i]->children()) {
            if (const std::optional<std::size_t> index = m_loaded->indexOf(below.get())) {
                list[m_lower[i]]["children"].push_back(*index);
            }
        }
    }
    Json roots = Json::array();
    for (const libVideo::NodeLink& top : m_loaded->scene().root().children()) {
        if (const std::optional<std::size_t> index = m_loaded->indexOf(top.get())) {
            roots.push_back(*index);
        }
    }
    Json scene = Json::object();
    if (!roots.empty()) {
        scene["nodes"] = std::move(roots);
    }
    m_document->add("scenes", std::move(scene));
    m_document->json()["scene"] = 0;
    if (nodes.empty()) {
        m_document->json().erase("nodes");
    }
}

Json& GltfNodes::child(std::size_t node, const Trs& trs)
{
    Json json = Json::object();
    putTrs(json, trs);
    const std::size_t index = m_document->add("nodes", std::move(json));
    Json& list = m_document->list("nodes");
    list[m_lower[node]]["children"].push_back(index);
    return list[index];
}

Json& GltfNodes::place(std::size_t node, const char* member)
{
    Json& own = m_document->list("nodes")[m_lower[node]];
    return own.contains(member) ? child(node, Trs()) : own;
}

Json& GltfNodes::turned(std::size_t node, const Matrix4& world, const char* member)
{
    const Matrix4& own = m_pose.world(m_loaded->nodes()[node]);
    if (isSameDirection(own, world, 1) && isSameDirection(own, world, 2) && !isPair(node)) {
        return place(node, member);
    }
    const std::optional<Matrix4> back = inverse(own);
    const std::optional<Trs> trs = back ? trsOf(*back * world) : std::nullopt;
    if (!trs) {
        m_notes->add("direction",
                     "A camera or light below a node that shears or has a scale of 0 looks along that node's -Z.");
        return place(node, member);
    }
    return child(node, *trs);
}

void GltfNodes::addMeshes()
{
    for (const auto& [id, bucket] : sorted(m_loaded->scene().geometryTable())) {
        const std::optional<std::size_t> mesh = m_meshes->mesh(*bucket->value);
        for (const libVideo::NodeHandle& node : bucket->value->nodes()) {
            const std::optional<std::size_t> index = m_loaded->indexOf(node.get());
            if (mesh && index) {
                place(*index, "mesh")["mesh"] = *mesh;
            }
        }
    }
}

const libPrepare::Approximation* GltfNodes::approximation(libPrepare::Approximation::Kind kind,
                                                          const std::string& id) const
{
    const auto found =
        std::find_if(m_options->approximations.begin(), m_options->approximations.end(),
                     [&](const libPrepare::Approximation& each) { return each.kind == kind && each.id == id; });
    return found == m_options->approximations.end() ? nullptr : &*found;
}

void GltfNodes::addCameras()
{
    for (const libVideo::CameraInstanceHandle& shown : m_loaded->scene().cameraList()) {
        const std::optional<std::size_t> node = m_loaded->indexOf(shown->node().get());
        if (!node || !shown->camera()) {
            continue;
        }
        const Matrix4& projection = shown->projection();
        // The projection scales by the cotangents of half the angles, and maps depth to 0 ... 1.
        const double x = static_cast<double>(projection[0]);
        const double y = static_cast<double>(projection[5]);
        const double a = static_cast<double>(projection[10]);
        const double znear = -static_cast<double>(projection[14]) / a;
        const double zfar = a > 1 ? znear * a / (a - 1) : 0;
        if (!(x > 0) || !(y > 0) || !(znear > 0) || !std::isfinite(x) || !std::isfinite(y) || !std::isfinite(znear)) {
            m_notes->add("camera", "Cameras without a projection are left out.");
            continue;
        }
        const std::string id = shown->cameraId().data();
        Json camera = {{"name", shown->camera()->name().empty() ? id : shown->camera()->name().data()}};
        using Kind = libPrepare::Approximation::Kind;
        const libPrepare::Approximation* const flat = approximation(Kind::orthographicCamera, id);
        const bool hasFar = std::isfinite(zfar) && zfar > znear;
        if (flat != nullptr && flat->xmag > 0 && flat->ymag > 0 && hasFar) {
            camera["type"] = "orthographic";
            camera["orthographic"] = {{"xmag", flat->xmag}, {"ymag", flat->ymag}, {"zfar", zfar}, {"znear", znear}};
        } else {
            camera["type"] = "perspective";
            camera["perspective"] = {{"aspectRatio", y / x}, {"yfov", 2 * std::atan(1 / y)}, {"znear", znear}};
            if (hasFar) {
                camera["perspective"]["zfar"] = zfar;
            }
        }
        const std::size_t index = m_document->add("cameras", std::move(camera));
        const Matrix4& own = m_pose.world(shown->node().get());
        if (isZero(shown->view())) {
            place(*node, "camera")["camera"] = index;
        } else {
            turned(*node, worldOfView(shown->view(), columnOf(own, 3)), "camera")["camera"] = index;
        }
    }
}

template <class Light>
void GltfNodes::addLight(const Light& light, const libVideo::Instance& instance, Json json, const Vector3& direction)
{
    const std::optional<std::size_t> node = m_loaded->indexOf(instance.node().get());
    if (!node) {
        return;
    }
    const std::string id = light.id().data();
    using Kind = libPrepare::Approximation::Kind;
    const bool isDirectional = approximation(Kind::directionalLight, id) != nullptr;
    const Matrix4& own = m_pose.world(instance.node().get());
    const Box box = boxOf(*m_loaded, m_pose);
    const Vector3 toScene = box.isEmpty() ? Vector3() : box.center() - columnOf(own, 3);
    float strength = 0.0f;
    for (unsigned i = 0; i < 3; ++i) {
        strength = std::max(strength, light.color()[i]);
    }
    if (!(strength > 0.0f) || !std::isfinite(strength)) {
        m_notes->add("dark light", "Lights that are black, or have negative colors, are left out.");
        return;
    }
    float color[3];
    for (unsigned i = 0; i < 3; ++i) {
        color[i] = std::max(0.0f, light.color()[i] / strength);
    }
    // Punctual lights in glTF fade with the square of the distance. The intensity is chosen so that it equals the
    // document's at the center of the scene. Lights near the center use half the radius of the scene as their distance.
    const float distance = std::max(length(toScene), 0.5f * box.radius());
    float intensity = lightFactor * strength;
    if (!isDirectional) {
        const float fading = light.constantAttenuation() + light.linearAttenuation() * distance +
                             light.quadraticAttenuation() * distance * distance;
        intensity *= distance * distance / (fading > 0.0f ? fading : 1.0f);
        if (light.constantAttenuation() != 0.0f || light.linearAttenuation() != 0.0f) {
            m_notes->add("attenuation",
                         "Lights of glTF fade with the square of the distance; they are as strong as the document's "
                         "at the center of the scene.");
        }
    }
    json["name"] = id;
    json["color"] = array(color, 3);
    json["intensity"] = std::isfinite(intensity) ? intensity : 1.0f;
    const bool hasDirection = length(direction) > 0.0f;
    Vector3 along = hasDirection ? direction.normalized() : scaled(columnOf(own, 2), -1.0f);
    if (isDirectional) {
        json["type"] = "directional";
    }
    Json& lights = m_document->json()["extensions"][lightsExtension]["lights"];
    const std::size_t index = lights.size();
    lights.push_back(std::move(json));
    m_document->useExtension(lightsExtension);
    Json& target =
        !hasDirection ? place(*node, "extensions") : turned(*node, lookingAlong(along, columnOf(own, 3)), "extensions");
    target["extensions"][lightsExtension]["light"] = index;
}

void GltfNodes::addLights()
{
    for (const libVideo::PointLightInstanceHandle& shown : m_loaded->scene().pointLightList()) {
        addLight(*shown->pointLight(), *shown, {{"type", "point"}}, Vector3());
    }
    for (const libVideo::SpotLightInstanceHandle& shown : m_loaded->scene().spotLightList()) {
        const libVideo::SpotLight& spot = *shown->spotLight();
        // Angles in the document are across the whole cone. In glTF they are from the axis, and at most 90 degrees.
        const float inner = std::clamp(spot.innerConeAngle() * 0.5f * degree, 0.0f, maxConeAngle);
        const float outer =
            std::clamp(std::max(spot.innerConeAngle(), spot.outerConeAngle()) * 0.5f * degree, 0.001f, maxConeAngle);
        const float edge = outer * (1.0f - 1e-4f);
        Json json = {{"type", "spot"},
                     {"spot",
                      {{"innerConeAngle", std::min(spot.falloffExponent() > 0.0f ? 0.0f : inner, edge)},
                       {"outerConeAngle", outer}}}};
        if (spot.falloffExponent() > 0.0f) {
            m_notes->add("falloff",
                         "The falloff of spot lights is linear in glTF, from the axis to the edge of the cone.");
        }
        addLight(spot, *shown, std::move(json), shown->lookatNode() ? shown->lookAtVector() : Vector3());
    }
}

} // namespace scenetool
