#pragma once // SPDX-License-Identifier: MIT

#include <libVideo/ColladaDom.h>
#include <libVideo/Export.h>
#include <libVideo/Handles.h>
#include <libVideo/SceneGraph/Texture.h>

#include <vesk/SharedResource.h>

namespace libVideo {

/// The shading values of a `<blinn>` or `<phong>`: five colors, each of which may carry a texture, and two coefficients.
///
/// Not read are `<transparent>`, `<reflectivity>`, `<index_of_refraction>`, and values that refer to a `<param>`.
/// What was read outlives the document.
class LIBVIDEO_API BlinnMaterial {
public:
    /// The values. Colors are red, green and blue as written, unclamped, and white if the document has none; alpha is
    /// dropped. A texture that cannot be resolved has an empty file. Copies share textures.
    struct LIBVIDEO_API Component {
        float shininess = 0.0f;                   ///< As written, in any range.
        float transparency = 0.0f;                ///< As written; its meaning is up to the renderer.
        float emission[3] = {1.0f, 1.0f, 1.0f};   ///< `<emission>`: red, green, blue.
        SharedHandle<Texture> emissionTexture;    ///< Empty without a `<texture>`.
        float ambient[3] = {1.0f, 1.0f, 1.0f};    ///< `<ambient>`: red, green, blue.
        SharedHandle<Texture> ambientTexture;     ///< Empty without a `<texture>`.
        float diffuse[3] = {1.0f, 1.0f, 1.0f};    ///< `<diffuse>`: red, green, blue.
        SharedHandle<Texture> diffuseTexture;     ///< Empty without a `<texture>`.
        float specular[3] = {1.0f, 1.0f, 1.0f};   ///< `<specular>`: red, green, blue.
        SharedHandle<Texture> specularTexture;    ///< Empty without a `<texture>`.
        float reflective[3] = {1.0f, 1.0f, 1.0f}; ///< `<reflective>`: red, green, blue.
        SharedHandle<Texture> reflectiveTexture;  ///< Empty without a `<texture>`.
    };

    BlinnMaterial() = default;
    BlinnMaterial(const BlinnMaterial&) = default;
    BlinnMaterial& operator=(const BlinnMaterial&) = default;
    ~BlinnMaterial();

    const Component& component() const { return m_component; } ///< The values read so far.

    /// Reads `<emission>`, `<ambient>`, `<diffuse>`, `<specular>`, `<reflective>`, `<shininess>` and `<transparency>`; a
    /// value that the element lacks is kept. A null element, and each texture that does not resolve, logs a message on
    /// "libVideo.material".
    /// @param profile whose newparams the textures refer to
    void createFromCollada(const daeSmartRef<domProfile_COMMON::domTechnique::domBlinn>& blinn,
                           domProfile_COMMON* const profile);
    /// As above; a null element logs the same message.
    void createFromCollada(const daeSmartRef<domProfile_COMMON::domTechnique::domPhong>& phong,
                           domProfile_COMMON* const profile);

private:
    template <class Shader>
    void readShader(const Shader& shader, domProfile_COMMON* profile);
    void writeColor(const daeSmartRef<domCommon_color_or_texture_type>& source, float* const color,
                    SharedHandle<Texture>& texture);
    void writeFloatCoeff(const daeSmartRef<domCommon_float_or_param_type>& source, float& value);

    Component m_component;
    domProfile_COMMON* m_profile = nullptr; // of the document
};

} // namespace libVideo
