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

/// A 4 by 4 matrix of `double`, row by row, and the size of the terms behind its numbers.
struct PlainMatrix {
    std::array<double, 16> value{};
    /// For each element, the sum of the magnitudes of its terms. Rounding is measured against this, since terms may
    /// cancel out.
    std::array<double, 16> magnitude{};
};

PlainMatrix plainIdentity();
PlainMatrix operator*(const PlainMatrix& left, const PlainMatrix& right);

/// A `<node>` after a load.
struct PlainNode {
    std::string id;
    std::string sid;
    std::string name;
    std::optional<std::size_t> parent; ///< index in the list of nodes; nothing for children of the visual scene
    std::vector<std::size_t> children;
    PlainMatrix local;
    bool isAnimated = false;
};

/// An `<animation>` that is a child of a `<library_animations>`.
struct PlainAnimation {
    bool isComplete = false; ///< whether everything that it refers to exists and fits
    std::string targetNode;  ///< both empty if it is incomplete or has no target
    std::string targetTransform;
    std::optional<std::size_t> node; ///< the node that it animates, if any
    bool mayMeetCamera = false;      ///< whether its target could be a camera
};

/// One attribute of a vertex, with the numbers of its layout.
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
    /// The vertex stream, four bytes per entry; nothing where the bytes are unspecified.
    std::vector<std::optional<float>> vertices;
};

/// A `<geometry>` that a node shows.
struct PlainGeometry {
    std::string name;
    std::size_t node = 0; ///< the node that is listed as showing it
    std::vector<PlainPrimitive> primitives;
};

/// One channel of a material.
struct PlainColor {
    std::array<float, 3> value = {1.0f, 1.0f, 1.0f};
    std::optional<std::string> texture; ///< its file, empty if the chain to it breaks off; nothing without a texture
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

/// The expected result of loading a document.
struct PlainDocument {
    enum class Outcome {
        loads,
        isRefused, ///< returns false, with a message that starts with `reason`
        throws     ///< throws the exception that `reason` names
    };

    Outcome outcome = Outcome::isRefused;
    std::string reason;
    std::string expression;       ///< of an `AssertionFailure`
    std::vector<PlainNode> nodes; ///< breadth first; empty unless the document loads or a geometry throws
    std::vector<PlainAnimation> animations;
    std::map<std::string, PlainGeometry> geometries; ///< by id; only those before one that throws
    std::map<std::string, PlainMaterial> materials;  ///< by symbol
    /// Channel and text of the messages about geometries and materials, in order.
    std::vector<std::pair<std::string, std::string>> lines;
    /// Whether a relevant reference leads to another file; it is not followed.
    bool leadsElsewhere = false;

    /// The world matrix of each node.
    std::vector<PlainMatrix> worldMatrices() const;
    /// Whether the node or one above it is animated.
    bool moves(std::size_t node) const;
};

/// Reads a document with a plain XML parser and in `double`, as an independent reference for a load. It shares no code
/// with the library.
PlainDocument readPlainly(const std::string& path);

} // namespace documents
