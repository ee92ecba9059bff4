#include "AnimationWords.h"
#include "Expectations.h"
#include "FlatCurves.h"
#include "LookDocuments.h"
#include "Prepared.h"

#include <libPrepare/document/Motion.h>
#include <libPrepare/document/Numbers.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace libPrepare;
using test::animated;
using test::expectNear;
using test::flat;
using test::kinds;
using test::played;
using test::Prepared;
using test::shown;
using test::source;
using test::sourceOf;
using test::wordsOf;

using Numbers = std::vector<double>;

std::string library(const std::string& animations)
{
    return "<library_animations>" + animations + "</library_animations>";
}

const std::string node = "<node id='a'><translate sid='t'>0 0 0</translate><rotate sid='r'>0 0 1 0</rotate>"
                         "<matrix sid='m'>1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix></node>";

TEST(FlattenAnimationsTest, MembersBecomeOneWholeValue)
{
    const Prepared done(library("<animation id='x'>" + source("xt", "T", "0 2") + source("xo", "X", "0 4") +
                                "<sampler id='xs'>" + test::input("INPUT", "xt") + test::input("OUTPUT", "xo") +
                                "</sampler><animation id='y'>" + source("yt", "T", "0 1 2") +
                                source("yo", "Y", "0 3 1") + "<sampler id='ys'>" + test::input("INPUT", "yt") +
                                test::input("OUTPUT", "yo") + "</sampler><channel source='#ys' target='a/t.Y'/>" +
                                "</animation><channel source='#xs' target='a/t.X'/></animation>") +
                        shown(node));
    ASSERT_EQ(1U, done.count("//animation"));
    EXPECT_STREQ("a/t", done.node("//channel").attribute("target").value());
    EXPECT_STREQ("x", done.node("//animation").attribute("id").value());
    EXPECT_EQ((Numbers{0, 1, 2}), sourceOf(done, "//animation", "INPUT"));
    EXPECT_EQ((Numbers{0, 0, 0, 2, 3, 0, 4, 1, 0}), sourceOf(done, "//animation", "OUTPUT"));
    EXPECT_EQ("LINEAR LINEAR LINEAR", wordsOf(done, "//animation"));
    EXPECT_EQ(1U, done.findings("animation"));
}

TEST(FlattenAnimationsTest, CurvesAllEndTogetherAndTheDeclaredValueIsThatAtSecond0)
{
    const Prepared done(library(flat("one", "a/r.ANGLE", "ANGLE", "1 2", "30 40", "LINEAR LINEAR") +
                                flat("two", "a/t", "X Y Z", "0 4", "0 0 0 1 1 1", "LINEAR LINEAR")) +
                        shown(node));
    EXPECT_EQ((Numbers{1, 2, 4}), sourceOf(done, "//animation[@id='one']", "INPUT"));
    EXPECT_EQ((Numbers{30, 40, 40}), sourceOf(done, "//animation[@id='one']", "OUTPUT"));
    EXPECT_EQ("0 0 1 30", done.text("//rotate"));
    EXPECT_EQ(1U, done.findings("declared value"));
    EXPECT_EQ("0 0 0 1 1 1", done.text("//source[@id='two-o']/float_array")) << "which was fine and stays";
}

TEST(FlattenAnimationsTest, KeysBefore0AreCut)
{
    const Prepared done(library(flat("x", "a/r.ANGLE", "ANGLE", "-1 1 3", "10 20 50", "LINEAR LINEAR LINEAR")) +
                        shown(node));
    EXPECT_EQ((Numbers{0, 1, 3}), sourceOf(done, "//animation", "INPUT"));
    EXPECT_EQ((Numbers{15, 20, 50}), sourceOf(done, "//animation", "OUTPUT"));
    EXPECT_EQ("0 0 1 15", done.text("//rotate"));
    EXPECT_EQ(1U, done.findings("keys before 0"));
}

TEST(FlattenAnimationsTest, SingleTimeIsDeclared)
{
    const Prepared done(library(flat("x", "a/t", "X Y Z", "5", "1 2 3", "LINEAR")) + shown(node));
    EXPECT_EQ("1 2 3", done.text("//translate"));
    EXPECT_EQ(0U, done.count("//animation"));
    EXPECT_EQ(1U, done.findings("animation without motion"));
}

