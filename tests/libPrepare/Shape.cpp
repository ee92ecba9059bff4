#include "Shape.h"

#include <assimp/material.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <tuple>

namespace test {

namespace {

// Relative tolerance: the reader computes in float.
constexpr double tolerance = 1e-4;
constexpr double normalTolerance = 2e-3;
// How far a corner of a flat polygon may be off its plane, relative to the size.
constexpr double flatness = 1e-4;
// A face counts as having no area below this share of the square of its longest side: rounding can produce one.
constexpr double noArea = 1e-6;

/// The matrices of a mesh to the world: one for all vertices, or one per vertex from its joints.
class Pose {
public:
    Pose(const aiMesh& mesh, const Matrix& world, const std::map<std::string, Matrix>& nodes)
        : m_matrices(mesh.HasBones() ? mesh.mNumVertices : 1, mesh.HasBones() ? world * 0.0 : world)
    {
        std::vector<double> sums(mesh.HasBones() ? mesh.mNumVertices : 0);
        for (unsigned i = 0; i < mesh.mNumBones; ++i) {
            const aiBone& bone = *mesh.mBones[i];
            const auto joint = nodes.find(bone.mName.C_Str());
            if (joint == nodes.end()) {
                continue;
            }
            const Matrix matrix = joint->second * matrixOf(bone.mOffsetMatrix);
            for (unsigned k = 0; k < bone.mNumWeights; ++k) {
                const double weight = double(bone.mWeights[k].mWeight);
                m_matrices[bone.mWeights[k].mVertexId] = m_matrices[bone.mWeights[k].mVertexId] + matrix * weight;
                sums[bone.mWeights[k].mVertexId] += weight;
            }
        }
        for (std::size_t vertex = 0; vertex < sums.size(); ++vertex) {
            m_matrices[vertex] = m_matrices[vertex] * (sums[vertex] > 0 ? 1 / sums[vertex] : 1);
        }
    }

    const Matrix& of(unsigned vertex) const { return m_matrices[m_matrices.size() == 1 ? 0 : vertex]; }

private:
    std::vector<Matrix> m_matrices;
};

Corner cornerOf(const aiMesh& mesh, unsigned vertex, const Pose& pose)
{
    const Matrix& matrix = pose.of(vertex);
    Corner corner;
    corner.position = matrix * vectorOf(mesh.mVertices[vertex]);
    if (mesh.HasNormals()) {
        aiMatrix3x3t<double> turn(matrix);
        corner.normal = turn.Inverse().Transpose() * vectorOf(mesh.mNormals[vertex]);
        corner.normal->NormalizeSafe();
    }
    for (unsigned set = 0; mesh.HasTextureCoords(set); ++set) {
        const aiVector3D& point = mesh.mTextureCoords[set][vertex];
        corner.coordinates.insert(corner.coordinates.end(), {double(point.x), double(point.y)});
    }
    if (mesh.HasVertexColors(0)) {
        const aiColor4D& color = mesh.mColors[0][vertex];
        corner.coordinates.insert(corner.coordinates.end(),
                                  {double(color.r), double(color.g), double(color.b), double(color.a)});
    }
    return corner;
}

/// A face as a fan of triangles around its first corner.
class Fan {
public:
    explicit Fan(const std::vector<Corner>& corners) : m_corners(corners)
    {
        for (std::size_t i = 1; i + 1 < m_corners.size(); ++i) {
            const Vector part = ((at(i) - at(0)) ^ (at(i + 1) - at(0))) * 0.5;
            m_area += part.Length();
            m_direction += part;
        }
        for (std::size_t i = 1; i < m_corners.size(); ++i) {
            const Vector side = at(i) - at(0);
            m_longest = std::max(m_longest, side.Length());
            m_isBent = m_isBent || std::fabs(side * m_direction) > flatness * side.Length() * m_direction.Length();
        }
    }

