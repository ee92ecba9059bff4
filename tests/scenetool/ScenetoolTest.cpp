#include "Scenetool.h"

#include "support/ColladaBuilder.h"
#include "support/Rows.h"
#include "support/Words.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <map>
#include <ostream>
#include <regex>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace testSupport;

using Json = nlohmann::json;
// Numbers of JSON as `float`, converted from the digits directly, not through `double`.
using FloatJson = nlohmann::basic_json<std::map, std::vector, std::string, bool, std::int64_t, std::uint64_t, float>;

// A Blinn "plain" and a Phong "wood" with textures, one of which leads nowhere, bound to symbols with the same names.
std::string materialDocument(const std::string& colors = std::string());

TEST(ScenetoolMaterialTest, NumbersReadBackToTheSameFloat)
{
    const TemporaryFile file(materialDocument());
    const FloatJson json = FloatJson::parse(scenetool({"dump", file.path()}).output);
    const FloatJson& color = json.at("materials").at("wood").at("emission");
    EXPECT_EQ(0.1f, color.at(0).get<float>());
    EXPECT_EQ(0.2f, color.at(1).get<float>());
    EXPECT_EQ(0.3f, color.at(2).get<float>());
}

bool hasPattern(const std::string& text, const std::string& pattern)
{
    return std::regex_search(text, std::regex(pattern));
}

// The control characters of ASCII, and those that UTF-8 encodes as C2 80 to C2 9F; line feeds are allowed.
bool hasControlCharacter(const std::string& text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : '\0');
        if ((byte < 0x20u && byte != '\n') || byte == 0x7Fu || (byte == 0xC2u && next >= 0x80u && next <= 0x9Fu)) {
            return true;
        }
    }
    return false;
}

// One `<animation>` with times, values and, unless it is empty, kinds of interpolation.
struct Curve {
    std::string id = "curve";
    std::string target;
    std::string times;
    std::string values;
    unsigned count = 0;
    unsigned valueStride = 3;
    unsigned timeStride = 1;

    std::string xml() const
    {
        const std::string number = std::to_string(count);
        return "<animation id='" + id + "'>" + source("times", times, count * timeStride, timeStride) +
               source("values", values, count * valueStride, valueStride) + "<sampler id='" + id +
               "-sampler'><input semantic='INPUT' source='#" + id + "-times'/><input semantic='OUTPUT' source='#" + id +
               "-values'/></sampler><channel source='#" + id + "-sampler' target='" + target + "'/></animation>";
    }

private:
    std::string source(const std::string& name, const std::string& numbers, unsigned size, unsigned stride) const
    {
        // An array with stride 0 still has values.
        const std::string length = std::to_string(size == 0 ? 1 : size);
        return "<source id='" + id + "-" + name + "'><float_array id='" + id + "-" + name + "-array' count='" + length +
               "'>" + numbers + "</float_array><technique_common><accessor source='#" + id + "-" + name +
               "-array' count='" + std::to_string(count) + "' stride='" + std::to_string(stride) +
               "'/></technique_common></source>";
    }
};

std::string documentOf(const std::string& nodes, const std::vector<Curve>& curves = {})
{
    ColladaBuilder builder;
    if (!curves.empty()) {
        std::string library = "<library_animations>";
        for (const Curve& curve : curves) {
            library += curve.xml();
        }
        builder.add(library + "</library_animations>");
    }
    return builder.addScene(nodes).text();
}

// LINEAR from (0, 10, 0) at second 1 to (0, 30, 0) at second 3.
Curve rising(const std::string& target, const std::string& id = "curve")
{
    Curve curve;
    curve.id = id;
    curve.target = target;
    curve.times = "1 3";
    curve.values = "0 10 0 0 30 0";
    curve.count = 2;
    return curve;
}

// A curve with one value per key, where a translation needs three: between the keys it throws.
Curve tooNarrow(const std::string& target, const std::string& id = "narrow")
{
    Curve curve = rising(target, id);
    curve.values = "10 30";
    curve.valueStride = 1;
    return curve;
}

// A curve whose times have no element: loading it throws.
Curve withoutTimes(const std::string& target)
{
    Curve curve = rising(target);
    curve.times = "1";
    curve.timeStride = 0;
    return curve;
}

// The rows of a translation.
Json translation(double x, double y, double z)
{
    return Json::array({1.0, 0.0, 0.0, x, 0.0, 1.0, 0.0, y, 0.0, 0.0, 1.0, z, 0.0, 0.0, 0.0, 1.0});
}

const char* const parentAndChild = "<node id='parent'><translate>1 0 0</translate>"
                                   "<node id='child'><translate sid='t'>0 1 0</translate></node></node>";

// Runs `dump` and parses what it prints.
struct Dump {
    explicit Dump(const std::string& path, const Words& options = {})
    {
        Words arguments = {"dump", path};
        arguments.insert(arguments.end(), options.begin(), options.end());
        result = scenetool(arguments);
        json = Json::parse(result.output, nullptr, false);
    }

    ProcessResult result;
    Json json; ///< discarded if the text is no JSON
};

Json dumpDocument(const std::string& document, const Words& options = {})
{
    const TemporaryFile file(document);
    const Dump dump(file.path(), options);
    EXPECT_EQ(succeeded, dump.result.status);
    EXPECT_EQ("", dump.result.errors);
    return dump.json;
}