TEST(FlattenAnimationsTest, SingleTimeAfterAMovingChannelOfTheSameTargetIsDeclared)
{
    const Prepared done(library(flat("x", "a/r.ANGLE", "ANGLE", "0 1", "10 20", "LINEAR LINEAR") +
                                flat("y", "a/r", "ANGLE", "1", "30", "LINEAR")) +
                        shown(node));
    EXPECT_EQ("0 0 1 30", done.text("//rotate"));
    EXPECT_EQ(0U, done.count("//animation"));
    const Prepared second(done.xml());
    EXPECT_FALSE(second.report.changed);
}

TEST(FlattenAnimationsTest, StepStaysAStep)
{
    const Prepared done(library(flat("x", "a/t.Y", "Y", "0 1 2", "0 4 6", "STEP LINEAR LINEAR")) + shown(node));
    EXPECT_EQ("STEP LINEAR LINEAR", wordsOf(done, "//animation"));
    EXPECT_EQ((Numbers{0, 0, 0, 0, 4, 0, 0, 6, 0}), sourceOf(done, "//animation", "OUTPUT"));
}

TEST(FlattenAnimationsTest, StepOfOneNumberAmongStraightOnesJumps)
{
    const Prepared done(library(flat("x", "a/t.X", "X", "0 1 2", "0 4 4", "STEP LINEAR LINEAR") +
                                flat("y", "a/t.Y", "Y", "0 2", "0 8", "LINEAR LINEAR")) +
                        shown(node));
    for (const double time : {0.25, 0.5, 0.75, 0.999, 1.0, 1.001, 1.5, 1.75}) {
        EXPECT_NEAR(time < 1 ? 0 : 4, played(done, "//animation", 0, time, 0), 1e-9) << time;
        EXPECT_NEAR(4 * time, played(done, "//animation", 1, time, 0), 1e-9) << time;
    }
}

TEST(FlattenAnimationsTest, TwoKeysAtTheStartAreAJump)
{
    const Prepared done(library(flat("x", "a/r.ANGLE", "ANGLE", "1 1 2", "20 40 10", "LINEAR LINEAR LINEAR")) +
                        shown(node));
    EXPECT_EQ("0 0 1 20", done.text("//rotate"));
    EXPECT_EQ((Numbers{std::nextafter(1.0, 0.0), 1, 2}), sourceOf(done, "//animation", "INPUT"));
    EXPECT_EQ((Numbers{20, 40, 10}), sourceOf(done, "//animation", "OUTPUT"));
    test::expectStable(done);
}

TEST(FlattenAnimationsTest, BezierOverTimeKeepsItsControlPoints)
{
    const Prepared done(animated("a/r.ANGLE", source("t", "T", "0 3") + source("o", "A", "0 8") +
                                                  kinds("k", "BEZIER BEZIER") + source("in", "X Y", "0 0 2 6") +
                                                  source("out", "X Y", "1 2 3 8")) +
                        shown(node));
    EXPECT_EQ("BEZIER LINEAR", wordsOf(done, "//animation"));
    EXPECT_EQ((Numbers{1, 2, 3, 8}), sourceOf(done, "//animation", "OUT_TANGENT"));
    EXPECT_EQ((Numbers{0, 0, 2, 6}), sourceOf(done, "//animation", "IN_TANGENT"));
}

TEST(FlattenAnimationsTest, HermiteBecomesTheSameBezier)
{
    const Prepared done(animated("a/r.ANGLE", source("t", "T", "0 1") + source("o", "A", "0 1") +
                                                  kinds("k", "HERMITE HERMITE") + source("in", "A", "0 3") +
                                                  source("out", "A", "6 0")) +
                        shown(node));
    EXPECT_EQ("BEZIER LINEAR", wordsOf(done, "//animation"));
    EXPECT_EQ(2, sourceOf(done, "//animation", "OUT_TANGENT")[1]); // 0 + 6 / 3
    EXPECT_EQ(0, sourceOf(done, "//animation", "IN_TANGENT")[3]);  // 1 - 3 / 3
}

