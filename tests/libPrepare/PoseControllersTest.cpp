#include "AnimationWords.h"
#include "Prepared.h"

#include <libPrepare/document/Numbers.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

using test::Prepared;

std::string source(const std::string& id, const std::string& numbers, int count, int stride)
{
    std::string result = "<source id='" + id + "'><float_array id='" + id + "-array' count='" +
                         std::to_string(count * stride) + "'>" + numbers +
                         "</float_array><technique_common><accessor source='#" + id + "-array' count='" +
                         std::to_string(count) + "' stride='" + std::to_string(stride) + "'>";
    if (stride == 16) {
        return result + "<param name='TRANSFORM' type='float4x4'/></accessor></technique_common></source>";
    }
    for (int i = 0; i < stride; ++i) {
        result += std::string("<param name='") + "XYZW"[i] + "' type='float'/>";
    }
    return result + "</accessor></technique_common></source>";
}

std::string names(const std::string& id, const std::string& kind, const std::string& words, int count)
{
    return "<source id='" + id + "'><" + kind + " id='" + id + "-array' count='" + std::to_string(count) + "'>" +
           words + "</" + kind + "><technique_common><accessor source='#" + id + "-array' count='" +
           std::to_string(count) + "' stride='1'><param name='N' type='name'/></accessor></technique_common></source>";
}

// A triangle at 0 0 0, 1 0 0, 0 1 0, with normals at an offset of their own.
std::string mesh(const std::string& id, const std::string& positions, const std::string& normals)
{
    return "<geometry id='" + id + "'><mesh>" + source(id + "p", positions, 3, 3) + source(id + "n", normals, 2, 3) +
           "<vertices id='" + id + "v'><input semantic='POSITION' source='#" + id +
           "p'/></vertices><triangles count='1' "
           "material='m'><input semantic='VERTEX' source='#" +
           id + "v' offset='0'/><input semantic='NORMAL' source='#" + id +
           "n' offset='1'/><p>0 0 1 0 2 1</p></triangles></mesh></geometry>";
}

const std::string base = mesh("g", "0 0 0 1 0 0 0 1 0", "1 0 0 0 0 1");
const std::string unitMatrix = "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1";

std::string skin(const std::string& weights, const std::string& of = "g", const std::string& shape = unitMatrix)
{
    return "<controller id='c'><skin source='#" + of + "'><bind_shape_matrix>" + shape + "</bind_shape_matrix>" +
           names("j", "Name_array", "A B", 2) + source("i", unitMatrix + ' ' + unitMatrix, 2, 16) +
           source("w", "1 0.5 0", 3, 1) +
           "<joints><input semantic='JOINT' source='#j'/><input semantic='INV_BIND_MATRIX' source='#i'/></joints>"
           "<vertex_weights count='3'><input semantic='JOINT' source='#j' offset='0'/>"
           "<input semantic='WEIGHT' source='#w' offset='1'/>" +
           weights + "</vertex_weights></skin></controller>";
}

// Joint A turns by 90 degrees about Z and is at 0 0 5, joint B at 10 0 0.
std::string scene(const std::string& controllers, const std::string& geometries = base)
{
    return "<library_geometries>" + geometries + "</library_geometries><library_controllers>" + controllers +
           "</library_controllers><library_visual_scenes><visual_scene id='vs'><node id='root'><matrix>" + unitMatrix +
           "</matrix><node id='a' sid='A'><translate>0 0 5</translate><rotate>0 0 1 90</rotate></node>"
           "<node id='b' sid='B'><translate>10 0 0</translate></node></node>"
           "<node id='n'><translate>100 0 0</translate><instance_controller url='#c'><skeleton>#root</skeleton>"
           "<bind_material><technique_common><instance_material symbol='m' "
           "target='#red'/></technique_common></bind_material>"
           "</instance_controller></node></visual_scene></library_visual_scenes>"
           "<scene><instance_visual_scene url='#vs'/></scene>";
}

std::vector<double> numbers(const Prepared& result, const std::string& path)
{
    return libPrepare::numbers(result.text(path.c_str()));
}

void expectNumbers(const std::vector<double>& expected, const std::vector<double>& actual)
{
    ASSERT_EQ(expected.size(), actual.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(expected[i], actual[i], 1e-9) << "number " << i;
    }
}

// The numbers that an input of the shown geometry leads to.
std::vector<double> shown(const Prepared& result, const std::string& semantic)
{
    const std::string url = result.node("//instance_geometry").attribute("url").value();
    const std::string inputs = "//geometry[@id='" + url.substr(1) + "']//input[@semantic='" + semantic + "']";
    const std::string id = result.node(inputs.c_str()).attribute("source").value();
    return numbers(result, "//source[@id='" + id.substr(1) + "']/float_array");
}

void expectSettled(const Prepared& result)
{
    const Prepared again(result.xml());
    EXPECT_FALSE(again.report.changed);
    EXPECT_EQ(result.xml(), again.xml());
}

