#pragma once

#include <assimp/Importer.hpp>
#include <assimp/matrix4x4.h>
#include <assimp/scene.h>
#include <assimp/vector3.h>

#include <map>
#include <string>
#include <vector>

namespace test {

using Matrix = aiMatrix4x4t<double>;
using Vector = aiVector3t<double>;

Vector vectorOf(const aiVector3D& vector);
Matrix matrixOf(const aiMatrix4x4& matrix);
/// Transforms a direction, to which the translation does not apply.
Vector turned(const Matrix& matrix, const Vector& direction);

/// A node and its matrix to the world.
struct PlacedNode {
    const aiNode* node = nullptr;
    Matrix world;
};

/// A document as another reader, Assimp, reads it.
class AssimpScene {
public:
    explicit AssimpScene(const std::string& file);

    /// Null if it refuses the file.
    const aiScene* get() const { return m_scene; }
    /// Why it refuses the file.
    std::string error() const { return m_importer.GetErrorString(); }

    /// All nodes with their curves at a time in seconds, parents first.
    std::vector<PlacedNode> nodesAt(double seconds) const;
    /// The matrices of nodes with a unique name, which is the id if there is one.
    std::map<std::string, Matrix> worldsAt(double seconds) const;
    /// The curves of a node, by its name. Each holds the whole matrix of the node, so that several contradict each other.
    std::multimap<std::string, const aiNodeAnim*> curves() const;
    /// The matrix relative to the parent at a time in seconds.
    Matrix localAt(const aiNodeAnim& curves, double seconds) const;

private:
    Assimp::Importer m_importer;
    const aiScene* m_scene = nullptr;
};

} // namespace test
