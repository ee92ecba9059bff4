#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
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

/// What a load has to make of a document.
struct PlainDocument {
    enum class Outcome {
        loads,
        isRefused,  ///< false, with a line that starts with `reason`
        throwsIndex ///< an exception because a curve's times have no element
    };

    Outcome outcome = Outcome::isRefused;
    std::string reason;
    std::vector<PlainNode> nodes; ///< breadth first; empty unless the document loads
    std::vector<PlainAnimation> animations;
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
