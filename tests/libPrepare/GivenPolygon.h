#pragma once

#include <libPrepare/geometry/Tessellator.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace test {

/// A polygon whose corners are all different vertices.
struct GivenPolygon {
    std::vector<std::vector<libPrepare::Vector3>> loops;
    std::vector<std::int32_t> numbers; ///< the index of each corner, if it differs from its number

    /// The polygon points into this object.
    libPrepare::Polygon polygon();
};

/// Twice the area of a triangle, as a vector.
libPrepare::Vector3 areaOf(const libPrepare::Vector3& a, const libPrepare::Vector3& b, const libPrepare::Vector3& c);

/// Expects every edge of a loop once more often in its direction than in the opposite one, and diagonals equally often
/// in both.
/// @param triangles indices into the points, here and below
void expectEdges(const libPrepare::Polygon& polygon, const std::vector<std::size_t>& triangles);

/// Expects the triangles of a flat polygon to face where it faces, and to have its area in total.
void expectArea(const libPrepare::Polygon& polygon, const std::vector<std::size_t>& triangles);

/// The triangles of a polygon, checked by both functions.
std::vector<std::size_t> cut(GivenPolygon& given, bool isFlat = true);

} // namespace test