TEST(FlattenAnimationsTest, BezierOfAnotherTimingIsSampledWithinTheTolerance)
{
    // Time s³ and value 9s²(1-s)+3s³ for a parameter s.
    const Prepared done(animated("a/r.ANGLE", source("t", "T", "0 1") + source("o", "A", "0 3") +
                                                  kinds("k", "BEZIER BEZIER") + source("in", "X Y", "0 0 0 3") +
                                                  source("out", "X Y", "0 0 0 0")) +
                        shown(node));
    for (int i = 1; i < 100; ++i) {
        const double s = i / 100.0;
        EXPECT_NEAR(9 * s * s * (1 - s) + 3 * s * s * s, played(done, "//animation", 0, s * s * s, 0), 1.1e-4) << s;
    }
}

TEST(FlattenAnimationsTest, BezierOfAnotherTimingTakesFewKeys)
{
    // Control points at 0.4 and 0.6 seconds, and at the values of the keys.
    const Prepared done(animated("a/r.ANGLE", source("t", "T", "0 1") + source("o", "A", "0 90") +
                                                  kinds("k", "BEZIER BEZIER") + source("in", "X Y", "0 0 0.6 90") +
                                                  source("out", "X Y", "0.4 0 1 90")) +
                        shown(node));
    EXPECT_GE(50U, sourceOf(done, "//animation", "INPUT").size());
    for (int i = 1; i < 100; ++i) {
        const double s = i / 100.0;
        const double r = 1 - s;
        EXPECT_NEAR(90 * (3 * s * s * r + s * s * s),
                    played(done, "//animation", 0, 1.2 * s * r * r + 1.8 * s * s * r + s * s * s, 0), 1.1e-4)
            << s;
    }
}

TEST(FlattenAnimationsTest, CurveThatGrowsWithoutBoundTakesBoundedKeys)
{
    // The shift of a skew is the tangent of its angle, which passes 90 degrees at half a second.
    const Prepared done(animated("a/s(0)", source("t", "T", "0 1") + source("o", "A", "0 180")) +
                        shown("<node id='a'><skew sid='s'>0 1 0 0 0 1 0</skew></node>"));
    EXPECT_GE(1100U, sourceOf(done, "//animation", "INPUT").size());
    EXPECT_NEAR(1, played(done, "//animation", 4, 0.25, 0), 1e-3);
}

TEST(FlattenAnimationsTest, ComponentsOfOtherKeyTimesStayExact)
{
    // A cubic 12 s²(1-s) + ... with controls 0 4 4 0 over 2 seconds beside a straight line with a key at 0.5.
    const Prepared done(
        library("<animation>" + source("xt", "T", "0 2") + source("xo", "X", "0 0") + kinds("xk", "BEZIER BEZIER") +
                source("xi", "X", "0 4") + source("xu", "X", "4 0") + "<sampler id='xs'>" + test::input("INPUT", "xt") +
                test::input("OUTPUT", "xo") + test::input("INTERPOLATION", "xk") + test::input("IN_TANGENT", "xi") +
                test::input("OUT_TANGENT", "xu") + "</sampler><channel source='#xs' target='a/t.X'/></animation>" +
                flat("y", "a/t.Y", "Y", "0 0.5 2", "0 1 7", "LINEAR LINEAR LINEAR")) +
        shown(node));
    EXPECT_EQ((Numbers{0, 0.5, 2}), sourceOf(done, "//animation", "INPUT"));
    for (int i = 1; i < 100; ++i) {
        const double time = i / 50.0;
        const double s = time / 2;
        EXPECT_NEAR(12 * s * (1 - s) * (1 - s) + 12 * s * s * (1 - s), played(done, "//animation", 0, time, 0), 1e-12);
        EXPECT_NEAR(time < 0.5 ? 2 * time : 1 + (time - 0.5) * 4, played(done, "//animation", 1, time, 0), 1e-12);
    }
}

