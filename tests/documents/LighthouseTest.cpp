#include "support/LogCapture.h"

#include <libVideo/SceneGraph.h>

#include <libMath/Matrix.h>

#include <vesk/Buffer.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using Rows = std::array<double, 16>;
using libVideo::Node;
using libVideo::NodeLink;
using libVideo::Scene;

struct Expected {
    const char* id;
    const char* name; ///< up to its first blank
    int parent;
    Rows local;
    Rows world;
};

// Breadth first.
const std::vector<Expected>& harbour();

class LighthouseTest : public testing::Test {
protected:
    void SetUp() override;

    const std::vector<Node*>& nodes() const { return m_nodes; }
    libVideo::VisualScene& scene() { return m_scene.visualScene(); }
    const testSupport::LogCapture& log() const { return m_log; }
    Node& node(const std::string& id);
    void evaluateAll(double time);

private:
    void append(const Node& parent);

    testSupport::LogCapture m_log;
    Scene m_scene;
    std::vector<Node*> m_nodes;
};

TEST_F(LighthouseTest, TreeIsThatOfTheDocument)
{
    for (std::size_t i = 0; i < harbour().size(); ++i) {
        const Expected& expected = harbour()[i];
        EXPECT_STREQ(nodes()[i]->id().data(), expected.id);
        EXPECT_STREQ(nodes()[i]->name().data(), expected.name);
        EXPECT_STREQ("", nodes()[i]->sid().data());
        const Node* const parent =
            expected.parent < 0 ? &scene().root() : nodes()[static_cast<std::size_t>(expected.parent)];
        EXPECT_EQ(nodes()[i]->parent().get(), parent) << expected.id;
    }
}

// Tolerance for some products of numbers around 60 in float.
constexpr double tolerance = 1e-5;

constexpr double cos10 = 0.984807753012208; // the buoy leans by 10 degrees
constexpr double sin10 = 0.173648177666930;
constexpr double cos30 = 0.866025403784439;
constexpr double sin30 = 0.5;
constexpr double sin45 = 0.707106781186548;

Rows moved(double x, double y, double z)
{
    return {1, 0, 0, x, 0, 1, 0, y, 0, 0, 1, z, 0, 0, 0, 1};
}

Rows scaledAt(double sx, double sy, double sz, double x, double y, double z)
{
    return {sx, 0, 0, x, 0, sy, 0, y, 0, 0, sz, z, 0, 0, 0, 1};
}

// A rotation about Y, given by cosine and sine, and a height.
Rows turnedAt(double cosine, double sine, double y)
{
    return {cosine, 0, sine, 0, 0, 1, 0, y, -sine, 0, cosine, 0, 0, 0, 0, 1};
}

// The buoy always leans about Z.
Rows buoyAt(double x, double y, double z)
{
    return {cos10, -sin10, 0, x, sin10, cos10, 0, y, 0, 0, 1, z, 0, 0, 0, 1};
}

// The jetty is turned about Y by 30 degrees, 1.6 wide and 5 long.
Rows jettyAt(double y)
{
    return {1.6 * cos30, 0, 5 * sin30, 4.5, 0, 1, 0, y, -1.6 * sin30, 0, 5 * cos30, 6, 0, 0, 0, 1};
}

void expectRows(const libMath::Matrix<float, 4, 4>& actual, const Rows& expected, const std::string& what)
{
    for (unsigned i = 0; i < 16; ++i) {
        EXPECT_NEAR(static_cast<double>(actual[i]), expected[i], tolerance)
            << what << ", row " << i / 4 << ", column " << i % 4;
    }
}

// The viewer at 14, 9, 32 looks along its -Z at the axis of the tower, 7.5 below.
Rows viewerRows()
{
    const double flat = std::hypot(14.0, 32.0);
    const double cosine = 32.0 / flat;
    const double sine = 14.0 / flat;
    const double far = std::hypot(flat, 7.5);
    const double up = flat / far;
    const double down = 7.5 / far;
    return {cosine, -sine * down, sine * up, 14, 0, up, down, 9, -sine, -cosine * down, cosine * up, 32, 0, 0, 0, 1};
}

