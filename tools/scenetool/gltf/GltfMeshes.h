#pragma once

#include "../common/LoadedScene.h"
#include "GltfMaterials.h"

#include <map>
#include <optional>

namespace scenetool {

/// Converts the geometries of the scene to meshes. Vertex streams become interleaved views, changed only where glTF
/// needs other numbers; index buffers get 16 or 32 bits.
class GltfMeshes {
public:
    GltfMeshes(GltfDocument& document, GltfMaterials& materials, ConversionNotes& notes)
        : m_document(&document), m_materials(&materials), m_notes(&notes)
    {}

    /// Converts a geometry on first use. @return the index of the mesh; nothing if the geometry has nothing to show
    std::optional<std::size_t> mesh(const libVideo::Geometry& geometry);

private:
    std::optional<GltfDocument::Json> primitive(libVideo::Primitive& shown);
    // @return the index of the accessor; nothing if there is no triangle or a corner names no vertex
    std::optional<std::size_t> addIndices(const vesk::Array<unsigned>& corners, std::size_t vertexCount);

    GltfDocument* m_document;
    GltfMaterials* m_materials;
    ConversionNotes* m_notes;
    std::map<const libVideo::Geometry*, std::optional<std::size_t>> m_meshes;
};

} // namespace scenetool
