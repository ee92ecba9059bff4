#pragma once

#include "../LoadedScene.h"
#include "GltfImages.h"

#include <map>
#include <string>

namespace scenetool {

/// One intensity of a color as displays take it (sRGB) as the linear one that glTF wants; limited to 0 ... 1.
float linearOf(float intensity);

/// Metallic-roughness materials from the shading values of the scene.
///
/// Diffuse color and texture become the base color of a rough dielectric; the specular color goes into
/// KHR_materials_specular, the roughness follows from the exponent: (2 / (shininess + 2)) ^ 1/4. A material that only emits
/// becomes an unlit one. Opacity below 1 blends; a diffuse image with alpha cuts out.
class GltfMaterials {
public:
    /// @param isPrepared whether a transparency of 0 is the document's, and not one that it does not give
    GltfMaterials(const LoadedScene& loaded, bool isPrepared, GltfDocument& document, GltfImages& images,
                  ConversionNotes& notes)
        : m_loaded(&loaded), m_isPrepared(isPrepared), m_document(&document), m_images(&images), m_notes(&notes)
    {}

    /// The material for a symbol that primitives name; white for one that the scene does not bind. @return its index
    std::size_t material(const std::string& symbol);

private:
    GltfDocument::Json converted(const libVideo::BlinnMaterial::Component& values, const std::string& symbol);
    GltfDocument::Json texture(const libVideo::SharedHandle<libVideo::Texture>& shown, bool* hasAlpha = nullptr);

    const LoadedScene* m_loaded;
    bool m_isPrepared;
    GltfDocument* m_document;
    GltfImages* m_images;
    ConversionNotes* m_notes;
    std::map<std::string, std::size_t> m_materials; // by symbol
    std::map<std::string, std::size_t> m_textures;  // by image and wrapping
};

} // namespace scenetool
