#include "GivenPolygon.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <numeric>
#include <utility>

namespace test {

using namespace libPrepare;

namespace {

Vector3 minus(const Vector3& a, const Vector3& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

double length(const Vector3& vector)
{
    return std::sqrt(vector[0] * vector[0] + vector[1] * vector[1] + vector[2] * vector[2]);
}

} // namespace

Vector3 areaOf(const Vector3& a, const Vector3& b, const Vector3& c)
{
    const Vector3 u = minus(b, a);
    const Vector3 v = minus(c, a);
    return {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
}

void expectEdges(const Polygon& polygon, const std::vector<std::size_t>& triangles)
{
    std::map<std::pair<std::int32_t, std::int32_t>, int> edges;
    const auto add = [&](std::size_t from, std::size_t to, int count) {
        const std::int32_t a = polygon.tuples[from];
        const std::int32_t b = polygon.tuples[to];
        edges[{a, b}] += count;
        edges[{b, a}] -= count;
    };
    ASSERT_EQ(0U, triangles.size() % 3);
    for (std::size_t i = 0; i < triangles.size(); i += 3) {
        add(triangles[i], triangles[i + 1], 1);
        add(triangles[i + 1], triangles[i + 2], 1);
        add(triangles[i + 2], triangles[i], 1);
    }
    std::size_t start = 0;
    for (const std::size_t size : polygon.lengths) {
        for (std::size_t i = 0; i < size; ++i) {
            add(start + i, start + (i + 1) % size, -1);
        }
        start += size;
    }
    for (const auto& edge : edges) {
        EXPECT_EQ(0, edge.second) << "edge from " << edge.first.first << " to " << edge.first.second;
    }
    EXPECT_EQ(polygon.points.size() + 2 * polygon.lengths.size() - 4, triangles.size() / 3);
}

void expectArea(const Polygon& polygon, const std::vector<std::size_t>& triangles)
{
    Vector3 whole{};
    std::size_t start = 0;
    for (const std::size_t size : polygon.lengths) {
        for (std::size_t i = 1; i + 1 < size; ++i) {
            const Vector3 part =
                areaOf(polygon.points[start], polygon.points[start + i], polygon.points[start + i + 1]);
            for (std::size_t axis = 0; axis < 3; ++axis) {
                whole[axis] += part[axis];
            }
        }
        start += size;
    }
    const double expected = length(whole);
    double sum = 0;
    for (std::size_t i = 0; i + 2 < triangles.size(); i += 3) {
        const Vector3 area =
            areaOf(polygon.points[triangles[i]], polygon.points[triangles[i + 1]], polygon.points[triangles[i + 2]]);
        sum += length(area);
        const double along = (area[0] * whole[0] + area[1] * whole[1] + area[2] * whole[2]) / expected;
        EXPECT_GE(along, -1e-9 * expected) << "triangle " << i / 3 << " is turned over";
    }
    EXPECT_NEAR(1.0, sum / expected, 1e-6);
}

Polygon GivenPolygon::polygon()
{
    Polygon result;
    for (const auto& loop : loops) {
        result.points.insert(result.points.end(), loop.begin(), loop.end());
        result.lengths.push_back(loop.size());
    }
    if (numbers.empty()) {
        numbers.resize(result.points.size());
        std::iota(numbers.begin(), numbers.end(), 0);
    }
    result.tuples = numbers.data();
    result.stride = 1;
    return result;
}

std::vector<std::size_t> cut(GivenPolygon& given, bool isFlat)
{
    Tessellator tessellator;
    std::vector<std::size_t> triangles;
    const Polygon polygon = given.polygon();
    EXPECT_EQ(Tessellator::Result::done, tessellator.triangulate(polygon, triangles));
    expectEdges(polygon, triangles);
    if (isFlat) {
        expectArea(polygon, triangles);
    }
    return triangles;
}

} // namespace test
