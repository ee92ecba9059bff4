#pragma once

#include "../LoadedScene.h"
#include "GltfMaterials.h"

#include <map>
#include <optional>

namespace scenetool {

/// Meshes from the geometries of the scene: their vertex streams as interleaved views, rewritten only where glTF wants other
/// numbers, and their index buffers in 16 or 32 bits.
class GltfMeshes {
public:
    GltfMeshes(GltfDocument& document, GltfMaterials& materials, ConversionNotes& notes)
        : m_document(&document), m_materials(&materials), m_notes(&notes)
    {}

    /// @return the index of the mesh; nothing if the geometry has nothing to show
    std::optional<std::size_t> mesh(const libVideo::Geometry& geometry);

private:
    std::optional<GltfDocument::Json> primitive(libVideo::Primitive& shown);

    GltfDocument* m_document;
    GltfMaterials* m_materials;
    ConversionNotes* m_notes;
    std::map<const libVideo::Geometry*, std::optional<std::size_t>> m_meshes;
};

} // namespace scenetool
