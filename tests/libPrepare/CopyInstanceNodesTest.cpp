#include "AnimationWords.h"
#include "Expectations.h"
#include "Prepared.h"

#include <libPrepare/document/Motion.h>
#include <libPrepare/document/Numbers.h>

#include <gtest/gtest.h>

namespace {

using namespace libPrepare;
using test::Prepared;
using test::shown;

std::string library(const std::string& nodes)
{
    return "<library_nodes>" + nodes + "</library_nodes>";
}

const std::string still = "<matrix>1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix>";

std::string instance(const std::string& id)
{
    return "<instance_node url='#" + id + "'/>";
}

TEST(CopyInstanceNodesTest, CopiesHaveIdsOfTheirOwnAndKeepNameAndSid)
{
    const Prepared done(library("<node id='l' name='Leaf' sid='s'><translate>1 2 3</translate></node>") +
                        shown("<node id='a'>" + still + instance("l") + instance("l") + "</node>"));
    EXPECT_EQ(0U, done.count("//instance_node"));
    EXPECT_EQ(2U, done.count("//node[@id='a']/node[@name='Leaf'][@sid='s'][translate='1 2 3']"));
    EXPECT_EQ(1U, done.count("//node[@id='l']"));
    EXPECT_EQ(1U, done.count("//node[@id='a']/node[@id='l']")) << "references mean what is shown";
    EXPECT_EQ(2U, done.findings("instance_node"));
    const Prepared second(done.xml());
    EXPECT_FALSE(second.report.changed);
}

TEST(CopyInstanceNodesTest, InstancesOfInstancesAreCopiedToo)
{
    const Prepared done(library("<node id='l'>" + still + "</node><node id='two'>" + still + instance("l") +
                                instance("l") + "</node>") +
                        shown("<node id='a'>" + still + instance("two") + instance("two") + "</node>"));
    EXPECT_EQ(2U, done.count("//node[@id='a']/node"));
    EXPECT_EQ(4U, done.count("//node[@id='a']/node/node"));
}

TEST(CopyInstanceNodesTest, CirclesAreBroken)
{
    const Prepared done(
        library("<node id='l'>" + still + instance("m") + "</node><node id='m'>" + still + instance("l") + "</node>") +
        shown("<node id='a'>" + still + instance("l") + instance("a") + "</node>"));
    EXPECT_EQ(1U, done.count("//node[@id='a']/node"));
    EXPECT_EQ(1U, done.count("//node[@id='a']/node/node"));
    EXPECT_EQ(0U, done.count("//visual_scene//instance_node"));
    EXPECT_EQ(4U, done.findings("instance_node")); // two copies, two circles
}

TEST(CopyInstanceNodesTest, SceneInANodeIsTakenOut)
{
    const Prepared done("<library_nodes><node id='a'>" + still +
                        shown("<node id='b'>" + still + instance("a") + "</node>") +
                        "</node></library_nodes><scene><instance_visual_scene url='#v'/></scene>");
    EXPECT_EQ(0U, done.count("//visual_scene"));
    EXPECT_EQ(1U, done.findings("stray-element"));
    test::expectStable(done);
}

TEST(CopyInstanceNodesTest, CopiesOfAShownNodeAreMadeOfWhatItWas)
{
    // "b" holds "l"; a copy of "b" inside "l" would hold "l" again, however far the work on "b" is.
    const Prepared done(library("<node id='l' name='l'>" + still + instance("b") + "</node>") +
                        shown("<node id='b' name='b'>" + still + instance("l") + "</node><node id='c'>" + still +
                              instance("l") + "</node>"));
    EXPECT_EQ(1U, done.count("//node[@id='b']/node[@name='l']"));
    EXPECT_EQ(0U, done.count("//node[@id='b']/node/node"));
    EXPECT_EQ(1U, done.count("//node[@id='c']/node[@name='l']/node[@name='b']"));
    EXPECT_EQ(0U, done.count("//node[@id='c']/node/node/node"));
}

// For example, a node in the data of another program.
TEST(CopyInstanceNodesTest, IdsOfWhatIsNotShownInAShownNodeStayDifferent)
{
    const Prepared done(shown("<node id='a'>" + still +
                              "<technique profile='X'><node id='b'/></technique></node><node>" + still + instance("a") +
                              "</node>"));
    EXPECT_EQ(1U, done.count("//node[@id='b']"));
    EXPECT_EQ(1U, done.count("//node[@id='a']//node[@id='b']"));
    EXPECT_EQ(2U, done.count("//technique/node[@id]"));
    test::expectStable(done);
}

TEST(CopyInstanceNodesTest, InstancesThatAreNotShownAreNotCopiedIn)
{
    const Prepared done(shown("<node id='a'>" + still + "<technique_common><node>" + instance("a") +
                              "</node></technique_common></node><node>" + still + instance("a") + "</node>"));
    EXPECT_EQ(2U, done.count("//technique_common/node/instance_node"));
    EXPECT_EQ(0U, done.findings("size"));
    test::expectStable(done);
}

TEST(CopyInstanceNodesTest, VendorDataIsNotCopiedIn)
{
    const Prepared done(shown("<node id='a'>" + still + instance("b") +
                              "<extra><technique profile='X'><node id='b'><rotate>0 0 1 1,5</rotate></node></technique>"
                              "</extra></node>"));
    EXPECT_EQ(0U, done.count("//node[@id='a']/node"));
    EXPECT_EQ(0U, done.count("//instance_node"));
    EXPECT_EQ(1U, done.findings("instance_node"));
    test::expectStable(done);
}

TEST(CopyInstanceNodesTest, ReferencesToNothingAreTakenOut)
{
    const Prepared done(shown("<node id='a'>" + still + instance("gone") + "</node>"));
    EXPECT_EQ(0U, done.count("//instance_node"));
    ASSERT_EQ(1U, done.report.findings.size());
    EXPECT_EQ(Outcome::lost, done.report.findings[0].outcome);
}

TEST(CopyInstanceNodesTest, CopiesMoveAsTheirOriginalDoes)
{
    const Prepared done("<library_animations>" + test::flat("x", "l/t.Y", "Y", "0 2", "0 8", "LINEAR LINEAR") +
                        "</library_animations>" + library("<node id='l'><translate sid='t'>0 0 0</translate></node>") +
                        shown("<node id='a'>" + still + instance("l") +
                              "</node><node id='b'><translate>5 0 0</translate>" + instance("l") + "</node>"));
    pugi::xml_document copy;
    ASSERT_TRUE(copy.load_string(done.xml().c_str(), pugi::parse_full | pugi::parse_ws_pcdata));
    const Options options;
    Report report;
    Document document(copy, "memory.dae", options, report);
    const Motion motion(document);
    ASSERT_EQ(2U, motion.channels().size());
    for (const char* const path : {"//node[@id='a']/node", "//node[@id='b']/node"}) {
        EXPECT_EQ(2, motion.localMatrix(copy.select_node(path).node(), 0.5)[7]) << path;
    }
}

TEST(CopyInstanceNodesTest, CopiesOfTransformsWithBracketsInTheirSidMoveToo)
{
    const Prepared done(library("<node id='l'><rotate sid='r(1)'>0 0 1 0</rotate></node>") + "<library_animations>" +
                        test::flat("x", "l/r(1).ANGLE", "ANGLE", "0 2", "0 90", "LINEAR LINEAR") +
                        "</library_animations>" +
                        shown("<node id='a'>" + still + instance("l") + instance("l") + "</node>"));
    EXPECT_EQ(2U, done.count("//channel"));
    EXPECT_EQ(2U, done.count("//node[@id='a']/node/rotate"));
    EXPECT_EQ(0U, done.findings("animation is left out"));
}

TEST(CopyInstanceNodesTest, GrowthIsBounded)
{
    std::string nodes = "<node id='n0'>" + still + "</node>";
    for (int i = 1; i < 40; ++i) {
        const std::string below = instance("n" + std::to_string(i - 1));
        nodes += "<node id='n" + std::to_string(i) + "'>" + still + below + below + "</node>";
    }
    Options options;
    options.maxSize = 100000;
    const Prepared done(library(nodes) + shown("<node id='a'>" + still + instance("n39") + "</node>"), options);
    EXPECT_EQ(1U, done.findings("size"));
    EXPECT_LT(done.xml().size(), 400000U);
}

} // namespace
