#include "support/UsedMemory.h"
#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Accessor.h>
#include <libVideo/SceneGraph/Animation.h>
#include <libVideo/SceneGraph/Camera.h>
#include <libVideo/SceneGraph/Geometry.h>
#include <libVideo/SceneGraph/Input.h>
#include <libVideo/SceneGraph/Instance.h>
#include <libVideo/SceneGraph/Light.h>
#include <libVideo/SceneGraph/Material.h>
#include <libVideo/SceneGraph/Node.h>
#include <libVideo/SceneGraph/Primitive.h>
#include <libVideo/SceneGraph/Scene.h>
#include <libVideo/SceneGraph/Source.h>
#include <libVideo/SceneGraph/Texture.h>
#include <libVideo/SceneGraph/Transformation.h>
#include <libVideo/SceneGraph/VisualScene.h>

#include <cstdio>

// A fault in a document causes a message, and as little as possible is skipped. Each test loads a whole document with
// one fault and checks what a renderer gets.

PRIVATE_MEMBER(badRotationAngle, double libVideo::Rotation::*, &libVideo::Rotation::m_angle)
PRIVATE_MEMBER(badMaterialProfile, domProfile_COMMON* libVideo::BlinnMaterial::*, &libVideo::BlinnMaterial::m_profile)
PRIVATE_MEMBER(badSceneReserved, std::uint64_t libVideo::Scene::*, &libVideo::Scene::m_reserved)
PRIVATE_MEMBER(badVisualSceneReserved, unsigned libVideo::VisualScene::*, &libVideo::VisualScene::m_reserved)

