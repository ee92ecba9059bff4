#include <libVideo/SceneGraph/Texture.h>

#include "detail/Dom.h"
#include "detail/Log.h"
#include "detail/MemoryBudget.h"

#include <cstring>
#include <string>
#include <vector>

namespace libVideo {

VIDEO_LOG_CHANNEL("libVideo.texture")
VIDEO_SOURCE_PATH("libVideo/SceneGraph/Texture")

namespace {

// The first descendant with that `sid`, breadth first, or null.
daeElementRef findBySid(const daeElementRef& container, const std::string& sid)
{
    if (sid.empty()) {
        return daeElementRef();
    }
    std::vector<daeElementRef> open = {container};
    for (std::size_t i = 0; i < open.size(); ++i) {
        const daeElementRefArray children = open[i]->getChildren();
        for (std::size_t j = 0; j < children.getCount(); ++j) {
            if (children[j]->getAttribute("sid") == sid) {
                return children[j];
            }
            open.push_back(children[j]);
        }
    }
    return daeElementRef();
}

// Finds a newparam by its name, or by a path of names, starting at a profile. Most names are those of the profile's own
// newparams. The document model has a resolver for the others, too, but some names crash it, because it looks for
// member selections in them.
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
    // A path starts at the profile if its first name is ".", otherwise at a descendant or at the element with that id.
    const std::string path(name);
    std::size_t end = path.find('/');
    const std::string start = path.substr(0, end);
    daeElementRef element = start == "." ? daeElementRef(profile) : findBySid(profile, start);
    if (element == nullptr && !start.empty()) {
        element = profile->getDAE()->getDatabase()->idLookup(start, profile->getDocument());
    }
    while (element != nullptr && end != std::string::npos) {
        const std::size_t next = path.find('/', end + 1);
        element = findBySid(element, path.substr(end + 1, next == std::string::npos ? next : next - end - 1));
        end = next;
    }
    return daeSafeCast<domCommon_newparam_type>(element);
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
        // sic: the words are an interface
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
        if (file == nullptr || !file->hasValue() || file->getValue().getOriginalURI()[0] == '\0') {
            continue;
        }
        const char* const name = file->getValue().getOriginalURI();
        if (!detail::MemoryBudget::take(std::strlen(name), 1)) {
            VIDEO_LOG(detail::MemoryBudget::exceeded);
            return;
        }
        m_textureFile = name;
        return;
    }
}

} // namespace libVideo
