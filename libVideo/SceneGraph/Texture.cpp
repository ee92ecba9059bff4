#include <libVideo/SceneGraph/Texture.h>

#include "detail/Dom.h"
#include "detail/Log.h"

#include <cstring>

namespace libVideo {

VIDEO_LOG_CHANNEL("libVideo.texture")
VIDEO_SOURCE_PATH("libVideo/SceneGraph/Texture")

namespace {

// The newparam that a name leads to from a profile. The profile's own are compared first: the resolver of the document
// model searches far beyond them, and does not survive all names.
domCommon_newparam_typeRef findNewparam(daeElement* profile, const char* name)
{
    if (name == nullptr) {
        return domCommon_newparam_typeRef();
    }
    if (const domProfile_COMMON* const common = daeSafeCast<domProfile_COMMON>(profile)) {
        const domCommon_newparam_type_Array& newparams = common->getNewparam_array();
        for (std::size_t i = 0; i < newparams.getCount(); ++i) {
            const char* const sid = newparams[i]->getSid();
            if (sid != nullptr && std::strcmp(sid, name) == 0) {
                return newparams[i];
            }
        }
    }
    daeSIDResolver resolver(profile, name, nullptr);
    return daeSafeCast<domCommon_newparam_type>(resolver.getElement());
}

} // namespace

Texture::~Texture() = default;

bool Texture::createFromCollada(const daeSmartRef<domCommon_color_or_texture_type>& source, daeElement* const profile)
{
    VIDEO_TRACE("Texture::createFromCollada");
    detail::expectElement(source, "Texture");
    detail::expectElement(daeElementRef(profile), "Texture");
    const domCommon_color_or_texture_type_complexType::domTextureRef texture = source->getTexture();
    if (texture == nullptr) {
        return false;
    }
    const domCommon_newparam_typeRef samplerParam = findNewparam(profile, texture->getTexture());
    if (samplerParam == nullptr) {
        return false;
    }
    m_sampler = samplerParam->getSampler2D();
    if (m_sampler == nullptr || m_sampler->getSource() == nullptr) {
        return false;
    }
    const domCommon_newparam_typeRef surfaceParam = findNewparam(profile, m_sampler->getSource()->getValue());
    if (surfaceParam == nullptr) {
        return false;
    }
    m_texture = surfaceParam->getSurface();
    getTextureFileName();
    return true;
}

void Texture::getTextureFileName()
{
    const domFx_surface_init_commonRef initializer =
        m_texture != nullptr ? m_texture->getFx_surface_init_common() : domFx_surface_init_commonRef();
    if (initializer == nullptr) {
        VIDEO_LOG("Texture has no surface initiailzer");
        return;
    }
    const domFx_surface_init_from_common_Array& sources = initializer->getInit_from_array();
    for (std::size_t i = 0; i < sources.getCount(); ++i) {
        const daeElementRef element = sources[i]->getValue().getElement();
        if (element == nullptr) {
            VIDEO_LOG("Surface initializer has no <init_from> child");
            continue;
        }
        const domImageRef image = daeSafeCast<domImage>(element);
        const domImage::domInit_fromRef file = image != nullptr ? image->getInit_from() : domImage::domInit_fromRef();
        if (file != nullptr && file->hasValue() && file->getValue().getOriginalURI()[0] != '\0') {
            m_textureFile = file->getValue().getOriginalURI();
            return;
        }
    }
}

} // namespace libVideo