std::string infoOf(const std::string& document, const Words& options = {})
{
    const TemporaryFile file(document);
    Words arguments = {"info", file.path()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const ProcessResult result = scenetool(arguments);
    EXPECT_EQ(succeeded, result.status);
    EXPECT_EQ("", result.errors);
    return result.output;
}

// --- dump: the shape of the object

Words keysOf(const Json& object)
{
    Words keys;
    for (const auto& item : object.items()) {
        keys.push_back(item.key());
    }
    return keys; // sorted
}

TEST(ScenetoolDumpTest, PrintsOneObjectOnOneLine)
{
    const TemporaryFile file(documentOf(parentAndChild));
    const Dump dump(file.path());
    EXPECT_TRUE(dump.json.is_object());
    EXPECT_TRUE(isOneLine(dump.result.output));
}

TEST(ScenetoolDumpTest, ObjectHasFileLoadedErrorLogAndNodes)
{
    const TemporaryFile file(documentOf(parentAndChild));
    const Json json = Dump(file.path()).json;
    EXPECT_EQ(json.at("file"), file.path());
    EXPECT_EQ(true, json.at("loaded"));
    EXPECT_TRUE(json.at("error").is_null());
    EXPECT_EQ(json.at("log"), Json::array());
    EXPECT_TRUE(json.at("nodes").is_array());
}

TEST(ScenetoolDumpTest, ObjectHasNoKeyBeyondTheFormat)
{
    const Words known = {"cameras",   "error", "file",        "geometries", "loaded",    "log",
                         "materials", "nodes", "pointLights", "refusal",    "spotLights"};
    for (const std::string& key : keysOf(dumpDocument(documentOf(parentAndChild)))) {
        EXPECT_TRUE(std::find(known.begin(), known.end(), key) != known.end()) << key;
    }
}

TEST(ScenetoolDumpTest, NodeHasExactlyNineKeys)
{
    const Json json = dumpDocument(documentOf(parentAndChild));
    ASSERT_EQ(2u, json.at("nodes").size());
    const Words keys = {"children", "hasAnimation", "id", "name", "parent", "position", "sid", "transform", "up"};
    EXPECT_EQ(keysOf(json["nodes"][0]), keys);
    EXPECT_EQ(keysOf(json["nodes"][1]), keys);
}

TEST(ScenetoolDumpTest, ValuesOfANodeHaveTheirTypes)
{
    const Json json = dumpDocument(documentOf(parentAndChild));
    ASSERT_EQ(2u, json.at("nodes").size());
    for (const Json& node : json["nodes"]) {
        EXPECT_TRUE(node.at("id").is_string());
        EXPECT_TRUE(node.at("sid").is_string());
        EXPECT_TRUE(node.at("name").is_string());
        EXPECT_TRUE(node.at("children").is_array());
        EXPECT_TRUE(node.at("hasAnimation").is_boolean());
        for (const auto& [key, size] :
             std::map<std::string, std::size_t>{{"transform", 16}, {"position", 3}, {"up", 3}}) {
            ASSERT_TRUE(node.at(key).is_array());
            EXPECT_EQ(node[key].size(), size) << key;
            for (const Json& number : node[key]) {
                EXPECT_TRUE(number.is_number()) << key;
            }
        }
    }
    EXPECT_TRUE(json["nodes"][0]["parent"].is_null());
    EXPECT_TRUE(json["nodes"][1]["parent"].is_number_unsigned());
}

TEST(ScenetoolDumpTest, TextsOfANodeAreItsAttributes)
{
    const Json nodes = dumpDocument(documentOf("<node id='lamp-1' sid='lamp' name='Lämp'/><node/>")).at("nodes");
    ASSERT_EQ(2u, nodes.size());
    EXPECT_EQ("lamp-1", nodes[0]["id"]);
    EXPECT_EQ("lamp", nodes[0]["sid"]);
    EXPECT_EQ("Lämp", nodes[0]["name"]);
    EXPECT_EQ("", nodes[1]["id"]);
    EXPECT_EQ("", nodes[1]["sid"]);
    EXPECT_EQ("", nodes[1]["name"]);
}

TEST(ScenetoolDumpTest, NodesStandBreadthFirstAndReferToEachOtherByIndex)
{
    const Json nodes = dumpDocument(documentOf("<node id='A'><node id='A1'><node id='C'/></node><node id='A2'/></node>"
                                               "<node id='B'><node id='B1'/></node>"))
                           .at("nodes");
    ASSERT_EQ(6u, nodes.size());
    const Words order = {"A", "B", "A1", "A2", "B1", "C"};
    const std::vector<Json> parents = {nullptr, nullptr, 0, 0, 1, 2};
    const std::vector<Json> children = {{2, 3},        Json::array({4}), Json::array({5}),
                                        Json::array(), Json::array(),    Json::array()};
    for (std::size_t i = 0; i < order.size(); ++i) {
        EXPECT_EQ(nodes[i]["id"], order[i]);
        EXPECT_EQ(nodes[i]["parent"], parents[i]) << order[i];
        EXPECT_EQ(nodes[i]["children"], children[i]) << order[i];
    }
}

TEST(ScenetoolDumpTest, NodesOfOneIdAreToldApartByTheirIndices)
{
    const Json nodes = dumpDocument(documentOf("<node id='x'><node id='x'/></node><node id='x'/>")).at("nodes");
    ASSERT_EQ(3u, nodes.size());
    EXPECT_EQ(nodes[0]["children"], Json::array({2}));
    EXPECT_EQ(0, nodes[2]["parent"]);
}

TEST(ScenetoolDumpTest, HasAnimationShowsWhichNodesHaveOne)
{
    const Json nodes = dumpDocument(documentOf(parentAndChild, {rising("child/t")})).at("nodes");
    ASSERT_EQ(2u, nodes.size());
    EXPECT_EQ(false, nodes[0]["hasAnimation"]);
    EXPECT_EQ(true, nodes[1]["hasAnimation"]);
}

TEST(ScenetoolDumpTest, MatrixIsRowMajorAndPositionAndUpAreItsColumns)
{
    const Json nodes =
        dumpDocument(documentOf("<node><matrix>1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16</matrix></node>")).at("nodes");
    ASSERT_EQ(1u, nodes.size());
    EXPECT_EQ(nodes[0]["transform"], Json::array({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}));
    EXPECT_EQ(nodes[0]["position"], Json::array({4, 8, 12}));
    EXPECT_EQ(nodes[0]["up"], Json::array({2, 6, 10}));
}

// --- dump: geometries and materials

std::string sourceOf(const std::string& id, const std::string& numbers, unsigned count, const std::string& params)
{
    std::string paramXml;
    for (const char name : params) {
        paramXml += "<param name='" + std::string(1, name) + "' type='float'/>";
    }
    return "<source id='" + id + "'><float_array id='" + id + "-array' count='" +
           std::to_string(count * params.size()) + "'>" + numbers +
           "</float_array><technique_common><accessor source='#" + id + "-array' count='" + std::to_string(count) +
           "' stride='" + std::to_string(params.size()) + "'>" + paramXml + "</accessor></technique_common></source>";
}

// Positions of a square between (1, 2, 3) and (2, 4, 3), one normal, and two texture coordinates.
std::string squareMesh(const std::string& primitives)
{
    return "<mesh>" + sourceOf("places", "1 2 3 2 2 3 2 4 3 1 4 3", 4, "XYZ") + sourceOf("ways", "0 0 1", 1, "XYZ") +
           sourceOf("pairs", "0.5 0.25 1 0", 2, "ST") +
           "<vertices id='corners'><input semantic='POSITION' source='#places'/></vertices>" + primitives + "</mesh>";
}

const char* const squareTriangles = "<triangles name='square' material='stone' count='2'>"
                                    "<input semantic='VERTEX' source='#corners' offset='0'/>"
                                    "<input semantic='NORMAL' source='#ways' offset='1'/>"
                                    "<input semantic='TEXCOORD' source='#pairs' offset='2'/>"
                                    "<p>0 0 0 1 0 0 2 0 1  2 0 1 3 0 1 0 0 0</p></triangles>";

// A mesh whose points have these numbers, one letter of `params` for each.
std::string pointMesh(const std::string& numbers, const std::string& params)
{
    return "<mesh>" + sourceOf("places", numbers, numbers.empty() ? 0 : 1, params) +
           "<vertices id='points'><input semantic='POSITION' source='#places'/></vertices></mesh>";
}

std::string geometryXml(const std::string& id, const std::string& content,
                        const std::string& attributes = std::string())
{
    return "<geometry id='" + id + "' " + attributes + ">" + content + "</geometry>";
}

std::string showing(const std::string& geometry, const std::string& bindings = std::string())
{
    return "<instance_geometry url='#" + geometry + "'><bind_material><technique_common>" + bindings +
           "</technique_common></bind_material></instance_geometry>";
}

std::string withGeometries(const std::string& geometries, const std::string& nodes)
{
    return ColladaBuilder("<library_geometries>" + geometries + "</library_geometries>").addScene(nodes).text();
}

std::string squareDocument()
{
    return withGeometries(geometryXml("g", squareMesh(squareTriangles), "name='Square'"),
                          "<node id='above'><node id='shown'>" + showing("g") + "</node></node><node id='beside'/>");
}

std::string pointDocument(const std::string& numbers, const std::string& params)
{
    return withGeometries(geometryXml("g", pointMesh(numbers, params)), "<node id='n'>" + showing("g") + "</node>");
}

std::string materialDocument(const std::string& colors)
{
    const auto material = [](const std::string& id) {
        return "<material id='" + id + "'><instance_effect url='#" + id + "-effect'/></material>";
    };
    return ColladaBuilder(
               "<library_images><image id='i'><init_from>./wood grain.png</init_from></image></library_images>"
               "<library_effects><effect id='plain-effect'><profile_COMMON><technique sid='c'><blinn>" +
               colors +
               "<shininess><float>12.5</float></shininess></blinn></technique></profile_COMMON></effect>"
               "<effect id='wood-effect'><profile_COMMON>"
               "<newparam sid='f'><surface><init_from>i</init_from></surface></newparam>"
               "<newparam sid='s'><sampler2D><source>f</source></sampler2D></newparam><technique sid='c'>"
               "<phong><emission><color>0.1 0.2 0.3 1</color></emission><diffuse><texture texture='s'/>"
               "</diffuse><specular><texture texture='nowhere'/></specular><transparency><float>0.5</float>"
               "</transparency></phong></technique></profile_COMMON></effect></library_effects>"
               "<library_materials>" +
               material("plain") + material("wood") + "</library_materials><library_geometries>" +
               geometryXml("g", "<mesh><vertices/></mesh>") + "</library_geometries>")
        .addScene("<node id='n'>" +
                  showing("g", "<instance_material symbol='plain' target='#plain'/>"
                               "<instance_material symbol='wood' target='#wood'/>") +
                  "</node>")
        .text();
}

TEST(ScenetoolGeometryTest, ObjectsAreEmptyWithoutGeometriesAndMaterials)
{
    const Json json = dumpDocument(documentOf(parentAndChild));
    EXPECT_EQ(json.at("geometries"), Json::object());
    EXPECT_EQ(json.at("materials"), Json::object());
}

TEST(ScenetoolGeometryTest, EveryObjectHasExactlyTheKeysOfTheFormat)
{
    const Json geometries = dumpDocument(squareDocument()).at("geometries");
    EXPECT_EQ(Words{"g"}, keysOf(geometries));
    const Json& geometry = geometries.at("g");
    EXPECT_EQ((Words{"name", "nodes", "primitives"}), keysOf(geometry));
    ASSERT_EQ(1u, geometry["primitives"].size());
    const Json& primitive = geometry["primitives"][0];
    EXPECT_EQ((Words{"bytesPerVertex", "count", "id", "indices", "layout", "material", "totalByteSize", "type",
                     "vertexPerPrimitive", "vertices"}),
              keysOf(primitive));
    ASSERT_EQ(3u, primitive["layout"].size());
    for (const Json& attribute : primitive["layout"]) {
        EXPECT_EQ((Words{"byteOffset", "byteSize", "dataType", "semantic"}), keysOf(attribute));
    }
}

TEST(ScenetoolGeometryTest, TrianglesHaveTheirNumbers)
{
    const Json geometry = dumpDocument(squareDocument()).at("geometries").at("g");
    EXPECT_EQ("Square", geometry.at("name"));
    const Json& primitive = geometry.at("primitives").at(0);
    EXPECT_EQ(4, primitive.at("type"));
    EXPECT_EQ("square", primitive.at("id"));
    EXPECT_EQ("stone", primitive.at("material"));
    EXPECT_EQ(2, primitive.at("count"));
    EXPECT_EQ(3, primitive.at("vertexPerPrimitive"));
    EXPECT_EQ(32, primitive.at("bytesPerVertex"));
    EXPECT_EQ(4 * 32, primitive.at("totalByteSize"));
    EXPECT_EQ(primitive.at("indices"), Json::array({0, 1, 2, 2, 3, 0}));
    EXPECT_EQ(primitive.at("layout"),
              Json::array({{{"semantic", 5}, {"byteSize", 12}, {"byteOffset", 0}, {"dataType", 3}},
                           {{"semantic", 4}, {"byteSize", 12}, {"byteOffset", 12}, {"dataType", 3}},
                           {{"semantic", 9}, {"byteSize", 8}, {"byteOffset", 24}, {"dataType", 2}}}));
    for (const Json& value : {primitive["type"], primitive["count"], primitive["indices"][0],
                              primitive["layout"][0]["semantic"], primitive["layout"][0]["dataType"]}) {
        EXPECT_TRUE(value.is_number_unsigned()) << value;
    }
}

TEST(ScenetoolGeometryTest, NodesAreTheirIndices)
{
    // "shown" is below the first of two nodes, so after both.
    EXPECT_EQ(dumpDocument(squareDocument()).at("geometries").at("g").at("nodes"), Json::array({2}));
}

TEST(ScenetoolGeometryTest, GeometryOfTwoNodesIsListedOnTheFirst)
{
    const Json json =
        dumpDocument(withGeometries(geometryXml("g", squareMesh(squareTriangles)),
                                    "<node/><node>" + showing("g") + "</node><node>" + showing("g") + "</node>"));
    EXPECT_EQ(json.at("geometries").at("g").at("nodes"), Json::array({1}));
    ASSERT_EQ(1u, json.at("log").size());
    EXPECT_TRUE(contains(json["log"][0].at("text"), "Unable to initialize geometry instance"));
}

TEST(ScenetoolGeometryTest, PointsHaveNeitherIndicesNorMaterial)
{
    const Json primitive = dumpDocument(pointDocument("1 2 3", "XYZ")).at("geometries").at("g").at("primitives").at(0);
    EXPECT_EQ(7, primitive.at("type"));
    EXPECT_EQ("points", primitive.at("id"));
    EXPECT_EQ("", primitive.at("material"));
    EXPECT_EQ(1, primitive.at("count"));
    EXPECT_EQ(1, primitive.at("vertexPerPrimitive"));
    EXPECT_EQ(primitive.at("indices"), Json::array());
}

TEST(ScenetoolGeometryTest, TrianglesWithoutInputsAreShownAsNotLoaded)
{
    const std::string document = withGeometries(geometryXml("g", squareMesh("<triangles material='m' count='1'/>")),
                                                "<node>" + showing("g") + "</node>");
    const Json primitive = dumpDocument(document).at("geometries").at("g").at("primitives").at(0);
    EXPECT_EQ(8, primitive.at("type"));
    EXPECT_EQ("m", primitive.at("material"));
    EXPECT_EQ(0, primitive.at("count"));
    EXPECT_EQ(0, primitive.at("bytesPerVertex"));
    EXPECT_EQ(primitive.at("layout"), Json::array());
    EXPECT_EQ("", primitive.at("vertices"));
    EXPECT_TRUE(contains(infoOf(document), "\n    not loaded\n"));
}

TEST(ScenetoolGeometryTest, GeometriesStandUnderTheirIdWhateverItHolds)
{
    const Json json = dumpDocument(
        withGeometries(geometryXml("a$b", squareMesh("")) + geometryXml("a.b", "<mesh><lines count='1'/></mesh>"),
                       "<node>" + showing("a$b") + showing("a.b") + "</node>"));
    EXPECT_EQ((Words{"a$b", "a.b"}), keysOf(json.at("geometries")));
    EXPECT_EQ(json["geometries"]["a.b"].at("primitives"), Json::array());
    EXPECT_EQ("", json["geometries"]["a.b"].at("name"));
}

struct Base64Case : Row {
    const char* numbers; ///< of one point
    const char* params;
    const char* text; ///< their bytes in hexadecimal, lowest first
};

class ScenetoolBase64Test : public testing::TestWithParam<Base64Case> {};

TEST_P(ScenetoolBase64Test, VerticesAreTheBytesOfTheirFloats)
{
    const Json primitive = dumpDocument(pointDocument(GetParam().numbers, GetParam().params))
                               .at("geometries")
                               .at("g")
                               .at("primitives")
                               .at(0);
    EXPECT_EQ(primitive.at("vertices"), GetParam().text);
    EXPECT_EQ(primitive.at("totalByteSize"), 4 * (*GetParam().numbers == '\0' ? 0u : std::strlen(GetParam().params)));
}

// 1 is 00 00 80 3F, 2 is 00 00 00 40, -2 ends in C0, 3 is 00 00 40 40, 4 is 00 00 80 40 and 0.5 is 00 00 00 3F.
INSTANTIATE_ROWS(Points, ScenetoolBase64Test, {"None", "", "X", ""}, {"FourBytesEndInTwoSigns", "0.5", "X", "AAAAPw=="},
                 {"EightBytesEndInOneSign", "1 -2", "XY", "AACAPwAAAMA="},
                 {"TwelveBytesEndInNone", "1 2 3", "XYZ", "AACAPwAAAEAAAEBA"},
                 {"SixteenBytes", "1 2 3 4", "XYZW", "AACAPwAAAEAAAEBAAACAQA=="},
                 // FF FF 7F 3F and FB EF BE 3F.
                 {"LastDigit", "0.999999940395355224609375", "X", "//9/Pw=="},
                 {"LastDigitButOne", "1.4916986227035522", "X", "++++Pw=="});

TEST(ScenetoolMaterialTest, MaterialHasExactlyTwelveKeys)
{
    const Json materials = dumpDocument(materialDocument()).at("materials");
    EXPECT_EQ((Words{"plain", "wood"}), keysOf(materials));
    for (const char* const symbol : {"plain", "wood"}) {
        EXPECT_EQ(
            (Words{"ambient", "ambientTexture", "diffuse", "diffuseTexture", "emission", "emissionTexture",
                   "reflective", "reflectiveTexture", "shininess", "specular", "specularTexture", "transparency"}),
            keysOf(materials.at(symbol)));
    }
}

TEST(ScenetoolMaterialTest, MaterialHasItsNumbersAndIsWhiteElsewhere)
{
    const Json material =
        dumpDocument(materialDocument("<diffuse><color>0.25 0.5 0.75 1</color></diffuse>")).at("materials").at("plain");
    EXPECT_EQ(12.5, material.at("shininess"));
    EXPECT_EQ(0, material.at("transparency"));
    EXPECT_EQ(material.at("diffuse"), Json::array({0.25, 0.5, 0.75}));
    for (const char* const channel : {"emission", "ambient", "specular", "reflective"}) {
        EXPECT_EQ(material.at(channel), Json::array({1, 1, 1})) << channel;
    }
}

TEST(ScenetoolMaterialTest, ColorThatIsNoNumberInJsonIsText)
{
    const Json material =
        dumpDocument(materialDocument("<diffuse><color>1e39 -1e39 1 1</color></diffuse>")).at("materials").at("plain");
    EXPECT_EQ(material.at("diffuse"), Json::array({"Infinity", "-Infinity", 1}));
}

TEST(ScenetoolMaterialTest, TextureIsItsFileEmptyIfItLeadsNowhereAndNullWithoutOne)
{
    const Json materials = dumpDocument(materialDocument()).at("materials");
    const Json& wood = materials.at("wood");
    EXPECT_EQ("./wood%20grain.png", wood.at("diffuseTexture"));
    EXPECT_EQ("", wood.at("specularTexture"));
    for (const char* const texture : {"emissionTexture", "ambientTexture", "reflectiveTexture"}) {
        EXPECT_TRUE(wood.at(texture).is_null()) << texture;
    }
    EXPECT_TRUE(materials.at("plain").at("diffuseTexture").is_null());
}

TEST(ScenetoolGeometryTest, LoadThatThrowsShowsWhatStandsBeforeIt)
{
    const std::string throwing = squareMesh(
        "<triangles count='1'><input semantic='VERTEX' source='#corners' offset='0'/><p>0 1 4</p></triangles>");
    const std::string geometries =
        geometryXml("good", "<mesh/>") + geometryXml("bad", throwing) + geometryXml("behind", "<mesh/>");
    const TemporaryFile file(withGeometries(geometries, "<node id='a'><translate>1 0 0</translate>" + showing("good") +
                                                            "<node id='b'><translate>0 1 0</translate>" +
                                                            showing("bad") + "</node></node><node id='c'>" +
                                                            showing("behind") + "</node>"));
    const Dump dump(file.path(), {"--time", "1", "--fold"});
    EXPECT_EQ(failed, dump.result.status);
    EXPECT_TRUE(isOneLine(dump.result.errors)) << dump.result.errors;
    ASSERT_TRUE(dump.json.is_object()) << dump.result.output;
    EXPECT_EQ(false, dump.json.at("loaded"));
    EXPECT_EQ("AssertionFailure", dump.json.at("error").at("type"));
    EXPECT_TRUE(contains(dump.json["error"].at("message"), "index < m_count")) << dump.json["error"];
    EXPECT_EQ((Words{"behind", "good"}), keysOf(dump.json.at("geometries"))); // "b" comes after "c"
    ASSERT_EQ(3u, dump.json.at("nodes").size());
    EXPECT_EQ(dump.json["nodes"][2].at("transform"), translation(0, 1, 0)); // not folded
}

// --- dump: numbers

TEST(ScenetoolDumpTest, WhatIsNoNumberInJsonIsText)
{
    // Identity times this: where an infinity meets a zero of the identity, the sum is NaN.
    const Json nodes =
        dumpDocument(documentOf("<node><matrix>1e39 0 0 1  0 -1e39 0 2  0 0 1 3  0 0 0 1</matrix></node>")).at("nodes");
    ASSERT_EQ(1u, nodes.size());
    EXPECT_EQ(nodes[0]["transform"],
              Json::array({"Infinity", "NaN", 0, 1, "NaN", "-Infinity", 0, 2, "NaN", "NaN", 1, 3, "NaN", "NaN", 0, 1}));
    EXPECT_EQ(nodes[0]["position"], Json::array({1, 2, 3}));
    EXPECT_EQ(nodes[0]["up"], Json::array({"NaN", "-Infinity", "NaN"}));
}

class ScenetoolNumberTest : public testing::TestWithParam<Case<const char*, float>> {};

TEST_P(ScenetoolNumberTest, ReadsBackToTheSameFloat)
{
    const TemporaryFile file(
        documentOf("<node><translate>" + std::string(GetParam().given) + " 0 0</translate></node>"));
    const ProcessResult result = scenetool({"dump", file.path()});
    ASSERT_EQ(succeeded, result.status);
    const FloatJson json = FloatJson::parse(result.output);
    const auto number = json.at("nodes").at(0).at("transform").at(3).get<float>();
    EXPECT_EQ(0, std::memcmp(&number, &GetParam().expected, sizeof(number))) << number;
    const auto position = json.at("nodes").at(0).at("position").at(0).get<float>();
    EXPECT_EQ(0, std::memcmp(&position, &GetParam().expected, sizeof(position))) << position;
}

INSTANTIATE_ROWS(Values, ScenetoolNumberTest, {"Zero", "0", 0.0f}, {"Third", "0.33333333333333333", 1.0f / 3},
                 {"Tenth", "0.1", 0.1f}, {"NegativeTenth", "-0.1", -0.1f},
                 {"Pi", "3.14159265358979", 3.14159265358979f},
                 {"BehindOne", "1.00000011920928955078125", 0x1.000002p0f},
                 {"BeforeOne", "0.999999940395355224609375", 0x1.fffffep-1f},
                 {"Largest", "3.40282346638528859812e38", 0x1.fffffep127f},
                 {"SmallestNormal", "1.17549435082228750797e-38", 0x1p-126f},
                 {"Subnormal", "1.40129846432481707092e-45", 0x1p-149f}, {"OddInteger", "16777215", 16777215.0f},
                 {"LargeInteger", "123456789", 123456792.0f});

// --- dump: --time and --fold

TEST(ScenetoolDumpTest, StateIsThatBehindTheLoadWithoutOptions)
{
    const Json nodes = dumpDocument(documentOf(parentAndChild, {rising("child/t")})).at("nodes");
    ASSERT_EQ(2u, nodes.size());
    EXPECT_EQ(nodes[0]["transform"], translation(1, 0, 0));
    EXPECT_EQ(nodes[1]["transform"], translation(0, 1, 0));
}

TEST(ScenetoolDumpTest, FoldGivesWorldMatrices)
{
    const Json nodes = dumpDocument(documentOf(parentAndChild, {rising("child/t")}), {"--fold"}).at("nodes");
    ASSERT_EQ(2u, nodes.size());
    EXPECT_EQ(nodes[0]["transform"], translation(1, 0, 0));
    EXPECT_EQ(nodes[1]["transform"], translation(1, 1, 0));
    EXPECT_EQ(nodes[1]["position"], Json::array({1, 1, 0}));
}

TEST(ScenetoolDumpTest, TimeAsksEveryNode)
{
    const Json nodes = dumpDocument(documentOf(parentAndChild, {rising("child/t")}), {"--time", "2"}).at("nodes");
    ASSERT_EQ(2u, nodes.size());
    EXPECT_EQ(nodes[0]["transform"], translation(1, 0, 0));
    EXPECT_EQ(nodes[1]["transform"], translation(0, 20, 0));
}

TEST(ScenetoolDumpTest, WithBothFoldingComesLast)
{
    const std::string document = documentOf(parentAndChild, {rising("child/t")});
    const Json nodes = dumpDocument(document, {"--time", "2", "--fold"}).at("nodes");
    ASSERT_EQ(2u, nodes.size());
    EXPECT_EQ(nodes[1]["transform"], translation(1, 20, 0)); // evaluated after folding it would be (0, 20, 0)
    EXPECT_EQ(dumpDocument(document, {"--fold", "--time", "2"}).at("nodes"), nodes);
}

TEST(ScenetoolDumpTest, OptionsMayStandBeforeTheFile)
{
    const TemporaryFile file(documentOf(parentAndChild, {rising("child/t")}));
    const ProcessResult result = scenetool({"dump", "--fold", "--time", "2", file.path()});
    EXPECT_EQ(succeeded, result.status);
    EXPECT_EQ(result.output, Dump(file.path(), {"--time", "2", "--fold"}).result.output);
}

TEST(ScenetoolDumpTest, TimeIsANumberOfSecondsWithFraction)
{
    const Json nodes = dumpDocument(documentOf(parentAndChild, {rising("child/t")}), {"--time", "1.25"}).at("nodes");
    ASSERT_EQ(2u, nodes.size());
    EXPECT_EQ(nodes[1]["transform"], translation(0, 12.5, 0));
}

TEST(ScenetoolDumpTest, TimeMayBeNegative)
{
    // Before the first key, where a curve has no value.
    const Json nodes = dumpDocument(documentOf(parentAndChild, {rising("child/t")}), {"--time", "-1.5"}).at("nodes");
    ASSERT_EQ(2u, nodes.size());
    EXPECT_EQ(nodes[1]["transform"], translation(0, 1, 0));
}

TEST(ScenetoolDumpTest, TimeZeroIsATimeToo)
{
    // The effect of a look-at is gone after the first evaluation of an animated node, whatever the time.
    const Json nodes = dumpDocument(documentOf("<node id='n'><translate sid='t'>0 1 0</translate>"
                                               "<lookat>1 2 3 0 0 0 0 1 0</lookat></node>",
                                               {rising("n/t")}),
                                    {"--time", "0"})
                           .at("nodes");
    ASSERT_EQ(1u, nodes.size());
    EXPECT_EQ(nodes[0]["transform"], translation(0, 1, 0));
}

// --- dump: exceptions

// Three animated nodes; the second one cannot be evaluated between its keys.
std::string documentThatThrowsOnEvaluation()
{
    return documentOf("<node id='before'><translate sid='t'>0 1 0</translate></node>"
                      "<node id='faulty'><translate sid='t'>0 2 0</translate></node>"
                      "<node id='behind'><translate sid='t'>0 3 0</translate>"
                      "<node id='below'><translate>0 4 0</translate></node></node>",
                      {rising("before/t", "first"), tooNarrow("faulty/t"), rising("behind/t", "last")});
}

TEST(ScenetoolDumpTest, EvaluationThatThrowsEndsThereWithTheStateAsReached)
{
    const TemporaryFile file(documentThatThrowsOnEvaluation());
    const Dump dump(file.path(), {"--time", "2", "--fold"});
    ASSERT_TRUE(dump.json.is_object()) << dump.result.output;
    EXPECT_EQ(true, dump.json.at("loaded"));
    EXPECT_EQ((Words{"message", "type"}), keysOf(dump.json.at("error")));
    EXPECT_EQ("IndexOutOfBounds", dump.json["error"]["type"]);
    EXPECT_NE("", dump.json["error"]["message"]);
    const Json& nodes = dump.json.at("nodes");
    ASSERT_EQ(4u, nodes.size());
    EXPECT_EQ(nodes[0]["transform"], translation(0, 20, 0));
    EXPECT_EQ(nodes[1]["transform"], translation(0, 0, 0)); // an evaluation starts from the identity
    EXPECT_EQ(nodes[2]["transform"], translation(0, 3, 0));
    EXPECT_EQ(nodes[3]["transform"], translation(0, 4, 0)); // not folded
}

TEST(ScenetoolDumpTest, EvaluationThatThrowsGivesOneLineOnStandardError)
{
    const TemporaryFile file(documentThatThrowsOnEvaluation());
    const ProcessResult result = scenetool({"dump", file.path(), "--time", "2"});
    EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
    EXPECT_TRUE(contains(result.errors, "IndexOutOfBounds")) << result.errors;
    EXPECT_EQ(failed, result.status); // the requested file does not exist
}

TEST(ScenetoolDumpTest, CurveThatWouldThrowDoesNotAtItsKeys)
{
    const Json nodes = dumpDocument(documentThatThrowsOnEvaluation(), {"--time", "1", "--fold"}).at("nodes");
    ASSERT_EQ(4u, nodes.size());
    EXPECT_EQ(nodes[0]["transform"], translation(0, 10, 0));
    EXPECT_EQ(nodes[1]["transform"], translation(0, 2, 0));
    EXPECT_EQ(nodes[3]["transform"], translation(0, 14, 0));
}

TEST(ScenetoolDumpTest, LoadThatThrowsShowsTheErrorAndWhatStands)
{
    const TemporaryFile file(documentOf(parentAndChild, {withoutTimes("child/t")}));
    const Dump dump(file.path());
    EXPECT_EQ(failed, dump.result.status);
    EXPECT_TRUE(isOneLine(dump.result.errors)) << dump.result.errors;
    ASSERT_TRUE(dump.json.is_object()) << dump.result.output;
    EXPECT_EQ(false, dump.json.at("loaded"));
    EXPECT_EQ((Words{"message", "type"}), keysOf(dump.json.at("error")));
    EXPECT_EQ("IndexOutOfBounds", dump.json["error"]["type"]);
    EXPECT_EQ(dump.json.at("nodes"), Json::array()); // animations are read before the tree
}

TEST(ScenetoolDumpTest, LoadThatThrowsIgnoresTimeAndFold)
{
    const TemporaryFile file(documentOf(parentAndChild, {withoutTimes("child/t")}));
    const ProcessResult plain = scenetool({"dump", file.path()});
    const ProcessResult asked = scenetool({"dump", file.path(), "--time", "2", "--fold"});
    EXPECT_EQ(asked.output, plain.output);
    EXPECT_EQ(asked.errors, plain.errors);
    EXPECT_EQ(failed, asked.status);
}

TEST(ScenetoolInfoTest, LoadThatThrowsGivesOneLineAndNothingElse)
{
    const TemporaryFile file(documentOf(parentAndChild, {withoutTimes("child/t")}));
    const ProcessResult result = scenetool({"info", file.path()});
    EXPECT_EQ(failed, result.status);
    EXPECT_EQ("", result.output);
    EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
    EXPECT_TRUE(contains(result.errors, "IndexOutOfBounds")) << result.errors;
}

// --- loads that fail

struct FailureCase : Row {
    std::string document;
    const char* channel;
    std::string words;  ///< the message up to a path
    std::string reason; ///< of the refusal, after the name of the file
};

std::vector<FailureCase> failureCases()
{
    const std::string noNodes = "<library_visual_scenes><visual_scene id='scene'/></library_visual_scenes>"
                                "<scene><instance_visual_scene url='#scene'/></scene>";
    return {
        {"Empty", "", "libVideo.scene", "Collada file does not exist ", " is empty"},
        {"NotXml", "Lorem ipsum", "libVideo.scene", "Collada file does not exist ",
         ":1:1: not well-formed: Document is empty"},
        {"OtherRoot", "<html/>", "libVideo.scene", "Collada file does not exist ",
         ":1:1: no COLLADA: The root element is <html>"},
        {"NewerSchema", "<COLLADA xmlns='http://www.collada.org/2008/03/COLLADASchema' version='1.5.0'/>",
         "libVideo.scene", "Collada file does not exist ", " is COLLADA 1.5; only 1.4 is read"},
        {"NoScene", ColladaBuilder().text(), "libVideo.scene", "Collada file does not have a scene definition ",
         " does not load: "},
        {"NoVisualScene", ColladaBuilder("<scene/>").text(), "libVideo.scene", "Scene does not have a visual scene",
         " does not load: "},
        {"DanglingUrl", ColladaBuilder("<scene><instance_visual_scene url='#nowhere'/></scene>").text(),
         "libVideo.scene", "Url ", " does not load: "},
        {"OtherElement",
         ColladaBuilder("<library_lights id='lights'/><scene><instance_visual_scene url='#lights'/></scene>").text(),
         "libVideo.scene", "daeElement is not a domVisual_scene element", " does not load: "},
        {"NoNodes", ColladaBuilder(noNodes).text(), "libVideo.visualScene", "Visual scene has no visual nodes",
         " does not load: "}};
}

class ScenetoolFailureTest : public testing::TestWithParam<FailureCase> {};

TEST_P(ScenetoolFailureTest, DumpIsAnObjectWithTheLine)
{
    const TemporaryFile file(GetParam().document);
    const Dump dump(file.path(), {"--time", "1", "--fold"});
    EXPECT_EQ(failed, dump.result.status);
    EXPECT_TRUE(isOneLine(dump.result.errors)) << dump.result.errors;
    ASSERT_TRUE(dump.json.is_object()) << dump.result.output;
    EXPECT_EQ(dump.json.at("file"), file.path());
    EXPECT_EQ(false, dump.json.at("loaded"));
    EXPECT_TRUE(dump.json.at("error").is_null());
    EXPECT_EQ(dump.json.at("nodes"), Json::array());
    ASSERT_EQ(1u, dump.json.at("log").size());
    const Json& line = dump.json["log"][0];
    EXPECT_EQ(line.at("channel"), GetParam().channel);
    EXPECT_EQ(3, line.at("priority"));
    const std::string text = line.at("text");
    EXPECT_TRUE(hasPattern(text, "^[0-9]+ " + GetParam().words)) << text;
    EXPECT_TRUE(contains(dump.result.errors, file.path() + GetParam().reason)) << dump.result.errors;
    const Json refusal = dump.json.at("refusal");
    EXPECT_TRUE(contains(GetParam().reason + text, refusal.at("reason"))) << refusal;
    const bool hasLine = GetParam().reason.front() == ':';
    EXPECT_EQ(refusal.at("line"), hasLine ? Json(1) : Json());
    EXPECT_EQ(refusal.at("column"), hasLine ? Json(1) : Json());
}

TEST_P(ScenetoolFailureTest, InfoPrintsOneLineOnStandardErrorAlone)
{
    const TemporaryFile file(GetParam().document);
    const ProcessResult result = scenetool({"info", file.path()});
    EXPECT_EQ(failed, result.status);
    EXPECT_EQ("", result.output);
    EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
    EXPECT_TRUE(contains(result.errors, file.path() + GetParam().reason)) << result.errors;
}

TEST(ScenetoolPreparationTest, MessagesNameTheDocumentAndNotThePreparedFile)
{
    const TemporaryFile file(ColladaBuilder().text());
    for (const std::string command : {"info", "dump"}) {
        const ProcessResult result = scenetool({command, "--prepare", file.path()});
        EXPECT_EQ(failed, result.status);
        EXPECT_TRUE(contains(result.errors, "Collada file does not have a scene definition " + file.path() + '\n'))
            << result.errors;
    }
}

TEST_P(ScenetoolFailureTest, CheckSaysTheSame)
{
    const TemporaryFile file(GetParam().document);
    const ProcessResult result = scenetool({"check", file.path()});
    EXPECT_EQ(2, result.status);
    EXPECT_TRUE(contains(result.output, file.path() + GetParam().reason)) << result.output;
}

INSTANTIATE_TEST_SUITE_P(Documents, ScenetoolFailureTest, testing::ValuesIn(failureCases()), rowName);

TEST(ScenetoolFileTest, UnknownFileGivesOneLineThatNamesIt)
{
    const TemporaryFile file("");
    const std::string path = (file.folder() / "missing.dae").string();
    for (const char* const command : {"info", "dump"}) {
        const ProcessResult result = scenetool({command, path});
        EXPECT_EQ(failed, result.status) << command;
        EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
        EXPECT_EQ("scenetool: " + path + " does not exist\n", result.errors);
    }
    EXPECT_EQ(false, Dump(path).json.at("loaded"));
}

TEST(ScenetoolCommandTest, UnknownOneIsNamedWithTheNearest)
{
    const ProcessResult near = scenetool({"dmup", "x.dae"});
    EXPECT_EQ(usageError, near.status);
    EXPECT_EQ("scenetool: there is no command \"dmup\"; did you mean dump? (see scenetool --help)\n", near.errors);
    const ProcessResult far = scenetool({"lighthouse"});
    EXPECT_EQ(usageError, far.status);
    EXPECT_EQ("scenetool: there is no command \"lighthouse\" (see scenetool --help)\n", far.errors);
}

const std::string emptyMatrices = "<matrix>1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix>";

TEST(ScenetoolCheckTest, ListsWhatIsLostWithLineAndRemedy)
{
    const TemporaryFile file(documentOf("<node id='whole'>" + emptyMatrices + "</node>\n<node id='bare'/>"));
    const ProcessResult result = scenetool({"check", file.path()});
    EXPECT_EQ(1, result.status);
    EXPECT_TRUE(contains(result.output, "line 2: ")) << result.output;
    EXPECT_TRUE(contains(result.output, "node[@id='bare']")) << result.output;
    EXPECT_FALSE(contains(result.output, "node[@id='whole']")) << result.output;
    EXPECT_TRUE(contains(result.output, "-> prepare the document\n")) << result.output;
    const Json json = Json::parse(scenetool({"check", "--json", file.path()}).output);
    ASSERT_EQ(1U, json.size());
    EXPECT_EQ(file.path(), json[0].at("file"));
    EXPECT_EQ("lost", json[0].at("findings").at(0).at("outcome"));
    EXPECT_EQ(2, json[0].at("findings").at(0).at("line"));
}

TEST(ScenetoolCheckTest, StatusIsTheWorst)
{
    const TemporaryFile good(documentOf("<node id='whole'>" + emptyMatrices + "</node>"));
    const TemporaryFile bad("<a>");
    EXPECT_EQ(0, scenetool({"check", good.path()}).status);
    EXPECT_EQ(2, scenetool({"check", good.path(), bad.path(), good.path()}).status);
    EXPECT_EQ(3, scenetool({"check"}).status);
    EXPECT_EQ(3, scenetool({"check", "--no-such", good.path()}).status);
}

TEST(ScenetoolPrepareTest, WhatComesOutHasNothingToReport)
{
    const TemporaryFile file(documentOf("<node id='bare'/>"));
    const std::string out = (file.folder() / "out.dae").string();
    const ProcessResult first = scenetool({"prepare", file.path(), "-o", out, "--report"});
    EXPECT_EQ(0, first.status) << first.errors;
    EXPECT_TRUE(contains(first.output, "rewritten")) << first.output;
    EXPECT_EQ(0, scenetool({"check", out}).status);
    const Json json = Json::parse(scenetool({"prepare", out, "-o", out, "--json"}).output);
    EXPECT_EQ(true, json.at("done"));
    EXPECT_EQ(false, json.at("changed"));
    EXPECT_EQ(Json::array(), json.at("findings"));
    const Json prepared = Dump(file.path(), {"--prepare"}).json;
    EXPECT_EQ(file.path(), prepared.at("file"));
    EXPECT_EQ(1, prepared.at("nodes").at(0).at("transform").at(0));
    EXPECT_EQ(0, Dump(file.path()).json.at("nodes").at(0).at("transform").at(0));
}

TEST(ScenetoolPrepareTest, WordsThatMakeNoSenseAreUsageErrors)
{
    const TemporaryFile file(documentOf("<node id='bare'/>"));
    const std::string out = (file.folder() / "out.dae").string();
    for (const Words& words : std::vector<Words>{{"--up", "x"},
                                                 {"--unit", "0"},
                                                 {"--time", "nan"},
                                                 {"--tolerance", "-1"},
                                                 {"--normals", "x"},
                                                 {"--aspect", "wide"}}) {
        Words all = {"prepare", file.path(), "-o", out};
        all.insert(all.end(), words.begin(), words.end());
        const ProcessResult result = scenetool(all);
        EXPECT_EQ(usageError, result.status) << words[0];
        EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
    }
    for (const char* const word : {"--normals", "--normals=30", "--up=z", "--unit=0.01", "--max-size=1MB"}) {
        EXPECT_EQ(0, scenetool({"prepare", file.path(), "-o", out, word}).status) << word;
    }
}

TEST(ScenetoolFileTest, FolderIsNoDocument)
{
    const TemporaryFile file("");
    const Dump dump(file.folder().string());
    EXPECT_EQ(failed, dump.result.status);
    EXPECT_TRUE(isOneLine(dump.result.errors)) << dump.result.errors;
    EXPECT_EQ(false, dump.json.at("loaded"));
}

TEST(ScenetoolFileTest, EmptyPathIsNoDocument)
{
    const Dump dump("");
    EXPECT_EQ(failed, dump.result.status);
    EXPECT_TRUE(isOneLine(dump.result.errors)) << dump.result.errors;
    ASSERT_TRUE(dump.json.is_object()) << dump.result.output;
    EXPECT_EQ(false, dump.json.at("loaded"));
}

class ScenetoolNameTest : public testing::TestWithParam<Case<const char*>> {};

TEST_P(ScenetoolNameTest, FileOfThatNameIsShown)
{
    const TemporaryFile file(documentOf(parentAndChild), GetParam().given);
    const Dump dump(file.path());
    EXPECT_EQ(succeeded, dump.result.status) << dump.result.errors;
    EXPECT_EQ(dump.json.at("file"), file.path());
    EXPECT_EQ(succeeded, scenetool({"info", file.path()}).status);
}

INSTANTIATE_ROWS(Names, ScenetoolNameTest, {"Blank", "two words.dae"}, {"Accent", "hütte.dae"},
                 {"NumberSign", "a#b.dae"}, {"Percent", "100%.dae"}, {"Quotes", "\"it's\".dae"},
                 {"Dollar", "$HOME.dae"}, {"LineFeed", "two\nlines.dae"}, {"Backslash", "a\\b.dae"});

TEST(ScenetoolFileTest, NameThatIsNoUtf8StillGivesJson)
{
    const TemporaryFile file(documentOf(parentAndChild), "caf\xE9.dae");
    const Dump dump(file.path());
    EXPECT_EQ(succeeded, dump.result.status) << dump.result.errors;
    ASSERT_TRUE(dump.json.is_object()) << dump.result.output;
    EXPECT_EQ(dump.json.at("file"), (file.folder() / "caf\xEF\xBF\xBD.dae").string()); // the replacement character
}

// --- the log

TEST(ScenetoolLogTest, LineHasChannelPriorityAndText)
{
    const TemporaryFile file(documentOf(parentAndChild, {rising("nowhere/t")}));
    const Dump dump(file.path());
    EXPECT_EQ(succeeded, dump.result.status);
    EXPECT_EQ("", dump.result.errors); // it is in the object
    ASSERT_EQ(1u, dump.json.at("log").size());
    const Json& line = dump.json["log"][0];
    EXPECT_EQ((Words{"channel", "priority", "text"}), keysOf(line));
    EXPECT_EQ("libVideo.visualScene", line["channel"]);
    EXPECT_TRUE(line["priority"].is_number_integer());
    EXPECT_EQ(3, line["priority"]);
    const std::string text = line["text"];
    EXPECT_TRUE(
        std::regex_match(text, std::regex("[0-9]+ Unable to find the animation's target node with id: nowhere")))
        << text;
}

TEST(ScenetoolLogTest, LinesStandInTheOrderInWhichTheyCame)
{
    Curve sampled = rising("first/t", "a");
    std::string document = documentOf(parentAndChild, {sampled, rising("second/t", "b")});
    // An animation without a channel fails when it is read, before any target is looked up.
    const std::string library = "<library_animations>";
    document.insert(document.find(library) + library.size(), "<animation id='empty'/>");
    const TemporaryFile file(document);
    const Json log = Dump(file.path()).json.at("log");
    ASSERT_EQ(4u, log.size());
    EXPECT_EQ("libVideo.animation", log[0]["channel"]);
    EXPECT_TRUE(contains(log[0]["text"], "Cannot create an animation without a channel element."));
    const Words targets = {"", "first", "second"};
    for (std::size_t i = 0; i < targets.size(); ++i) {
        const std::string text = log[i + 1]["text"];
        EXPECT_EQ("libVideo.visualScene", log[i + 1]["channel"]);
        EXPECT_EQ(text.substr(text.find(": ") + 2), targets[i]);
    }
}

TEST(ScenetoolLogTest, InfoShowsTheLinesWithTheirChannel)
{
    const std::string text = infoOf(documentOf(parentAndChild, {rising("nowhere/t")}));
    EXPECT_TRUE(
        hasPattern(text, "libVideo\\.visualScene.* Unable to find the animation's target node with id: nowhere\n"))
        << text;
}

TEST(ScenetoolLogTest, DocumentModelPrintsNothingOfItsOwn)
{
    // The document model complains about an unknown element, an invalid number and references that lead nowhere.
    const TemporaryFile file(documentOf("<node><translate>1 x 0</translate><unknown/><instance_light url='#no'/>"
                                        "<instance_geometry url='#no'/></node>"));
    const Dump dump(file.path());
    EXPECT_EQ(succeeded, dump.result.status);
    EXPECT_TRUE(dump.json.is_object()) << dump.result.output;
    EXPECT_EQ("", dump.result.errors);
}

// --- info

TEST(ScenetoolInfoTest, StartsWithTheFile)
{
    const TemporaryFile file(documentOf(parentAndChild));
    const Words lines = linesOf(scenetool({"info", file.path()}).output);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[0], file.path());
}

