#include "GltfMaterials.h"

#include <algorithm>
#include <cmath>

namespace scenetool {

namespace {

using Json = GltfDocument::Json;

bool isBlack(const float* color)
{
    return color[0] == 0.0f && color[1] == 0.0f && color[2] == 0.0f;
}

float limited(float value)
{
    return std::isfinite(value) ? std::clamp(value, 0.0f, 1.0f) : 0.0f;
}

Json linear(const float* color)
{
    return Json::array({linearOf(color[0]), linearOf(color[1]), linearOf(color[2])});
}

// The roughness for the exponent of a highlight: that of the microfacet distribution with the same width.
float roughnessOf(float shininess)
{
    const float exponent = std::isfinite(shininess) ? std::max(0.0f, shininess) : 0.0f;
    return limited(std::pow(2.0f / (exponent + 2.0f), 0.25f));
}

// The wrapping of a sampler, as a number of the format.
unsigned wrapOf(domFx_sampler_wrap_common wrap)
{
    constexpr unsigned clampToEdge = 33071;
    constexpr unsigned mirroredRepeat = 33648;
    constexpr unsigned repeat = 10497;
    switch (wrap) {
    case FX_SAMPLER_WRAP_COMMON_MIRROR:
        return mirroredRepeat;
    case FX_SAMPLER_WRAP_COMMON_CLAMP:
    case FX_SAMPLER_WRAP_COMMON_BORDER:
        return clampToEdge;
    default: // the enum belongs to another library
        return repeat;
    }
}

} // namespace

float linearOf(float intensity)
{
    const float value = limited(intensity);
    return value <= 0.04045f ? value / 12.92f : std::pow((value + 0.055f) / 1.055f, 2.4f);
}

std::size_t GltfMaterials::material(const std::string& symbol)
{
    const auto known = m_materials.find(symbol);
    if (known != m_materials.end()) {
        return known->second;
    }
    const libVideo::BlinnMaterialTable::Bucket* bound = nullptr;
    for (const libVideo::BlinnMaterialTable::Bucket& bucket : m_loaded->scene().blinnMaterialTable()) {
        bound = symbol == bucket.key.data() ? &bucket : bound;
    }
    Json json;
    if (bound != nullptr) {
        json = converted(bound->value->component(), symbol);
    } else {
        json = {{"name", "no material"}, {"pbrMetallicRoughness", {{"metallicFactor", 0.0f}}}, {"doubleSided", true}};
    }
    const std::size_t index = m_document->add("materials", std::move(json));
    m_materials.emplace(symbol, index);
    return index;
}

Json GltfMaterials::converted(const libVideo::BlinnMaterial::Component& values, const std::string& symbol)
{
    const bool isGiven = m_isPrepared || values.transparency != 0.0f;
    const float opacity = isGiven ? limited(values.transparency) : 1.0f;
    const bool isShiny = !isBlack(values.specular) || values.specularTexture;
    const bool emitsOnly = isBlack(values.diffuse) && !values.diffuseTexture && !isShiny &&
                           (!isBlack(values.emission) || values.emissionTexture);
    Json base;
    Json result = {{"name", symbol}};
    bool isCutOut = false;
    const float* const color = emitsOnly ? values.emission : values.diffuse;
    const Json colorTexture = texture(emitsOnly ? values.emissionTexture : values.diffuseTexture, &isCutOut);
    Json factor = colorTexture.is_null() ? linear(color) : Json::array({1.0f, 1.0f, 1.0f});
    factor.push_back(opacity);
    base["baseColorFactor"] = std::move(factor);
    if (!colorTexture.is_null()) {
        base["baseColorTexture"] = colorTexture;
    }
    base["metallicFactor"] = 0.0f;
    base["roughnessFactor"] = isShiny ? roughnessOf(values.shininess) : 1.0f;
    result["pbrMetallicRoughness"] = std::move(base);
    if (emitsOnly) {
        result["extensions"]["KHR_materials_unlit"] = Json::object();
        m_document->useExtension("KHR_materials_unlit");
    } else {
        addSpecularAndEmission(result, values);
    }
    if (opacity < 1.0f) {
        result["alphaMode"] = "BLEND";
    } else if (isCutOut) {
        result["alphaMode"] = "MASK";
    }
    result["doubleSided"] = true; // COLLADA cannot ask for culling
    if (values.ambientTexture || (!isBlack(values.ambient) && !isBlack(values.diffuse))) {
        m_notes->add("ambient", "glTF has no ambient color; viewers use the light of the environment instead.");
    }
    if (!isBlack(values.reflective) || values.reflectiveTexture) {
        m_notes->add("reflective", "glTF has no reflective color.");
    }
    return result;
}

void GltfMaterials::addSpecularAndEmission(Json& material, const libVideo::BlinnMaterial::Component& values)
{
    Json specular;
    const Json specularTexture = texture(values.specularTexture);
    if (!specularTexture.is_null()) {
        specular["specularColorFactor"] = Json::array({1.0f, 1.0f, 1.0f});
        specular["specularColorTexture"] = specularTexture;
    } else if (!isBlack(values.specular) || values.specularTexture) {
        specular["specularColorFactor"] = linear(values.specular);
    } else {
        specular["specularFactor"] = 0.0f;
    }
    material["extensions"]["KHR_materials_specular"] = std::move(specular);
    m_document->useExtension("KHR_materials_specular");
    const Json emissionTexture = texture(values.emissionTexture);
    if (!emissionTexture.is_null()) {
        material["emissiveTexture"] = emissionTexture;
        material["emissiveFactor"] = Json::array({1.0f, 1.0f, 1.0f});
    } else if (!isBlack(values.emission)) {
        material["emissiveFactor"] = linear(values.emission);
    }
}

Json GltfMaterials::texture(const libVideo::SharedHandle<libVideo::Texture>& shown, bool* hasAlpha)
{
    if (!shown || shown->textureFile().empty()) {
        return {};
    }
    const std::optional<GltfImages::Entry> entry = m_images->image(shown->textureFile().data());
    if (!entry) {
        return {};
    }
    if (hasAlpha != nullptr) {
        *hasAlpha = entry->hasAlpha;
    }
    unsigned wrapS = wrapOf(FX_SAMPLER_WRAP_COMMON_WRAP);
    unsigned wrapT = wrapS;
    if (const domFx_sampler2D_common* const sampler = shown->sampler()) {
        wrapS = sampler->getWrap_s() ? wrapOf(sampler->getWrap_s()->getValue()) : wrapS;
        wrapT = sampler->getWrap_t() ? wrapOf(sampler->getWrap_t()->getValue()) : wrapT;
    }
    const std::string key = std::to_string(entry->image) + ' ' + std::to_string(wrapS) + ' ' + std::to_string(wrapT);
    auto known = m_textures.find(key);
    if (known == m_textures.end()) {
        constexpr unsigned linearFilter = 9729;
        constexpr unsigned linearMipmapLinearFilter = 9987;
        const std::size_t sampler = m_document->add(
            "samplers",
            {{"magFilter", linearFilter}, {"minFilter", linearMipmapLinearFilter}, {"wrapS", wrapS}, {"wrapT", wrapT}});
        known = m_textures.emplace(key, m_document->add("textures", {{"sampler", sampler}, {"source", entry->image}}))
                    .first;
    }
    return {{"index", known->second}};
}

} // namespace scenetool
