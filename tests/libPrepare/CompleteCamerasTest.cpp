#include "AnimationWords.h"
#include "Expectations.h"
#include "FlatCurves.h"
#include "Prepared.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using libPrepare::Options;
using test::expectNear;
using test::Prepared;
using test::shown;

using Numbers = std::vector<double>;

const double degree = std::acos(-1.0) / 180;

std::string cameraOf(const std::string& optics, const std::string& extra = {})
{
    return "<library_cameras><camera id='c'><optics><technique_common>" + optics + "</technique_common></optics>" +
           extra + "</camera></library_cameras>";
}

const std::string square = cameraOf("<perspective><xfov>60</xfov><yfov>60</yfov><znear>1</znear><zfar>100</zfar>"
                                    "</perspective>");
const std::string identityMatrix = "<matrix>1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix>";
const std::string instance = "<instance_camera url='#c'/>";

// The path of the node that a camera looks at.
std::string targetOf(const Prepared& done, const std::string& camera)
{
    const std::string reference =
        done.text(("//camera[@id='" + camera + "']/extra/technique[@profile='FCOLLADA']/*[1]").c_str());
    return "//visual_scene/node[@id='" + reference.substr(1) + "']";
}

// The numbers of a node's transform at a time.
Numbers playedOf(const Prepared& done, const std::string& node, std::size_t width, double time)
{
    const std::string id = done.node(node.c_str()).attribute("id").value();
    const std::string animation = "//animation[starts-with(channel/@target, '" + id + "/')]";
    Numbers result;
    for (std::size_t c = 0; c < width; ++c) {
        result.push_back(test::played(done, animation, c, time, 0));
    }
    return result;
}

TEST(CompleteCamerasTest, CameraAndTargetComeDirectlyUnderTheScene)
{
    const Prepared done(square + shown("<node id='a' name='Eye'><translate>1 2 3</translate><node id='b' name='Lens'>"
                                       "<rotate>0 1 0 90</rotate>" +
                                       instance + "</node></node>"));
    const std::string eye = "//visual_scene/node[instance_camera]";
    EXPECT_EQ(0U, done.count("//node[@id='b']/instance_camera"));
    EXPECT_EQ(1U, done.count("//node[@id='a']/node[@id='b']"));
    EXPECT_STREQ("Lens", done.node(eye.c_str()).attribute("name").value());
    expectNear({0, 0, 1, 1, 0, 1, 0, 2, -1, 0, 0, 3, 0, 0, 0, 1}, done.numbers(eye + "/matrix"));
    // It looks from (1 2 3) along -X. The target is as far away as the origin.
    expectNear({1 - std::sqrt(14.0), 2, 3}, done.numbers(targetOf(done, "c") + "/translate"));
    EXPECT_EQ(1U, done.findings("camera without a look-at node"));
}

TEST(CompleteCamerasTest, AnimatedAncestorsAreBakedIntoCurves)
{
    const Prepared done(square + "<library_animations>" +
                        test::flat("x", "a/r.ANGLE", "ANGLE", "0 1", "0 90", "LINEAR LINEAR") +
                        "</library_animations>" +
                        shown("<node id='a'><rotate sid='r'>0 1 0 0</rotate><node><translate>0 0 5</translate>" +
                              instance + "</node></node>"));
    const std::string eye = "//visual_scene/node[instance_camera]";
    for (int i = 1; i < 100; ++i) {
        const double time = i / 100.0;
        const double s = std::sin(90 * time * degree);
        const double c = std::cos(90 * time * degree);
        expectNear({c, 0, s, 5 * s, 0, 1, 0, 0, -s, 0, c, 5 * c, 0, 0, 0, 1}, playedOf(done, eye, 16, time), 6e-4);
        expectNear({0, 0, 0}, playedOf(done, targetOf(done, "c"), 3, time), 6e-4); // 5 ahead of the eye
    }
    const Prepared second(done.xml());
    EXPECT_FALSE(second.report.changed);
    EXPECT_EQ(done.xml(), second.xml());
}

TEST(CompleteCamerasTest, MovingCameraIsDeclaredWhereItsCurvesBegin)
{
    // The declared angle equals that at second 0 in single precision, and stays. The target does not: it is at the
    // origin at second 0, where the smallest difference counts.
    const Prepared done(
        square + "<library_animations>" + test::flat("x", "a/r.ANGLE", "ANGLE", "0 1", "0 90", "LINEAR LINEAR") +
        "</library_animations>" +
        shown("<node id='a'><translate>0 0 5</translate><rotate sid='r'>0 1 0 9e-7</rotate>" + instance + "</node>"));
    EXPECT_EQ("0 1 0 9e-7", done.text("//node[@id='a']/rotate"));
    EXPECT_EQ(0, done.numbers(targetOf(done, "c") + "/translate")[0]);
    const Prepared second(done.xml());
    EXPECT_EQ(done.xml(), second.xml());
}