TEST(ScenetoolInfoTest, CountsNodesAndLevels)
{
    const std::string text = infoOf(documentOf("<node id='a'><node id='b'><node id='c'/></node></node><node id='d'/>"));
    EXPECT_TRUE(hasPattern(text, "\nNodes +4\\b.*\\b3 levels")) << text;
}

TEST(ScenetoolInfoTest, CountsNodesWithoutTransform)
{
    const std::string text = infoOf(documentOf("<node id='a'/><node id='b'/><node id='c'><translate/></node>"));
    EXPECT_TRUE(hasPattern(text, "\nCollapsed +2 ")) << text;
    EXPECT_FALSE(contains(infoOf(documentOf("<node id='c'><scale>1 1 1</scale></node>")), "Collapsed"));
}

TEST(ScenetoolInfoTest, TreeIsDepthFirstAndIndentedByLevel)
{
    const Words lines =
        linesOf(infoOf(documentOf("<node id='A'><node id='A1'><node id='C'/></node><node id='A2'/></node>"
                                  "<node id='B'><node id='B1'/></node>")));
    Words order;
    std::map<std::string, std::size_t> indent;
    for (const std::string& line : lines) {
        std::smatch match;
        if (std::regex_search(line, match, std::regex("^( *)#([ABC][12]?) "))) {
            order.push_back(match[2]);
            indent[match[2]] = static_cast<std::size_t>(match[1].length());
        }
    }
    EXPECT_EQ((Words{"A", "A1", "C", "A2", "B", "B1"}), order);
    EXPECT_EQ(indent["A"], indent["B"]);
    EXPECT_EQ(indent["A1"], indent["A2"]);
    EXPECT_EQ(indent["A1"], indent["B1"]);
    EXPECT_LT(indent["A"], indent["A1"]);
    EXPECT_LT(indent["A1"], indent["C"]);
}

