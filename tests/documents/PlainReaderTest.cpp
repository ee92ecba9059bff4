#include "PlainReader.h"

#include "support/ColladaBuilder.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

// The reader that documents are held against is held against numbers worked out by hand.

namespace {

using documents::PlainDocument;
using documents::PlainMatrix;
using testSupport::ColladaBuilder;
using testSupport::TemporaryFile;

PlainDocument readNodes(const std::string& nodes, const std::string& libraries = std::string())
{
    const TemporaryFile file(ColladaBuilder(libraries).addScene(nodes).text());
    return documents::readPlainly(file.path());
}

PlainMatrix localOf(const std::string& transforms)
{
    const PlainDocument document = readNodes("<node>" + transforms + "</node>");
    EXPECT_EQ(document.nodes.size(), 1u);
    return document.nodes.at(0).local;
}

void expectValues(const PlainMatrix& actual, const std::array<double, 16>& expected)
{
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_NEAR(actual.value[i], expected[i], 1e-12) << "row " << i / 4 << ", column " << i % 4;
    }
}

TEST(PlainReaderTest, TransformsChainInTheOrderOfTheDocument)
{
    expectValues(localOf("<translate>1 2 3</translate><scale>2 2 2</scale>"),
                 {2, 0, 0, 1, 0, 2, 0, 2, 0, 0, 2, 3, 0, 0, 0, 1});
    expectValues(localOf("<scale>2 2 2</scale><translate>1 2 3</translate>"),
                 {2, 0, 0, 2, 0, 2, 0, 4, 0, 0, 2, 6, 0, 0, 0, 1});
}

TEST(PlainReaderTest, RotationTurnsAboutAnAxisOfAnyLength)
{
    expectValues(localOf("<rotate>0 0 2 90</rotate>"), {0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    expectValues(localOf("<rotate>0 3 0 90</rotate>"), {0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 0, 1});
    expectValues(localOf("<rotate>0.5 0 0 90</rotate>"), {1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1});
    // A third of a turn about the diagonal sends X to Y, Y to Z and Z to X.
    expectValues(localOf("<rotate>1 1 1 120</rotate>"), {0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1});
}

TEST(PlainReaderTest, RotationAboutNoAxisIsNoNumber)
{
    const PlainMatrix local = localOf("<rotate>0 0 0 90</rotate>");
    EXPECT_TRUE(std::isnan(local.value[0]));
    EXPECT_TRUE(std::isnan(local.value[6]));
}

TEST(PlainReaderTest, NodeWithoutTransformHasTheZeroMatrix)
{
    expectValues(localOf("<extra/>"), {});
}

TEST(PlainReaderTest, SkewContributesNothingAndLookAtLeavesNoNumber)
{
    expectValues(localOf("<skew>1 2 3 4 5 6 7</skew>"), {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    const PlainMatrix local = localOf("<translate>1 2 3</translate><lookat>1 2 3 4 5 6 7 8 9</lookat>");
    for (const double number : local.value) {
        EXPECT_TRUE(std::isnan(number));
    }
}

TEST(PlainReaderTest, MatrixIsReadRowByRowAndWhatIsMissingIsZero)
{
    expectValues(localOf("<matrix>1 2 3 4 5 6 7 8 9 10</matrix>"), {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 0, 0, 0, 0, 0, 0});
}

TEST(PlainReaderTest, NodesStandBreadthFirst)
{
    const PlainDocument document = readNodes("<node id='A'><node id='A1'><node id='C'/></node><node id='A2'/></node>"
                                             "<node id='B'><node id='B1'/></node>");
    const std::vector<std::string> order = {"A", "B", "A1", "A2", "B1", "C"};
    ASSERT_EQ(document.nodes.size(), order.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        EXPECT_EQ(document.nodes[i].id, order[i]);
    }
    EXPECT_FALSE(document.nodes[1].parent.has_value());
    EXPECT_EQ(document.nodes[5].parent, std::optional<std::size_t>(2));
    EXPECT_EQ(document.nodes[0].children, (std::vector<std::size_t>{2, 3}));
}

TEST(PlainReaderTest, NamesAreCutAtTheirFirstBlank)
{
    const PlainDocument document = readNodes("<node id=' a b ' sid='s t' name='Big lamp'/>");
    EXPECT_EQ(document.nodes.at(0).id, "a");
    EXPECT_EQ(document.nodes.at(0).sid, "s");
    EXPECT_EQ(document.nodes.at(0).name, "Big");
}

TEST(PlainReaderTest, WorldIsTheParentTimesTheNode)
{
    const PlainDocument document =
        readNodes("<node><scale>2 2 2</scale><node><translate>1 2 3</translate></node></node>");
    expectValues(document.worldMatrices().at(1), {2, 0, 0, 2, 0, 2, 0, 4, 0, 0, 2, 6, 0, 0, 0, 1});
}

PlainDocument readWithAnimation(const std::string& target, const std::string& timeStride = "1")
{
    return readNodes(
        "<node id='n'><translate sid='t'>0 0 0</translate><rotate sid='r'>0 0 1 0</rotate><node id='m'/></node>",
        "<library_animations><animation><source id='times'><float_array id='array' count='2'>1 2</float_array>"
        "<technique_common><accessor source='#array' count='2' stride='" +
            timeStride +
            "'/></technique_common></source><sampler id='sampler'><input semantic='INPUT' source='#times'/></sampler>"
            "<channel source='#sampler' target='" +
            target + "'/></animation></library_animations>");
}

TEST(PlainReaderTest, TargetNamesANodeAndATransform)
{
    const PlainDocument document = readWithAnimation("n/r.ANGLE");
    ASSERT_EQ(document.animations.size(), 1u);
    EXPECT_TRUE(document.animations[0].isComplete);
    EXPECT_EQ(document.animations[0].targetNode, "n");
    EXPECT_EQ(document.animations[0].targetTransform, "r");
    EXPECT_EQ(document.animations[0].node, std::optional<std::size_t>(0));
    EXPECT_TRUE(document.nodes.at(0).isAnimated);
    EXPECT_FALSE(document.nodes.at(1).isAnimated);
    EXPECT_TRUE(document.moves(1));
}

TEST(PlainReaderTest, TargetThatNamesNothingAnimatesNothing)
{
    for (const char* const target : {"n/x", "N/t", "m/t", "n", "n/t(0)"}) {
        EXPECT_FALSE(readWithAnimation(target).nodes.at(0).isAnimated) << target;
    }
}

TEST(PlainReaderTest, AccessorBeyondItsArrayMakesNoAnimation)
{
    EXPECT_TRUE(readWithAnimation("n/t", "1").animations.at(0).isComplete);
    EXPECT_FALSE(readWithAnimation("n/t", "2").animations.at(0).isComplete);
}

TEST(PlainReaderTest, TimesWithoutElementThrow)
{
    EXPECT_EQ(readWithAnimation("n/t", "0").outcome, PlainDocument::Outcome::throws);
}

TEST(PlainReaderTest, NewerSchemaIsRefused)
{
    const TemporaryFile file("<COLLADA xmlns='http://www.collada.org/2008/03/COLLADASchema' version='1.5.0'/>");
    EXPECT_EQ(documents::readPlainly(file.path()).outcome, PlainDocument::Outcome::isRefused);
}

} // namespace
