#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Animation.h>
#include <libVideo/SceneGraph/Geometry.h>
#include <libVideo/SceneGraph/Material.h>
#include <libVideo/SceneGraph/Node.h>
#include <libVideo/SceneGraph/Primitive.h>
#include <libVideo/SceneGraph/Scene.h>
#include <libVideo/SceneGraph/Texture.h>
#include <libVideo/SceneGraph/VisualScene.h>

#include <cstdlib>
#include <fstream>
#include <set>

namespace {

using namespace libVideo;
using namespace testSupport;

using Instances = daeTArray<daeSmartRef<domInstance_geometry>>;
using Technique = domProfile_COMMON::domTechnique;
using PhongRef = daeSmartRef<Technique::domPhong>;

PRIVATE_MEMBER(nodeListOf, vesk::Array<NodeHandle> VisualScene::*, &VisualScene::m_nodeList)
PRIVATE_MEMBER(sceneAddGeometryInstance, unsigned (VisualScene::*)(const NodeHandle&, const Instances&),
               &VisualScene::addGeometryInstance)
PRIVATE_MEMBER(sceneCreateAndRegisterGeometry, GeometryHandle (VisualScene::*)(domGeometry*),
               &VisualScene::createAndRegisterGeometry)
PRIVATE_MEMBER(sceneRegisterMaterialAttributes, void (VisualScene::*)(const vesk::String&, domMaterial*),
               &VisualScene::registerMaterialAttributes)
PRIVATE_MEMBER(techniquePhong, PhongRef Technique::*, &Technique::elemPhong)

const std::string notAGeometry = "libVideo.visualScene: Not a geometry element";

bool loadsWithTheNextInstance(const std::string& materials, const std::string& effectUrl, const std::string& url);

struct RawCase : Row {
    std::string url;
    std::string materials;
    std::string effectUrl;
};

class RawReferenceTest : public testing::TestWithParam<RawCase> {};

// Runs in a child process; its exit status is the result.
TEST_P(RawReferenceTest, LeadsToNothingAndTheNextInstanceGoesOn)
{
    const RawCase& row = GetParam();
    EXPECT_EXIT(std::_Exit(loadsWithTheNextInstance(row.materials, row.effectUrl, row.url) ? 0 : 1),
                testing::ExitedWithCode(0), "");
}

const std::string notInitialized = "libVideo.visualScene: Unable to initialize geometry instance";
const std::string noMesh = "libVideo.geometry: Program does not handle geometry type other than meshes right now.";
const std::string noTexture = "libVideo.material: Unable to initialize texture";

// The texts of small documents.

std::string source(const std::string& id, const std::string& numbers, unsigned records, const std::string& type)
{
    const std::string count = std::to_string(records);
    return "<source id='" + id + "'><float_array id='" + id + "-array' count='" + std::to_string(3 * records) + "'>" +
           numbers + "</float_array><technique_common><accessor source='#" + id + "-array' count='" + count +
           "' stride='3'><param name='X' type='" + type + "'/><param name='Y' type='float'/>" +
           "<param name='Z' type='float'/></accessor></technique_common></source>";
}

/// The content of a geometry with one triangle.
struct Triangle {
    std::string symbol = "symbol";
    std::string indices = "0 1 2";
    std::string type = "float";
    bool hasNormals = false; // in its <vertices>
};

std::string geometry(const std::string& id, const Triangle& triangle = Triangle());

std::string geometryWithoutMesh(const std::string& id)
{
    return "<geometry id='" + id + "'/>";
}

std::string material(const std::string& id, const std::string& effect)
{
    return "<material id='" + id + "' name='" + id + "-name'><instance_effect url='#" + effect + "'/></material>";
}

std::string effect(const std::string& id, const std::string& profiles)
{
    return "<effect id='" + id + "'>" + profiles + "</effect>";
}

// Shaders are identified by their shininess.
std::string shader(const std::string& kind, int shininess)
{
    return "<" + kind + "><shininess><float>" + std::to_string(shininess) + "</float></shininess></" + kind + ">";
}

std::string common(const std::string& shading, const std::string& newparams = std::string())
{
    return "<profile_COMMON>" + newparams + "<technique sid='common'>" + shading + "</technique></profile_COMMON>";
}

std::string bound(const std::string& symbol, const std::string& target)
{
    return "<instance_material symbol='" + symbol + "' target='#" + target + "'/>";
}

std::string instanceOf(const std::string& url, const std::string& materials = std::string())
{
    return "<instance_geometry url='" + url + "'>" +
           (materials.empty()
                ? std::string()
                : "<bind_material><technique_common>" + materials + "</technique_common></bind_material>") +
           "</instance_geometry>";
}

/// The content of the libraries.
struct Libraries {
    std::string geometries;
    std::string materials;
    std::string effects;
    std::string animations = std::string();
};

// Geometries "one", "two" and "three", "bad" that cannot be built, materials "blinn" with shininess 1, "phong" with 2,
// "lambert" and "constant" without a usable shader, and "lost" with shininess 3 and a texture that does not resolve.
Libraries usual();
ColladaBuilder& addLibraries(ColladaBuilder& builder, const Libraries& libraries);

std::string wholeText(const Libraries& libraries, const std::string& nodes)
{
    ColladaBuilder builder;
    return addLibraries(builder, libraries).addScene(nodes).text();
}

/// A document with its visual scene, which `load` fills.
class World {
public:
    World(const Libraries& libraries, const std::string& nodes)
    {
        addLibraries(m_builder, libraries).addScene(nodes);
        domCOLLADA* const root = m_builder.open();
        libVideo::createAnimationListFromCollada(root, m_builder.dae(), m_pool.animationList);
    }

    explicit World(const std::string& nodes) : World(usual(), nodes) {}

    bool load()
    {
        return scene.createFromCollada(*m_builder.element<domVisual_scene>("scene"), SceneResourcesLink(&m_pool));
    }

    template <class Element>
    Element* element(const char* id)
    {
        return m_builder.element<Element>(id);
    }

    unsigned addGeometryInstance(const NodeHandle& to, const Instances& instances)
    {
        return sceneAddGeometryInstance(scene, to, instances);
    }

    GeometryHandle createAndRegisterGeometry(domGeometry* of) { return sceneCreateAndRegisterGeometry(scene, of); }

