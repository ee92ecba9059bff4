#pragma once

#include <libPrepare/document/Transforms.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace libPrepare {

/// A corner's position on the plane of its polygon.
struct Point2 {
    double x = 0;
    double y = 0;
};

/// A polygon to cut into triangles. The loops lie one after the other in all lists: the outer one, then the holes.
struct Polygon {
    std::vector<Vector3> points;      ///< One for each corner, finite.
    std::vector<std::size_t> lengths; ///< Corners of each loop, at least three.
    /// `stride` indices for each corner. Corners with the same indices are identical.
    const std::int32_t* tuples = nullptr;
    std::size_t stride = 0;
};

/// Cuts polygons into triangles between their own corners. No corner is added or left out, so that neighbours still
/// share whole edges.
class Tessellator {
public:
    enum class Result {
        done,
        flat,    ///< Has no area; no triangle was made.
        tooLong, ///< Has too many corners for such an entangled polygon; no triangle was made.
    };

    Tessellator();
    ~Tessellator();
    Tessellator(const Tessellator&) = delete;
    Tessellator& operator=(const Tessellator&) = delete;

    /// Appends three corner numbers for each triangle, in the direction of the outer loop. If a fan from the first
    /// corner fills the polygon, it is used; otherwise any valid triangles are made.
    Result triangulate(const Polygon& polygon, std::vector<std::size_t>& triangles);
    /// Whether a polygon with one loop is so clearly convex that `triangulate` makes a fan despite rounding. A quick
    /// test for most polygons.
    static bool isClearlyFan(const std::vector<Vector3>& points);

private:
    struct Glu;

    bool scale(const std::vector<Vector3>& points);
    bool findNormal(std::size_t corners);
    bool isFan() const;
    void cutQuad(std::vector<std::size_t>& triangles) const;
    void project(const Polygon& polygon);
    std::vector<std::vector<std::size_t>> turnedLoops(const Polygon& polygon) const;
    bool takePairs(std::uint64_t pairs);
    bool crossesItself(const Polygon& polygon);
    bool runGlu(const Polygon& polygon, std::vector<std::size_t>& triangles);
    void identify(const Polygon& polygon);
    bool coversAllEdges(const Polygon& polygon, const std::vector<std::size_t>& triangles);

    std::unique_ptr<Glu> m_glu;
    std::vector<Vector3> m_scaled; // the corners about the first one, within 1 of it
    Vector3 m_normal{};
    std::vector<Point2> m_flat; // m_scaled on the plane
    std::vector<std::size_t> m_starts;
    std::vector<bool> m_isTurned; // loops that go the wrong way round
    std::vector<std::pair<Point2, Point2>> m_edges;
    std::vector<std::size_t> m_order;
    std::vector<std::size_t> m_identities;          // of each corner the first that is the same
    std::uint64_t m_steps = std::uint64_t(1) << 26; // that ears may still take; corners bring more
    std::uint64_t m_pairs = std::uint64_t(1) << 29; // of edges that GLU may still meet: a polygon of 20,000 corners
};

/// Cuts off ears until nothing is left. Every edge of each loop is an edge of exactly one triangle, whatever the shape.
/// @param points of all corners
/// @param loops corner numbers: the outer loop counter-clockwise, then the holes clockwise
/// @param steps what it may take, about one for each corner looked at; what it took is subtracted. Once they are used up,
/// corners are cut off as they come.
/// @return false if they are used up before the holes are joined to the outer loop
bool clipEars(const std::vector<Point2>& points, const std::vector<std::vector<std::size_t>>& loops,
              std::uint64_t& steps, std::vector<std::size_t>& triangles);

} // namespace libPrepare
