#include "GivenPolygon.h"

#include "support/Rows.h"

#include <libPrepare/geometry/Tessellator.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace {

using namespace libPrepare;
using namespace test;
using Triangles = std::vector<std::size_t>;

constexpr double pi = 3.14159265358979323846;

TEST(TessellatorTest, ConvexPolygonIsAFanFromItsFirstCorner)
{
    GivenPolygon given{{{{0, 0, 0}, {2, 0, 0}, {3, 1, 0}, {2, 2, 0}, {0, 2, 0}}}, {}};
    EXPECT_EQ((Triangles{0, 1, 2, 0, 2, 3, 0, 3, 4}), cut(given));
}

TEST(TessellatorTest, WhatIsClearlyAFanBecomesOne)
{
    std::mt19937 random(5);
    std::size_t clear = 0;
    const std::size_t all = 2'000;
    for (std::size_t round = 0; round < all; ++round) {
        const std::size_t corners = 4 + random() % 16;
        const double size = std::pow(10.0, static_cast<int>(random() % 61) - 30);
        const double roughness = std::pow(10.0, -static_cast<int>(random() % 8));
        GivenPolygon given{{{}}, {}};
        for (std::size_t i = 0; i < corners; ++i) { // nearly on a circle
            const double angle = 2 * pi * static_cast<double>(i) / static_cast<double>(corners);
            const double away = 1 - roughness * static_cast<double>(random()) / 4294967296.0;
            given.loops[0].push_back({size * away * std::cos(angle), size * away * std::sin(angle), size * 3});
        }
        const Polygon polygon = given.polygon();
        Tessellator tessellator;
        Triangles triangles;
        if (Tessellator::isClearlyFan(polygon.points)) {
            ++clear;
            Triangles fan;
            for (std::size_t i = 1; i + 1 < corners; ++i) {
                fan.insert(fan.end(), {0, i, i + 1});
            }
            ASSERT_EQ(Tessellator::Result::done, tessellator.triangulate(polygon, triangles));
            ASSERT_EQ(fan, triangles);
        }
    }
    EXPECT_LT(all / 4, clear);
    EXPECT_LT(clear, all);
}