    void registerMaterialAttributes(const char* symbol, domMaterial* of)
    {
        sceneRegisterMaterialAttributes(scene, symbol, of);
    }

private:
    SilentDocumentModel m_quiet;
    ColladaBuilder m_builder;
    SceneResources m_pool;

public:
    VisualScene scene;
};

// The content of a scene.

const NodeHandle& nodeOf(const VisualScene& scene, const std::string& id)
{
    for (const NodeHandle& one : nodeListOf(scene)) {
        if (id == one->id().data()) {
            return one;
        }
    }
    throw std::runtime_error("no node " + id);
}

template <class Table>
std::set<std::string> keysOf(const Table& table)
{
    std::set<std::string> keys;
    for (const auto& bucket : table) {
        keys.insert(bucket.key.data());
    }
    EXPECT_EQ(keys.size(), table.size());
    return keys;
}

using Keys = std::set<std::string>;

Keys geometryIds(const VisualScene& scene)
{
    return keysOf(scene.geometryTable());
}

Keys symbols(const VisualScene& scene)
{
    return keysOf(scene.blinnMaterialTable());
}

GeometryHandle geometryOf(const VisualScene& scene, const char* id)
{
    const auto* const bucket = scene.geometryTable().lookup(id);
    return bucket == nullptr ? GeometryHandle() : bucket->value;
}

BlinnMaterialHandle materialOf(const VisualScene& scene, const char* symbol)
{
    const auto* const bucket = scene.blinnMaterialTable().lookup(symbol);
    return bucket == nullptr ? BlinnMaterialHandle() : bucket->value;
}

// Ids of the nodes that show a geometry; "none" without such a geometry.
std::string showing(const VisualScene& scene, const char* id);

// The shader bound to a symbol; -1 if there is none.
float shininessOf(const VisualScene& scene, const char* symbol)
{
    const BlinnMaterialHandle found = materialOf(scene, symbol);
    return found ? found->component().shininess : -1.0f;
}

// Geometries.

TEST(GeometryInstancingTest, GeometryIsRegisteredUnderItsIdAndListsItsNode)
{
    const LogCapture log;
    World world(node("n", instanceOf("#one")));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(Keys{"one"}, geometryIds(world.scene));
    const GeometryHandle one = geometryOf(world.scene, "one");
    ASSERT_TRUE(one);
    EXPECT_STREQ("one", one->id().data());
    EXPECT_STREQ("one-name", one->name().data());
    EXPECT_EQ(1u, one->mesh().primitives().size());
    ASSERT_EQ(1u, one->nodes().size());
    EXPECT_EQ(nodeOf(world.scene, "n"), one->nodes()[0]);
    EXPECT_EQ(Keys{}, symbols(world.scene));
    EXPECT_EQ(Texts{}, log.messages());
}

TEST(GeometryInstancingTest, GeometriesWithoutAnInstanceAreNotBuilt)
{
    const LogCapture log;
    World world(node("n", "") + node("m", instanceOf("#two")));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(Keys{"two"}, geometryIds(world.scene));
    EXPECT_EQ(Texts{}, log.messages());
}

TEST(GeometryInstancingTest, AllInstancesOfOneNodeAreTaken)
{
    const LogCapture log;
    World world(node("n", instanceOf("#two") + instanceOf("#one") + instanceOf("#three")));
    EXPECT_TRUE(world.load());
    EXPECT_EQ((Keys{"one", "three", "two"}), geometryIds(world.scene));
    EXPECT_EQ("n", showing(world.scene, "one"));
    EXPECT_EQ("n", showing(world.scene, "two"));
    EXPECT_EQ("n", showing(world.scene, "three"));
    EXPECT_EQ(Texts{}, log.messages());
}

TEST(GeometryInstancingTest, SecondInstanceOfAGeometryIsLoggedAndItsNodeNotListed)
{
    const LogCapture log;
    World world(node("first", instanceOf("#one")) + node("second", instanceOf("#one")));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(Keys{"one"}, geometryIds(world.scene));
    EXPECT_EQ("first", showing(world.scene, "one"));
    EXPECT_EQ(Texts{notInitialized}, log.messages());
}

TEST(GeometryInstancingTest, EachFurtherInstanceOfAGeometryHasItsLineAndTheNextGoesOn)
{
    const LogCapture log;
    World world(node("n", instanceOf("#one") + instanceOf("#one") + instanceOf("#two")) +
                node("m", instanceOf("#one") + instanceOf("#three")));
    EXPECT_TRUE(world.load());
    EXPECT_EQ("n", showing(world.scene, "one"));
    EXPECT_EQ("n", showing(world.scene, "two"));
    EXPECT_EQ("m", showing(world.scene, "three"));
    EXPECT_EQ((Texts{notInitialized, notInitialized}), log.messages());
}

TEST(GeometryInstancingTest, GeometryGoesToTheFirstNodeBreadthFirst)
{
    const LogCapture log;
    World world(node("a", node("b", instanceOf("#one") + node("c", instanceOf("#two")))) +
                node("d", instanceOf("#one") + node("e", instanceOf("#two"))));
    EXPECT_TRUE(world.load());
    EXPECT_EQ("d", showing(world.scene, "one")) << "top level before what lies below";
    EXPECT_EQ("e", showing(world.scene, "two")) << "second level before the third";
    EXPECT_EQ((Texts{notInitialized, notInitialized}), log.messages());
}

TEST(GeometryInstancingTest, IdsThatDifferInCaseAreTwoGeometries)
{
    const LogCapture log;
    World world({geometry("one") + geometry("ONE"), "", ""}, node("n", instanceOf("#one") + instanceOf("#ONE")));
    EXPECT_TRUE(world.load());
    EXPECT_EQ((Keys{"ONE", "one"}), geometryIds(world.scene));
    EXPECT_EQ(Texts{}, log.messages());
}

TEST(GeometryInstancingTest, GeometryThatFailsToBuildIsNotInTheTableAndHasNoLineOfTheScene)
{
    const LogCapture log;
    World world(node("n", instanceOf("#bad") + instanceOf("#one")));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(Keys{"one"}, geometryIds(world.scene));
    EXPECT_EQ(Texts{noMesh}, log.messages());
    EXPECT_EQ(2u, nodeOf(world.scene, "n").useCount()) << "the failed one let go of its node";
}

TEST(GeometryInstancingTest, GeometryThatFailsToBuildIsTriedAnewByEachInstance)
{
    const LogCapture log;
    World world(node("n", instanceOf("#bad")) + node("m", instanceOf("#bad") + instanceOf("#bad")));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(Keys{}, geometryIds(world.scene));
    EXPECT_EQ((Texts{noMesh, noMesh, noMesh}), log.messages());
    EXPECT_EQ(1u, nodeOf(world.scene, "n").useCount());
    EXPECT_EQ(1u, nodeOf(world.scene, "m").useCount());
}

class InstanceUrlTest : public testing::TestWithParam<Case<const char*>> {};

TEST_P(InstanceUrlTest, WhatIsNoGeometryIsLoggedAndTheNextInstanceGoesOn)
{
    const std::string materials =
        "<bind_material><technique_common>" + bound("symbol", "blinn") + "</technique_common></bind_material>";
    World world(node("n", "<instance_geometry " + std::string(GetParam().given) + ">" + materials +
                              "</instance_geometry>" + instanceOf("#one")));
    const LogCapture log;
    EXPECT_TRUE(world.load());
    EXPECT_EQ(Keys{"one"}, geometryIds(world.scene));
    EXPECT_EQ("n", showing(world.scene, "one"));
    EXPECT_EQ(Keys{}, symbols(world.scene)) << "the materials of such an instance are not looked at";
    EXPECT_EQ(Texts{notAGeometry}, log.messages());
}

INSTANTIATE_ROWS(Urls, InstanceUrlTest, {"Absent", ""}, {"Empty", "url=''"}, {"OnlyTheMark", "url='#'"},
                 {"Nothing", "url='#none'"}, {"AnotherCase", "url='#One'"}, {"WithoutTheMark", "url='one'"},
                 {"AnotherDocument", "url='./none.dae#one'"}, {"Node", "url='#n'"}, {"VisualScene", "url='#scene'"},
                 {"Material", "url='#blinn'"}, {"Effect", "url='#blinn-effect'"},
                 {"PartOfAGeometry", "url='#one-vertices'"}, {"TextThatIsLost", "url='#größe'"});

TEST(GeometryInstancingTest, EachInstanceThatIsNoGeometryHasItsLine)
{
    const LogCapture log;
    World world(node("n", instanceOf("#none") + instanceOf("#bad") + instanceOf("#n")) + node("m", instanceOf("#nil")));
    EXPECT_TRUE(world.load());
    EXPECT_EQ((Texts{notAGeometry, noMesh, notAGeometry, notAGeometry}), log.messages());
    EXPECT_EQ(Keys{}, geometryIds(world.scene));
}

TEST(GeometryInstancingTest, ControllersAndInstancedNodesBringNoGeometryAndNoMaterial)
{
    const LogCapture log;
    World world(node("n", "<instance_controller url='#none'><bind_material><technique_common>" +
                              bound("symbol", "blinn") + "</technique_common></bind_material></instance_controller>" +
                              "<instance_node url='#m'/>"));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(Keys{}, geometryIds(world.scene));
    EXPECT_EQ(Keys{}, symbols(world.scene));
    EXPECT_EQ(Texts{}, log.messages());
}

// Nodes.

TEST(GeometryInstancingTest, GeometriesOwnFurtherHandlesToTheirNodes)
{
    const LogCapture log;
    World world(node("both", instanceOf("#one") + instanceOf("#two")) + node("none", "") +
                node("late", instanceOf("#one")));
    ASSERT_TRUE(world.load());
    EXPECT_EQ(3u, nodeOf(world.scene, "both").useCount());
    EXPECT_EQ(1u, nodeOf(world.scene, "none").useCount());
    EXPECT_EQ(1u, nodeOf(world.scene, "late").useCount());
    EXPECT_EQ(1u, world.scene.geometryTable().lookup("one")->value.useCount()) << "only the table owns it";
}

TEST(GeometryInstancingTest, GeometryKeepsItsNodesBeyondTheScene)
{
    GeometryHandle kept;
    {
        World world(node("n", instanceOf("#one")));
        ASSERT_TRUE(world.load());
        kept = geometryOf(world.scene, "one");
    }
    ASSERT_EQ(1u, kept->nodes().size());
    EXPECT_EQ(1u, kept->nodes()[0].useCount());
    EXPECT_STREQ("n", kept->nodes()[0]->id().data());
    EXPECT_EQ(1u, kept->mesh().primitives().size());
}

TEST(GeometryInstancingTest, NodesOfOneIdAreListedEachOnItsGeometry)
{
    World world(node("n", instanceOf("#one")) + node("n", instanceOf("#two")));
    ASSERT_TRUE(world.load());
    EXPECT_EQ(nodeListOf(world.scene)[0], geometryOf(world.scene, "one")->nodes()[0]);
    EXPECT_EQ(nodeListOf(world.scene)[1], geometryOf(world.scene, "two")->nodes()[0]);
}

// Materials.

TEST(GeometryInstancingTest, MaterialIsRegisteredUnderTheSymbolThatThePrimitiveNames)
{
    const LogCapture log;
    World world(node("n", instanceOf("#one", bound("symbol", "blinn"))));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(Keys{"symbol"}, symbols(world.scene)) << "neither the id nor the name of the material";
    const auto& primitives = geometryOf(world.scene, "one")->mesh().primitives();
    const BlinnMaterialHandle found = materialOf(world.scene, primitives[0]->material().data());
    ASSERT_TRUE(found);
    EXPECT_EQ(1.0f, found->component().shininess);
    EXPECT_EQ(2u, found.useCount()) << "only the table owns it beside this handle";
    EXPECT_EQ(Texts{}, log.messages());
}

TEST(GeometryInstancingTest, MaterialsWithoutABindingAreNotRegistered)
{
    const LogCapture log;
    World world(node("n", instanceOf("#one")));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(Keys{}, symbols(world.scene));
    EXPECT_EQ(Texts{}, log.messages());
}

TEST(GeometryInstancingTest, AllBindingsOfAnInstanceAreTaken)
{
    const LogCapture log;
    World world(node("n", instanceOf("#one", bound("a", "blinn") + bound("b", "phong") + bound("c", "blinn"))));
    EXPECT_TRUE(world.load());
    EXPECT_EQ((Keys{"a", "b", "c"}), symbols(world.scene));
    EXPECT_EQ(1.0f, shininessOf(world.scene, "a"));
    EXPECT_EQ(2.0f, shininessOf(world.scene, "b"));
    EXPECT_EQ(1.0f, shininessOf(world.scene, "c"));
    EXPECT_NE(materialOf(world.scene, "a"), materialOf(world.scene, "c")) << "one for each symbol";
    EXPECT_EQ(Texts{}, log.messages());
}

class NoBindingTest : public testing::TestWithParam<Case<std::string>> {};

TEST_P(NoBindingTest, RegistersNothingAndTheGeometryAllTheSame)
{
    World world(node("n", "<instance_geometry url='#one'>" + GetParam().given + "</instance_geometry>"));
    const LogCapture log;
    EXPECT_TRUE(world.load());
    EXPECT_EQ(Keys{}, symbols(world.scene));
    EXPECT_EQ("n", showing(world.scene, "one"));
    EXPECT_EQ(Texts{}, log.messages());
}

std::string inCommon(const std::string& content)
{
    return "<bind_material><technique_common>" + content + "</technique_common></bind_material>";
}

INSTANTIATE_ROWS(Bindings, NoBindingTest, {"EmptyBindMaterial", "<bind_material/>"},
                 {"NoCommonTechnique", "<bind_material><param name='p' semantic='s' type='float'/>"
                                       "<technique profile='other'/></bind_material>"},
                 {"MaterialInAnotherTechnique", "<bind_material><technique profile='other'>" +
                                                    bound("symbol", "blinn") + "</technique></bind_material>"},
                 {"EmptyCommonTechnique", inCommon("")}, {"NoTarget", inCommon("<instance_material symbol='symbol'/>")},
                 {"EmptyTarget", inCommon("<instance_material symbol='symbol' target=''/>")},
                 {"TargetIsNothing", inCommon(bound("symbol", "none"))},
                 {"TargetOfAnotherCase", inCommon(bound("symbol", "Blinn"))},
                 {"TargetIsAnEffect", inCommon(bound("symbol", "blinn-effect"))},
                 {"TargetIsAGeometry", inCommon(bound("symbol", "one"))},
                 {"TargetIsTheNode", inCommon(bound("symbol", "n"))},
                 {"TargetIsLost", inCommon(bound("symbol", "größe"))});

TEST(GeometryInstancingTest, TargetThatIsNoMaterialIsPassedOver)
{
    const LogCapture log;
    World world(node(
        "n", instanceOf("#one", bound("symbol", "none") + bound("symbol", "blinn-effect") + bound("symbol", "phong"))));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(2.0f, shininessOf(world.scene, "symbol"));
    EXPECT_EQ(Texts{}, log.messages());
}

TEST(GeometryInstancingTest, ChildrenOfTheBindingsAreNotRead)
{
    const LogCapture log;
    Libraries libraries = usual();
    libraries.materials = "<material id='blinn'><instance_effect url='#blinn-effect'><technique_hint profile='other' "
                          "ref='none'/><setparam ref='none'><float>9</float></setparam></instance_effect></material>";
    World world(libraries, node("n", "<instance_geometry url='#one'><bind_material><param name='p' semantic='s' "
                                     "type='float'/><technique_common><instance_material symbol='symbol' "
                                     "target='#blinn'><bind semantic='s' target='none/none'/><bind_vertex_input "
                                     "semantic='uv' input_semantic='TEXCOORD' input_set='7'/></instance_material>"
                                     "</technique_common></bind_material></instance_geometry>"));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(Keys{"symbol"}, symbols(world.scene));
    EXPECT_EQ(1.0f, shininessOf(world.scene, "symbol"));
    EXPECT_EQ(Texts{}, log.messages());
}

TEST(GeometryInstancingTest, FirstBindingOfASymbolWinsOnOneInstance)
{
    const LogCapture log;
    World world(node("n", instanceOf("#one", bound("symbol", "phong") + bound("symbol", "blinn"))));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(Keys{"symbol"}, symbols(world.scene));
    EXPECT_EQ(2.0f, shininessOf(world.scene, "symbol"));
    EXPECT_EQ(Texts{}, log.messages());
}

TEST(GeometryInstancingTest, FirstBindingOfASymbolWinsOverGeometries)
{
    const LogCapture log;
    World world(node("n", instanceOf("#one", bound("symbol", "blinn"))) +
                node("m", instanceOf("#two", bound("symbol", "phong"))));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(Keys{"symbol"}, symbols(world.scene));
    EXPECT_EQ(1.0f, shininessOf(world.scene, "symbol"));
    EXPECT_EQ(Texts{}, log.messages());
}

TEST(GeometryInstancingTest, FirstBindingOfASymbolIsThatOfTheFirstNodeBreadthFirst)
{
    const LogCapture log;
    World world(node("a", node("b", instanceOf("#one", bound("symbol", "blinn")))) +
                node("c", instanceOf("#two", bound("symbol", "phong"))));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(2.0f, shininessOf(world.scene, "symbol"));
    EXPECT_EQ(Texts{}, log.messages());
}

TEST(GeometryInstancingTest, SymbolThatIsKnownHasItsMaterialReadOnce)
{
    const LogCapture log;
    World world(node("n", instanceOf("#one", bound("symbol", "lost") + bound("symbol", "lost"))) +
                node("m", instanceOf("#two", bound("symbol", "lost"))));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(3.0f, shininessOf(world.scene, "symbol"));
    EXPECT_EQ(Texts{noTexture}, log.messages()) << "one of each reading";
}

TEST(GeometryInstancingTest, BindingWithoutAUsableShaderLeavesTheSymbolToALaterOne)
{
    const LogCapture log;
    World world(node("n", instanceOf("#one", bound("symbol", "lambert") + bound("symbol", "constant"))) +
                node("m", instanceOf("#two", bound("symbol", "phong"))));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(2.0f, shininessOf(world.scene, "symbol"));
    EXPECT_EQ(Texts{}, log.messages());
}

TEST(GeometryInstancingTest, SymbolsThatDifferInCaseAreTwoMaterials)
{
    const LogCapture log;
    World world(node("n", instanceOf("#one", bound("symbol", "blinn") + bound("Symbol", "phong"))));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(1.0f, shininessOf(world.scene, "symbol"));
    EXPECT_EQ(2.0f, shininessOf(world.scene, "Symbol"));
    EXPECT_EQ(Texts{}, log.messages());
}

TEST(GeometryInstancingTest, MissingSymbolGivesTheEmptyKey)
{
    const LogCapture log;
    World world(node("n", instanceOf("#one", "<instance_material target='#phong'/>" + bound("", "blinn"))));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(Keys{""}, symbols(world.scene));
    EXPECT_EQ(2.0f, shininessOf(world.scene, "")) << "an empty symbol is the same key";
    EXPECT_EQ(Texts{}, log.messages());
}

TEST(GeometryInstancingTest, MaterialIsRegisteredAlthoughItsGeometryFails)
{
    const LogCapture log;
    World world(node("n", instanceOf("#bad", bound("symbol", "blinn"))));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(Keys{}, geometryIds(world.scene));
    EXPECT_EQ(1.0f, shininessOf(world.scene, "symbol"));
    EXPECT_EQ(Texts{noMesh}, log.messages());
}

TEST(GeometryInstancingTest, MaterialsOfASecondInstanceAreRegisteredToo)
{
    const LogCapture log;
    World world(node("n", instanceOf("#one", bound("a", "blinn"))) +
                node("m", instanceOf("#one", bound("a", "phong") + bound("b", "phong"))));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(1.0f, shininessOf(world.scene, "a"));
    EXPECT_EQ(2.0f, shininessOf(world.scene, "b"));
    EXPECT_EQ("n", showing(world.scene, "one"));
    EXPECT_EQ(Texts{notInitialized}, log.messages());
}

TEST(GeometryInstancingTest, LinesOfMaterialsStandBeforeThoseOfTheirGeometry)
{
    const LogCapture log;
    World world(node("n", instanceOf("#bad", bound("a", "lost") + bound("b", "lost")) + instanceOf("#none")) +
                node("m", instanceOf("#one") + instanceOf("#one", bound("c", "lost"))));
    EXPECT_TRUE(world.load());
    EXPECT_EQ((Texts{noTexture, noTexture, noMesh, notAGeometry, noTexture, notInitialized}), log.messages());
}

// From the material to the shader.

struct EffectCase : Row {
    std::string material; // its content
    std::string profiles; // of the effect "effect"
    float shininess;      // -1: no entry
};

class MaterialEffectTest : public testing::TestWithParam<EffectCase> {};

TEST_P(MaterialEffectTest, UsableShaderIsRegisteredAndAllElsePassesSilently)
{
    const EffectCase& row = GetParam();
    World world({geometry("one"), "<material id='material'>" + row.material + "</material>" + material("next", "good"),
                 effect("effect", row.profiles) + effect("good", common(shader("phong", 8)))},
                node("n", instanceOf("#one", bound("symbol", "material") + bound("next", "next"))));
    const LogCapture log;
    EXPECT_TRUE(world.load());
    EXPECT_EQ(row.shininess < 0.0f ? Keys{"next"} : (Keys{"next", "symbol"}), symbols(world.scene));
    EXPECT_EQ(row.shininess, shininessOf(world.scene, "symbol"));
    EXPECT_EQ(8.0f, shininessOf(world.scene, "next"));
    EXPECT_EQ("n", showing(world.scene, "one"));
    EXPECT_EQ(Texts{}, log.messages());
}

const std::string toEffect = "<instance_effect url='#effect'/>";

INSTANTIATE_ROWS(
    Effects, MaterialEffectTest, {"NoInstanceEffect", "", common(shader("blinn", 4)), -1.0f},
    {"NoUrl", "<instance_effect/>", common(shader("blinn", 4)), -1.0f},
    {"EmptyUrl", "<instance_effect url=''/>", common(shader("blinn", 4)), -1.0f},
    {"UrlIsNothing", "<instance_effect url='#none'/>", common(shader("blinn", 4)), -1.0f},
    {"UrlOfAnotherCase", "<instance_effect url='#Effect'/>", common(shader("blinn", 4)), -1.0f},
    {"UrlIsLost", "<instance_effect url='#größe'/>", common(shader("blinn", 4)), -1.0f},
    {"UrlIsTheMaterial", "<instance_effect url='#material'/>", common(shader("blinn", 4)), -1.0f},
    {"UrlIsAGeometry", "<instance_effect url='#one'/>", common(shader("blinn", 4)), -1.0f},
    {"UrlIsANode", "<instance_effect url='#n'/>", common(shader("blinn", 4)), -1.0f},
    {"UrlIsTheProfile", "<instance_effect url='#profile'/>",
     "<profile_COMMON id='profile'><technique sid='common'>" + shader("blinn", 4) + "</technique></profile_COMMON>",
     -1.0f},
    {"NoProfile", toEffect, "", -1.0f},
    {"OtherProfilesAlone", toEffect, "<profile_GLSL/><profile_CG/><profile_GLES/>", -1.0f},
    {"NoTechnique", toEffect, "<profile_COMMON/>", -1.0f}, {"EmptyTechnique", toEffect, common(""), -1.0f},
    {"Lambert", toEffect, common("<lambert/>"), -1.0f}, {"Constant", toEffect, common("<constant/>"), -1.0f},
    {"Blinn", toEffect, common(shader("blinn", 4)), 4.0f}, {"Phong", toEffect, common(shader("phong", 5)), 5.0f},
    {"BehindOtherProfiles", toEffect, "<profile_GLSL/><profile_CG/>" + common(shader("phong", 5)), 5.0f},
    {"BehindAProfileWithoutTechnique", toEffect, "<profile_COMMON/>" + common(shader("phong", 5)), 5.0f},
    {"BehindALambert", toEffect, common("<lambert/>") + common(shader("blinn", 4)), 4.0f},
    {"BeforeALambert", toEffect, common(shader("blinn", 4)) + common("<lambert/>"), 4.0f},
    {"FirstOfTwo", toEffect, common(shader("phong", 5)) + common(shader("blinn", 4)), 5.0f},
    {"FirstOfTwoThatAreAlike", toEffect, common(shader("blinn", 4)) + common(shader("blinn", 6)), 4.0f});

TEST(GeometryInstancingTest, WalkOverTheProfilesDoesNotStopAtTheFirstShader)
{
    const LogCapture log;
    World world({geometry("one"), material("material", "effect"),
                 effect("effect", common(shader("blinn", 4)) +
                                      common("<phong><diffuse><texture texture='none' texcoord='uv'/></diffuse>"
                                             "</phong>"))},
                node("n", instanceOf("#one", bound("symbol", "material"))));
    EXPECT_TRUE(world.load());
    EXPECT_EQ(4.0f, shininessOf(world.scene, "symbol"));
    const BlinnMaterialHandle found = materialOf(world.scene, "symbol");
    ASSERT_TRUE(found);
    EXPECT_FALSE(found->component().diffuseTexture);
    EXPECT_EQ(Texts{noTexture}, log.messages()) << "the second is built, and kept out by the table";
}

TEST(GeometryInstancingTest, TexturesAreLookedUpInTheProfileOfTheirShader)
{
    const auto newparams = [](const std::string& image) {
        return "<newparam sid='surface'><surface type='2D'><init_from>" + image +
               "</init_from></surface></newparam>"
               "<newparam sid='sampler'><sampler2D><source>surface</source></sampler2D></newparam>";
    };
    const LogCapture log;
    World world(
        {geometry("one"), material("material", "effect"),
         effect("effect", "<image id='a'><init_from>./a.png</init_from></image>"
                          "<image id='b'><init_from>./b.png</init_from></image>" +
                              common("<lambert/>", newparams("a")) +
                              common("<blinn><diffuse><texture texture='sampler' texcoord='uv'/></diffuse></blinn>",
                                     newparams("b")))},
        node("n", instanceOf("#one", bound("symbol", "material"))));
    EXPECT_TRUE(world.load());
    const BlinnMaterialHandle found = materialOf(world.scene, "symbol");
    ASSERT_TRUE(found && found->component().diffuseTexture);
    EXPECT_STREQ("./b.png", found->component().diffuseTexture->textureFile().data());
    EXPECT_EQ(Texts{}, log.messages());
}

// A document gives one of the two; the other is set by hand.
TEST(GeometryInstancingTest, BlinnWinsOverAPhongInTheSameTechnique)
{
    World world(node("n", instanceOf("#one", bound("symbol", "blinn"))));
    const auto techniqueOf = [&world](const char* id) {
        const domFx_profile_abstractRef profile = world.element<domEffect>(id)->getFx_profile_abstract_array()[0];
        return daeSafeCast<domProfile_COMMON>(profile)->getTechnique();
    };
    techniquePhong(*techniqueOf("blinn-effect")) = techniqueOf("phong-effect")->getPhong();
    ASSERT_NE(nullptr, techniqueOf("blinn-effect")->getPhong());
    ASSERT_NE(nullptr, techniqueOf("blinn-effect")->getBlinn());
    ASSERT_TRUE(world.load());
    EXPECT_EQ(1.0f, shininessOf(world.scene, "symbol"));
}

// The private steps.

TEST(GeometryInstancingTest, AddingInstancesAnswersZeroWhateverHappens)
{
    World world(node("good", instanceOf("#one") + instanceOf("#two")) + node("again", instanceOf("#one")) +
                node("failing", instanceOf("#bad")) + node("astray", instanceOf("#none")) + node("empty", ""));
    const NodeHandle shows(new Node);
    const auto add = [&world, &shows](const char* id) {
        return world.addGeometryInstance(shows, world.element<domNode>(id)->getInstance_geometry_array());
    };
    const LogCapture log;
    EXPECT_EQ(0u, add("empty"));
    EXPECT_EQ(Keys{}, geometryIds(world.scene));
    EXPECT_EQ(0u, add("good"));
    EXPECT_EQ((Keys{"one", "two"}), geometryIds(world.scene));
    EXPECT_EQ(0u, add("again"));
    EXPECT_EQ(0u, add("failing"));
    EXPECT_EQ(0u, add("astray"));
    EXPECT_EQ(3u, shows.useCount());
    EXPECT_EQ((Texts{notInitialized, noMesh, notAGeometry}), log.messages());
}

TEST(GeometryInstancingTest, RegisteringGivesTheGeometryOnceAndThenAnEmptyHandle)
{
    World world("");
    const LogCapture log;
    const GeometryHandle first = world.createAndRegisterGeometry(world.element<domGeometry>("one"));
    ASSERT_TRUE(first);
    EXPECT_STREQ("one", first->id().data());
    EXPECT_EQ(0u, first->nodes().size());
    EXPECT_EQ(2u, first.useCount()) << "this and the table";
    EXPECT_EQ(first, world.scene.geometryTable().lookup("one")->value);
    EXPECT_FALSE(world.createAndRegisterGeometry(world.element<domGeometry>("one")));
    EXPECT_EQ(first, world.scene.geometryTable().lookup("one")->value);
    EXPECT_EQ(Keys{"one"}, geometryIds(world.scene));
    EXPECT_EQ(Texts{}, log.messages()) << "the line is that of the caller";
}

TEST(GeometryInstancingTest, RegisteringGivesAGeometryThatFailsToBuildEachTime)
{
    World world("");
    const LogCapture log;
    const GeometryHandle first = world.createAndRegisterGeometry(world.element<domGeometry>("bad"));
    const GeometryHandle second = world.createAndRegisterGeometry(world.element<domGeometry>("bad"));
    ASSERT_TRUE(first && second);
    EXPECT_NE(first, second);
    EXPECT_STREQ("", first->id().data());
    EXPECT_EQ(1u, first.useCount()) << "in no table";
    EXPECT_EQ(Keys{}, geometryIds(world.scene));
    EXPECT_EQ((Texts{noMesh, noMesh}), log.messages());
}

TEST(GeometryInstancingTest, GeometryWithoutIdIsRegisteredUnderTheEmptyKey)
{
    const std::string unnamed = "<geometry><mesh><vertices id='v'/></mesh></geometry>";
    World world({unnamed + unnamed + geometry("id") + geometryWithoutMesh("bad"), "", ""}, "");
    daeElement* const library = world.element<domGeometry>("id")->getParentElement();
    const domGeometry_Array& geometries = daeSafeCast<domLibrary_geometries>(library)->getGeometry_array();
    ASSERT_EQ(nullptr, geometries[0]->getId());
    const LogCapture log("libVideo.visualScene");
    const GeometryHandle first = world.createAndRegisterGeometry(geometries[0]);
    ASSERT_TRUE(first);
    EXPECT_EQ(Keys{""}, geometryIds(world.scene));
    EXPECT_EQ(first, geometryOf(world.scene, ""));
    EXPECT_FALSE(world.createAndRegisterGeometry(geometries[1])) << "the empty key is taken";
    EXPECT_TRUE(world.createAndRegisterGeometry(geometries[2]));
    EXPECT_EQ((Keys{"", "id"}), geometryIds(world.scene));
    EXPECT_EQ(Texts{}, log.messages());
}

TEST(GeometryInstancingTest, FailedGeometryDoesNotTakeTheEmptyKey)
{
    World world({"<geometry/><geometry><mesh><vertices id='v'/></mesh></geometry>" + geometry("id"), "", ""}, "");
    daeElement* const library = world.element<domGeometry>("id")->getParentElement();
    const domGeometry_Array& geometries = daeSafeCast<domLibrary_geometries>(library)->getGeometry_array();
    const LogCapture log("libVideo.visualScene");
    EXPECT_TRUE(world.createAndRegisterGeometry(geometries[0]));
    EXPECT_EQ(Keys{}, geometryIds(world.scene));
    EXPECT_TRUE(world.createAndRegisterGeometry(geometries[1]));
    EXPECT_EQ(Keys{""}, geometryIds(world.scene));
}

TEST(GeometryInstancingTest, RegisteringAMaterialKeepsTheFirstOfASymbol)
{
    World world("");
    const LogCapture log;
    world.registerMaterialAttributes("symbol", world.element<domMaterial>("lambert"));
    EXPECT_EQ(Keys{}, symbols(world.scene));
    world.registerMaterialAttributes("symbol", world.element<domMaterial>("phong"));
    const BlinnMaterialHandle first = materialOf(world.scene, "symbol");
    ASSERT_TRUE(first);
    world.registerMaterialAttributes("symbol", world.element<domMaterial>("blinn"));
    EXPECT_EQ(first, materialOf(world.scene, "symbol"));
    EXPECT_EQ(2.0f, first->component().shininess);
    world.registerMaterialAttributes("", world.element<domMaterial>("blinn"));
    EXPECT_EQ((Keys{"", "symbol"}), symbols(world.scene));
    EXPECT_EQ(Texts{}, log.messages());
}

// Failing loads.

// Nodes a, b and c; the load fails at the geometry of b.
std::string threeNodes()
{
    return node("a", "<translate sid='t'>1 2 3</translate>" + instanceOf("#one", bound("first", "blinn"))) +
           node("b", instanceOf("#two", bound("second", "phong")) + instanceOf("#three", bound("third", "phong"))) +
           node("c", instanceOf("#three", bound("fourth", "phong")));
}

Libraries withSecond(const Triangle& second)
{
    Libraries libraries = usual();
    libraries.geometries = geometry("one") + geometry("two", second) + geometry("three");
    libraries.animations =
        "<animation><source id='times'><float_array id='times-array' count='2'>0 1</float_array><technique_common>"
        "<accessor source='#times-array' count='2' stride='1'/></technique_common></source>"
        "<source id='values'><float_array id='values-array' count='6'>0 0 0 1 1 1</float_array><technique_common>"
        "<accessor source='#values-array' count='2' stride='3'/></technique_common></source>"
        "<sampler id='sampler'><input semantic='INPUT' source='#times'/><input semantic='OUTPUT' source='#values'/>"
        "</sampler><channel source='#sampler' target='a/t'/></animation>";
    return libraries;
}

// What was loaded before the second geometry failed.
void expectReached(const VisualScene& scene)
{
    EXPECT_EQ(3u, scene.root().children().size()) << "all nodes stand before the first instance";
    EXPECT_EQ(3u, nodeListOf(scene).size());
    EXPECT_EQ(Keys{"one"}, geometryIds(scene));
    EXPECT_EQ("a", showing(scene, "one"));
    EXPECT_EQ((Keys{"first", "second"}), symbols(scene)) << "the materials of an instance come before its geometry";
    EXPECT_EQ(1.0f, shininessOf(scene, "first"));
    EXPECT_EQ(2.0f, shininessOf(scene, "second"));
    EXPECT_EQ(2u, nodeOf(scene, "a").useCount());
    EXPECT_EQ(1u, nodeOf(scene, "b").useCount());
    EXPECT_FALSE(nodeOf(scene, "a")->hasAnimation()) << "animations come last";
}

TEST(GeometryInstancingTest, AnimationIsAttachedWhereNoGeometryEndsTheLoad)
{
    const LogCapture log;
    World world(withSecond(Triangle()), threeNodes());
    EXPECT_TRUE(world.load());
    EXPECT_TRUE(nodeOf(world.scene, "a")->hasAnimation());
    EXPECT_EQ((Keys{"one", "three", "two"}), geometryIds(world.scene));
    EXPECT_EQ((Keys{"first", "fourth", "second", "third"}), symbols(world.scene));
    EXPECT_EQ(Texts{notInitialized}, log.messages());
}

// An entry of <p> that names a record that the source does not have.
Triangle beyondItsSource()
{
    Triangle triangle;
    triangle.indices = "0 1 3";
    return triangle;
}

// More sources than inputs with an offset.
Triangle withoutAnOffset()
{
    Triangle triangle;
    triangle.hasNormals = true;
    return triangle;
}

TEST(GeometryInstancingTest, AssertionFailureOfAGeometryEndsTheLoadAndLeavesWhatStands)
{
    World world(withSecond(beyondItsSource()), threeNodes());
    const LogCapture log;
    std::optional<vesk::AssertionFailure> thrown;
    try {
        world.load();
    } catch (const vesk::AssertionFailure& failure) {
        thrown = failure;
    }
    ASSERT_TRUE(thrown);
    EXPECT_STREQ("index < m_count", thrown->expression());
    EXPECT_STREQ("libVideo/SceneGraph/Accessor", thrown->file());
    expectReached(world.scene);
    EXPECT_EQ(Texts{}, log.messages());
}

TEST(GeometryInstancingTest, ParamOfAnotherTypeEndsTheLoadToo)
{
    Triangle triangle;
    triangle.type = "int";
    World world(withSecond(triangle), threeNodes());
    const LogCapture log;
    std::optional<vesk::AssertionFailure> thrown;
    try {
        world.load();
    } catch (const vesk::AssertionFailure& failure) {
        thrown = failure;
    }
    ASSERT_TRUE(thrown);
    EXPECT_STREQ("false", thrown->expression());
    expectReached(world.scene);
    EXPECT_EQ(Texts{}, log.messages());
}

TEST(GeometryInstancingTest, IndexOutOfBoundsOfAGeometryEndsTheLoadAndLeavesWhatStands)
{
    World world(withSecond(withoutAnOffset()), threeNodes());
    const LogCapture log;
    std::optional<vesk::IndexOutOfBounds> thrown;
    try {
        world.load();
    } catch (const vesk::IndexOutOfBounds& failure) {
        thrown = failure;
    }
    ASSERT_TRUE(thrown);
    EXPECT_EQ(0, thrown->low());
    EXPECT_EQ(0, thrown->high()) << "one offset";
    EXPECT_EQ(1, thrown->index()) << "that of the second source";
    expectReached(world.scene);
    EXPECT_EQ(Texts{}, log.messages());
}

TEST(GeometryInstancingTest, ExceptionsPassThroughTheLoadOfAFile)
{
    const TemporaryFile assertion(wholeText(withSecond(beyondItsSource()), threeNodes()));
    const TemporaryFile bounds(wholeText(withSecond(withoutAnOffset()), threeNodes()));
    const LogCapture log;
    Scene first;
    EXPECT_THROW(static_cast<void>(first.createFromCollada(assertion.path().c_str())), vesk::AssertionFailure);
    expectReached(first.visualScene());
    Scene second;
    EXPECT_THROW(static_cast<void>(second.createFromCollada(bounds.path().c_str())), vesk::IndexOutOfBounds);
    expectReached(second.visualScene());
    EXPECT_EQ(Texts{}, log.messages());
}

TEST(GeometryInstancingTest, TraceOfALoadEndsWithItsException)
{
    World world(withSecond(beyondItsSource()), threeNodes());
    const LogCapture log("libVideo.visualScene");
    vesk::LogFactory::setPriority(vesk::LoggerPriority::PRIORITY_TRACE);
    EXPECT_THROW(world.load(), vesk::AssertionFailure);
    ASSERT_EQ(2u, log.lines().size());
    EXPECT_EQ("< VisualScene::createFromCollada", log.lines()[1].text);
}

// Whole files, copies and lifetime.

TEST(GeometryInstancingTest, FileGivesGeometriesAndMaterials)
{
    const TemporaryFile file(
        wholeText(usual(), node("a", node("b", instanceOf("#one", bound("symbol", "blinn")))) +
                               node("c", instanceOf("#one", bound("symbol", "phong")) + instanceOf("#none") +
                                             instanceOf("#bad") + instanceOf("#two", bound("lost", "lost")))));
    const LogCapture log;
    Scene scene;
    EXPECT_TRUE(scene.createFromCollada(file.path().c_str()));
    EXPECT_EQ((Keys{"one", "two"}), geometryIds(scene.visualScene()));
    EXPECT_EQ("c", showing(scene.visualScene(), "one"));
    EXPECT_EQ("c", showing(scene.visualScene(), "two"));
    EXPECT_EQ(2.0f, shininessOf(scene.visualScene(), "symbol"));
    EXPECT_EQ(3.0f, shininessOf(scene.visualScene(), "lost"));
    EXPECT_EQ((Texts{notAGeometry, noMesh, noTexture, notInitialized}), log.messages());
}

// A reference that ends in ".raw" makes the document model read a file as numbers, and crash.

bool loadsWithTheNextInstance(const std::string& materials, const std::string& effectUrl, const std::string& url)
{
    Libraries libraries = usual();
    libraries.materials += "<material id='raw'><instance_effect url='" + effectUrl + "'/></material>";
    const TemporaryFile file(
        wholeText(libraries, node("n", instanceOf(url, materials) + instanceOf("#two", bound("next", "phong")))));
    std::ofstream(file.folder() / "numbers.raw") << "01234567";
    Scene scene;
    return scene.createFromCollada(file.path().c_str()) && showing(scene.visualScene(), "two") == "n" &&
           symbols(scene.visualScene()) == Keys{"next"};
}

INSTANTIATE_ROWS(References, RawReferenceTest, {"OfAnInstance", "numbers.raw#one", "", "#none"},
                 {"OfATarget", "#one", "<instance_material symbol='symbol' target='numbers.raw#blinn'/>", "#none"},
                 {"OfAnEffect", "#one", bound("symbol", "raw"), "numbers.raw#blinn-effect"});

TEST(GeometryInstancingTest, MaterialCanBeReadAndReleasedBeyondItsScene)
{
    Libraries libraries = usual();
    libraries.effects +=
        effect("textured-effect",
               "<image id='image'><init_from>./a.png</init_from></image>" +
                   common("<blinn><diffuse><texture texture='sampler' texcoord='uv'/></diffuse>"
                          "<shininess><float>7</float></shininess></blinn>",
                          "<newparam sid='surface'><surface type='2D'><init_from>image</init_from></surface></newparam>"
                          "<newparam sid='sampler'><sampler2D><source>surface</source></sampler2D></newparam>"));
    libraries.materials += material("textured", "textured-effect");
    const TemporaryFile file(wholeText(libraries, node("n", instanceOf("#one", bound("symbol", "textured")))));
    auto scene = std::make_unique<Scene>();
    ASSERT_TRUE(scene->createFromCollada(file.path().c_str()));
    BlinnMaterialHandle handle = materialOf(scene->visualScene(), "symbol");
    GeometryHandle shown = geometryOf(scene->visualScene(), "one");
    ASSERT_TRUE(handle && shown);
    scene.reset();

    EXPECT_EQ(1u, handle.useCount());
    EXPECT_EQ(7.0f, handle->component().shininess);
    const BlinnMaterial copy(*handle);
    handle = BlinnMaterialHandle();
    ASSERT_TRUE(copy.component().diffuseTexture);
    EXPECT_NE(nullptr, copy.component().diffuseTexture->sampler());
    EXPECT_NE(nullptr, copy.component().diffuseTexture->texture());
    EXPECT_STREQ("./a.png", copy.component().diffuseTexture->textureFile().data());
    EXPECT_EQ(1u, shown.useCount());
    EXPECT_EQ(3u, shown->mesh().primitives()[0]->indexBuffer().size());
}

TEST(GeometryInstancingTest, CopyOfASceneSharesGeometriesAndMaterials)
{
    World world(node("n", instanceOf("#one", bound("symbol", "blinn"))));
    ASSERT_TRUE(world.load());
    const VisualScene copy(world.scene);
    VisualScene assigned;
    assigned = world.scene;
    for (const VisualScene* const other : {&copy, &std::as_const(assigned)}) {
        const auto* const shown = other->geometryTable().lookup("one");
        const auto* const found = other->blinnMaterialTable().lookup("symbol");
        ASSERT_TRUE(shown != nullptr && found != nullptr);
        EXPECT_NE(world.scene.geometryTable().lookup("one"), shown) << "buckets of its own";
        EXPECT_NE(world.scene.blinnMaterialTable().lookup("symbol"), found);
        EXPECT_EQ(world.scene.geometryTable().lookup("one")->value, shown->value);
        EXPECT_EQ(world.scene.blinnMaterialTable().lookup("symbol")->value, found->value);
        EXPECT_EQ(3u, shown->value.useCount());
        EXPECT_EQ(3u, found->value.useCount());
    }
}

TEST(GeometryInstancingTest, SceneThatRanOutOfMemoryCanBeAskedAndDestroyed)
{
    const std::string nodes = node("a", instanceOf("#one", bound("first", "blinn"))) +
                              node("b", instanceOf("#two", bound("second", "phong")));
    const SilentDocumentModel quiet;
    ColladaBuilder document;
    addLibraries(document, usual()).addScene(nodes);
    document.open();
    SceneResources pool;
    constexpr long most = 10000;
    long failures = 0;
    bool isComplete = false;
    while (!isComplete && failures < most) {
        VisualScene scene;
        bool isThrown = false;
        bool hasFailed = false;
        {
            const FailingAllocator allocator(failures);
            try {
                const domVisual_scene& element = *document.element<domVisual_scene>("scene");
                static_cast<void>(scene.createFromCollada(element, SceneResourcesLink(&pool)));
            } catch (const vesk::NullPointer&) {
                isThrown = true;
            } catch (const std::bad_alloc&) {
                isThrown = true;
            }
            hasFailed = allocator.hasFailed();
        }
        EXPECT_EQ(hasFailed, isThrown) << "request " << failures;
        for (const auto& bucket : scene.geometryTable()) {
            EXPECT_EQ(bucket.key, bucket.value->id());
            EXPECT_LE(bucket.value->nodes().size(), 1u);
        }
        for (const auto& bucket : scene.blinnMaterialTable()) {
            EXPECT_TRUE(bucket.value) << bucket.key;
        }
        isComplete = !hasFailed && scene.geometryTable().size() == 2 && scene.blinnMaterialTable().size() == 2;
        ASSERT_NE(hasFailed, isComplete);
        failures += isComplete ? 0 : 1;
    }
    EXPECT_TRUE(isComplete);
    EXPECT_GT(failures, 20) << "two nodes, geometries and materials, their handles and buckets";
}

std::string geometry(const std::string& id, const Triangle& triangle)
{
    const std::string normals =
        triangle.hasNormals ? source(id + "-normals", "0 0 1 0 0 1 0 0 1", 3, "float") : std::string();
    const std::string normalInput =
        triangle.hasNormals ? "<input semantic='NORMAL' source='#" + id + "-normals'/>" : std::string();
    return "<geometry id='" + id + "' name='" + id + "-name'><mesh>" +
           source(id + "-positions", "0 0 0 1 0 0 0 1 0", 3, triangle.type) + normals + "<vertices id='" + id +
           "-vertices'><input semantic='POSITION' source='#" + id + "-positions'/>" + normalInput +
           "</vertices><triangles count='1' material='" + triangle.symbol + "'><input semantic='VERTEX' source='#" +
           id + "-vertices' offset='0'/><p>" + triangle.indices + "</p></triangles></mesh></geometry>";
}

Libraries usual()
{
    return {geometry("one") + geometry("two") + geometry("three") + geometryWithoutMesh("bad"),
            material("blinn", "blinn-effect") + material("phong", "phong-effect") +
                material("lambert", "lambert-effect") + material("constant", "constant-effect") +
                material("lost", "lost-effect"),
            effect("blinn-effect", common(shader("blinn", 1))) + effect("phong-effect", common(shader("phong", 2))) +
                effect("lambert-effect", common("<lambert><diffuse><color>1 0 0 1</color></diffuse></lambert>")) +
                effect("constant-effect", common("<constant><emission><color>1 0 0 1</color></emission></constant>")) +
                effect("lost-effect", common("<phong><diffuse><texture texture='none' texcoord='uv'/></diffuse>"
                                             "<shininess><float>3</float></shininess></phong>"))};
}

ColladaBuilder& addLibraries(ColladaBuilder& builder, const Libraries& libraries)
{
    const auto add = [&builder](const std::string& tag, const std::string& content) {
        if (!content.empty()) {
            builder.add("<" + tag + ">" + content + "</" + tag + ">");
        }
    };
    add("library_animations", libraries.animations);
    add("library_effects", libraries.effects);
    add("library_materials", libraries.materials);
    add("library_geometries", libraries.geometries);
    return builder;
}

std::string showing(const VisualScene& scene, const char* id)
{
    const GeometryHandle found = geometryOf(scene, id);
    if (!found) {
        return "none";
    }
    std::string ids;
    for (const NodeHandle& one : found->nodes()) {
        ids += (ids.empty() ? "" : " ") + std::string(one->id().data());
    }
    return ids;
}

} // namespace
