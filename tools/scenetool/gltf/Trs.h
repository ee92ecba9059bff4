#pragma once

#include "../render/RenderMath.h"

#include <array>
#include <optional>

namespace scenetool {

/// A transform as a glTF node has it: scale, then rotation, then translation.
struct Trs {
    std::array<float, 3> translation{0.0f, 0.0f, 0.0f};
    std::array<float, 4> rotation{0.0f, 0.0f, 0.0f, 1.0f}; ///< Unit quaternion: x, y, z, w.
    std::array<float, 3> scale{1.0f, 1.0f, 1.0f};
};

/// Decomposes an affine matrix. @return nothing if it shears or is not finite
std::optional<Trs> trsOf(const Matrix4& matrix);

/// Any affine matrix as the product of two transforms, outer · inner, of which the inner one is a rotation. Both are
/// the identity if the matrix is not finite.
struct TrsPair {
    Trs outer;
    Trs inner;
};
TrsPair trsPairOf(const Matrix4& matrix);

/// The matrix of a transform.
Matrix4 matrixOf(const Trs& trs);

} // namespace scenetool
