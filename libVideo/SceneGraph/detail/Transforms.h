#pragma once

/// @file
/// Builds the matrices of the transform elements.

#include <libMath/Matrix.h>
#include <libMath/MatrixBuilders.h>
#include <libMath/Vector.h>

namespace libVideo::detail {

inline double radians(double degrees)
{
    return degrees * 3.141592653589793 / 180.0;
}

inline libMath::Matrix<float, 4, 4> translationMatrix(const libMath::Vector<float, 3>& translation)
{
    libMath::Matrix<float, 4, 4> matrix;
    matrix.setIdentity();
    for (unsigned i = 0; i < 3; ++i) {
        matrix(i, 3) = translation[i];
    }
    return matrix;
}

inline libMath::Matrix<float, 4, 4> scaleMatrix(const libMath::Vector<float, 3>& scale)
{
    libMath::Matrix<float, 4, 4> matrix;
    for (unsigned i = 0; i < 3; ++i) {
        matrix(i, i) = scale[i];
    }
    matrix(3, 3) = 1.0f;
    return matrix;
}

inline libMath::Matrix<float, 4, 4> rotationMatrix(const libMath::Vector<float, 3>& axis, double degrees)
{
    return libMath::axisAngleRotationMatrix(axis, radians(degrees));
}

} // namespace libVideo::detail