TEST(ScenetoolInfoTest, NodeIsShownByNameAndId)
{
    const std::string text = infoOf(documentOf("<node id='lamp-1' name='Lamp'/><node name='Only'/><node id='bare'/>"
                                               "<node id='same' name='same'/><node/>"));
    EXPECT_TRUE(contains(text, " Lamp #lamp-1 ")) << text;
    EXPECT_TRUE(contains(text, " Only ")) << text;
    EXPECT_TRUE(contains(text, " #bare ")) << text;
    EXPECT_TRUE(contains(text, " same ")) << text;
    EXPECT_TRUE(contains(text, "(unnamed)")) << text;
}

TEST(ScenetoolInfoTest, TransformIsDescribed)
{
    const std::string text = infoOf(documentOf("<node id='a'><translate>1 -2.5 3</translate></node><node id='b'/>"
                                               "<node id='c'><skew>1 2 3 4 5 6 7</skew></node>"
                                               "<node id='d'><scale>2 3 4</scale></node>"));
    EXPECT_TRUE(hasPattern(text, "#a +translation 1 -2\\.5 3\n")) << text;
    EXPECT_TRUE(hasPattern(text, "#b +zero matrix\n")) << text;
    EXPECT_TRUE(hasPattern(text, "#c +identity\n")) << text;
    EXPECT_TRUE(contains(text, "[2 0 0 0 | 0 3 0 0 | 0 0 4 0 | 0 0 0 1]")) << text;
}

