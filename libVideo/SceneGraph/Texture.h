#pragma once // SPDX-License-Identifier: MIT

#include <libVideo/ColladaDom.h>
#include <libVideo/Export.h>
#include <libVideo/Fwd.h>

#include <vesk/String.h>

namespace libVideo {

/// The chain from a material's `<texture>` to the file of an image: a `<sampler2D>` of the profile, its `<surface>`, and
/// the `<image>` that initializes it. Filters, wrapping, the name of the coordinates and embedded `<data>` are not read.
class LIBVIDEO_API Texture {
public:
    Texture() = default;
    Texture(const Texture&) = default;
    Texture& operator=(const Texture&) = default;
    ~Texture();

    /// The elements that were found, null where the chain broke. They may outlive the document, but can only be
    /// released then.
    const daeSmartRef<domFx_sampler2D_common>& sampler() const { return m_sampler; }
    /// The `<surface>`; null where the chain broke.
    const daeSmartRef<domFx_surface_common>& texture() const { return m_texture; }
    /// The reference in the `<init_from>` of the image, as it is written; empty where the chain broke.
    const vesk::String& textureFile() const { return m_textureFile; }

    /// @param source the channel of a material that has a `<texture>`
    /// @param profile the `<profile_COMMON>` whose newparams the names refer to
    /// @return false, without a message, if there is no `<texture>` or it leads to no surface; else true, even without a
    ///     file, with a message on "libVideo.texture" if an initializer is missing or leads nowhere
    bool createFromCollada(const daeSmartRef<domCommon_color_or_texture_type>& source, daeElement* const profile);

private:
    void getTextureFileName();

    daeSmartRef<domFx_sampler2D_common> m_sampler;
    daeSmartRef<domFx_surface_common> m_texture;
    vesk::String m_textureFile;
};

} // namespace libVideo
