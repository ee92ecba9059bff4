#include "Prepared.h"
#include "Shape.h"
#include "TemporaryFolder.h"

#include "support/Rows.h"

#include <libPrepare/Prepare.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <string>

// Another reader finds the same triangles at the same positions in a document and in its prepared version. The
// documents contain only what that reader reads as the standard says.

namespace {

using test::Shape;
using test::shapeOf;
using testSupport::Row;
using testSupport::rowName;

// A unit square in the plane of X and Y, and two points in front of and behind its middle.
std::string geometry(const std::string& primitive)
{
    return "<library_geometries><geometry id='g'><mesh><source id='p'><float_array id='pa' count='18'>"
           "0 0 0 1 0 0 1 1 0 0 1 0 .5 .5 1 .5 .5 -1</float_array><technique_common><accessor source='#pa' count='6' "
           "stride='3'><param name='X' type='float'/><param name='Y' type='float'/><param name='Z' type='float'/>"
           "</accessor></technique_common></source><vertices id='v'><input semantic='POSITION' "
           "source='#p'/></vertices>" +
           primitive + "</mesh></geometry></library_geometries>";
}

const std::string vertex = "<input semantic='VERTEX' source='#v' offset='0'/>";
const std::string square = geometry("<polylist count='1'>" + vertex + "<vcount>4</vcount><p>0 1 2 3</p></polylist>");

std::string scene(const std::string& nodes)
{
    return "<library_visual_scenes><visual_scene id='s'>" + nodes +
           "</visual_scene></library_visual_scenes><scene><instance_visual_scene url='#s'/></scene>";
}

struct ReaderCase : Row {
    std::size_t triangles;
    std::string body;
};

class SecondReaderTest : public testing::TestWithParam<ReaderCase> {};

TEST_P(SecondReaderTest, FindsTheSameTrianglesAtTheSamePlaces)
{
    const test::TemporaryFolder folder;
    const std::filesystem::path in = folder.write("in.dae", test::colladaDocument(GetParam().body));
    const std::filesystem::path out = folder.path() / "out.dae";
    const libPrepare::Report report = libPrepare::prepare(in, out);
    ASSERT_TRUE(report.done);
    EXPECT_TRUE(report.changed);
    const Shape before = shapeOf(in.string());
    const Shape after = shapeOf(out.string());
    EXPECT_EQ(GetParam().triangles, before.triangles);
    EXPECT_EQ(GetParam().triangles, after.triangles);
    EXPECT_NEAR(before.area, after.area, 1e-4);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        EXPECT_NEAR(before.low[axis], after.low[axis], 1e-4) << "axis " << axis;
        EXPECT_NEAR(before.high[axis], after.high[axis], 1e-4) << "axis " << axis;
    }
}

const std::string shown = "<instance_geometry url='#g'/>";

INSTANTIATE_TEST_SUITE_P(
    Rows, SecondReaderTest,
    testing::Values(
        ReaderCase{"Polylist", 2, square + scene("<node id='n'>" + shown + "</node>")},
        ReaderCase{"Polygons", 3,
                   geometry("<polygons count='2'>" + vertex + "<p>0 1 2 3</p><p>0 1 4</p></polygons>") +
                       scene("<node id='n'>" + shown + "</node>")},
        ReaderCase{"Strip", 2,
                   geometry("<tristrips count='1'>" + vertex + "<p>0 1 3 2</p></tristrips>") +
                       scene("<node id='n'>" + shown + "</node>")},
        ReaderCase{"Fan", 2,
                   geometry("<trifans count='1'>" + vertex + "<p>0 1 2 3</p></trifans>") +
                       scene("<node id='n'>" + shown + "</node>")},
        ReaderCase{"LookAt", 2, square + scene("<node id='n'><lookat>1 2 3 5 2 3 0 1 0</lookat>" + shown + "</node>")},
        ReaderCase{"Transforms", 2,
                   square + scene("<node id='a'><translate>1 2 3</translate><rotate>0 0 1 30</rotate><node id='b'>"
                                  "<scale>2 3 4</scale><matrix>0 -1 0 5 1 0 0 6 0 0 1 7 0 0 0 1</matrix>" +
                                  shown + "</node></node>")},
        ReaderCase{"NodeWithoutTransformBetween", 2,
                   square + scene("<node id='a'><translate>1 2 3</translate><node id='b'><node id='c'>" + shown +
                                  "</node></node></node>")},
        ReaderCase{"GeometryTwice", 4,
                   square + scene("<node id='a'>" + shown + "</node><node id='b'><translate>0 0 9</translate>" + shown +
                                  "</node>")},
        ReaderCase{"InstancedNode", 4,
                   square + "<library_nodes><node id='l'><rotate>1 0 0 90</rotate>" + shown +
                       "</node></library_nodes>" +
                       scene("<node id='a'><translate>4 0 0</translate><instance_node url='#l'/></node><node id='b'>"
                             "<scale>3 3 3</scale><instance_node url='#l'/></node>")}),
    rowName);

} // namespace
