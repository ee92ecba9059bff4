#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Animation.h>
#include <libVideo/SceneGraph/Camera.h>
#include <libVideo/SceneGraph/Instance.h>
#include <libVideo/SceneGraph/Light.h>
#include <libVideo/SceneGraph/Node.h>
#include <libVideo/SceneGraph/Scene.h>
#include <libVideo/SceneGraph/VisualScene.h>
#include <libVideo/SceneGraph/detail/PoolIndex.h>

// A load places cameras and lights on nodes, and gives animations to their targets.

namespace {

using namespace libVideo;
using namespace testSupport;

using libVideo::detail::PoolIndex;

using Matrix = Matrix4;

PRIVATE_MEMBER(scenePool, SceneResources Scene::*, &Scene::m_resources)
PRIVATE_MEMBER(sceneDae, DAE Scene::*, &Scene::m_dae)
PRIVATE_MEMBER(visualNodeList, vesk::Array<NodeHandle> VisualScene::*, &VisualScene::m_nodeList)
PRIVATE_MEMBER(visualNodeTable, libVideo::NodeTable VisualScene::*, &VisualScene::m_nodeTable)
PRIVATE_MEMBER(visualCameraList, vesk::Array<CameraInstanceHandle> VisualScene::*, &VisualScene::m_cameraList)
PRIVATE_MEMBER(visualResources, SceneResourcesLink VisualScene::*, &VisualScene::m_resources)
PRIVATE_MEMBER(addCameraInstance,
               unsigned (VisualScene::*)(const NodeHandle&, const daeTArray<daeSmartRef<domInstance_camera>>&,
                                         PoolIndex&),
               &VisualScene::addCameraInstance)
PRIVATE_MEMBER(addLightInstance,
               unsigned (VisualScene::*)(const NodeHandle&, const daeTArray<daeSmartRef<domInstance_light>>&,
                                         PoolIndex&),
               &VisualScene::addLightInstance)
PRIVATE_MEMBER(addAnimationsToNodes, void (VisualScene::*)(), &VisualScene::addAnimationsToNodes)
PRIVATE_MEMBER(cameraAnimations, vesk::Array<AnimationHandle> Camera::*, &Camera::m_animations)
PRIVATE_MEMBER(instanceCameraOf, libVideo::Link<Camera> CameraInstance::*, &CameraInstance::m_camera)

constexpr const char* notALightElement = "domInstance_light does not point to a light element";

std::string light(const std::string& id, const std::string& kind, const std::string& extra = std::string());

TEST(LightInstancingTest, LightOfAnEmptyIdBindsToAPooledOneWithoutId)
{
    // The document model alone resolves an empty url to an element with an empty id.
    const LogCapture log;
    ColladaBuilder builder(
        library("library_lights", "<light id=''><technique_common><ambient><color>1 1 1</color></ambient>"
                                  "</technique_common></light><light><technique_common><point><color>1 1 1</color>"
                                  "</point></technique_common></light>" +
                                      light("other", "point")));
    const domCOLLADA* const root = builder.addScene("<node id='n'><instance_light url=''/></node>").open();
    ASSERT_NE(nullptr, root);
    SceneResources pool;
    libVideo::createPointLightListFromCollada(root, pool.pointLightList);
    VisualScene scene;
    ASSERT_TRUE(scene.createFromCollada(*builder.element<domVisual_scene>("scene"), SceneResourcesLink(&pool)));
    ASSERT_EQ(1u, scene.pointLightList().size());
    EXPECT_EQ(pool.pointLightList[0].get(), scene.pointLightList()[0]->pointLight().get());
    EXPECT_EQ("", log.text());
}

constexpr const char* notALight = "Element is not a light";
const std::string noTarget = "Unable to find the animation's target node with id: ";

// --- documents ---

// A camera that looks at a node "aim", with an angle and planes that an animation can target.
std::string camera(const std::string& id, const std::string& lookAt = "aim")
{
    return "<camera id='" + id +
           "'><optics><technique_common><perspective><xfov sid='x'>90</xfov><yfov sid='y'>90</yfov>"
           "<znear sid='near'>1</znear><zfar sid='far'>5</zfar></perspective></technique_common></optics>"
           "<extra><technique profile='FCOLLADA'><target>#" +
           lookAt + "</target></technique></extra></camera>";
}

std::string spot(const std::string& id, const std::string& target = "aim")
{
    return light(id, "spot", vendorExtra("<target>#" + target + "</target>"));
}

std::string instanceCamera(const std::string& id)
{
    return "<instance_camera url='#" + id + "'/>";
}

std::string instanceLight(const std::string& id)
{
    return "<instance_light url='#" + id + "'/>";
}

const std::string aim = "<node id='aim'><translate sid='t'>0 0 0</translate></node>";

/// A document loaded from a file, and its messages. Captures all messages while it exists.
class Loaded {
public:
    Loaded(const std::string& libraries, const std::string& nodes)
        : m_file(ColladaBuilder(libraries).addScene(nodes).text())
    {
        if (!m_scene.createFromCollada(m_file.path().c_str())) {
            throw std::runtime_error("the document does not load: " + m_log.text());
        }
    }

    VisualScene& scene() { return m_scene.visualScene(); }
    SceneResources& pool() { return scenePool(m_scene); }
    LogCapture& log() { return m_log; }
    std::string lines() const { return m_log.text(); }

    const NodeHandle& node(const std::string& id)
    {
        for (const NodeHandle& each : visualNodeList(scene())) {
            if (id == each->id().data()) {
                return each;
            }
        }
        throw std::runtime_error("no node " + id);
    }

