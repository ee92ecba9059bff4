#pragma once

#include <filesystem>
#include <string>

namespace benchmarks {

/// Whether the nodes of a generated document have an `id`.
enum class Ids { Distinct, None };

/// Eight children below each node, `nodes` in all, each with a `<translate>` and a `<rotate>`.
std::string balancedTree(unsigned nodes, Ids ids);
/// All nodes directly below the scene, each with a `<translate>`.
std::string flatTree(unsigned nodes);
/// One node below the other, each with a `<translate>`.
std::string chain(unsigned depth);
/// Keys of a generated curve in one second, counted from second 0, where there is none.
constexpr double keysPerSecond = 24.0;

/// Linear curves of a `<rotate>`'s angle, each on a node of its own: INPUT, OUTPUT and INTERPOLATION with sources of
/// their own, as exporters write them.
std::string angleCurves(unsigned animations, unsigned keys);
/// Likewise, of a `<matrix>`: sixteen values a key.
std::string matrixCurves(unsigned animations, unsigned keys);
/// One node whose `<translate>` is animated by one linear curve.
std::string animatedNode(unsigned keys);

/// A grid of an even number of triangles, each vertex shared by six of them, with separate indices of positions, normals
/// and texture coordinates.
std::string smoothMesh(unsigned triangles);
/// A grid of quads in one `<polylist>`, otherwise like `smoothMesh`.
std::string quadMesh(unsigned quads);
/// Triangles round one vertex that all of them share.
std::string fan(unsigned triangles);
/// Meshes of 100 triangles, one on a node, with 100 materials.
std::string manyGeometries(unsigned geometries);
/// Nodes with one camera and one light each, of a tenth as many cameras and point lights.
std::string camerasAndLights(unsigned nodes);

/// A document as a file of its own, removed at the end.
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
