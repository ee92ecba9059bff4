#include "Prepared.h"

#include "support/Rows.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using test::Prepared;

// A mesh over a grid of 3 x 3 points, 0 0 0 to 2 2 0, row by row, with one primitive.
std::string mesh(const std::string& primitive, const std::string& more = "")
{
    return "<library_geometries><geometry id='g'><mesh>"
           "<source id='p'><float_array id='pa' count='" +
           std::string(more.empty() ? "27" : "30") + "'>0 0 0 1 0 0 2 0 0 0 1 0 1 1 0 2 1 0 0 2 0 1 2 0 2 2 0" + more +
           "</float_array><technique_common><accessor source='#pa' count='" + (more.empty() ? "9" : "10") +
           "' stride='3'><param name='X' type='float'/><param name='Y' type='float'/><param name='Z' type='float'/>"
           "</accessor></technique_common></source>"
           "<vertices id='v'><input semantic='POSITION' source='#p'/></vertices>" +
           primitive + "</mesh></geometry></library_geometries>";
}

const std::string vertex = "<input semantic='VERTEX' source='#v' offset='0'/>";

struct FaceCase : testSupport::Row {
    std::string primitive;
    const char* count;
    const char* list;
    std::size_t left; // kinds of faces that are left out
};

class TriangulateTest : public testing::TestWithParam<FaceCase> {};

TEST_P(TriangulateTest, FacesBecomeTriangles)
{
    const FaceCase& row = GetParam();
    const Prepared result(mesh(row.primitive));
    EXPECT_EQ(row.count, std::string(result.node("//triangles").attribute("count").value()));
    EXPECT_EQ(row.list, result.text("//triangles/p"));
    EXPECT_EQ(row.left, result.findings("faces"));
    EXPECT_EQ(1U, result.count("//triangles/p"));
    EXPECT_EQ(0U, result.count("//polylist | //polygons | //tristrips | //trifans | //vcount | //ph"));
    const Prepared again(result.xml());
    EXPECT_FALSE(again.report.changed);
    EXPECT_EQ(result.xml(), again.xml());
}

