#pragma once

#include <filesystem>
#include <string>

namespace benchmarks {

/// Whether the nodes of a generated document have an `id`.
enum class Ids { Distinct, None };

/// A tree of `nodes` nodes with eight children each. Every node has a `<translate>` and a `<rotate>`.
std::string balancedTree(unsigned nodes, Ids ids);
/// All nodes directly below the scene, each with a `<translate>`.
std::string flatTree(unsigned nodes);
/// A chain of nested nodes, each with a `<translate>`.
std::string chain(unsigned depth);
/// Keys per second of a generated curve. The first key is one step after second 0.
constexpr double keysPerSecond = 24.0;

/// Linear curves of angles of `<rotate>`s, each on a node of its own, with separate sources for INPUT, OUTPUT and
/// INTERPOLATION, as exporters write them.
std::string angleCurves(unsigned animations, unsigned keys);
/// The same for `<matrix>`es: sixteen values per key.
std::string matrixCurves(unsigned animations, unsigned keys);
/// One node with a linear curve for its `<translate>`.
std::string animatedNode(unsigned keys);

/// A grid of an even number of triangles. Six triangles share each vertex, and positions, normals and texture
/// coordinates have separate indices.
std::string smoothMesh(unsigned triangles);
/// A grid of quads in one `<polylist>`, otherwise like `smoothMesh`.
std::string quadMesh(unsigned quads);
/// Triangles around one vertex that all of them share.
std::string fan(unsigned triangles);
/// Meshes of 100 triangles, each on a node of its own, with 100 materials in all.
std::string manyGeometries(unsigned geometries);
/// Nodes with one camera and one light each; there are a tenth as many cameras and point lights as nodes.
std::string camerasAndLights(unsigned nodes);

/// Writes a document to a temporary file, which the destructor removes.
class DocumentFile {
public:
    explicit DocumentFile(const std::string& content);
    ~DocumentFile();
    DocumentFile(const DocumentFile&) = delete;
    DocumentFile& operator=(const DocumentFile&) = delete;

    std::string path() const { return m_path.string(); }

private:
    std::filesystem::path m_path;
};

} // namespace benchmarks
