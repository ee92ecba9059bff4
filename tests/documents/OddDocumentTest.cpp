#include "DocumentCheck.h"
#include "PlainReader.h"

#include "support/ColladaBuilder.h"
#include "support/Rows.h"
#include "support/Words.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// Documents that no exporter writes, loaded by the library and by the plain reader.

namespace {

using namespace testSupport;

struct OddDocument : Row {
    std::string text;
    bool loads = true;
};

std::vector<OddDocument> oddDocuments();
std::vector<OddDocument> oddGeometries();
std::vector<OddDocument> oddInstances();
std::vector<OddDocument> oddMaterials();

class OddDocumentTest : public testing::TestWithParam<OddDocument> {};

TEST_P(OddDocumentTest, LoadsAsAPlainReaderReadsIt)
{
    const TemporaryFile file(GetParam().text);
    const documents::PlainDocument expected = documents::readPlainly(file.path());
    ASSERT_FALSE(expected.leadsElsewhere);
    EXPECT_EQ(expected.outcome == documents::PlainDocument::Outcome::loads, GetParam().loads);
    documents::expectLoadAsRead(file.path(), expected);
}

INSTANTIATE_TEST_SUITE_P(Documents, OddDocumentTest, testing::ValuesIn(oddDocuments()), rowName);
INSTANTIATE_TEST_SUITE_P(Geometries, OddDocumentTest, testing::ValuesIn(oddGeometries()), rowName);
INSTANTIATE_TEST_SUITE_P(Instances, OddDocumentTest, testing::ValuesIn(oddInstances()), rowName);
INSTANTIATE_TEST_SUITE_P(Materials, OddDocumentTest, testing::ValuesIn(oddMaterials()), rowName);

// An animation with one input with two records.
std::string animation(const std::string& id, const std::string& target, const std::string& accessor = "count='2'",
                      const std::string& semantic = "INPUT", const std::string& array = "float_array")
{
    return "<animation><source id='" + id + "'><" + array + " id='" + id + "-array' count='2'>1 2</" + array +
           "><technique_common><accessor source='#" + id + "-array' " + accessor +
           "/></technique_common></source><sampler id='" + id + "-sampler'><input semantic='" + semantic +
           "' source='#" + id + "'/></sampler><channel source='#" + id + "-sampler' target='" + target +
           "'/></animation>";
}

std::string withAnimations(const std::string& animations, const std::string& nodes)
{
    return ColladaBuilder("<library_animations>" + animations + "</library_animations>").addScene(nodes).text();
}

std::string withNodes(const std::string& nodes)
{
    return ColladaBuilder().addScene(nodes).text();
}

std::string replaced(std::string text, const std::string& from, const std::string& to)
{
    return text.replace(text.find(from), from.size(), to);
}

std::string chain(unsigned depth)
{
    return repeated("<node><translate>0.1 0 0</translate><rotate>1 2 3 7</rotate><scale>1.01 0.99 1</scale>", depth) +
           repeated("</node>", depth);
}

// --- geometries

std::string params(const std::string& names)
{
    std::string result;
    for (const char name : names) {
        result += name == '-' ? "<param type='float'/>" : "<param name='" + std::string(1, name) + "' type='float'/>";
    }
    return result;
}

// A source whose accessor has these attributes besides "count".
std::string source(const std::string& id, const std::string& numbers, const std::string& accessor,
                   const std::string& paramXml)
{
    return "<source id='" + id + "'><float_array id='" + id + "-array' count='9'>" + numbers +
           "</float_array><technique_common><accessor source='#" + id + "-array' " + accessor + ">" + paramXml +
           "</accessor></technique_common></source>";
}

// Three points, as "places"; three directions, as "ways"; three pairs, as "pairs"; and single numbers, "bare".
std::string sources()
{
    return source("places", "1 2 3 4 5 6 7 8 9", "count='3' stride='3'", params("XYZ")) +
           source("ways", "0 0 1 0 1 0 0.1 -0.2 1e-3", "count='3' stride='3'", params("XYZ")) +
           source("pairs", "0.25 0.5 0.75 1 1.25 1.5", "count='3' stride='2'", params("ST")) +
           "<source id='bare'><float_array id='bare-array' count='3'>10 11 12</float_array></source>";
}

std::string input(const std::string& semantic, const std::string& id, int offset = -1)
{
    const std::string shown = offset < 0 ? std::string() : "' offset='" + std::to_string(offset);
    return "<input semantic='" + semantic + "' source='#" + id + shown + "'/>";
}

const char* const oneNode = "<node id='n'><instance_geometry url='#g'/></node>";

// A mesh of geometry "g" with the sources, the given vertices "v", and the given content.
std::string withMesh(const std::string& vertices, const std::string& others, const std::string& nodes = oneNode,
                     const std::string& moreSources = std::string())
{
    return ColladaBuilder("<library_geometries><geometry id='g' name='Big box'><mesh>" + sources() + moreSources +
                          "<vertices id='v'>" + vertices + "</vertices>" + others +
                          "</mesh></geometry></library_geometries>")
        .addScene(nodes)
        .text();
}

std::string triangles(const std::string& inputs, const std::string& p, const std::string& attributes = "count='1'")
{
    return "<triangles " + attributes + ">" + inputs + "<p>" + p + "</p></triangles>";
}

std::string withTriangles(const std::string& inputs, const std::string& p, const std::string& attributes = "count='1'")
{
    return withMesh(input("POSITION", "places"), triangles(inputs, p, attributes));
}

// An additional source "odd" as the second attribute of a triangle.
std::string withSource(const std::string& xml, const std::string& p = "0 0 1 1 2 2")
{
    return withMesh(input("POSITION", "places"), triangles(input("VERTEX", "v", 0) + input("NORMAL", "odd", 1), p),
                    oneNode, xml);
}

std::string withGeometries(const std::string& geometries, const std::string& nodes)
{
    return ColladaBuilder("<library_geometries>" + geometries + "</library_geometries>").addScene(nodes).text();
}

// A geometry without usable vertices.
std::string geometry(const std::string& id, const std::string& content = "<mesh><vertices/></mesh>")
{
    return "<geometry id='" + id + "'>" + content + "</geometry>";
}

std::vector<OddDocument> oddGeometries()
{
    const std::string position = input("POSITION", "places");
    const std::string vertex = input("VERTEX", "v", 0);
    const std::string normal = input("NORMAL", "ways", 1);
    return {
        {"Triangle", withTriangles(vertex, "0 1 2", "name='some corners' material='stone' count='1'")},
        {"TriangleOfThreeSources", withTriangles(vertex + normal + input("TEXCOORD", "pairs", 2), "0 0 0 1 1 1 2 2 2")},
        {"CornersThatRepeat", withTriangles(vertex, "2 1 0 0 1 2 1 1 1", "count='3'")},
        {"CornersThatDifferInOneIndex", withTriangles(vertex + normal, "0 0 1 0 2 0 0 1 1 0 2 0", "count='2'")},
        {"InputsInAnotherOrder", withTriangles(input("NORMAL", "ways", 1) + input("VERTEX", "v", 0), "0 2 1 0 2 1")},
        {"SharedOffset", withTriangles(vertex + input("NORMAL", "ways", 0), "0 1 2")},
        {"GapInTheOffsets", withTriangles(vertex + input("NORMAL", "ways", 2), "0 1 2 1 0 2 1 1 2 2 2 0", "count='1'")},
        {"GapBeyondTheIndices", withTriangles(vertex + input("NORMAL", "ways", 5), "0 1 2 0 1 2")},
        {"LowerCaseWords", withTriangles(input("vertex", "v", 0) + input("normal", "ways", 1), "0 0 1 1 2 2")},
        {"SkippedInputShiftsTheOffsets",
         withTriangles(vertex + input("TEXTANGENT", "ways", 1) + input("NORMAL", "ways", 2), "0 1 2 1 2 0 2 0 1")},
        {"DanglingInputShiftsTheOffsets",
         withTriangles(vertex + input("TANGENT", "nothing", 1) + input("NORMAL", "ways", 2), "0 1 2 1 2 0 2 0 1")},
        {"VertexThatIsNone", withTriangles(input("VERTEX", "places", 0) + normal, "0 1 1 2 2 0")},
        {"NoUsableInput", withTriangles(input("VERTEX", "nothing", 0), "0 1 2")},
        {"NoInput", withTriangles("", "0 1 2", "material='m' name='t' count='1'")},
        {"CountOfZero", withTriangles(vertex, "0 1 2", "count='0'")},
        {"CountBeyondTheIndices", withTriangles(vertex, "0 1 2 2 1", "count='4000000000'")},
        {"NoIndices", withMesh(position, "<triangles count='2'>" + vertex + "</triangles>")},
        {"SecondListOfIndicesIsLost", withMesh(position, "<triangles count='1'>" + vertex +
                                                             "<p>2 1 0</p><p>0 1 2</p>"
                                                             "</triangles>")},
        {"SeveralLists", withMesh(position, triangles(vertex, "2 1 0") + triangles(vertex + normal, "0 0 2 1 1 0"))},
        {"IndexBeyondTheRecords", withTriangles(vertex, "0 1 3"), false},
        {"NegativeIndex", withTriangles(vertex, "0 -1 2"), false},
        {"SecondIndexBeyondTheRecords", withTriangles(vertex + normal, "0 0 1 1 2 3"), false},
        {"VerticesOfTwoInputs", withMesh(position + input("NORMAL", "ways"), triangles(vertex, "0 1 2")), false},
        {"VerticesOfTwoInputsOfWhichOneIsUnknown",
         withMesh(position + input("TEXTANGENT", "ways"), triangles(vertex, "0 1 2"))},
        {"VerticesOfTwoInputsTakeTheNextOffset",
         withMesh(position + input("NORMAL", "ways"),
                  triangles(vertex + input("TEXTANGENT", "ways", 1), "0 2 1 1 2 0"))},
        {"VerticesOfTwoInputsWithoutCorners",
         withMesh(position + input("NORMAL", "ways"), triangles(vertex, "", "count='0'"))},

        {"Points", withMesh(position, "")},
        {"PointsOfSeveralInputs", withMesh(position + input("NORMAL", "ways") + input("TEXCOORD", "pairs"), "")},
        {"PointsOfAPolylist", withMesh(position, "<polylist count='1'>" + vertex +
                                                     "<vcount>3</vcount><p>0 1 2</p>"
                                                     "</polylist>")},
        {"PointsOfNothing", withMesh("", "")},
        {"PointsOfSingleNumbers", withMesh(input("POSITION", "bare"), "")},
        {"PointsBesideSingleNumbers", withMesh(position + input("COLOR", "bare"), "")},
        {"PointsBeyondTheirArray",
         withMesh(input("POSITION", "odd"), "", oneNode,
                  source("odd", "1 2 3", "count='4000000000'", "<param name='X' type='float'/>"))},
        {"PointsOfFewerNormals",
         withMesh(position + input("NORMAL", "odd"), "", oneNode,
                  source("odd", "1 2 3", "count='2' stride='3'", params("XYZ"))),
         false},
        {"PointsBesideFewerSingleNumbers",
         withMesh(input("POSITION", "odd") + input("COLOR", "bare"), "", oneNode,
                  source("odd", "1 2 3 4", "count='4'", params("X"))),
         false},
        {"LinesAlone", withMesh(position, "<lines count='1'>" + vertex + "<p>0 1</p></lines>")},
        {"LinesAndTriangles",
         withMesh(position, "<lines count='1'>" + vertex + "<p>0 1</p></lines>" + triangles(vertex, "0 1 2"))},
        {"MeshWithoutVertices", withGeometries(geometry("g", "<mesh/>"), oneNode)},

        {"ParamsWithoutName", withSource(source("odd", "1 2 3 4 5 6 7 8 9", "count='3'", params("X-Z")))},
        {"ParamsAllWithoutName", withSource(source("odd", "1 2 3 4 5 6 7 8 9", "count='3'", params("---")))},
        {"ParamsWithEmptyName", withSource(source("odd", "1 2 3 4 5 6 7 8 9", "count='3' stride='3'",
                                                  "<param name='' type='float'/><param type='float'/>"))},
        {"ParamsOfCapitals", withSource(source("odd", "1 2 3", "count='3'", "<param name='X' type='FLOAT'/>"))},
        {"ParamsFewerThanTheStride",
         withSource(source("odd", "1 2 3 4 5 6 7 8 9", "count='3' stride='3'", params("X")))},
        {"ParamsMoreThanTheStride",
         withSource(source("odd", "1 2 3 4 5 6 7 8 9", "count='3' stride='2'", params("XYZ")))},
        {"StrideOfOneIsNotBelieved",
         withSource(source("odd", "1 2 3 4 5 6 7 8 9", "count='3' stride='1'", params("XYZ")))},
        {"StrideOfFive",
         withSource(source("odd", "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15", "count='3' stride='5'", params("XYZ")))},
        {"NoParams", withSource(source("odd", "1 2 3 4 5 6 7 8 9", "count='3'", ""))},
        {"NoParamsOfAStride", withSource(source("odd", "1 2 3 4 5 6 7 8 9", "count='3' stride='3'", ""))},
        {"OffsetCountsRecords", withSource(source("odd", "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15",
                                                  "count='3' stride='3' offset='2'", params("XYZ")))},
        {"OffsetBeyondTheArray",
         withSource(source("odd", "1 2 3 4 5 6 7 8 9", "count='3' stride='3' offset='1'", params("XYZ")))},
        {"ArrayShorterThanItsRecords", withSource(source("odd", "1 2 3 4", "count='3' stride='3'", params("XYZ")))},
        {"MatrixParam", withSource(source("odd", "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17", "count='3'",
                                          "<param name='M' type='float4x4'/>"))},
        {"NumbersBeyondFloat", withSource(source("odd", "1e39 -1e39 0.1 1e-50 16777217 1e400 x 1,5 0.30000001192",
                                                 "count='3' stride='3'", params("XYZ")))},
        {"SingleNumbers",
         withTriangles(vertex + input("COLOR", "bare", 1) + input("NORMAL", "ways", 2), "0 2 0 1 1 1 2 0 2")},
        {"SingleNumbersBeyondTheirArray", withTriangles(vertex + input("COLOR", "bare", 1), "0 2 1 3 2 0"), false},
        {"ParamOfAnInteger", withSource(source("odd", "1 2 3", "count='3'", "<param name='X' type='int'/>")), false},
        {"ParamOfAnIntegerWithoutName",
         withSource(source("odd", "1 2 3", "count='3' stride='3'", params("X") + "<param type='int'/>")), false},
        {"ParamWithoutType", withSource(source("odd", "1 2 3", "count='3'", "<param name='X'/>")), false},
        {"EmptyArrayWithAnIntegerParam",
         withSource(replaced(source("odd", "", "count='3'", "<param name='X' type='int'/>"), "count='9'", ""))},
        {"EmptyArrayWithAParam",
         withSource(replaced(source("odd", "", "count='3' stride='3'", params("XYZ")), "count='9'", "count='0'"))},
        {"EmptyArrayWithoutParams", withSource(replaced(source("odd", "", "count='3'", ""), "count='9'", "count='0'"))},
        {"EmptyArrayAlone", withSource("<source id='odd'><float_array id='a' count='0'/></source>")},
        {"TechniqueWithoutAccessor",
         withSource("<source id='odd'><float_array id='a' count='3'>1 2 3</float_array><technique_common/></source>")},
        {"ArrayOfNames", withSource("<source id='odd'><Name_array id='a' count='3'>a b c</Name_array><technique_common>"
                                    "<accessor source='#a' count='3'><param name='N' type='name'/></accessor>"
                                    "</technique_common></source>")},
        {"AccessorOfAnotherArray",
         withSource("<source id='odd'><float_array id='a' count='3'>1 2 3</float_array><technique_common>"
                    "<accessor source='#places-array' count='3' stride='3'>" +
                    params("XYZ") + "</accessor></technique_common></source>")},
        {"AccessorOfNothing",
         withSource("<source id='odd'><float_array id='a' count='3'>1 2 3</float_array><technique_common>"
                    "<accessor source='#nothing' count='3'><param name='X' type='int'/></accessor>"
                    "</technique_common></source>")},
        {"AccessorOfNothingAndAnIndexBeyond",
         withSource("<source id='odd'><float_array id='a' count='3'>1 2 3</float_array><technique_common>"
                    "<accessor source='#nothing' count='2'/></technique_common></source>"),
         false},
    };
}

std::vector<OddDocument> oddInstances()
{
    const std::string throwing = geometry(
        "bad", "<mesh>" + sources() + "<vertices id='v'>" + input("POSITION", "places") + input("NORMAL", "ways") +
                   "</vertices>" + triangles(input("VERTEX", "v", 0), "0 1 2") + "</mesh>");
    const std::string moving = "<translate sid='t'>1 2 3</translate>";
    return {
        {"InstanceOfNothing", withGeometries(geometry("g"), "<node><instance_geometry url='#no'/></node>")},
        {"InstanceOfANode", withGeometries(geometry("g"), "<node id='n'><instance_geometry url='#n'/></node>")},
        {"InstanceWithoutUrl", withGeometries(geometry("g"), "<node id='n'><instance_geometry/></node>")},
        {"InstanceOnTwoNodes",
         withGeometries(geometry("g"), std::string(oneNode) + "<node id='m'><instance_geometry url='#g'/></node>")},
        {"InstanceTwiceOnANode", withGeometries(geometry("g"), "<node id='n'><instance_geometry url='#g'/>"
                                                               "<instance_geometry url='#g'/></node>")},
        {"InstanceInBreadthFirstOrder",
         withGeometries(geometry("g"), "<node id='a'><node id='b'><instance_geometry url='#g'/></node></node>"
                                       "<node id='c'><instance_geometry url='#g'/></node>")},
        {"GeometryWithoutInstance", withGeometries(geometry("g"), "<node/>")},
        {"SplineOnTwoNodes", withGeometries(geometry("g", "<spline/>"),
                                            std::string(oneNode) + "<node><instance_geometry url='#g'/></node>")},
        {"ConvexMeshBeforeAMesh", withGeometries(geometry("g", "<convex_mesh/><mesh/>"), oneNode)},
        {"ExceptionLeavesTheNodesWithoutAnimations",
         ColladaBuilder("<library_animations>" + animation("a", "n/t") + "</library_animations><library_geometries>" +
                        geometry("g") + throwing + geometry("h") + "</library_geometries>")
             .addScene("<node id='n'>" + moving +
                       "<instance_geometry url='#g'/><instance_geometry url='#bad'/></node>" +
                       "<node><instance_geometry url='#h'/></node>")
             .text(),
         false},
        {"ThrowingGeometryIsNotShown", withGeometries(throwing, "<node/>")},
    };
}

// --- materials

// An effect "e" with this content. Two instances bind it to the symbol "m"; the first one is of a spline.
std::string withEffect(const std::string& profiles, const std::string& more = std::string())
{
    const std::string binding = "<bind_material><technique_common><instance_material symbol='m' target='#m'/>"
                                "</technique_common></bind_material>";
    return ColladaBuilder(more + "<library_effects><effect id='e'>" + profiles +
                          "</effect></library_effects><library_materials><material id='m'><instance_effect url='#e'/>"
                          "</material></library_materials><library_geometries>" +
                          geometry("s", "<spline/>") + geometry("g") + "</library_geometries>")
        .addScene("<node><instance_geometry url='#s'>" + binding + "</instance_geometry></node>" +
                  "<node><instance_geometry url='#g'>" + binding + "</instance_geometry></node>")
        .text();
}

std::string profile(const std::string& shader, const std::string& before = std::string())
{
    return "<profile_COMMON>" + before + "<technique sid='common'>" + shader + "</technique></profile_COMMON>";
}

std::string color(const std::string& channel, const std::string& numbers)
{
    return "<" + channel + "><color>" + numbers + "</color></" + channel + ">";
}

// Two newparams: a sampler "sampler" and a surface "surface" with this content.
std::string chainOfTexture(const std::string& surface)
{
    return "<newparam sid='surface'><surface type='2D'>" + surface +
           "</surface></newparam><newparam sid='sampler'><sampler2D><source>surface</source></sampler2D></newparam>";
}

std::string textured(const std::string& newparams, const std::string& name = "sampler",
                     const std::string& images = "<image id='i'><init_from>./my tex.png</init_from></image>")
{
    return withEffect(
        profile("<phong><diffuse><texture texture='" + name + "' texcoord='UV'/></diffuse></phong>", newparams),
        "<library_images>" + images + "</library_images>");
}

// The materials of the first and the second node.
std::string withBindings(const std::string& first, const std::string& second)
{
    const auto effect = [](const std::string& id, const std::string& shader) {
        return "<effect id='" + id + "'>" + profile(shader) + "</effect>";
    };
    return ColladaBuilder("<library_effects>" +
                          effect("red-effect", "<blinn>" + color("diffuse", "1 0 0 1") + "</blinn>") +
                          effect("blue-effect", "<phong>" + color("diffuse", "0 0 1 1") + "</phong>") +
                          "</library_effects><library_materials>"
                          "<material id='red'><instance_effect url='#red-effect'/></material>"
                          "<material id='blue'><instance_effect url='#blue-effect'/></material>"
                          "<material id='none'/><material id='odd'><instance_effect url='#red'/></material>"
                          "<material id='astray'><instance_effect url='#nothing'/></material>"
                          "</library_materials><library_geometries>" +
                          geometry("g") + geometry("h") + "</library_geometries>")
        .addScene(
            "<node><node><instance_geometry url='#g'><bind_material>" + first +
            "</bind_material></instance_geometry></node></node><node><instance_geometry url='#h'><bind_material>" +
            second + "</bind_material></instance_geometry></node>")
        .text();
}

std::string bound(const std::string& symbol, const std::string& target)
{
    return "<technique_common><instance_material symbol='" + symbol + "' target='#" + target + "'/></technique_common>";
}

std::vector<OddDocument> oddMaterials()
{
    const std::string all = color("emission", "0.1 0.2 0.3 1") + color("ambient", "0.4 0.5 0.6 1") +
                            color("diffuse", "0.7 0.8 0.9 1") + color("specular", "1 1.5 2 1") +
                            color("reflective", "-1 0 1e-3 1") +
                            "<shininess><float>12.3</float></shininess>"
                            "<transparency><float>0.45</float></transparency>";
    const std::string from = "<init_from>i</init_from>";
    return {
        {"Blinn", withEffect(profile("<blinn>" + all + "</blinn>"))},
        {"Phong", withEffect(profile("<phong>" + all + "</phong>"))},
        {"Lambert", withEffect(profile("<lambert>" + all + "</lambert>"))},
        {"Constant", withEffect(profile("<constant>" + color("emission", "1 0 0 1") + "</constant>"))},
        {"LambertBeforeABlinn", withEffect(profile("<lambert/><blinn>" + all + "</blinn>"))},
        {"EmptyBlinn", withEffect(profile("<blinn/>"))},
        {"ProfileWithoutTechnique", withEffect("<profile_COMMON/>" + profile("<blinn>" + all + "</blinn>"))},
        {"TwoProfiles", withEffect(profile("<blinn>" + color("diffuse", "1 0 0 1") + "</blinn>") +
                                   profile("<phong>" + all + "</phong>"))},
        {"SecondProfileIsReadAlthoughTheFirstStays",
         withEffect(profile("<blinn/>") + profile("<phong><diffuse><texture texture='nowhere'/></diffuse></phong>"))},
        {"SecondProfileOfUse", withEffect(profile("<lambert/>") + profile("<phong>" + all + "</phong>"))},
        {"ColorOfTwoNumbers", withEffect(profile("<blinn>" + color("diffuse", "0.1 0.2") + "</blinn>"))},
        {"ColorOfThreeNumbers", withEffect(profile("<blinn>" + color("diffuse", "0.1 0.2 0.3") + "</blinn>"))},
        {"ColorByParam", withEffect(profile("<blinn><diffuse><param ref='p'/></diffuse><shininess><param ref='p'/>"
                                            "</shininess></blinn>"))},
        {"EmptyNumber", withEffect(profile("<blinn><shininess><float/></shininess></blinn>"))},
        {"NumbersOfAMaterialBeyondFloat",
         withEffect(profile("<blinn>" + color("diffuse", "1e39 -1e39 1e-50 1") + "</blinn>"))},

        {"SymbolOfTwoMaterials", withBindings(bound("s", "red"), bound("s", "blue"))},
        {"SymbolsOfOtherCase", withBindings(bound("s", "red"), bound("S", "blue"))},
        {"SymbolWithABlank", withBindings(bound("two words", "red"), bound("two", "blue"))},
        {"BindingWithoutSymbol",
         withBindings("<technique_common><instance_material target='#red'/></technique_common>", "")},
        {"BindingOfNothing", withBindings(bound("s", "nothing"), bound("s", "blue"))},
        {"BindingOfAnEffect", withBindings(bound("s", "red-effect"), bound("s", "blue"))},
        {"BindingOfAMaterialWithoutEffect", withBindings(bound("s", "none"), bound("s", "blue"))},
        {"BindingOfAMaterialOfNoEffect", withBindings(bound("s", "odd"), bound("s", "astray"))},
        {"BindingWithoutTechnique", withBindings("", "")},

        {"Texture", textured(chainOfTexture(from))},
        {"TextureOfNoSampler", textured(chainOfTexture(from), "other")},
        {"TextureOfTheSurface", textured(chainOfTexture(from), "surface")},
        {"TextureOfTheImage", textured(chainOfTexture(from), "i")},
        {"TextureOfTheTechnique", textured(chainOfTexture(from), "common")},
        {"TextureWithoutName", textured(chainOfTexture(from), "")},
        {"TextureOfNoSurface",
         textured("<newparam sid='sampler'><sampler2D><source>surface</source></sampler2D></newparam>")},
        {"TextureOfASamplerAsSurface",
         textured("<newparam sid='sampler'><sampler2D><source>sampler</source></sampler2D></newparam>")},
        {"TextureWithoutSource", textured("<newparam sid='sampler'><sampler2D/></newparam>")},
        {"TextureOfTheFirstOfTwo", textured(chainOfTexture(from) + "<newparam sid='sampler'><sampler2D/></newparam>")},
        {"TextureWithoutInitializer", textured(chainOfTexture(""))},
        {"TextureWithANullInitializer", textured(chainOfTexture("<init_as_null/>"))},
        {"TextureOfTheSecondInitializer", textured(chainOfTexture("<init_from>nothing</init_from>" + from))},
        {"TextureOfANode", textured(chainOfTexture("<init_from>g</init_from>" + from))},
        {"TextureOfAnEmptyImage",
         textured(chainOfTexture("<init_from>empty</init_from>" + from), "sampler",
                  "<image id='empty'><init_from/></image><image id='i'><init_from>a.png</init_from></image>")},
        {"TextureOfABackslash",
         textured(chainOfTexture(from), "sampler", "<image id='i'><init_from>C:\\t\\a.png</init_from></image>")},
        {"TextureOfADrive",
         textured(chainOfTexture(from), "sampler", "<image id='i'><init_from>C:/t/a.png</init_from></image>")},
        {"TextureOfAPercent",
         textured(chainOfTexture(from), "sampler", "<image id='i'><init_from>a%20b.png</init_from></image>")},
        {"TextureOfABadPercent",
         textured(chainOfTexture(from), "sampler", "<image id='i'><init_from>100%.png</init_from></image>")},
        {"TextureOfData", textured(chainOfTexture(from), "sampler", "<image id='i'><data>00</data></image>")},
    };
}

std::vector<OddDocument> oddDocuments()
{
    const std::string moving = "<node id='n'><translate sid='t'>1 2 3</translate></node>";
    const std::string nameless = "<node id='n'/><node><translate>1 2 3</translate></node><node/>";
    const std::string plain = withNodes(moving);
    return {
        {"AllTransforms", withNodes("<node><translate>1 2 3</translate><rotate>1 1 0 33</rotate><scale>2 -3 0.5</scale>"
                                    "<skew>45 1 0 0 0 1 0</skew><matrix>1 2 3 4 5 6 7 8 9 10 11 12 0 0 0 1</matrix>"
                                    "<rotate>0 0 -4 725</rotate></node>")},
        {"LookAtAmongOthers", withNodes("<node><translate>1 2 3</translate><lookat>1 2 3 4 5 6 0 1 0</lookat>"
                                        "<scale>2 2 2</scale><node><translate>1 0 0</translate></node></node>")},
        {"RotationAboutNoAxis", withNodes("<node><translate>1 2 3</translate><rotate>0 0 0 90</rotate></node>")},
        {"ZeroMatrixAboveOthers", withNodes("<node id='a'><node id='b'><translate>1 2 3</translate></node></node>")},
        {"ValuesMissing", withNodes("<node><translate>1 2</translate><rotate>0 1</rotate></node><node><scale/></node>"
                                    "<node><matrix>1 2 3</matrix></node>")},
        {"ValuesTooMany", withNodes("<node><translate>1 2 3 4 5</translate><rotate>0 0 1 90 7</rotate></node>")},
        {"ValuesThatAreNone", withNodes("<node><translate>1 x 3</translate><scale>1,5 1e0 +2</scale></node>")},
        {"ValuesBehindAComment", withNodes("<node><translate>1 2<!-- c --> 3 4 5</translate></node>")},
        {"ValuesInCdata", withNodes("<node><translate><![CDATA[7 8 9]]> 1 2 3</translate></node>")},
        {"ValuesBeyondFloat", withNodes("<node><translate>1e39 -1e39 1e-50</translate></node>")},
        {"TransformsBehindOthers",
         withNodes("<node><node><scale>1 2 3</scale></node><translate>1 2 3</translate></node>")},
        {"LongNames", withNodes("<node id=' a  b' sid='s\tt' name='Big&#10;lamp'/>")},
        {"NamesOfOtherScripts", withNodes("<node id='Nœud' name='灯台'><translate>1 0 0</translate></node>")},
        {"RepeatedIds",
         withAnimations(animation("a", "n/t"), "<node id='n'><scale sid='s'>1 1 1</scale></node>" + moving)},
        {"DeepTree", withNodes(chain(40))},
        {"AnimationByMember", withAnimations(animation("a", "n/t.X"), moving)},
        {"AnimationOfOtherCase", withAnimations(animation("a", "N/t") + animation("b", "n/T"), moving)},
        {"AnimationWithoutTarget", withAnimations(animation("a", ""), nameless)},
        {"AnimationWithoutSlash", withAnimations(animation("a", "n"), nameless)},
        {"AnimationOfTheFirstWithoutSid",
         withAnimations(animation("a", "n/"), "<node id='n'><scale sid='s'>1 1 1</scale>"
                                              "<translate>1 2 3</translate></node>")},
        {"AnimationWithoutChannel", withAnimations("<animation/>", nameless)},
        {"AnimationOfNothingFindsNoNode", withAnimations("<animation/>", moving)},
        {"AnimationWithDanglingSampler",
         withAnimations("<animation><channel source='#no' target='n/t'/></animation>", moving)},
        {"AnimationFromANode", withAnimations("<animation><channel source='#n' target='n/t'/></animation>", moving)},
        {"AnimationOfUnknownSemantic", withAnimations(animation("a", "n/t", "count='2'", "COLOR"), moving)},
        {"AnimationOfLowerCaseSemantic", withAnimations(animation("a", "n/t", "count='2'", "output"), moving)},
        {"AnimationOfNamesAsTimes", withAnimations(animation("a", "n/t", "count='2'", "INPUT", "Name_array"), moving)},
        {"AnimationOfNames", withAnimations(animation("a", "n/t", "count='2'", "INTERPOLATION", "Name_array"), moving)},
        {"AnimationOfNamesInPairs",
         withAnimations(animation("a", "n/t", "count='1' stride='2'", "INTERPOLATION", "Name_array"), moving)},
        {"AnimationBeyondItsArray", withAnimations(animation("a", "n/t", "count='3'"), moving)},
        {"AnimationOfManyRecords", withAnimations(animation("a", "n/t", "count='4000000000'"), moving)},
        {"AnimationOfNoRecords", withAnimations(animation("a", "n/t", "count='0' stride='0'"), moving)},
        {"AnimationWithoutStride", withAnimations(animation("a", "n/t", "count='2'", "OUT_TANGENT"), moving)},
        {"AnimationOfLightIsLost", withAnimations(animation("a", "lamp/color"), moving)},
        {"NestedAnimation", withAnimations("<animation>" + animation("a", "n/t") + "</animation>", moving)},
        {"TwoLibraries", ColladaBuilder("<library_animations>" + animation("a", "n/t") +
                                        "</library_animations>"
                                        "<library_animations>" +
                                        animation("b", "m/t") + "</library_animations>")
                             .addScene(moving + "<node id='m'><scale sid='t'>1 1 1</scale></node>")
                             .text()},
        {"TimesWithoutElement", withAnimations(animation("a", "n/t", "count='2' stride='0'"), moving), false},
        {"NoNameSpace", replaced(plain, "xmlns='http://www.collada.org/2005/11/COLLADASchema'", "")},
        {"NameSpaceOfOnePointFive", replaced(plain, "2005/11", "2008/03"), false},
        {"NameSpaceWithSlash", replaced(plain, "COLLADASchema'", "COLLADASchema/'"), false},
        {"OtherVersion", replaced(plain, "version='1.4.1'", "version='9.9'")},
        {"TruncatedInTheTree", plain.substr(0, plain.find("</translate>")), false},
        {"NoNodes", withNodes(""), false},
        {"OnlyAnInstanceOfANode", withNodes("<node id='n'><instance_node url='#n'/></node>")},
        {"SceneIsANode", replaced(plain, "url='#scene'", "url='#n'"), false},
        {"SceneIsNowhere", replaced(plain, "url='#scene'", "url='#no'"), false},
        {"SceneIsNoReference", replaced(plain, "url='#scene'", "url='#sc[e]ne'"), false},
        {"SceneWithABlank", replaced(plain, "url='#scene'", "url='#scene '"), false},
        {"SceneByFileName", replaced(plain, "url='#scene'", "url='document.dae#scene'")},
        {"NoScene", replaced(plain, "<scene><instance_visual_scene url='#scene'/></scene>", ""), false},
        {"EmptyScene", replaced(plain, "<instance_visual_scene url='#scene'/>", ""), false},
    };
}

} // namespace
