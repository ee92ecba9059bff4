#pragma once

#include "../render/ScenePose.h"
#include "GltfExport.h"
#include "GltfMeshes.h"
#include "Trs.h"

#include <cstddef>
#include <vector>

namespace scenetool {

/// Converts the nodes of the scene, with their meshes, cameras and lights.
///
/// A node keeps its index in the breadth-first order of the library. A glTF transform cannot shear, so a node with a
/// shearing matrix gets a second node below it, which has a rotation and takes the instances and the children. Cameras
/// and lights in glTF look along -Z of their node; if they look elsewhere in the library, they get a turned node of
/// their own.
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

    /// Adds all nodes and the scene.
    void add();

    /// Whether a node has a second one, because its matrix at rest shears.
    bool isPair(std::size_t node) const { return m_lower[node] != node; }

private:
    using Json = GltfDocument::Json;

    void addTree();
    void addMeshes();
    void addCameras();
    void addLights();
    /// The node for an instance at a node of the scene: that node if it does not have the member yet, otherwise a new
    /// child.
    Json& place(std::size_t node, const char* member);
    /// Like `place`, but turned as in a world matrix: the node itself if it has these axes, otherwise a new child.
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
    std::vector<std::size_t> m_lower; // by node: the glTF node that takes its children and instances
};

/// Sets the members of a glTF node for a transform; none for the identity.
void putTrs(GltfDocument::Json& node, const Trs& trs);

} // namespace scenetool
