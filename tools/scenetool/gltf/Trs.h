#pragma once

#include "../render/RenderMath.h"

#include <array>
#include <optional>

namespace scenetool {

/// A transform as glTF takes it apart: scale first, then rotation, then translation.
struct Trs {
    std::array<float, 3> translation{0.0f, 0.0f, 0.0f};
    std::array<float, 4> rotation{0.0f, 0.0f, 0.0f, 1.0f}; ///< A quaternion of length 1: x, y, z, w.
    std::array<float, 3> scale{1.0f, 1.0f, 1.0f};
};

/// Takes an affine matrix apart. @return nothing if it shears, or is not finite
std::optional<Trs> trsOf(const Matrix4& matrix);

/// Any affine matrix as two transforms, outer · inner; the inner one is a rotation. Both are the identity where the matrix is
/// not finite.
struct TrsPair {
    Trs outer;
    Trs inner;
};
TrsPair trsPairOf(const Matrix4& matrix);

/// The matrix that a transform stands for.
Matrix4 matrixOf(const Trs& trs);

} // namespace scenetool
