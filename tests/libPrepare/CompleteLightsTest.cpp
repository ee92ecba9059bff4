#include "Expectations.h"
#include "LookDocuments.h"

#include <libPrepare/document/Numbers.h>

#include <gtest/gtest.h>

namespace {

using libPrepare::Approximation;
using test::Prepared;

std::string light(const std::string& id, const std::string& shape, const std::string& extra = {})
{
    return "<light id=\"" + id + "\"><technique_common>" + shape + "</technique_common>" + extra + "</light>";
}

std::string node(const std::string& id, const std::string& transform, const std::string& content)
{
    return "<node id=\"" + id + "\">" + transform + content + "</node>";
}

std::string show(const std::string& light)
{
    return "<instance_light url=\"#" + light + "\"/>";
}

std::string at(const std::string& x, const std::string& y, const std::string& z)
{
    return "<matrix>1 0 0 " + x + " 0 1 0 " + y + " 0 0 1 " + z + " 0 0 0 1</matrix>";
}

const std::string origin = at("0", "0", "0");

std::string scene(const std::string& lights, const std::string& nodes, const std::string& more = {})
{
    return "<library_lights>" + lights + "</library_lights>" + more + test::shownNodes(nodes);
}

const std::string wholeSpot = "<spot><color>1 1 1</color><constant_attenuation>1</constant_attenuation>"
                              "<linear_attenuation>0</linear_attenuation><quadratic_attenuation>0"
                              "</quadratic_attenuation><falloff_angle>20</falloff_angle><falloff_exponent>1"
                              "</falloff_exponent></spot>";

std::string vendor(const std::string& values)
{
    return "<extra><technique profile=\"FCOLLADA\">" + values + "</technique></extra>";
}

// The id of the node that the vendor data of a spot light names.
std::string targetOf(const Prepared& prepared, const std::string& light)
{
    const std::string text = prepared.text(("//light[@id='" + light + "']/extra/technique/target").c_str());
    return text.empty() ? text : text.substr(1);
}

TEST(CompleteLightsTest, PointWithoutAttenuationHasThatOfTheStandard)
{
    const Prepared prepared(scene(light("l", "<point><color>1 0.5 0</color><quadratic_attenuation>0.250"
                                             "</quadratic_attenuation></point>"),
                                  node("n", origin, show("l"))));
    std::string order;
    for (const pugi::xml_node child : prepared.node("//point").children()) {
        order += std::string(child.name()) + ' ' + child.text().get() + ' ';
    }
    EXPECT_EQ("color 1 0.5 0 constant_attenuation 1 linear_attenuation 0 quadratic_attenuation 0.250 ", order);
    test::expectStable(prepared);
}

TEST(CompleteLightsTest, PointWithoutAColorIsWhite)
{
    const Prepared prepared(
        scene(light("a", "<point/>") + light("b", "<point><color>1 1</color></point>"), node("n", origin, "")));
    EXPECT_EQ("1 1 1", prepared.text("//light[@id='a']//color"));
    EXPECT_EQ("1 1 1", prepared.text("//light[@id='b']//color"));
}

TEST(CompleteLightsTest, WholeLightStaysAsItIs)
{
    const Prepared prepared(scene(light("l", wholeSpot, vendor("<outer_cone>30</outer_cone><target>#t</target>")),
                                  node("n", origin, show("l")) + node("t", at("0", "0", "-2"), "")));
    EXPECT_FALSE(prepared.report.changed);
}

TEST(CompleteLightsTest, SpotHasTheConeOfTheStandard)
{
    const Prepared prepared(scene(light("l", "<spot><color>1 1 1</color></spot>"), node("n", origin, "")));
    EXPECT_EQ("180", prepared.text("//falloff_angle"));
    EXPECT_EQ("0", prepared.text("//falloff_exponent"));
    EXPECT_EQ("180", prepared.text("//extra/technique[@profile='FCOLLADA']/outer_cone"));
    test::expectStable(prepared);
}

TEST(CompleteLightsTest, OuterConeThatIsNoNumberIsTheInnerOne)
{
    const Prepared prepared(
        scene(light("l", wholeSpot, vendor("<OUTER_CONE>wide</OUTER_CONE>")), node("n", origin, "")));
    EXPECT_EQ("20", prepared.text("//extra/technique/OUTER_CONE"));
    EXPECT_EQ(1U, prepared.count("//technique[@profile]/*"));
}

TEST(CompleteLightsTest, OuterConeOfAnEndlessAngleIsThatOfTheStandard)
{
    const Prepared prepared(
        scene(light("l", "<spot><falloff_angle>INF</falloff_angle></spot>"), node("n", origin, "")));
    EXPECT_EQ("180", prepared.text("//outer_cone"));
    test::expectStable(prepared);
}

TEST(CompleteLightsTest, LightThatIsNotThereNoLongerHidesTheOthers)
{
    const Prepared prepared(
        scene(light("l", "<point><color>1 1 1</color></point>"), node("n", origin, show("none") + show("l"))));
    EXPECT_EQ(1U, prepared.count("//instance_light"));
    EXPECT_EQ("#l", std::string(prepared.node("//instance_light").attribute("url").value()));
    ASSERT_NE(nullptr, prepared.report.first(libPrepare::Outcome::lost));
    EXPECT_EQ("light", prepared.report.first(libPrepare::Outcome::lost)->kind);
    test::expectStable(prepared);
}

TEST(CompleteLightsTest, SpotInTheSceneIsAimedAtANodeBesideIt)
{
    // Five from the origin, so that the target is five ahead.
    const Prepared prepared(scene(light("l", wholeSpot), node("n", at("3", "0", "4"), show("l"))));
    const std::string target = targetOf(prepared, "l");
    EXPECT_EQ("1 0 0 3 0 1 0 0 0 0 1 -1 0 0 0 1",
              prepared.text(("//visual_scene/node[@id='" + target + "']/matrix").c_str()));
    EXPECT_EQ("#l", std::string(prepared.node("//node[@id='n']/instance_light").attribute("url").value()));
    test::expectStable(prepared);
}

TEST(CompleteLightsTest, SpotUnderATurnedNodeIsAimedInTheScene)
{
    // A quarter turn about Y maps -Z to -X; the spot is at (2, 0, 0) in the world.
    const std::string turned = "<matrix>0 0 1 0 0 1 0 0 -1 0 0 0 0 0 0 1</matrix>";
    const Prepared prepared(
        scene(light("l", wholeSpot), node("parent", turned, node("n", at("0", "0", "2"), show("l")))));
    const pugi::xml_node shown = prepared.node("//instance_light[@url='#l']").parent();
    EXPECT_EQ("visual_scene", std::string(shown.parent().name()));
    EXPECT_EQ("0 0 1 2 0 1 0 0 -1 0 0 0 0 0 0 1", std::string(shown.child("matrix").text().get()));
    const std::string target = targetOf(prepared, "l");
    EXPECT_EQ("1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1",
              prepared.text(("//visual_scene/node[@id='" + target + "']/matrix").c_str()));
    EXPECT_EQ(at("0", "0", "2").substr(8, 30), prepared.text("//node[@id='n']/matrix").substr(0, 30));
    test::expectStable(prepared);
}

TEST(CompleteLightsTest, SpotsUnderATurnedNodeKeepTheirOrder)
{
    const std::string turned = "<matrix>0 0 1 0 0 1 0 0 -1 0 0 0 0 0 0 1</matrix>";
    const Prepared prepared(scene(light("l", wholeSpot) + light("m", wholeSpot),
                                  node("parent", turned, node("n", origin, show("l")) + node("o", origin, show("m"))) +
                                      node("last", origin, "")));
    std::string order;
    for (const pugi::xml_node each : prepared.node("//visual_scene").children("node")) {
        order += each.attribute("id").value() + std::string(" ");
    }
    EXPECT_EQ("parent n-light n-target o-light o-target last ", order);
    test::expectStable(prepared);
}

TEST(CompleteLightsTest, TargetThatIsNotAheadIsReplaced)
{
    const Prepared prepared(scene(light("l", wholeSpot, vendor("<target>#t</target>")),
                                  node("n", origin, show("l")) + node("t", at("1", "0", "0"), "")));
    EXPECT_NE("t", targetOf(prepared, "l"));
    EXPECT_EQ(1U, prepared.count("//target"));
    EXPECT_EQ(1U, prepared.count("//node[@id='t']"));
}

TEST(CompleteLightsTest, SpotThatMovesTakesItsTargetAlong)
{
    const std::string animation =
        "<library_animations><animation id=\"a\"><source id=\"i\"><float_array id=\"ia\" count=\"2\">0 1</float_array>"
        "<technique_common><accessor source=\"#ia\" count=\"2\" stride=\"1\"><param name=\"TIME\" type=\"float\"/>"
        "</accessor></technique_common></source><source id=\"o\"><float_array id=\"oa\" count=\"6\">0 0 0 1 0 0"
        "</float_array><technique_common><accessor source=\"#oa\" count=\"2\" stride=\"3\"><param name=\"X\" "
        "type=\"float\"/><param name=\"Y\" type=\"float\"/><param name=\"Z\" type=\"float\"/></accessor>"
        "</technique_common></source><source id=\"p\"><Name_array id=\"pa\" count=\"2\">LINEAR LINEAR</Name_array>"
        "<technique_common><accessor source=\"#pa\" count=\"2\" stride=\"1\"><param name=\"INTERPOLATION\" "
        "type=\"name\"/></accessor></technique_common></source><sampler id=\"s\"><input semantic=\"INPUT\" "
        "source=\"#i\"/><input semantic=\"OUTPUT\" source=\"#o\"/><input semantic=\"INTERPOLATION\" source=\"#p\"/>"
        "</sampler><channel source=\"#s\" target=\"parent/move\"/></animation></library_animations>";
    const Prepared prepared(
        scene(light("l", wholeSpot),
              node("parent", "<translate sid=\"move\">0 0 0</translate>", node("n", origin, show("l"))), animation));
    const std::string target = targetOf(prepared, "l");
    EXPECT_EQ("1 0 0 0 0 1 0 0 0 0 1 -1 0 0 0 1",
              prepared.text(("//node[@id='n']/node[@id='" + target + "']/matrix").c_str()));
    EXPECT_EQ(1U, prepared.count("//node[@id='n']/instance_light"));
    test::expectStable(prepared);
}

TEST(CompleteLightsTest, SpotAtTwoNodesBecomesTwo)
{
    const Prepared prepared(
        scene(light("l", wholeSpot), node("n", origin, show("l")) + node("m", at("0", "1", "0"), show("l"))));
    const std::string first = prepared.node("//node[@id='n']/instance_light").attribute("url").value();
    const std::string second = prepared.node("//node[@id='m']/instance_light").attribute("url").value();
    EXPECT_NE(first, second);
    EXPECT_NE(targetOf(prepared, first.substr(1)), targetOf(prepared, second.substr(1)));
    EXPECT_EQ("20", prepared.text(("//light[@id='" + first.substr(1) + "']//falloff_angle").c_str()));
    EXPECT_EQ("20", prepared.text(("//light[@id='" + second.substr(1) + "']//falloff_angle").c_str()));
    test::expectStable(prepared);
}

const std::string directional = "<directional><color>1 0.5 0.25</color></directional>";
// Reaches one from the origin.
const std::string triangle = "<library_geometries>" + test::triangleGeometry("geo", "") + "</library_geometries>";

TEST(CompleteLightsTest, DirectionalIsAPointFarAway)
{
    const Prepared prepared(
        scene(light("l", directional),
              test::geometryNode("geo", "") + node("n", "<matrix>2 0 0 0 0 2 0 0 0 0 2 0 0 0 0 1</matrix>", show("l")),
              triangle));
    EXPECT_EQ("1 0.5 0.25", prepared.text("//light[@id='l']//point/color"));
    EXPECT_EQ("1", prepared.text("//point/constant_attenuation"));
    EXPECT_EQ(0U, prepared.count("//directional"));
    // Ten thousand times the size, in a node of scale 2, against the direction of the light.
    EXPECT_EQ("1 0 0 0 0 1 0 0 0 0 1 5000 0 0 0 1", prepared.text("//node[@id='n']/node[instance_light]/matrix"));
    ASSERT_EQ(1U, prepared.report.approximations.size());
    const Approximation& numbers = prepared.report.approximations[0];
    EXPECT_EQ(Approximation::Kind::directionalLight, numbers.kind);
    EXPECT_EQ("l", numbers.id);
    EXPECT_EQ(std::string(prepared.node("//node[@id='n']/node").attribute("id").value()), numbers.nodeId);
    EXPECT_EQ(0.5, numbers.color[1]);
    test::expectStable(prepared);
}

TEST(CompleteLightsTest, DirectionalIsFarFromALargeScene)
{
    const Prepared prepared(
        scene(light("l", directional),
              node("big", at("0", "0", "999"), "<instance_geometry url=\"#geo\"/>") + node("n", origin, show("l")),
              triangle));
    EXPECT_EQ(1e7, prepared.numbers("//node[@id='n']/node/matrix").at(11));
}

std::string ambient(const std::string& id, const std::string& color)
{
    return light(id, "<ambient><color>" + color + "</color></ambient>");
}

const std::string twoAmbients =
    "<library_lights>" + ambient("a", "0.5 0.25 0") + ambient("b", "0.5 0.25 0") + "</library_lights>";

// A document with two ambient lights, 1, 0.5, 0 in sum.
std::string ambientDocument(const std::string& shader, const std::string& scope = {}, const std::string& more = {})
{
    std::string result = test::shownShader(shader, scope, more + twoAmbients);
    const std::string nodes = node("na", origin, show("a")) + node("nb", origin, show("b"));
    result.insert(result.find("</visual_scene>"), nodes);
    return result;
}

TEST(CompleteLightsTest, AmbientLightsAreInTheEmission)
{
    const Prepared prepared(ambientDocument("<phong><emission><color>0.25 0 0.5 0.75</color></emission><ambient>"
                                            "<color>0.5 1 1 1</color></ambient></phong>"));
    EXPECT_EQ("0.75 0.5 0.5 0.75", prepared.text("//emission/color")); // 0.25 + 0.5 * 1, 0 + 1 * 0.5, 0.5 + 1 * 0
    EXPECT_EQ("0.5 1 1 1", prepared.text("//phong/ambient/color"));
    EXPECT_EQ(0U, prepared.count("//instance_light"));
    ASSERT_EQ(2U, prepared.report.approximations.size());
    EXPECT_EQ(Approximation::Kind::ambientLight, prepared.report.approximations[0].kind);
    EXPECT_EQ("a", prepared.report.approximations[0].id);
    EXPECT_EQ("na", prepared.report.approximations[0].nodeId);
    EXPECT_EQ(0.25, prepared.report.approximations[0].color[1]);
    test::expectStable(prepared);
}

TEST(CompleteLightsTest, BlackReflectsNoAmbientLight)
{
    const Prepared prepared(ambientDocument("<lambert><emission><color>0.1 0.2 0.3 1.0</color></emission></lambert>"));
    EXPECT_EQ("0.1 0.2 0.3 1.0", prepared.text("//emission/color"));
    EXPECT_EQ(0U, prepared.count("//instance_light"));
}

TEST(CompleteLightsTest, AmbientTexturesAreReported)
{
    const Prepared prepared(
        ambientDocument("<phong><ambient><texture texture=\"i\" texcoord=\"UV\"/></ambient></phong>", "",
                        "<library_images><image id=\"i\"><init_from>a.png</init_from></image></library_images>"));
    ASSERT_NE(nullptr, prepared.report.first(libPrepare::Outcome::lost));
    EXPECT_EQ("ambient", prepared.report.first(libPrepare::Outcome::lost)->kind);
    EXPECT_EQ("0 0 0 1", prepared.text("//emission/color"));
    EXPECT_EQ(0U, prepared.count("//instance_light"));
}

TEST(CompleteLightsTest, WithoutApproximationsLossesAreReported)
{
    libPrepare::Options options;
    options.approximations = false;
    const Prepared prepared(
        scene(light("l", directional) + ambient("a", "1 1 1"), node("n", origin, show("l") + show("a"))), options);
    EXPECT_FALSE(prepared.report.changed);
    EXPECT_TRUE(prepared.report.approximations.empty());
    EXPECT_EQ(1U, prepared.findings("directional"));
    EXPECT_EQ(1U, prepared.findings("ambient"));
}

TEST(CompleteLightsTest, IdsThatDifferOnlyInCaseAreMadeDifferent)
{
    const std::string point = "<point><color>1 1 1</color></point>";
    const Prepared prepared(scene(light("Lamp", point) + light("lamp", point),
                                  node("n", origin, show("lamp")) + node("m", origin, show("Lamp"))));
    EXPECT_EQ("#Lamp", std::string(prepared.node("//node[@id='m']/instance_light").attribute("url").value()));
    const std::string url = prepared.node("//node[@id='n']/instance_light").attribute("url").value();
    EXPECT_NE("#lamp", url);
    EXPECT_EQ(1U, prepared.count(("//light[@id='" + url.substr(1) + "']").c_str()));
    test::expectStable(prepared);
}

TEST(CompleteLightsTest, SpotInANodeOfNoSizeIsLeftInPeace)
{
    const Prepared prepared(
        scene(light("l", wholeSpot), node("n", "<matrix>0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 1</matrix>", show("l"))));
    test::expectStable(prepared);
}

} // namespace