// The tower is on the rock, half a unit below zero. The gallery is nine units above its foot.
const std::vector<Expected>& harbour()
{
    static const std::vector<Expected> nodes = {
        {"sea", "Sea", -1, scaledAt(3000, 1, 3000, 0, -0.5, 0), scaledAt(3000, 1, 3000, 0, -0.5, 0)},
        {"rock", "Rock", -1, moved(0, -0.5, 0), moved(0, -0.5, 0)},
        {"buoy", "Buoy", -1, buoyAt(8, 0, 4), buoyAt(8, 0, 4)},
        {"sun", "Sun", -1, moved(300, 420, 420), moved(300, 420, 420)},
        {"haze", "Haze", -1, moved(-500, 160, -700), moved(-500, 160, -700)},
        {"viewer", "Viewer", -1, viewerRows(), viewerRows()},
        {"rock-block", "Rock", 1, moved(0, 0, 0), moved(0, -0.5, 0)},
        {"jetty", "Jetty", 1, jettyAt(-0.5), jettyAt(-1)},
        {"tower", "Tower", 1, moved(0, 1.5, 0), moved(0, 1, 0)},
        {"tower-block", "Tower", 8, scaledAt(3, 9, 3, 0, 0, 0), scaledAt(3, 9, 3, 0, 1, 0)},
        {"gallery", "Gallery", 8, moved(0, 9, 0), moved(0, 10, 0)},
        {"gallery-block", "Gallery", 10, moved(0, 0, 0), moved(0, 10, 0)},
        {"lamp", "Lamp", 10, moved(0, 0.5, 0), moved(0, 10.5, 0)},
        {"flag", "Flag", 10, moved(0, 3, 0), moved(0, 13, 0)},
        {"lens", "Lens", 12, scaledAt(1, 1.5, 0.4, 0, 0, 0), scaledAt(1, 1.5, 0.4, 0, 10.5, 0)},
        {"beam-node", "Beam", 12, moved(0, 1, 0), moved(0, 11.5, 0)},
    };
    return nodes;
}

void LighthouseTest::SetUp()
{
    ASSERT_TRUE(m_scene.createFromCollada(DATA_FOLDER "/lighthouse.dae")) << m_log.text();
    append(m_scene.visualScene().root());
    for (std::size_t i = 0; i < m_nodes.size(); ++i) {
        append(*m_nodes[i]);
    }
    ASSERT_EQ(m_nodes.size(), harbour().size());
}

Node& LighthouseTest::node(const std::string& id)
{
    for (std::size_t i = 0; i < m_nodes.size(); ++i) {
        if (id == harbour()[i].id) {
            return *m_nodes[i];
        }
    }
    throw std::out_of_range(id);
}

void LighthouseTest::evaluateAll(double time)
{
    for (Node* const each : m_nodes) {
        each->transform(time);
    }
}

void LighthouseTest::append(const Node& parent)
{
    for (const NodeLink& child : parent.children()) {
        m_nodes.push_back(child.get());
    }
}

TEST_F(LighthouseTest, LoadLogsNoFaultOfTreeAnimationsGeometriesOrMaterials)
{
    for (const testSupport::LogLine& line : log().lines()) {
        for (const char* const module : {"scene", "visualScene", "animation", "geometry", "primitive", "input",
                                         "source", "accessor", "material", "texture"}) {
            EXPECT_NE(line.channel, std::string("libVideo.") + module) << line.text;
        }
    }
}

TEST_F(LighthouseTest, MatricesAreLocalBehindTheLoad)
{
    for (std::size_t i = 0; i < harbour().size(); ++i) {
        expectRows(nodes()[i]->transform(), harbour()[i].local, harbour()[i].id);
    }
}

TEST_F(LighthouseTest, MatricesAreOfTheWorldBehindTheFolding)
{
    scene().transform();
    for (std::size_t i = 0; i < harbour().size(); ++i) {
        expectRows(nodes()[i]->transform(), harbour()[i].world, harbour()[i].id);
    }
}

TEST_F(LighthouseTest, LampBuoyAndFlagAreAnimated)
{
    for (std::size_t i = 0; i < harbour().size(); ++i) {
        const std::string id = harbour()[i].id;
        EXPECT_EQ(nodes()[i]->hasAnimation(), id == "lamp" || id == "buoy" || id == "flag") << id;
    }
}

