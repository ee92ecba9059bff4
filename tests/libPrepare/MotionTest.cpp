#include "AnimationWords.h"
#include "Prepared.h"

#include <libPrepare/document/Motion.h>
#include <libPrepare/document/Numbers.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace libPrepare;
using test::animated;
using test::input;
using test::kinds;
using test::source;

const char* const nodes =
    "<library_visual_scenes><visual_scene id='v'><node id='a'><translate sid='t'>1 2 3</translate>"
    "<node id='b' sid='inner'><rotate sid='r'>0 0 1 10</rotate><matrix sid='m'>1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix>"
    "<scale sid='s.X'>1 1 1</scale></node></node></visual_scene></library_visual_scenes>";

struct Moving {
    explicit Moving(const std::string& animations, const std::string& body = nodes)
    {
        EXPECT_TRUE(xml.load_string(test::colladaDocument(animations + body).c_str(),
                                    pugi::parse_full | pugi::parse_ws_pcdata));
    }
    pugi::xml_node node(const char* path) const { return xml.select_node(path).node(); }
    std::vector<double> values(const char* path, double time) { return motion().values(node(path), time); }
    Motion& motion()
    {
        if (!made) {
            made.emplace(document);
        }
        return *made;
    }

    pugi::xml_document xml;
    Options options;
    Report report;
    Document document{xml, "memory.dae", options, report};
    std::optional<Motion> made;
};

using Numbers = std::vector<double>;

TEST(MotionTest, HoldsBeforeAndAfterAndGoesStraightBetween)
{
    Moving moving(animated("a/t", source("t", "T", "1 3") + source("o", "X Y Z", "0 0 0 4 8 -2")));
    EXPECT_EQ((Numbers{0, 0, 0}), moving.values("//translate", 0));
    EXPECT_EQ((Numbers{1, 2, -0.5}), moving.values("//translate", 1.5));
    EXPECT_EQ((Numbers{4, 8, -2}), moving.values("//translate", 9));
    EXPECT_EQ((Numbers{1, 2, 3}), moving.motion().values(moving.node("//translate"), {}));
}

struct Target {
    const char* target;
    const char* element;
    Numbers values;
};

class TargetTest : public testing::TestWithParam<Target> {};

TEST_P(TargetTest, LeadsToTheElementAndItsNumber)
{
    Moving moving(animated(GetParam().target, source("t", "T", "0 1") + source("o", "V", "7 7")));
    ASSERT_EQ(1U, moving.motion().channels().size());
    EXPECT_EQ(GetParam().values, moving.values(GetParam().element, 0.5));
}

