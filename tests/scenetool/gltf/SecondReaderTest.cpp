#include "documents/DocumentFolder.h"

#include "support/Process.h"
#include "support/TortureFolder.h"

#include <libVideo/SceneGraph.h>

#include <assimp/Importer.hpp>
#include <assimp/scene.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

// Another reader finds in a result the same triangles, at the same positions, as the library delivers from the
// document.

namespace {

using documents::StoredDocument;

struct Extent {
    void add(const double (&point)[3])
    {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            low[axis] = std::min(low[axis], point[axis]);
            high[axis] = std::max(high[axis], point[axis]);
        }
    }

    std::size_t triangles = 0;
    double low[3] = {infinity, infinity, infinity};
    double high[3] = {-infinity, -infinity, -infinity};

    static constexpr double infinity = std::numeric_limits<double>::infinity();
};

Extent extentOfScene(libVideo::VisualScene& scene);

void addNode(const aiScene& scene, const aiNode& node, const aiMatrix4x4& parent, Extent& extent);

class SecondReaderTest : public testing::TestWithParam<StoredDocument> {};

TEST_P(SecondReaderTest, FindsTheSameTrianglesAtTheSamePlaces)
{
    const testSupport::TortureFolder folder;
    const std::string prepared = (folder.path() / "prepared.dae").string();
    const std::string result = (folder.path() / "result.glb").string();
    if (testSupport::runProcess({SCENETOOL_PROGRAM, "convert", GetParam().path, "-o", result}).status != 0) {
        return; // other tests cover this
    }
    ASSERT_EQ(0, testSupport::runProcess({SCENETOOL_PROGRAM, "prepare", GetParam().path, "-o", prepared, "--up", "y",
                                          "--unit", "1", "--normals"})
                     .status);
    libVideo::Scene scene;
    ASSERT_TRUE(scene.createFromCollada(prepared.c_str()));
    const Extent expected = extentOfScene(scene.visualScene());

    Assimp::Importer importer;
    const aiScene* const imported = importer.ReadFile(result, 0);
    if (expected.triangles == 0 && imported == nullptr) {
        return; // it refuses a file without a mesh
    }
    ASSERT_NE(nullptr, imported) << importer.GetErrorString();
    Extent found;
    addNode(*imported, *imported->mRootNode, aiMatrix4x4(), found);

    EXPECT_EQ(expected.triangles, found.triangles);
    double size = 0;
    for (std::size_t axis = 0; axis < 3 && expected.triangles > 0; ++axis) {
        size = std::max({size, std::fabs(expected.low[axis]), std::fabs(expected.high[axis])});
    }
    for (std::size_t axis = 0; axis < 3 && expected.triangles > 0; ++axis) {
        EXPECT_NEAR(expected.low[axis], found.low[axis], 1e-4 * size) << "axis " << axis;
        EXPECT_NEAR(expected.high[axis], found.high[axis], 1e-4 * size) << "axis " << axis;
    }
}

void addPrimitive(libVideo::Primitive& primitive, const libVideo::Node& node, Extent& extent)
{
    libVideo::VertexLayout layout;
    if (primitive.type() != libVideo::PRIMITIVE_TRIANGLE_LIST || !primitive.positionLayout(layout)) {
        return;
    }
    const libMath::Matrix<float, 4, 4>& world = node.transform();
    extent.triangles += primitive.indexBuffer().size() / 3;
    for (const unsigned vertex : primitive.indexBuffer()) {
        float position[3] = {};
        std::memcpy(position,
                    primitive.vertexBuffer().get() + std::size_t(vertex) * primitive.bytesPerVertex() +
                        layout.byteOffset,
                    std::min<std::size_t>(sizeof position, layout.byteSize));
        double point[3] = {};
        for (unsigned row = 0; row < 3; ++row) {
            point[row] = double(world(row, 3));
            for (unsigned column = 0; column < 3; ++column) {
                point[row] += double(world(row, column)) * double(position[column]);
            }
        }
        extent.add(point);
    }
}

Extent extentOfScene(libVideo::VisualScene& scene)
{
    scene.transform();
    Extent extent;
    for (const libVideo::GeometryTable::Bucket& bucket : scene.geometryTable()) {
        for (const libVideo::NodeHandle& node : bucket.value->nodes()) {
            for (const auto& primitive : bucket.value->mesh().primitives()) {
                addPrimitive(*primitive, *node, extent);
            }
        }
    }
    return extent;
}

void addNode(const aiScene& scene, const aiNode& node, const aiMatrix4x4& parent, Extent& extent)
{
    const aiMatrix4x4 world = parent * node.mTransformation;
    for (unsigned i = 0; i < node.mNumMeshes; ++i) {
        const aiMesh& mesh = *scene.mMeshes[node.mMeshes[i]];
        for (unsigned face = 0; face < mesh.mNumFaces; ++face) {
            if (mesh.mFaces[face].mNumIndices == 3) {
                ++extent.triangles;
                for (unsigned corner = 0; corner < 3; ++corner) {
                    const aiVector3D point = world * mesh.mVertices[mesh.mFaces[face].mIndices[corner]];
                    extent.add({double(point.x), double(point.y), double(point.z)});
                }
            }
        }
    }
    for (unsigned i = 0; i < node.mNumChildren; ++i) {
        addNode(scene, *node.mChildren[i], world, extent);
    }
}

INSTANTIATE_TEST_SUITE_P(Documents, SecondReaderTest, testing::ValuesIn(documents::allDocuments()),
                         [](const auto& row) { return row.param.name; });

} // namespace