TEST(ScenetoolInfoTest, AnimatedNodesAreShownWithTheirLength)
{
    const std::string text = infoOf(documentOf(parentAndChild, {rising("child/t")}));
    EXPECT_TRUE(hasPattern(text, "\nAnimations +on 1 node, .* 3 s\n")) << text;
    EXPECT_TRUE(hasPattern(text, "#child .*animated, 3 s\n")) << text;
    EXPECT_FALSE(hasPattern(text, "#parent .*animated")) << text;
    EXPECT_TRUE(hasPattern(infoOf(documentOf(parentAndChild)), "\nAnimations +none\n"));
}

TEST(ScenetoolInfoTest, OneNodeAndOneLevelAreNoPlural)
{
    const std::string text = infoOf(documentOf("<node id='a'/>"));
    EXPECT_TRUE(hasPattern(text, "\nNodes +1 on 1 level\n")) << text;
    EXPECT_TRUE(hasPattern(text, "\nCollapsed +1 node with")) << text;
}

TEST(ScenetoolInfoTest, GeometryIsShownWithNameAndNode)
{
    EXPECT_TRUE(hasPattern(infoOf(squareDocument()), "\nGeometries\n +g \\(Square\\) +on #shown\n"))
        << infoOf(squareDocument());
    const std::string same = infoOf(withGeometries(geometryXml("g", squareMesh(""), "name='g'"),
                                                   "<node id='n' name='N'>" + showing("g") + "</node>"));
    EXPECT_TRUE(hasPattern(same, "\nGeometries\n +g +on N #n\n")) << same;
}

