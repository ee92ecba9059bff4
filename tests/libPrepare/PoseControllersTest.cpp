#include "AnimationWords.h"
#include "Expectations.h"
#include "Prepared.h"

#include "support/Words.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using test::kinds;
using test::Prepared;
using test::source;
using testSupport::inputXml;

// A triangle at 0 0 0, 1 0 0, 0 1 0, with normals at an offset of their own.
std::string mesh(const std::string& id, const std::string& positions, const std::string& normals)
{
    return "<geometry id='" + id + "'><mesh>" + source(id + "p", "X Y Z", positions) +
           source(id + "n", "X Y Z", normals) + "<vertices id='" + id + "v'>" + inputXml("POSITION", id + "p") +
           "</vertices><triangles count='1' material='m'>" + inputXml("VERTEX", id + "v", "0") +
           inputXml("NORMAL", id + "n", "1") + "<p>0 0 1 0 2 1</p></triangles></mesh></geometry>";
}

const std::string base = mesh("g", "0 0 0 1 0 0 0 1 0", "1 0 0 0 0 1");
const std::string unitMatrix = "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1";

std::string skin(const std::string& weights, const std::string& of = "g", const std::string& shape = unitMatrix)
{
    return "<controller id='c'><skin source='#" + of + "'><bind_shape_matrix>" + shape + "</bind_shape_matrix>" +
           kinds("j", "A B") +
           testSupport::sourceXml("i", unitMatrix + ' ' + unitMatrix, "count='2' stride='16'", PARAM_MATRIX) +
           source("w", "W", "1 0.5 0") + "<joints>" + inputXml("JOINT", "j") + inputXml("INV_BIND_MATRIX", "i") +
           "</joints><vertex_weights count='3'>" + inputXml("JOINT", "j", "0") + inputXml("WEIGHT", "w", "1") +
           weights + "</vertex_weights></skin></controller>";
}

// Joint A turns by 90 degrees about Z and is at 0 0 5, joint B at 10 0 0.
std::string scene(const std::string& controllers, const std::string& geometries = base)
{
    return "<library_geometries>" + geometries + "</library_geometries><library_controllers>" + controllers +
           "</library_controllers>" +
           test::shown(
               "<node id='root'><matrix>" + unitMatrix +
               "</matrix><node id='a' sid='A'><translate>0 0 5</translate><rotate>0 0 1 90</rotate></node>"
               "<node id='b' sid='B'><translate>10 0 0</translate></node></node>"
               "<node id='n'><translate>100 0 0</translate><instance_controller url='#c'><skeleton>#root</skeleton>"
               "<bind_material><technique_common><instance_material symbol='m' target='#red'/></technique_common>"
               "</bind_material></instance_controller></node>");
}

// The numbers that an input of the shown geometry leads to.
std::vector<double> shown(const Prepared& result, const std::string& semantic)
{
    return result.inputNumbers("//geometry[@id=substring(//instance_geometry/@url, 2)]/mesh/*", semantic);
}

TEST(PoseControllersTest, SkinStandsInTheWorldOfItsJoints)
{
    // Vertex 0 by A, vertex 1 by B, vertex 2 by both in halves.
    const Prepared result(scene(skin("<vcount>1 1 2</vcount><v>0 0 1 0 0 1 1 1</v>")));
    // A: (x, y, z) to (-y, x, z + 5); B: to (x + 10, y, z); of (0, 1, 0): (-1, 0, 5) and (10, 1, 0).
    test::expectNear({0, 0, 5, 11, 0, 0, 4.5, 0.5, 2.5}, shown(result, "POSITION"));
    const pugi::xml_node node = result.node("//instance_geometry").parent();
    EXPECT_EQ(result.node("//visual_scene"), node.parent());
    EXPECT_STREQ("1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1", node.child("matrix").text().get());
    EXPECT_EQ(0U, result.count("//instance_controller | //skeleton"));
    EXPECT_STREQ("#red", result.node("//instance_geometry//instance_material").attribute("target").value());
    EXPECT_EQ(1U, result.count("//node[@id='n']"));
    EXPECT_EQ(1U, result.findings("skin"));
    test::expectStable(result);
}

TEST(PoseControllersTest, NormalsTurnWithTheVerticesThatUseThem)
{
    const Prepared result(scene(skin("<vcount>1 1 1</vcount><v>0 0 1 0 0 0</v>")));
    // Normal 0 is (1, 0, 0): turned by A to (0, 1, 0) at vertex 0, kept by B at vertex 1; normal 1 is (0, 0, 1) throughout.
    test::expectNear({0, 1, 0, 1, 0, 0, 0, 0, 1}, shown(result, "NORMAL"));
    const std::string url = result.node("//instance_geometry").attribute("url").value();
    EXPECT_EQ("0 0 1 1 2 2", result.text(("//geometry[@id='" + url.substr(1) + "']//p").c_str()));
    test::expectNear({1, 0, 0, 0, 0, 1}, result.numbers("//source[@id='gn']/float_array")); // as they were
}

