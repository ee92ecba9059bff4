#include "AnimationWords.h"
#include "Expectations.h"
#include "Prepared.h"

#include "support/Rows.h"

#include <gtest/gtest.h>

namespace {

using test::Prepared;
using test::source;

const std::string positions = source("p", "X Y Z", "0 0 0 1 0 0 0 1 0");
const std::string normals = source("n", "X Y Z", "0 0 1 1 0 0 0 1 0");
const std::string coordinates = source("t", "S T", "0 0 1 0 0 1");
const std::string moreCoordinates = source("u", "S T", "5 5 6 5 5 6");
const std::string vertices = "<vertices id='v'><input semantic='POSITION' source='#p'/></vertices>";

std::string mesh(const std::string& content)
{
    return "<library_geometries><geometry id='g'><mesh>" + positions + normals + coordinates + moreCoordinates +
           content + "</mesh></geometry></library_geometries>";
}

// The inputs of the first list of triangles, such as "VERTEX 0 #v, NORMAL 1 #n".
std::string inputs(const Prepared& result)
{
    std::string text;
    for (const pugi::xml_node input : result.node("//triangles").children("input")) {
        text += text.empty() ? "" : ", ";
        text += input.attribute("semantic").value();
        text += std::string(" ") + input.attribute("offset").value() + ' ' + input.attribute("source").value();
        if (input.attribute("set")) {
            text += std::string(" set ") + input.attribute("set").value();
        }
    }
    return text;
}

struct InputCase : testSupport::Row {
    std::string content;
    const char* inputs;
    const char* list;
    const char* kind; // of an expected finding
};

class ArrangeInputsTest : public testing::TestWithParam<InputCase> {};

TEST_P(ArrangeInputsTest, InputsReadRightlyByPosition)
{
    const InputCase& row = GetParam();
    const Prepared result(mesh(row.content));
    EXPECT_EQ(row.inputs, inputs(result));
    EXPECT_EQ(row.list, result.text("//triangles/p"));
    EXPECT_NE(0U, result.findings(row.kind)) << row.kind;
    EXPECT_EQ(1U, result.count("//vertices/input"));
    EXPECT_TRUE(result.report.changed);
    test::expectStable(result);
}

INSTANTIATE_ROWS(Inputs, ArrangeInputsTest,
                 {"InputsOfVerticesMoveToThePrimitive",
                  "<vertices id='v'><input semantic='NORMAL' source='#n'/><input semantic='POSITION' source='#p'/>"
                  "<input semantic='TEXCOORD' source='#t'/></vertices><triangles count='1'>"
                  "<input semantic='VERTEX' source='#v' offset='0'/><p>0 1 2</p></triangles>",
                  "VERTEX 0 #v, NORMAL 0 #n, TEXCOORD 0 #t", "0 1 2", "vertices"},
                 {"NormalOfThePrimitiveGoesBeforeThatOfVertices",
                  "<vertices id='v'><input semantic='POSITION' source='#p'/><input semantic='NORMAL' source='#p'/>"
                  "<input semantic='TEXCOORD' source='#t'/></vertices><triangles count='1'>"
                  "<input semantic='VERTEX' source='#v' offset='1'/><input semantic='NORMAL' source='#n' offset='0'/>"
                  "<p>2 0 1 1 0 2</p></triangles>",
                  "VERTEX 1 #v, NORMAL 0 #n, TEXCOORD 1 #t", "2 0 1 1 0 2", "vertices"},
                 {"CoordinatesOfVerticesComeAfterThoseOfThePrimitive",
                  "<vertices id='v'><input semantic='POSITION' source='#p'/><input semantic='TEXCOORD' source='#t'/>"
                  "</vertices><triangles count='1'><input semantic='VERTEX' source='#v' offset='0'/>"
                  "<input semantic='TEXCOORD' source='#u' offset='1' set='4'/><p>0 2 1 1 2 0</p></triangles>",
                  "VERTEX 0 #v, TEXCOORD 1 #u set 4, TEXCOORD 0 #t set 5", "0 2 1 1 2 0", "vertices"},
                 {"OtherSemanticGoesWithItsOffset",
                  vertices + "<triangles count='1'><input semantic='VERTEX' source='#v' offset='0'/>"
                             "<input semantic='TEXTANGENT' source='#n' offset='1'/>"
                             "<input semantic='NORMAL' source='#n' offset='2'/><p>0 7 2 1 8 1 2 9 0</p></triangles>",
                  "VERTEX 0 #v, NORMAL 1 #n", "0 2 1 1 2 0", "semantic"},
                 {"OtherSemanticAtAnOffsetThatIsUsedLeavesIt",
                  vertices + "<triangles count='1'><input semantic='TEXBINORMAL' source='#n' offset='0'/>"
                             "<input semantic='VERTEX' source='#v' offset='0'/><p>0 1 2</p></triangles>",
                  "VERTEX 0 #v", "0 1 2", "semantic"},
                 {"GapBetweenOffsetsIsClosed",
                  vertices + "<triangles count='1'><input semantic='VERTEX' source='#v' offset='1'/>"
                             "<input semantic='NORMAL' source='#n' offset='3'/>"
                             "<p>9 0 9 2 9 1 9 1 9 2 9 0</p></triangles>",
                  "VERTEX 0 #v, NORMAL 1 #n", "0 2 1 1 2 0", "offsets"},
                 {"InputThatLeadsNowhereGoes",
                  vertices + "<triangles count='1'><input semantic='VERTEX' source='#v' offset='0'/>"
                             "<input semantic='COLOR' source='#none' offset='1'/><p>0 5 1 5 2 5</p></triangles>",
                  "VERTEX 0 #v", "0 1 2", "source"},
                 {"LowestSetComesFirst",
                  vertices + "<triangles count='1'><input semantic='VERTEX' source='#v' offset='0'/>"
                             "<input semantic='TEXCOORD' source='#t' offset='1' set='2'/>"
                             "<input semantic='TEXCOORD' source='#u' offset='2' set='1'/>"
                             "<p>0 0 1 1 1 2 2 2 0</p></triangles>",
                  "VERTEX 0 #v, TEXCOORD 2 #u set 1, TEXCOORD 1 #t set 2", "0 0 1 1 1 2 2 2 0", "sets"},
                 {"SecondVertexGoes",
                  vertices + "<triangles count='1'><input semantic='VERTEX' source='#v' offset='0'/>"
                             "<input semantic='VERTEX' source='#v' offset='1'/><p>0 0 1 1 2 2</p></triangles>",
                  "VERTEX 0 #v", "0 1 2", "semantic"});

TEST(ArrangeInputsMeshTest, WhatReadsRightlyIsNotTouched)
{
    const Prepared result(mesh(vertices + "<triangles count='1'><input semantic='VERTEX' source='#v' offset='0'/>"
                                          "<input semantic='NORMAL' source='#n' offset='2'/>"
                                          "<input semantic='TEXCOORD' source='#t' offset='1' set='3'/>"
                                          "<p> 0 0 1\n1 1 2  2 2 0</p></triangles>"));
    EXPECT_FALSE(result.report.changed);
    EXPECT_EQ(1U, result.report.findings.size()) << "that nothing is shown";
}

TEST(ArrangeInputsMeshTest, IndexBeyondItsSourceGetsANeutralRecord)
{
    const Prepared result(mesh(vertices +
                               "<triangles count='1'><input semantic='VERTEX' source='#v' offset='0'/>"
                               "<input semantic='NORMAL' source='#n' offset='1'/><p>0 -1 1 7 2 2</p></triangles>"));
    EXPECT_EQ("0 3 1 3 2 2", result.text("//triangles/p"));
    EXPECT_EQ("0 0 1 1 0 0 0 1 0 0 0 1", result.text("//source[@id='n']/float_array"));
    EXPECT_STREQ("4", result.node("//source[@id='n']//accessor").attribute("count").value());
    EXPECT_EQ(1U, result.findings("indices"));
    test::expectStable(result);
}

TEST(ArrangeInputsMeshTest, AttributeOfTheVerticesWithFewerRecordsIsFilledUp)
{
    const Prepared result(
        "<library_geometries><geometry id='g'><mesh>" + positions + source("c", "R G B", "1 0 0") +
        "<vertices id='v'><input semantic='POSITION' source='#p'/><input semantic='COLOR' source='#c'/>"
        "</vertices><triangles count='1'><input semantic='VERTEX' source='#v' offset='0'/><p>0 1 2</p>"
        "</triangles></mesh></geometry></library_geometries>");
    EXPECT_EQ("1 0 0 1 1 1 1 1 1", result.text("//source[@id='c']/float_array"));
    EXPECT_EQ("0 1 2", result.text("//triangles/p"));
    test::expectStable(result);
}

// A mesh that is shown with the symbol "m", whose diffuse texture takes the set 1 and whose emission takes the set 0.
std::string shownWithTextures(const std::string& content)
{
    return mesh(content) +
           "<library_images><image id='i'><init_from>a.png</init_from></image></library_images>"
           "<library_effects><effect id='e'><profile_COMMON><newparam sid='s'><surface "
           "type='2D'><init_from>i</init_from>"
           "</surface></newparam><newparam sid='q'><sampler2D><source>s</source></sampler2D></newparam>"
           "<technique sid='c'><phong><emission><texture texture='q' texcoord='A'/></emission>"
           "<diffuse><texture texture='q' texcoord='B'/></diffuse></phong></technique></profile_COMMON></effect>"
           "</library_effects><library_materials><material id='M'><instance_effect url='#e'/></material>"
           "</library_materials><library_visual_scenes><visual_scene id='vs'><node id='N'>"
           "<matrix>1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix><instance_geometry url='#g'><bind_material>"
           "<technique_common><instance_material symbol='m' target='#M'>"
           "<bind_vertex_input semantic='A' input_semantic='TEXCOORD' input_set='0'/>"
           "<bind_vertex_input semantic='B' input_semantic='TEXCOORD' input_set='1'/></instance_material>"
           "</technique_common></bind_material></instance_geometry></node></visual_scene></library_visual_scenes>"
           "<scene><instance_visual_scene url='#vs'/></scene>";
}

TEST(ArrangeInputsMeshTest, DiffuseTextureChoosesTheSet)
{
    const Prepared result(shownWithTextures(
        vertices + "<triangles count='1' material='m'><input semantic='VERTEX' source='#v' offset='0'/>"
                   "<input semantic='TEXCOORD' source='#t' offset='0' set='0'/>"
                   "<input semantic='TEXCOORD' source='#u' offset='0' set='1'/><p>0 1 2</p></triangles>"));
    EXPECT_EQ("VERTEX 0 #v, TEXCOORD 0 #u set 1, TEXCOORD 0 #t set 0", inputs(result));
    EXPECT_EQ(1U, result.findings("texcoord")) << "the emission takes the other set";
}

TEST(ArrangeInputsMeshTest, CoordinatesOfVerticesAreNoSetThatATextureTakes)
{
    const Prepared result(shownWithTextures(
        "<vertices id='v'><input semantic='POSITION' source='#p'/><input semantic='TEXCOORD' source='#u'/></vertices>"
        "<triangles count='1' material='m'><input semantic='VERTEX' source='#v' offset='0'/>"
        "<input semantic='TEXCOORD' source='#t' offset='0' set='0'/><p>0 1 2</p></triangles>"));
    EXPECT_EQ("VERTEX 0 #v, TEXCOORD 0 #t set 0, TEXCOORD 0 #u set 2", inputs(result));
    test::expectStable(result);
}

struct SourceCase : testSupport::Row {
    std::string source; // with the id "p"
    const char* numbers;
    const char* params;
};

class ArrangeInputsSourceTest : public testing::TestWithParam<SourceCase> {};

TEST_P(ArrangeInputsSourceTest, NumbersLieOneAfterTheOther)
{
    const SourceCase& row = GetParam();
    const Prepared result(
        "<library_geometries><geometry id='g'><mesh>" + row.source + vertices +
        "<triangles count='1'><input semantic='VERTEX' source='#v' offset='0'/><p>0 1 2</p></triangles>"
        "</mesh></geometry></library_geometries>");
    EXPECT_EQ(row.numbers, result.text("//source[@id='p']/float_array"));
    const pugi::xml_node accessor = result.node("//source[@id='p']//accessor");
    std::string params;
    for (const pugi::xml_node param : accessor.children("param")) {
        params += param.attribute("name").value();
        EXPECT_STREQ("float", param.attribute("type").value());
    }
    EXPECT_EQ(row.params, params);
    EXPECT_EQ(std::to_string(params.size()), accessor.attribute("stride").value());
    EXPECT_STREQ("3", accessor.attribute("count").value());
    EXPECT_FALSE(accessor.attribute("offset"));
    EXPECT_EQ('#' + std::string(result.node("//source[@id='p']/float_array").attribute("id").value()),
              accessor.attribute("source").value());
    EXPECT_EQ(1U, result.findings("source"));
    test::expectStable(result);
}

std::string odd(const std::string& array, const std::string& accessor)
{
    return "<source id='p'>" + array + "<technique_common><accessor source='#a' " + accessor +
           "</accessor></technique_common></source>";
}

const std::string xyz = "<param name='X' type='float'/><param name='Y' type='float'/><param name='Z' type='float'/>";

INSTANTIATE_ROWS(
    Sources, ArrangeInputsSourceTest,
    {"Offset",
     odd("<float_array id='a' count='12'>9 9 9 0 0 0 1 0 0 0 1 0</float_array>",
         "offset='3' count='3' stride='3'>" + xyz),
     "0 0 0 1 0 0 0 1 0", "XYZ"},
    {"Interleaved",
     odd("<float_array id='a' count='15'>0 0 0 7 8 1 0 0 7 8 0 1 0 7 8</float_array>", "count='3' stride='5'>" + xyz),
     "0 0 0 1 0 0 0 1 0", "XYZ"},
    {"TwoDimensions",
     odd("<float_array id='a' count='6'>0.0 0 1e0 0 0 1.50</float_array>",
         "count='3' stride='2'><param name='X' type='float'/><param name='Y' type='float'/>"),
     "0.0 0 0 1e0 0 0 0 1.50 0", "XYZ"},
    {"Integers",
     odd("<int_array id='a' count='9' minInclusive='0'>0 0 0 1 0 0 0 1 0</int_array>", "count='3' stride='3'>" + xyz),
     "0 0 0 1 0 0 0 1 0", "XYZ"},
    {"NoNames",
     odd("<float_array id='a' count='9'>0 0 0 1 0 0 0 1 0</float_array>",
         "count='3' stride='3'><param type='float'/><param type='float'/><param type='float'/>"),
     "0 0 0 1 0 0 0 1 0", "XYZ"},
    {"NoParams", odd("<float_array id='a' count='9'>0 0 0 1 0 0 0 1 0</float_array>", "count='3' stride='3'>"),
     "0 0 0 1 0 0 0 1 0", "XYZ"},
    {"OneParamWithoutAName",
     odd("<float_array id='a' count='12'>0 5 0 0 1 5 0 0 0 5 1 0</float_array>",
         "count='3' stride='4'><param name='X' type='float'/><param type='float'/>"
         "<param name='Y' type='float'/><param name='Z' type='float'/>"),
     "0 0 0 1 0 0 0 1 0", "XYZ"},
    {"OtherTypes",
     odd("<float_array id='a' count='9'>0 0 0 1 0 0 0 1 0</float_array>",
         "count='3' stride='3'><param name='P' type='float3'/>"),
     "0 0 0 1 0 0 0 1 0", "XYZ"},
    {"CountBeyondTheArray",
     odd("<float_array id='a' count='9'>0 0 0 1 0 0 0 1 0</float_array>", "count='30' stride='3'>" + xyz),
     "0 0 0 1 0 0 0 1 0", "XYZ"},
    {"ArrayOfAnotherSource",
     "<source id='o'><float_array id='a' count='9'>0 0 0 1 0 0 0 1 0</float_array></source>" +
         odd("", "count='3' stride='3'>" + xyz),
     "0 0 0 1 0 0 0 1 0", "XYZ"});

TEST(ArrangeInputsMeshTest, SourcesThatShareAnArrayAreToldApart)
{
    const Prepared result("<library_geometries><geometry id='g'><mesh><source id='p'><float_array id='a' count='18'>"
                          "0 0 0 0 0 1 1 0 0 0 0 2 0 1 0 0 0 3</float_array><technique_common><accessor source='#a' "
                          "count='3' stride='6'>" +
                          xyz +
                          "</accessor></technique_common></source><source id='n'><technique_common>"
                          "<accessor source='#a' count='3' offset='3' stride='6'>" +
                          xyz + "</accessor></technique_common></source>" + vertices +
                          "<triangles count='1'><input semantic='VERTEX' source='#v' offset='0'/>"
                          "<input semantic='NORMAL' source='#n' offset='0'/><p>0 1 "
                          "2</p></triangles></mesh></geometry></library_geometries>");
    EXPECT_EQ("0 0 0 1 0 0 0 1 0", result.text("//source[@id='p']/float_array"));
    EXPECT_EQ("0 0 1 0 0 2 0 0 3", result.text("//source[@id='n']/float_array"));
    test::expectStable(result);
}

TEST(ArrangeInputsMeshTest, PrimitivesNameTheFirstVerticesWithTheInputsOfTheirOwn)
{
    const Prepared result(mesh(
        "<vertices id='v'><input semantic='POSITION' source='#p'/><input semantic='TEXCOORD' source='#t'/></vertices>"
        "<vertices id='w'><input semantic='POSITION' source='#p'/><input semantic='NORMAL' source='#n'/></vertices>"
        "<triangles count='1'><input semantic='VERTEX' source='#w' offset='0'/><p>0 1 2</p></triangles>"));
    EXPECT_EQ("VERTEX 0 #v, NORMAL 0 #n", inputs(result));
    EXPECT_EQ(1U, result.count("//vertices"));
    EXPECT_EQ(1U, result.count("//vertices/input"));
    test::expectStable(result);
}

TEST(ArrangeInputsMeshTest, PrimitiveWithOtherPositionsThanItsMeshIsReportedAndGoes)
{
    const Prepared result(
        mesh(source("q", "X Y Z", "0 0 5 1 0 5 0 1 5") + vertices +
             "<vertices id='w'><input semantic='POSITION' source='#q'/></vertices>"
             "<triangles count='1'><input semantic='VERTEX' source='#w' offset='0'/><p>0 1 2</p></triangles>"
             "<triangles count='1'><input semantic='VERTEX' source='#v' offset='0'/><p>2 1 0</p></triangles>"));
    ASSERT_EQ(1U, result.count("//triangles"));
    EXPECT_EQ("2 1 0", result.text("//triangles/p"));
    EXPECT_EQ(1U, result.findings("positions"));
    test::expectStable(result);
}

TEST(ArrangeInputsMeshTest, PositionsOfOneValueAreNone)
{
    const Prepared result(
        mesh("<source id='q'><float_array id='qa' count='9'>0 0 0 1 0 0 0 1 0</float_array><technique_common><accessor "
             "source='#qa' count='9'><param name='X' type='float'/></accessor></technique_common></source>"
             "<vertices id='v'><input semantic='POSITION' source='#q'/><input semantic='COLOR' source='#n'/></vertices>"
             "<lines count='1'><input semantic='VERTEX' source='#v' offset='0'/><p>0 1</p></lines>"));
    EXPECT_EQ("0 0 0 1 0 0 0 1 0", result.text("//source[@id='q']/float_array"));
    EXPECT_EQ(0U, result.count("//input[@source='#q']"));
    test::expectStable(result);
}

} // namespace
