#include "Shape.h"

#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace test {

namespace {

void addMesh(const aiMesh& mesh, const aiMatrix4x4& world, Shape& shape)
{
    for (unsigned i = 0; i < mesh.mNumFaces; ++i) {
        const aiFace& face = mesh.mFaces[i];
        if (face.mNumIndices != 3) {
            continue;
        }
        ++shape.triangles;
        aiVector3D corners[3];
        for (unsigned corner = 0; corner < 3; ++corner) {
            corners[corner] = world * mesh.mVertices[face.mIndices[corner]];
            for (unsigned axis = 0; axis < 3; ++axis) {
                const double value = corners[corner][axis];
                shape.low[axis] = std::min(shape.low[axis], value);
                shape.high[axis] = std::max(shape.high[axis], value);
            }
        }
        const aiVector3D normal = (corners[1] - corners[0]) ^ (corners[2] - corners[0]);
        shape.area += static_cast<double>(normal.Length()) / 2;
    }
}

} // namespace

Shape shapeOf(const std::string& file)
{
    Shape shape;
    Assimp::Importer importer;
    const aiScene* const scene = importer.ReadFile(file, aiProcess_Triangulate);
    if (scene == nullptr) {
        ADD_FAILURE() << importer.GetErrorString();
        return shape;
    }
    std::vector<std::pair<const aiNode*, aiMatrix4x4>> open = {{scene->mRootNode, aiMatrix4x4()}};
    while (!open.empty()) {
        const auto [node, above] = open.back();
        open.pop_back();
        const aiMatrix4x4 world = above * node->mTransformation;
        for (unsigned i = 0; i < node->mNumMeshes; ++i) {
            addMesh(*scene->mMeshes[node->mMeshes[i]], world, shape);
        }
        for (unsigned i = 0; i < node->mNumChildren; ++i) {
            open.emplace_back(node->mChildren[i], world);
        }
    }
    return shape;
}

} // namespace test