INSTANTIATE_ROWS(
    Kinds, TriangulateTest,
    {"PolylistOfTrianglesKeepsItsText",
     "<polylist count='2'>" + vertex + "<vcount>3 3</vcount><p>0  1 3\n1 4 3</p></polylist>", "2", "0  1 3\n1 4 3", 0},
    {"PolylistOfQuadsIsCutFromTheFirstCorner",
     "<polylist count='2'>" + vertex + "<vcount>4 4</vcount><p>0 1 4 3 4 5 8 7</p></polylist>", "4",
     "0 1 4 0 4 3 4 5 8 4 8 7", 0},
    {"NumbersOfAFaceAreWrittenPlainly",
     "<polylist count='2'>" + vertex + "<vcount>4 4 3</vcount><p> 00 1 4 03 4\n5\t8  7 +1 2 0</p></polylist>", "4",
     "0 1 4 0 4 3 4 5 8 4 8 7", 1},
    {"ListsOfAPolylistAreJoined",
     "<polylist count='2'>" + vertex + "<vcount>4 3</vcount><p>0 1 4</p><p>3 4 5 8</p></polylist>", "3",
     "0 1 4 0 4 3 4 5 8", 0},
    {"FacesOfMoreThanTheListHoldsEndIt",
     "<polylist count='3'>" + vertex + "<vcount>3 9 3</vcount><p>0 1 3 1 4 3</p></polylist>", "1", "0 1 3", 1},
    {"FacesOfOneOrTwoCornersAreLeftOut",
     "<polylist count='3'>" + vertex + "<vcount>2 3 1</vcount><p>0 1 0 1 3 5</p></polylist>", "1", "0 1 3", 1},
    {"FaceThatTheListDoesNotHoldIsLeftOut",
     "<polylist count='2'>" + vertex + "<vcount>3 4</vcount><p>0 1 3 1 2 5</p></polylist>", "1", "0 1 3", 1},
    {"FaceWithAnIndexOutsideIsLeftOut",
     "<polylist count='3'>" + vertex + "<vcount>3 3 3</vcount><p>0 1 9 0 1 -1 0 1 3</p></polylist>", "1", "0 1 3", 1},
    {"FaceOfTwoVerticesIsLeftOut",
     "<polylist count='2'>" + vertex + "<vcount>4 3</vcount><p>0 1 0 1 0 1 3</p></polylist>", "1", "0 1 3", 1},
    {"CornersOfOneVertexKeepWhatElseTheyName", // as at the pole of a sphere of quads
     "<polylist count='1'>" + vertex + "<input semantic='NORMAL' source='#p' offset='1'/><vcount>4</vcount>" +
         "<p>0 0 1 1 1 2 3 3</p></polylist>",
     "2", "0 0 1 1 1 2 0 0 1 2 3 3", 0},
    {"FaceWithoutAreaStays", // in a pose it may have one
     "<polylist count='1'>" + vertex + "<vcount>4</vcount><p>0 1 2 1</p></polylist>", "2", "0 1 2 0 2 1", 0},
    {"HugeCountsAreNotBelieved",
     "<polylist count='2'>" + vertex + "<vcount>4294967295 3</vcount><p>0 1 3</p></polylist>", "0", "", 1},
    {"PolygonsAreJoined", "<polygons count='2'>" + vertex + "<p>0 1 3</p><p>1 2 5 4</p></polygons>", "3",
     "0 1 3 1 2 5 1 5 4", 0},
    {"PolygonsWithoutFaces", "<polygons count='0'>" + vertex + "</polygons>", "0", "", 0},
    {"StripTurnsEverySecondTriangle", "<tristrips count='2'>" + vertex + "<p>0 1 3 4 6</p><p>1 2 4</p></tristrips>",
     "4", "0 1 3 1 4 3 3 4 6 1 2 4", 0},
    {"StripLeavesOutWhereItTurnsCorners", "<tristrips count='1'>" + vertex + "<p>0 1 3 3 4</p></tristrips>", "1",
     "0 1 3", 1},
    {"Fan", "<trifans count='1'>" + vertex + "<p>4 0 1 2</p></trifans>", "2", "4 0 1 4 1 2", 0},
    {"ListsOfTrianglesAreJoined", "<triangles count='2'>" + vertex + "<p>0 1 3</p><p>1 4 3</p></triangles>", "2",
     "0 1 3 1 4 3", 0},
    {"CountBeyondTheListIsSetRight", "<triangles count='7'>" + vertex + "<p> 0 1 3 </p></triangles>", "1", "0 1 3", 0},
    {"MissingCountIsSet", "<triangles>" + vertex + "<p>0 1 3 1 4 3</p></triangles>", "2", "0 1 3 1 4 3", 0},
    {"CountBelowTheListBoundsIt", "<triangles count='1'>" + vertex + "<p>0 1 3 1 4 3</p></triangles>", "1",
     "0 1 3 1 4 3", 0},
    {"TriangleWithAnIndexOutsideIsLeftOut", "<triangles count='2'>" + vertex + "<p>0 1 99 1 4 3</p></triangles>", "1",
     "1 4 3", 1},
    {"EmptyListsStay", "<triangles count='0'>" + vertex + "<p/></triangles>", "0", "", 0});

TEST(TriangulateMeshTest, OutlineThatTurnsBackKeepsBothOfItsEdges)
{
    // From 2 to 4, inside, and back; from 6 to 7, on the way from 8, and back.
    const std::vector<int> outline = {0, 2, 4, 2, 8, 6, 7, 6};
    const Prepared result(
        mesh("<polylist count='1'>" + vertex + "<vcount>8</vcount><p>0 2 4 2 8 6 7 6</p></polylist>"));
    const std::vector<double> list = result.numbers("//triangles/p");
    for (std::size_t i = 0; i < outline.size(); ++i) {
        const int from = outline[i];
        const int to = outline[(i + 1) % outline.size()];
        bool isThere = false;
        for (std::size_t corner = 0; corner < list.size(); ++corner) {
            const std::size_t next = corner - corner % 3 + (corner % 3 + 1) % 3;
            isThere = isThere || (static_cast<int>(list[corner]) == from && static_cast<int>(list[next]) == to);
        }
        EXPECT_TRUE(isThere) << from << " to " << to;
    }
}

