#pragma once

#include <libMath/Matrix.h>
#include <libMath/Vector.h>

#include <array>
#include <cmath>

#include <gtest/gtest.h>

namespace testSupport {

using Matrix4 = libMath::Matrix<float, 4, 4>;
using Vector3 = libMath::Vector<float, 3>;
/// The elements of a matrix in storage order.
using Elements = std::array<float, 16>;
using Triple = std::array<float, 3>;

constexpr Triple triple(float x, float y, float z)
{
    return {x, y, z};
}

/// A matrix of sixteen numbers in storage order, which is shorter than braces in a table of cases.
template <class... Number>
constexpr Elements elementsOf(Number... numbers)
{
    static_assert(sizeof...(Number) == 16);
    return {static_cast<float>(numbers)...};
}

constexpr Elements zero{};
constexpr Elements identity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

constexpr Elements counting{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};

constexpr Elements translated(float x, float y, float z)
{
    return {1, 0, 0, x, 0, 1, 0, y, 0, 0, 1, z, 0, 0, 0, 1};
}

constexpr Elements scaled(float x, float y, float z)
{
    return {x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, 1};
}

inline Elements elements(const Matrix4& matrix)
{
    Elements all{};
    for (unsigned i = 0; i < 16; ++i) {
        all[i] = matrix[i];
    }
    return all;
}

inline Matrix4 matrixOf(const Elements& values)
{
    Matrix4 matrix;
    for (unsigned i = 0; i < 16; ++i) {
        matrix[i] = values[i];
    }
    return matrix;
}

inline Triple triple(const Vector3& vector)
{
    return {vector[0], vector[1], vector[2]};
}

/// Expects equal numbers, bit for bit except for the sign of zero; NaN where NaN is expected.
inline void expectSame(const Elements& expected, const Elements& actual)
{
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (std::isnan(expected[i])) {
            EXPECT_TRUE(std::isnan(actual[i])) << "element " << i << ": " << actual[i];
        } else {
            EXPECT_EQ(expected[i], actual[i]) << "element " << i;
        }
    }
}

inline void expectNear(const Elements& expected, const Elements& actual, float tolerance = 1e-6f)
{
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(expected[i], actual[i], tolerance) << "element " << i;
    }
}

} // namespace testSupport
