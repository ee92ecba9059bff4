#include "Transforms.h"

#include "Document.h"
#include "Numbers.h"

#include <cmath>
#include <cstring>

namespace libPrepare {

namespace {

constexpr double radiansPerDegree = 3.14159265358979323846 / 180.0;

double dot(const Vector3& a, const Vector3& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Vector3 cross(const Vector3& a, const Vector3& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Vector3 difference(const Vector3& a, const Vector3& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

Vector3 scaled(const Vector3& vector, double factor)
{
    return {vector[0] * factor, vector[1] * factor, vector[2] * factor};
}

Vector3 normalized(const Vector3& vector)
{
    const double length = std::sqrt(dot(vector, vector));
    return length > 0 ? scaled(vector, 1 / length) : vector;
}

Matrix4 rotation(const std::vector<double>& values)
{
    Matrix4 result = identity();
    const Vector3 axis{values[0], values[1], values[2]};
    if (dot(axis, axis) == 0) {
        return result; // no axis, no rotation
    }
    const Vector3 unit = normalized(axis);
    const double s = std::sin(values[3] * radiansPerDegree);
    const double t = 1 - std::cos(values[3] * radiansPerDegree);
    const double k[3][3] = {{0, -unit[2], unit[1]}, {unit[2], 0, -unit[0]}, {-unit[1], unit[0], 0}};
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column) {
            double square = 0;
            for (unsigned i = 0; i < 3; ++i) {
                square += k[row][i] * k[i][column];
            }
            result(row, column) += s * k[row][column] + t * square;
        }
    }
    return result;
}

// The image of X under the shortest rotation that maps Z to a unit vector; for -Z it is the rotation about Y.
Vector3 straightRight(const Vector3& back)
{
    const double factor = 1 + back[2];
    if (!(factor > 1e-12)) {
        return {-1, 0, 0};
    }
    return {1 - back[0] * back[0] / factor, -back[0] * back[1] / factor, -back[0]};
}

// A node at the eye whose -Z points at the interest. If up has the same direction, it is ignored and the rotation is
// the shortest one.
Matrix4 lookat(const std::vector<double>& values)
{
    const Vector3 eye{values[0], values[1], values[2]};
    const Vector3 back = normalized(difference(eye, {values[3], values[4], values[5]}));
    const Vector3 across = cross({values[6], values[7], values[8]}, back);
    const Vector3 right = dot(across, across) > 0 || !(dot(back, back) > 0) ? normalized(across) : straightRight(back);
    const Vector3 up = cross(back, right);
    Matrix4 result = identity();
    for (unsigned row = 0; row < 3; ++row) {
        result(row, 0) = right[row];
        result(row, 1) = up[row];
        result(row, 2) = back[row];
        result(row, 3) = eye[row];
    }
    return result;
}

// Shifts along the second axis so that the first turns by the angle towards it, as RenderMan defines it.
Matrix4 skew(const std::vector<double>& values)
{
    const double angle = values[0] * radiansPerDegree;
    const Vector3 along = normalized({values[4], values[5], values[6]});
    const Vector3 first = normalized({values[1], values[2], values[3]});
    const Vector3 across = normalized(difference(first, scaled(along, dot(first, along))));
    const double a1 = dot(first, across);
    const double a2 = dot(first, along);
    const double rx = a1 * std::cos(angle) - a2 * std::sin(angle);
    const double ry = a1 * std::sin(angle) + a2 * std::cos(angle);
    Matrix4 result = identity();
    if (rx > 0 && a1 > 0) {
        for (unsigned row = 0; row < 3; ++row) {
            for (unsigned column = 0; column < 3; ++column) {
                result(row, column) += (ry / rx - a2 / a1) * along[row] * across[column];
            }
        }
    }
    return result;
}

} // namespace

Matrix4 identity()
{
    Matrix4 result;
    result.setIdentity();
    return result;
}

Matrix4 inverse(const Matrix4& matrix)
{
    double rows[4][8] = {};
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            rows[row][column] = matrix[4 * row + column];
        }
        rows[row][4 + row] = 1;
    }
    for (unsigned step = 0; step < 4; ++step) {
        unsigned best = step;
        for (unsigned row = step + 1; row < 4; ++row) {
            if (std::abs(rows[row][step]) > std::abs(rows[best][step])) {
                best = row;
            }
        }
        if (!(std::abs(rows[best][step]) > 0)) {
            return identity();
        }
        std::swap(rows[step], rows[best]);
        const double pivot = rows[step][step];
        for (double& value : rows[step]) {
            value /= pivot;
        }
        for (unsigned row = 0; row < 4; ++row) {
            const double factor = rows[row][step];
            for (unsigned column = 0; row != step && column < 8; ++column) {
                rows[row][column] -= factor * rows[step][column];
            }
        }
    }
    Matrix4 result;
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            result(row, column) = rows[row][4 + column];
        }
    }
    return result;
}