TEST(PoseControllersTest, WeightsAreNormalizedAndVerticesWithoutAnyStayInTheBindShape)
{
    const std::string twice = "2 0 0 0 0 2 0 0 0 0 2 0 0 0 0 1";
    // Vertex 0 has half a weight of B, vertex 1 none, vertex 2 one for joint -1.
    const Prepared result(scene(skin("<vcount>1 0 1</vcount><v>1 1 -1 0</v>", "g", twice)));
    test::expectNear({10, 0, 0, 2, 0, 0, 0, 2, 0}, shown(result, "POSITION"));
}

TEST(PoseControllersTest, JointBelowTheSkeletonGoesBeforeOneOfTheScene)
{
    std::string document = scene(skin("<vcount>1 1 1</vcount><v>1 0 1 0 1 0</v>"));
    document.replace(document.find("<node id='root'>"), 16,
                     "<node id='other' sid='B'><translate>0 0 99</translate></node><node id='root'>");
    test::expectNear({10, 0, 0, 11, 0, 0, 10, 1, 0}, shown(Prepared(document), "POSITION"));
}

TEST(PoseControllersTest, JointNamesWithBlanksAreFound)
{
    std::string document = scene(skin("<vcount>1 1 1</vcount><v>1 0 1 0 1 0</v>"));
    document.replace(document.find("sid='A'"), 7, "sid='left arm'");
    document.replace(document.find(">A B<"), 5, ">left arm B<");
    test::expectNear({10, 0, 0, 11, 0, 0, 10, 1, 0}, shown(Prepared(document), "POSITION"));
}

// A quad of four vertices with one normal, cut as `faces` say.
std::string quad(const std::string& positions, const std::string& faces)
{
    return "<geometry id='g'><mesh>" + source("gp", "X Y Z", positions) + source("gn", "X Y Z", "1 0 0") +
           "<vertices id='gv'>" + inputXml("POSITION", "gp") + "</vertices>" + "<polygons count='1' material='m'>" +
           inputXml("VERTEX", "gv", "0") + inputXml("NORMAL", "gn", "1") + faces + "</polygons></mesh></geometry>";
}

TEST(PoseControllersTest, PolygonsAreCutUpAsTheyStandInThePose)
{
    // Convex as it is bound. Joint B moves all but vertex 1 by 10, to (4, 0), (1, 1), (0, 4), (0, 0): concave at vertex 1.
    const Prepared result(scene(skin("<vcount>1 1 1 1</vcount><v>1 0 -1 0 1 0 1 0</v>"),
                                quad("-6 0 0 1 1 0 -10 4 0 -10 0 0", "<p>0 0 1 0 2 0 3 0</p>")));
    const std::vector<double> positions = shown(result, "POSITION");
    test::expectNear({4, 0, 0, 1, 1, 0, 0, 4, 0, 0, 0, 0}, positions);
    const std::vector<double> corners =
        result.numbers("//geometry[@id=substring(//instance_geometry/@url, 2)]/mesh/triangles/p");
    ASSERT_EQ(12U, corners.size());
    double area = 0;
    for (std::size_t i = 0; i < corners.size(); i += 6) {
        const auto at = [&](std::size_t corner, std::size_t axis) {
            return positions[3 * static_cast<std::size_t>(corners[i + 2 * corner]) + axis];
        };
        const double each =
            ((at(1, 0) - at(0, 0)) * (at(2, 1) - at(0, 1)) - (at(2, 0) - at(0, 0)) * (at(1, 1) - at(0, 1))) / 2;
        EXPECT_GT(each, 0); // none looks the other way
        area += each;
    }
    EXPECT_NEAR(4, area, 1e-9);
    test::expectStable(result);
}

TEST(PoseControllersTest, NormalsOfHolesTurnToo)
{
    const Prepared result(
        scene(skin("<vcount>1 1 1 1 1 1 1</vcount><v>0 0 0 0 0 0 0 0 0 0 0 0 0 0</v>"),
              quad("0 0 0 4 0 0 4 4 0 0 4 0 1 1 0 1 2 0 2 1 0", "<ph><p>0 0 1 0 2 0 3 0</p><h>4 0 5 0 6 0</h></ph>")));
    std::vector<double> expected; // turned by A from (1, 0, 0), one for each vertex
    for (unsigned i = 0; i < 7; ++i) {
        expected.insert(expected.end(), {0, 1, 0});
    }
    test::expectNear(expected, shown(result, "NORMAL"));
}

TEST(PoseControllersTest, FacesThatThePoseMakesNoNumbersOfAreLeftOut)
{
    std::string document = scene(skin("<vcount>1 1 1</vcount><v>0 0 0 0 0 0</v>"));
    document.replace(document.find("<translate>0 0 5"), 16, "<translate>0 0 NaN");
    const Prepared result(document);
    EXPECT_STREQ("0", result.node("//geometry[@id=substring(//instance_geometry/@url, 2)]/mesh/triangles")
                          .attribute("count")
                          .value());
    test::expectStable(result);
}