TEST(ScenetoolInfoTest, TrianglesAreShownWithDistinctVerticesLayoutBoxAndMaterial)
{
    const std::string text = infoOf(squareDocument());
    EXPECT_TRUE(contains(text, "\n    2 triangles, 4 vertices of 32 bytes: position 3, normal 3, texcoord 2, "
                               "box 1..2 2..4 3..3, material stone\n"))
        << text;
}

TEST(ScenetoolInfoTest, PointsAreShownWithoutMaterial)
{
    EXPECT_TRUE(contains(infoOf(withGeometries(geometryXml("g", squareMesh("")), "<node>" + showing("g") + "</node>")),
                         "\n    4 points, 4 vertices of 12 bytes: position 3, box 1..2 2..4 3..3\n"));
    // A pair of numbers has no box.
    EXPECT_TRUE(contains(infoOf(pointDocument("1 2", "XY")), "\n    1 point, 1 vertex of 8 bytes: position 2\n"));
}

TEST(ScenetoolInfoTest, LayoutIsInWords)
{
    const std::map<std::string, std::string> words = {
        {"BINORMAL", "binormal"},     {"WEIGHT", "weight"},          {"COLOR", "color"},
        {"NORMAL", "normal"},         {"TANGENT", "tangent"},        {"TEXCOORD", "texcoord"},
        {"INPUT", "input"},           {"OUTPUT", "output"},          {"INTERPOLATION", "interpolation"},
        {"IN_TANGENT", "in tangent"}, {"OUT_TANGENT", "out tangent"}};
    for (const auto& [semantic, word] : words) {
        std::string document = pointDocument("1 2 3", "XYZ");
        document.replace(document.find("POSITION"), std::strlen("POSITION"), semantic);
        EXPECT_TRUE(contains(infoOf(document), "\n    1 point, 1 vertex of 12 bytes: " + word + " 3\n")) << semantic;
    }
}

