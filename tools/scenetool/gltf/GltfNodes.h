#pragma once

#include "../render/ScenePose.h"
#include "GltfExport.h"
#include "GltfMeshes.h"
#include "Trs.h"

#include <cstddef>
#include <vector>

namespace scenetool {

/// The nodes of the scene, with what is shown at them.
///
/// A node keeps its index in the breadth-first order of the library. A matrix that shears is no transform of glTF: such a node
/// gets a second one below it that holds a rotation, and what it shows, and its children, are below that. Cameras and lights
/// look along -Z of their node in glTF; where the library looks elsewhere, a node of their own turns them.
class GltfNodes {
public:
    GltfNodes(const LoadedScene& loaded, const GltfOptions& options, GltfDocument& document, GltfMeshes& meshes,
              ConversionNotes& notes)
        : m_loaded(&loaded),
          m_options(&options),
          m_document(&document),
          m_meshes(&meshes),
          m_notes(&notes),
          m_pose(loaded, false)
    {}

    /// Adds all of them, and the scene.
    void add();

    /// Whether a node needs a second one for its matrix at rest.
    bool isPair(std::size_t node) const { return m_lower[node] != node; }

private:
    using Json = GltfDocument::Json;

    void addTree();
    void addMeshes();
    void addCameras();
    void addLights();
    /// Something that is shown at a node: in the node itself if nothing of its kind is there yet, else in a child.
    Json& place(std::size_t node, const char* member);
    /// A child of a node of the scene with this world matrix, or the node itself if it has the directions already.
    Json& turned(std::size_t node, const Matrix4& world, const char* member);
    Json& child(std::size_t node, const Trs& trs);
    template <class Light>
    void addLight(const Light& light, const libVideo::Instance& instance, Json json, const Vector3& direction);
    const libPrepare::Approximation* approximation(libPrepare::Approximation::Kind kind, const std::string& id) const;

    const LoadedScene* m_loaded;
    const GltfOptions* m_options;
    GltfDocument* m_document;
    GltfMeshes* m_meshes;
    ConversionNotes* m_notes;
    ScenePose m_pose;
    std::vector<std::size_t> m_lower; // by node: the glTF node that children and instances are put below
};

/// The members of a glTF node for a transform; none for the identity.
void putTrs(GltfDocument::Json& node, const Trs& trs);

} // namespace scenetool