std::string morph(const std::string& method, const std::string& weights, const std::string& id = "c",
                  const std::string& of = "g")
{
    return "<controller id='" + id + "'><morph source='#" + of + "' method='" + method + "'>" +
           "<source id='mt'><IDREF_array id='mt-array' count='2'>t u</IDREF_array>" +
           testSupport::accessorTo("mt-array", "count='2'", "<param name='N' type='IDREF'/>") + "</source>" +
           source("mw", "W", weights) +
           "<targets><input semantic='MORPH_TARGET' source='#mt'/><input semantic='MORPH_WEIGHT' "
           "source='#mw'/></targets>"
           "</morph></controller>";
}

const std::string morphed =
    base + mesh("t", "4 0 0 5 0 0 4 1 0", "0 1 0 0 0 1") + mesh("u", "0 8 0 1 8 0 0 9 0", "1 0 0 0 0 1");

TEST(PoseControllersTest, NormalizedMorphBlendsWithTheBase)
{
    const Prepared result(scene(morph("NORMALIZED", "0.25 0.5"), morphed));
    // 0.25 of the base, 0.25 of t, 0.5 of u: x by 0.25 * 4, y by 0.5 * 8.
    test::expectNear({1, 4, 0, 2, 4, 0, 1, 5, 0}, shown(result, "POSITION"));
    const double length = std::sqrt(0.75 * 0.75 + 0.25 * 0.25); // blended normals have length 1 again
    test::expectNear({0.75 / length, 0.25 / length, 0, 0, 0, 1}, shown(result, "NORMAL"));
    EXPECT_STREQ("n", result.node("//instance_geometry").parent().attribute("id").value());
    EXPECT_EQ(1U, result.findings("morph"));
    test::expectStable(result);
}

TEST(PoseControllersTest, RelativeMorphAddsToTheBase)
{
    const Prepared result(scene(morph("RELATIVE", "0.5 0"), morphed));
    test::expectNear({2, 0, 0, 3.5, 0, 0, 2, 1.5, 0}, shown(result, "POSITION"));
}

TEST(PoseControllersTest, AnimatedWeightsAreThoseOfTheTime)
{
    const std::string library = "<library_animations>" +
                                test::flat("x", "mw-array(0)", "WEIGHT", "0 4", "0 1", "LINEAR LINEAR") +
                                "</library_animations>";
    libPrepare::Options options;
    options.time = 1;
    const Prepared result(library + scene(morph("NORMALIZED", "0.5 0"), morphed), options);
    test::expectNear({1, 0, 0, 2, 0, 0, 1, 1, 0}, shown(result, "POSITION")); // a quarter of t: x by 0.25 * 4
    const Prepared declared(library + scene(morph("NORMALIZED", "0.5 0"), morphed));
    test::expectNear({2, 0, 0, 3, 0, 0, 2, 1, 0}, shown(declared, "POSITION"));
}

TEST(PoseControllersTest, AnimatedWeightsAreThoseOfSecond0WhereTheNodesAre)
{
    const std::string library =
        "<library_animations>" + test::flat("x", "mw-array(0)", "WEIGHT", "0 4", "0.25 1", "LINEAR LINEAR") +
        test::flat("y", "n/t", "X Y Z", "0 4", "0 0 0 4 0 0", "LINEAR LINEAR") + "</library_animations>";
    std::string document = library + scene(morph("NORMALIZED", "0.5 0"), morphed);
    document.replace(document.find("<translate>100"), 14, "<translate sid='t'>100");
    const Prepared result(document); // the node declares 0 0 0 now, which is its place at second 0
    test::expectNear({0, 0, 0}, result.numbers("//node[@id='n']/translate"));
    test::expectNear({1, 0, 0, 2, 0, 0, 1, 1, 0}, shown(result, "POSITION")); // a quarter of t: x by 0.25 * 4
}

TEST(PoseControllersTest, SkinOfAMorphMovesTheBlendedMesh)
{
    const Prepared result(
        scene(skin("<vcount>1 1 1</vcount><v>1 0 1 0 1 0</v>", "k") + morph("NORMALIZED", "0.25 0", "k"), morphed));
    test::expectNear({11, 0, 0, 12, 0, 0, 11, 1, 0}, shown(result, "POSITION"));
    EXPECT_EQ(1U, result.findings("skin"));
    EXPECT_EQ(1U, result.findings("morph"));
}

TEST(PoseControllersTest, ControllersThatLeadNowhereOrInCirclesAreReported)
{
    for (const char* const source : {"none", "c"}) {
        const Prepared result(scene(skin("<vcount>1 1 1</vcount><v>0 0 1 0 1 0</v>", source)));
        EXPECT_EQ(0U, result.count("//instance_geometry"));
        EXPECT_EQ(1U, result.findings("controller"));
    }
}

TEST(PoseControllersTest, CountsAndIndicesThatLeadOutsideAreSurvived)
{
    const Prepared result(scene(skin("<vcount>1 -4 99999999 7</vcount><v>0 0 77 0 -9 0 1 66 1 -1 1</v>")));
    EXPECT_EQ(9U, shown(result, "POSITION").size());
}

} // namespace