TEST(PoseControllersTest, SkinStandsInTheWorldOfItsJoints)
{
    // Vertex 0 by A, vertex 1 by B, vertex 2 by both in halves.
    const Prepared result(scene(skin("<vcount>1 1 2</vcount><v>0 0 1 0 0 1 1 1</v>")));
    // A: (x, y, z) to (-y, x, z + 5); B: to (x + 10, y, z); of (0, 1, 0): (-1, 0, 5) and (10, 1, 0).
    expectNumbers({0, 0, 5, 11, 0, 0, 4.5, 0.5, 2.5}, shown(result, "POSITION"));
    const pugi::xml_node node = result.node("//instance_geometry").parent();
    EXPECT_EQ(result.node("//visual_scene"), node.parent());
    EXPECT_STREQ("1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1", node.child("matrix").text().get());
    EXPECT_EQ(0U, result.count("//instance_controller | //skeleton"));
    EXPECT_STREQ("#red", result.node("//instance_geometry//instance_material").attribute("target").value());
    EXPECT_EQ(1U, result.count("//node[@id='n']"));
    EXPECT_EQ(1U, result.findings("skin"));
    expectSettled(result);
}

TEST(PoseControllersTest, NormalsTurnWithTheVerticesThatUseThem)
{
    const Prepared result(scene(skin("<vcount>1 1 1</vcount><v>0 0 1 0 0 0</v>")));
    // Normal 0 is (1, 0, 0): turned by A to (0, 1, 0) at vertex 0, kept by B at vertex 1; normal 1 is (0, 0, 1) throughout.
    expectNumbers({0, 1, 0, 1, 0, 0, 0, 0, 1}, shown(result, "NORMAL"));
    const std::string url = result.node("//instance_geometry").attribute("url").value();
    EXPECT_EQ("0 0 1 1 2 2", result.text(("//geometry[@id='" + url.substr(1) + "']//p").c_str()));
    expectNumbers({1, 0, 0, 0, 0, 1}, numbers(result, "//source[@id='gn']/float_array")); // as they were
}

TEST(PoseControllersTest, WeightsAreNormalizedAndVerticesWithoutAnyStayInTheBindShape)
{
    const std::string twice = "2 0 0 0 0 2 0 0 0 0 2 0 0 0 0 1";
    // Vertex 0 has half a weight of B, vertex 1 none, vertex 2 one for joint -1.
    const Prepared result(scene(skin("<vcount>1 0 1</vcount><v>1 1 -1 0</v>", "g", twice)));
    expectNumbers({10, 0, 0, 2, 0, 0, 0, 2, 0}, shown(result, "POSITION"));
}

TEST(PoseControllersTest, JointBelowTheSkeletonGoesBeforeOneOfTheScene)
{
    std::string document = scene(skin("<vcount>1 1 1</vcount><v>1 0 1 0 1 0</v>"));
    document.replace(document.find("<node id='root'>"), 16,
                     "<node id='other' sid='B'><translate>0 0 99</translate></node><node id='root'>");
    expectNumbers({10, 0, 0, 11, 0, 0, 10, 1, 0}, shown(Prepared(document), "POSITION"));
}

TEST(PoseControllersTest, JointNamesWithBlanksAreFound)
{
    std::string document = scene(skin("<vcount>1 1 1</vcount><v>1 0 1 0 1 0</v>"));
    document.replace(document.find("sid='A'"), 7, "sid='left arm'");
    document.replace(document.find(">A B<"), 5, ">left arm B<");
    expectNumbers({10, 0, 0, 11, 0, 0, 10, 1, 0}, shown(Prepared(document), "POSITION"));
}

std::string morph(const std::string& method, const std::string& weights, const std::string& id = "c",
                  const std::string& of = "g")
{
    return "<controller id='" + id + "'><morph source='#" + of + "' method='" + method + "'>" +
           names("mt", "IDREF_array", "t u", 2) + source("mw", weights, 2, 1) +
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
    expectNumbers({1, 4, 0, 2, 4, 0, 1, 5, 0}, shown(result, "POSITION"));
    const double length = std::sqrt(0.75 * 0.75 + 0.25 * 0.25); // blended normals have length 1 again
    expectNumbers({0.75 / length, 0.25 / length, 0, 0, 0, 1}, shown(result, "NORMAL"));
    EXPECT_STREQ("n", result.node("//instance_geometry").parent().attribute("id").value());
    EXPECT_EQ(1U, result.findings("morph"));
    expectSettled(result);
}

TEST(PoseControllersTest, RelativeMorphAddsToTheBase)
{
    const Prepared result(scene(morph("RELATIVE", "0.5 0"), morphed));
    expectNumbers({2, 0, 0, 3.5, 0, 0, 2, 1.5, 0}, shown(result, "POSITION"));
}

TEST(PoseControllersTest, AnimatedWeightsAreThoseOfTheTime)
{
    const std::string library = "<library_animations>" +
                                test::flat("x", "mw-array(0)", "WEIGHT", "0 4", "0 1", "LINEAR LINEAR") +
                                "</library_animations>";
    libPrepare::Options options;
    options.time = 1;
    const Prepared result(library + scene(morph("NORMALIZED", "0.5 0"), morphed), options);
    expectNumbers({1, 0, 0, 2, 0, 0, 1, 1, 0}, shown(result, "POSITION")); // a quarter of t: x by 0.25 * 4
    const Prepared declared(library + scene(morph("NORMALIZED", "0.5 0"), morphed));
    expectNumbers({2, 0, 0, 3, 0, 0, 2, 1, 0}, shown(declared, "POSITION"));
}

TEST(PoseControllersTest, SkinOfAMorphMovesTheBlendedMesh)
{
    const Prepared result(
        scene(skin("<vcount>1 1 1</vcount><v>1 0 1 0 1 0</v>", "k") + morph("NORMALIZED", "0.25 0", "k"), morphed));
    expectNumbers({11, 0, 0, 12, 0, 0, 11, 1, 0}, shown(result, "POSITION"));
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
