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
/// A direction, which the translation of a matrix leaves alone.
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

    /// Null if it does not take the file.
    const aiScene* get() const { return m_scene; }
    /// Why it does not take the file.
    std::string error() const { return m_importer.GetErrorString(); }

    /// All nodes with the curves at a time in seconds, each after the node above it.
    std::vector<PlacedNode> nodesAt(double seconds) const;
    /// The matrices of the nodes whose name no other node has, which is their id if they have one.
    std::map<std::string, Matrix> worldsAt(double seconds) const;
    /// The curves of a node, by its name. Each holds the whole matrix of the node, so that several contradict each other.
    std::multimap<std::string, const aiNodeAnim*> curves() const;
    /// The matrix to the node above at a time in seconds.
    Matrix localAt(const aiNodeAnim& curves, double seconds) const;

private:
    Assimp::Importer m_importer;
    const aiScene* m_scene = nullptr;
};

} // namespace test