namespace {

using namespace libVideo;
using namespace testSupport;

// --- a document, and what came of it ---

/// Describes a loaded scene. Messages that this causes count as those of the load.
using Describe = std::function<std::string(VisualScene&)>;

struct BadDocument : Row {
    std::string libraries;
    std::string nodes;
    Texts lines; ///< "channel: text", the channel without "libVideo."; each has priority 3
    Describe describe;
    std::string result;
};

class BadDocumentTest : public testing::TestWithParam<BadDocument> {};

Texts linesOf(const LogCapture& log);

TEST_P(BadDocumentTest, CostsItsLinesAndDeliversTheRest)
{
    const BadDocument& row = GetParam();
    const TemporaryFile file(ColladaBuilder(row.libraries).addScene(row.nodes).text());
    Scene scene;
    const LogCapture log;
    ASSERT_TRUE(scene.createFromCollada(file.path().c_str()));
    EXPECT_EQ(row.result, row.describe(scene.visualScene()));
    EXPECT_EQ(row.lines, linesOf(log));
}

/// Prints six digits, and zero without a sign.
std::string number(double value)
{
    char text[32];
    (void)std::snprintf(text, sizeof(text), "%g", value == 0.0 ? 0.0 : value);
    return text;
}

template <class Numbers>
std::string listed(const Numbers& numbers, unsigned count)
{
    std::string text;
    for (unsigned i = 0; i < count; ++i) {
        text += (i == 0 ? "" : " ") + number(double(numbers[i]));
    }
    return text;
}

libVideo::Node& firstNode(VisualScene& scene)
{
    return *scene.root().children()[0];
}

// --- parts of documents ---

std::string array(const std::string& kind, const std::string& id, unsigned count, const std::string& values)
{
    return "<" + kind + " id='" + id + "-array' count='" + std::to_string(count) + "'>" + values + "</" + kind + ">";
}

std::string floats(const std::string& id, const std::string& values, unsigned count)
{
    return array("float_array", id, count, values);
}

std::string accessor(const std::string& reference, const std::string& attributes, const std::string& params = "")
{
    return "<technique_common><accessor source='" + reference + "' " + attributes + ">" + params +
           "</accessor></technique_common>";
}

std::string source(const std::string& id, const std::string& content)
{
    return "<source id='" + id + "'>" + content + "</source>";
}

/// A source of records of single floats.
std::string heights(const std::string& id, const std::string& values, unsigned count)
{
    return source(id, floats(id, values, count) +
                          accessor("#" + id + "-array", "count='" + std::to_string(count) + "' stride='1'", PARAM_X));
}

std::string triangles(const std::string& inputs, const std::string& count, const std::string& list)
{
    return "<triangles count='" + count + "'>" + inputs + list + "</triangles>";
}

const std::string shown = "<node id='n'><instance_geometry url='#g'/></node>";

// --- what is in a scene, in words ---

std::string valuesOf(libVideo::Primitive& primitive)
{
    std::vector<float> values(primitive.totalByteSize() / sizeof(float));
    if (!values.empty()) {
        std::memcpy(values.data(), primitive.vertexBuffer().get(), values.size() * sizeof(float));
    }
    return listed(values, unsigned(values.size()));
}

std::string kindOf(const libVideo::Primitive& primitive)
{
    return primitive.type() == libVideo::PRIMITIVE_TRIANGLE_LIST ? "triangles"
           : primitive.type() == libVideo::PRIMITIVE_POINT_CLOUD ? "points"
                                                                 : "nothing";
}

libVideo::Primitive& onlyPrimitive(VisualScene& scene)
{
    const auto* const bucket = scene.geometryTable().lookup("g");
    if (bucket == nullptr || bucket->value->mesh().primitives().size() != 1) {
        throw std::runtime_error("there is not one primitive");
    }
    return *bucket->value->mesh().primitives()[0];
}

std::string primitive(VisualScene& scene)
{
    libVideo::Primitive& only = onlyPrimitive(scene);
    const vesk::Array<unsigned>& indices = only.indexBuffer();
    return std::to_string(only.count()) + " " + kindOf(only) + " [" + listed(indices, indices.size()) + "] of [" +
           valuesOf(only) + "]";
}

std::string bareSourcePrimitive(VisualScene& scene)
{
    return primitive(scene) + ", " + std::to_string(onlyPrimitive(scene).bytesPerVertex()) + " bytes each";
}

/// A large point cloud: its size, and the points around the end of an array.
std::string cloudAround(VisualScene& scene, const std::vector<unsigned>& places)
{
    libVideo::Primitive& cloud = onlyPrimitive(scene);
    std::string text = std::to_string(cloud.count()) + " " + kindOf(cloud) + " in " +
                       std::to_string(cloud.totalByteSize()) + " bytes:";
    for (const unsigned place : places) {
        float value = -1.0f;
        std::memcpy(&value, cloud.vertexBuffer().get() + std::size_t(place) * sizeof(value), sizeof(value));
        text += " " + number(double(value));
    }
    return text;
}

std::string material(VisualScene& scene)
{
    const auto* const bucket = scene.blinnMaterialTable().lookup("skin");
    const std::string geometry = scene.geometryTable().lookup("g") == nullptr ? "" : ", and the geometry";
    if (bucket == nullptr) {
        return "no material" + geometry;
    }
    const libVideo::BlinnMaterial::Component& component = bucket->value->component();
    const std::string texture = component.diffuseTexture
                                    ? ", texture '" + std::string(component.diffuseTexture->textureFile().data()) + "'"
                                    : "";
    return "diffuse " + listed(component.diffuse, 3) + ", shininess " + number(double(component.shininess)) + texture +
           geometry;
}

std::string transform(VisualScene& scene)
{
    return listed(firstNode(scene).transform(), 16);
}

/// Whether and for how long the first node is animated, and where it is after a second.
std::string motion(VisualScene& scene)
{
    libVideo::Node& node = firstNode(scene);
    return std::string(node.hasAnimation() ? "moves " : "rests ") + number(node.animationLength()) + ": " +
           listed(node.position(1.0), 3);
}

std::string cameraCount(VisualScene& scene)
{
    return std::to_string(scene.cameraList().size()) + " cameras";
}

std::string pointLight(VisualScene& scene)
{
    const libVideo::PointLight& light = *scene.pointLightList()[0]->pointLight();
    return "color " + listed(light.color(), 3) + ", fades " + number(double(light.constantAttenuation())) + " " +
           number(double(light.linearAttenuation())) + " " + number(double(light.quadraticAttenuation()));
}

std::string spotLight(VisualScene& scene)
{
    const libVideo::SpotLight& light = *scene.spotLightList()[0]->spotLight();
    return "color " + listed(light.color(), 3) + ", fades " + number(double(light.constantAttenuation())) + " " +
           number(double(light.linearAttenuation())) + " " + number(double(light.quadraticAttenuation())) + ", cone " +
           number(double(light.innerConeAngle())) + " " + number(double(light.outerConeAngle())) + " " +
           number(double(light.falloffExponent()));
}

// --- meshes ---

const char* const beyondArray = "accessor: Accessor reaches beyond its float array";
const char* const fewerIndices = "primitive: Triangles have fewer indices than their count";
const char* const unknownFog = "input: Does not recognize input semantic FOG";
const char* const noInputOfUse = "input: createFromCollada failed";
const char* const noClass = "input: Does not have a class representation for source ";

// Four positions of three numbers.
const std::string places = source("s", floats("s", "1 2 3 4 5 6 7 8 9 10 11 12", 12) +
                                           accessor("#s-array", "count='4' stride='3'", PARAMS_XYZ));

BadDocument meshRow(const char* name, const std::string& content, const Texts& lines, const char* result,
                    const Describe& describe = primitive)
{
    return {name, meshXml(content), shown, lines, describe, result};
}

INSTANTIATE_ROWS(
    Sources, BadDocumentTest,
    meshRow("ArrayShorterThanItsAccessor",
            source("s", floats("s", "1 2 3 4 5", 5) + accessor("#s-array", "count='3' stride='3'", PARAMS_XYZ)) +
                triangles(inputXml("POSITION", "s", "0"), "1", "<p>0 1 2</p>"),
            texts(beyondArray), "1 triangles [0 1 2] of [1 2 3 4 5 0 0 0 0]"),
    meshRow("AccessorOfNothing",
            source("s", floats("s", "1 2 3", 3) + accessor("#nowhere", "count='1' stride='3'", PARAMS_XYZ)) +
                triangles(inputXml("POSITION", "s", "0"), "1", "<p>0 0 0</p>"),
            texts("accessor: Data source is not a float array #nowhere", "accessor: No data to read from the accessor"),
            "1 triangles [0 0 0] of []"),
    meshRow("AccessorWhoseReferenceIsLost",
            source("s", floats("s", "1 2 3", 3) + accessor("#a[1]", "count='1' stride='3'", PARAMS_XYZ)) +
                triangles(inputXml("POSITION", "s", "0"), "1", "<p>0 0 0</p>"),
            texts("accessor: Data source is not a float array ", "accessor: No data to read from the accessor"),
            "1 triangles [0 0 0] of []"),
    meshRow("SourceOfNothing", triangles(inputXml("POSITION", "nowhere", "0"), "1", "<p>0 0 0</p>"),
            texts("source: Element #nowhere is not a source", std::string(noClass) + "nowhere", noInputOfUse),
            "1 triangles [0 0 0] of []"),
    meshRow("SourceWhoseReferenceIsLost", triangles(inputXml("POSITION", "a[1]", "0"), "1", "<p>0 0 0</p>"),
            texts("source: Element  is not a source", noClass, noInputOfUse), "1 triangles [0 0 0] of []"),
    meshRow("SourceWithoutAFloatArray",
            source("s", array("Name_array", "s", 1, "A")) +
                triangles(inputXml("POSITION", "s", "0"), "1", "<p>0 0 0</p>"),
            texts("source: Source has no float array", std::string(noClass) + "s", noInputOfUse),
            "1 triangles [0 0 0] of []"),
    meshRow("SourceWithoutAFloatArrayBesideAGoodOne",
            places + source("bad", "") +
                triangles(inputXml("POSITION", "s", "0") + inputXml("NORMAL", "bad", "0"), "1", "<p>3 0 3</p>"),
            texts("source: Source has no float array", std::string(noClass) + "bad"),
            "1 triangles [0 1 0] of [10 11 12 1 2 3]"),
    // The stream has bytes that no layout counts, like a source without a technique.
    meshRow("TechniqueWithoutAnAccessor",
            source("s", floats("s", "5 6 7", 3) + "<technique_common/>") +
                triangles(inputXml("POSITION", "s", "0"), "1", "<p>2 1 0</p>"),
            texts(), "1 triangles [0 1 2] of [7 6 5], 0 bytes each", bareSourcePrimitive),
    meshRow("SourceWithoutATechnique",
            source("s", floats("s", "5 6 7", 3)) + triangles(inputXml("POSITION", "s", "0"), "1", "<p>2 1 0</p>"),
            texts(), "1 triangles [0 1 2] of [7 6 5], 0 bytes each", bareSourcePrimitive));

INSTANTIATE_ROWS(
    Triangles, BadDocumentTest,
    meshRow("ListShorterThanItsCount", places + triangles(inputXml("POSITION", "s", "0"), "3", "<p>0 1 2 2 1 3 3</p>"),
            texts(fewerIndices), "2 triangles [0 1 2 2 1 3] of [1 2 3 4 5 6 7 8 9 10 11 12]"),
    meshRow("ListOfHalfATriangle", places + triangles(inputXml("POSITION", "s", "0"), "1", "<p>0 1</p>"),
            texts(fewerIndices), "0 triangles [] of []"),
    meshRow("NoList", places + triangles(inputXml("POSITION", "s", "0"), "2", ""), texts(fewerIndices),
            "0 triangles [] of []"),
    meshRow("CountOfAllOnes", places + triangles(inputXml("POSITION", "s", "0"), "4294967295", "<p>3 2 1</p>"),
            texts(fewerIndices), "1 triangles [0 1 2] of [10 11 12 7 8 9 4 5 6]"),
    meshRow("NoInputOfUseKeepsTheCount", places + triangles(inputXml("FOG", "s", "0"), "2", "<p>5 6 7 7 6 5</p>"),
            texts(unknownFog, noInputOfUse), "2 triangles [0 0 0 0 0 0] of []"),
    meshRow("NoInputOfUseAndAShortList", places + triangles(inputXml("FOG", "s", "0"), "4294967295", "<p>5 6 7 7</p>"),
            texts(unknownFog, noInputOfUse, fewerIndices), "1 triangles [0 0 0] of []"),
    meshRow("NoInputOfUseAndNoList", places + triangles(inputXml("FOG", "s", "0"), "3", ""),
            texts(unknownFog, noInputOfUse, fewerIndices), "0 triangles [] of []"),
    // Two offsets make steps of two, so the last index of an input at offset 2 is past the end.
    meshRow("GapInTheOffsets",
            heights("h", "10 11 12 13", 4) + heights("k", "20 21 22 23", 4) +
                triangles(inputXml("POSITION", "h", "0") + inputXml("NORMAL", "k", "2"), "1", "<p>1 9 2 9 3 9</p>"),
            texts(), "1 triangles [0 1 2] of [11 22 12 23 13 20]"),
    meshRow("LinesOfInputsComeFirst",
            places + triangles(inputXml("POSITION", "s", "0") + inputXml("FOG", "s", "0"), "2", "<p>0 1 2</p>"),
            texts(unknownFog, fewerIndices), "1 triangles [0 1 2] of [1 2 3 4 5 6 7 8 9]"));

std::string cloud(const std::string& sources, const std::string& inputs)
{
    return sources + "<vertices id='v'>" + inputs + "</vertices>";
}

std::string claimed(const std::string& id, const std::string& values, const std::string& count)
{
    return source(id, floats(id, values, 1) + accessor("#" + id + "-array", "count='" + count + "'", PARAM_X));
}

INSTANTIATE_ROWS(Clouds, BadDocumentTest,
                 meshRow("FewUnbackedPoints", cloud(claimed("s", "1.5 2.5", "5"), inputXml("POSITION", "s")),
                         texts(beyondArray), "5 points [] of [1.5 2.5 0 0 0]"),
                 meshRow("ManyUnbackedPoints", cloud(claimed("s", "1.5 2.5", "4294967295"), inputXml("POSITION", "s")),
                         texts(beyondArray), "1048576 points in 4194304 bytes: 1.5 2.5 0 0",
                         [](VisualScene& scene) {
                             return cloudAround(scene, {0, 1, 2, 1048575});
                         }),
                 meshRow("AsManyPointsAsTheLongestArrayBacks",
                         cloud(claimed("s", "1.5", "2000000") + claimed("t", repeated("3 4 ", 524290), "2000000"),
                               inputXml("POSITION", "s") + inputXml("NORMAL", "t")),
                         texts(beyondArray, beyondArray), "1048580 points in 8388640 bytes: 1.5 3 0 4 0 4",
                         [](VisualScene& scene) {
                             return cloudAround(scene, {0, 1, 2, 3, 2097158, 2097159});
                         }));

// --- animations ---

const char* const shortArray = "animation: Cannot create an animation because an array is shorter than its accessor "
                               "says.";
const char* const otherCounts = "animation: Cannot create an animation because the counts of all the inputs do not "
                                "match.";
const char* const noTarget = "visualScene: Unable to find the animation's target node with id: ";

std::string curve(const std::string& sources, const std::string& inputs, const std::string& target = "n/t")
{
    return "<animation>" + sources + "<sampler id='" + target + "-sampler'>" + inputs + "</sampler><channel source='#" +
           target + "-sampler' target='" + target + "'/></animation>";
}

std::string keys(const std::string& id, const std::string& values, const std::string& attributes)
{
    return source(id, floats(id, values, 1) + accessor("#" + id + "-array", attributes));
}

const std::string movable = "<node id='n'><translate sid='t'>7 8 9</translate></node>";
const std::string twoTimes = keys("times", "0 2", "count='2'");
const char* const restsAtSevenEightNine = "rests 0: 7 8 9";

BadDocument curveRow(const char* name, const std::string& sources, const std::string& inputs, const Texts& lines,
                     const char* result)
{
    return {name,  "<library_animations>" + curve(sources, inputs) + "</library_animations>", movable, lines, motion,
            result};
}

INSTANTIATE_ROWS(
    Animations, BadDocumentTest,
    curveRow("TimesShorterThanTheirAccessor", keys("times", "0 2", "count='3'"), inputXml("INPUT", "times"),
             texts(shortArray, noTarget), restsAtSevenEightNine),
    curveRow("ValuesShorterThanTheirAccessor", twoTimes + keys("values", "0 0 0 4 8", "count='2' stride='3'"),
             inputXml("INPUT", "times") + inputXml("OUTPUT", "values"), texts(shortArray, noTarget),
             restsAtSevenEightNine),
    curveRow("MoreRecordsWithoutAnArrayThanTheirBound", source("times", accessor("#nowhere", "count='1048577'")),
             inputXml("INPUT", "times"), texts(shortArray, noTarget), restsAtSevenEightNine),
    curveRow("AsManyRecordsWithoutAnArrayAsTheirBound", source("times", accessor("#nowhere", "count='1048576'")),
             inputXml("INPUT", "times"), texts(), "moves 0: 7 8 9"),
    curveRow("NoTimesAreTimesOfZero", keys("values", "1 2 3 4 5 6", "count='2' stride='3'"),
             inputXml("OUTPUT", "values"), texts(), "moves 0: 7 8 9"),
    curveRow("NoKindsAreLinear", twoTimes + keys("values", "0 0 0 4 8 2", "count='2' stride='3'"),
             inputXml("INPUT", "times") + inputXml("OUTPUT", "values"), texts(), "moves 2: 2 4 1"),
    curveRow("TechniqueWithoutAnAccessor", source("times", floats("times", "0 2", 2) + "<technique_common/>"),
             inputXml("INPUT", "times"), texts(noTarget), restsAtSevenEightNine),
    curveRow("SourceWithoutATechnique", source("times", floats("times", "0 2", 2)), inputXml("INPUT", "times"),
             texts(noTarget), restsAtSevenEightNine),
    curveRow("ShortArrayBeforeAWrongSemantic", keys("colors", "0 2", "count='3'"), inputXml("COLOR", "colors"),
             texts(shortArray, noTarget), restsAtSevenEightNine),
    curveRow("WrongSemanticAlone", keys("colors", "0 2", "count='2'"), inputXml("COLOR", "colors"),
             texts("animation: Cannot create a float evolution input from: 3", noTarget), restsAtSevenEightNine),
    curveRow("CountsBeforeAShortArrayAndAWrongSemantic", twoTimes + keys("colors", "1", "count='3'"),
             inputXml("INPUT", "times") + inputXml("COLOR", "colors"), texts(otherCounts, noTarget),
             restsAtSevenEightNine));

// --- cameras ---

std::string eye(const std::string& optics, const std::string& extra = "")
{
    return "<library_cameras><camera id='eye' name='Eye'>" + optics + extra + "</camera></library_cameras>";
}

std::string target(const std::string& text)
{
    return "<extra><technique profile='FCOLLADA'><target>" + text + "</target></technique></extra>";
}

const std::string square = optics("<xfov>90</xfov><yfov>90</yfov><znear>1</znear><zfar>5</zfar>");
const std::string viewer = "<node id='n'><translate sid='t'>0 0 0</translate><instance_camera url='#eye'/></node>";
const char* const noAspectRatio = "camera: Camera :Eye does not have required aspect ratio data";
const char* const looksAtNothing = "instance: Cannot find lookat node  from camera list";
const char* const unboundEye = "instance: Cannot find camera source eye for this instance";

// From one value at second 0 to another at second 2.
std::string ramp(const std::string& id, const std::string& target, const std::string& values)
{
    return curve(keys(id + "-times", "0 2", "count='2'") + keys(id + "-values", values, "count='2'"),
                 inputXml("INPUT", id + "-times") + inputXml("OUTPUT", id + "-values"), target);
}

/// The two scales and the two depth terms after a second.
std::string projection(VisualScene& scene)
{
    const libMath::Matrix<float, 4, 4>& matrix = scene.cameraList()[0]->projection(1.0);
    return number(double(matrix[0])) + " " + number(double(matrix[5])) + " " + number(double(matrix[10])) + " " +
           number(double(matrix[14]));
}

std::string views(VisualScene& scene)
{
    libVideo::CameraInstance& instance = *scene.cameraList()[0];
    const std::string before = listed(instance.view(), 16);
    return before + " and " + listed(instance.view(1.0), 16) + ", node at " + listed(firstNode(scene).position(1.0), 3);
}

std::string cameraLooksAt(VisualScene& scene)
{
    const libVideo::NodeLink node = scene.cameraList()[0]->lookAtNode();
    return node ? node->id().data() : "nothing";
}

const std::string zeroes = "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0";

INSTANTIATE_ROWS(
    Cameras, BadDocumentTest, {"CameraWithoutOptics", eye(""), viewer, texts(unboundEye), cameraCount, "0 cameras"},
    {"CameraWithoutACommonTechnique", eye("<optics/>"), viewer, texts(unboundEye), cameraCount, "0 cameras"},
    // The cotangent of half of 90 degrees is 1; planes at 2 and 4 make the depth terms 4 / 2 and -2 · 4 / 2.
    {"AnimatedCameraOfOneAngle",
     eye(optics("<xfov sid='x'>20</xfov><znear sid='b'>7</znear><zfar sid='f'>9</zfar>")) + "<library_animations>" +
         ramp("1", "eye/x", "60 120") + ramp("2", "eye/b", "1 3") + ramp("3", "eye/f", "2 6") + "</library_animations>",
     viewer, texts(noAspectRatio, looksAtNothing, noAspectRatio), projection, "1 0 2 -4"},
    {"AnimatedCameraOfTheOtherAngle",
     eye(optics("<yfov sid='y'>20</yfov><znear sid='b'>7</znear><zfar sid='f'>9</zfar>")) + "<library_animations>" +
         ramp("1", "eye/y", "60 120") + ramp("2", "eye/b", "1 3") + ramp("3", "eye/f", "2 6") + "</library_animations>",
     viewer, texts(noAspectRatio, looksAtNothing, noAspectRatio), projection, "0 1 2 -4"},
    {"ViewOfACameraThatLooksAtNothing",
     eye(square) + "<library_animations>" +
         curve(twoTimes + keys("values", "0 0 0 4 8 2", "count='2' stride='3'"),
               inputXml("INPUT", "times") + inputXml("OUTPUT", "values")) +
         "</library_animations>",
     viewer, texts(looksAtNothing), views, zeroes + " and " + zeroes + ", node at 2 4 1"},
    {"LookAtTextThatIsNoReference", eye(square, target(" my scene.dae# größe\n")), viewer + "<node id='größe'/>",
     texts(), cameraLooksAt, "größe"},
    {"LookAtTextWithoutAMark", eye(square, target("größe")), viewer + "<node id='größe'/>", texts(looksAtNothing),
     cameraLooksAt, "nothing"});

// --- lights ---

std::string light(const std::string& content, const std::string& extra = "")
{
    return "<library_lights><light id='l'><technique_common>" + content + "</technique_common>" + extra +
           "</light></library_lights>";
}

const std::string lit = "<node id='n'><instance_light url='#l'/></node>";
const char* const spotWithoutTarget = "instance: Cannot resolve lookAtNode with id ";
const char* const shortLightColor = "light: Color has fewer than three values";

std::string spotLooksAt(VisualScene& scene)
{
    const libVideo::NodeLink node = scene.spotLightList()[0]->lookatNode();
    return node ? node->id().data() : "nothing";
}

INSTANTIATE_ROWS(Lights, BadDocumentTest,
                 {"PointWithoutColor",
                  light("<point><constant_attenuation>2</constant_attenuation><linear_attenuation>3"
                        "</linear_attenuation><quadratic_attenuation>4</quadratic_attenuation></point>"),
                  lit, texts("light: PointLight has no color component"), pointLight, "color 1 1 1, fades 2 3 4"},
                 {"PointWithoutAttenuations", light("<point><color>0.5 0.25 0.125</color></point>"), lit, texts(),
                  pointLight, "color 0.5 0.25 0.125, fades 0 0 0"},
                 {"PointOfTwoNumbers",
                  light("<point><color>0.5 0.25</color><linear_attenuation>3</linear_attenuation></point>"), lit,
                  texts(shortLightColor), pointLight, "color 1 1 1, fades 0 3 0"},
                 {"SpotWithoutAngleAndExponent", light("<spot><color>0.5 0.25 0.125</color></spot>"), lit,
                  texts(spotWithoutTarget), spotLight, "color 0.5 0.25 0.125, fades 0 0 0, cone 180 0 0"},
                 {"SpotWithoutColor",
                  light("<spot><falloff_angle>30</falloff_angle><linear_attenuation>3</linear_attenuation></spot>"),
                  lit, texts("light: SpotLight has no color component", spotWithoutTarget), spotLight,
                  "color 1 1 1, fades 0 0 0, cone 0 0 0"},
                 {"SpotOfTwoNumbers", light("<spot><color>0.5 0.25</color><falloff_angle>30</falloff_angle></spot>"),
                  lit, texts(shortLightColor, spotWithoutTarget), spotLight, "color 1 1 1, fades 0 0 0, cone 30 0 0"},
                 {"SpotTargetThatIsNoReference", light("<spot><color>1 1 1</color></spot>", target("# größe\n")),
                  lit + "<node id='größe'/>", texts(), spotLooksAt, "größe"});

// --- nodes ---

BadDocument nodeRow(const char* name, const std::string& content, const char* result)
{
    return {name, "", "<node id='n'>" + content + "</node>", texts(), transform, result};
}

INSTANTIATE_ROWS(Nodes, BadDocumentTest,
                 nodeRow("TranslationOfTwoNumbers", "<translate>1 2</translate>", "1 0 0 1 0 1 0 2 0 0 1 0 0 0 0 1"),
                 nodeRow("RotationWithoutAnAngle", "<rotate>0 0 1</rotate>", "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1"),
                 nodeRow("ScaleOfTwoNumbers", "<scale>2 3</scale>", "2 0 0 0 0 3 0 0 0 0 0 0 0 0 0 1"),
                 nodeRow("MatrixOfFiveNumbers", "<matrix>1 2 3 4 5</matrix>", "1 2 3 4 5 0 0 0 0 0 0 0 0 0 0 0"),
                 nodeRow("MatrixOfNoNumbers", "<matrix/>", zeroes.c_str()));

// --- materials ---

std::string effectOf(const std::string& newparams, const std::string& shaders, const std::string& effectReference)
{
    return "<library_images><image id='empty'><init_from></init_from></image><image id='i'><init_from>./i.png"
           "</init_from></image></library_images>"
           "<library_materials><material id='m'><instance_effect url='" +
           effectReference + "'/></material></library_materials><library_effects><effect id='e'>" +
           "<profile_COMMON id='profile'>" + newparams + "<technique sid='t'>" + shaders +
           "</technique></profile_COMMON></effect></library_effects>" +
           meshXml(places + triangles(inputXml("POSITION", "s", "0"), "1", "<p>0 1 2</p>"));
}

const std::string painted = "<node id='n'><instance_geometry url='#g'><bind_material><technique_common>"
                            "<instance_material symbol='skin' target='#m'/></technique_common></bind_material>"
                            "</instance_geometry></node>";

BadDocument effectRow(const char* name, const std::string& newparams, const std::string& shaders, const Texts& lines,
                      const std::string& result, const std::string& effectReference = "#e")
{
    return {name, effectOf(newparams, shaders, effectReference), painted, lines, material, result};
}

std::string shaderOf(const std::string& kind, const std::string& diffuse, const char* shininess = "4")
{
    return "<" + kind + "><diffuse>" + diffuse + "</diffuse><shininess><float>" + shininess + "</float></shininess></" +
           kind + ">";
}

std::string textureOf(const std::string& name)
{
    return "<texture texture='" + name + "' texcoord='UV'/>";
}

std::string newparam(const std::string& sid, const std::string& content)
{
    return "<newparam sid='" + sid + "'>" + content + "</newparam>";
}

std::string sampler(const std::string& sid)
{
    return newparam(sid, "<sampler2D><source>surface</source></sampler2D>");
}

std::string surface(const std::string& initializers)
{
    return newparam("surface", "<surface type='2D'>" + initializers + "</surface>");
}

const std::string ofImage = "<init_from>i</init_from>";
const std::string darkColor = "<color>0.5 0.25 0.125 1</color>";
const std::string white = "diffuse 1 1 1, shininess 4";
const char* const noTexture = "material: Unable to initialize texture";
const char* const noInitializer = "texture: Texture has no surface initiailzer";

INSTANTIATE_ROWS(
    Materials, BadDocumentTest,
    effectRow("EffectOfNothing", "", shaderOf("blinn", darkColor), texts(), "no material, and the geometry",
              "#nowhere"),
    effectRow("EffectWhoseReferenceIsLost", "", shaderOf("blinn", darkColor), texts(), "no material, and the geometry",
              "#e[1]"),
    effectRow("EffectThatIsThere", "", shaderOf("blinn", darkColor), texts(),
              "diffuse 0.5 0.25 0.125, shininess 4, and the geometry"),
    effectRow("ColorOfTwoNumbers", "", shaderOf("phong", "<color>0.5 0.25</color>"),
              texts("material: Color has fewer than three values"), white + ", and the geometry"),
    effectRow("TextureOfNothing", sampler("sampler") + surface(ofImage), shaderOf("blinn", textureOf("nothing")),
              texts(noTexture), white + ", texture '', and the geometry"),
    effectRow("TextureThatNamesAnImage", sampler("sampler") + surface(ofImage), shaderOf("blinn", textureOf("i")),
              texts(noTexture), white + ", texture '', and the geometry"),
    effectRow("NewparamBeforeTheImageOfItsName", sampler("i") + surface(ofImage), shaderOf("blinn", textureOf("i")),
              texts(), white + ", texture './i.png', and the geometry"),
    effectRow("NewparamWhoseNameLooksLikeAPath", sampler("maps/skin") + surface(ofImage),
              shaderOf("blinn", textureOf("maps/skin")), texts(), white + ", texture './i.png', and the geometry"),
    effectRow("PathToANewparam", sampler("sampler") + surface(ofImage), shaderOf("blinn", textureOf("profile/sampler")),
              texts(), white + ", texture './i.png', and the geometry"),
    effectRow("ImageOfAnEmptyFile", sampler("sampler") + surface("<init_from>empty</init_from>"),
              shaderOf("blinn", textureOf("sampler")), texts(), white + ", texture '', and the geometry"),
    effectRow("ImageOfAnEmptyFileBeforeAnother", sampler("sampler") + surface("<init_from>empty</init_from>" + ofImage),
              shaderOf("blinn", textureOf("sampler")), texts(), white + ", texture './i.png', and the geometry"),
    effectRow("NewparamWithoutASurface", sampler("sampler") + newparam("surface", "<float>1</float>"),
              shaderOf("blinn", textureOf("sampler")), texts(noInitializer), white + ", texture '', and the geometry"),
    effectRow("SurfaceWithoutAnInitializer", sampler("sampler") + surface(""), shaderOf("blinn", textureOf("sampler")),
              texts(noInitializer), white + ", texture '', and the geometry"),
    // Of two elements that exclude each other, the first in the document counts, without a message.
    effectRow("BlinnBeforePhong", "", shaderOf("blinn", darkColor, "4") + shaderOf("phong", "", "5"), texts(),
              "diffuse 0.5 0.25 0.125, shininess 4, and the geometry"),
    effectRow("PhongBeforeBlinn", "", shaderOf("phong", darkColor, "5") + shaderOf("blinn", "", "4"), texts(),
              "diffuse 0.5 0.25 0.125, shininess 5, and the geometry"),
    effectRow("ColorBeforeTexture", sampler("sampler") + surface(ofImage),
              shaderOf("blinn", darkColor + textureOf("sampler")), texts(),
              "diffuse 0.5 0.25 0.125, shininess 4, and the geometry"),
    effectRow("TextureBeforeColor", sampler("sampler") + surface(ofImage),
              shaderOf("blinn", textureOf("sampler") + darkColor), texts(),
              white + ", texture './i.png', and the geometry"));

// --- elements without anything in them ---

INSTANTIATE_ROWS(
    Bare, BadDocumentTest,
    {"ElementsWithoutAttributesAndChildren",
     "<library_animations><animation/><animation><channel/></animation><animation><source/><sampler id='sampler'>"
     "<input/></sampler><channel source='#sampler'/></animation></library_animations>"
     "<library_cameras><camera/></library_cameras><library_lights><light/><light><technique_common/></light>"
     "</library_lights><library_geometries><geometry/><geometry><mesh/></geometry></library_geometries>"
     "<library_materials><material/></library_materials><library_effects><effect/></library_effects>"
     "<library_images><image/></library_images>",
     "<node><instance_camera/><instance_geometry/></node><node><instance_light/></node>",
     texts("animation: Cannot create an animation without a channel element.",
           "animation: Cannot create an animation without a channel that points to a valid sampler element.",
           "instance: domInstance_camera does not point to a camera element", "visualScene: Not a geometry element",
           "visualScene: domInstance_light does not point to a light element"),
     [](VisualScene& scene) { return std::to_string(scene.root().children().size()) + " nodes"; }, "2 nodes"});

// --- what starts at zero ---

struct Lamp : libVideo::PointLight {
    Lamp() : PointLight("lamp") {}
};

struct SpotLamp : libVideo::SpotLight {
    SpotLamp() : SpotLight("lamp") {}
};

TEST(UnsetFieldTest, StartsAtZero)
{
    const MadeInUsedMemory<libVideo::Rotation> rotation;
    EXPECT_EQ(0.0, badRotationAngle(*rotation));
    const MadeInUsedMemory<libVideo::BlinnMaterial> blinn;
    EXPECT_EQ(nullptr, badMaterialProfile(*blinn));
    const MadeInUsedMemory<Scene> scene;
    EXPECT_EQ(0u, badSceneReserved(*scene));
    const MadeInUsedMemory<VisualScene> visualScene;
    EXPECT_EQ(0u, badVisualSceneReserved(*visualScene));
}

TEST(UnsetFieldTest, LightsAreWhiteAndNothingElse)
{
    const MadeInUsedMemory<Lamp> point;
    EXPECT_EQ("1 1 1", listed((*point).color(), 3));
    EXPECT_EQ(0.0f, (*point).constantAttenuation());
    EXPECT_EQ(0.0f, (*point).linearAttenuation());
    EXPECT_EQ(0.0f, (*point).quadraticAttenuation());
    const MadeInUsedMemory<SpotLamp> spot;
    EXPECT_EQ("1 1 1", listed((*spot).color(), 3));
    EXPECT_EQ(0.0f, (*spot).constantAttenuation());
    EXPECT_EQ(0.0f, (*spot).linearAttenuation());
    EXPECT_EQ(0.0f, (*spot).quadraticAttenuation());
    EXPECT_EQ(0.0f, (*spot).innerConeAngle());
    EXPECT_EQ(0.0f, (*spot).outerConeAngle());
    EXPECT_EQ(0.0f, (*spot).falloffExponent());
}

TEST(UnsetFieldTest, RecordOfACurveIsAtSecondZeroAndLinear)
{
    const MadeInUsedMemory<libVideo::Evolution> record;
    EXPECT_EQ(0.0, (*record).time);
    EXPECT_EQ(libVideo::LINEAR, (*record).interpolation);
}

// --- misuse by a host ---

struct Misuse : Row {
    const char* message;
    std::function<void()> call;
};

class MisuseTest : public testing::TestWithParam<Misuse> {};

TEST_P(MisuseTest, ThrowsNullPointerThatSaysWhat)
{
    const LogCapture log;
    try {
        GetParam().call();
        ADD_FAILURE() << "nothing thrown";
    } catch (const vesk::NullPointer& misuse) {
        EXPECT_STREQ(GetParam().message, misuse.what());
    }
    EXPECT_EQ("", log.text());
}

/// A call in a document with a camera "eye" and a node "lamp".
template <class Call>
std::function<void()> withDocument(const Call& call)
{
    return [call] {
        ColladaBuilder builder("<library_cameras><camera id='eye'>" + square + "</camera></library_cameras>");
        builder.addScene("<node id='lamp'/>");
        builder.open();
        call(builder);
    };
}

INSTANTIATE_ROWS(EmptyHandles, MisuseTest,
                 {"AnimationOfANode", "Cannot add an empty animation handle to node lamp",
                  withDocument([](ColladaBuilder& builder) {
                      libVideo::Node(*builder.element<domNode>("lamp")).addAnimation(libVideo::AnimationHandle());
                  })},
                 {"AnimationOfACamera", "Cannot add an empty animation handle to camera eye",
                  withDocument([](ColladaBuilder& builder) {
                      const LogCapture quiet;
                      libVideo::PerspectiveCamera camera(builder.element<domCamera>("eye"), builder.dae());
                      camera.addAnimation(libVideo::AnimationHandle());
                  })},
                 {"NodeOfAGeometry", "Cannot list an empty node handle on geometry ",
                  [] { libVideo::Geometry().addNode(libVideo::NodeHandle()); }});

INSTANTIATE_ROWS(MissingCamera, MisuseTest,
                 {"Projection", "Camera instance has no camera",
                  [] {
                      const libVideo::CameraInstance instance;
                      instance.projection();
                  }},
                 {"ProjectionAtATime", "Camera instance has no camera",
                  [] { libVideo::CameraInstance().projection(1.0); }},
                 {"AspectRatio", "Camera instance has no camera",
                  [] { libVideo::CameraInstance().setAspectRatio(1.0); }});

INSTANTIATE_ROWS(NullElements, MisuseTest,
                 {"Accessor", "Asked to load from a null element: AccessorFloat",
                  [] { libVideo::AccessorFloat().createFromCollada(nullptr); }},
                 {"Source", "Asked to load from a null element: SourceFloat",
                  [] { libVideo::SourceFloat().createFromCollada(nullptr); }},
                 {"Mesh", "Asked to load from a null element: Mesh",
                  [] { libVideo::Mesh().createFromCollada(nullptr); }},
                 {"Geometry", "Asked to load from a null element: Geometry",
                  [] { libVideo::Geometry().createFromCollada(nullptr); }},
                 {"Texture", "Asked to load from a null element: Texture",
                  [] { libVideo::Texture().createFromCollada(nullptr, nullptr); }},
                 {"Camera", "Asked to load from a null element: PerspectiveCamera",
                  withDocument([](ColladaBuilder& builder) { libVideo::PerspectiveCamera(nullptr, builder.dae()); })},
                 {"Animation", "Asked to load from a null element: Animation",
                  withDocument([](ColladaBuilder& builder) { libVideo::Animation(nullptr, builder.dae()); })});

Texts linesOf(const LogCapture& log)
{
    const std::string prefix = "libVideo.";
    Texts lines;
    for (const LogLine& line : log.lines()) {
        EXPECT_EQ(3, line.priority) << line.text;
        EXPECT_EQ(prefix, line.channel.substr(0, prefix.size()));
        lines.push_back(line.channel.substr(prefix.size()) + ": " + line.words());
    }
    return lines;
}

} // namespace