Vector3 transformPoint(const Matrix4& matrix, const Vector3& point)
{
    Vector3 result = transformVector(matrix, point);
    for (unsigned row = 0; row < 3; ++row) {
        result[row] += matrix[4 * row + 3];
    }
    return result;
}

Vector3 transformVector(const Matrix4& matrix, const Vector3& vector)
{
    Vector3 result{};
    for (unsigned row = 0; row < 3; ++row) {
        result[row] = matrix[4 * row] * vector[0] + matrix[4 * row + 1] * vector[1] + matrix[4 * row + 2] * vector[2];
    }
    return result;
}

Matrix4 normalMatrix(const Matrix4& matrix)
{
    Vector3 rows[3];
    for (unsigned row = 0; row < 3; ++row) {
        rows[row] = {matrix[4 * row], matrix[4 * row + 1], matrix[4 * row + 2]};
    }
    const Vector3 cofactors[3] = {cross(rows[1], rows[2]), cross(rows[2], rows[0]), cross(rows[0], rows[1])};
    const double sign = dot(rows[0], cofactors[0]) < 0 ? -1 : 1;
    Matrix4 result = identity();
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column) {
            result(row, column) = sign * cofactors[row][column];
        }
    }
    return result;
}

bool isMainAxis(std::string_view numbers)
{
    const std::string_view start = numbers.substr(0, 6);
    return start == "1 0 0 " || start == "0 1 0 " || start == "0 0 1 ";
}

bool isTransform(const char* name)
{
    return transformSize(name) > 0;
}

std::size_t transformSize(const char* name)
{
    static constexpr struct {
        const char* name;
        std::size_t size;
    } sizes[] = {{"translate", 3}, {"rotate", 4}, {"scale", 3}, {"matrix", 16}, {"lookat", 9}, {"skew", 7}};
    for (const auto& entry : sizes) {
        if (areEqual(entry.name, name)) {
            return entry.size;
        }
    }
    return 0;
}

Matrix4 transformMatrix(const char* name, std::vector<double> values)
{
    values.resize(std::max<std::size_t>(values.size(), 16));
    const std::string_view kind = name;
    if (kind == "rotate") {
        return rotation(values);
    }
    if (kind == "lookat") {
        return lookat(values);
    }
    if (kind == "skew") {
        return skew(values);
    }
    Matrix4 result = identity();
    if (kind == "matrix") {
        for (unsigned i = 0; i < 16; ++i) {
            result[i] = values[i];
        }
    } else if (kind == "translate") {
        for (unsigned row = 0; row < 3; ++row) {
            result(row, 3) = values[row];
        }
    } else if (kind == "scale") {
        for (unsigned row = 0; row < 3; ++row) {
            result(row, row) = values[row];
        }
    }
    return result;
}

Matrix4 localMatrix(pugi::xml_node node)
{
    Matrix4 result = identity();
    for (const pugi::xml_node child : node.children()) {
        if (isTransform(child.name())) {
            result = result * transformMatrix(child.name(), numbersOf(child));
        }
    }
    return result;
}

Matrix4 worldMatrix(pugi::xml_node node)
{
    Matrix4 result = identity();
    for (; std::strcmp(node.name(), "node") == 0; node = node.parent()) {
        result = localMatrix(node) * result;
    }
    return result;
}

std::string text(const Matrix4& matrix)
{
    std::vector<double> values(16);
    for (unsigned i = 0; i < 16; ++i) {
        values[i] = matrix[i];
    }
    return text(values);
}

} // namespace libPrepare