INSTANTIATE_TEST_SUITE_P(
    Rules, TargetTest,
    testing::Values(Target{"a/t.Y", "//translate", {1, 7, 3}}, Target{"a/t(2)", "//translate", {1, 2, 7}},
                    Target{"b/r.ANGLE", "//rotate", {0, 0, 1, 7}}, Target{"b/r", "//rotate", {0, 0, 1, 7}},
                    Target{"b/r.angle", "//rotate", {0, 0, 1, 7}}, Target{"a/inner/r.X", "//rotate", {7, 0, 1, 10}},
                    Target{"a/r.ANGLE", "//rotate", {0, 0, 1, 7}}, // any number of levels down
                    Target{"b/m(3)(0)", "//matrix", {1, 0, 0, 7, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
                    Target{"b/m(0)(1)", "//matrix", {1, 0, 0, 0, 7, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
                    Target{"b/s.X.Z", "//scale", {1, 1, 7}})); // a sid with a dot in it

class BrokenTest : public testing::TestWithParam<const char*> {};

TEST_P(BrokenTest, DrivesNothing)
{
    Moving moving(GetParam());
    EXPECT_TRUE(moving.motion().channels().empty());
    EXPECT_EQ((Numbers{1, 2, 3}), moving.values("//translate", 0.5));
}

const std::string times = source("t", "T", "0 1");
const std::string rows[] = {animated("a/x", times + source("o", "V", "7 7")),
                            animated("x/t", times + source("o", "V", "7 7")), animated("a/t.X", times),
                            animated("a/t", times + kinds("o", "LINEAR LINEAR")), animated("", times)};
INSTANTIATE_TEST_SUITE_P(Rules, BrokenTest,
                         testing::Values(rows[0].c_str(), rows[1].c_str(), rows[2].c_str(), rows[3].c_str(),
                                         rows[4].c_str()));

TEST(MotionTest, StepHolds)
{
    Moving moving(
        animated("b/r.ANGLE", source("t", "T", "0 1 2") + source("o", "A", "5 9 1") + kinds("k", "STEP LINEAR STEP")));
    EXPECT_EQ(5, moving.values("//rotate", 0.9)[3]);
    EXPECT_EQ(9, moving.values("//rotate", 1)[3]);
    EXPECT_EQ(5, moving.values("//rotate", 1.5)[3]);
}

struct KindList {
    const char* words;
    std::vector<Interpolation> kinds;
    bool isPlain; // as the scene graph reads it
};

class KindListTest : public testing::TestWithParam<KindList> {};

// A list that repeats one word is read at once. No other list may be mistaken for one.
TEST_P(KindListTest, HasAKindForEachWord)
{
    Moving moving(animated("b/r.ANGLE",
                           source("t", "T", "0 1 2 3") + source("o", "A", "0 1 2 3") + kinds("k", GetParam().words)));
    ASSERT_EQ(1U, moving.motion().channels().size());
    const Curve& curve = *moving.motion().channels()[0].curve;
    std::vector<Interpolation> found;
    for (std::size_t key = 0; key < curve.count(); ++key) {
        found.push_back(curve.kind(key));
    }
    EXPECT_EQ(GetParam().kinds, found);
    EXPECT_EQ(GetParam().isPlain, curve.isPlain());
}

constexpr Interpolation linear = Interpolation::linear;
constexpr Interpolation step = Interpolation::step;
INSTANTIATE_TEST_SUITE_P(
    Rules, KindListTest,
    testing::Values(KindList{"STEP STEP STEP STEP", {step, step, step, step}, true},
                    KindList{"\n STEP STEP STEP STEP \t", {step, step, step, step}, true},
                    KindList{"STEP\nSTEP\nSTEP\nSTEP", {step, step, step, step}, true},
                    KindList{"STEP  STEP STEP\tSTEP", {step, step, step, step}, true},
                    KindList{"STEP STEP LINEAR STEP", {step, step, linear, step}, true},
                    KindList{"STEP STEP STEP LINE", {step, step, step, linear}, false}, // not an interpolation
                    KindList{"STEP STEP STEP STEPS", {step, step, step, linear}, false},
                    KindList{"STEP STEP STEP STE", {step, step, step, linear}, false},
                    KindList{"STEP STEP STEP", {step, step, step, linear}, false}, // a key without one
                    KindList{"STEP", {step, linear, linear, linear}, false}));

TEST(MotionTest, BezierInOneDimensionHasTheTimeAsItsParameter)
{
    Moving moving(animated("b/r.ANGLE", source("t", "T", "0 2") + source("o", "A", "0 8") +
                                            kinds("k", "BEZIER BEZIER") + source("in", "A", "0 6") +
                                            source("out", "A", "2 0")));
    EXPECT_DOUBLE_EQ(4, moving.values("//rotate", 1)[3]); // (0 + 3·2 + 3·6 + 8) / 8
}

TEST(MotionTest, BezierInTwoDimensionsSolvesForItsParameter)
{
    // Times 0 0 0 1: the parameter is the cube root of the time; values 0 0 3 3.
    Moving moving(animated("b/r.ANGLE", source("t", "T", "0 1") + source("o", "A", "0 3") +
                                            kinds("k", "BEZIER BEZIER") + source("in", "X Y", "0 0 0 3") +
                                            source("out", "X Y", "0 0 0 0")));
    EXPECT_NEAR(3 * 0.25 * 0.5 * 3 + 3 * 0.125, moving.values("//rotate", 0.125)[3], 1e-9); // parameter 1/2
}

TEST(MotionTest, HermiteUsesItsTangents)
{
    Moving moving(animated("b/r.ANGLE", source("t", "T", "0 1") + source("o", "A", "0 1") +
                                            kinds("k", "HERMITE HERMITE") + source("in", "A", "0 4") +
                                            source("out", "A", "2 0")));
    EXPECT_DOUBLE_EQ(0.5 + 2 * 0.125 - 4 * 0.125, moving.values("//rotate", 0.5)[3]);
}

TEST(MotionTest, SourcesSkipParamsWithoutANameAndStartAtTheirOffset)
{
    Moving moving("<library_animations><animation>" + source("t", "T", "0 1") +
                  "<source id='o'><float_array id='oa'>99 1 2 3 4 5 6</float_array><technique_common><accessor "
                  "source='#oa' offset='1' count='2' stride='3'><param type='float'/><param name='A' type='float'/>"
                  "</accessor></technique_common></source><sampler id='s'>" +
                  input("INPUT", "t") + input("OUTPUT", "o") +
                  "</sampler><channel source='#s' target='b/r.ANGLE'/></animation></library_animations>");
    EXPECT_EQ(3.5, moving.values("//rotate", 0.5)[3]); // from 2 to 5
}

TEST(MotionTest, KeysThatAreNoNumbersAreLeftOutAndOthersSorted)
{
    Moving moving(animated("b/r.ANGLE", source("t", "T", "2 0 NaN 1") + source("o", "A", "20 0 5 NaN")));
    EXPECT_EQ(10, moving.values("//rotate", 1)[3]);
}

TEST(MotionTest, PoseMultipliesDownTheTree)
{
    Moving moving(animated("a/t", source("t", "T", "0 2") + source("o", "X Y Z", "0 0 0 4 0 0")));
    Pose pose(moving.motion(), 1.0);
    const Vector3 place = transformPoint(pose.world(moving.node("//node[@id='b']")), {1, 0, 0});
    EXPECT_NEAR(2 + std::cos(10 * std::acos(-1.0) / 180), place[0], 1e-12);
    EXPECT_NEAR(std::sin(10 * std::acos(-1.0) / 180), place[1], 1e-12);
    EXPECT_EQ(1, Pose(moving.motion(), {}).world(moving.node("//node[@id='a']"))[3]);
}

} // namespace
