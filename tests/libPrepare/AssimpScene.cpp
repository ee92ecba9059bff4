#include "AssimpScene.h"

#include <assimp/config.h>

#include <cstddef>

namespace test {

namespace {

/// The keys around a time, and its position between them from 0 to 1.
struct Span {
    unsigned first = 0;
    unsigned second = 0;
    double share = 0;
};

template <class Key>
Span spanOf(const Key* keys, unsigned count, double time)
{
    unsigned next = 0;
    while (next < count && keys[next].mTime < time) {
        ++next;
    }
    if (next == 0) {
        return {};
    }
    if (next == count) {
        return {count - 1, count - 1, 0};
    }
    const double begin = keys[next - 1].mTime;
    return {next - 1, next, (time - begin) / (keys[next].mTime - begin)};
}

Vector valueAt(const aiVectorKey* keys, unsigned count, double time)
{
    const Span span = spanOf(keys, count, time);
    const Vector first = vectorOf(keys[span.first].mValue);
    return first + (vectorOf(keys[span.second].mValue) - first) * span.share;
}

aiQuaterniont<double> valueAt(const aiQuatKey* keys, unsigned count, double time)
{
    const auto wide = [](const aiQuaternion& value) {
        return aiQuaterniont<double>(double(value.w), double(value.x), double(value.y), double(value.z));
    };
    const Span span = spanOf(keys, count, time);
    aiQuaterniont<double> result;
    aiQuaterniont<double>::Interpolate(result, wide(keys[span.first].mValue), wide(keys[span.second].mValue),
                                       span.share);
    return result;
}

Matrix matrixAt(const aiNodeAnim& curves, double time)
{
    Matrix move;
    Matrix scale;
    Matrix::Translation(valueAt(curves.mPositionKeys, curves.mNumPositionKeys, time), move);
    Matrix::Scaling(valueAt(curves.mScalingKeys, curves.mNumScalingKeys, time), scale);
    return move * Matrix(valueAt(curves.mRotationKeys, curves.mNumRotationKeys, time).GetMatrix()) * scale;
}

// Of all animations of a document.
double ticksPerSecond(const aiScene& scene)
{
    const double ticks = scene.mAnimations[0]->mTicksPerSecond;
    return ticks > 0 ? ticks : 1;
}

} // namespace

Vector vectorOf(const aiVector3D& vector)
{
    return {double(vector.x), double(vector.y), double(vector.z)};
}

Matrix matrixOf(const aiMatrix4x4& matrix)
{
    Matrix result;
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            result[row][column] = double(matrix[row][column]);
        }
    }
    return result;
}

Vector turned(const Matrix& matrix, const Vector& direction)
{
    return matrix * direction - matrix * Vector(0, 0, 0);
}

AssimpScene::AssimpScene(const std::string& file)
{
    // Otherwise a document without meshes would get one that shows its nodes.
    m_importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);
    m_scene = m_importer.ReadFile(file, 0);
}

std::vector<PlacedNode> AssimpScene::nodesAt(double seconds) const
{
    std::map<std::string, Matrix> moved;
    for (const auto& [name, curves] : this->curves()) {
        moved[name] = localAt(*curves, seconds);
    }
    std::vector<PlacedNode> nodes = {{m_scene->mRootNode, matrixOf(m_scene->mRootNode->mTransformation)}};
    for (std::size_t next = 0; next < nodes.size(); ++next) {
        const PlacedNode parent = nodes[next];
        for (unsigned i = 0; i < parent.node->mNumChildren; ++i) {
            const aiNode* const child = parent.node->mChildren[i];
            const auto found = moved.find(child->mName.C_Str());
            nodes.push_back(
                {child, parent.world * (found == moved.end() ? matrixOf(child->mTransformation) : found->second)});
        }
    }
    return nodes;
}

std::map<std::string, Matrix> AssimpScene::worldsAt(double seconds) const
{
    std::map<std::string, Matrix> worlds;
    std::map<std::string, unsigned> count;
    for (const PlacedNode& node : nodesAt(seconds)) {
        worlds[node.node->mName.C_Str()] = node.world;
        ++count[node.node->mName.C_Str()];
    }
    for (const auto& [name, nodes] : count) {
        if (nodes > 1) {
            worlds.erase(name);
        }
    }
    return worlds;
}

std::multimap<std::string, const aiNodeAnim*> AssimpScene::curves() const
{
    std::multimap<std::string, const aiNodeAnim*> curves;
    for (unsigned i = 0; i < m_scene->mNumAnimations; ++i) {
        const aiAnimation& animation = *m_scene->mAnimations[i];
        for (unsigned k = 0; k < animation.mNumChannels; ++k) {
            curves.emplace(animation.mChannels[k]->mNodeName.C_Str(), animation.mChannels[k]);
        }
    }
    return curves;
}

Matrix AssimpScene::localAt(const aiNodeAnim& curves, double seconds) const
{
    return matrixAt(curves, seconds * ticksPerSecond(*m_scene));
}

} // namespace test
