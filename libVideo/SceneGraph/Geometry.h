#pragma once // SPDX-License-Identifier: MIT

#include <libVideo/ColladaDom.h>
#include <libVideo/Export.h>
#include <libVideo/Handles.h>
#include <libVideo/SceneGraph/Primitive.h>

#include <vesk/Array.h>
#include <vesk/SharedResource.h>
#include <vesk/String.h>

namespace libVideo {

/// The primitives of a `<mesh>`: its `<triangles>`, or the points of its `<vertices>` if it has neither these nor
/// `<lines>`. Other kinds of primitives are not read. Copies share ownership of the primitives; none
/// refers to the document.
class LIBVIDEO_API Mesh {
public:
    Mesh() = default;
    Mesh(const Mesh&) = default;
    Mesh& operator=(const Mesh&) = default;
    ~Mesh();

    /// @return whether there is anything to show; a mesh always has at least a point cloud
    /// @throws vesk::NullPointer for null, and what `createPrimitive` throws
    bool createFromCollada(domMesh* const mesh);

    /// A mesh without primitives.
    const vesk::String& id() const { return m_id; }
    /// In document order, also those that failed to load.
    const vesk::Array<SharedHandle<Primitive>>& primitives() const { return m_primitives; }

private:
    vesk::String m_id;
    vesk::Array<SharedHandle<Primitive>> m_primitives;
};

/// One `<geometry>`: its mesh, and the nodes that show it. `<convex_mesh>` and `<spline>` are not read.
///
/// Owned by the `VisualScene`. Shares ownership of the nodes that it lists, but not of their parents and children.
/// Copies share primitives and nodes.
class LIBVIDEO_API Geometry {
public:
    Geometry() = default;
    Geometry(const Geometry&) = default;
    Geometry& operator=(const Geometry&) = default;
    ~Geometry();

    /// @return false, with one message on "libVideo.geometry" and empty id and name, if the element has no `<mesh>`
    bool createFromCollada(const daeSmartRef<domGeometry>& geometry);

    /// Lists a node that shows the geometry, unless one with the same id, in any case, is listed already.
    void addNode(const NodeHandle& node);
    /// In the order of `addNode`.
    const vesk::Array<NodeHandle>& nodes() const { return m_nodes; }

    /// The attributes of the element; empty without one, or if the load failed.
    const vesk::String& id() const { return m_id; }
    const vesk::String& name() const { return m_name; } ///< The `name` of the element, likewise.
    const Mesh& mesh() const { return m_mesh; }         ///< What there is to draw.

private:
    vesk::String m_id;
    vesk::String m_name;
    Mesh m_mesh;
    vesk::Array<NodeHandle> m_nodes;
};

} // namespace libVideo