TEST(FlattenAnimationsTest, AnimatedAxisBecomesAMatrix)
{
    // The axis turns from Z to X while the angle stays 90 degrees.
    const Prepared done(library(flat("x", "a/r", "X Y Z ANGLE", "0 1", "0 0 1 90 1 0 0 90", "LINEAR LINEAR")) +
                        shown(node));
    expectNear({0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, done.numbers("//matrix[@sid='r']"), 1e-12);
    const double half = std::sqrt(0.5);
    // Half way about (1 0 1) / sqrt 2: Y goes to (-1 0 1) / sqrt 2.
    for (const auto& [row, y] : {std::pair(0U, -half), std::pair(1U, 0.0), std::pair(2U, half)}) {
        EXPECT_NEAR(y, played(done, "//animation", 4 * row + 1, 0.5, 0), 1.1e-4);
    }
}

TEST(FlattenAnimationsTest, WholeRotateWithAStillAxisStaysAnAngle)
{
    const Prepared done(library(flat("x", "a/r", "X Y Z ANGLE", "0 1", "0 0 1 0 0 0 1 90", "LINEAR LINEAR")) +
                        shown(node));
    EXPECT_EQ((Numbers{0, 90}), sourceOf(done, "//animation", "OUTPUT"));
    EXPECT_EQ(1U, done.count("//rotate"));
}

TEST(FlattenAnimationsTest, MatrixMembersBecomeSixteenNumbers)
{
    const Prepared done(library(flat("x", "a/m(3)(1)", "V", "0 1", "0 5", "LINEAR LINEAR")) + shown(node));
    EXPECT_EQ((Numbers{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, //
                       1, 0, 0, 0, 0, 1, 0, 5, 0, 0, 1, 0, 0, 0, 0, 1}),
              sourceOf(done, "//animation", "OUTPUT"));
}

TEST(FlattenAnimationsTest, AnimatedLookatMovesAsAMatrix)
{
    const Prepared done(library(flat("x", "a/l(0)", "V", "0 2", "0 2", "LINEAR LINEAR")) +
                        shown("<node id='a'><lookat sid='l'>0 0 5 1 0 0 0 1 0</lookat></node>"));
    // From (x 0 5) to (1 0 0): at second 1 straight along -Z.
    const Numbers middle{1, 0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 5, 0, 0, 0, 1};
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_NEAR(middle[i], played(done, "//animation", i, 1, 0), 6e-4) << i;
    }
    const double length = std::sqrt(26.0);
    EXPECT_NEAR(5 / length, numbers(done.text("//matrix"))[0], 1e-12);
}

TEST(FlattenAnimationsTest, TargetsSurviveDotsBlanksAndMissingOrDoubledSids)
{
    const std::string moving = "<node id='a'><translate sid='x y.z'>0 0 0</translate><scale sid='s'>1 1 1</scale>"
                               "<translate sid='s'>0 0 0</translate></node>";
    const Prepared dots(library(flat("x", "a/x y.z", "X Y Z", "0 1", "0 0 0 1 1 1", "LINEAR LINEAR")) + shown(moving));
    EXPECT_STREQ("a/x_y_z", dots.node("//channel").attribute("target").value());
    EXPECT_STREQ("x_y_z", dots.node("//translate").attribute("sid").value());
    EXPECT_EQ(1U, dots.findings("sid"));
}

TEST(FlattenAnimationsTest, AnimatedAngleGivesACurveToEachNumberOfTheCamera)
{
    const Prepared done(
        library(flat("x", "c/f", "ANGLE", "0 1", "90 60", "LINEAR LINEAR")) +
        "<library_cameras><camera id='c'><optics><technique_common><perspective><yfov sid='f'>90</yfov>"
        "<aspect_ratio>2</aspect_ratio><znear>1</znear><zfar>100</zfar></perspective></technique_common></optics>"
        "</camera></library_cameras>" +
        shown("<node id='a'><matrix>1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix><instance_camera url='#c'/></node>"));
    ASSERT_EQ(4U, done.count("//animation"));
    EXPECT_EQ((Numbers{1, 1}), sourceOf(done, "//animation[channel/@target='c/znear']", "OUTPUT"));
    EXPECT_EQ((Numbers{100, 100}), sourceOf(done, "//animation[channel/@target='c/zfar']", "OUTPUT"));
    EXPECT_EQ((Numbers{90, 60}), sourceOf(done, "//animation[channel/@target='c/f']", "OUTPUT"));
    const double degree = std::acos(-1.0) / 180;
    for (const double time : {0.25, 0.5, 0.75}) { // 82.5, 75, 67.5 degrees
        EXPECT_NEAR(2 * std::atan(2 * std::tan((45 - 15 * time) * degree)) / degree,
                    played(done, "//animation[channel/@target='c/xfov']", 0, time, 0), 1.1e-4);
    }
}

