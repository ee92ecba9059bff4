#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace documents {

/// A 4 by 4 matrix of `double`, row by row, with what its numbers were added up from.
struct PlainMatrix {
    std::array<double, 16> value{};
    /// For each element the sum of the magnitudes of the terms that it is made of. Rounding is measured against this,
    /// since terms may cancel each other out.
    std::array<double, 16> magnitude{};
};

PlainMatrix plainIdentity();
PlainMatrix operator*(const PlainMatrix& left, const PlainMatrix& right);

/// A `<node>`, as it stands after a load.
struct PlainNode {
    std::string id;
    std::string sid;
    std::string name;
    std::optional<std::size_t> parent; ///< place in the list of nodes; nothing right below the visual scene
    std::vector<std::size_t> children;
    PlainMatrix local;
    bool isAnimated = false;
};

/// An `<animation>` right below a `<library_animations>`.
struct PlainAnimation {
    bool isComplete = false; ///< whether all that it refers to is there and fits
    std::string targetNode;  ///< both empty if it is not complete, or aims at nothing
    std::string targetTransform;
    std::optional<std::size_t> node; ///< the one that it animates, if there is one
    bool mayMeetCamera = false;      ///< whether a camera could be what it aims at
};

/// One attribute of a vertex, with the numbers that stand in a layout.
struct PlainAttribute {
    std::uint32_t semantic = 15;
    std::uint32_t byteSize = 0;
    std::uint32_t byteOffset = 0;
    std::uint32_t dataType = 9;
};

/// A `<triangles>`, or a `<vertices>` as points.
struct PlainPrimitive {
    std::uint32_t type = 8; ///< 4 triangles, 7 points, 8 neither
    std::string id;
    std::string material;
    std::uint32_t count = 0;
    std::uint32_t vertexPerPrimitive = 0;
    std::uint32_t bytesPerVertex = 0;
    std::vector<PlainAttribute> layout;
    std::vector<std::uint32_t> indices;
    /// The vertex stream, four bytes an entry; nothing where the bytes are not told.
    std::vector<std::optional<float>> vertices;
};

/// A `<geometry>` that a node shows.
struct PlainGeometry {
    std::string name;
    std::size_t node = 0; ///< the one that is listed as showing it
    std::vector<PlainPrimitive> primitives;
};

/// One channel of a material.
struct PlainColor {
    std::array<float, 3> value = {1.0f, 1.0f, 1.0f};
    std::optional<std::string> texture; ///< its file, empty if the way there breaks off; nothing without a texture
};

/// A `<blinn>` or `<phong>`.
struct PlainMaterial {
    float shininess = 0.0f;
    float transparency = 0.0f;
    PlainColor emission;
    PlainColor ambient;
    PlainColor diffuse;
    PlainColor specular;
    PlainColor reflective;
};

/// What a load has to make of a document.
struct PlainDocument {
    enum class Outcome {
        loads,
        isRefused, ///< false, with a line that starts with `reason`
        throws     ///< the exception that `reason` names
    };

    Outcome outcome = Outcome::isRefused;
    std::string reason;
    std::string expression;       ///< of an "AssertionFailure"
    std::vector<PlainNode> nodes; ///< breadth first; empty unless the document loads or a geometry throws
    std::vector<PlainAnimation> animations;
    std::map<std::string, PlainGeometry> geometries; ///< by id; those that stand before one that throws
    std::map<std::string, PlainMaterial> materials;  ///< by symbol
    /// Channel and words of the lines about geometries and materials, in order.
    std::vector<std::pair<std::string, std::string>> lines;
    /// A reference that matters here leads to another file, which is not followed.
    bool leadsElsewhere = false;

    /// Of each node, its ancestors folded in.
    std::vector<PlainMatrix> worldMatrices() const;
    /// Whether the node or one above it is animated.
    bool moves(std::size_t node) const;
};

/// Reads a document with a plain XML parser, by rules written down anew and in `double`, so that a load can be compared
/// with it. It shares no code with the library.
PlainDocument readPlainly(const std::string& path);

} // namespace documents