TEST_F(LighthouseTest, AnimationsAreAsLongAsTheirLastKey)
{
    EXPECT_EQ(8.5, node("lamp").animationLength());
    EXPECT_EQ(4.0, node("buoy").animationLength());
    EXPECT_EQ(2.0, node("flag").animationLength());
    EXPECT_EQ(0.0, node("rock").animationLength());
}

// It turns by 45 degrees a second from second 0.5 on, and starts again after second 8.5.
TEST_F(LighthouseTest, LampTurnsSteadily)
{
    Node& lamp = node("lamp");
    expectRows(lamp.transform(0.0), turnedAt(1, 0, 0.5), "at second 0, the document's angle");
    expectRows(lamp.transform(0.25), turnedAt(1, 0, 0.5), "before the first key");
    expectRows(lamp.transform(1.5), turnedAt(sin45, sin45, 0.5), "by 45 degrees");
    expectRows(lamp.transform(2.5), turnedAt(0, 1, 0.5), "by 90 degrees");
    expectRows(lamp.transform(4.5), turnedAt(-1, 0, 0.5), "on the middle key, by 180 degrees");
    expectRows(lamp.transform(6.5), turnedAt(0, -1, 0.5), "by 270 degrees");
    expectRows(lamp.transform(8.5), turnedAt(1, 0, 0.5), "at the length, which is second 0 again");
    expectRows(lamp.transform(11.0), turnedAt(0, 1, 0.5), "2.5 seconds into the second round");
    expectRows(lamp.transform(-2.5), turnedAt(1, 0, 0.5), "before the start");
}

TEST_F(LighthouseTest, BuoyRidesBetweenItsKeysAndKeepsItsLean)
{
    Node& buoy = node("buoy");
    expectRows(buoy.transform(0.0), buoyAt(8, 0, 4), "at second 0, the document's place");
    expectRows(buoy.transform(0.625), buoyAt(8, 0.25, 4), "half way up from 0 to 0.5");
    expectRows(buoy.transform(1.0), buoyAt(8, 0.5, 4), "on the second key");
    expectRows(buoy.transform(1.5), buoyAt(8, 0.125, 4.25), "half way down from 0.5 to -0.25");
    expectRows(buoy.transform(2.0), buoyAt(8, -0.25, 4.5), "on the third key");
    expectRows(buoy.transform(2.75), buoyAt(8, 0.3125, 4.125), "three quarters of the way up");
    expectRows(buoy.transform(3.5), buoyAt(8, 0.25, 4), "half way down from 0.5 to 0");
    expectRows(buoy.transform(5.0), buoyAt(8, 0.5, 4), "one second into the second round");
}

TEST_F(LighthouseTest, FlagFlipsInSteps)
{
    Node& flag = node("flag");
    const Rows plain = scaledAt(1, 1, 1, 0, 3, 0);
    const Rows flipped = scaledAt(-1, 1, 1, 0, 3, 0);
    expectRows(flag.transform(0.3), plain, "before the first key");
    expectRows(flag.transform(0.5), plain, "on the first key");
    expectRows(flag.transform(0.99), plain, "up to the second key");
    expectRows(flag.transform(1.0), flipped, "on the second key");
    expectRows(flag.transform(1.49), flipped, "up to the third key");
    expectRows(flag.transform(1.5), plain, "on the third key");
    expectRows(flag.transform(2.0), plain, "at the length, which is second 0 again");
    expectRows(flag.transform(3.2), flipped, "1.2 seconds into the second round");
}

TEST_F(LighthouseTest, TimeDoesNotTravelDownTheTree)
{
    node("gallery").transform(2.5);
    expectRows(node("lamp").transform(), moved(0, 0.5, 0), "the lamp was not asked");
    node("lamp").transform(2.5);
    expectRows(node("beam-node").transform(), moved(0, 1, 0), "below the lamp");
}

TEST_F(LighthouseTest, NodeWithoutAnimationStaysAtEveryTime)
{
    expectRows(node("rock").transform(2.5), moved(0, -0.5, 0), "rock");
    scene().transform();
    expectRows(node("tower").transform(2.5), moved(0, 1, 0), "tower, in the world");
}

