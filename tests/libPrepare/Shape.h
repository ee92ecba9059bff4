#pragma once

#include "AssimpScene.h"

#include <cstddef>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace test {

/// A corner of a face in the world.
struct Corner {
    Vector position;
    std::optional<Vector> normal; ///< of length 1
    /// Texture coordinates of all sets in order, two numbers each, then the color with four numbers, if any.
    std::vector<double> coordinates;

    /// Whether it equals another corner, apart from rounding. @param distance greatest distance of their positions
    bool isLike(const Corner& other, double distance) const;
};

/// Faces with the same look. The sums do not depend on how polygons are cut into triangles.
struct Surface {
    std::size_t triangles = 0;   ///< including those of polygons, without faces that have no area
    double area = 0;             ///< for a bent polygon, the area of its projection onto the nearest plane
    double bend = 0;             ///< by how much the triangles of bent polygons exceed these projections
    Vector direction;            ///< area times normal
    Vector moment;               ///< area times center, without bent polygons
    std::vector<Corner> corners; ///< of all faces with an area
};

/// The faces of a document as another reader, Assimp, finds them in the world at second 0.
struct Shape {
    std::size_t triangles = 0;
    double area = 0;
    double low[3] = {infinity, infinity, infinity};
    double high[3] = {-infinity, -infinity, -infinity};
    /// By diffuse texture or color.
    std::map<std::string, Surface> surfaces;

    /// The longest side of the bounding box; 0 if it is empty.
    double size() const;

    static constexpr double infinity = std::numeric_limits<double>::infinity();
};

/// Expects the reader to accept the file.
Shape shapeOf(const std::string& file);
/// @param isByLook false puts all faces into one surface
Shape shapeOf(const AssimpScene& scene, bool isByLook = true);

/// A color or the name of a texture's file without its folder, as text; empty if the material has neither.
std::string lookOf(const aiMaterial& material, const char* key, unsigned type, unsigned index, aiTextureType texture);

/// Expects the same faces, however they are cut.
void expectSameShape(const Shape& before, const Shape& after);

} // namespace test