TEST(ScenetoolInfoTest, MaterialsAreShownWithColorsOrFiles)
{
    const std::string text = infoOf(materialDocument("<diffuse><color>0.25 0.5 0.75 1</color></diffuse>"));
    EXPECT_TRUE(hasPattern(text, "\nMaterials\n +plain +diffuse 0\\.25 0\\.5 0\\.75 +specular 1 1 1 +shininess 12\\.5 "
                                 "+emission 1 1 1\n"))
        << text;
    EXPECT_TRUE(hasPattern(text, "\n +wood +diffuse \\./wood%20grain\\.png +specular without its texture +shininess 0 "
                                 "+emission 0\\.1 0\\.2 0\\.3\n"))
        << text;
}

TEST(ScenetoolInfoTest, NothingIsSaidOfGeometriesAndMaterialsThatAreNotThere)
{
    const std::string text = infoOf(documentOf(parentAndChild));
    EXPECT_FALSE(contains(text, "Geometries")) << text;
    EXPECT_FALSE(contains(text, "Materials")) << text;
}

std::string flatDocument(unsigned count)
{
    std::string nodes;
    for (unsigned i = 0; i < count; ++i) {
        nodes += "<node id='leaf" + std::to_string(i) + "'/>";
    }
    return documentOf(nodes);
}

std::size_t leavesIn(const std::string& text)
{
    const Words lines = linesOf(text);
    return static_cast<std::size_t>(
        std::count_if(lines.begin(), lines.end(), [](const std::string& line) { return contains(line, "#leaf"); }));
}

TEST(ScenetoolInfoTest, TreeIsCutAtTwoHundredNodes)
{
    const std::string text = infoOf(flatDocument(205));
    EXPECT_EQ(200u, leavesIn(text));
    EXPECT_TRUE(contains(text, "#leaf199 "));
    EXPECT_FALSE(contains(text, "#leaf200 "));
    EXPECT_TRUE(hasPattern(text, "\\b5 more .*--all")) << text;
    EXPECT_TRUE(hasPattern(text, "\nNodes +205\\b")) << text;
}

TEST(ScenetoolInfoTest, TwoHundredNodesAreNotCut)
{
    const std::string text = infoOf(flatDocument(200));
    EXPECT_EQ(200u, leavesIn(text));
    EXPECT_FALSE(contains(text, "--all")) << text;
}

TEST(ScenetoolInfoTest, AllShowsEveryNode)
{
    const std::string text = infoOf(flatDocument(205), {"--all"});
    EXPECT_EQ(205u, leavesIn(text));
    EXPECT_FALSE(contains(text, "--all")) << text;
}

// --- terminals

ProcessOptions onTerminal(const Words& environment)
{
    ProcessOptions options;
    options.hasTerminal = true;
    options.environment = environment;
    return options;
}

TEST(ScenetoolColorTest, PipeGetsNoColor)
{
    const TemporaryFile file(documentOf(parentAndChild, {rising("child/t"), rising("nowhere/t", "other")}));
    ProcessOptions options;
    options.environment = {"NO_COLOR", "TERM=xterm-256color", "CLICOLOR_FORCE=1"};
    const ProcessResult result = scenetool({"info", file.path()}, options);
    EXPECT_EQ(succeeded, result.status);
    EXPECT_FALSE(contains(result.output, "\033"));
}