    const domNode& element(const char* id)
    {
        DAE& dae = sceneDae(m_scene);
        return *daeSafeCast<domNode>(dae.getDatabase()->idLookup(id, dae.getDoc(0)));
    }

    /// The result of placing the cameras or lights of an element on the node of another element.
    unsigned addCameras(const char* nodeId, const char* elementId)
    {
        PoolIndex index(pool());
        return addCameraInstance(scene(), node(nodeId), element(elementId).getInstance_camera_array(), index);
    }
    unsigned addLights(const char* nodeId, const char* elementId)
    {
        PoolIndex index(pool());
        return addLightInstance(scene(), node(nodeId), element(elementId).getInstance_light_array(), index);
    }

    /// "camera@node" of each entry of the list, and likewise of the lights.
    std::string cameraList()
    {
        std::string text;
        for (const CameraInstanceHandle& instance : scene().cameraList()) {
            add(text, instance->cameraId(), instance->nodeId());
        }
        return text;
    }
    std::string pointLightList()
    {
        std::string text;
        for (const PointLightInstanceHandle& instance : scene().pointLightList()) {
            add(text, instance->pointLight()->id(), instance->nodeId());
        }
        return text;
    }
    std::string spotLightList()
    {
        std::string text;
        for (const SpotLightInstanceHandle& instance : scene().spotLightList()) {
            add(text, instance->spotLight()->id(), instance->nodeId());
        }
        return text;
    }

private:
    static void add(std::string& text, const vesk::String& object, const vesk::String& node)
    {
        text += (text.empty() ? "" : " ") + std::string(object.data()) + "@" + node.data();
    }