    void addTo(Surface& surface) const
    {
        const double area = m_direction.Length();
        if (!(area > noArea * m_longest * m_longest)) {
            return;
        }
        surface.triangles += m_corners.size() - 2;
        surface.area += area;
        surface.direction += m_direction;
        surface.corners.insert(surface.corners.end(), m_corners.begin(), m_corners.end());
        if (m_isBent && m_corners.size() > 3) {
            surface.bend += m_area - area;
            return;
        }
        for (std::size_t i = 1; i + 1 < m_corners.size(); ++i) { // in a concave face, some count against the others
            const double part = ((at(i) - at(0)) ^ (at(i + 1) - at(0))) * m_direction / (2 * area);
            surface.moment += (at(0) + at(i) + at(i + 1)) * (part / 3);
        }
    }

private:
    const Vector& at(std::size_t corner) const { return m_corners[corner].position; }

    const std::vector<Corner>& m_corners;
    double m_area = 0;
    double m_longest = 0;
    Vector m_direction;
    bool m_isBent = false;
};

void addMesh(const aiMesh& mesh, const Pose& pose, Surface& surface, Shape& shape)
{
    for (unsigned i = 0; i < mesh.mNumFaces; ++i) {
        const aiFace& face = mesh.mFaces[i];
        if (face.mNumIndices < 3) {
            continue;
        }
        std::vector<Corner> corners;
        for (unsigned corner = 0; corner < face.mNumIndices; ++corner) {
            corners.push_back(cornerOf(mesh, face.mIndices[corner], pose));
            for (unsigned axis = 0; axis < 3; ++axis) {
                const double value = corners.back().position[axis];
                shape.low[axis] = std::min(shape.low[axis], value);
                shape.high[axis] = std::max(shape.high[axis], value);
            }
        }
        Fan(corners).addTo(surface);
    }
}

/// Corners by position.
class CornerGrid {
public:
    CornerGrid(const std::vector<Corner>& corners, double distance) : m_distance(distance)
    {
        for (const Corner& corner : corners) {
            std::vector<const Corner*>& cell = m_cells[cellOf(corner.position)];
            if (std::none_of(cell.begin(), cell.end(),
                             [&](const Corner* other) { return other->isLike(corner, distance / 100); })) {
                cell.push_back(&corner);
            }
        }
    }

    bool holdsLike(const Corner& corner) const
    {
        const Cell cell = cellOf(corner.position);
        for (int place = 0; place < 27; ++place) {
            const auto found = m_cells.find({std::get<0>(cell) + place % 3 - 1, std::get<1>(cell) + place / 3 % 3 - 1,
                                             std::get<2>(cell) + place / 9 - 1});
            if (found != m_cells.end() &&
                std::any_of(found->second.begin(), found->second.end(),
                            [&](const Corner* other) { return other->isLike(corner, m_distance); })) {
                return true;
            }
        }
        return false;
    }

private:
    using Cell = std::tuple<long, long, long>;

    Cell cellOf(const Vector& position) const
    {
        const double side = 2 * m_distance;
        return {std::lround(position.x / side), std::lround(position.y / side), std::lround(position.z / side)};
    }