TEST(ScenetoolColorTest, TerminalGetsColor)
{
    if (!testSupport::hasTerminals()) {
        GTEST_SKIP() << "no pseudo-terminals here";
    }
    const TemporaryFile file(documentOf(parentAndChild));
    const ProcessResult result = scenetool({"info", file.path()}, onTerminal({"NO_COLOR"}));
    EXPECT_EQ(succeeded, result.status);
    EXPECT_TRUE(contains(result.output, "\033[")) << result.output;
}

TEST(ScenetoolColorTest, NoColorVariableTurnsColorOff)
{
    if (!testSupport::hasTerminals()) {
        GTEST_SKIP() << "no pseudo-terminals here";
    }
    const TemporaryFile file(documentOf(parentAndChild));
    const ProcessResult result = scenetool({"info", file.path()}, onTerminal({"NO_COLOR=1"}));
    EXPECT_EQ(succeeded, result.status);
    EXPECT_TRUE(contains(result.output, "#parent")) << result.output;
    EXPECT_FALSE(contains(result.output, "\033")) << result.output;
}

class ScenetoolControlTest : public testing::TestWithParam<Case<const char*>> {};

TEST_P(ScenetoolControlTest, CharacterOfADocumentStaysOutOfInfo)
{
    const std::string evil = "x" + std::string(GetParam().given) + "31m";
    const TemporaryFile file(
        documentOf("<node id='" + evil + "1' sid='" + evil + "' name='" + evil + "2'/>", {rising(evil + "/t")}));
    const ProcessResult result = scenetool({"info", file.path()});
    ASSERT_EQ(succeeded, result.status) << result.errors;
    EXPECT_TRUE(contains(result.output, "31m")) << result.output; // the names are there
    EXPECT_FALSE(hasControlCharacter(result.output)) << ::testing::PrintToString(result.output);
    EXPECT_FALSE(hasControlCharacter(result.errors));
}

TEST_P(ScenetoolControlTest, CharacterOfAGeometryStaysOutOfInfo)
{
    const std::string evil = "x" + std::string(GetParam().given) + "31m";
    const std::string triangles = squareTriangles;
    std::string document = materialDocument();
    for (const auto& [from, to] :
         std::vector<std::pair<std::string, std::string>>{{"geometry id='g' ", "geometry id='g' name='" + evil + "' "},
                                                          {"<mesh><vertices/></mesh>", squareMesh(triangles)},
                                                          {"material='stone'", "material='" + evil + "'"},
                                                          {"symbol='plain'", "symbol='" + evil + "'"}}) {
        ASSERT_TRUE(contains(document, from)) << from;
        document.replace(document.find(from), from.size(), to);
    }
    const std::string text = infoOf(document);
    EXPECT_TRUE(hasPattern(text, "\n +g \\(x.+31m\\)")) << text;
    EXPECT_TRUE(hasPattern(text, ", material x.+31m\n")) << text;
    EXPECT_TRUE(hasPattern(text, "\n +x.+31m +diffuse")) << text;
    EXPECT_FALSE(hasControlCharacter(text)) << ::testing::PrintToString(text);
}

// XML allows only these. U+009B starts a sequence as ESC and "[" do, U+0085 is a new line.
INSTANTIATE_ROWS(Characters, ScenetoolControlTest, {"Delete", "&#x7F;"}, {"SequenceIntroducer", "&#x9B;"},
                 {"NextLine", "&#x85;"}, {"FirstOfC1", "&#x80;"});

class ScenetoolPathTest : public testing::TestWithParam<Case<const char*>> {};

TEST_P(ScenetoolPathTest, CharacterOfAPathStaysOutOfInfoAndErrors)
{
    const TemporaryFile file(documentOf(parentAndChild), "red" + std::string(GetParam().given) + "bell.dae");
    const ProcessResult shown = scenetool({"info", file.path()});
    EXPECT_EQ(succeeded, shown.status) << shown.errors;
    EXPECT_FALSE(hasControlCharacter(shown.output)) << ::testing::PrintToString(shown.output);
    EXPECT_TRUE(contains(linesOf(shown.output).at(0), "bell.dae"));
    const ProcessResult refused = scenetool({"info", file.path() + ".old"});
    EXPECT_EQ(failed, refused.status);
    EXPECT_TRUE(isOneLine(refused.errors)) << refused.errors;
    EXPECT_FALSE(hasControlCharacter(refused.errors)) << ::testing::PrintToString(refused.errors);
}

INSTANTIATE_ROWS(Characters, ScenetoolPathTest, {"Escape", "\033[31m"}, {"Bell", "\a"}, {"LineFeed", "\n"},
                 {"CarriageReturn", "\r"}, {"Delete", "\x7F"}, {"SequenceIntroducer", "\xC2\x9B"});

// --- usage

class ScenetoolUsageTest : public testing::TestWithParam<Case<Words>> {};

TEST_P(ScenetoolUsageTest, GivesOneLineAndStatusTwo)
{
    const ProcessResult result = scenetool(GetParam().given);
    EXPECT_EQ(usageError, result.status);
    EXPECT_EQ("", result.output);
    EXPECT_TRUE(isOneLine(result.errors)) << result.errors;
    EXPECT_FALSE(hasControlCharacter(result.errors)) << ::testing::PrintToString(result.errors);
}

INSTANTIATE_ROWS(Lines, ScenetoolUsageTest, {"NoSubcommand", {}}, {"UnknownSubcommand", {"show", "x.dae"}},
                 {"FileWithoutSubcommand", {"x.dae"}}, {"InfoWithoutFile", {"info"}}, {"DumpWithoutFile", {"dump"}},
                 {"OnlyOptions", {"dump", "--fold"}}, {"TwoFiles", {"dump", "x.dae", "y.dae"}},
                 {"TwoSubcommands", {"dump", "x.dae", "info", "y.dae"}}, {"UnknownOption", {"--colour"}},
                 {"UnknownOptionOfInfo", {"info", "x.dae", "--fold"}},
                 {"UnknownOptionOfDump", {"dump", "x.dae", "--all"}}, {"UnknownShortOption", {"dump", "-x", "x.dae"}},
                 {"TimeWithoutNumber", {"dump", "x.dae", "--time"}},
                 {"TimeThatIsNoNumber", {"dump", "x.dae", "--time", "noon"}},
                 {"TimeWithTail", {"dump", "x.dae", "--time", "1.5s"}},
                 {"TimeWithComma", {"dump", "x.dae", "--time", "1,5"}}, {"EmptyTime", {"dump", "x.dae", "--time="}},
                 {"TimeTwice", {"dump", "x.dae", "--time", "1", "--time", "2"}},
                 {"ControlCharacters", {"dump", "x.dae", "\033[31m\nred"}});

// --- help

class ScenetoolHelpTest : public testing::TestWithParam<Case<Words, Words>> {};

TEST_P(ScenetoolHelpTest, ExplainsEveryWord)
{
    Words arguments = GetParam().given;
    arguments.emplace_back("--help");
    const ProcessResult result = scenetool(arguments);
    EXPECT_EQ(succeeded, result.status);
    EXPECT_EQ("", result.errors);
    for (const std::string& word : GetParam().expected) {
        // The option, the kind of its value, its default and what it excludes, blanks or a new line, and at least two
        // words of explanation.
        EXPECT_TRUE(
            hasPattern(result.output,
                       "\n +(-h,)?" + word + "( [A-Z.]+)*(:.*|=\\d+| \\[\\S+\\]| Excludes: .*)?(\n +| {2,})\\S+ \\S+"))
            << word << " in\n"
            << result.output;
    }
}

INSTANTIATE_ROWS(
    Commands, ScenetoolHelpTest, {"Program", {}, {"--help", "--version", "info", "dump"}},
    {"Info", {"info"}, {"FILE", "--help", "--all", "--sandbox", "--no-sandbox", "--time-limit", "--memory-limit"}},
    {"Dump",
     {"dump"},
     {"FILE", "--help", "--time", "--fold", "--sandbox", "--no-sandbox", "--time-limit", "--memory-limit"}});

TEST(ScenetoolHelpTest, ShortFormIsTheSame)
{
    EXPECT_EQ(scenetool({"-h"}).output, scenetool({"--help"}).output);
    EXPECT_EQ(succeeded, scenetool({"-h"}).status);
}

TEST(ScenetoolHelpTest, NeedsNoFile)
{
    const ProcessResult result = scenetool({"dump", "/nowhere.dae", "--help"});
    EXPECT_EQ(succeeded, result.status);
    EXPECT_EQ(result.output, scenetool({"dump", "--help"}).output);
}

TEST(ScenetoolHelpTest, VersionIsPrinted)
{
    const ProcessResult result = scenetool({"--version"});
    EXPECT_EQ(succeeded, result.status);
    EXPECT_TRUE(std::regex_match(result.output, std::regex("scenetool [0-9]+\\.[0-9]+\\.[0-9]+\n"))) << result.output;
    EXPECT_EQ("", result.errors);
}

} // namespace
