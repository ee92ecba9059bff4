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
    /// Of all sets, by their number: two numbers each, and then the color, four, if there is one.
    std::vector<double> coordinates;

    /// Whether it is the same corner as another, but for rounding. @param distance between their positions at most
    bool isLike(const Corner& other, double distance) const;
};

/// Faces that look alike. What is added up is the same however a polygon is cut into triangles.
struct Surface {
    std::size_t triangles = 0;   ///< those of polygons included; faces without area are left out
    double area = 0;             ///< of a bent polygon, that of its shadow on the plane that it is nearest to
    double bend = 0;             ///< by how much the triangles of bent polygons are larger than these shadows
    Vector direction;            ///< area times normal
    Vector moment;               ///< area times center, of all but bent polygons
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

    /// The longest side of what it fills; 0 if it is empty.
    double size() const;

    static constexpr double infinity = std::numeric_limits<double>::infinity();
};

/// Expects that the reader takes the file.
Shape shapeOf(const std::string& file);
/// @param isByLook false puts all faces into one surface
Shape shapeOf(const AssimpScene& scene, bool isByLook = true);

/// A color or the name of a texture's file without its folder, as text; empty if the material has neither.
std::string lookOf(const aiMaterial& material, const char* key, unsigned type, unsigned index, aiTextureType texture);

/// Expects the same faces, wherever they may be cut.
void expectSameShape(const Shape& before, const Shape& after);

} // namespace test
