#pragma once // SPDX-License-Identifier: MIT

#include <libVideo/ColladaDom.h>
#include <libVideo/Export.h>
#include <libVideo/Handles.h>
#include <libVideo/SceneGraph/VertexLayout.h>

#include <vesk/Array.h>
#include <vesk/Buffer.h>
#include <vesk/CopiedResource.h>
#include <vesk/SharedResource.h>
#include <vesk/String.h>

namespace libVideo {

/// How a primitive is drawn. The numbers are part of the interface.
enum PrimitiveType : unsigned {
    PRIMITIVE_TRIANGLE_LIST = 4,
    PRIMITIVE_POINT_CLOUD = 7,
    PRIMITIVE_INVALID = 8 ///< never loaded
};

/// One drawable part of a mesh, ready for a renderer: packed vertices, an index buffer, and layouts that say where each
/// attribute is in a vertex. Once built, it keeps no link to the document, and lives as long as a handle to it.
///
/// Vertex k starts at byte k · `bytesPerVertex()` of the vertex stream; its attributes follow each other without gaps,
/// as 32-bit floats in host byte order. Entry c of the index buffer is the vertex of corner c; triangle t has the entries
/// 3t, 3t + 1 and 3t + 2.
class LIBVIDEO_API Primitive {
public:
    /// The index tuple of one vertex. Corners with equal tuples share a vertex, whatever its bytes.
    struct LIBVIDEO_API VertexId {
        vesk::Buffer<unsigned> indices; ///< One index for each distinct offset.
        bool operator==(const VertexId& other) const { return indices == other.indices; } ///< Equal indices.
    };

    Primitive(const Primitive&) = default;
    Primitive& operator=(const Primitive&) = default;
    virtual ~Primitive();

    /// Number of triangles, or of points.
    unsigned count() const { return m_count; }
    /// 3 for a triangle list, 1 for a point cloud.
    unsigned vertexPerPrimitive() const { return m_vertexPerPrimitive; }
    /// Sum of the byte sizes in the layout.
    unsigned bytesPerVertex() const { return m_bytesPerVertex; }
    PrimitiveType type() const { return m_type; } ///< Says how to draw.
    /// Bytes of the vertex stream.
    unsigned totalByteSize() const { return m_vertexStream.size(); }

    /// The first byte of the vertex stream, not owned by the handle; valid until the primitive changes.
    Link<unsigned char> vertexBuffer() { return Link<unsigned char>(m_vertexStream.getData()); }
    /// One entry for each corner; empty for a point cloud.
    const vesk::Array<unsigned>& indexBuffer() const { return m_indexBuffer; }
    /// The attributes of a vertex, in the order of their bytes.
    const vesk::Array<VertexLayout>& vertexLayout() const { return m_vertexLayout; }

    /// The `name` of a `<triangles>`, the `id` of a `<vertices>`.
    const vesk::String& id() const { return m_id; }
    /// The symbol of the material, a key of `VisualScene::blinnMaterialTable()`; empty for a point cloud.
    const vesk::String& material() { return m_material; }

    /// Copies one vertex: that of corner `index`, or vertex `index` if there is no index buffer.
    /// @return false, with `out` unchanged, if there is no such corner, or if `index` is not below the number of bytes
    ///     in the vertex stream
    /// @throws vesk::IndexOutOfBounds if the vertex is not inside the stream
    bool vertex(unsigned index, vesk::Buffer<unsigned char>& out) const;

    /// Whether a vertex has a position.
    bool hasPosition() const { return m_vertexLayout.contains(VertexLayout(SEMANTIC_POSITION)); }
    /// Whether a vertex has a normal.
    bool hasNormal() const { return m_vertexLayout.contains(VertexLayout(SEMANTIC_NORMAL)); }
    /// Whether a vertex has a texture coordinate.
    bool hasTextureCoord() const { return m_vertexLayout.contains(VertexLayout(SEMANTIC_TEXCOORD)); }
    /// The first attribute of that kind. @return false, with `layout` unchanged, if there is none
    bool positionLayout(VertexLayout& layout) const { return findLayout(SEMANTIC_POSITION, layout); }
    /// The first normal; as above.
    bool normalLayout(VertexLayout& layout) const { return findLayout(SEMANTIC_NORMAL, layout); }
    /// The first texture coordinate; as above.
    bool textureCoordLayout(VertexLayout& layout) const { return findLayout(SEMANTIC_TEXCOORD, layout); }

protected:
    Primitive() = default;

    /// The first attribute of a kind; `layout` is unchanged without one.
    bool findLayout(VertexSemantic semantic, VertexLayout& layout) const;
    /// Makes one vertex for every distinct index tuple, numbered by first use. A new tuple costs one read of the sources,
    /// a known one none; finding it takes constant time on average.
    /// @return whether the vertex stream has any byte
    bool createIndexedVertexBuffer(const SharedHandle<InputLocalOffset>& input);

    unsigned m_count = 0;                      ///< Triangles or points.
    unsigned m_vertexPerPrimitive = 0;         ///< 3 or 1.
    unsigned m_bytesPerVertex = 0;             ///< Sum of the byte sizes in the layout.
    PrimitiveType m_type = PRIMITIVE_INVALID;  ///< How to draw.
    vesk::Array<unsigned char> m_vertexStream; ///< All vertices, without gaps.
    vesk::Array<unsigned> m_indexBuffer;       ///< One entry for each corner.
    vesk::Array<VertexLayout> m_vertexLayout;  ///< In the order of the bytes.
    vesk::String m_id;                         ///< From the element.
    vesk::String m_material;                   ///< The symbol.
};

/// A `<triangles>` as one indexed triangle list.
class LIBVIDEO_API TriangleList : public Primitive {
public:
    TriangleList() = default;
    /// Loads as `createFromCollada` does, and drops its result.
    explicit TriangleList(domTriangles* const triangles);
    TriangleList(const TriangleList&) = default;
    TriangleList& operator=(const TriangleList&) = default;
    ~TriangleList() override;

    /// Meant to run once. A `count` beyond the index list becomes the number of whole triangles in it.
    /// @return false, with a message on "libVideo.primitive" or a channel below, for null, without any `<input>`, or if
    ///     no vertex has any byte
    /// @throws vesk::IndexOutOfBounds, vesk::AssertionFailure as `InputLocalOffset::data` does
    bool createFromCollada(domTriangles* const triangles);
};

/// The records of a `<vertices>` as points, without an index buffer.
class LIBVIDEO_API PointCloud : public Primitive {
public:
    PointCloud() = default;
    /// Loads as `createFromCollada` does, and drops its result.
    explicit PointCloud(domVertices* const vertices);
    PointCloud(const PointCloud&) = default;
    PointCloud& operator=(const PointCloud&) = default;
    ~PointCloud() override;

    /// As many points as the first source has records; of records beyond the arrays, at most 1,048,576 and 64 MiB.
    /// @return false, with a message on "libVideo.primitive", for null; else true, also for an empty cloud
    /// @throws vesk::AssertionFailure if another source has fewer records
    bool createFromCollada(domVertices* const vertices);
};

/// Makes the primitives of a `<mesh>`: one for each `<triangles>`, or a point cloud of its `<vertices>` if it has neither
/// `<triangles>` nor `<lines>`. Other kinds are ignored; one that fails to load stays in the list.
/// @return the number of `<lines>` and `<triangles>`, or 1 for a point cloud
LIBVIDEO_API unsigned createPrimitive(const domMesh& mesh, vesk::Array<SharedHandle<Primitive>>& primitives);

} // namespace libVideo
