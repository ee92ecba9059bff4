#pragma once

#include <filesystem>
#include <string>

namespace benchmarks {

/// Whether the nodes of a generated document have an `id`.
enum class Ids { Distinct, None };

/// Eight children below each node, `nodes` in all, each with a `<translate>` and a `<rotate>`.
std::string balancedTree(unsigned nodes, Ids ids);
/// One node below the other, each with a `<translate>`.
std::string chain(unsigned depth);
/// One node whose `<translate>` is animated by that many linear keys, one in a second.
std::string animatedNode(unsigned keys);

/// A square grid of about that many triangles, each vertex shared by six of them, with separate indices of positions,
/// normals and texture coordinates.
std::string smoothMesh(unsigned triangles);
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
