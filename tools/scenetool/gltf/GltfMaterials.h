#pragma once

#include "../common/LoadedScene.h"
#include "GltfImages.h"

#include <map>
#include <string>

namespace scenetool {

/// Converts an intensity of a color from sRGB to the linear one that glTF uses, limited to 0 ... 1.
float linearOf(float intensity);

/// Converts the materials of the scene to metallic-roughness materials.
///
/// Diffuse color and texture become the base color of a dielectric, the specular color goes to KHR_materials_specular,
/// and the roughness is (2 / (shininess + 2)) ^ 1/4. A material with nothing but an emission becomes unlit. An opacity
/// below 1 blends; a diffuse image with alpha cuts out.
class GltfMaterials {
public:
    /// @param isPrepared if false, a transparency of 0 may also mean that the document has none
    GltfMaterials(const LoadedScene& loaded, bool isPrepared, GltfDocument& document, GltfImages& images,
                  ConversionNotes& notes)
        : m_loaded(&loaded), m_isPrepared(isPrepared), m_document(&document), m_images(&images), m_notes(&notes)
    {}

    /// Converts a material on first use. @param symbol as primitives name it; a white material if the scene does not
    /// bind it
    /// @return the index of the material
    std::size_t material(const std::string& symbol);

private:
    GltfDocument::Json converted(const libVideo::BlinnMaterial::Component& values, const std::string& symbol);
    void addSpecularAndEmission(GltfDocument::Json& material, const libVideo::BlinnMaterial::Component& values);
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
