#pragma once

#include <libMath/Matrix.h>
#include <libMath/Vector.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

namespace scenetool {

/// Matrices as the library has them: row-major, points are columns on the right, p' = M · p.
using Matrix4 = libMath::Matrix<float, 4, 4>;
using Vector3 = libMath::Vector<float, 3>;

inline Matrix4 identity()
{
    Matrix4 result;
    result.setIdentity();
    return result;
}

inline bool isFinite(const Matrix4& matrix)
{
    for (unsigned i = 0; i < 16; ++i) {
        if (!std::isfinite(matrix[i])) {
            return false;
        }
    }
    return true;
}

inline bool isZero(const Matrix4& matrix)
{
    for (unsigned i = 0; i < 16; ++i) {
        if (matrix[i] != 0.0f) {
            return false;
        }
    }
    return true;
}

inline Matrix4 transposed(const Matrix4& matrix)
{
    Matrix4 result;
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            result(column, row) = matrix[4 * row + column];
        }
    }
    return result;
}

/// @return nothing for a matrix that is singular or not finite
inline std::optional<Matrix4> inverse(const Matrix4& matrix)
{
    // Gauss-Jordan elimination with partial pivoting.
    std::array<std::array<double, 8>, 4> rows{};
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            rows[row][column] = static_cast<double>(matrix[4 * row + column]);
        }
        rows[row][4 + row] = 1.0;
    }
    for (unsigned column = 0; column < 4; ++column) {
        unsigned pivot = column;
        for (unsigned row = column + 1; row < 4; ++row) {
            pivot = std::fabs(rows[row][column]) > std::fabs(rows[pivot][column]) ? row : pivot;
        }
        const double divisor = rows[pivot][column];
        if (!std::isfinite(divisor) || divisor == 0.0) {
            return std::nullopt;
        }
        std::swap(rows[column], rows[pivot]);
        for (double& element : rows[column]) {
            element /= divisor;
        }
        for (unsigned row = 0; row < 4; ++row) {
            const double factor = rows[row][column];
            for (unsigned i = 0; row != column && i < 8; ++i) {
                rows[row][i] -= factor * rows[column][i];
            }
        }
    }
    Matrix4 result;
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            result(row, column) = static_cast<float>(rows[row][4 + column]);
        }
    }
    return isFinite(result) ? std::optional<Matrix4>(result) : std::nullopt;
}

inline Vector3 scaled(const Vector3& vector, float factor)
{
    return {vector[0] * factor, vector[1] * factor, vector[2] * factor};
}

inline Vector3 sum(const Vector3& a, const Vector3& b)
{
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

inline float length(const Vector3& vector)
{
    return std::sqrt(vector.dot(vector));
}

inline Vector3 columnOf(const Matrix4& matrix, unsigned column)
{
    return {matrix[column], matrix[4 + column], matrix[8 + column]};
}

/// Transforms a point by an affine matrix.
inline Vector3 transformedPoint(const Matrix4& matrix, const Vector3& point)
{
    Vector3 result;
    for (unsigned row = 0; row < 3; ++row) {
        result[row] = matrix[4 * row] * point[0] + matrix[4 * row + 1] * point[1] + matrix[4 * row + 2] * point[2] +
                      matrix[4 * row + 3];
    }
    return result;
}

/// The axis-aligned bounding box of points.
class Box {
public:
    bool isEmpty() const { return m_low[0] > m_high[0]; }
    Vector3 center() const { return scaled(sum(m_low, m_high), 0.5f); }
    /// Offset of a corner from the center. @param number 0 to 7
    Vector3 corner(unsigned number) const
    {
        const Vector3 half = scaled(m_high - m_low, 0.5f);
        return {(number & 1u) != 0 ? half[0] : -half[0], (number & 2u) != 0 ? half[1] : -half[1],
                (number & 4u) != 0 ? half[2] : -half[2]};
    }
    /// Half of the diagonal: the radius of the smallest sphere around the box.
    float radius() const { return isEmpty() ? 0.0f : 0.5f * length(m_high - m_low); }

    /// Ignores a point that is not finite.
    void add(const Vector3& point)
    {
        if (!std::isfinite(point[0]) || !std::isfinite(point[1]) || !std::isfinite(point[2])) {
            return;
        }
        for (unsigned i = 0; i < 3; ++i) {
            m_low[i] = std::min(m_low[i], point[i]);
            m_high[i] = std::max(m_high[i], point[i]);
        }
    }

private:
    static constexpr float infinity = std::numeric_limits<float>::infinity();

    Vector3 m_low{infinity, infinity, infinity};
    Vector3 m_high{-infinity, -infinity, -infinity};
};

} // namespace scenetool
