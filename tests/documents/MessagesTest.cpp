#include "support/ColladaBuilder.h"
#include "support/Files.h"
#include "support/LogCapture.h"
#include "support/Rows.h"
#include "support/Words.h"

#include <libVideo/SceneGraph.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <regex>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

// All messages of the library in one table, each with its cause, and a check that the table is complete.

namespace {

using libVideo::Scene;
using libVideo::VisualScene;
using namespace testSupport;

/// The outcome of a load or a call as text, and the document if there is one.
struct Outcome {
    std::string result;
    std::string path;
};

struct Message : Row {
    const char* channel;               ///< without "libVideo."
    const char* pattern;               ///< the text, with "{}" for each value
    std::vector<std::string> values;   ///< "$FILE" stands for the path of the document
    std::function<Outcome()> cause;    ///< empty if nothing can cause it
    const char* result;                ///< result of the cause, or the reason why there is none
    std::vector<std::string> others{}; ///< texts of further messages, in order
};

const std::vector<Message>& messages();
/// The messages that something can cause.
std::vector<Message> reachable();
std::string channelOf(const Message& row);
/// The pattern with its values filled in.
std::string wordsOf(const Message& row, const std::string& path);

class MessagesTest : public testing::TestWithParam<Message> {};

TEST_P(MessagesTest, IsLoggedOnceWithItsWordsOnItsChannel)
{
    const Message& row = GetParam();
    const LogCapture log;
    const Outcome outcome = row.cause();
    EXPECT_EQ(row.result, outcome.result);

    const std::string words = wordsOf(row, outcome.path);
    std::vector<std::string> others;
    unsigned found = 0;
    for (const LogLine& line : log.lines()) {
        EXPECT_EQ(3, line.priority) << line.text;
        if (line.channel == channelOf(row) && line.words() == words) {
            ++found;
        } else {
            others.push_back(line.words());
        }
    }
    EXPECT_EQ(1u, found) << "'" << words << "' in\n" << log.text();
    EXPECT_EQ(row.others, others);
}

INSTANTIATE_TEST_SUITE_P(Table, MessagesTest, testing::ValuesIn(reachable()), rowName);

// --- what causes a message ---

std::string number(double value)
{
    std::string text = std::to_string(value);
    text.erase(text.find_last_not_of('0') + 1);
    return text.back() == '.' ? text.substr(0, text.size() - 1) : text;
}

std::string answer(bool value)
{
    return value ? "true" : "false";
}

using Describe = std::function<std::string(VisualScene&)>;

Outcome loadText(const std::string& xml, const Describe& describe = nullptr)
{
    const TemporaryFile file(xml);
    Scene scene;
    const bool isLoaded = scene.createFromCollada(file.path().c_str());
    return {answer(isLoaded) + (describe ? ", " + describe(scene.visualScene()) : ""), file.path()};
}

std::function<Outcome()> document(const std::string& libraries, const std::string& nodes,
                                  const Describe& describe = nullptr)
{
    return [=] { return loadText(ColladaBuilder(libraries).addScene(nodes).text(), describe); };
}

/// A document with the `<scene>` of the row.
std::function<Outcome()> sceneOf(const std::string& scene)
{
    return [=] {
        return loadText(ColladaBuilder("<library_visual_scenes><visual_scene id='empty'/></library_visual_scenes>"
                                       "<library_nodes><node id='n'/></library_nodes>" +
                                       scene)
                            .text());
    };
}

std::function<Outcome()> host(const std::function<std::string()>& call)
{
    return [=] { return Outcome{call(), ""}; };
}

std::string instancesOf(VisualScene& scene)
{
    return std::to_string(scene.cameraList().size()) + " cameras, " + std::to_string(scene.pointLightList().size()) +
           " points, " + std::to_string(scene.spotLightList().size()) + " spots";
}

// --- documents of animations ---

// A node without id takes the animation that failed, so that no message says that it finds no node.
const std::string bareNode = "<node/>";

std::string array(const std::string& kind, const std::string& id, unsigned count, const std::string& values)
{
    return "<" + kind + " id='" + id + "' count='" + std::to_string(count) + "'>" + values + "</" + kind + ">";
}

std::string curveInput(const std::string& semantic, const std::string& values, const std::string& accessor)
{
    return "<source id='" + semantic + "'>" + values + "<technique_common><accessor source='#" + semantic + "-array' " +
           accessor + "/></technique_common></source>";
}

std::string animation(const std::string& sources, const std::string& inputs)
{
    return "<library_animations><animation>" + sources + "<sampler id='sampler'>" + inputs +
           "</sampler><channel source='#sampler' target='n/t'/></animation></library_animations>";
}

std::string input(const std::string& semantic)
{
    return "<input semantic='" + semantic + "' source='#" + semantic + "'/>";
}

std::string floatCurve(const std::string& semantic, unsigned count, const std::string& values,
                       const std::string& accessor)
{
    return curveInput(semantic, array("float_array", semantic + "-array", count, values), accessor);
}

std::string nameCurve(const std::string& semantic, const std::string& accessor)
{
    return curveInput(semantic, array("Name_array", semantic + "-array", 2, "LINEAR LINEAR"), accessor);
}

// --- calls for cameras and lights ---

std::string camera(const std::string& optics)
{
    return "<camera id='bad' name='Eye'>" + optics + "</camera>";
}

/// The result of the camera loader for an element, on a camera that has loaded before.
std::function<Outcome()> loadCamera(const std::string& element)
{
    return host([=] {
        ColladaBuilder builder("<library_cameras><camera id='good'>" +
                               optics("<xfov>90</xfov><yfov>90</yfov><znear>1</znear><zfar>5</zfar>") + "</camera>" +
                               element + "</library_cameras>");
        if (builder.open() == nullptr) {
            throw std::runtime_error("the document does not open: " + builder.text());
        }
        libVideo::PerspectiveCamera loaded(builder.element<domCamera>("good"), builder.dae());
        return answer(loaded.createFromCollada(builder.element<domCamera>("bad"), builder.dae()));
    });
}

/// The result of a list builder without a document, and how many entries a filled list keeps.
template <class Handle, class Build>
std::string withoutDocument(const Build& build)
{
    vesk::Array<Handle> list;
    list.append(Handle());
    const unsigned result = build(list);
    return std::to_string(result) + ", " + std::to_string(list.size()) + " kept";
}

std::string lightWith(const std::string& content)
{
    return "<library_lights><light id='l'><technique_common>" + content +
           "</technique_common></light></library_lights>";
}

const std::string litNode = "<node id='n'><instance_light url='#l'/></node>";

std::string pointColor(VisualScene& scene)
{
    const libVideo::PointLight& light = *scene.pointLightList()[0]->pointLight();
    return number(double(light.color()[0])) + " " + number(double(light.color()[1]));
}

std::string spotColor(VisualScene& scene)
{
    const libVideo::SpotLight& light = *scene.spotLightList()[0]->spotLight();
    return number(double(light.color()[0])) + " " + number(double(light.color()[1]));
}

std::string spotTarget(const std::string& target)
{
    return "<library_lights><light id='l'><technique_common><spot><color>1 1 1</color></spot></technique_common>"
           "<extra><technique profile='FCOLLADA'><target>#" +
           target + "</target></technique></extra></light></library_lights>";
}

// --- documents of geometries ---

std::string geometry(const std::string& content)
{
    return "<library_geometries><geometry id='g'>" + content + "</geometry></library_geometries>";
}

std::string triangles(const std::string& inputs, const std::string& rest = "<p>0 0 0</p>", unsigned count = 1)
{
    return "<triangles count='" + std::to_string(count) + "'>" + inputs + rest + "</triangles>";
}

std::string source(const std::string& content, const std::string& id = "s")
{
    return "<source id='" + id + "'>" + content + "</source>";
}

std::string accessor(const std::string& attributes, const std::string& params)
{
    return "<technique_common><accessor " + attributes + ">" + params + "</accessor></technique_common>";
}

const std::string place = array("float_array", "s-array", 3, "1 2 3");
const std::string goodSource = source(place + accessor("source='#s-array' count='1' stride='3'", PARAMS_XYZ));
const std::string position = inputXml("POSITION", "s", "0");
const std::string shownNode = "<node id='n'><instance_geometry url='#g'/></node>";

std::string primitives(VisualScene& scene)
{
    const auto* const bucket = scene.geometryTable().lookup("g");
    if (bucket == nullptr) {
        return "no geometry";
    }
    std::string text;
    for (const auto& primitive : bucket->value->mesh().primitives()) {
        text += (text.empty() ? "" : ", ") + std::to_string(primitive->count()) + " of " +
                std::to_string(primitive->totalByteSize()) + " bytes";
    }
    return text;
}

std::function<Outcome()> meshOf(const std::string& content)
{
    return document(meshXml(content), shownNode, primitives);
}

/// The result of making a source by reference.
std::function<Outcome()> makeSource(const std::string& content, const std::string& reference = "#s")
{
    return host([=] {
        ColladaBuilder builder(
            meshXml(content + "<vertices id='v'><input semantic='POSITION' source='" + reference + "'/></vertices>"));
        if (builder.open() == nullptr) {
            throw std::runtime_error("the document does not open: " + builder.text());
        }
        const domVertices* const vertices = builder.element<domVertices>("v");
        const auto made = libVideo::createSourceFromCollada(vertices->getInput_array()[0]->getSource());
        return std::string(made ? "a source" : "empty");
    });
}

// --- documents of materials ---

std::string effect(const std::string& newparams, const std::string& diffuse)
{
    return "<library_materials><material id='m'><instance_effect url='#e'/></material></library_materials>"
           "<library_effects><effect id='e'><profile_COMMON>" +
           newparams + "<technique sid='t'><blinn><diffuse>" + diffuse +
           "</diffuse></blinn></technique></profile_COMMON></effect></library_effects>";
}

std::string samplerAnd(const std::string& surface)
{
    return "<newparam sid='surface'><surface type='2D'>" + surface +
           "</surface></newparam><newparam sid='sampler'><sampler2D><source>surface</source></sampler2D></newparam>";
}

std::string material(VisualScene& scene)
{
    const auto* const bucket = scene.blinnMaterialTable().lookup("skin");
    if (bucket == nullptr) {
        return "no material";
    }
    const libVideo::BlinnMaterial::Component& component = bucket->value->component();
    return "diffuse " + number(double(component.diffuse[0])) + " " + number(double(component.diffuse[1])) +
           (component.diffuseTexture ? ", texture '" + std::string(component.diffuseTexture->textureFile().data()) + "'"
                                     : "");
}

const std::string texture = "<texture texture='sampler' texcoord='UV'/>";

std::function<Outcome()> materialOf(const std::string& newparams, const std::string& diffuse)
{
    return document(meshXml(goodSource + triangles(position)) + effect(newparams, diffuse),
                    "<node id='n'><instance_geometry url='#g'><bind_material><technique_common>"
                    "<instance_material symbol='skin' target='#m'/></technique_common></bind_material>"
                    "</instance_geometry></node>",
                    material);
}

// --- documents that ask for more than they have a right to ---

const char* const tooMuch = "Asks for more memory than the size of the document allows";

// Any load has room for two of these curves, whose million keys are not in the document.
std::string unbackedCurves(unsigned count)
{
    const std::string curve = "<animation><source id='INPUT'><technique_common><accessor count='1048576'/>"
                              "</technique_common></source><sampler id='sampler'>" +
                              input("INPUT") + "</sampler><channel source='#sampler'/></animation>";
    return "<library_animations>" + repeated(curve, count) + "</library_animations>";
}

// Each input reads 1,000 numbers more of the same array than the previous one.
std::string curveOfManyOutputs(unsigned count)
{
    std::string sources = "<source id='all'>" +
                          array("float_array", "all-array", count * 1'000, repeated("0 ", count * 1'000)) + "</source>";
    std::string inputs;
    for (unsigned i = 1; i <= count; ++i) {
        const std::string id = "s" + std::to_string(i);
        sources += "<source id='" + id + "'><technique_common><accessor source='#all-array' count='1000' stride='" +
                   std::to_string(i) + "'/></technique_common></source>";
        inputs += "<input semantic='OUTPUT' source='#" + id + "'/>";
    }
    return animation(sources, inputs);
}

