#include <libVideo/SceneGraph/Material.h>

#include "detail/Dom.h"
#include "detail/Log.h"

namespace libVideo {

VIDEO_LOG_CHANNEL("libVideo.material")
VIDEO_SOURCE_PATH("libVideo/SceneGraph/Material")

BlinnMaterial::~BlinnMaterial() = default;

void BlinnMaterial::createFromCollada(const daeSmartRef<domProfile_COMMON::domTechnique::domBlinn>& blinn,
                                      domProfile_COMMON* const profile)
{
    VIDEO_TRACE("BlinnMaterial::createFromCollada");
    if (blinn == nullptr) {
        VIDEO_LOG("Null domBlinnRef passed into function");
        return;
    }
    readShader(*blinn, profile);
}

void BlinnMaterial::createFromCollada(const daeSmartRef<domProfile_COMMON::domTechnique::domPhong>& phong,
                                      domProfile_COMMON* const profile)
{
    VIDEO_TRACE("BlinnMaterial::createFromCollada");
    if (phong == nullptr) {
        VIDEO_LOG("Null domBlinnRef passed into function");
        return;
    }
    readShader(*phong, profile);
}

// Both shaders have these elements under the same names.
template <class Shader>
void BlinnMaterial::readShader(const Shader& shader, domProfile_COMMON* profile)
{
    m_profile = profile;
    writeColor(shader.getEmission(), m_component.emission, m_component.emissionTexture);
    writeColor(shader.getAmbient(), m_component.ambient, m_component.ambientTexture);
    writeColor(shader.getDiffuse(), m_component.diffuse, m_component.diffuseTexture);
    writeColor(shader.getSpecular(), m_component.specular, m_component.specularTexture);
    writeColor(shader.getReflective(), m_component.reflective, m_component.reflectiveTexture);
    writeFloatCoeff(shader.getShininess(), m_component.shininess);
    writeFloatCoeff(shader.getTransparency(), m_component.transparency);
}

void BlinnMaterial::writeColor(const daeSmartRef<domCommon_color_or_texture_type>& source, float* const color,
                               SharedHandle<Texture>& texture)
{
    if (source == nullptr) {
        return;
    }
    if (source->getColor() != nullptr) {
        const daeTArray<double>& values = source->getColor()->getValue();
        if (values.getCount() < 3) {
            VIDEO_LOG("Color has fewer than three values");
        } else {
            for (unsigned i = 0; i < 3; ++i) {
                color[i] = detail::floatAt(values, i);
            }
        }
    }
    if (source->getTexture() != nullptr) {
        texture = SharedHandle<Texture>::make();
        if (!texture->createFromCollada(source, m_profile)) {
            VIDEO_LOG("Unable to initialize texture");
        }
    }
}

void BlinnMaterial::writeFloatCoeff(const daeSmartRef<domCommon_float_or_param_type>& source, float& value)
{
    if (source != nullptr && source->getFloat() != nullptr) {
        value = static_cast<float>(source->getFloat()->getValue());
    }
}

} // namespace libVideo