TEST_F(LighthouseTest, WorldAtATimeIsThatOfTheTurnedLamp)
{
    evaluateAll(2.5); // the lamp has turned by 90 degrees; the flag is at the first key of its second round
    scene().transform();
    expectRows(node("lamp").transform(), turnedAt(0, 1, 10.5), "lamp");
    expectRows(node("beam-node").transform(), turnedAt(0, 1, 11.5), "beam");
    // The lens is as wide as the lamp's axes, 1.5 as high, and 0.4 as deep: X goes to -Z, and Z to X.
    expectRows(node("lens").transform(), {0, 0, 0.4, 0, 0, 1.5, 0, 10.5, -1, 0, 0, 0, 0, 0, 0, 1}, "lens");
    expectRows(node("buoy").transform(), buoyAt(8, 0.125, 4.25), "buoy");
    expectRows(node("flag").transform(), moved(0, 13, 0), "flag");
    expectRows(node("gallery-block").transform(), moved(0, 10, 0), "gallery body");
    EXPECT_NEAR(static_cast<double>(node("lens").up()[1]), 1.5, tolerance);
    EXPECT_NEAR(static_cast<double>(node("buoy").position()[2]), 4.25, tolerance);
}

TEST_F(LighthouseTest, WorldAtATimeIsThatOfTheFlippedFlag)
{
    evaluateAll(1.2);
    scene().transform();
    expectRows(node("flag").transform(), scaledAt(-1, 1, 1, 0, 13, 0), "flag");
}

TEST_F(LighthouseTest, FoldingTwiceCountsTheAncestorsTwice)
{
    scene().transform();
    scene().transform();
    expectRows(node("rock").transform(), moved(0, -0.5, 0), "right below the root");
    // The rock's -0.5 and the tower's own 1.5 make 1; the rock again makes it 0.5.
    expectRows(node("tower").transform(), moved(0, 0.5, 0), "tower");
}

// --- geometries

using Indices = std::vector<unsigned>;

struct Block {
    const char* id;
    const char* material; ///< also the name of the triangles
    const char* node;     ///< the one that shows it
};

const Block blocks[] = {{"block-stone", "stone", "jetty"}, {"block-glass", "glass", "lens"}};

template <class Table>
auto* valueOf(const Table& table, const std::string& key)
{
    for (const auto& bucket : table) {
        if (key == bucket.key.data()) {
            return bucket.value.get();
        }
    }
    throw std::out_of_range(key);
}

libVideo::Primitive& trianglesOf(const libVideo::VisualScene& scene, const std::string& id)
{
    const auto& primitives = valueOf(scene.geometryTable(), id)->mesh().primitives();
    EXPECT_EQ(1u, primitives.size()) << id;
    return *primitives[0];
}

TEST_F(LighthouseTest, GeometriesStandOnTheirNodes)
{
    EXPECT_EQ(8u, scene().geometryTable().size());
    for (const auto& [id, shownOn] :
         std::vector<std::pair<std::string, std::string>>{{"tower-body", "tower-block"},
                                                          {"buoy-body", "buoy"},
                                                          {"flag-cloth", "flag"},
                                                          {"sea-water", "sea"},
                                                          {"rock-body", "rock-block"},
                                                          {"gallery-body", "gallery-block"}}) {
        const libVideo::Geometry* const geometry = valueOf(scene().geometryTable(), id);
        ASSERT_EQ(1u, geometry->nodes().size()) << id;
        EXPECT_EQ(geometry->nodes()[0].get(), &node(shownOn)) << id;
    }
    for (const Block& block : blocks) {
        const libVideo::Geometry* const geometry = valueOf(scene().geometryTable(), block.id);
        EXPECT_STREQ(geometry->id().data(), block.id);
        ASSERT_EQ(1u, geometry->nodes().size()) << block.id;
        EXPECT_EQ(geometry->nodes()[0].get(), &node(block.node)) << block.id;
    }
    // Names are cut at the first blank.
    EXPECT_STREQ("Stone", valueOf(scene().geometryTable(), "block-stone")->name().data());
    EXPECT_STREQ("Glass", valueOf(scene().geometryTable(), "block-glass")->name().data());
}