TEST(CompleteCamerasTest, JumpOfAnAncestorIsTwoKeysAndNoMore)
{
    // X jumps at 1, and Y goes on: the animation has a key right before 1, and so does the camera's.
    const Prepared done(square + "<library_animations>" +
                        test::flat("x", "a/t.X", "X", "0 1 2", "0 4 4", "STEP LINEAR LINEAR") +
                        test::flat("y", "a/t.Y", "Y", "0 2", "0 8", "LINEAR LINEAR") + "</library_animations>" +
                        shown("<node id='a'><translate sid='t'>0 0 0</translate><node id='n'>" + identityMatrix +
                              instance + "</node></node>"));
    const Numbers times = done.numbers("//channel[@target='n-camera/matrix']/../source[1]/float_array");
    ASSERT_EQ(4U, times.size());
    expectNear({0, 1, 1, 2}, times);
    EXPECT_LT(times[1], times[2]);
    const Prepared second(done.xml());
    EXPECT_EQ(done.xml(), second.xml());
}

TEST(CompleteCamerasTest, CameraAtTwoNodesBecomesTwo)
{
    const Prepared done(square + shown("<node id='a'>" + identityMatrix + instance + "</node><node id='b'>" +
                                       "<translate>0 0 9</translate>" + instance + "</node>"));
    ASSERT_EQ(2U, done.count("//camera"));
    const std::string other = done.node("//camera[@id!='c']").attribute("id").value();
    EXPECT_EQ(1U, done.count("//instance_camera[@url='#c']"));
    EXPECT_EQ(1U, done.count(("//instance_camera[@url='#" + other + "']").c_str()));
    expectNear({0, 0, -1}, done.numbers(targetOf(done, "c") + "/translate"));
    expectNear({0, 0, 0}, done.numbers(targetOf(done, other) + "/translate"));
}

TEST(CompleteCamerasTest, CopiesOfAnAnimatedCameraAreAnimatedToo)
{
    const Prepared done(
        cameraOf("<perspective><xfov sid='x'>60</xfov><yfov>60</yfov><znear>1</znear><zfar>9</zfar></perspective>") +
        "<library_animations>" + test::flat("x", "c/x", "ANGLE", "0 1", "60 90", "LINEAR LINEAR") +
        "</library_animations>" + shown("<node>" + identityMatrix + instance + instance + "</node>"));
    const std::string other = done.node("//camera[@id!='c']").attribute("id").value();
    for (const std::string& id : {std::string("c"), other}) {
        EXPECT_EQ(4U, done.count(("//channel[starts-with(@target, '" + id + "/')]").c_str())) << id;
    }
    EXPECT_FALSE(Prepared(done.xml()).report.changed);
}

TEST(CompleteCamerasTest, OrthographicCameraIsAPerspectiveOneFarBack)
{
    const Prepared done(cameraOf("<orthographic><xmag>4</xmag><ymag>3</ymag><znear>1</znear><zfar>50</zfar>"
                                 "</orthographic>") +
                        shown("<node id='a'><translate>0 7 0</translate>" + instance + "</node>"));
    EXPECT_EQ(0U, done.count("//orthographic"));
    const std::string eye = "//visual_scene/node[instance_camera]";
    EXPECT_EQ(4000, done.numbers(eye + "/matrix")[11]);
    EXPECT_EQ(7, done.numbers(eye + "/matrix")[7]);
    EXPECT_NEAR(4, 4000 * std::tan(done.numbers("//xfov")[0] / 2 * degree), 1e-9);
    EXPECT_NEAR(3, 4000 * std::tan(done.numbers("//yfov")[0] / 2 * degree), 1e-9);
    EXPECT_EQ((Numbers{4001}), done.numbers("//znear"));
    EXPECT_EQ((Numbers{4050}), done.numbers("//zfar"));
    ASSERT_EQ(1U, done.report.approximations.size());
    EXPECT_EQ(4, done.report.approximations[0].xmag);
    EXPECT_EQ("c", done.report.approximations[0].id);
    EXPECT_EQ(done.node(eye.c_str()).attribute("id").value(), done.report.approximations[0].nodeId);
    EXPECT_FALSE(Prepared(done.xml()).report.changed);
}

TEST(CompleteCamerasTest, OrthographicCameraIsLeftOutWithoutApproximations)
{
    Options options;
    options.approximations = false;
    const Prepared done(cameraOf("<orthographic><xmag>4</xmag><znear>1</znear><zfar>50</zfar></orthographic>") +
                            shown("<node id='a'>" + identityMatrix + instance + "</node>"),
                        options);
    EXPECT_EQ(0U, done.count("//instance_camera"));
    EXPECT_EQ(1U, done.findings("camera"));
}