    double m_distance;
    std::map<Cell, std::vector<const Corner*>> m_cells;
};

void expectCorners(const std::vector<Corner>& expected, const std::vector<Corner>& found, double distance,
                   const char* whose)
{
    const CornerGrid grid(found, distance);
    for (const Corner& corner : expected) {
        if (!grid.holdsLike(corner)) { // one is enough
            ADD_FAILURE() << "only " << whose << " has a corner like that at " << corner.position.x << ' '
                          << corner.position.y << ' ' << corner.position.z;
            return;
        }
    }
}

void expectSameSurface(const Surface& before, const Surface& after, double size)
{
    EXPECT_EQ(before.triangles, after.triangles);
    EXPECT_NEAR(before.area, after.area, tolerance * before.area + 4 * before.bend); // another cut may bend more
    EXPECT_LE((before.direction - after.direction).Length(), tolerance * before.area);
    if (!(before.bend > 0)) {
        EXPECT_LE((before.moment - after.moment).Length(), tolerance * before.area * size);
    }
    expectCorners(before.corners, after.corners, tolerance * size, "the document");
    expectCorners(after.corners, before.corners, tolerance * size, "what it is prepared to");
}

} // namespace

bool Corner::isLike(const Corner& other, double distance) const
{
    const bool isNormalLike =
        normal && other.normal ? (*normal - *other.normal).Length() <= normalTolerance : !normal && !other.normal;
    return (position - other.position).Length() <= distance && isNormalLike &&
           std::equal(coordinates.begin(), coordinates.end(), other.coordinates.begin(), other.coordinates.end(),
                      [](double x, double y) { return std::fabs(x - y) <= tolerance * std::max(1.0, std::fabs(x)); });
}

double Shape::size() const
{
    double size = 0;
    for (std::size_t axis = 0; axis < 3 && low[0] <= high[0]; ++axis) {
        size = std::max({size, high[axis] - low[axis], 1e-2 * std::fabs(high[axis]), 1e-2 * std::fabs(low[axis])});
    }
    return size;
}

std::string lookOf(const aiMaterial& material, const char* key, unsigned type, unsigned index, aiTextureType texture)
{
    aiString file;
    if (material.GetTexture(texture, 0, &file) == AI_SUCCESS) {
        const std::string path = file.C_Str();
        return path.substr(path.find_last_of("/\\") + 1);
    }
    aiColor4D color;
    if (material.Get(key, type, index, color) != AI_SUCCESS) {
        return {};
    }
    char text[100];
    (void)std::snprintf(text, sizeof text, "%.3f %.3f %.3f", double(color.r), double(color.g), double(color.b));
    return text;
}

Shape shapeOf(const std::string& file)
{
    const AssimpScene scene(file);
    if (scene.get() == nullptr) {
        ADD_FAILURE() << scene.error();
        return {};
    }
    return shapeOf(scene);
}

Shape shapeOf(const AssimpScene& scene, bool isByLook)
{
    Shape shape;
    const std::map<std::string, Matrix> worlds = scene.worldsAt(0);
    for (const PlacedNode& node : scene.nodesAt(0)) {
        for (unsigned i = 0; i < node.node->mNumMeshes; ++i) {
            const aiMesh& mesh = *scene.get()->mMeshes[node.node->mMeshes[i]];
            const aiMaterial& material = *scene.get()->mMaterials[mesh.mMaterialIndex];
            const std::string look =
                isByLook ? lookOf(material, AI_MATKEY_COLOR_DIFFUSE, aiTextureType_DIFFUSE) : std::string();
            addMesh(mesh, Pose(mesh, node.world, worlds), shape.surfaces[look], shape);
        }
    }
    for (auto surface = shape.surfaces.begin(); surface != shape.surfaces.end();) {
        shape.triangles += surface->second.triangles;
        shape.area += surface->second.area;
        surface = surface->second.triangles == 0 ? shape.surfaces.erase(surface) : std::next(surface);
    }
    return shape;
}

void expectSameShape(const Shape& before, const Shape& after)
{
    const double size = before.size();
    for (std::size_t axis = 0; axis < 3 && before.low[0] <= before.high[0]; ++axis) {
        EXPECT_NEAR(before.low[axis], after.low[axis], tolerance * size) << "axis " << axis;
        EXPECT_NEAR(before.high[axis], after.high[axis], tolerance * size) << "axis " << axis;
    }
    EXPECT_EQ(before.surfaces.size(), after.surfaces.size());
    for (const auto& [look, surface] : before.surfaces) {
        SCOPED_TRACE("faces of " + look);
        const auto found = after.surfaces.find(look);
        if (found == after.surfaces.end()) {
            ADD_FAILURE() << "there are none";
            continue;
        }
        expectSameSurface(surface, found->second, size);
    }
}

} // namespace test
