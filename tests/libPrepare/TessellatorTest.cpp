#include <libPrepare/geometry/Tessellator.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <random>

namespace {

using namespace libPrepare;
using Triangles = std::vector<std::size_t>;

constexpr double pi = 3.14159265358979323846;

// A polygon whose corners are all different vertices.
struct Given {
    std::vector<std::vector<Vector3>> loops;
    std::vector<std::int32_t> numbers; // an index for each corner, if not its own number

    Polygon polygon()
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
};

Vector3 minus(const Vector3& a, const Vector3& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

// Twice the area of a triangle, as a vector.
Vector3 areaOf(const Vector3& a, const Vector3& b, const Vector3& c)
{
    const Vector3 u = minus(b, a);
    const Vector3 v = minus(c, a);
    return {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
}

double length(const Vector3& vector)
{
    return std::sqrt(vector[0] * vector[0] + vector[1] * vector[1] + vector[2] * vector[2]);
}

// Every edge of a loop once more often in its direction than against it, and diagonals as often in both.
void expectEdges(const Polygon& polygon, const Triangles& triangles)
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

// The triangles of a flat polygon look where it looks and have its area together.
void expectArea(const Polygon& polygon, const Triangles& triangles)
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

Triangles cut(Given& given, bool isFlat = true)
{
    Tessellator tessellator;
    Triangles triangles;
    const Polygon polygon = given.polygon();
    EXPECT_EQ(Tessellator::Result::done, tessellator.triangulate(polygon, triangles));
    expectEdges(polygon, triangles);
    if (isFlat) {
        expectArea(polygon, triangles);
    }
    return triangles;
}

TEST(TessellatorTest, ConvexPolygonIsAFanFromItsFirstCorner)
{
    Given given{{{{0, 0, 0}, {2, 0, 0}, {3, 1, 0}, {2, 2, 0}, {0, 2, 0}}}, {}};
    EXPECT_EQ((Triangles{0, 1, 2, 0, 2, 3, 0, 3, 4}), cut(given));
}

TEST(TessellatorTest, ConcaveQuadIsCutAtItsConcaveCorner)
{
    Given given{{{{0, 0, 0}, {4, 0, 0}, {1, 1, 0}, {0, 4, 0}}}, {}}; // a fan from corner 0 fits
    EXPECT_EQ((Triangles{0, 1, 2, 0, 2, 3}), cut(given));
    Given turned{{{{4, 0, 0}, {1, 1, 0}, {0, 4, 0}, {0, 0, 0}}}, {}}; // and one from corner 0 does not
    for (const std::size_t corner : {1U, 3U}) {
        const Triangles triangles = cut(turned);
        EXPECT_EQ(2, std::count(triangles.begin(), triangles.end(), corner));
    }
}

TEST(TessellatorTest, HoleIsLeftOpen)
{
    // 16 less 4
    Given given{{{{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}}, {{1, 1, 0}, {1, 3, 0}, {3, 3, 0}, {3, 1, 0}}}, {}};
    cut(given);
}

TEST(TessellatorTest, HoleThatGoesRoundLikeTheFaceIsLeftOpenToo)
{
    Given given{{{{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}}, {{1, 1, 0}, {3, 1, 0}, {3, 3, 0}, {1, 3, 0}}}, {}};
    Tessellator tessellator;
    Triangles triangles;
    const Polygon polygon = given.polygon();
    ASSERT_EQ(Tessellator::Result::done, tessellator.triangulate(polygon, triangles));
    double sum = 0;
    for (std::size_t i = 0; i + 2 < triangles.size(); i += 3) {
        sum += areaOf(polygon.points[triangles[i]], polygon.points[triangles[i + 1]],
                      polygon.points[triangles[i + 2]])[2] /
               2;
    }
    EXPECT_NEAR(12.0, sum, 1e-9);
}

TEST(TessellatorTest, HoleThatIsJoinedByADoubleEdgeIsLeftOpen)
{
    // 0 to 3 around, 4 to 7 the hole; the corners 0 and 4 come twice
    const std::vector<Vector3> v = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0},
                                    {1, 1, 0}, {1, 3, 0}, {3, 3, 0}, {3, 1, 0}};
    Given given{{{v[0], v[1], v[2], v[3], v[0], v[4], v[5], v[6], v[7], v[4]}}, {0, 1, 2, 3, 0, 4, 5, 6, 7, 4}};
    cut(given);
}

TEST(TessellatorTest, CornersAtOnePlaceKeepTheirEdges)
{
    // Two squares that touch in the middle, at corners of their own.
    Given given{{{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {2, 1, 0}, {2, 2, 0}, {1, 2, 0}, {1, 1, 0}, {0, 1, 0}}}, {}};
    cut(given);
}

TEST(TessellatorTest, PolygonThatCrossesItselfGetsNoNewCorner)
{
    Given star; // a pentagram
    star.loops.emplace_back();
    for (int i = 0; i < 5; ++i) {
        star.loops[0].push_back({std::cos(i * 0.8 * pi), std::sin(i * 0.8 * pi), 0});
    }
    cut(star, false);
}

TEST(TessellatorTest, PolygonWithoutAreaGivesNothing)
{
    Tessellator tessellator;
    Triangles triangles;
    Given line{{{{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {3, 3, 3}}}, {}};
    EXPECT_EQ(Tessellator::Result::flat, tessellator.triangulate(line.polygon(), triangles));
    Given point{{{{5, 5, 5}, {5, 5, 5}, {5, 5, 5}, {5, 5, 5}}}, {}};
    EXPECT_EQ(Tessellator::Result::flat, tessellator.triangulate(point.polygon(), triangles));
    EXPECT_TRUE(triangles.empty());
}

// Made-up polygons: stars with as many corners as the row says, turned in space.
struct Shape {
    const char* name;
    double size;
    double bend; // how far corners leave the plane, as a share of the size
    bool hasHoles;
    bool hasCollinear;
};

void PrintTo(const Shape& row, std::ostream* out)
{
    *out << row.name;
}

class TessellatorShapesTest : public testing::TestWithParam<Shape> {};

TEST_P(TessellatorShapesTest, KeepsEdgesAndArea)
{
    const Shape& shape = GetParam();
    std::mt19937 random(20260701);
    const auto uniform = [&](double low, double high) {
        return low + (high - low) * (static_cast<double>(random()) / 4294967296.0);
    };
    for (int round = 0; round < 500; ++round) {
        const std::size_t corners = 4 + random() % 40;
        const double tilt = uniform(0, pi);
        const double turn = uniform(0, 2 * pi);
        const auto place = [&](double x, double y) {
            const double z = shape.bend * uniform(-1, 1);
            const double y2 = y * std::cos(tilt) - z * std::sin(tilt);
            const double z2 = y * std::sin(tilt) + z * std::cos(tilt);
            return Vector3{shape.size * (x * std::cos(turn) - y2 * std::sin(turn)),
                           shape.size * (x * std::sin(turn) + y2 * std::cos(turn)), shape.size * z2};
        };
        Given given;
        given.loops.emplace_back();
        std::vector<std::pair<double, double>> outline;
        for (std::size_t i = 0; i < corners; ++i) {
            const double angle = 2 * pi * static_cast<double>(i) / static_cast<double>(corners);
            const double radius = uniform(0.5, 2);
            outline.emplace_back(radius * std::cos(angle), radius * std::sin(angle));
        }
        for (std::size_t i = 0; i < corners; ++i) {
            const auto [x, y] = outline[i];
            const auto [nextX, nextY] = outline[(i + 1) % corners];
            given.loops[0].push_back(place(x, y));
            if (shape.hasCollinear) {
                given.loops[0].push_back(place((x + nextX) / 2, (y + nextY) / 2));
            }
        }
        for (int hole = 0; shape.hasHoles && corners > 8 && hole < 3; ++hole) { // within 0.3 of the middle, clockwise
            given.loops.emplace_back();
            for (int i = 0; i < 5; ++i) {
                const double angle = -2 * pi * i / 5;
                const double radius = uniform(0.03, 0.1);
                given.loops.back().push_back(place(0.2 * std::cos(hole * 2.1) + radius * std::cos(angle),
                                                   0.2 * std::sin(hole * 2.1) + radius * std::sin(angle)));
            }
        }
        SCOPED_TRACE(round);
        cut(given, shape.bend == 0);
        if (testing::Test::HasFailure()) {
            return;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Stars, TessellatorShapesTest,
                         testing::Values(Shape{"Concave", 1, 0, false, false}, Shape{"Tiny", 1e-30, 0, false, false},
                                         Shape{"Huge", 1e30, 0, false, false}, Shape{"Bent", 1, 0.3, false, false},
                                         Shape{"Collinear", 1, 0, false, true}, Shape{"Holes", 1, 0, true, false},
                                         Shape{"BentWithHoles", 1, 0.1, true, true},
                                         Shape{"HugeWithHoles", 1e18, 0, true, true}),
                         [](const auto& row) { return row.param.name; });

TEST(TessellatorTest, EarsKeepEdgesAndAreaOfWhateverIsGivenToThem)
{
    std::mt19937 random(7);
    const auto uniform = [&](double low, double high) {
        return low + (high - low) * (static_cast<double>(random()) / 4294967296.0);
    };
    for (int round = 0; round < 1000; ++round) {
        std::vector<Point2> points;
        Given given;
        std::vector<std::vector<std::size_t>> loops;
        const int holes = static_cast<int>(random() % 4);
        for (int loop = 0; loop <= holes; ++loop) {
            const int corners = 3 + static_cast<int>(random() % (loop == 0 ? 60 : 6));
            loops.emplace_back();
            given.loops.emplace_back();
            for (int i = 0; i < corners; ++i) {
                const double angle = (loop == 0 ? 2 : -2) * pi * i / corners;
                const double radius = loop == 0 ? uniform(1, 3) : uniform(0.02, 0.1);
                const double away = loop == 0 || corners < 3 ? 0 : 0.2;
                loops.back().push_back(points.size());
                points.push_back({away * std::cos(2.1 * loop) + radius * std::cos(angle),
                                  away * std::sin(2.1 * loop) + radius * std::sin(angle)});
                given.loops.back().push_back({points.back().x, points.back().y, 0});
            }
        }
        if (loops[0].size() < 8 && holes > 0) {
            continue; // the holes may lie outside
        }
        SCOPED_TRACE(round);
        std::uint64_t steps = 1000000;
        Triangles triangles;
        ASSERT_TRUE(clipEars(points, loops, steps, triangles));
        const Polygon polygon = given.polygon();
        expectEdges(polygon, triangles);
        expectArea(polygon, triangles);
        if (testing::Test::HasFailure()) {
            return;
        }
    }
}

TEST(TessellatorTest, EarsThatTakeTooLongAreCutOffAsTheyCome)
{
    std::vector<Point2> points;
    std::vector<std::vector<std::size_t>> loops(1);
    Given given;
    given.loops.emplace_back();
    for (std::size_t i = 0; i < 1000; ++i) {
        const double x = static_cast<double>(i * 7919 % 1009);
        const double y = static_cast<double>(i * 104729 % 1013);
        points.push_back({x, y});
        loops[0].push_back(i);
        given.loops[0].push_back({x, y, 0});
    }
    std::uint64_t steps = 5000;
    Triangles triangles;
    ASSERT_TRUE(clipEars(points, loops, steps, triangles));
    EXPECT_EQ(0U, steps);
    expectEdges(given.polygon(), triangles);
    loops.push_back({0, 1, 2});
    EXPECT_FALSE(clipEars(points, loops, steps, triangles));
}

} // namespace
