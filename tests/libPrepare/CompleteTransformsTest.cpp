#include "AnimationWords.h"
#include "Expectations.h"
#include "Prepared.h"

#include <libPrepare/document/Numbers.h>

#include <gtest/gtest.h>

namespace {

using test::expectNear;
using test::Prepared;
using test::shown;

TEST(CompleteTransformsTest, NodeWithoutATransformGetsTheIdentityBeforeAllElseButItsAsset)
{
    const Prepared done(shown("<node id='a'><asset/><node id='b'><translate>1 2 3</translate></node></node>"));
    EXPECT_EQ("1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1", done.text("//node[@id='a']/matrix"));
    EXPECT_STREQ("asset", done.node("//node[@id='a']/matrix/preceding-sibling::*[1]").name());
    EXPECT_EQ(0U, done.count("//node[@id='b']/matrix"));
    EXPECT_EQ(1U, done.findings("node without a transform"));
}

TEST(CompleteTransformsTest, LookatBecomesAMatrixWithItsSid)
{
    const Prepared done(shown("<node><lookat sid='l'>1 2 3 1 2 13 0 1 0</lookat></node>"));
    expectNear({-1, 0, 0, 1, 0, 1, 0, 2, 0, 0, -1, 3, 0, 0, 0, 1}, done.numbers("//matrix[@sid='l']"), 1e-12);
    EXPECT_EQ(1U, done.findings("lookat"));
}

TEST(CompleteTransformsTest, SkewBecomesAMatrix)
{
    const Prepared done(shown("<node><skew>45 1 0 0 0 1 0</skew></node>"));
    expectNear({1, 0, 0, 0, 1, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, done.numbers("//node/matrix"), 1e-12);
}

TEST(CompleteTransformsTest, AxisGetsALengthThatSinglePrecisionCanMeasure)
{
    const Prepared done(shown("<node><rotate>0 1e-30 0 90</rotate><rotate sid='n'>0 0 0 90</rotate>"
                              "<rotate>0 0 7 90</rotate></node>"));
    expectNear({0, 1, 0, 90}, done.numbers("//rotate[1]"), 1e-12);
    EXPECT_EQ("1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1", done.text("//matrix[@sid='n']"));
    EXPECT_EQ("0 0 7 90", done.text("//rotate[2]"));
    EXPECT_EQ(2U, done.findings("axis"));
}

TEST(CompleteTransformsTest, MissingNumbersOfARotateAreNothing)
{
    const Prepared done(shown("<node><rotate/><rotate sid='two'>0 1</rotate><rotate>0 0 1</rotate></node>"));
    EXPECT_EQ("1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1", done.text("//matrix[1]")) << "no axis, no turn";
    EXPECT_EQ("0 1", done.text("//rotate[@sid='two']"));
    EXPECT_EQ(1U, done.findings("axis"));
}

TEST(CompleteTransformsTest, SecondRunAndWholeNodesChangeNothing)
{
    const Prepared first(shown("<node/><node><skew>45 1 0 0 0 1 0</skew><rotate>0 1e-30 0 90</rotate></node>"));
    const Prepared second(first.xml());
    EXPECT_FALSE(second.report.changed);
    EXPECT_EQ(first.xml(), second.xml());
}

} // namespace