TEST_F(LighthouseTest, BlockIsTwelveTrianglesOfTwentyFourVertices)
{
    for (const Block& block : blocks) {
        libVideo::Primitive& triangles = trianglesOf(scene(), block.id);
        EXPECT_EQ(triangles.type(), libVideo::PRIMITIVE_TRIANGLE_LIST) << block.id;
        EXPECT_EQ(triangles.id().data(), std::string(block.id) + "-triangles");
        EXPECT_STREQ(triangles.material().data(), block.material);
        EXPECT_EQ(12u, triangles.count()) << block.id;
        EXPECT_EQ(3u, triangles.vertexPerPrimitive()) << block.id;
        EXPECT_EQ(24u, triangles.bytesPerVertex()) << block.id;
        EXPECT_EQ(24u * 24u, triangles.totalByteSize()) << block.id; // four corners on each of six sides
        EXPECT_EQ(36u, triangles.indexBuffer().size()) << block.id;
    }
}

TEST_F(LighthouseTest, VertexIsAPositionAndANormal)
{
    for (const Block& block : blocks) {
        const auto& layout = trianglesOf(scene(), block.id).vertexLayout();
        ASSERT_EQ(2u, layout.size()) << block.id;
        EXPECT_EQ(layout[0].semantic, libVideo::SEMANTIC_POSITION) << block.id;
        EXPECT_EQ(12u, layout[0].byteSize) << block.id;
        EXPECT_EQ(0u, layout[0].byteOffset) << block.id;
        EXPECT_EQ(layout[0].dataType, libVideo::DATA_TYPE_FLOAT3) << block.id;
        EXPECT_EQ(layout[1].semantic, libVideo::SEMANTIC_NORMAL) << block.id;
        EXPECT_EQ(12u, layout[1].byteSize) << block.id;
        EXPECT_EQ(12u, layout[1].byteOffset) << block.id;
        EXPECT_EQ(layout[1].dataType, libVideo::DATA_TYPE_FLOAT3) << block.id;
    }
}

// A side of corners a, b, c, d is written as the triangles a b c and a c d.
TEST_F(LighthouseTest, SidesShareTheTwoCornersOfTheirDiagonal)
{
    Indices expected;
    for (unsigned side = 0; side < 6; ++side) {
        for (const unsigned corner : {0u, 1u, 2u, 0u, 2u, 3u}) {
            expected.push_back(4 * side + corner);
        }
    }
    for (const Block& block : blocks) {
        Indices indices;
        for (const unsigned index : trianglesOf(scene(), block.id).indexBuffer()) {
            indices.push_back(index);
        }
        EXPECT_EQ(indices, expected) << block.id;
    }
}

// Corners of positions 0 1 3 2 on the side to -X, 5 4 6 7 on that to +X, 0 4 5 1 below, 3 7 6 2 on top, 4 0 2 6 on the
// side to -Z and 1 5 7 3 on that to +Z, in order of first use.
TEST_F(LighthouseTest, VerticesStandInTheOrderOfTheirFirstUse)
{
    const std::array<std::array<float, 3>, 8> positions = {{{-0.5f, 0, -0.5f},
                                                            {-0.5f, 0, 0.5f},
                                                            {-0.5f, 1, -0.5f},
                                                            {-0.5f, 1, 0.5f},
                                                            {0.5f, 0, -0.5f},
                                                            {0.5f, 0, 0.5f},
                                                            {0.5f, 1, -0.5f},
                                                            {0.5f, 1, 0.5f}}};
    const std::array<std::array<float, 3>, 6> normals = {
        {{-1, 0, 0}, {1, 0, 0}, {0, -1, 0}, {0, 1, 0}, {0, 0, -1}, {0, 0, 1}}};
    const std::size_t corners[6][4] = {{0, 1, 3, 2}, {5, 4, 6, 7}, {0, 4, 5, 1},
                                       {3, 7, 6, 2}, {4, 0, 2, 6}, {1, 5, 7, 3}};
    for (const Block& block : blocks) {
        libVideo::Primitive& triangles = trianglesOf(scene(), block.id);
        ASSERT_EQ(576u, triangles.totalByteSize());
        for (std::size_t vertex = 0; vertex < 24; ++vertex) {
            std::array<float, 6> actual{};
            std::memcpy(actual.data(), triangles.vertexBuffer().get() + 24 * vertex, sizeof(actual));
            const std::array<float, 3>& position = positions[corners[vertex / 4][vertex % 4]];
            const std::array<float, 3>& normal = normals[vertex / 4];
            EXPECT_EQ(actual,
                      (std::array<float, 6>{position[0], position[1], position[2], normal[0], normal[1], normal[2]}))
                << block.id << ", vertex " << vertex;
        }
    }
}

