#include "ScenePose.h"

#include <cstring>

namespace scenetool {

namespace {

constexpr double radians = 3.141592653589793 / 180.0;

// Sets what both kinds of light have: color, attenuation and placement.
template <class Light>
PlacedLight placed(const Light& light, const Matrix4& world)
{
    PlacedLight result;
    result.position = columnOf(world, 3);
    result.color = light.color();
    const Vector3 attenuation(light.constantAttenuation(), light.linearAttenuation(), light.quadraticAttenuation());
    // A light for which all factors are 0 does not fade.
    if (attenuation[0] != 0.0f || attenuation[1] != 0.0f || attenuation[2] != 0.0f) {
        result.attenuation = attenuation;
    }
    // Like a camera, a light points along -Z of its node.
    const Vector3 backward = columnOf(world, 2);
    if (length(backward) > 0.0f) {
        result.direction = scaled(backward.normalized(), -1.0f);
    }
    return result;
}

// @param degrees angle across the whole cone
float cosineOfHalf(float degrees)
{
    return degrees >= 360.0f ? -2.0f : static_cast<float>(std::cos(static_cast<double>(degrees) * 0.5 * radians));
}

void addPoints(std::vector<Vector3>& points, libVideo::Primitive& primitive, const Matrix4& world)
{
    libVideo::VertexLayout layout;
    if (!primitive.positionLayout(layout) || layout.byteSize < sizeof(float)) {
        return;
    }
    const std::size_t size = layout.byteSize < 3 * sizeof(float) ? layout.byteSize : 3 * sizeof(float);
    const unsigned char* const bytes = primitive.vertexBuffer().get();
    const std::size_t stride = primitive.bytesPerVertex();
    for (std::size_t start = layout.byteOffset; start + size <= primitive.totalByteSize(); start += stride) {
        float point[3] = {};
        std::memcpy(point, bytes + start, size);
        const Vector3 placed = transformedPoint(world, {point[0], point[1], point[2]});
        if (std::isfinite(placed[0]) && std::isfinite(placed[1]) && std::isfinite(placed[2])) {
            points.push_back(placed);
        }
    }
}

} // namespace

ScenePose::ScenePose(const LoadedScene& loaded, const PictureDocument* document, bool isIdentityForEmpty)
    : m_document(document), m_loaded(&loaded)
{
    m_world.reserve(m_loaded->nodes().size());
    for (const libVideo::Node* const node : m_loaded->nodes()) { // parents come before their children
        const bool isReplaced = isIdentityForEmpty && isZero(node->transform());
        m_world.push_back(isReplaced ? worldOfParent(*node) : worldOfParent(*node) * node->transform());
    }
    placeLights();
}

const Matrix4& ScenePose::world(const libVideo::Node* node) const
{
    const std::optional<std::size_t> place = m_loaded->indexOf(node);
    return place ? m_world[*place] : m_rootWorld;
}

void ScenePose::placeLights()
{
    for (const libVideo::PointLightInstanceHandle& shown : m_loaded->scene().pointLightList()) {
        const libVideo::Node* const node = shown->node().get();
        PlacedLight light = placed(*shown->pointLight(), world(node));
        // Preparing replaces a directional light by a point light far away, and keeps its node's direction.
        if (node != nullptr && m_document != nullptr &&
            m_document->approximation(libPrepare::Approximation::Kind::directionalLight,
                                      shown->pointLight()->id().data(), node->id().data())) {
            light.kind = PlacedLight::Kind::directional;
        }
        m_lights.push_back(light);
    }
    for (const libVideo::SpotLightInstanceHandle& shown : m_loaded->scene().spotLightList()) {
        const libVideo::SpotLight& spot = *shown->spotLight();
        PlacedLight light = placed(spot, world(shown->node().get()));
        light.kind = PlacedLight::Kind::spot;
        if (shown->lookatNode()) {
            const Vector3 forward = columnOf(world(shown->lookatNode().get()), 3) - light.position;
            light.direction = length(forward) > 0.0f ? forward.normalized() : light.direction;
        }
        light.innerCosine = cosineOfHalf(spot.innerConeAngle());
        light.outerCosine = cosineOfHalf(std::max(spot.innerConeAngle(), spot.outerConeAngle()));
        light.exponent = spot.falloffExponent();
        m_lights.push_back(light);
    }
}

std::vector<Vector3> pointsOf(const LoadedScene& loaded, const ScenePose& pose)
{
    std::vector<Vector3> points;
    for (const libVideo::GeometryTable::Bucket& bucket : loaded.scene().geometryTable()) {
        for (const libVideo::NodeHandle& node : bucket.value->nodes()) {
            const Matrix4& world = pose.world(node.get());
            if (isZero(world)) {
                continue;
            }
            for (const libVideo::SharedHandle<libVideo::Primitive>& primitive : bucket.value->mesh().primitives()) {
                addPoints(points, *primitive, world);
            }
        }
    }
    return points;
}

Box boxOf(const LoadedScene& loaded, const ScenePose& pose)
{
    Box box;
    for (const Vector3& point : pointsOf(loaded, pose)) {
        box.add(point);
    }
    return box;
}

} // namespace scenetool
