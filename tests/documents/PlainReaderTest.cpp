#include "PlainReader.h"

#include "support/ColladaBuilder.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// Compares the reference reader with numbers worked out by hand.

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
    EXPECT_EQ(1u, document.nodes.size());
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
    // A third of a turn about the diagonal maps X to Y, Y to Z and Z to X.
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
    EXPECT_EQ((std::vector<std::size_t>{2, 3}), document.nodes[0].children);
}

TEST(PlainReaderTest, NamesAreCutAtTheirFirstBlank)
{
    const PlainDocument document = readNodes("<node id=' a b ' sid='s t' name='Big lamp'/>");
    EXPECT_EQ("a", document.nodes.at(0).id);
    EXPECT_EQ("s", document.nodes.at(0).sid);
    EXPECT_EQ("Big", document.nodes.at(0).name);
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
    ASSERT_EQ(1u, document.animations.size());
    EXPECT_TRUE(document.animations[0].isComplete);
    EXPECT_EQ("n", document.animations[0].targetNode);
    EXPECT_EQ("r", document.animations[0].targetTransform);
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

// --- geometries

using documents::PlainGeometry;
using documents::PlainMaterial;
using documents::PlainPrimitive;

using Floats = std::vector<float>;
using Indices = std::vector<std::uint32_t>;
using Line = std::pair<std::string, std::string>;

const char* const places =
    "<source id='places'><float_array id='places-array' count='9'>1 2 3 4 5 6 7 8 9</float_array>"
    "<technique_common><accessor source='#places-array' count='3' stride='3'>"
    "<param name='X' type='float'/><param name='Y' type='float'/><param name='Z' type='float'/>"
    "</accessor></technique_common></source>";

// A source "others" of 8 numbers with this accessor and these params.
std::string others(const std::string& accessor, const std::string& params)
{
    return "<source id='others'><float_array id='others-array' count='8'>0.5 1.5 2.5 3.5 4.5 5.5 6.5 7.5</float_array>"
           "<technique_common><accessor source='#others-array' " +
           accessor + ">" + params + "</accessor></technique_common></source>";
}

const char* const twoParams = "<param name='S' type='float'/><param name='T' type='float'/>";
const char* const vertexInput = "<input semantic='VERTEX' source='#v' offset='0'/>";

PlainDocument readMesh(const std::string& sources, const std::string& primitives,
                       const std::string& vertices = "<input semantic='POSITION' source='#places'/>",
                       const std::string& nodes = "<node><instance_geometry url='#g'/></node>")
{
    return readNodes(nodes, "<library_geometries><geometry id='g' name='Big box'><mesh>" + std::string(places) +
                                sources + "<vertices id='v'>" + vertices + "</vertices>" + primitives +
                                "</mesh></geometry></library_geometries>");
}

std::string triangles(const std::string& inputs, const std::string& p)
{
    return "<triangles name='t u' material='stone' count='1'>" + inputs + "<p>" + p + "</p></triangles>";
}

PlainPrimitive primitiveOf(const PlainDocument& document)
{
    EXPECT_EQ(document.outcome, PlainDocument::Outcome::loads) << document.reason;
    const PlainGeometry& geometry = document.geometries.at("g");
    EXPECT_EQ(1u, geometry.primitives.size());
    return geometry.primitives.at(0);
}

Floats floatsOf(const PlainPrimitive& primitive)
{
    Floats floats;
    for (const std::optional<float>& number : primitive.vertices) {
        floats.push_back(number.value());
    }
    return floats;
}

void expectThrow(const PlainDocument& document, const std::string& name, const std::string& expression)
{
    EXPECT_EQ(document.outcome, PlainDocument::Outcome::throws);
    EXPECT_EQ(document.reason, name);
    EXPECT_EQ(document.expression, expression);
    EXPECT_EQ(1u, document.nodes.size());
    EXPECT_TRUE(document.geometries.empty());
}

TEST(PlainReaderTest, CornersTakeAnIndexPerOffsetAndVerticesStandInTheOrderOfUse)
{
    const PlainPrimitive primitive = primitiveOf(
        readMesh(others("count='4' stride='2'", twoParams),
                 triangles(std::string(vertexInput) + "<input semantic='TEXCOORD' source='#others' offset='1'/>",
                           "2 0 0 3 2 0")));
    EXPECT_EQ(4u, primitive.type);
    EXPECT_EQ("t", primitive.id);
    EXPECT_EQ("stone", primitive.material);
    EXPECT_EQ(1u, primitive.count);
    EXPECT_EQ(3u, primitive.vertexPerPrimitive);
    EXPECT_EQ(20u, primitive.bytesPerVertex);
    EXPECT_EQ((Indices{0, 1, 0}), primitive.indices);
    EXPECT_EQ((Floats{7, 8, 9, 0.5f, 1.5f, 1, 2, 3, 6.5f, 7.5f}), floatsOf(primitive));
    ASSERT_EQ(2u, primitive.layout.size());
    EXPECT_EQ(5u, primitive.layout[0].semantic);
    EXPECT_EQ(12u, primitive.layout[0].byteSize);
    EXPECT_EQ(0u, primitive.layout[0].byteOffset);
    EXPECT_EQ(3u, primitive.layout[0].dataType);
    EXPECT_EQ(9u, primitive.layout[1].semantic);
    EXPECT_EQ(8u, primitive.layout[1].byteSize);
    EXPECT_EQ(12u, primitive.layout[1].byteOffset);
    EXPECT_EQ(2u, primitive.layout[1].dataType);
}

TEST(PlainReaderTest, InputThatIsSkippedLeavesItsOffsetToTheNext)
{
    // The normals read the indices of the unknown input.
    const PlainPrimitive primitive = primitiveOf(
        readMesh("", triangles(std::string(vertexInput) + "<input semantic='UNHEARD' source='#places' offset='1'/>"
                                                          "<input semantic='NORMAL' source='#places' offset='2'/>",
                               "0 1 2 1 2 0 2 0 1")));
    EXPECT_EQ((Floats{1, 2, 3, 4, 5, 6, 4, 5, 6, 7, 8, 9, 7, 8, 9, 1, 2, 3}), floatsOf(primitive));
}

TEST(PlainReaderTest, CornersThatDifferInAnIndexOfASkippedInputStayTwo)
{
    const PlainPrimitive primitive = primitiveOf(
        readMesh("", triangles(std::string(vertexInput) + "<input semantic='UNHEARD' source='#places' offset='1'/>",
                               "0 1 0 2 0 1")));
    EXPECT_EQ((Indices{0, 1, 0}), primitive.indices);
    EXPECT_EQ((Floats{1, 2, 3, 1, 2, 3}), floatsOf(primitive));
}

TEST(PlainReaderTest, OffsetOfAnAccessorCountsRecords)
{
    const PlainPrimitive primitive = primitiveOf(readMesh(others("count='2' stride='2' offset='2'", twoParams), "",
                                                          "<input semantic='TEXCOORD' source='#others'/>"));
    EXPECT_EQ((Floats{4.5f, 5.5f, 6.5f, 7.5f}), floatsOf(primitive));
}

TEST(PlainReaderTest, ParamWithoutNameKeepsItsPlaceAndParamsMakeTheStride)
{
    const PlainPrimitive primitive = primitiveOf(readMesh(
        others("count='2'", "<param name='A' type='float'/><param type='float'/><param name='C' type='float'/>"), "",
        "<input semantic='COLOR' source='#others'/>"));
    EXPECT_EQ(8u, primitive.bytesPerVertex);
    EXPECT_EQ(3u, primitive.layout.at(0).dataType);
    EXPECT_EQ((Floats{0.5f, 2.5f, 3.5f, 5.5f}), floatsOf(primitive));
}

TEST(PlainReaderTest, StrideAboveOneWinsOverTheParams)
{
    const PlainPrimitive primitive = primitiveOf(
        readMesh(others("count='2' stride='4'", twoParams), "", "<input semantic='TEXCOORD' source='#others'/>"));
    EXPECT_EQ(4u, primitive.layout.at(0).dataType);
    EXPECT_EQ((Floats{0.5f, 1.5f, 4.5f, 5.5f}), floatsOf(primitive));
}

TEST(PlainReaderTest, MatrixHasItsFloatsSixtyFourBytesApart)
{
    const PlainPrimitive primitive = primitiveOf(readMesh(others("count='1'", "<param name='M' type='float4x4'/>"), "",
                                                          "<input semantic='COLOR' source='#others'/>"));
    EXPECT_EQ(1024u, primitive.bytesPerVertex);
    ASSERT_EQ(256u, primitive.vertices.size());
    EXPECT_EQ(primitive.vertices[0], std::optional<float>(0.5f));
    EXPECT_EQ(primitive.vertices[1], std::nullopt);
    EXPECT_EQ(primitive.vertices[16], std::optional<float>(1.5f));
    EXPECT_EQ(primitive.vertices[15 * 16], std::optional<float>(0.0f)); // after the end of the array
}

TEST(PlainReaderTest, MeshWithoutTrianglesIsACloudOfPoints)
{
    const PlainPrimitive primitive = primitiveOf(readMesh("", "<polylist count='1'/>"));
    EXPECT_EQ(7u, primitive.type);
    EXPECT_EQ("v", primitive.id);
    EXPECT_EQ("", primitive.material);
    EXPECT_EQ(3u, primitive.count);
    EXPECT_EQ(1u, primitive.vertexPerPrimitive);
    EXPECT_EQ(primitive.indices, Indices());
    EXPECT_EQ((Floats{1, 2, 3, 4, 5, 6, 7, 8, 9}), floatsOf(primitive));
}

TEST(PlainReaderTest, LinesKeepTheCloudAway)
{
    EXPECT_TRUE(readMesh("", "<lines count='1'/>").geometries.at("g").primitives.empty());
}

TEST(PlainReaderTest, SeveralInputsOfVerticesRunOutOfOffsets)
{
    const std::string two = "<input semantic='POSITION' source='#places'/><input semantic='NORMAL' source='#places'/>";
    expectThrow(readMesh("", triangles(vertexInput, "0 1 2"), two), "IndexOutOfBounds", "");
    // Points need none.
    EXPECT_EQ(18u, floatsOf(primitiveOf(readMesh("", "", two))).size());
}

TEST(PlainReaderTest, IndexBeyondTheRecordsThrows)
{
    expectThrow(readMesh("", triangles(vertexInput, "0 1 3")), "AssertionFailure", "index < m_count");
    expectThrow(readMesh("", triangles(vertexInput, "0 -1 2")), "AssertionFailure", "index < m_count");
}

TEST(PlainReaderTest, ParamOfAnUnknownTypeThrows)
{
    expectThrow(readMesh(others("count='2' stride='2'", "<param name='A' type='float'/><param type='int'/>"), "",
                         "<input semantic='COLOR' source='#others'/>"),
                "AssertionFailure", "false");
}

TEST(PlainReaderTest, FirstInstanceHasTheGeometryAndTheSecondALine)
{
    const PlainDocument document = readMesh("", "", "",
                                            "<node id='a'><node id='b'><instance_geometry url='#g'/></node></node>"
                                            "<node id='c'><instance_geometry url='#g'/></node>");
    ASSERT_EQ(1u, document.geometries.size());
    EXPECT_EQ("Big", document.geometries.at("g").name);
    EXPECT_EQ(1u, document.geometries.at("g").node); // "c" comes before "b"
    EXPECT_EQ(document.lines.back(), Line("libVideo.visualScene", "Unable to initialize geometry instance"));
}

// --- materials

// The materials of the symbols that the instances in two nodes bind.
PlainDocument readMaterials(const std::string& first, const std::string& second)
{
    const auto effect = [](const std::string& id, const std::string& profile) {
        return "<effect id='" + id + "-effect'><profile_COMMON>" + profile + "</profile_COMMON></effect>";
    };
    const auto material = [](const std::string& id) {
        return "<material id='" + id + "'><instance_effect url='#" + id + "-effect'/></material>";
    };
    const auto node = [](const std::string& bindings) {
        return "<node><instance_geometry url='#g'><bind_material><technique_common>" + bindings +
               "</technique_common></bind_material></instance_geometry></node>";
    };
    return readNodes(
        node(first) + node(second),
        "<library_images><image id='i'><init_from>../my tex.png</init_from></image></library_images><library_effects>" +
            effect("red", "<technique sid='c'><blinn><diffuse><color>1 0.25 0 0.5</color></diffuse>"
                          "<shininess><float>12</float></shininess></blinn></technique>") +
            effect("matt", "<technique sid='c'><lambert/></technique>") +
            effect("wood",
                   "<newparam sid='f'><surface><init_from>i</init_from></surface></newparam>"
                   "<newparam sid='s'><sampler2D><source>f</source></sampler2D></newparam><technique sid='c'>"
                   "<phong><ambient><texture texture='none'/></ambient><diffuse><texture texture='s'/></diffuse>"
                   "<transparency><float>0.5</float></transparency></phong></technique>") +
            "</library_effects><library_materials>" + material("red") + material("matt") + material("wood") +
            "</library_materials><library_geometries><geometry id='g'><mesh><vertices/></mesh></geometry>"
            "</library_geometries>");
}

std::string binding(const std::string& symbol, const std::string& target)
{
    return "<instance_material symbol='" + symbol + "' target='#" + target + "'/>";
}

TEST(PlainReaderTest, MaterialHasColorsAndCoefficientsAndIsWhiteElsewhere)
{
    const PlainMaterial material = readMaterials(binding("m", "red"), "").materials.at("m");
    EXPECT_EQ(material.diffuse.value, (std::array<float, 3>{1.0f, 0.25f, 0.0f}));
    EXPECT_EQ(material.ambient.value, (std::array<float, 3>{1.0f, 1.0f, 1.0f}));
    EXPECT_EQ(material.diffuse.texture, std::nullopt);
    EXPECT_EQ(12.0f, material.shininess);
    EXPECT_EQ(0.0f, material.transparency);
}

TEST(PlainReaderTest, TextureHasTheFileAsWrittenOrNoneWhereTheChainBreaks)
{
    const PlainDocument document = readMaterials(binding("m", "wood"), "");
    const PlainMaterial& material = document.materials.at("m");
    EXPECT_EQ(material.diffuse.texture, std::optional<std::string>("../my%20tex.png"));
    EXPECT_EQ(material.ambient.texture, std::optional<std::string>(""));
    EXPECT_EQ(material.specular.texture, std::nullopt);
    EXPECT_EQ(0.5f, material.transparency);
    EXPECT_EQ(document.lines.front(), Line("libVideo.material", "Unable to initialize texture"));
}

TEST(PlainReaderTest, FirstMaterialOfASymbolStaysAndALambertIsNone)
{
    const PlainDocument document =
        readMaterials(binding("a", "matt") + binding("b", "red"), binding("a", "red") + binding("b", "wood"));
    ASSERT_EQ(2u, document.materials.size());
    EXPECT_EQ(12.0f, document.materials.at("a").shininess);
    EXPECT_EQ(12.0f, document.materials.at("b").shininess);
}

TEST(PlainReaderTest, NewerSchemaIsRefused)
{
    const TemporaryFile file("<COLLADA xmlns='http://www.collada.org/2008/03/COLLADASchema' version='1.5.0'/>");
    EXPECT_EQ(documents::readPlainly(file.path()).outcome, PlainDocument::Outcome::isRefused);
}

} // namespace