TEST(TriangulateMeshTest, ListOfTrianglesThatIsRightIsNotTouched)
{
    const std::string document =
        test::colladaDocument(mesh("<triangles count='1'>" + vertex + "<p>  0 1\n 3 </p></triangles>"));
    const Prepared result(document);
    EXPECT_FALSE(result.report.changed);
    EXPECT_EQ(Prepared(document).xml(), result.xml());
    EXPECT_EQ("  0 1\n 3 ", std::string(result.node("//p").text().get()));
}

TEST(TriangulateMeshTest, FaceWithAPositionThatIsNoNumberIsLeftOut)
{
    const Prepared result(mesh("<triangles count='2'>" + vertex + "<p>0 1 9 0 1 3</p></triangles>", " 0 NaN 0"));
    EXPECT_EQ("0 1 3", result.text("//triangles/p"));
    EXPECT_EQ(1U, result.findings("faces"));
}

TEST(TriangulateMeshTest, ConcaveFaceIsCutAtItsConcaveCorner)
{
    // Corner 4 is the concave one, opposite corner 0, so there is only one way.
    const Prepared result(mesh("<polylist count='1'>" + vertex + "<vcount>4</vcount><p>2 4 7 0</p></polylist>"));
    EXPECT_STREQ("2", result.node("//triangles").attribute("count").value());
    const std::string list = result.text("//triangles/p");
    EXPECT_EQ(2, std::count(list.begin(), list.end(), '4')) << list;
    EXPECT_EQ(2, std::count(list.begin(), list.end(), '0')) << list;
}

TEST(TriangulateMeshTest, AllIndicesOfACornerStayTogether)
{
    const Prepared result(mesh("<polylist count='1'>"
                               "<input semantic='VERTEX' source='#v' offset='1'/>"
                               "<input semantic='NORMAL' source='#p' offset='0'/>"
                               "<vcount>4</vcount><p>5 0 6 1 7 4 8 3</p></polylist>"));
    EXPECT_EQ("5 0 6 1 7 4 5 0 7 4 8 3", result.text("//triangles/p"));
}

TEST(TriangulateMeshTest, HoleIsLeftOpen)
{
    // A square of 9 around a square of 1: 8 triangles.
    const Prepared result(
        "<library_geometries><geometry id='g'><mesh><source id='p'>"
        "<float_array id='pa' count='24'>0 0 0 3 0 0 3 3 0 0 3 0 1 1 0 1 2 0 2 2 0 2 1 0</float_array>"
        "<technique_common><accessor source='#pa' count='8' stride='3'><param name='X' type='float'/>"
        "<param name='Y' type='float'/><param name='Z' type='float'/></accessor></technique_common>"
        "</source><vertices id='v'><input semantic='POSITION' source='#p'/></vertices>"
        "<polygons count='1'>" +
        vertex + "<ph><p>0 1 2 3</p><h>4 5 6 7</h></ph></polygons></mesh></geometry></library_geometries>");
    EXPECT_STREQ("8", result.node("//triangles").attribute("count").value());
}

TEST(TriangulateMeshTest, MaterialAndNameStay)
{
    const Prepared result(mesh("<polygons count='1' material='m' name='n'>" + vertex + "<p>0 1 3</p></polygons>"));
    EXPECT_STREQ("m", result.node("//triangles").attribute("material").value());
    EXPECT_STREQ("n", result.node("//triangles").attribute("name").value());
    EXPECT_EQ(1U, result.findings("polygons"));
}

} // namespace