TEST(CompleteCamerasTest, FirstOfSeveralOpticsCount)
{
    const std::string flat = "<orthographic><xmag>4</xmag><znear>1</znear><zfar>50</zfar></orthographic>";
    const std::string wide =
        "<perspective><xfov>60</xfov><yfov>50</yfov><znear>1</znear><zfar>100</zfar></perspective>";
    const std::string narrow =
        "<perspective><xfov>9</xfov><yfov>8</yfov><znear>1</znear><zfar>100</zfar></perspective>";
    const std::string scene = shown("<node id='a'>" + identityMatrix + instance + "</node>");
    for (const std::string& optics : {wide + flat, wide + narrow, wide + flat + narrow}) {
        const Prepared done(cameraOf(optics) + scene);
        EXPECT_EQ(1U, done.findings("optics"));
        EXPECT_EQ(1U, done.count("//optics/technique_common/*"));
        EXPECT_EQ((Numbers{60}), done.numbers("//xfov"));
        EXPECT_TRUE(done.report.approximations.empty());
        EXPECT_FALSE(Prepared(done.xml()).report.changed);
    }
    const Prepared done(cameraOf(flat + wide) + scene);
    EXPECT_EQ(1U, done.findings("optics"));
    EXPECT_EQ(1U, done.count("//perspective"));
    ASSERT_EQ(1U, done.report.approximations.size());
    EXPECT_EQ(4, done.report.approximations[0].xmag);
}

struct Field {
    const char* optics;
    std::optional<double> aspect;
    double xfov;
    double yfov;
};

class FieldOfViewTest : public testing::TestWithParam<Field> {};

TEST_P(FieldOfViewTest, BothAnglesAreWritten)
{
    Options options;
    options.aspect = GetParam().aspect;
    const Prepared done(
        cameraOf("<perspective>" + std::string(GetParam().optics) + "<znear>1</znear><zfar>9</zfar></perspective>") +
            shown("<node>" + identityMatrix + "</node>"),
        options);
    expectNear({GetParam().xfov}, done.numbers("//xfov"));
    expectNear({GetParam().yfov}, done.numbers("//yfov"));
    EXPECT_EQ(0U, done.count("//xfov/preceding-sibling::*"));
    EXPECT_EQ(1U, done.count("//yfov/preceding-sibling::*"));
    EXPECT_EQ(0U, done.count("//aspect_ratio"));
}

const double wide = 2 * std::atan(2.0) / degree;   // twice as wide as 90 degrees
const double narrow = 2 * std::atan(0.5) / degree; // half as wide
INSTANTIATE_TEST_SUITE_P(Rules, FieldOfViewTest,
                         testing::Values(Field{"<xfov>90</xfov><aspect_ratio>2</aspect_ratio>", {}, 90, narrow},
                                         Field{"<yfov>90</yfov><aspect_ratio>2</aspect_ratio>", {}, wide, 90},
                                         Field{"<yfov>90</yfov>", {}, 90, 90}, // square by default
                                         Field{"<yfov>90</yfov><aspect_ratio>3</aspect_ratio>", 2.0, wide, 90},
                                         Field{"<xfov>30</xfov><yfov>20</yfov>", 2.0, 30, 20}, Field{"", {}, 45, 45}));

TEST(CompleteCamerasTest, InstancesOfNothingAreLeftOut)
{
    const Prepared done(shown("<node>" + identityMatrix + instance + "</node>"));
    EXPECT_EQ(0U, done.count("//instance_camera"));
    ASSERT_EQ(1U, done.report.findings.size());
    EXPECT_EQ(libPrepare::Outcome::lost, done.report.findings[0].outcome);
}

TEST(CompleteCamerasTest, CameraThatLooksRightStaysAndOneThatDoesNotIsCorrected)
{
    const std::string optics = "<perspective><xfov>60</xfov><yfov>60</yfov><znear>1</znear><zfar>9</zfar>"
                               "</perspective>";
    const std::string extra = "<extra><technique profile='fcollada'><target>#t</target></technique></extra>";
    const std::string eye = "<node id='a'>" + identityMatrix + instance + "</node>";
    EXPECT_FALSE(Prepared(cameraOf(optics, extra) + shown(eye + "<node id='t'><translate>0 0 -3</translate></node>"))
                     .report.changed);
    const Prepared wrong(cameraOf(optics, extra) + shown(eye + "<node id='t'><translate>0 3 0</translate></node>"));
    EXPECT_EQ(1U, wrong.count("//camera/extra/technique/target"));
    EXPECT_NE("#t", wrong.text("//camera/extra/technique/target"));
    EXPECT_FALSE(Prepared(wrong.xml()).report.changed);
}

} // namespace
