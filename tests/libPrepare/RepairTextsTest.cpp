#include "OnePass.h"

#include <gtest/gtest.h>

namespace {

using test::OnePass;

TEST(RepairTextsTest, RunsBecomeOneAndCommentsStay)
{
    const OnePass result(&libPrepare::repairTexts,
                         "<p>1 2<!-- c --> 3<![CDATA[ 4]]><?x?> 5</p><init_from><![CDATA[a.png]]></init_from>"
                         "<q>1<!-- only one run --></q><extra><p><![CDATA[a<b]]></p></extra>");
    EXPECT_NE(std::string::npos, result.all().find("<p>1 2 3 4 5<!-- c --><?x?></p><init_from>a.png</init_from>"
                                                   "<q>1<!-- only one run --></q><extra><p><![CDATA[a<b]]></p>"));
    EXPECT_EQ(2U, result.report.findings.size());
}

TEST(RepairTextsTest, ElementsInAValueAreTakenOut)
{
    const OnePass result(&libPrepare::repairTexts, "<matrix>1<node id='d'/> 0</matrix><texture><extra/></texture>");
    EXPECT_EQ(0U, result.count("//node"));
    EXPECT_EQ("1 0", result.text("//matrix"));
    EXPECT_EQ(1U, result.count("//texture/extra"));
    EXPECT_EQ("stray-element", result.report.findings.at(0).kind);
}

TEST(RepairTextsTest, WhatAnElementThatIsTakenOutLeavesIsJoined)
{
    const std::string text = "a<![CDATA[b]]>";
    const OnePass result(&libPrepare::repairTexts,
                         "<polygons>" + text + "<translate><light id='d'/></translate></polygons>");
    EXPECT_EQ("ab", result.text("//polygons"));
    const OnePass again(&libPrepare::repairTexts, result.all());
    EXPECT_EQ(result.all(), again.all());
    EXPECT_EQ(0U, again.report.findings.size());
}

TEST(RepairTextsTest, ElementsWithIdsAreTakenOutOfThoseThatCannotHoldThem)
{
    const OnePass result(&libPrepare::repairTexts,
                         "<instance_camera><source id='a'/><extra><b id='b'/></extra></instance_camera>"
                         "<diffuse><x><geometry id='c'/></x><color id='d'/><odd/></diffuse>"
                         "<triangles><geometry id='e'/><input id='f'/></triangles>"
                         "<bind_material><node id='g'/><technique_common><light id='h'/><instance_material id='i'/>"
                         "</technique_common></bind_material>");
    EXPECT_EQ(0U, result.count("//*[@id='a' or @id='c' or @id='e' or @id='g' or @id='h']"));
    EXPECT_EQ(4U, result.count("//*[@id='b' or @id='d' or @id='f' or @id='i']"));
    EXPECT_EQ(1U, result.count("//odd"));
    EXPECT_EQ(5U, result.report.findings.size());
    EXPECT_TRUE(result.report.changed);
}

TEST(RepairTextsTest, DefinitionsAreTakenOutOfWhatCannotHoldThem)
{
    const OnePass result(&libPrepare::repairTexts,
                         "<library_effects><effect id='e'><image id='i'/><camera id='a'/></effect></library_effects>"
                         "<library_nodes><node id='n'><node id='m'/><library_lights><light id='b'/></library_lights>"
                         "<technique profile='X'><light id='x'/></technique></node></library_nodes>"
                         "<library_animations><animation id='p'><animation id='q'><sampler id='s'/><source id='r'/>"
                         "</animation><vertices id='c'/></animation><library_animations><animation id='d'/>"
                         "</library_animations></library_animations>"
                         "<library_geometries><geometry id='g'><mesh><source id='t'/><vertices id='v'/>"
                         "<animation id='f'/></mesh></geometry></library_geometries>"
                         "<scene><COLLADA><library_lights><light id='h'/></library_lights></COLLADA></scene>");
    EXPECT_EQ(0U, result.count("//@id[contains('abcdfh', .)]"));
    EXPECT_EQ(12U, result.count("//@id"));
    EXPECT_EQ(6U, result.report.findings.size());
}

TEST(RepairTextsTest, DecimalCommasBecomePoints)
{
    const OnePass result(
        &libPrepare::repairTexts,
        "<unit meter='0,01'/><translate>1,5 -0,25\n3</translate><float_array>1,5e-3 2,5E7 4</float_array>"
        "<p>1,5</p><scale>1,5,</scale><rotate>,2 , x,1,2</rotate>");
    EXPECT_EQ("0.01", result.value("//unit/@meter"));
    EXPECT_EQ("1.5 -0.25\n3", result.text("//translate"));
    EXPECT_EQ("1.5e-3 2.5E7 4", result.text("//float_array"));
    EXPECT_EQ("1,5", result.text("//p"));
    EXPECT_EQ("1,5,", result.text("//scale"));
    EXPECT_EQ(",2 , x,1,2", result.text("//rotate"));
    EXPECT_EQ(3U, result.report.findings.size());
}

TEST(RepairTextsTest, CommasBetweenNumbersBecomeBlanks)
{
    const OnePass result(&libPrepare::repairTexts, "<translate>1, 2.5, -3e2</translate><scale>1,2,3</scale>"
                                                   "<rotate>0.5,1 0,1.5,90</rotate>");
    EXPECT_EQ("1  2.5  -3e2", result.text("//translate"));
    EXPECT_EQ("1 2 3", result.text("//scale"));
    EXPECT_EQ("0.5 1 0 1.5 90", result.text("//rotate"));
    EXPECT_EQ(3U, result.report.findings.size());
}

} // namespace
