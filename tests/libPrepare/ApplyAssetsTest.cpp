#include "AnimationWords.h"
#include "Expectations.h"
#include "Prepared.h"

#include <libPrepare/document/Transforms.h>

#include <gtest/gtest.h>

namespace {

using namespace libPrepare;
using test::Prepared;

const std::string still = "<matrix>1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix>";

std::string shownWith(const std::string& asset, const std::string& nodes)
{
    return "<library_visual_scenes><visual_scene id='v'>" + asset + nodes +
           "</visual_scene></library_visual_scenes><scene><instance_visual_scene url='#v'/></scene>";
}

void expectPlace(const Vector3& expected, const Prepared& done, const char* node)
{
    const Vector3 place = transformPoint(worldMatrix(done.node(node)), {1, 2, 3});
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(expected[i], place[i], 1e-12) << i;
    }
    const Prepared second(done.xml());
    EXPECT_FALSE(second.report.changed);
    EXPECT_EQ(done.xml(), second.xml());
}

TEST(ApplyAssetsTest, SceneOfAnotherUnitIsScaled)
{
    const Prepared done(shownWith("<asset><unit meter='0.5'/></asset>", "<node id='a'>" + still + "</node>"));
    expectPlace({0.5, 1, 1.5}, done, "//node[@id='a']");
    EXPECT_EQ(1U, done.findings("asset"));
}

TEST(ApplyAssetsTest, NodeOfAnotherUpAxisIsTurnedWithWhatItHolds)
{
    const Prepared done(shownWith({}, "<node id='o'><translate>10 0 0</translate><node id='a'><asset><up_axis>Z_UP"
                                      "</up_axis></asset><node id='b'>" +
                                          still + "</node></node></node>"));
    expectPlace({11, 3, -2}, done, "//node[@id='b']");
}

TEST(ApplyAssetsTest, NodeInsideOneOfAnotherFrameGoesBackToIts)
{
    const Prepared done(shownWith("<asset><unit meter='2'/></asset>",
                                  "<node id='a'>" + still + "<node id='b'><asset><unit meter='1'/></asset>" + still +
                                      "</node></node>"));
    expectPlace({1, 2, 3}, done, "//node[@id='b']");
}

TEST(ApplyAssetsTest, GeometryOfAnotherFrameGetsANodeThatTurnsIt)
{
    const Prepared done("<library_geometries><geometry id='g'><asset><unit meter='2'/><up_axis>Z_UP</up_axis></asset>"
                        "<mesh><source id='s'><float_array id='f' count='3'>1 2 3</float_array><technique_common>"
                        "<accessor source='#f' count='1' stride='3'><param name='X' type='float'/><param name='Y' "
                        "type='float'/><param name='Z' type='float'/></accessor></technique_common></source>"
                        "<vertices id='p'><input semantic='POSITION' source='#s'/></vertices></mesh></geometry>"
                        "</library_geometries>" +
                        shownWith({}, "<node id='a'>" + still + "<instance_geometry url='#g'/></node>"));
    EXPECT_EQ(0U, done.count("//node[@id='a']/instance_geometry"));
    expectPlace({2, 6, -4}, done, "//node[@id='a']/node[instance_geometry]");
    EXPECT_EQ("1 2 3", done.text("//float_array"));
}

TEST(ApplyAssetsTest, UnitSaidTwiceIsAppliedOnce)
{
    const Prepared done(
        shownWith("<asset><unit meter='0.5'/><unit meter='0.5'/></asset>", "<node id='a'>" + still + "</node>"));
    EXPECT_EQ("0.5", done.text("//node/matrix").substr(0, 3));
    EXPECT_EQ(0U, done.count("//unit"));
    test::expectStable(done);
}

TEST(ApplyAssetsTest, SameFrameChangesNothing)
{
    EXPECT_FALSE(Prepared(shownWith("<asset><unit meter='1'/><up_axis>Y_UP</up_axis></asset>",
                                    "<node id='a'><asset/>" + still + "</node>"))
                     .report.changed);
}

} // namespace
