#include "Dump.h"

#include "common/Base64.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

namespace scenetool {

namespace {

// Members keep the order in which they are added. Numbers are floats, so that their shortest text is written.
using Json =
    nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool, std::int64_t, std::uint64_t, float>;

Json text(const vesk::String& value)
{
    return std::string(value.data(), value.size());
}

Json number(float value)
{
    if (std::isnan(value)) {
        return "NaN";
    }
    if (std::isinf(value)) {
        return value > 0.0f ? "Infinity" : "-Infinity";
    }
    return value;
}

Json vector(const libMath::Vector<float, 3>& value)
{
    Json result = Json::array();
    for (unsigned i = 0; i < 3; ++i) {
        result.push_back(number(value[i]));
    }
    return result;
}

Json matrix(const libMath::Matrix<float, 4, 4>& value)
{
    Json result = Json::array();
    for (unsigned i = 0; i < 16; ++i) {
        result.push_back(number(value[i]));
    }
    return result;
}

Json index(const LoadedScene& loaded, const libVideo::Node* node)
{
    const std::optional<std::size_t> place = loaded.indexOf(node);
    return place ? Json(*place) : Json();
}

Json error(const LoadedScene& loaded)
{
    if (!loaded.failure()) {
        return Json();
    }
    return {{"type", loaded.failure()->type}, {"message", loaded.failure()->message}};
}

Json refusal(const LoadedScene& loaded)
{
    if (!loaded.refusal()) {
        return Json();
    }
    const libPrepare::Finding& why = *loaded.refusal();
    return {{"reason", why.text},
            {"line", why.place.line > 0 ? Json(why.place.line) : Json()},
            {"column", why.place.line > 0 ? Json(why.place.column) : Json()}};
}

Json log(const LoadedScene& loaded)
{
    Json lines = Json::array();
    for (const LogLine& line : loaded.log()) {
        lines.push_back({{"channel", line.channel}, {"priority", line.priority}, {"text", line.text}});
    }
    return lines;
}

Json color(const float* value)
{
    return Json::array({number(value[0]), number(value[1]), number(value[2])});
}

Json instance(const LoadedScene& loaded, const libVideo::Instance& shown)
{
    return {{"node", index(loaded, shown.node().get())}, {"sid", text(shown.sid())}, {"name", text(shown.name())}};
}

Json cameras(const LoadedScene& loaded)
{
    Json all = Json::array();
    for (const libVideo::CameraInstanceHandle& shown : loaded.scene().cameraList()) {
        const libVideo::Camera& camera = *shown->camera();
        const auto* const perspective = dynamic_cast<const libVideo::PerspectiveCamera*>(&camera);
        Json entry = instance(loaded, *shown);
        entry["cameraId"] = text(shown->cameraId());
        entry["lookAtNode"] = index(loaded, shown->lookAtNode().get());
        entry["view"] = matrix(shown->view());
        entry["projection"] = matrix(camera.projectionMatrix());
        entry["camera"] = {
            {"id", text(camera.id())},
            {"name", text(camera.name())},
            {"lookAtNode", text(camera.lookAtNode())},
            {"lookAtNodeURI", text(perspective == nullptr ? vesk::String::EMPTY() : perspective->lookAtNodeURI())}};
        all.push_back(std::move(entry));
    }
    return all;
}

// The values that both kinds of light have.
template <class Light>
Json light(const Light& shown)
{
    return {{"id", text(shown.id())},
            {"color", vector(shown.color())},
            {"constantAttenuation", number(shown.constantAttenuation())},
            {"linearAttenuation", number(shown.linearAttenuation())},
            {"quadraticAttenuation", number(shown.quadraticAttenuation())}};
}

Json pointLights(const LoadedScene& loaded)
{
    Json all = Json::array();
    for (const libVideo::PointLightInstanceHandle& shown : loaded.scene().pointLightList()) {
        Json entry = instance(loaded, *shown);
        entry["light"] = light(*shown->pointLight());
        all.push_back(std::move(entry));
    }
    return all;
}

Json spotLights(const LoadedScene& loaded)
{
    Json all = Json::array();
    for (const libVideo::SpotLightInstanceHandle& shown : loaded.scene().spotLightList()) {
        const libVideo::SpotLight& spot = *shown->spotLight();
        Json entry = instance(loaded, *shown);
        entry["lookatNode"] = index(loaded, shown->lookatNode().get());
        entry["lookAtVector"] = vector(shown->lookAtVector());
        Json values = light(spot);
        values["innerConeAngle"] = number(spot.innerConeAngle());
        values["outerConeAngle"] = number(spot.outerConeAngle());
        values["falloffExponent"] = number(spot.falloffExponent());
        values["lookAtNodeId"] = text(spot.lookAtNodeId());
        entry["light"] = std::move(values);
        all.push_back(std::move(entry));
    }
    return all;
}

Json textureFileJson(const libVideo::SharedHandle<libVideo::Texture>& texture)
{
    return texture ? text(texture->textureFile()) : Json();
}

Json primitive(libVideo::Primitive& shown)
{
    Json layout = Json::array();
    for (const libVideo::VertexLayout& attribute : shown.vertexLayout()) {
        layout.push_back({{"semantic", static_cast<unsigned>(attribute.semantic)},
                          {"byteSize", attribute.byteSize},
                          {"byteOffset", attribute.byteOffset},
                          {"dataType", static_cast<unsigned>(attribute.dataType)}});
    }
    Json indices = Json::array();
    for (const unsigned index : shown.indexBuffer()) {
        indices.push_back(index);
    }
    return {{"type", static_cast<unsigned>(shown.type())},
            {"id", text(shown.id())},
            {"material", text(shown.material())},
            {"count", shown.count()},
            {"vertexPerPrimitive", shown.vertexPerPrimitive()},
            {"bytesPerVertex", shown.bytesPerVertex()},
            {"totalByteSize", shown.totalByteSize()},
            {"layout", layout},
            {"indices", indices},
            {"vertices", base64(shown.vertexBuffer().get(), shown.totalByteSize())}};
}

Json geometries(const LoadedScene& loaded)
{
    Json all = Json::object();
    for (const auto& [id, bucket] : sorted(loaded.scene().geometryTable())) {
        const libVideo::Geometry& geometry = *bucket->value;
        Json users = Json::array();
        for (const libVideo::NodeHandle& node : geometry.nodes()) {
            users.push_back(index(loaded, node.get()));
        }
        Json primitives = Json::array();
        for (const libVideo::SharedHandle<libVideo::Primitive>& shown : geometry.mesh().primitives()) {
            primitives.push_back(primitive(*shown));
        }
        all[id] = {{"name", text(geometry.name())}, {"nodes", users}, {"primitives", primitives}};
    }
    return all;
}

Json materials(const LoadedScene& loaded)
{
    Json all = Json::object();
    for (const auto& [symbol, bucket] : sorted(loaded.scene().blinnMaterialTable())) {
        const libVideo::BlinnMaterial::Component& values = bucket->value->component();
        all[symbol] = {{"shininess", number(values.shininess)},
                       {"transparency", number(values.transparency)},
                       {"emission", color(values.emission)},
                       {"ambient", color(values.ambient)},
                       {"diffuse", color(values.diffuse)},
                       {"specular", color(values.specular)},
                       {"reflective", color(values.reflective)},
                       {"emissionTexture", textureFileJson(values.emissionTexture)},
                       {"ambientTexture", textureFileJson(values.ambientTexture)},
                       {"diffuseTexture", textureFileJson(values.diffuseTexture)},
                       {"specularTexture", textureFileJson(values.specularTexture)},
                       {"reflectiveTexture", textureFileJson(values.reflectiveTexture)}};
    }
    return all;
}

Json nodes(const LoadedScene& loaded)
{
    Json all = Json::array();
    for (const libVideo::Node* const node : loaded.nodes()) {
        Json children = Json::array();
        for (const libVideo::NodeLink& child : node->children()) {
            children.push_back(index(loaded, child.get()));
        }
        all.push_back({{"id", text(node->id())},
                       {"sid", text(node->sid())},
                       {"name", text(node->name())},
                       {"parent", index(loaded, node->parent().get())},
                       {"children", children},
                       {"hasAnimation", node->hasAnimation()},
                       {"transform", matrix(node->transform())},
                       {"position", vector(node->position())},
                       {"up", vector(node->up())}});
    }
    return all;
}

} // namespace

void writeDump(const LoadedScene& loaded, std::ostream& out)
{
    // Queries to the scene may log messages, so the log is read last.
    Json nodeList = nodes(loaded);
    Json cameraList = cameras(loaded);
    Json pointLightList = pointLights(loaded);
    Json geometryList = geometries(loaded);
    Json materialList = materials(loaded);
    Json spotLightList = spotLights(loaded);

    Json dump;
    dump["file"] = loaded.file();
    dump["loaded"] = loaded.isLoaded();
    dump["error"] = error(loaded);
    dump["refusal"] = refusal(loaded);
    dump["log"] = log(loaded);
    dump["nodes"] = std::move(nodeList);
    dump["cameras"] = std::move(cameraList);
    dump["pointLights"] = std::move(pointLightList);
    dump["spotLights"] = std::move(spotLightList);
    dump["geometries"] = std::move(geometryList);
    dump["materials"] = std::move(materialList);
    // Text of a document is valid UTF-8, but a path may have any bytes.
    out << dump.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
}

} // namespace scenetool