// A plane that moves takes the angles along, even those that the document does not give.
TEST(FlattenAnimationsTest, CameraWithAnimatedPlaneGetsACurveForEachNumber)
{
    const Prepared done(
        "<library_cameras><camera id='c'><optics><technique_common><perspective><znear sid='n'>1</znear>"
        "<zfar>100</zfar></perspective></technique_common></optics></camera></library_cameras>" +
        library(flat("x", "c/n", "N", "0 1", "1 2", "LINEAR LINEAR")) +
        shown("<node id='a'><instance_camera url='#c'/></node>"));
    for (const double time : {0.25, 0.5, 0.75}) {
        EXPECT_NEAR(45, played(done, "//animation[channel/@target='c/xfov']", 0, time, 0), 1e-9);
        EXPECT_NEAR(45, played(done, "//animation[channel/@target='c/yfov']", 0, time, 0), 1e-9);
        EXPECT_NEAR(1 + time, played(done, "//animation[channel/@target='c/n']", 0, time, 0), 1e-9);
        EXPECT_NEAR(100, played(done, "//animation[channel/@target='c/zfar']", 0, time, 0), 1e-9);
    }
}

TEST(FlattenAnimationsTest, NumbersOfAnAnimatedCameraAreFinite)
{
    const Prepared done(
        "<library_cameras><camera id='c'><optics><technique_common><perspective><xfov>0</xfov>"
        "<aspect_ratio sid='a'>1</aspect_ratio><znear>1</znear><zfar>INF</zfar></perspective></technique_common>"
        "</optics></camera></library_cameras>" +
        library(flat("x", "c/a", "A", "0 1", "0 1", "LINEAR LINEAR")) +
        shown("<node id='n'><instance_camera url='#c'/></node>"));
    EXPECT_EQ((Numbers{0, 0}), sourceOf(done, "//animation[channel/@target='c/yfov']", "OUTPUT"));
    EXPECT_EQ((Numbers{1e30, 1e30}), sourceOf(done, "//animation[channel/@target='c/zfar']", "OUTPUT"));
    test::expectStable(done);
}

TEST(FlattenAnimationsTest, WhatDrivesNothingThatIsShownIsLost)
{
    const Prepared done(library(flat("x", "e/c", "R G B", "0 1", "0 0 0 1 1 1", "LINEAR LINEAR") +
                                flat("y", "gone/t", "X Y Z", "0 1", "0 0 0 1 1 1", "LINEAR LINEAR") +
                                flat("z", "a/t", "X Y Z", "0 1", "0 0 0 1 1 1", "LINEAR LINEAR")) +
                        "<library_effects><effect id='e'><extra><technique profile='X'><color sid='c'>0 0 0</color>"
                        "</technique></extra></effect></library_effects>" +
                        shown(node));
    ASSERT_EQ(1U, done.count("//animation"));
    EXPECT_STREQ("z", done.node("//animation").attribute("id").value());
    EXPECT_EQ(2U, done.findings("animation"));
    EXPECT_EQ(Outcome::lost, done.report.findings[0].outcome);
}

TEST(FlattenAnimationsTest, ColorsOfLightsAndMaterialsHaveTheValueOfTheTime)
{
    const std::string document =
        library(flat("x", "l/c", "R G B", "0 2", "0 0 0 1 0.5 0", "LINEAR LINEAR") +
                flat("y", "e/d.G", "G", "0 1", "0.25 0.75", "LINEAR LINEAR")) +
        "<library_lights><light id='l'><technique_common><point><color sid='c'>1 1 1</color></point></technique_common>"
        "</light></library_lights><library_effects><effect id='e'><profile_COMMON><technique sid='t'><lambert><diffuse>"
        "<color sid='d'>1 1 1 1</color></diffuse></lambert></technique></profile_COMMON></effect></library_effects>" +
        shown(node);
    libPrepare::Options options;
    options.time = 1;
    const Prepared done(document, options);
    EXPECT_EQ((Numbers{0.5, 0.25, 0}), libPrepare::numbers(done.text("//light//color")));
    EXPECT_EQ((Numbers{1, 0.75, 1, 1}), libPrepare::numbers(done.text("//diffuse/color")));
    EXPECT_EQ(0U, done.count("//animation"));
    EXPECT_EQ(nullptr, done.report.first(Outcome::lost));
    const Prepared declared(document);
    EXPECT_EQ((Numbers{1, 1, 1}), libPrepare::numbers(declared.text("//light//color")));
    EXPECT_NE(nullptr, declared.report.first(Outcome::lost));
}

