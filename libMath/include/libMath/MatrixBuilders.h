#pragma once // SPDX-License-Identifier: MIT

#include <libMath/Matrix.h>
#include <libMath/Vector.h>

#include <cmath>

namespace libMath {

/// Rotation about an axis through the origin, counter-clockwise as seen against its direction: a positive angle
/// about Z turns X towards Y.
///
/// With (x, y, z) the axis divided by its length, c = cos, s = sin of the angle and t = 1 − c:
///
///     x·t·x + c      x·t·y − z·s    x·t·z + y·s    0
///     x·t·y + z·s    y·t·y + c      y·t·z − x·s    0
///     x·t·z − y·s    y·t·z + x·s    z·t·z + c      0
///     0              0              0              1
///
/// @param axis of any length but 0, which gives NaN
inline Matrix<float, 4, 4> axisAngleRotationMatrix(const Vector<float, 3>& axis, double radians)
{
    const Vector<float, 3> unit = axis.normalized();
    const double x = unit[0];
    const double y = unit[1];
    const double z = unit[2];
    const double c = std::cos(radians);
    const double s = std::sin(radians);
    const double t = 1 - c;

    Matrix<float, 4, 4> result;
    result(0, 0) = static_cast<float>(x * t * x + c);
    result(0, 1) = static_cast<float>(x * t * y - z * s);
    result(0, 2) = static_cast<float>(x * t * z + y * s);
    result(1, 0) = static_cast<float>(x * t * y + z * s);
    result(1, 1) = static_cast<float>(y * t * y + c);
    result(1, 2) = static_cast<float>(y * t * z - x * s);
    result(2, 0) = static_cast<float>(x * t * z - y * s);
    result(2, 1) = static_cast<float>(y * t * z + x * s);
    result(2, 2) = static_cast<float>(z * t * z + c);
    result(3, 3) = 1.0f;
    return result;
}

/// Columns s, u, f and a translation, with f = (eye − interest) and s = (up × f), both of length 1, and u = f × s:
///
///     s.x    u.x    f.x    −(eye · s)
///     s.y    u.y    f.y    −(eye · u)
///     s.z    u.z    f.z    −(eye · f)
///     0      0      0      1
///
/// NaN where eye equals interest, or up is parallel to f.
inline Matrix<float, 4, 4> lookAtTransformMatrix(const Vector<float, 3>& eye, const Vector<float, 3>& interest,
                                                 const Vector<float, 3>& up)
{
    const Vector<float, 3> f = (eye - interest).normalized();
    const Vector<float, 3> s = up.cross(f).normalized();
    const Vector<float, 3> u = f.cross(s);

    Matrix<float, 4, 4> result;
    for (unsigned i = 0; i < 3; ++i) {
        result(i, 0) = s[i];
        result(i, 1) = u[i];
        result(i, 2) = f[i];
    }
    result(0, 3) = -eye.dot(s);
    result(1, 3) = -eye.dot(u);
    result(2, 3) = -eye.dot(f);
    result(3, 3) = 1.0f;
    return result;
}

} // namespace libMath