TEST_F(LighthouseTest, CornerGivesItsVertex)
{
    libVideo::Primitive& triangles = trianglesOf(scene(), "block-stone");
    vesk::Buffer<unsigned char> bytes;
    ASSERT_TRUE(triangles.vertex(35, bytes)); // the last corner: position 3, seen from +Z
    ASSERT_EQ(24u, bytes.size());
    std::array<float, 6> vertex{};
    std::memcpy(vertex.data(), bytes.data(), sizeof(vertex));
    EXPECT_EQ(vertex, (std::array<float, 6>{-0.5f, 1, 0.5f, 0, 0, 1}));
    EXPECT_FALSE(triangles.vertex(36, bytes));
}

// A vertex of a rounded body: position, normal and, if there is a texture, its coordinates.
std::vector<float> vertexAt(libVideo::Primitive& triangles, std::size_t index)
{
    std::vector<float> values(triangles.bytesPerVertex() / sizeof(float));
    std::memcpy(values.data(), triangles.vertexBuffer().get() + index * triangles.bytesPerVertex(),
                triangles.bytesPerVertex());
    return values;
}

void expectUnitNormals(libVideo::Primitive& triangles, const std::string& what)
{
    for (std::size_t i = 0; i < triangles.totalByteSize() / triangles.bytesPerVertex(); ++i) {
        const std::vector<float> vertex = vertexAt(triangles, i);
        EXPECT_NEAR(std::hypot(vertex[3], vertex[4], vertex[5]), 1.0f, 2e-4f) << what << ", vertex " << i;
    }
}

// Sixteen sides of two triangles; the seam has its two corners twice, because the texture starts and ends there.
TEST_F(LighthouseTest, TowerTapersAndWearsItsTextureOnceAround)
{
    libVideo::Primitive& tower = trianglesOf(scene(), "tower-body");
    EXPECT_STREQ("stripes", tower.material().data());
    EXPECT_EQ(32u, tower.count());
    ASSERT_EQ(32u, tower.bytesPerVertex());
    ASSERT_EQ(34u * 32u, tower.totalByteSize());
    expectUnitNormals(tower, "tower");
    constexpr float circle = 6.2831853f;
    for (std::size_t i = 0; i < 34; ++i) {
        const std::vector<float> vertex = vertexAt(tower, i);
        const float radius = vertex[1] == 0.0f ? 0.5f : 0.35f;
        EXPECT_NEAR(vertex[0], radius * std::cos(circle * vertex[6]), 1e-4f) << i;
        EXPECT_NEAR(vertex[2], -radius * std::sin(circle * vertex[6]), 1e-4f) << i;
        EXPECT_EQ(vertex[7], vertex[1]) << i << ": the foot of the texture is at the foot of the tower";
    }
}

// Rings of twelve vertices at six heights. The first and the last ring are points, so there are fans of 12 triangles at
// the ends and 24 triangles between two rings.
TEST_F(LighthouseTest, BuoyHasAHullAndAMast)
{
    const auto& primitives = valueOf(scene().geometryTable(), "buoy-body")->mesh().primitives();
    ASSERT_EQ(2u, primitives.size());
    EXPECT_STREQ("red", primitives[0]->material().data());
    EXPECT_EQ(primitives[0]->count(), 12u + 24u + 24u + 12u);
    EXPECT_STREQ("stone", primitives[1]->material().data());
    EXPECT_EQ(24u, primitives[1]->count());
    EXPECT_EQ(24u * 24u, primitives[1]->totalByteSize());
    expectUnitNormals(*primitives[0], "hull");
    expectUnitNormals(*primitives[1], "mast");
}

TEST_F(LighthouseTest, FlagIsAClothOnAPole)
{
    const auto& primitives = valueOf(scene().geometryTable(), "flag-cloth")->mesh().primitives();
    ASSERT_EQ(2u, primitives.size());
    EXPECT_STREQ("cloth", primitives[0]->material().data());
    EXPECT_EQ(16u, primitives[0]->count());               // eight cells
    EXPECT_EQ(18u * 32u, primitives[0]->totalByteSize()); // nine places along the lower edge and nine above
    EXPECT_STREQ("stone", primitives[1]->material().data());
    EXPECT_EQ(10u, primitives[1]->count()); // four sides and the top
    EXPECT_EQ(20u * 24u, primitives[1]->totalByteSize());
    expectUnitNormals(*primitives[0], "cloth");
    expectUnitNormals(*primitives[1], "pole");
}