TEST(TessellatorTest, WhatIsNotClearlyAFanIsLookedAtClosely)
{
    const double tiny = 1e-40;
    for (const std::vector<Vector3>& points : std::vector<std::vector<Vector3>>{
             {{4, 0, 0}, {1, 1, 0}, {0, 4, 0}, {0, 0, 0}},                 // concave
             {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {2, 2, 0}},                 // a corner on an edge
             {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}},                 // no area
             {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {1, 1, 1}},                 // no size
             {{0, 0, 0}, {tiny, 0, 0}, {tiny, tiny, 0}, {0, tiny, 0}},     // with subnormal products
             {{0, 0, 0}, {1e200, 0, 0}, {1e200, 1e200, 0}, {0, 1e200, 0}}, // with infinite products
             std::vector<Vector3>(1'000, Vector3{1, 2, 3})}) {
        EXPECT_FALSE(Tessellator::isClearlyFan(points));
    }
}

TEST(TessellatorTest, ConcaveQuadIsCutAtItsConcaveCorner)
{
    GivenPolygon given{{{{0, 0, 0}, {4, 0, 0}, {1, 1, 0}, {0, 4, 0}}}, {}}; // a fan from corner 0 fits
    EXPECT_EQ((Triangles{0, 1, 2, 0, 2, 3}), cut(given));
    GivenPolygon turned{{{{4, 0, 0}, {1, 1, 0}, {0, 4, 0}, {0, 0, 0}}}, {}}; // a fan from corner 0 does not fit
    for (const std::size_t corner : {1U, 3U}) {
        const Triangles triangles = cut(turned);
        EXPECT_EQ(2, std::count(triangles.begin(), triangles.end(), corner));
    }
}

TEST(TessellatorTest, HoleIsLeftOpen)
{
    // 16 less 4
    GivenPolygon given{{{{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}}, {{1, 1, 0}, {1, 3, 0}, {3, 3, 0}, {3, 1, 0}}},
                       {}};
    cut(given);
}

TEST(TessellatorTest, HoleThatGoesRoundLikeTheFaceIsLeftOpenToo)
{
    GivenPolygon given{{{{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}}, {{1, 1, 0}, {3, 1, 0}, {3, 3, 0}, {1, 3, 0}}},
                       {}};
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
    GivenPolygon given{{{v[0], v[1], v[2], v[3], v[0], v[4], v[5], v[6], v[7], v[4]}}, {0, 1, 2, 3, 0, 4, 5, 6, 7, 4}};
    cut(given);
}

TEST(TessellatorTest, CornersAtOnePlaceKeepTheirEdges)
{
    // Two squares that touch in the middle with separate corners.
    GivenPolygon given{{{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {2, 1, 0}, {2, 2, 0}, {1, 2, 0}, {1, 1, 0}, {0, 1, 0}}}, {}};
    cut(given);
}

TEST(TessellatorTest, PolygonThatCrossesItselfGetsNoNewCorner)
{
    GivenPolygon star; // a pentagram
    star.loops.emplace_back();
    for (int i = 0; i < 5; ++i) {
        star.loops[0].push_back({std::cos(i * 0.8 * pi), std::sin(i * 0.8 * pi), 0});
    }
    cut(star, false);
}

TEST(TessellatorTest, QuadThatCrossesItselfIsCutSoThatItsTrianglesLookAwayLeast)
{
    // Looks along (4, 0, 12). The triangle 0 2 3 looks along (4, 0, -4), the triangle 0 1 3 along (0, -4, -4): cosines
    // of -0.447 and -0.671. The two others face the right way.
    std::vector<Vector3> corners = {{0, 0, 0}, {4, 0, 0}, {0, 4, 0}, {1, -1, 1}};
    for (const Triangles& expected : {Triangles{0, 1, 2, 0, 2, 3}, Triangles{0, 1, 3, 1, 2, 3},
                                      Triangles{0, 1, 2, 0, 2, 3}, Triangles{0, 1, 3, 1, 2, 3}}) {
        GivenPolygon given{{corners}, {}};
        EXPECT_EQ(expected, cut(given, false));
        std::rotate(corners.begin(), corners.begin() + 1, corners.end());
    }
}

TEST(TessellatorTest, PolygonWithoutAreaGivesNothing)
{
    Tessellator tessellator;
    Triangles triangles;
    GivenPolygon line{{{{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {3, 3, 3}}}, {}};
    EXPECT_EQ(Tessellator::Result::flat, tessellator.triangulate(line.polygon(), triangles));
    GivenPolygon point{{{{5, 5, 5}, {5, 5, 5}, {5, 5, 5}, {5, 5, 5}}}, {}};
    EXPECT_EQ(Tessellator::Result::flat, tessellator.triangulate(point.polygon(), triangles));
    EXPECT_TRUE(triangles.empty());
}

// Generated polygons: stars with as many corners as the row says, rotated in space.
struct Shape : testSupport::Row {
    double size;
    double bend; // how far corners are off the plane, relative to the size
    bool hasHoles;
    bool hasCollinear;
};

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
        GivenPolygon given;
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

INSTANTIATE_ROWS(Stars, TessellatorShapesTest, {"Concave", 1, 0, false, false}, {"Tiny", 1e-30, 0, false, false},
                 {"Huge", 1e30, 0, false, false}, {"Bent", 1, 0.3, false, false}, {"Collinear", 1, 0, false, true},
                 {"Holes", 1, 0, true, false}, {"BentWithHoles", 1, 0.1, true, true},
                 {"HugeWithHoles", 1e18, 0, true, true});

TEST(TessellatorTest, EarsKeepEdgesAndAreaOfWhateverIsGivenToThem)
{
    std::mt19937 random(7);
    const auto uniform = [&](double low, double high) {
        return low + (high - low) * (static_cast<double>(random()) / 4294967296.0);
    };
    for (int round = 0; round < 1000; ++round) {
        std::vector<Point2> points;
        GivenPolygon given;
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
            continue; // holes may be outside
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

TEST(TessellatorTest, FaceWithFiveThousandHolesKeepsEdgesAndArea)
{
    constexpr unsigned rows = 70;
    constexpr double size = 3.0 * rows + 1;
    GivenPolygon given{{{{0, 0, 0}, {size, 0, 0}, {size, size, 0}, {0, size, 0}}}, {}};
    for (unsigned hole = 0; hole < rows * rows; ++hole) {
        const double x = 3.0 * (hole % rows) + 1;
        const unsigned row = hole / rows;
        const double y = 3.0 * row + 1;
        given.loops.push_back({{x, y, 0}, {x, y + 2, 0}, {x + 2, y + 2, 0}, {x + 2, y, 0}});
    }
    cut(given);
}

TEST(TessellatorTest, EarsThatTakeTooLongAreCutOffAsTheyCome)
{
    std::vector<Point2> points;
    std::vector<std::vector<std::size_t>> loops(1);
    GivenPolygon given;
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
