#include "support/Rows.h"
#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Input.h>
#include <libVideo/SceneGraph/Primitive.h>

#include <algorithm>

// The vertices of triangles are copied straight from the document. They have to be those that the input gives one by one.

namespace {

using namespace libVideo;
using namespace testSupport;

std::string source(const std::string& id, const std::string& values, const std::string& accessor,
                   const std::string& params)
{
    return "<source id='" + id + "'><float_array id='" + id + "-array' count='1'>" + values +
           "</float_array><technique_common><accessor source='#" + id + "-array' " + accessor + ">" + params +
           "</accessor></technique_common></source>";
}

const std::string xyz = "<param name='X' type='float'/><param name='Y' type='float'/><param name='Z' type='float'/>";

struct VertexCase : testSupport::Row {
    std::string sources;
    std::string inputs;
    std::string p;
    std::vector<float> vertices{}; ///< those of the stream, worked out by hand; none to compare alone
};

std::string input(const std::string& id, unsigned offset, const std::string& semantic = "POSITION")
{
    return "<input semantic='" + semantic + "' source='#" + id + "' offset='" + std::to_string(offset) + "'/>";
}

template <class... Number>
std::vector<float> numbers(Number... all)
{
    return {static_cast<float>(all)...};
}

class VertexReaderTest : public testing::TestWithParam<VertexCase> {};

TEST_P(VertexReaderTest, GivesTheVerticesOfTheInput)
{
    const VertexCase& row = GetParam();
    ColladaBuilder builder("<library_geometries><geometry id='g'><mesh>" + row.sources + "<triangles count='1'>" +
                           row.inputs + "<p>" + row.p + "</p></triangles></mesh></geometry></library_geometries>");
    builder.open();
    domTriangles* const triangles = builder.element<domGeometry>("g")->getMesh()->getTriangles_array()[0];
    const LogCapture log;
    TriangleList list;
    list.createFromCollada(triangles);
    ASSERT_EQ(1u, list.count()) << log.text();

    InputLocalOffset input(triangles->getInput_array(), triangles->getP());
    const unsigned char* at = list.vertexBuffer().get();
    std::vector<std::vector<unsigned>> known;
    for (unsigned corner = 0; corner < 3; ++corner) {
        const vesk::Array<unsigned>& indices = input.pIndex(corner);
        const std::vector<unsigned> tuple(indices.begin(), indices.end());
        if (std::find(known.begin(), known.end(), tuple) != known.end()) {
            continue;
        }
        known.push_back(tuple);
        const vesk::Array<unsigned char>& expected = input.data(corner);
        ASSERT_LE(at + expected.size(), list.vertexBuffer().get() + list.totalByteSize());
        EXPECT_EQ(0, std::memcmp(at, expected.getData(), expected.size())) << "corner " << corner;
        at += expected.size();
    }
    EXPECT_EQ(at, list.vertexBuffer().get() + list.totalByteSize());
    if (!row.vertices.empty()) {
        ASSERT_EQ(row.vertices.size() * sizeof(float), list.totalByteSize());
        EXPECT_EQ(0, std::memcmp(row.vertices.data(), list.vertexBuffer().get(), list.totalByteSize()));
    }
}

INSTANTIATE_ROWS(
    Documents, VertexReaderTest,
    {"Plain", source("s", "0 1 2 10 11 12 20 21 22", "count='3' stride='3'", xyz), input("s", 0), "2 0 1",
     numbers(20, 21, 22, 0, 1, 2, 10, 11, 12)},
    {"SharedCorner", source("s", "0 1 2 10 11 12", "count='2' stride='3'", xyz), input("s", 0), "1 0 1",
     numbers(10, 11, 12, 0, 1, 2)},
    {"TwoSources",
     source("s", "0 1 2 10 11 12 20 21 22", "count='3' stride='3'", xyz) +
         source("t", "5 6 7", "count='3' stride='1'", "<param name='S' type='float'/>"),
     input("s", 0) + input("t", 1, "TEXCOORD"), "0 2 1 1 2 0", numbers(0, 1, 2, 7, 10, 11, 12, 6, 20, 21, 22, 5)},
    {"ParamWithoutNameInTheMiddle",
     source("s", "0 1 2 10 11 12 20 21 22", "count='3' stride='3'",
            "<param name='X' type='float'/><param type='float'/><param name='Z' type='float'/>"),
     input("s", 0), "0 1 2", numbers(0, 2, 10, 12, 20, 22)},
    {"ParamWithoutNameAtTheStart",
     source("s", "0 1 2 10 11 12 20 21 22", "count='3' stride='3'",
            "<param type='float'/><param name='Y' type='float'/><param name='Z' type='float'/>"),
     input("s", 0), "0 1 2", numbers(1, 2, 11, 12, 21, 22)},
    {"ArrayThatEndsInARecord", source("s", "0 1 2 10 11 12 20", "count='3' stride='3'", xyz), input("s", 0), "0 1 2",
     numbers(0, 1, 2, 10, 11, 12, 20, 0, 0)},
    {"ArrayThatEndsBeforeARecord", source("s", "0 1 2", "count='3' stride='3'", xyz), input("s", 0), "2 1 0",
     numbers(0, 0, 0, 0, 0, 0, 0, 1, 2)},
    {"OffsetCountsRecords", source("s", "0 1 2 10 11 12 20 21 22 30 31 32", "count='3' stride='3' offset='1'", xyz),
     input("s", 0), "0 1 2", numbers(10, 11, 12, 20, 21, 22, 30, 31, 32)},
    // (1431655765 + 1) * 3 is 2 in 32 bits.
    {"PlaceThatWrapsAround", source("s", "0 1 2 10 11 12 20 21 22", "count='3' stride='3' offset='1431655765'", xyz),
     input("s", 0), "1 1 1", numbers(2, 10, 11)},
    {"StrideBeyondTheParams", source("s", "0 1 2 3 10 11 12 13 20 21 22 23", "count='3' stride='4'", xyz),
     input("s", 0), "0 1 2", numbers(0, 1, 2, 10, 11, 12, 20, 21, 22)},
    {"OverlappingRecords", source("s", "0 1 2 3 4 5 6", "count='3' stride='2'", xyz), input("s", 0), "0 1 2",
     numbers(0, 1, 2, 2, 3, 4, 4, 5, 6)},
    {"NoParams", source("s", "7 8 9", "count='3' stride='3'", ""), input("s", 0), "0 0 0"},
    {"Matrices",
     source("s", "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16", "count='1' stride='16'",
            "<param name='M' type='float4x4'/>") +
         source("t", "5 6 7", "count='3' stride='1'", "<param name='S' type='float'/>"),
     input("s", 0) + input("t", 1, "TEXCOORD"), "0 0 0 1 0 2"},
    {"BareSource", "<source id='s'><float_array id='s-array' count='3'>7 8 9</float_array></source>", input("s", 0),
     "0 1 2"},
    {"GapInTheOffsets", source("s", "0 1 2 10 11 12 20 21 22", "count='3' stride='3'", xyz),
     input("s", 0) + input("s", 3, "NORMAL"), "0 1 2 1 0 2"},
    {"IndexOfMoreThan32Bits", source("s", "0 1 2 10 11 12", "count='2' stride='3'", xyz), input("s", 0),
     "4294967297 4294967296 1", numbers(10, 11, 12, 0, 1, 2)},
    {"NumbersBeyondFloats", source("s", "1e300 -1e300 -0.0 1e-50 0.1 16777217", "count='2' stride='3'", xyz),
     input("s", 0), "0 1 0", numbers(HUGE_VALF, -HUGE_VALF, -0.0f, 0.0f, 0.1f, 16777216.0f)},
    {"NoNumbers", source("s", "NaN INF x", "count='1' stride='3'", xyz), input("s", 0), "0 0 0"});

TEST(VertexReaderTest, IndexBeyondTheCountThrowsAsTheSourceDoes)
{
    ColladaBuilder builder("<library_geometries><geometry id='g'><mesh>" +
                           source("s", "0 1 2 10 11 12", "count='1' stride='3'", xyz) + "<triangles count='1'>" +
                           input("s", 0) + "<p>0 1 0</p></triangles></mesh></geometry></library_geometries>");
    builder.open();
    TriangleList list;
    EXPECT_THROW(list.createFromCollada(builder.element<domGeometry>("g")->getMesh()->getTriangles_array()[0]),
                 vesk::AssertionFailure);
}

// ---- points: one record of each source

class PointReaderTest : public testing::TestWithParam<VertexCase> {};

TEST_P(PointReaderTest, GivesThePointsOfTheInput)
{
    const VertexCase& row = GetParam();
    ColladaBuilder builder("<library_geometries><geometry id='g'><mesh>" + row.sources + "<vertices id='v'>" +
                           row.inputs + "</vertices></mesh></geometry></library_geometries>");
    ASSERT_NE(nullptr, builder.open());
    domVertices* const vertices = builder.element<domGeometry>("g")->getMesh()->getVertices();
    const LogCapture log;
    libVideo::PointCloud cloud(vertices);
    libVideo::InputLocal input(vertices->getInput_array());
    std::vector<unsigned char> expected;
    for (unsigned i = 0; i < cloud.count(); ++i) {
        const vesk::Array<unsigned char>& point = input.data(i);
        expected.insert(expected.end(), point.begin(), point.end());
    }
    const unsigned char* const bytes = cloud.vertexBuffer().get();
    EXPECT_EQ(expected, std::vector<unsigned char>(bytes, bytes + cloud.totalByteSize()));
    ASSERT_EQ(row.vertices.size() * sizeof(float), cloud.totalByteSize());
    EXPECT_EQ(0, std::memcmp(row.vertices.data(), bytes, cloud.totalByteSize()));
}

std::string localInput(const std::string& id, const std::string& semantic = "POSITION")
{
    return "<input semantic='" + semantic + "' source='#" + id + "'/>";
}

INSTANTIATE_ROWS(
    Documents, PointReaderTest,
    {"Plain", source("s", "0 1 2 10 11 12", "count='2' stride='3'", xyz), localInput("s"), "", {0, 1, 2, 10, 11, 12}},
    {"TwoSources",
     source("s", "0 1 2 10 11 12", "count='2' stride='3'", xyz) +
         source("t", "5 6", "count='2' stride='1'", "<param name='S' type='float'/>"),
     localInput("s") + localInput("t", "TEXCOORD"),
     "",
     {0, 1, 2, 5, 10, 11, 12, 6}},
    {"Offset",
     source("s", "9 9 9 0 1 2 10 11 12", "offset='1' count='2' stride='3'", xyz),
     localInput("s"),
     "",
     {0, 1, 2, 10, 11, 12}},
    {"ParamWithoutNameInTheMiddle",
     source("s", "0 1 2 10 11 12", "count='2' stride='3'",
            "<param name='X' type='float'/><param type='float'/><param name='Z' type='float'/>"),
     localInput("s"),
     "",
     {0, 2, 10, 12}},
    {"ShortArrayReadsZero",
     source("s", "0 1 2 10", "count='2' stride='3'", xyz),
     localInput("s"),
     "",
     {0, 1, 2, 10, 0, 0}});

} // namespace