// A fan of 32 triangles around the middle. The texture repeats 500 times from there to the rim.
TEST_F(LighthouseTest, SeaIsADiscToTheHorizon)
{
    libVideo::Primitive& sea = trianglesOf(scene(), "sea-water");
    EXPECT_STREQ("water", sea.material().data());
    EXPECT_EQ(32u, sea.count());
    ASSERT_EQ(32u, sea.bytesPerVertex());
    ASSERT_EQ(33u * 32u, sea.totalByteSize()); // the middle, and 32 places on the rim
    for (std::size_t i = 0; i < 33; ++i) {
        const std::vector<float> vertex = vertexAt(sea, i);
        const float radius = std::hypot(vertex[0], vertex[2]);
        EXPECT_TRUE(radius == 0.0f || std::abs(radius - 1.0f) < 2e-4f) << i;
        EXPECT_EQ(0.0f, vertex[1]) << i;
        EXPECT_EQ(1.0f, vertex[4]) << i << ": upright";
        EXPECT_NEAR(vertex[6], 500.0f * vertex[0], 0.05f) << i;
        EXPECT_NEAR(vertex[7], -500.0f * vertex[2], 0.05f) << i;
    }
}

// Four rings of seventeen quads, and seventeen triangles on top; each facet has its own normal.
TEST_F(LighthouseTest, RockIsRough)
{
    libVideo::Primitive& rock = trianglesOf(scene(), "rock-body");
    EXPECT_STREQ("stone", rock.material().data());
    EXPECT_EQ(rock.count(), 4u * 17u * 2u + 17u);
    EXPECT_EQ(24u, rock.bytesPerVertex());
    expectUnitNormals(rock, "rock");
}

// The walk has three bands of 24 sides, the last of which closes in a point. The iron parts are twelve posts and twelve
// mullions with four sides each, a rail of four bands, a sill of two, and a roof of six, which closes in a point as
// well. The panes have twelve sides.
TEST_F(LighthouseTest, GalleryHasAWalkIronAndPanes)
{
    const auto& primitives = valueOf(scene().geometryTable(), "gallery-body")->mesh().primitives();
    ASSERT_EQ(3u, primitives.size());
    EXPECT_STREQ("red", primitives[0]->material().data());
    EXPECT_EQ(primitives[0]->count(), 24u * (2u + 2u + 1u));
    EXPECT_STREQ("iron", primitives[1]->material().data());
    EXPECT_EQ(primitives[1]->count(), 24u * 4u * 2u + 24u * 4u * 2u + 12u * 2u * 2u + 12u * (5u * 2u + 1u));
    EXPECT_STREQ("panes", primitives[2]->material().data());
    EXPECT_EQ(12u * 2u, primitives[2]->count());
    for (const auto& primitive : primitives) {
        expectUnitNormals(*primitive, primitive->material().data());
    }
}

// --- materials

struct Shading {
    const char* symbol;
    float shininess;
    std::array<float, 3> emission;
    std::array<float, 3> ambient;
    std::array<float, 3> diffuse;
    std::array<float, 3> specular;
};

void expectColor(const float* actual, const std::array<float, 3>& expected, const std::string& what)
{
    EXPECT_EQ((std::array<float, 3>{actual[0], actual[1], actual[2]}), expected) << what;
}

