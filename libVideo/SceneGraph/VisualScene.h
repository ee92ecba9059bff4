#pragma once // SPDX-License-Identifier: MIT

#include <libVideo/Export.h>
#include <libVideo/Handles.h>
#include <libVideo/SceneGraph/Node.h>
#include <libVideo/SceneGraph/SceneResources.h>

#include <vesk/Array.h>
#include <vesk/CopiedResource.h>
#include <vesk/HashTable.h>
#include <vesk/SharedResource.h>
#include <vesk/String.h>

namespace libVideo {

/// The scene that a host walks after a load: a tree of nodes under one root, the instances on it, and the geometries
/// and materials that it shows.
///
/// It owns the nodes and refers to the pool of the load, which has to outlive it. A copy is a second view of the same
/// nodes with a root of its own; the top-level nodes keep the root of the source as their parent, so a copy must not
/// outlive its source.
class LIBVIDEO_API VisualScene {
public:
    /// A root without children, and nothing else.
    VisualScene() = default;
    VisualScene(const VisualScene&) = default;
    VisualScene& operator=(const VisualScene&) = default;
    ~VisualScene();

    /// Builds nodes, instances and animations from the `<visual_scene>`. `<instance_node>` and `<instance_controller>`
    /// are not read. Faults below the scene are logged and skipped. Meant to run once.
    /// @return false, with one message on "libVideo.visualScene" and nothing changed, if `resources` is empty, the element
    ///     has no `<node>`, or a scene is loaded already
    [[nodiscard]] bool createFromCollada(const domVisual_scene& scene, const SceneResourcesLink& resources);

    /// Folds each node's parent into its matrix, parents first, so that local matrices become world matrices. Call it
    /// once: a second call folds the parents in again.
    void transform();

    /// Not from the document: the identity, with the nodes directly below the `<visual_scene>` as its children.
    const Node& root() const { return m_root; }
    /// Instances in breadth-first order of their nodes, and in document order on one node.
    const vesk::Array<CameraInstanceHandle>& cameraList() const { return m_cameraList; }
    const vesk::Array<PointLightInstanceHandle>& pointLightList() const { return m_pointLightList; } ///< Likewise.
    const vesk::Array<SpotLightInstanceHandle>& spotLightList() const { return m_spotLightList; }    ///< Likewise.
    /// Geometries by the `id` of their `<geometry>`.
    const GeometryTable& geometryTable() const { return m_geometryTable; }
    /// Materials by the `symbol` that a primitive names as its material.
    const BlinnMaterialTable& blinnMaterialTable() const { return m_blinnMaterialTable; }

private:
    struct TreePrototype;

    static vesk::Array<TreePrototype> flatten(const domVisual_scene& scene);
    void createNodes(const vesk::Array<TreePrototype>& tree);
    void processNodeInstances(const NodeHandle& node, const daeSmartRef<domNode>& element, detail::PoolIndex& pool);
    unsigned addCameraInstance(const NodeHandle& node, const daeTArray<daeSmartRef<domInstance_camera>>& instances,
                               detail::PoolIndex& pool);
    unsigned addLightInstance(const NodeHandle& node, const daeTArray<daeSmartRef<domInstance_light>>& instances,
                              detail::PoolIndex& pool);
    unsigned addGeometryInstance(const NodeHandle& node, const daeTArray<daeSmartRef<domInstance_geometry>>& instances);
    void registerMaterials(const domInstance_geometry& instance);
    GeometryHandle createAndRegisterGeometry(domGeometry* const geometry);
    void registerMaterialAttributes(const vesk::String& symbol, domMaterial* const material);
    void addAnimationsToNodes();

    vesk::String m_name;
    vesk::String m_id;
    Node m_root;
    NodeTable m_nodeTable{32};          // every node by its id
    vesk::Array<NodeHandle> m_nodeList; // breadth-first, so a parent comes before its children
    vesk::Array<CameraInstanceHandle> m_cameraList;
    vesk::Array<PointLightInstanceHandle> m_pointLightList;
    vesk::Array<SpotLightInstanceHandle> m_spotLightList;
    SceneResourcesLink m_resources; // set by the load that built the scene
    GeometryTable m_geometryTable{32};
    BlinnMaterialTable m_blinnMaterialTable{32};
    [[maybe_unused]] unsigned m_reserved = 0;
};

} // namespace libVideo