    LogCapture m_log;
    TemporaryFile m_file;
    Scene m_scene;
};

// --- cameras ---

TEST(CameraInstancingTest, EntryRefersToItsNodeAndToThePooledCamera)
{
    Loaded document(library("library_cameras", camera("other") + camera("eye")),
                    node("n", "<translate>0 0 -5</translate>" + instanceCamera("eye")) + aim);
    ASSERT_EQ("eye@n", document.cameraList());
    const CameraInstanceHandle& instance = document.scene().cameraList()[0];
    EXPECT_EQ(document.node("n").get(), instance->node().get());
    EXPECT_EQ(document.pool().cameraList[1].get(), instance->camera().get());
    EXPECT_EQ(document.node("aim").get(), instance->lookAtNode().get());
    EXPECT_EQ(1u, instance.useCount()) << "owned by the list";
    EXPECT_EQ(1u, document.node("n").useCount()) << "not owned by the instance";
    EXPECT_EQ(1u, document.pool().cameraList[1].useCount()) << "not owned by the instance";
    EXPECT_EQ("", document.lines());
}

TEST(CameraInstancingTest, TwoInstancesOnOneNodeAreTwoEntries)
{
    Loaded document(library("library_cameras", camera("a") + camera("b")),
                    node("n", instanceCamera("b") + instanceCamera("a") + instanceCamera("a")) + aim);
    EXPECT_EQ("b@n a@n a@n", document.cameraList());
}

TEST(CameraInstancingTest, FailedInstanceIsDroppedAndTheNextIsRead)
{
    Loaded document(
        library("library_cameras", camera("a") + camera("b")),
        node("n", instanceCamera("a") + instanceCamera("nowhere") + instanceCamera("n") + instanceCamera("b")) + aim);
    EXPECT_EQ("a@n b@n", document.cameraList());
    expectErrors("libVideo.instance",
                 "domInstance_camera does not point to a camera element\n"
                 "Cannot find camera source n for this instance",
                 document.log());
}

TEST(CameraInstancingTest, ResultIsTheSizeOfTheListOverAllNodes)
{
    Loaded document(library("library_cameras", camera("a") + camera("b")),
                    node("n", instanceCamera("a") + instanceCamera("b")) + node("m", instanceCamera("b")) +
                        node("bad", instanceCamera("nowhere")) + node("empty", "") + aim);
    ASSERT_EQ("a@n b@n b@m", document.cameraList());
    EXPECT_EQ(4u, document.addCameras("aim", "m")) << "one added to three";
    EXPECT_EQ(6u, document.addCameras("m", "n"));
    EXPECT_EQ(6u, document.addCameras("n", "bad")) << "nothing added";
    EXPECT_EQ(6u, document.addCameras("n", "empty"));
    EXPECT_EQ("a@n b@n b@m b@aim a@m b@m", document.cameraList());
}

TEST(CameraInstancingTest, IdsThatDifferInCaseBindToTheFirst)
{
    Loaded document(library("library_cameras", camera("Eye") + camera("eye") + camera("EYE")),
                    node("n", instanceCamera("eye") + instanceCamera("EYE") + instanceCamera("Eye")) + aim);
    EXPECT_EQ("Eye@n Eye@n Eye@n", document.cameraList());
    for (const CameraInstanceHandle& instance : document.scene().cameraList()) {
        EXPECT_EQ(document.pool().cameraList[0].get(), instance->camera().get());
    }
}

TEST(CameraInstancingTest, LookAtNodeMayStandLaterAndDeeperInTheDocument)
{
    Loaded document(library("library_cameras", camera("eye", "deep")),
                    node("n", "<translate>0 0 -5</translate>" + instanceCamera("eye")) +
                        node("later", node("mid", node("deep", "<translate>0 0 3</translate>"))));
    const CameraInstance& instance = *document.scene().cameraList()[0];
    EXPECT_EQ(document.node("deep").get(), instance.lookAtNode().get());
    EXPECT_EQ(1.0f, instance.view()[0]);
    EXPECT_EQ(5.0f, instance.view()[14]);
    EXPECT_EQ("", document.lines());
}

TEST(CameraInstancingTest, MissingLookAtNodeKeepsTheEntry)
{
    Loaded document(library("library_cameras", camera("eye", "AIM")), node("n", instanceCamera("eye")) + aim);
    EXPECT_EQ("eye@n", document.cameraList());
    expectErrors("libVideo.instance", "Cannot find lookat node AIM from camera list", document.log());
}

TEST(CameraInstancingTest, CameraThatFailedToLoadIsPooledAndPlaced)
{
    Loaded document(library("library_cameras",
                            "<camera id='eye' name='Eye'><optics><technique_common><perspective><xfov>90</xfov>"
                            "<znear>1</znear></perspective></technique_common></optics></camera>"),
                    node("n", instanceCamera("eye")));
    EXPECT_EQ("eye@n", document.cameraList());
    EXPECT_EQ("Camera Eye does not have far plane data\nCannot find lookat node  from camera list", document.lines());
}

// --- lights ---

TEST(LightInstancingTest, EntriesReferToTheirNodeAndToThePooledLight)
{
    Loaded document(library("library_lights", light("bulb", "point") + spot("beam") + light("other", "point")),
                    node("n", "<instance_light url='#beam' sid='s1' name='Beam'/>"
                              "<instance_light url='#other' sid='s2' name='Other'/>") +
                        node("m", instanceLight("bulb")) + aim);
    EXPECT_EQ("other@n bulb@m", document.pointLightList());
    EXPECT_EQ("beam@n", document.spotLightList());
    const PointLightInstanceHandle& point = document.scene().pointLightList()[0];
    const SpotLightInstanceHandle& beam = document.scene().spotLightList()[0];
    EXPECT_EQ(document.pool().pointLightList[1].get(), point->pointLight().get());
    EXPECT_EQ(document.pool().spotLightList[0].get(), beam->spotLight().get());
    EXPECT_EQ(document.node("n").get(), point->node().get());
    EXPECT_EQ(document.node("n").get(), beam->node().get());
    EXPECT_EQ(document.node("aim").get(), beam->lookatNode().get());
    EXPECT_STREQ("Other", point->name().data());
    EXPECT_STREQ("s2", point->sid().data());
    EXPECT_STREQ("Beam", beam->name().data());
    EXPECT_STREQ("s1", beam->sid().data());
    EXPECT_EQ(1u, point.useCount());
    EXPECT_EQ(1u, beam.useCount());
    EXPECT_EQ(1u, document.pool().pointLightList[1].useCount());
    EXPECT_EQ(1u, document.pool().spotLightList[0].useCount());
    EXPECT_EQ("", document.lines());
}

TEST(LightInstancingTest, ResultIsTheSizeOfBothListsOverAllNodes)
{
    Loaded document(library("library_lights", light("bulb", "point") + spot("beam") + light("fog", "ambient")),
                    node("n", instanceLight("bulb") + instanceLight("beam")) +
                        node("m", instanceLight("beam") + instanceLight("fog")) + node("empty", "") + aim);
    EXPECT_EQ(4u, document.addLights("aim", "m")) << "one added to three";
    EXPECT_EQ(6u, document.addLights("m", "n"));
    EXPECT_EQ(6u, document.addLights("m", "empty"));
    EXPECT_EQ("bulb@n bulb@m", document.pointLightList());
    EXPECT_EQ("beam@n beam@m beam@aim beam@m", document.spotLightList());
}

// A url that leads to no light: the lights of the node after it are skipped.
class LightInstancingStopTest : public testing::TestWithParam<Case<const char*, const char*>> {};

TEST_P(LightInstancingStopTest, SkipsTheRestOfTheNodeAndOtherNodesGoOn)
{
    Loaded document(library("library_cameras", camera("eye")) +
                        library("library_lights", light("a", "point") + light("b", "point") + spot("c")),
                    node("before", instanceLight("b")) +
                        node("n", instanceLight("a") + GetParam().given + instanceLight("b") + instanceLight("c") +
                                      instanceCamera("eye")) +
                        node("after", instanceLight("b") + instanceLight("c")) + aim);
    EXPECT_EQ("b@before a@n b@after", document.pointLightList());
    EXPECT_EQ("c@after", document.spotLightList());
    EXPECT_EQ("eye@n", document.cameraList());
    expectErrors("libVideo.visualScene", GetParam().expected, document.log());

    document.log().clear();
    EXPECT_EQ(0u, document.addLights("after", "n")) << "whatever the lists hold";
    EXPECT_EQ("b@before a@n b@after a@after", document.pointLightList()) << "what was made stays";
    EXPECT_EQ(GetParam().expected, document.lines());
    EXPECT_EQ(6u, document.addLights("n", "before"));
}

INSTANTIATE_ROWS(Urls, LightInstancingStopTest, {"ToNothing", "<instance_light url='#nowhere'/>", notALightElement},
                 {"OfOtherCase", "<instance_light url='#A'/>", notALightElement},
                 {"Absent", "<instance_light/>", notALightElement},
                 {"ToANode", "<instance_light url='#n'/>", notALight},
                 {"ToACamera", "<instance_light url='#eye'/>", notALight});

TEST(LightInstancingTest, BadInstanceInFrontLeavesTheNodeWithoutLights)
{
    Loaded document(library("library_lights", light("a", "point")),
                    node("n", instanceLight("nowhere") + instanceLight("a")) +
                        node("m", instanceLight("n") + instanceLight("nowhere")));
    EXPECT_EQ("", document.pointLightList());
    EXPECT_EQ("", document.spotLightList());
    expectErrors("libVideo.visualScene", std::string(notALightElement) + "\n" + notALight, document.log());
    EXPECT_EQ(0u, document.addLights("n", "n"));
}

TEST(LightInstancingTest, PointLightIdsThatDifferInCaseBindToTheFirst)
{
    Loaded document(library("library_lights", light("Lamp", "point") + light("lamp", "point")),
                    node("n", instanceLight("lamp") + instanceLight("Lamp")));
    EXPECT_EQ("Lamp@n Lamp@n", document.pointLightList());
}

TEST(LightInstancingTest, SpotLightIdsThatDifferInCaseBindToTheFirst)
{
    Loaded document(library("library_lights", spot("lamp") + spot("LAMP")),
                    node("n", instanceLight("LAMP") + instanceLight("lamp")) + aim);
    EXPECT_EQ("lamp@n lamp@n", document.spotLightList());
}

TEST(LightInstancingTest, IdInBothPoolsGoesToThePointListOnly)
{
    Loaded document(library("library_lights", spot("lamp") + light("LAMP", "point") + spot("beam")),
                    node("n", instanceLight("lamp") + instanceLight("LAMP") + instanceLight("beam")) + aim);
    EXPECT_EQ("LAMP@n LAMP@n", document.pointLightList()) << "although the first url names the spot";
    EXPECT_EQ("beam@n", document.spotLightList());
    EXPECT_EQ("", document.lines());
}

TEST(LightInstancingTest, LightOfAnotherKindIsDroppedSilentlyAndTheNextIsRead)
{
    Loaded document(
        library("library_lights",
                light("fog", "ambient") + light("sun", "directional") + "<light id='none'/>" + light("bulb", "point")),
        node("n", instanceLight("fog") + instanceLight("sun") + instanceLight("none") + instanceLight("bulb")));
    EXPECT_EQ("bulb@n", document.pointLightList());
    EXPECT_EQ("", document.spotLightList());
    EXPECT_EQ("", document.lines());
}

TEST(LightInstancingTest, AmbientLightWithTheIdOfAPooledOneBindsToThat)
{
    // Only the id is searched for.
    Loaded document(library("library_lights", light("lamp", "ambient") + light("Lamp", "point")),
                    node("n", instanceLight("lamp")));
    EXPECT_EQ("Lamp@n", document.pointLightList());
}

TEST(LightInstancingTest, SpotThatFailedToLoadIsPooledAndPlaced)
{
    Loaded document(library("library_lights", "<light id='beam'><technique_common><spot/></technique_common></light>"),
                    node("n", instanceLight("beam")));
    EXPECT_EQ("beam@n", document.spotLightList());
    EXPECT_EQ("SpotLight has no color component\nCannot resolve lookAtNode with id ", document.lines());
}

TEST(LightInstancingTest, LookAtNodeMayStandLaterInTheDocument)
{
    Loaded document(library("library_lights", spot("beam", "deep")),
                    node("n", instanceLight("beam")) +
                        node("later", node("mid", node("deep", "<translate>0 0 3</translate>"))));
    EXPECT_EQ(document.node("deep").get(), document.scene().spotLightList()[0]->lookatNode().get());
    EXPECT_EQ("", document.lines());
}

TEST(InstancingTest, ListsAreInBreadthFirstOrderOfTheNodes)
{
    const std::string all = instanceCamera("eye") + instanceLight("bulb") + instanceLight("beam");
    Loaded document(
        library("library_cameras", camera("eye")) + library("library_lights", light("bulb", "point") + spot("beam")),
        node("A", all + node("A1", all + node("C", all)) + node("A2", all)) + node("B", all + node("B1", all)) + aim);
    EXPECT_EQ("eye@A eye@B eye@A1 eye@A2 eye@B1 eye@C", document.cameraList());
    EXPECT_EQ("bulb@A bulb@B bulb@A1 bulb@A2 bulb@B1 bulb@C", document.pointLightList());
    EXPECT_EQ("beam@A beam@B beam@A1 beam@A2 beam@B1 beam@C", document.spotLightList());
}

TEST(InstancingTest, CamerasOfANodeComeBeforeItsLightsAndThoseBeforeItsGeometries)
{
    Loaded document(
        "", node("n", "<instance_geometry url='#nowhere'/>" + instanceLight("nowhere") + instanceCamera("nowhere")) +
                node("m", instanceLight("n") + instanceCamera("m")));
    EXPECT_EQ("domInstance_camera does not point to a camera element\n"
              "domInstance_light does not point to a light element\n"
              "Not a geometry element\n"
              "Cannot find camera source m for this instance\n"
              "Element is not a light",
              document.lines());
}

TEST(InstancingTest, FaultsOfInstancesDoNotFailTheLoad)
{
    const TemporaryFile file(
        ColladaBuilder().addScene(node("n", instanceCamera("nowhere") + instanceLight("nowhere"))).text());
    const LogCapture log;
    Scene scene;
    EXPECT_TRUE(scene.createFromCollada(file.path().c_str()));
    EXPECT_EQ(0u, scene.visualScene().cameraList().size());
    EXPECT_EQ(0u, scene.visualScene().pointLightList().size());
    EXPECT_EQ(0u, scene.visualScene().spotLightList().size());
}

// --- animations ---

TEST(AnimationInstancingTest, NodeIsAskedBeforeACameraOfTheSameId)
{
    Loaded document(library("library_animations", curve("c", "both/t", "1 3", "1 2 3  3 4 5")) +
                        library("library_cameras", camera("both")),
                    "<node id='both'><translate sid='t'>0 0 0</translate>" + instanceCamera("both") + "</node>" + aim);
    ASSERT_EQ("both@both", document.cameraList());
    EXPECT_TRUE(document.node("both")->hasAnimation());
    EXPECT_EQ(0u, cameraAnimations(*document.pool().cameraList[0]).size());
    EXPECT_EQ("", document.lines());
}

TEST(AnimationInstancingTest, NodeThatCannotUseAnAnimationKeepsItFromTheCamera)
{
    Loaded document(library("library_animations", curve("c", "both/y", "1 3", "60 120")) +
                        library("library_cameras", camera("both")),
                    node("both", instanceCamera("both")) + aim);
    ASSERT_EQ("both@both", document.cameraList());
    EXPECT_FALSE(document.node("both")->hasAnimation());
    EXPECT_EQ(0u, cameraAnimations(*document.pool().cameraList[0]).size());
    EXPECT_EQ("", document.lines());
}

TEST(AnimationInstancingTest, CameraIsReachedThroughAnInstanceOnly)
{
    Loaded document(library("library_animations", curve("c", "placed/y", "1 3", "60 120") +
                                                      curve("d", "unused/y", "1 3", "60 120") +
                                                      curve("e", "aim/t", "1 3", "1 2 3  3 4 5")) +
                        library("library_cameras", camera("unused") + camera("placed")),
                    node("n", instanceCamera("placed")) + aim);
    EXPECT_EQ(0u, cameraAnimations(*document.pool().cameraList[0]).size());
    ASSERT_EQ(1u, cameraAnimations(*document.pool().cameraList[1]).size());
    EXPECT_EQ(2u, document.pool().animationList[0].useCount()) << "shared by pool and camera";
    EXPECT_EQ(1u, document.pool().animationList[1].useCount());
    EXPECT_TRUE(document.node("aim")->hasAnimation()) << "those behind go on";
    expectErrors("libVideo.visualScene", noTarget + "unused", document.log());
}

TEST(AnimationInstancingTest, CameraOfSeveralInstancesTakesAnAnimationOnce)
{
    Loaded document(library("library_animations", curve("c", "eye/y", "1 3", "60 120")) +
                        library("library_cameras", camera("eye")),
                    node("a", instanceCamera("eye") + instanceCamera("eye")) + node("b", instanceCamera("eye")) + aim);
    ASSERT_EQ("eye@a eye@a eye@b", document.cameraList());
    EXPECT_EQ(1u, cameraAnimations(*document.pool().cameraList[0]).size());
    EXPECT_EQ(2u, document.pool().animationList[0].useCount());
    // All of them see it: at second 1 the angle is 60 degrees; the cotangent of its half is √3.
    EXPECT_NEAR(1.7320508f, document.scene().cameraList()[2]->projection(1.0)[5], 1e-6f);
    EXPECT_NEAR(1.7320508f, document.scene().cameraList()[0]->projection()[5], 1e-6f);
    EXPECT_NEAR(1.7320508f, document.scene().cameraList()[1]->projection()[5], 1e-6f);
}

TEST(AnimationInstancingTest, SeveralAnimationsOfACameraKeepTheirOrder)
{
    Loaded document(library("library_animations", curve("c", "eye/y", "1 3", "60 120") +
                                                      curve("d", "eye/near", "1 3", "1 1") +
                                                      curve("e", "eye/y", "1 3", "90 90")) +
                        library("library_cameras", camera("eye")),
                    node("n", instanceCamera("eye")) + aim);
    const vesk::Array<AnimationHandle>& taken = cameraAnimations(*document.pool().cameraList[0]);
    ASSERT_EQ(3u, taken.size());
    for (unsigned i = 0; i < 3; ++i) {
        EXPECT_EQ(document.pool().animationList[i].get(), taken[i].get()) << i;
    }
    EXPECT_NEAR(1.0f, document.scene().cameraList()[0]->projection(1.0)[5], 1e-6f) << "the later of two wins";
}

TEST(AnimationInstancingTest, TargetsAreFoundInTheirExactCase)
{
    Loaded document(library("library_animations",
                            curve("c", "EYE/y", "1 3", "60 120") + curve("d", "AIM/t", "1 3", "1 2 3  3 4 5")) +
                        library("library_cameras", camera("eye")),
                    node("n", instanceCamera("eye")) + aim);
    EXPECT_EQ(0u, cameraAnimations(*document.pool().cameraList[0]).size());
    EXPECT_FALSE(document.node("aim")->hasAnimation());
    expectErrors("libVideo.visualScene", noTarget + "EYE\n" + noTarget + "AIM", document.log());
}

TEST(AnimationInstancingTest, OnlyTheCameraThatAnInstanceIsBoundToCounts)
{
    // The instance of "Eye" is bound to "eye", the first match that ignores case.
    Loaded document(
        library("library_animations", curve("c", "Eye/y", "1 3", "60 120") + curve("d", "eye/y", "1 3", "60 120")) +
            library("library_cameras", camera("eye") + camera("Eye")),
        node("n", instanceCamera("Eye")) + aim);
    ASSERT_EQ("eye@n", document.cameraList());
    EXPECT_EQ(1u, cameraAnimations(*document.pool().cameraList[0]).size());
    EXPECT_EQ(0u, cameraAnimations(*document.pool().cameraList[1]).size());
    EXPECT_EQ(noTarget + "Eye", document.lines());
}

TEST(AnimationInstancingTest, LightsAreNoTargets)
{
    Loaded document(library("library_animations", curve("c", "bulb/color", "1 3", "1 1 1  0 0 0") +
                                                      curve("d", "beam/color", "1 3", "1 1 1  0 0 0")) +
                        library("library_lights", light("bulb", "point") + spot("beam")),
                    node("n", instanceLight("bulb") + instanceLight("beam")) + aim);
    expectErrors("libVideo.visualScene", noTarget + "bulb\n" + noTarget + "beam", document.log());
}

/// A scene put together by hand: nodes by id, and a camera instance whose camera has no id.
struct HandMade {
    explicit HandMade(const std::vector<const char*>& ids)
    {
        builder.add(library("library_animations", "<animation/>") +
                    library("library_cameras",
                            "<camera><optics><technique_common><perspective><xfov>90</xfov><yfov>90</yfov>"
                            "<znear>1</znear><zfar>5</zfar></perspective></technique_common></optics></camera>"));
        const domCOLLADA* const root = builder.open();
        libVideo::createAnimationListFromCollada(root, builder.dae(), pool.animationList);
        libVideo::createCameraListFromCollada(root, builder.dae(), pool.cameraList);
        log.clear();
        visualResources(scene) = SceneResourcesLink(&pool);
        for (const char* const id : ids) {
            nodes.append(NodeHandle(new Node));
            visualNodeTable(scene).insert(id, NodeLink(nodes[nodes.size() - 1]));
        }
        const CameraInstanceHandle instance(new CameraInstance);
        instanceCameraOf(*instance) = libVideo::Link<Camera>(pool.cameraList[0]);
        visualCameraList(scene).append(instance);
    }