TEST_F(LighthouseTest, MaterialsAreThoseOfTheirEffects)
{
    const Shading shadings[] = {
        {"stone", 8, {0, 0, 0}, {0.255f, 0.249f, 0.234f}, {0.85f, 0.83f, 0.78f}, {0.1f, 0.1f, 0.1f}},
        {"red", 20, {0, 0, 0}, {0.225f, 0.036f, 0.03f}, {0.75f, 0.12f, 0.1f}, {0.3f, 0.3f, 0.3f}},
        {"glass", 60, {0.6f, 0.5f, 0.2f}, {0.3f, 0.27f, 0.15f}, {1, 0.9f, 0.5f}, {1, 1, 1}},
        {"iron", 16, {0, 0, 0}, {0.03f, 0.03f, 0.04f}, {0.12f, 0.14f, 0.18f}, {0.35f, 0.35f, 0.4f}},
        {"panes", 40, {0, 0, 0}, {0.1f, 0.12f, 0.15f}, {0.55f, 0.7f, 0.8f}, {1, 1, 1}}};
    EXPECT_EQ(8u, scene().blinnMaterialTable().size());
    for (const Shading& shading : shadings) {
        const std::string symbol = shading.symbol;
        const auto& values = valueOf(scene().blinnMaterialTable(), symbol)->component();
        EXPECT_EQ(values.shininess, shading.shininess) << symbol;
        EXPECT_EQ(values.transparency, symbol == "panes" ? 0.3f : 0.0f) << symbol;
        expectColor(values.emission, shading.emission, symbol + ", emission");
        expectColor(values.ambient, shading.ambient, symbol + ", ambient");
        expectColor(values.diffuse, shading.diffuse, symbol + ", diffuse");
        expectColor(values.specular, shading.specular, symbol + ", specular");
        expectColor(values.reflective, {1, 1, 1}, symbol + ", reflective, which the document does not have");
        EXPECT_FALSE(values.diffuseTexture) << symbol;
        EXPECT_FALSE(values.specularTexture) << symbol;
    }
}

TEST_F(LighthouseTest, TowerFlagAndSeaHaveTexturesBesideTheDocument)
{
    for (const auto& [symbol, file] : std::vector<std::pair<std::string, std::string>>{
             {"stripes", "lighthouse-tower.png"}, {"cloth", "lighthouse-flag.png"}, {"water", "lighthouse-sea.png"}}) {
        const auto& values = valueOf(scene().blinnMaterialTable(), symbol)->component();
        ASSERT_TRUE(values.diffuseTexture) << symbol;
        EXPECT_EQ(values.diffuseTexture->textureFile().data(), file);
        ASSERT_TRUE(values.ambientTexture) << symbol;
        EXPECT_EQ(values.ambientTexture->textureFile().data(), file);
        EXPECT_FALSE(values.specularTexture) << symbol;
        expectColor(values.diffuse, {1, 1, 1}, symbol + ", diffuse, which the texture stands for");
        EXPECT_TRUE(std::filesystem::is_regular_file(std::string(DATA_FOLDER "/") + file)) << file;
    }
}

// --- camera and lights

// The camera at 14, 9, 32 looks at the tower's foot at 0, 1.5, 0: the view ignores the parents of the nodes, here the
// rock.
TEST_F(LighthouseTest, CameraLooksAtTheTower)
{
    ASSERT_EQ(1u, scene().cameraList().size());
    const libVideo::CameraInstance& camera = *scene().cameraList()[0];
    EXPECT_EQ(camera.node().get(), &node("viewer"));
    EXPECT_EQ(camera.lookAtNode().get(), &node("tower"));
    const double length = std::sqrt(14.0 * 14.0 + 7.5 * 7.5 + 32.0 * 32.0);
    EXPECT_NEAR(static_cast<double>(camera.view()[2]), -14.0 / length, tolerance);
    EXPECT_NEAR(static_cast<double>(camera.view()[6]), -7.5 / length, tolerance);
    EXPECT_NEAR(static_cast<double>(camera.view()[10]), -32.0 / length, tolerance);
    const double vertical = 1.0 / std::tan(23.0 * 3.141592653589793 / 180.0); // of 46 degrees
    EXPECT_NEAR(static_cast<double>(camera.projection()[5]), vertical, tolerance);
    EXPECT_NEAR(static_cast<double>(camera.projection()[0]), 1.5 * vertical, tolerance);
}

TEST_F(LighthouseTest, SunHazeAndBeamShine)
{
    ASSERT_EQ(2u, scene().pointLightList().size());
    EXPECT_EQ(scene().pointLightList()[0]->node().get(), &node("sun"));
    EXPECT_EQ(scene().pointLightList()[1]->node().get(), &node("haze"));
    ASSERT_EQ(1u, scene().spotLightList().size());
    const libVideo::SpotLightInstance& beam = *scene().spotLightList()[0];
    EXPECT_EQ(beam.node().get(), &node("beam-node"));
    EXPECT_EQ(beam.lookatNode().get(), &node("buoy"));
    EXPECT_EQ(25.0f, beam.spotLight()->innerConeAngle());
    EXPECT_EQ(35.0f, beam.spotLight()->outerConeAngle());
}

} // namespace