std::string sourceOfManyParams(const std::string& param, unsigned count)
{
    return source(place + accessor("source='#s-array' count='1' stride='3'", repeated(param, count)));
}

// Vertices of 4,000 bytes, each with its own tuple.
std::string heavyTriangles()
{
    std::string indices;
    for (unsigned i = 0; i < 80'000; ++i) {
        indices += "0 " + std::to_string(i) + " ";
    }
    return sourceOfManyParams("<param name='X' type='float'/>", 1'000) +
           triangles(position + "<input semantic='NORMAL' source='#nothing' offset='1'/>", "<p>" + indices + "</p>",
                     26'666);
}

// A million points of 64 bytes that are not in the document. Any load has room for one such cloud.
std::string unbackedCloud(const std::string& id)
{
    const std::string claims =
        accessor("source='#s-array' count='1048576' stride='16'", repeated("<param name='X' type='float'/>", 16));
    return "<geometry id='" + id + "'><mesh>" + source(place + claims) + "<vertices id='" + id +
           "-v'><input semantic='POSITION' source='#s'/></vertices></mesh></geometry>";
}

/// A document with as many pieces as needed for the last one to exceed the budget of a load.
/// @param bytesEach bytes per piece
std::string justTooMuch(std::uint64_t bytesEach, const std::function<std::string(unsigned)>& textOf)
{
    for (unsigned pieces = 1;; ++pieces) {
        const std::uint64_t allowed = 134'217'728 + std::uint64_t{64} * textOf(pieces).size();
        if (pieces * bytesEach > allowed) {
            return textOf(pieces);
        }
        pieces += static_cast<unsigned>((allowed - pieces * bytesEach) / bytesEach / 2);
    }
}

// The sources have no accessor, so they take no other memory.
std::string verticesAskedForOften()
{
    constexpr unsigned inputs = 2'000;
    return justTooMuch(inputs * 512, [&](unsigned uses) {
        return ColladaBuilder(
                   meshXml(source(place) + "<vertices id='v'>" +
                           repeated("<input semantic='POSITION' source='#s'/>", inputs) + "</vertices>" +
                           triangles(repeated("<input semantic='VERTEX' source='#v' offset='0'/>", uses), "<p/>", 0)))
            .addScene(shownNode)
            .text();
    });
}

// The params have no names, so they are read but make no components.
std::string sourceAskedForOften()
{
    const std::string heavy = sourceOfManyParams("<param type='float'/>", 20'000);
    return justTooMuch(20'000 * (sizeof(libVideo::Data) + sizeof(float)), [&](unsigned inputs) {
        return ColladaBuilder(meshXml(heavy + triangles(repeated(position, inputs), "<p/>", 0)))
            .addScene(shownNode)
            .text();
    });
}

// Textures of one image, whose name has a million characters.
std::string imageShownOften()
{
    constexpr unsigned nameLength = 1'048'576;
    const std::string image = "<library_images><image id='i'><init_from>" + std::string(nameLength, 'x') +
                              "</init_from></image></library_images>";
    const std::string newparams =
        "<newparam sid='surface'><surface type='2D'><init_from>i</init_from></surface></newparam>"
        "<newparam sid='sampler'><sampler2D><source>surface</source></sampler2D></newparam>";
    return justTooMuch(nameLength, [&](unsigned textures) {
        std::string materials;
        std::string effects;
        std::string bindings;
        for (unsigned i = 0; i < textures; ++i) {
            const std::string number = std::to_string(i);
            materials += "<material id='m" + number + "'><instance_effect url='#e" + number + "'/></material>";
            effects += "<effect id='e" + number + "'><profile_COMMON>" + newparams +
                       "<technique sid='t'><blinn><diffuse><texture texture='sampler' texcoord='UV'/></diffuse></blinn>"
                       "</technique></profile_COMMON></effect>";
            bindings += "<instance_material symbol='s" + number + "' target='#m" + number + "'/>";
        }
        return ColladaBuilder(image + "<library_materials>" + materials + "</library_materials><library_effects>" +
                              effects + "</library_effects>" + meshXml(goodSource + triangles(position)))
            .addScene("<node id='n'><instance_geometry url='#g'><bind_material><technique_common>" + bindings +
                      "</technique_common></bind_material></instance_geometry></node>")
            .text();
    });
}

// --- the table ---

std::vector<Message> animationMessages()
{
    const std::string times = floatCurve("INPUT", 2, "1 2", "count='2'");
    return {
        {"AnimationListWithoutADocument", "animation", "Cannot create an animation list from a NULL domCOLLADA pointer",
         texts(), host([] {
             return withoutDocument<libVideo::AnimationHandle>([](auto& list) {
                 DAE dae(nullptr, nullptr, "1.4.1");
                 return libVideo::createAnimationListFromCollada(nullptr, dae, list);
             });
         }),
         "0, 1 kept"},
        {"AnimationWithoutAChannel", "animation", "Cannot create an animation without a channel element.", texts(),
         document("<library_animations><animation/></library_animations>", bareNode), "true"},
        {"AnimationFromNothing", "animation",
         "Cannot create an animation without a channel that points to a valid sampler element.", texts(),
         document("<library_animations><animation><channel source='#nowhere' target='n/t'/></animation>"
                  "</library_animations>",
                  bareNode),
         "true"},
        {"AnimationFromANode", "animation",
         "Cannot create an animation without a channel that points to a valid sampler element.", texts(),
         document("<library_animations><animation><channel source='#n' target='n/t'/></animation>"
                  "</library_animations>",
                  bareNode + "<node id='n'/>"),
         "true"},
        {"AnimationWithoutAnInput", "animation", "Cannot create an animation without any input.", texts(),
         document(animation("", ""), bareNode), "true"},
        {"AnimationOfDifferentCounts", "animation",
         "Cannot create an animation because the counts of all the inputs do not match.", texts(),
         document(animation(times + floatCurve("OUTPUT", 3, "1 2 3", "count='3'"), input("INPUT") + input("OUTPUT")),
                  bareNode),
         "true"},
        {"AnimationBeyondItsArray", "animation",
         "Cannot create an animation because an array is shorter than its accessor says.", texts(),
         document(animation(floatCurve("INPUT", 2, "1 2", "count='3'"), input("INPUT")), bareNode), "true"},
        {"AnimationsOfMoreKeysThanTheDocumentAllows", "animation", tooMuch, texts(),
         document(unbackedCurves(15), bareNode), "true"},
        {"AnimationOfMoreValuesThanTheDocumentAllows", "animation", tooMuch, texts(),
         document(curveOfManyOutputs(260), bareNode), "true"},
        {"AnimationOfColors", "animation", "Cannot create a float evolution input from: {}", texts("3"),
         document(animation(floatCurve("COLOR", 2, "1 2", "count='2'"), input("COLOR")), bareNode), "true"},
        {"AnimationOfUnknownFloats", "animation", "Cannot create a float evolution input from: {}", texts("15"),
         document(animation(floatCurve("SPEED", 2, "1 2", "count='2'"), input("SPEED")), bareNode), "true"},
        {"AnimationOfNamesAsTimes", "animation", "Cannot create a name evolution input from: {}, with a stride of: {}",
         texts("10", "1"), document(animation(nameCurve("INPUT", "count='2'"), input("INPUT")), bareNode), "true"},
        {"AnimationOfNamesInPairs", "animation", "Cannot create a name evolution input from: {}, with a stride of: {}",
         texts("12", "2"),
         document(animation(nameCurve("INTERPOLATION", "count='1' stride='2'"), input("INTERPOLATION")), bareNode),
         "true"},
    };
}

std::vector<Message> cameraAndLightMessages()
{
    return {
        {"CameraWithoutACommonTechnique", "camera", "Camera {} does not have a common technique", texts("Eye"),
         loadCamera(camera("<optics/>")), "false"},
        {"CameraWithoutOptics", "camera", "Camera {} does not have a common technique", texts("Eye"),
         loadCamera(camera("")), "false"},
        {"CameraWithoutPerspective", "camera", "Camera {} does not have perspective optics", texts("Eye"),
         loadCamera(camera("<optics><technique_common/></optics>")), "false"},
        {"CameraWithoutNearPlane", "camera", "Camera {} does not have near plane data", texts("Eye"),
         loadCamera(camera(optics("<xfov>90</xfov><yfov>90</yfov><zfar>5</zfar>"))), "false"},
        {"CameraWithoutFarPlane", "camera", "Camera {} does not have far plane data", texts("Eye"),
         loadCamera(camera(optics("<xfov>90</xfov><yfov>90</yfov><znear>5</znear>"))), "false"},
        {"CameraOfOneAngle", "camera", "Camera :{} does not have required aspect ratio data", texts("Eye"),
         document("<library_cameras>" + camera(optics("<xfov>90</xfov><znear>1</znear><zfar>5</zfar>")) +
                      "</library_cameras>",
                  "<node/>"),
         "true"},
        {"CameraOfNoAngle", "camera", "Camera :{} does not have required aspect ratio data", texts(""),
         document("<library_cameras><camera id='bad'>" + optics("<znear>1</znear><zfar>5</zfar>") +
                      "</camera></library_cameras>",
                  "<node/>"),
         "true"},
        {"CameraListWithoutADocument", "camera", "Cannot create a camera list from a NULL domCOLLADA pointer", texts(),
         host([] {
             return withoutDocument<libVideo::CameraHandle>([](auto& list) {
                 DAE dae(nullptr, nullptr, "1.4.1");
                 return libVideo::createCameraListFromCollada(nullptr, dae, list);
             });
         }),
         "0, 1 kept"},
        {"PointLightListWithoutADocument", "light", "Cannot create a camera list from a NULL domCOLLADA pointer",
         texts(), host([] {
             return withoutDocument<libVideo::PointLightHandle>(
                 [](auto& list) { return libVideo::createPointLightListFromCollada(nullptr, list); });
         }),
         "0, 1 kept"},
        {"SpotLightListWithoutADocument", "light", "Cannot create a camera list from a NULL domCOLLADA pointer",
         texts(), host([] {
             return withoutDocument<libVideo::SpotLightHandle>([](auto& list) {
                 DAE dae(nullptr, nullptr, "1.4.1");
                 return libVideo::createSpotLightListFromCollada(nullptr, dae, list);
             });
         }),
         "0, 1 kept"},
        {"PointLightWithoutColor", "light", "PointLight has no color component", texts(),
         document(lightWith("<point/>"), litNode, pointColor), "true, 1 1"},
        {"SpotLightWithoutColor", "light", "SpotLight has no color component", texts(),
         document(lightWith("<spot/>"), litNode + "<node/>", spotColor), "true, 1 1"},
        {"PointLightOfTwoColors", "light", "Color has fewer than three values", texts(),
         document(lightWith("<point><color>0.5 0.25</color></point>"), litNode, pointColor), "true, 1 1"},
        {"SpotLightOfTwoColors", "light", "Color has fewer than three values", texts(),
         document(lightWith("<spot><color>0.5 0.25</color></spot>"), litNode + "<node/>", spotColor), "true, 1 1"},
    };
}

std::vector<Message> instanceMessages()
{
    const std::string eye = optics("<xfov>90</xfov><yfov>90</yfov><znear>1</znear><zfar>5</zfar>");
    const auto library = [&eye](const std::string& extra) {
        return "<library_cameras><camera id='eye'>" + eye + extra + "</camera></library_cameras>";
    };
    const std::string viewer = "<node id='n'><instance_camera url='#eye'/></node>";
    return {
        {"CameraInstanceOfNothing", "instance", "domInstance_camera does not point to a camera element", texts(),
         document("", "<node id='n'><instance_camera url='#nowhere'/></node>", instancesOf),
         "true, 0 cameras, 0 points, 0 spots"},
        {"CameraInstanceOfANode", "instance", "Cannot find camera source {} for this instance", texts("n"),
         document("", "<node id='n'><instance_camera url='#n'/></node>", instancesOf),
         "true, 0 cameras, 0 points, 0 spots"},
        {"CameraInstanceThatLooksAtNothing", "instance", "Cannot find lookat node {} from camera list", texts(""),
         document(library(""), viewer, instancesOf), "true, 1 cameras, 0 points, 0 spots"},
        {"CameraInstanceThatLooksAtAnotherCase", "instance", "Cannot find lookat node {} from camera list", texts("N"),
         document(library("<extra><technique profile='FCOLLADA'><target>#N</target></technique></extra>"), viewer,
                  instancesOf),
         "true, 1 cameras, 0 points, 0 spots"},
        {"SpotInstanceThatLooksAtNothing", "instance", "Cannot resolve lookAtNode with id {}", texts(""),
         document(lightWith("<spot><color>1 1 1</color></spot>"), litNode, instancesOf),
         "true, 0 cameras, 0 points, 1 spots"},
        {"SpotInstanceThatLooksAtAnotherCase", "instance", "Cannot resolve lookAtNode with id {}", texts("N"),
         document(spotTarget("N"), litNode, instancesOf), "true, 0 cameras, 0 points, 1 spots"},
        {"DirectionOfASpotInstanceWithoutNodes", "instance", "SpotLightInstace does not have valid internal nodes",
         texts(), host([] {
             const auto direction = libVideo::SpotLightInstance().lookAtVector();
             return number(double(direction[0])) + " " + number(double(direction[1])) + " " +
                    number(double(direction[2]));
         }),
         "0 0 0"},
    };
}

std::vector<Message> sourceMessages()
{
    const std::string noValues = array("float_array", "s-array", 0, "");
    return {
        {"AccessorOfMoreParamsThanTheDocumentAllows", "accessor", tooMuch, texts(),
         [] { return loadText(sourceAskedForOften(), primitives); }, "true, 0 of 0 bytes"},
        {"AccessorOfNothing", "accessor", "Data source is not a float array {}", texts("#nowhere"),
         meshOf(source(place + accessor("source='#nowhere' count='1' stride='3'", PARAMS_XYZ)) +
                triangles(position, "<p/>", 0)),
         "true, 0 of 0 bytes"},
        {"AccessorOfNames", "accessor", "Data source is not a float array {}", texts("Name_array"),
         meshOf(source(place + accessor("source='#names' count='1' stride='3'", PARAMS_XYZ)) +
                source(array("Name_array", "names", 1, "A"), "other") + triangles(position, "<p/>", 0)),
         "true, 0 of 0 bytes"},
        {"AccessorBeyondItsArray", "accessor", "Accessor reaches beyond its float array", texts(),
         meshOf(source(place + accessor("source='#s-array' count='2' stride='3'", PARAMS_XYZ)) + triangles(position)),
         "true, 1 of 12 bytes"},
        {"AccessorWithoutData", "accessor", "No data to read from the accessor", texts(),
         meshOf(source(place + accessor("source='#nowhere' count='1' stride='3'", PARAMS_XYZ)) + triangles(position)),
         "true, 1 of 0 bytes", texts("Data source is not a float array #nowhere")},
        {"SourceOfNothing", "source", "Element {} is not a source", texts("#nowhere"), makeSource("", "#nowhere"),
         "empty"},
        {"SourceThatIsVertices", "source", "Element {} is not a source", texts("v"), makeSource("", "#v"), "empty"},
        {"SourceWithoutAnArray", "source", "Source has no float array", texts(), makeSource(source("")), "empty"},
        {"SourceLoadedWithoutAnArray", "source", "Source has no float array", texts(), host([] {
             ColladaBuilder builder(meshXml(source("")));
             builder.open();
             libVideo::SourceFloat loaded;
             return answer(loaded.createFromCollada(builder.element<domSource>("s")));
         }),
         "false"},
        {"SourceOfNoValuesWithoutATechnique", "source", "Not interested in <source> that has no data and accessors",
         texts(), makeSource(source(noValues)), "empty"},
        {"SourceOfNoValuesWithoutParams", "source", "Not interested in <accessor> that has no param", texts(),
         makeSource(source(noValues + accessor("source='#s-array' count='1'", ""))), "empty"},
        {"SourceOfNoValuesOfAnotherType", "source", "Cannot instantiate a Source object with type {}", texts("int"),
         makeSource(source(noValues + accessor("source='#s-array' count='1'", "<param name='X' type='int'/>"))),
         "empty"},
        {"SourceOfAnOddStride", "source", "Does not have a matching float data type for stride {}", texts("5"),
         makeSource(source(array("float_array", "s-array", 5, "1 2 3 4 5") +
                           accessor("source='#s-array' count='1' stride='5'", PARAMS_XYZ))),
         "a source"},
    };
}

std::vector<Message> geometryMessages()
{
    return {
        {"TrianglesOfMoreBytesThanTheDocumentAllows", "primitive", tooMuch, texts(), meshOf(heavyTriangles()),
         "true, 0 of 0 bytes",
         texts("Accessor reaches beyond its float array", "Element #nothing is not a source",
               "Does not have a class representation for source nothing")},
        {"CloudsOfMoreBytesThanTheDocumentAllows", "primitive", tooMuch, texts(),
         document("<library_geometries>" + unbackedCloud("g") + unbackedCloud("h") + "</library_geometries>",
                  "<node id='n'><instance_geometry url='#g'/><instance_geometry url='#h'/>"
                  "</node>",
                  primitives),
         "true, 1048576 of 67108864 bytes",
         texts("Accessor reaches beyond its float array", "Accessor reaches beyond its float array")},
        {"VerticesOfMoreSourcesThanTheDocumentAllows", "input", tooMuch, texts(),
         [] { return loadText(verticesAskedForOften(), primitives); }, "true, 0 of 0 bytes"},
        {"GeometryThatIsNoMesh", "geometry", "Program does not handle geometry type other than meshes right now.",
         texts(),
         document(geometry("<spline><control_vertices><input semantic='POSITION' source='#s'/></control_vertices>"
                           "</spline>"),
                  shownNode, primitives),
         "true, no geometry"},
        {"MeshThatFails", "geometry", "Mesh instantiation failed", texts(), nullptr,
         "a mesh without <triangles> and <lines> counts one point cloud, whether that loads or not, so that no mesh "
         "comes out with nothing to show"},
        {"VerticesOfAnUnknownSemantic", "input", "Does not recognize input semantic {}", texts("SPEED"),
         meshOf(goodSource + "<vertices id='v'>" + input("SPEED") +
                "<input semantic='POSITION' source='#s'/></vertices>"),
         "true, 1 of 12 bytes"},
        {"VerticesOfAnInvalidType", "input", "Cannot use an invalid type in a vertex layout", texts(), nullptr,
         "a source that is made from a document is of a float type from its start, also when its accessor fails or "
         "has an odd stride; only one made without an element is of the invalid type, and nothing takes such a one"},
        {"VerticesWithoutASource", "input", "createFromCollada failed", texts(), meshOf("<vertices id='v'/>"),
         "true, 0 of 0 bytes"},
        {"TrianglesOfAnUnknownSemantic", "input", "Does not recognize input semantic {}", texts("SPEED"),
         meshOf(goodSource + triangles(position + inputXml("SPEED", "s", "0"))), "true, 1 of 12 bytes"},
        {"TrianglesOfASourceThatIsNone", "input", "Does not have a class representation for source {}",
         texts("nowhere"), meshOf(goodSource + triangles(position + inputXml("NORMAL", "nowhere", "0"))),
         "true, 1 of 12 bytes", texts("Element #nowhere is not a source")},
        {"TrianglesOfVerticesThatAreNone", "input", "Input is not a <vertices> element {}", texts("s"),
         meshOf(goodSource + triangles(position + inputXml("VERTEX", "s", "0"))), "true, 1 of 12 bytes"},
        {"TrianglesOfVerticesThatAreNowhere", "input", "Input is not a <vertices> element {}", texts("nowhere"),
         meshOf(goodSource + triangles(position + inputXml("VERTEX", "nowhere", "0"))), "true, 1 of 12 bytes"},
        {"TrianglesWithoutASource", "input", "createFromCollada failed", texts(),
         meshOf(goodSource + triangles(inputXml("SPEED", "s", "0"))), "true, 1 of 0 bytes",
         texts("Does not recognize input semantic SPEED")},
        {"TrianglesThatAreNull", "primitive", "NULL domTriangles passed in", texts(),
         host([] { return answer(libVideo::TriangleList().createFromCollada(nullptr)); }), "false"},
        {"TrianglesWithoutAnInput", "primitive", "Skipping <triangles> element with no vertex description", texts(),
         meshOf(goodSource + triangles("")), "true, 0 of 0 bytes"},
        {"TrianglesOfFewerIndices", "primitive", "Triangles have fewer indices than their count", texts(),
         meshOf(goodSource + triangles(position, "<p>0 0 0</p>", 2)), "true, 1 of 12 bytes"},
        {"TrianglesWithoutIndices", "primitive", "Triangles have fewer indices than their count", texts(),
         meshOf(goodSource + triangles(position, "")), "true, 0 of 0 bytes"},
        {"VerticesThatAreNull", "primitive", "NULL domVertices passed", texts(), meshOf(""), "true, 0 of 0 bytes"},
    };
}

std::vector<Message> materialMessages()
{
    return {
        {"TexturesOfMoreLettersThanTheDocumentAllows", "texture", tooMuch, texts(),
         [] { return loadText(imageShownOften(), primitives); }, "true, 1 of 12 bytes"},
        {"BlinnThatIsNull", "material", "Null domBlinnRef passed into function", texts(), host([] {
             libVideo::BlinnMaterial made;
             made.createFromCollada(daeSmartRef<domProfile_COMMON::domTechnique::domBlinn>(), nullptr);
             return "diffuse " + number(double(made.component().diffuse[0]));
         }),
         "diffuse 1"},
        {"PhongThatIsNull", "material", "Null domBlinnRef passed into function", texts(), host([] {
             libVideo::BlinnMaterial made;
             made.createFromCollada(daeSmartRef<domProfile_COMMON::domTechnique::domPhong>(), nullptr);
             return "diffuse " + number(double(made.component().diffuse[0]));
         }),
         "diffuse 1"},
        {"MaterialOfTwoColors", "material", "Color has fewer than three values", texts(),
         materialOf("", "<color>0.5 0.25</color>"), "true, diffuse 1 1"},
        {"MaterialOfATextureThatIsNone", "material", "Unable to initialize texture", texts(), materialOf("", texture),
         "true, diffuse 1 1, texture ''"},
        {"TextureWithoutAnInitializer", "texture", "Texture has no surface initiailzer", texts(),
         materialOf(samplerAnd(""), texture), "true, diffuse 1 1, texture ''"},
        {"TextureWithoutASurface", "texture", "Texture has no surface initiailzer", texts(),
         materialOf("<newparam sid='surface'><float>1</float></newparam>"
                    "<newparam sid='sampler'><sampler2D><source>surface</source></sampler2D></newparam>",
                    texture),
         "true, diffuse 1 1, texture ''"},
        {"TextureOfAnImageThatIsNone", "texture", "Surface initializer has no <init_from> child", texts(),
         materialOf(samplerAnd("<init_from>nowhere</init_from>"), texture), "true, diffuse 1 1, texture ''"},
    };
}

std::vector<Message> sceneMessages()
{
    return {
        {"SceneOfNoFile", "scene", "Collada file does not exist {}", texts("/no such folder/a.dae"),
         host([] { return answer(Scene().createFromCollada("/no such folder/a.dae")); }), "false"},
        {"SceneOfNoDocument", "scene", "Collada file does not exist {}", texts("$FILE"),
         [] { return loadText("text"); }, "false"},
        {"SceneWithoutADefinition", "scene", "Collada file does not have a scene definition {}", texts("$FILE"),
         sceneOf(""), "false"},
        {"SceneWithoutAVisualScene", "scene", "Scene does not have a visual scene", texts(), sceneOf("<scene/>"),
         "false"},
        {"SceneOfNothing", "scene", "Url {} does not point to a collada element", texts("file:$FILE#nowhere"),
         sceneOf("<scene><instance_visual_scene url='#nowhere'/></scene>"), "false"},
        {"SceneOfANode", "scene", "daeElement is not a domVisual_scene element", texts(),
         sceneOf("<scene><instance_visual_scene url='#n'/></scene>"), "false"},
        {"SceneThatIsLoaded", "scene", "Scene is already loaded", texts(), host([] {
             const TemporaryFile file(ColladaBuilder().addScene("<node id='n'/>").text());
             Scene scene;
             const bool first = scene.createFromCollada(file.path().c_str());
             return answer(first) + ", " + answer(scene.createFromCollada(file.path().c_str()));
         }),
         "true, false"},
        {"VisualSceneWithoutNodes", "visualScene", "Visual scene has no visual nodes", texts(),
         sceneOf("<scene><instance_visual_scene url='#empty'/></scene>"), "false"},
        {"VisualSceneWithoutResources", "visualScene", "Cannot create using an empty scene resources", texts(),
         host([] {
             ColladaBuilder builder;
             builder.addScene("<node id='n'/>").open();
             VisualScene scene;
             return answer(
                 scene.createFromCollada(*builder.element<domVisual_scene>("scene"), libVideo::SceneResourcesLink()));
         }),
         "false"},
        {"VisualSceneThatIsLoaded", "visualScene", "Visual scene is already loaded", texts(), host([] {
             ColladaBuilder builder;
             builder.addScene("<node id='n'/>").open();
             const domVisual_scene& element = *builder.element<domVisual_scene>("scene");
             libVideo::SceneResources pool;
             VisualScene scene;
             const bool first = scene.createFromCollada(element, libVideo::SceneResourcesLink(&pool));
             const bool second = scene.createFromCollada(element, libVideo::SceneResourcesLink(&pool));
             return answer(first) + ", " + answer(second);
         }),
         "true, false"},
        {"LightInstanceOfNothing", "visualScene", "domInstance_light does not point to a light element", texts(),
         document(lightWith("<point><color>1 1 1</color></point>"),
                  "<node id='n'><instance_light url='#nowhere'/><instance_light url='#l'/></node>", instancesOf),
         "true, 0 cameras, 0 points, 0 spots"},
        {"LightInstanceOfANode", "visualScene", "Element is not a light", texts(),
         document(lightWith("<point><color>1 1 1</color></point>"),
                  "<node id='n'><instance_light url='#n'/><instance_light url='#l'/></node>", instancesOf),
         "true, 0 cameras, 0 points, 0 spots"},
        {"GeometryInstanceOfNothing", "visualScene", "Not a geometry element", texts(),
         document(meshXml(goodSource + triangles(position)),
                  "<node id='n'><instance_geometry url='#nowhere'/><instance_geometry url='#g'/></node>", primitives),
         "true, 1 of 12 bytes"},
        {"GeometryInstanceOfANode", "visualScene", "Not a geometry element", texts(),
         document("", "<node id='n'><instance_geometry url='#n'/></node>", primitives), "true, no geometry"},
        {"GeometryThatIsShownTwice", "visualScene", "Unable to initialize geometry instance", texts(),
         document(meshXml(goodSource + triangles(position)), shownNode + "<node><instance_geometry url='#g'/></node>",
                  primitives),
         "true, 1 of 12 bytes"},
        {"AnimationWithoutItsTarget", "visualScene", "Unable to find the animation's target node with id: {}",
         texts("n"),
         document(animation(floatCurve("INPUT", 2, "1 2", "count='2'"), input("INPUT")), "<node id='other'/>"), "true"},
        {"AnimationThatFailedWithoutABareNode", "visualScene", "Unable to find the animation's target node with id: {}",
         texts(""), document("<library_animations><animation/></library_animations>", "<node id='n'/>"), "true",
         texts("Cannot create an animation without a channel element.")},
    };
}

const std::vector<Message>& messages()
{
    static const std::vector<Message> all = [] {
        std::vector<Message> rows;
        for (const auto& part : {animationMessages(), cameraAndLightMessages(), instanceMessages(), sourceMessages(),
                                 geometryMessages(), materialMessages(), sceneMessages()}) {
            rows.insert(rows.end(), part.begin(), part.end());
        }
        return rows;
    }();
    return all;
}

void replaceAll(std::string& text, const std::string& from, const std::string& to)
{
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

std::string channelOf(const Message& row)
{
    return std::string("libVideo.") + row.channel;
}

std::string wordsOf(const Message& row, const std::string& path)
{
    std::string words;
    std::string rest = row.pattern;
    for (std::string value : row.values) {
        replaceAll(value, "$FILE", path);
        const std::size_t hole = rest.find("{}");
        words += rest.substr(0, hole) + value;
        rest = rest.substr(hole + 2);
    }
    return words + rest;
}

std::vector<Message> reachable()
{
    std::vector<Message> rows;
    std::copy_if(messages().begin(), messages().end(), std::back_inserter(rows),
                 [](const Message& row) { return row.cause != nullptr; });
    return rows;
}

// --- whether the table is complete ---

/// A log statement in a source file.
struct Statement {
    std::string file;
    unsigned line;
    std::string channel;
    std::string pattern; ///< its literals, with "{}" for everything else

    std::string place() const { return file + ":" + std::to_string(line) + ": " + pattern; }
};

// Replaces comments and preprocessor lines by blanks of the same length.
std::string withoutComments(std::string text)
{
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = std::min(text.find('\n', start), text.size());
        const std::size_t first = text.find_first_not_of(" \t", start);
        if (first < end && (text[first] == '#' || text.compare(first, 2, "//") == 0)) {
            while (end < text.size() && text[end - 1] == '\\') { // a macro continues
                end = std::min(text.find('\n', end + 1), text.size());
            }
            std::replace_if(
                text.begin() + static_cast<std::ptrdiff_t>(first), text.begin() + static_cast<std::ptrdiff_t>(end),
                [](char c) { return c != '\n'; }, ' ');
        }
        start = end + 1;
    }
    return text;
}

// The text of the literal that starts at `at`, which moves past its closing quote.
std::string literal(const std::string& text, std::size_t& at)
{
    std::string value;
    for (++at; at < text.size() && text[at] != '"'; ++at) {
        if (text[at] == '\\') {
            ++at;
        }
        value += text.at(at);
    }
    ++at;
    return value;
}

/// The string constants of the sources, by name without scope.
using Constants = std::map<std::string, std::string>;

void addConstants(const std::string& text, Constants& constants)
{
    static const std::regex declaration("constexpr const char\\* (?:const )?(\\w+) = \"([^\"\\\\]*)\";");
    for (std::sregex_iterator found(text.begin(), text.end(), declaration); found != std::sregex_iterator(); ++found) {
        constants.emplace((*found)[1], (*found)[2]);
    }
}

// A piece of a statement in a pattern: the text of a constant, and "{}" for anything else that is no literal.
std::string valueOf(const std::string& piece, const Constants& constants)
{
    const std::size_t scope = piece.rfind("::");
    const auto found = constants.find(scope == std::string::npos ? piece : piece.substr(scope + 2));
    return found == constants.end() ? "{}" : found->second;
}

// The pieces of a statement that starts at `at`.
std::string patternAt(const std::string& text, std::size_t at, const Constants& constants)
{
    std::string pattern;
    std::string literals;
    std::string piece;
    bool isLiteral = true;
    unsigned depth = 0;
    while (at < text.size()) {
        const char c = text[at];
        if (c == '"') {
            literals += literal(text, at);
            continue;
        }
        const bool isEnd = depth == 0 && c == ')';
        if (isEnd || (depth == 0 && c == ',')) {
            pattern += isLiteral ? literals : valueOf(piece, constants);
            literals.clear();
            piece.clear();
            isLiteral = true;
            if (isEnd) {
                return pattern;
            }
        } else if (std::isspace(static_cast<unsigned char>(c)) == 0) {
            isLiteral = false;
            piece += c;
            depth += c == '(' || c == '[' || c == '{' ? 1 : 0;
            depth -= c == ')' || c == ']' || c == '}' ? 1 : 0;
        }
        ++at;
    }
    throw std::runtime_error("a log statement has no end");
}

// The sources of the scene graph, by path, without comments.
std::map<std::filesystem::path, std::string> sceneGraphSources()
{
    std::map<std::filesystem::path, std::string> sources;
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator(std::filesystem::path(LIBVIDEO_SOURCE_DIR) / "SceneGraph")) {
        const std::string ending = entry.path().extension().string();
        if (ending == ".cpp" || ending == ".h") {
            sources.emplace(entry.path(), withoutComments(testSupport::contentOf(entry.path())));
        }
    }
    return sources;
}

std::vector<Statement> statements()
{
    static const std::string statement = "VIDEO_LOG(";
    static const std::string naming = "VIDEO_LOG_CHANNEL(";
    const std::map<std::filesystem::path, std::string> sources = sceneGraphSources();
    Constants constants;
    for (const auto& [path, text] : sources) {
        addConstants(text, constants);
    }
    std::vector<Statement> found;
    for (const auto& [path, text] : sources) {
        std::string channel;
        if (const std::size_t name = text.find(naming); name != std::string::npos) {
            std::size_t quote = name + naming.size();
            channel = literal(text, quote);
        }
        for (std::size_t at = text.find(statement); at != std::string::npos; at = text.find(statement, at + 1)) {
            const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n');
            found.push_back({path.filename().string(), static_cast<unsigned>(line), channel,
                             patternAt(text, at + statement.size(), constants)});
        }
    }
    return found;
}

bool isOf(const Message& row, const Statement& statement)
{
    return channelOf(row) == statement.channel && row.pattern == statement.pattern;
}

TEST(MessageTableTest, EveryStatementOfTheSourcesHasARow)
{
    const std::vector<Statement> all = statements();
    ASSERT_LT(50u, all.size()) << "the sources are not where they are looked for: " << LIBVIDEO_SOURCE_DIR;
    for (const Statement& statement : all) {
        EXPECT_TRUE(std::any_of(messages().begin(), messages().end(), [&](const Message& row) {
            return isOf(row, statement);
        })) << statement.place();
    }
}

TEST(MessageTableTest, EveryRowHasAStatementInTheSources)
{
    const std::vector<Statement> all = statements();
    for (const Message& row : messages()) {
        EXPECT_TRUE(std::any_of(all.begin(), all.end(), [&](const Statement& statement) {
            return isOf(row, statement);
        })) << row.name;
    }
}

TEST(MessageTableTest, EveryStatementIsReachedButThoseThatAreMarked)
{
    // The number in front of a message is the line of its statement, which distinguishes equal texts.
    std::set<std::pair<std::string, std::string>> reached;
    {
        const LogCapture log;
        for (const Message& row : reachable()) {
            row.cause();
        }
        for (const LogLine& line : log.lines()) {
            reached.insert({line.channel, line.text.substr(0, line.text.find(' '))});
        }
    }
    for (const Statement& statement : statements()) {
        const bool isMarked = std::any_of(messages().begin(), messages().end(), [&](const Message& row) {
            return row.cause == nullptr && isOf(row, statement);
        });
        const bool isReached = reached.count({statement.channel, std::to_string(statement.line)}) > 0;
        EXPECT_EQ(!isMarked, isReached) << statement.place();
    }
}

// --- whether the list of the reference is the table ---

/// A message as the reference lists it: "channel: text" with "{}" for each value, and whether it can be caused.
using ListedLines = std::map<std::string, bool>;

std::string keyOf(const std::string& channel, const std::string& pattern)
{
    return channel + ": " + pattern;
}

ListedLines listedLines()
{
    const nlohmann::json list = nlohmann::json::parse(testSupport::contentOf(MESSAGES_LIST));
    const std::regex value("\\{[a-z]+\\}"); // the reference names the values
    ListedLines lines;
    for (const nlohmann::json& entry : list.at("messages")) {
        const std::string words = std::regex_replace(entry.at("words").get<std::string>(), value, "{}");
        const bool isNew = lines.emplace(keyOf(entry.at("channel"), words), !entry.contains("unreached")).second;
        EXPECT_TRUE(isNew) << "listed twice: " << words;
        EXPECT_FALSE(entry.at("when").get<std::string>().empty()) << words;
        EXPECT_FALSE(entry.at("then").get<std::string>().empty()) << words;
    }
    return lines;
}

TEST(MessageTableTest, TheReferenceListsTheStatementsOfTheSources)
{
    ListedLines lines = listedLines();
    std::set<std::string> logged;
    for (const Statement& statement : statements()) {
        const std::string key = keyOf(statement.channel, statement.pattern);
        logged.insert(key);
        EXPECT_EQ(1u, lines.count(key)) << "not in the reference: " << statement.place();
    }
    for (const auto& [key, isReached] : lines) {
        EXPECT_EQ(1u, logged.count(key)) << "no statement logs what the reference lists: " << key;
    }
}

TEST(MessageTableTest, TheReferenceSaysWhichLinesADocumentReaches)
{
    const ListedLines lines = listedLines();
    for (const Message& row : messages()) {
        const auto found = lines.find(keyOf(channelOf(row), row.pattern));
        ASSERT_NE(lines.end(), found) << row.name;
        EXPECT_EQ(row.cause != nullptr, found->second) << row.name;
    }
}

TEST(MessageTableTest, NothingIsLoggedPastTheStatement)
{
    // Otherwise the table could lack a message unnoticed.
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator(std::filesystem::path(LIBVIDEO_SOURCE_DIR) / "SceneGraph")) {
        if (entry.path().filename() == "Log.h" || !entry.is_regular_file()) {
            continue;
        }
        const std::string text = withoutComments(testSupport::contentOf(entry.path()));
        for (const char* const direct : {"LoggerStream", "createLogger", "->log("}) {
            EXPECT_EQ(std::string::npos, text.find(direct)) << entry.path() << ": " << direct;
        }
    }
}

} // namespace
