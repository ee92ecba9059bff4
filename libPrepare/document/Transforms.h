#pragma once

#include <libMath/Matrix.h>

#include <pugixml.hpp>

#include <array>
#include <string>
#include <vector>

namespace libPrepare {

/// Row-major, for points as columns, as everywhere in COLLADA.
using Matrix4 = libMath::Matrix<double, 4, 4>;
using Vector3 = std::array<double, 3>;

Matrix4 identity();
/// Inverse of any matrix; the identity if there is none.
Matrix4 inverse(const Matrix4& matrix);
Vector3 transformPoint(const Matrix4& matrix, const Vector3& point);
/// Transforms a direction, without the translation.
Vector3 transformVector(const Matrix4& matrix, const Vector3& vector);
/// The matrix for normals, a positive multiple of the inverse transpose. Also works for mirroring and singular
/// matrices.
Matrix4 normalMatrix(const Matrix4& matrix);

/// Whether the text of a `<rotate>` begins with a main axis in the usual notation.
bool isMainAxis(std::string_view numbers);

/// Whether an element name is `translate`, `rotate`, `scale`, `matrix`, `lookat` or `skew`.
bool isTransform(const char* name);
/// Number of values of such an element.
std::size_t transformSize(const char* name);
/// The matrix of one transform element from its numbers; missing numbers are 0.
Matrix4 transformMatrix(const char* name, std::vector<double> values);
/// The product of the declared transforms of a `<node>`, in document order.
Matrix4 localMatrix(pugi::xml_node node);
/// The world matrix of a node.
Matrix4 worldMatrix(pugi::xml_node node);
/// 16 numbers, row by row, as `<matrix>` holds them.
std::string text(const Matrix4& matrix);

} // namespace libPrepare