TEST(FlattenAnimationsTest, HeightOfAParallelCameraHasTheValueOfTheTime)
{
    libPrepare::Options options;
    options.time = 1;
    const Prepared done(
        library(flat("x", "c/m", "YMAG", "0 2", "10 30", "LINEAR LINEAR")) +
            "<library_cameras><camera id='c'><optics><technique_common><orthographic><ymag sid='m'>5</ymag>"
            "<znear>1</znear><zfar>100</zfar></orthographic></technique_common></optics></camera></library_cameras>" +
            shown(node + "<node id='k'><instance_camera url='#c'/></node>"),
        options);
    ASSERT_EQ(1U, done.report.approximations.size());
    EXPECT_NEAR(20, done.report.approximations[0].ymag, 1e-9);
    EXPECT_EQ(nullptr, done.report.first(Outcome::lost));
}

TEST(FlattenAnimationsTest, ChannelsWithoutEffectAreLostThoughTheirTargetIsThere)
{
    for (const std::string& broken : {flat("x", "a/t", "X Y Z W", "0 1", "0 0 0 0 1 1 1 1", "LINEAR LINEAR"),
                                      flat("x", "a/t", "X Y Z", "NaN NaN", "0 0 0 1 1 1", "LINEAR LINEAR")}) {
        const Prepared done(library(broken) + shown(node));
        EXPECT_EQ(0U, done.count("//animation"));
        ASSERT_EQ(1U, done.findings("animation"));
        EXPECT_EQ(Outcome::lost, done.report.findings[0].outcome);
    }
}

TEST(FlattenAnimationsTest, ClipsNameWhatTheirAnimationsHaveBecome)
{
    const Prepared done(
        library("<animation id='both'>" + source("t", "T", "0 1") + source("o", "V", "0 1") + "<sampler id='s'>" +
                test::input("INPUT", "t") + test::input("OUTPUT", "o") +
                "</sampler><channel source='#s' target='a/t.X'/><channel source='#s' target='a/r.ANGLE'/>"
                "</animation>") +
        "<library_animation_clips><animation_clip><instance_animation url='#both'/></animation_clip>"
        "</library_animation_clips>" +
        shown(node));
    ASSERT_EQ(2U, done.count("//library_animations/animation"));
    ASSERT_EQ(2U, done.count("//instance_animation"));
    for (const char* const path : {"//instance_animation[1]", "//instance_animation[2]"}) {
        const std::string url = done.node(path).attribute("url").value();
        EXPECT_EQ(1U, done.count(("//animation[@id='" + url.substr(1) + "']").c_str())) << url;
    }
}

TEST(FlattenAnimationsTest, NumbersInTheSourceOfAnotherAnimationAreCopied)
{
    std::string sampler = flat("x", "a/t", "X Y Z", "0 1", "0 0 0 1 2 3", "LINEAR LINEAR");
    const std::string own = "<accessor source='#x-t-array'";
    sampler.replace(sampler.find(own), own.size(), "<accessor source='#else-array'");
    const Prepared done(library("<animation id='e'>" + source("else", "TIME", "0 4") + "</animation>" + sampler) +
                        shown(node));
    ASSERT_EQ(1U, done.count("//animation"));
    EXPECT_EQ((Numbers{0, 4}), sourceOf(done, "//animation", "INPUT"));
    const Prepared second(done.xml());
    EXPECT_FALSE(second.report.changed);
}

TEST(FlattenAnimationsTest, FlatOnesAndSecondRunsChangeNothing)
{
    const std::string fine =
        test::colladaDocument(library(flat("x", "a/t", "X Y Z", "0 1 4", "0 0 0 1 1 1 2 2 2", "LINEAR STEP LINEAR") +
                                      flat("y", "a/r.ANGLE", "ANGLE", "1 4", "0 90", "LINEAR LINEAR")) +
                              shown(node));
    EXPECT_FALSE(Prepared(fine).report.changed);
    const Prepared first(animated("a/r.ANGLE", source("t", "T", "-1 3") + source("o", "A", "0 8") +
                                                   kinds("k", "BEZIER BEZIER") + source("in", "X Y", "0 0 1 6") +
                                                   source("out", "X Y", "1 2 3 8")) +
                         shown(node));
    const Prepared second(first.xml());
    EXPECT_FALSE(second.report.changed);
    EXPECT_EQ(first.xml(), second.xml());
}

} // namespace
