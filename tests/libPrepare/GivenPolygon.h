#pragma once

#include <libPrepare/geometry/Tessellator.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace test {

/// A polygon whose corners are all different vertices.
struct GivenPolygon {
    std::vector<std::vector<libPrepare::Vector3>> loops;
    std::vector<std::int32_t> numbers; ///< an index for each corner, if not its own number

    /// It points into this.
    libPrepare::Polygon polygon();
};

/// Twice the area of a triangle, as a vector.
libPrepare::Vector3 areaOf(const libPrepare::Vector3& a, const libPrepare::Vector3& b, const libPrepare::Vector3& c);

/// Expects triangles with every edge of a loop once more often in its direction than against it, and with diagonals as
/// often in both.
/// @param triangles indices into the points, here and below
void expectEdges(const libPrepare::Polygon& polygon, const std::vector<std::size_t>& triangles);

/// Expects that the triangles of a flat polygon look where it looks and have its area together.
void expectArea(const libPrepare::Polygon& polygon, const std::vector<std::size_t>& triangles);

/// The triangles of a polygon, in which these things are expected.
std::vector<std::size_t> cut(GivenPolygon& given, bool isFlat = true);

} // namespace test