    void attach() { addAnimationsToNodes(scene); }

    LogCapture log;
    ColladaBuilder builder;
    SceneResources pool;
    vesk::Array<NodeHandle> nodes;
    VisualScene scene;
};

TEST(AnimationInstancingTest, EmptyTargetGoesToANodeWithoutIdFirst)
{
    HandMade stage({"a", ""});
    stage.attach();
    EXPECT_EQ(0u, cameraAnimations(*stage.pool.cameraList[0]).size());
    EXPECT_EQ("", stage.log.text());
}

TEST(AnimationInstancingTest, EmptyTargetGoesToACameraWithoutIdElse)
{
    HandMade stage({"a"});
    stage.attach();
    EXPECT_EQ(1u, cameraAnimations(*stage.pool.cameraList[0]).size());
    EXPECT_EQ("", stage.log.text());
}

TEST(AnimationInstancingTest, EmptyTargetIsLoggedWithNothingBehindTheWordsElse)
{
    HandMade stage({"a"});
    visualCameraList(stage.scene).clear();
    stage.attach();
    EXPECT_EQ(0u, cameraAnimations(*stage.pool.cameraList[0]).size());
    EXPECT_EQ(noTarget, stage.log.text());
}

TEST(AnimationInstancingTest, FailedAnimationOfADocumentGoesToANodeWithoutIdElseToTheLine)
{
    Loaded with(library("library_animations", "<animation/>") + library("library_cameras", camera("eye")),
                node("n", instanceCamera("eye")) + "<node><translate>0 0 0</translate></node>" + aim);
    EXPECT_EQ("Cannot create an animation without a channel element.", with.lines());
    EXPECT_TRUE(with.node("")->hasAnimation()) << "empty target and empty sid meet";

    Loaded without(library("library_animations", "<animation/>") + library("library_cameras", camera("eye")),
                   node("n", instanceCamera("eye")) + aim);
    EXPECT_EQ("Cannot create an animation without a channel element.\n" + noTarget, without.lines());
    EXPECT_EQ(0u, cameraAnimations(*without.pool().cameraList[0]).size());
}

// --- the pool ---

TEST(InstancingTest, PoolIsFilledInItsOrderAlsoWithoutAVisualSceneToShow)
{
    const TemporaryFile file(
        ColladaBuilder(library("library_lights",
                               "<light id='beam'><technique_common><spot/></technique_common></light>"
                               "<light id='bulb'><technique_common><point/></technique_common></light>") +
                       library("library_cameras",
                               "<camera id='eye' name='Eye'><optics><technique_common><perspective/></technique_common>"
                               "</optics></camera>") +
                       library("library_animations", "<animation/>") + "<scene/>")
            .text());
    const LogCapture log;
    Scene scene;
    EXPECT_FALSE(scene.createFromCollada(file.path().c_str()));
    EXPECT_EQ("Cannot create an animation without a channel element.\n"
              "Camera Eye does not have near plane data\n"
              "PointLight has no color component\n"
              "SpotLight has no color component\n"
              "Scene does not have a visual scene",
              log.text());
    const SceneResources& pool = scenePool(scene);
    EXPECT_EQ(1u, pool.animationList.size());
    ASSERT_EQ(1u, pool.cameraList.size());
    ASSERT_EQ(1u, pool.pointLightList.size());
    ASSERT_EQ(1u, pool.spotLightList.size());
    EXPECT_STREQ("eye", pool.cameraList[0]->id().data());
    EXPECT_STREQ("bulb", pool.pointLightList[0]->id().data());
    EXPECT_STREQ("beam", pool.spotLightList[0]->id().data());
    EXPECT_EQ(0u, scene.visualScene().cameraList().size());
    EXPECT_EQ(nullptr, visualResources(scene.visualScene()).get());
}

TEST(InstancingTest, PoolStaysEmptyWithoutAScene)
{
    const TemporaryFile file(ColladaBuilder(library("library_animations", "<animation/>") +
                                            library("library_cameras", camera("eye")) +
                                            library("library_lights", light("bulb", "point") + spot("beam")))
                                 .text());
    const LogCapture log;
    Scene scene;
    EXPECT_FALSE(scene.createFromCollada(file.path().c_str()));
    EXPECT_EQ("Collada file does not have a scene definition " + file.path(), log.text());
    const SceneResources& pool = scenePool(scene);
    EXPECT_EQ(0u, pool.animationList.size() + pool.cameraList.size() + pool.pointLightList.size() +
                      pool.spotLightList.size());
}

TEST(InstancingTest, PoolKeepsWhatTheSceneDoesNotUse)
{
    Loaded document(library("library_cameras", camera("a")) + library("library_cameras", camera("b")) +
                        library("library_lights", light("bulb", "point") + spot("beam") + light("fog", "ambient")),
                    node("n", ""));
    EXPECT_EQ(2u, document.pool().cameraList.size());
    EXPECT_EQ(1u, document.pool().pointLightList.size());
    EXPECT_EQ(1u, document.pool().spotLightList.size());
    EXPECT_EQ("", document.cameraList() + document.pointLightList() + document.spotLightList());
    EXPECT_EQ("", document.lines());
}

// --- a whole document ---

// A camera that moves and widens on its way, a point to look at, and three lights.
std::string stageLibraries()
{
    return library("library_animations",
                   curve("way", "rig/move", "1 3", "0 0 -5  6 0 -3") + curve("zoom", "eye/fov", "1 3", "60 120") +
                       curve("front", "eye/near", "1 3", "1 1") + curve("back", "eye/far", "1 3", "5 5")) +
           library("library_cameras",
                   "<camera id='eye' name='Eye'><optics><technique_common><perspective>"
                   // The cotangent of half of it is 2.
                   "<yfov sid='fov'>53.13010235415598</yfov><aspect_ratio>2</aspect_ratio>"
                   "<znear sid='near'>1</znear><zfar sid='far'>5</zfar></perspective></technique_common></optics>"
                   "<extra><technique profile='FCOLLADA'><user_target>stage.dae#aim</user_target></technique></extra>"
                   "</camera>") +
           library(
               "library_lights",
               "<light id='bulb'><technique_common><point><color>1 0.5 0.25</color>"
               "<constant_attenuation>1</constant_attenuation><linear_attenuation>0.5</linear_attenuation>"
               "<quadratic_attenuation>0.125</quadratic_attenuation></point></technique_common></light>"
               "<light id='fog'><technique_common><ambient><color>1 1 1</color></ambient></technique_common></light>"
               "<light id='beam'><technique_common><spot><color>0 0 1</color><falloff_angle>30</falloff_angle>"
               "<falloff_exponent>2</falloff_exponent></spot></technique_common><extra>"
               "<technique profile='FCOLLADA'><outer_cone>45</outer_cone><target>#aim</target></technique></extra>"
               "</light>"
               "<light id='glow'><technique_common><point><color>2 2 2</color></point></technique_common></light>");
}

std::string stageNodes()
{
    return "<node id='rig' name='Rig'><translate sid='move'>0 0 -10</translate><instance_camera url='#eye'/>"
           "<node id='onRig'><translate>0 1 0</translate><instance_light url='#glow' name='Glow'/></node></node>"
           "<node id='lamps'><translate>0 4 3</translate><instance_light url='#bulb'/><instance_light url='#fog'/>"
           "<instance_light url='#beam' sid='b'/></node>"
           "<node id='group'><translate>10 0 -10</translate><node id='aim'><translate>0 0 0</translate></node></node>";
}

void expectNear(const std::array<double, 16>& expected, const Matrix& actual)
{
    for (unsigned i = 0; i < 16; ++i) {
        EXPECT_NEAR(expected[i], double(actual[i]), 1e-5) << "element " << i;
    }
}

// From (x, 0, z) to the origin with Y up: with d the distance, z axis = (-x, 0, -z) / d, x axis = (-z, 0, x) / d,
// y axis = (0, 1, 0).
std::array<double, 16> viewFrom(double x, double z)
{
    const double d = std::sqrt(x * x + z * z);
    return {-z / d, 0, -x / d, 0, 0, 1, 0, 0, x / d, 0, -z / d, 0, 0, 0, d, 1};
}

// Planes at 1 and 5: 5 / (5 - 1) = 1.25. Twice as wide as high.
std::array<double, 16> projectionOf(double cotangent)
{
    return {2 * cotangent, 0, 0, 0, 0, cotangent, 0, 0, 0, 0, 1.25, 1, 0, 0, -1.25, 0};
}

TEST(WholeStageTest, RestPose)
{
    Loaded document(stageLibraries(), stageNodes());
    EXPECT_EQ("", document.lines());
    ASSERT_EQ("eye@rig", document.cameraList());
    ASSERT_EQ("bulb@lamps glow@onRig", document.pointLightList());
    ASSERT_EQ("beam@lamps", document.spotLightList());

    const CameraInstance& instance = *document.scene().cameraList()[0];
    EXPECT_STREQ("Rig", instance.name().data());
    EXPECT_EQ(document.node("aim").get(), instance.lookAtNode().get());
    expectNear(viewFrom(0, -10), instance.view());
    expectNear(projectionOf(2.0), instance.projection());

    const libVideo::PointLightInstance& bulb = *document.scene().pointLightList()[0];
    EXPECT_EQ(1.0f, bulb.pointLight()->color()[0]);
    EXPECT_EQ(0.5f, bulb.pointLight()->color()[1]);
    EXPECT_EQ(0.25f, bulb.pointLight()->color()[2]);
    EXPECT_EQ(1.0f, bulb.pointLight()->constantAttenuation());
    EXPECT_EQ(0.5f, bulb.pointLight()->linearAttenuation());
    EXPECT_EQ(0.125f, bulb.pointLight()->quadraticAttenuation());
    const libVideo::PointLightInstance& glow = *document.scene().pointLightList()[1];
    EXPECT_STREQ("Glow", glow.name().data());
    EXPECT_EQ(2.0f, glow.pointLight()->color()[2]);
    EXPECT_EQ(0.0f, glow.pointLight()->constantAttenuation());

    const libVideo::SpotLightInstance& beam = *document.scene().spotLightList()[0];
    EXPECT_STREQ("b", beam.sid().data());
    EXPECT_EQ(30.0f, beam.spotLight()->innerConeAngle());
    EXPECT_EQ(45.0f, beam.spotLight()->outerConeAngle());
    EXPECT_EQ(2.0f, beam.spotLight()->falloffExponent());
    // From (0, 4, 3) to the origin, 5 away.
    const Vector3 direction = beam.lookAtVector();
    EXPECT_FLOAT_EQ(0.0f, direction[0]);
    EXPECT_FLOAT_EQ(-0.8f, direction[1]);
    EXPECT_FLOAT_EQ(-0.6f, direction[2]);
}

struct TimeCase : Row {
    double time;
    double x; ///< position of the camera
    double z;
    double cotangent; ///< of half its angle
};

class WholeStageTimeTest : public testing::TestWithParam<TimeCase> {};

TEST_P(WholeStageTimeTest, CameraStandsWhereTheCurvesHaveIt)
{
    const TimeCase& row = GetParam();
    Loaded document(stageLibraries(), stageNodes());
    CameraInstance& instance = *document.scene().cameraList()[0];
    // Regardless of earlier evaluations.
    instance.view(2.75);
    instance.projection(2.75);

    expectNear(viewFrom(row.x, row.z), instance.view(row.time));
    expectNear(viewFrom(row.x, row.z), instance.view());
    expectNear(projectionOf(row.cotangent), instance.projection(row.time));
    expectNear(projectionOf(row.cotangent), instance.projection());
    EXPECT_NEAR(row.x, double(document.node("rig")->position()[0]), 1e-5);
    EXPECT_NEAR(row.z, double(document.node("rig")->position()[2]), 1e-5);
    EXPECT_EQ(1.0f, document.node("onRig")->position()[1]) << "time does not travel down the tree";
    EXPECT_EQ("", document.lines());
}

// The keys are at seconds 1 and 3, so the curves last 3 seconds and then start again. Outside the keys the camera is at
// rest. Cotangents: √3 for 30 degrees, 1 for 45 degrees, 0.767327 for 52.5 degrees.
INSTANTIATE_ROWS(Times, WholeStageTimeTest, {"Start", 0.0, 0.0, -10.0, 2.0},
                 {"BeforeTheFirstKey", 0.5, 0.0, -10.0, 2.0}, {"FirstKey", 1.0, 0.0, -5.0, 1.7320508075688772},
                 {"HalfWay", 2.0, 3.0, -4.0, 1.0}, {"ThreeQuarters", 2.5, 4.5, -3.5, 0.7673269879789604},
                 {"LastKeyIsTheStart", 3.0, 0.0, -10.0, 2.0}, {"FirstKeyAgain", 4.0, 0.0, -5.0, 1.7320508075688772},
                 {"HalfWayMuchLater", 302.0, 3.0, -4.0, 1.0}, {"BeforeTheStart", -1.0, 0.0, -10.0, 2.0});

TEST(WholeStageTest, LensAloneLeavesThePlanesOut)
{
    // Values that no animation sets count as 0, and 0 / 0 is NaN.
    Loaded document(library("library_animations", curve("zoom", "eye/y", "1 3", "60 120")) +
                        library("library_cameras", camera("eye")),
                    node("n", instanceCamera("eye")) + aim);
    CameraInstance& instance = *document.scene().cameraList()[0];
    EXPECT_NEAR(1.25f, instance.projection()[10], 1e-6f) << "until the first evaluation";
    const Matrix& projection = instance.projection(2.0);
    EXPECT_NEAR(1.0f, projection[5], 1e-6f);
    EXPECT_TRUE(std::isinf(projection[0])) << "half of no angle";
    EXPECT_TRUE(std::isnan(projection[10]));
    EXPECT_EQ(1.0f, projection[11]);
    EXPECT_TRUE(std::isnan(projection[14]));
}

TEST(WholeStageTest, FoldedTreeMovesTheViewOnceItIsComputedAnew)
{
    Loaded document(stageLibraries(), stageNodes());
    CameraInstance& instance = *document.scene().cameraList()[0];
    document.scene().transform();
    expectNear(viewFrom(0, -10), instance.view());

    // The target is at (10, 0, -10) now: z axis = (1, 0, 0), x axis = (0, 0, -1), eye = (0, 0, -10).
    expectNear({0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, -10, 0, 0, 1}, instance.setLookAtNode(instance.lookAtNode()));
    // Spot at (0, 4, 3): (10, -4, -13) / √285.
    const Vector3 direction = document.scene().spotLightList()[0]->lookAtVector();
    EXPECT_NEAR(10 / 16.881943016134134, double(direction[0]), 1e-6);
    EXPECT_NEAR(-4 / 16.881943016134134, double(direction[1]), 1e-6);
    EXPECT_NEAR(-13 / 16.881943016134134, double(direction[2]), 1e-6);
}

std::string light(const std::string& id, const std::string& kind, const std::string& extra)
{
    return "<light id='" + id + "'><technique_common><" + kind + "><color>1 1 1</color></" + kind +
           "></technique_common>" + extra + "</light>";
}

} // namespace
