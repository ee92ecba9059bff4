#include "support/CollidingTexts.h"
#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Animation.h>
#include <libVideo/SceneGraph/Node.h>
#include <libVideo/SceneGraph/VisualScene.h>
#include <libVideo/SceneGraph/detail/PoolIndex.h>

#include <pthread.h>

namespace {

using namespace libVideo;
using namespace testSupport;

using libVideo::detail::PoolIndex;

using CameraInstanceList = vesk::Array<libVideo::CameraInstanceHandle>;
using PointLightInstanceList = vesk::Array<libVideo::PointLightInstanceHandle>;
using SpotLightInstanceList = vesk::Array<libVideo::SpotLightInstanceHandle>;

PRIVATE_MEMBER(sceneName, vesk::String VisualScene::*, &VisualScene::m_name)
PRIVATE_MEMBER(sceneId, vesk::String VisualScene::*, &VisualScene::m_id)
PRIVATE_MEMBER(sceneRoot, Node VisualScene::*, &VisualScene::m_root)
PRIVATE_MEMBER(nodeTableOf, libVideo::NodeTable VisualScene::*, &VisualScene::m_nodeTable)
PRIVATE_MEMBER(nodeTableRep, vesk::_HashTableRep libVideo::NodeTable::*, &libVideo::NodeTable::m_rep)
PRIVATE_MEMBER(nodeListOf, vesk::Array<NodeHandle> VisualScene::*, &VisualScene::m_nodeList)
PRIVATE_MEMBER(sceneCameraList, CameraInstanceList VisualScene::*, &VisualScene::m_cameraList)
PRIVATE_MEMBER(scenePointLightList, PointLightInstanceList VisualScene::*, &VisualScene::m_pointLightList)
PRIVATE_MEMBER(sceneSpotLightList, SpotLightInstanceList VisualScene::*, &VisualScene::m_spotLightList)
PRIVATE_MEMBER(sceneResourcesMember, SceneResourcesLink VisualScene::*, &VisualScene::m_resources)
PRIVATE_MEMBER(sceneGeometryTable, libVideo::GeometryTable VisualScene::*, &VisualScene::m_geometryTable)
PRIVATE_MEMBER(sceneMaterialTable, libVideo::BlinnMaterialTable VisualScene::*, &VisualScene::m_blinnMaterialTable)
PRIVATE_MEMBER(sceneReserved, unsigned VisualScene::*, &VisualScene::m_reserved)
PRIVATE_MEMBER(sceneProcessNodeInstances,
               void (VisualScene::*)(const NodeHandle&, const daeSmartRef<libVideo::domNode>&, PoolIndex&),
               &VisualScene::processNodeInstances)
PRIVATE_MEMBER(sceneAddAnimationsToNodes, void (VisualScene::*)(), &VisualScene::addAnimationsToNodes)

TEST(VisualSceneTest, MembersStandInTheirOrder)
{
    const VisualScene scene;
    expectAscending({&sceneName(scene), &sceneId(scene), &sceneRoot(scene), &nodeTableOf(scene), &nodeListOf(scene),
                     &sceneCameraList(scene), &scenePointLightList(scene), &sceneSpotLightList(scene),
                     &sceneResourcesMember(scene), &sceneGeometryTable(scene), &sceneMaterialTable(scene),
                     &sceneReserved(scene)});
}

TEST(VisualSceneTest, PoolsStandInTheirOrderAndStartEmpty)
{
    const SceneResources resources;
    expectAscending(
        {&resources.cameraList, &resources.pointLightList, &resources.spotLightList, &resources.animationList});
    EXPECT_EQ(0u, resources.cameraList.size());
    EXPECT_EQ(0u, resources.pointLightList.size());
    EXPECT_EQ(0u, resources.spotLightList.size());
    EXPECT_EQ(0u, resources.animationList.size());
    EXPECT_EQ(8u, resources.cameraList.capacity());
    EXPECT_EQ(8u, resources.pointLightList.capacity());
    EXPECT_EQ(8u, resources.spotLightList.capacity());
    EXPECT_EQ(8u, resources.animationList.capacity());
}

TEST(VisualSceneTest, AccessorsGiveTheirMembers)
{
    const VisualScene scene;
    EXPECT_EQ(&sceneRoot(scene), &scene.root());
    EXPECT_EQ(&sceneCameraList(scene), &scene.cameraList());
    EXPECT_EQ(&scenePointLightList(scene), &scene.pointLightList());
    EXPECT_EQ(&sceneSpotLightList(scene), &scene.spotLightList());
    EXPECT_EQ(&sceneGeometryTable(scene), &scene.geometryTable());
    EXPECT_EQ(&sceneMaterialTable(scene), &scene.blinnMaterialTable());
}

constexpr const char* channel = "libVideo.visualScene";

// The content of a scene, by the names of its members.
const char* nameOf(const VisualScene& scene)
{
    return sceneName(scene).data();
}

const char* idOf(const VisualScene& scene)
{
    return sceneId(scene).data();
}

const SceneResources* resourcesOf(const VisualScene& scene)
{
    return sceneResourcesMember(scene).get();
}

// The node that the table has for an id; null if it has none.
const Node* found(const VisualScene& scene, const char* id)
{
    const auto* const bucket = nodeTableOf(scene).lookup(id);
    return bucket == nullptr ? nullptr : bucket->value.get();
}

// The ids of all nodes, in the order of the list.
std::string listedIds(const VisualScene& scene)
{
    std::string ids;
    for (const NodeHandle& node : nodeListOf(scene)) {
        ids += (ids.empty() ? "" : " ") + std::string(node->id().data());
    }
    return ids;
}

std::string childIds(const Node& node)
{
    std::string ids;
    for (const NodeLink& child : node.children()) {
        ids += (ids.empty() ? "" : " ") + std::string(child->id().data());
    }
    return ids;
}

void expectEmpty(const VisualScene& scene);

/// A document with one visual scene, and the pool of its animations.
class Document {
public:
    /// Of nodes, and of entries of <library_animations>.
    explicit Document(const std::string& nodes, const std::string& animations = std::string())
    {
        m_builder.addScene(nodes);
        load(animations);
    }

    /// Of a whole <visual_scene>.
    static std::unique_ptr<Document> ofScene(const std::string& visualScene)
    {
        return std::unique_ptr<Document>(new Document(WholeScene(), visualScene));
    }

    const domVisual_scene& element() const
    {
        return *m_root->getLibrary_visual_scenes_array()[0]->getVisual_scene_array()[0];
    }

    SceneResourcesLink pool() { return SceneResourcesLink(&m_resources); }
    SceneResources& resources() { return m_resources; }

    bool loadInto(VisualScene& scene) { return scene.createFromCollada(element(), pool()); }

private:
    struct WholeScene {};

    Document(WholeScene /*tag*/, const std::string& visualScene)
    {
        m_builder.add("<library_visual_scenes>" + visualScene + "</library_visual_scenes>");
        load("");
    }

    void load(const std::string& animations)
    {
        if (!animations.empty()) {
            m_builder.add("<library_animations>" + animations + "</library_animations>");
        }
        m_root = m_builder.open();
        const LogCapture quiet; // some tests have a failing curve
        libVideo::createAnimationListFromCollada(m_root, m_builder.dae(), m_resources.animationList);
    }

    ColladaBuilder m_builder;
    SceneResources m_resources;
    domCOLLADA* m_root = nullptr;
};

TEST(VisualSceneTest, NewSceneIsEmpty)
{
    const VisualScene scene;

    expectEmpty(scene);
    EXPECT_EQ(identity, elements(scene.root().transform()));
    EXPECT_STREQ("", scene.root().id().data());
    EXPECT_EQ(nullptr, scene.root().parent());
    EXPECT_EQ(nullptr, found(scene, ""));
    EXPECT_EQ(nullptr, scene.geometryTable().lookup("geometry"));
    EXPECT_EQ(nullptr, scene.blinnMaterialTable().lookup("material"));
    EXPECT_EQ(8u, nodeListOf(scene).capacity());
    EXPECT_EQ(8u, scene.cameraList().capacity());
    EXPECT_EQ(8u, scene.pointLightList().capacity());
    EXPECT_EQ(8u, scene.spotLightList().capacity());
}

TEST(VisualSceneTest, OneNodeIsListedEnteredAndLinked)
{
    const LogCapture log;
    Document document("<node id='only' sid='place' name='Only'><translate>1 2 3</translate></node>");
    VisualScene scene;
    EXPECT_TRUE(document.loadInto(scene));
    ASSERT_EQ(1u, nodeListOf(scene).size());
    const Node* const only = nodeListOf(scene)[0].get();
    EXPECT_STREQ("only", only->id().data());
    EXPECT_STREQ("place", only->sid().data());
    EXPECT_STREQ("Only", only->name().data());
    EXPECT_EQ(translated(1, 2, 3), elements(only->transform()));
    EXPECT_EQ(only, found(scene, "only"));
    EXPECT_EQ(1u, nodeTableOf(scene).size());
    ASSERT_EQ(1u, scene.root().children().size());
    EXPECT_EQ(only, scene.root().children()[0].get());
    EXPECT_EQ(&scene.root(), only->parent().get());
    EXPECT_EQ(0u, only->children().size());
    EXPECT_EQ(&document.resources(), resourcesOf(scene));
    EXPECT_EQ("", log.text());
}

TEST(VisualSceneTest, ListsAndTablesOfInstancesStayEmptyWithoutInstances)
{
    Document document("<node id='a'><node id='b'/></node>");
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    EXPECT_EQ(0u, scene.cameraList().size());
    EXPECT_EQ(0u, scene.pointLightList().size());
    EXPECT_EQ(0u, scene.spotLightList().size());
    EXPECT_EQ(0u, scene.geometryTable().size());
    EXPECT_EQ(0u, scene.blinnMaterialTable().size());
}

TEST(VisualSceneTest, NodesAreListedBreadthFirst)
{
    Document document("<node id='A'><node id='A1'><node id='C'/></node><node id='A2'/></node>"
                      "<node id='B'><node id='B1'/></node>");
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    EXPECT_EQ("A B A1 A2 B1 C", listedIds(scene));
    const vesk::Array<NodeHandle>& list = nodeListOf(scene);
    EXPECT_EQ(&scene.root(), list[0]->parent().get());
    EXPECT_EQ(&scene.root(), list[1]->parent().get());
    EXPECT_EQ(list[0].get(), list[2]->parent().get());
    EXPECT_EQ(list[0].get(), list[3]->parent().get());
    EXPECT_EQ(list[1].get(), list[4]->parent().get());
    EXPECT_EQ(list[2].get(), list[5]->parent().get());
    EXPECT_EQ("A B", childIds(scene.root()));
    EXPECT_EQ("A1 A2", childIds(*list[0]));
    EXPECT_EQ("B1", childIds(*list[1]));
    EXPECT_EQ("C", childIds(*list[2]));
    EXPECT_EQ("", childIds(*list[3]) + childIds(*list[4]) + childIds(*list[5]));
}

TEST(VisualSceneTest, ChildrenStandInDocumentOrderAlsoWhenThereAreMany)
{
    std::string top;
    std::string below;
    std::string expectedTop;
    std::string expectedBelow;
    for (unsigned i = 0; i < 40; ++i) {
        // Falling numbers, so that no order by name gives the same result.
        const std::string number = std::to_string(99 - i);
        top += "<node id='t" + number + "'/>";
        expectedTop += " t" + number;
        below += "<node id='b" + number + "'/>";
        expectedBelow += (i == 0 ? "b" : " b") + number;
    }
    Document document("<node id='first'>" + below + "</node>" + top);
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    EXPECT_EQ("first" + expectedTop, childIds(scene.root()));
    EXPECT_EQ(expectedBelow, childIds(*found(scene, "first")));
    EXPECT_EQ("first" + expectedTop + " " + expectedBelow, listedIds(scene));
    EXPECT_EQ(81u, nodeTableOf(scene).size());
}

TEST(VisualSceneTest, IdsThatWereMadeToCollideCostNoMoreThanOthers)
{
    const std::vector<std::string> ids = testSupport::collidingTexts(300);
    std::string nodes;
    for (const std::string& id : ids) {
        nodes += "<node id='" + id + "'/>";
    }
    Document document(nodes);
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    ASSERT_EQ(300u, nodeTableOf(scene).size());
    for (const std::string& id : ids) {
        ASSERT_NE(nullptr, found(scene, id.c_str())) << id;
        EXPECT_EQ(id, found(scene, id.c_str())->id().data());
    }
    EXPECT_TRUE(nodeTableRep(nodeTableOf(scene)).isKeyed());
}

TEST(VisualSceneTest, RootStandsForNoElement)
{
    const auto document = Document::ofScene("<visual_scene id='scene' name='Stage'><node id='a'/></visual_scene>");
    VisualScene scene;
    ASSERT_TRUE(document->loadInto(scene));
    EXPECT_STREQ("", scene.root().id().data());
    EXPECT_STREQ("", scene.root().name().data());
    EXPECT_EQ(nullptr, scene.root().parent());
    EXPECT_EQ(identity, elements(scene.root().transform()));
    EXPECT_EQ(nullptr, found(scene, ""));
    EXPECT_EQ(nullptr, found(scene, "scene"));
    EXPECT_EQ("a", listedIds(scene));
}

TEST(VisualSceneTest, NameAndIdComeFromTheAttributes)
{
    const auto document = Document::ofScene("<visual_scene id='scene' name='Stage'><node id='a'/></visual_scene>");
    VisualScene scene;
    ASSERT_TRUE(document->loadInto(scene));
    EXPECT_STREQ("Stage", nameOf(scene));
    EXPECT_STREQ("scene", idOf(scene));
}

TEST(VisualSceneTest, SceneWithoutNameAndIdLoads)
{
    const auto document = Document::ofScene("<visual_scene><node id='a'/></visual_scene>");
    VisualScene scene;
    EXPECT_TRUE(document->loadInto(scene));
    EXPECT_STREQ("", nameOf(scene));
    EXPECT_STREQ("", idOf(scene));
    EXPECT_EQ("a", listedIds(scene));
}

TEST(VisualSceneTest, AbsentAttributesLeaveTheMembersAsTheyAre)
{
    const auto document = Document::ofScene("<visual_scene><node id='a'/></visual_scene>");
    VisualScene scene;
    sceneName(scene) = "Before";
    sceneId(scene) = "before";
    ASSERT_TRUE(document->loadInto(scene));
    EXPECT_STREQ("Before", nameOf(scene));
    EXPECT_STREQ("before", idOf(scene));
}

TEST(VisualSceneTest, FirstNodeOfARepeatedIdAnswersAndAllStandInTheTree)
{
    Document document("<node id='a'><node id='twin' name='deep'/></node><node id='twin' name='top'/>"
                      "<node id='twin' name='last'/>");
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    EXPECT_EQ("a twin twin twin", listedIds(scene));
    EXPECT_EQ("a twin twin", childIds(scene.root()));
    EXPECT_EQ("twin", childIds(*found(scene, "a")));
    ASSERT_NE(nullptr, found(scene, "twin"));
    EXPECT_STREQ("top", found(scene, "twin")->name().data()) << "first in the order of the list";
    EXPECT_EQ(2u, nodeTableOf(scene).size());
}

TEST(VisualSceneTest, NodesWithoutIdShareTheEmptyKey)
{
    Document document("<node id='a'><node name='deep'/></node><node name='first'/><node name='second'/>");
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    EXPECT_EQ(4u, nodeListOf(scene).size());
    EXPECT_EQ(3u, scene.root().children().size());
    ASSERT_NE(nullptr, found(scene, ""));
    EXPECT_STREQ("first", found(scene, "")->name().data());
    EXPECT_EQ(2u, nodeTableOf(scene).size());
}

TEST(VisualSceneTest, LookupOfAnIdCountsCase)
{
    Document document("<node id='Lamp' name='1'/><node id='lamp' name='2'/>");
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    EXPECT_STREQ("1", found(scene, "Lamp")->name().data());
    EXPECT_STREQ("2", found(scene, "lamp")->name().data());
    EXPECT_EQ(nullptr, found(scene, "LAMP"));
}

TEST(VisualSceneTest, OnlyNodesAreFollowed)
{
    const LogCapture log;
    Document document("<node id='a'><instance_node url='#b'/><instance_controller url='#skin'/></node>"
                      "<node id='b'><node id='b1'/><extra><technique profile='X'><node id='extra'/></technique></extra>"
                      "</node>");
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    EXPECT_EQ("a b b1", listedIds(scene));
    EXPECT_EQ("", childIds(*found(scene, "a")));
    EXPECT_EQ(nullptr, found(scene, "extra"));
    EXPECT_EQ("", log.text());
}

TEST(VisualSceneTest, OtherChildrenOfTheSceneAreNotRead)
{
    const LogCapture log;
    const auto document =
        Document::ofScene("<visual_scene><asset><created>2026-01-01T00:00:00Z</created>"
                          "<modified>2026-01-01T00:00:00Z</modified><unit meter='0.01'/><up_axis>X_UP</up_axis></asset>"
                          "<node id='a'><translate>1 2 3</translate></node><evaluate_scene/>"
                          "<extra><technique profile='X'><node id='extra'/></technique></extra></visual_scene>");
    VisualScene scene;
    ASSERT_TRUE(document->loadInto(scene));
    EXPECT_EQ("a", listedIds(scene));
    EXPECT_EQ(translated(1, 2, 3), elements(nodeListOf(scene)[0]->transform()));
    EXPECT_EQ("", log.text());
}

TEST(VisualSceneTest, ListOwnsEachNodeOnce)
{
    Document document("<node id='a'><node id='b'/></node>");
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    for (const NodeHandle& node : nodeListOf(scene)) {
        EXPECT_EQ(1u, node.useCount());
    }
}

TEST(VisualSceneTest, LoadFoldsNothing)
{
    Document document(
        "<node id='a'><translate>1 0 0</translate><node id='b'><translate>10 0 0</translate></node></node>");
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    EXPECT_EQ(translated(1, 0, 0), elements(found(scene, "a")->transform()));
    EXPECT_EQ(translated(10, 0, 0), elements(found(scene, "b")->transform()));
}

TEST(VisualSceneTest, FoldGivesRootTimesParentTimesLocal)
{
    Document document("<node id='a'><translate>1 2 3</translate><node id='b'><scale>2 2 2</scale>"
                      "<node id='c'><translate>10 20 30</translate></node></node></node>"
                      "<node id='d'><translate>5 5 5</translate></node>");
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    scene.transform();

    EXPECT_EQ(identity, elements(scene.root().transform()));
    EXPECT_EQ(translated(1, 2, 3), elements(found(scene, "a")->transform()));
    EXPECT_EQ((Elements{2, 0, 0, 1, 0, 2, 0, 2, 0, 0, 2, 3, 0, 0, 0, 1}), elements(found(scene, "b")->transform()));
    EXPECT_EQ((Elements{2, 0, 0, 21, 0, 2, 0, 42, 0, 0, 2, 63, 0, 0, 0, 1}), elements(found(scene, "c")->transform()));
    EXPECT_EQ(translated(5, 5, 5), elements(found(scene, "d")->transform()));
}

TEST(VisualSceneTest, SecondFoldCountsTheAncestorsAgain)
{
    Document document("<node id='a'><translate>1 0 0</translate><node id='b'><translate>10 0 0</translate>"
                      "<node id='c'><translate>100 0 0</translate></node></node></node>");
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    scene.transform();
    EXPECT_EQ(translated(1, 0, 0), elements(found(scene, "a")->transform()));
    EXPECT_EQ(translated(11, 0, 0), elements(found(scene, "b")->transform()));
    EXPECT_EQ(translated(111, 0, 0), elements(found(scene, "c")->transform()));

    scene.transform();
    EXPECT_EQ(translated(1, 0, 0), elements(found(scene, "a")->transform()));
    EXPECT_EQ(translated(12, 0, 0), elements(found(scene, "b")->transform()));  // 1 + 11
    EXPECT_EQ(translated(123, 0, 0), elements(found(scene, "c")->transform())); // 12 + 111
}

TEST(VisualSceneTest, FoldOfAnEmptySceneDoesNothing)
{
    VisualScene scene;
    scene.transform();
    expectEmpty(scene);
    EXPECT_EQ(identity, elements(scene.root().transform()));
}

TEST(VisualSceneTest, NodeWithoutTransformMakesItsDescendantsZero)
{
    Document document("<node id='plain'><node id='moved'><translate>1 2 3</translate>"
                      "<node id='below'><scale>2 2 2</scale></node></node></node>"
                      "<node id='beside'><translate>1 2 3</translate></node>");
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    EXPECT_EQ(zero, elements(found(scene, "plain")->transform()));
    EXPECT_EQ(translated(1, 2, 3), elements(found(scene, "moved")->transform()));

    scene.transform();
    EXPECT_EQ(zero, elements(found(scene, "plain")->transform()));
    EXPECT_EQ(zero, elements(found(scene, "moved")->transform()));
    EXPECT_EQ(zero, elements(found(scene, "below")->transform()));
    EXPECT_EQ(translated(1, 2, 3), elements(found(scene, "beside")->transform()));
}

TEST(VisualSceneTest, EmptyResourcesAreRefused)
{
    const LogCapture log;
    Document document("<node id='a'/>");
    VisualScene scene;

    EXPECT_FALSE(scene.createFromCollada(document.element(), SceneResourcesLink()));
    expectErrors("libVideo.visualScene", "Cannot create using an empty scene resources", log);
    expectEmpty(scene);
}

TEST(VisualSceneTest, SceneWithoutNodesIsRefused)
{
    const LogCapture log;
    const auto document = Document::ofScene("<visual_scene id='scene' name='Stage'/>");
    VisualScene scene;

    EXPECT_FALSE(document->loadInto(scene));
    expectErrors("libVideo.visualScene", "Visual scene has no visual nodes", log);
    expectEmpty(scene);
}

TEST(VisualSceneTest, EmptyResourcesAreFoundBeforeMissingNodes)
{
    const LogCapture log;
    const auto document = Document::ofScene("<visual_scene id='scene' name='Stage'/>");
    VisualScene scene;

    EXPECT_FALSE(scene.createFromCollada(document->element(), SceneResourcesLink()));
    expectErrors("libVideo.visualScene", "Cannot create using an empty scene resources", log);
    expectEmpty(scene);
}

TEST(VisualSceneTest, RefusedSceneMayTryAgain)
{
    const LogCapture log;
    const auto empty = Document::ofScene("<visual_scene/>");
    Document document("<node id='a'/>");
    VisualScene scene;
    EXPECT_FALSE(empty->loadInto(scene));
    EXPECT_FALSE(scene.createFromCollada(document.element(), SceneResourcesLink()));
    EXPECT_TRUE(document.loadInto(scene));
    EXPECT_EQ("a", listedIds(scene));
    EXPECT_EQ("Visual scene has no visual nodes\nCannot create using an empty scene resources", log.text());
}

TEST(VisualSceneTest, LoadedSceneRefusesAnotherLoad)
{
    Document document("<node id='a'><node id='b'/></node>");
    const auto other = Document::ofScene("<visual_scene id='other' name='Other'><node id='c'/></visual_scene>");
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    const Node* const a = found(scene, "a");
    const LogCapture log;

    EXPECT_FALSE(other->loadInto(scene));
    expectErrors("libVideo.visualScene", "Visual scene is already loaded", log);
    EXPECT_STREQ("", nameOf(scene));
    EXPECT_STREQ("scene", idOf(scene));
    EXPECT_EQ(&document.resources(), resourcesOf(scene));
    EXPECT_EQ("a b", listedIds(scene));
    EXPECT_EQ("a", childIds(scene.root()));
    EXPECT_EQ(a, nodeListOf(scene)[0].get());
    EXPECT_EQ(2u, nodeTableOf(scene).size());
    EXPECT_EQ(nullptr, found(scene, "c"));
}

// Whatever was loaded by then can be folded; a scene without nodes may load again.
TEST(VisualSceneTest, LoadThatRanOutOfMemoryCanBeFoldedAndTriedAgain)
{
    Document document("<node id='a'><translate>1 2 3</translate><node id='b'/><node id='c'/></node>");
    int retries = 0;
    int refusals = 0;
    for (long request = 0; request < 1'000; ++request) {
        SCOPED_TRACE(request);
        VisualScene scene;
        bool hasFailed = false;
        {
            const FailingAllocator allocator(request);
            try {
                static_cast<void>(document.loadInto(scene));
            } catch (const std::bad_alloc&) {
                hasFailed = true;
            } catch (const vesk::NullPointer&) {
                hasFailed = true;
            }
        }
        scene.transform();
        if (!hasFailed) {
            EXPECT_GT(retries, 1);
            EXPECT_GT(refusals, 1);
            return;
        }
        const LogCapture log;
        const bool isEmpty = scene.root().children().size() == 0;
        ASSERT_EQ(isEmpty, document.loadInto(scene));
        if (isEmpty) {
            ++retries;
            EXPECT_EQ("a b c", listedIds(scene));
            EXPECT_EQ("a", childIds(scene.root()));
            EXPECT_EQ(3u, nodeTableOf(scene).size());
            EXPECT_EQ(found(scene, "b"), nodeListOf(scene)[1].get());
        } else {
            ++refusals;
            expectErrors("libVideo.visualScene", "Visual scene is already loaded", log);
        }
    }
    FAIL() << "no end";
}

TEST(VisualSceneTest, CopyOfALoadedSceneRefusesAnotherLoadToo)
{
    Document document("<node id='a'/>");
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    VisualScene copy(scene);
    const LogCapture log;

    EXPECT_FALSE(document.loadInto(copy));
    expectErrors("libVideo.visualScene", "Visual scene is already loaded", log);
    EXPECT_EQ("a", listedIds(copy));
}

const char* const entry = "> VisualScene::createFromCollada (libVideo/SceneGraph/VisualScene";
const char* const leaving = "< VisualScene::createFromCollada";

TEST(VisualSceneTest, LoadTracesItsScope)
{
    Document document("<node id='a'/>");
    VisualScene scene;
    EXPECT_EQ(texts(entry, leaving), tracedTexts([&] { ASSERT_TRUE(document.loadInto(scene)); }, channel));
}

TEST(VisualSceneTest, RefusalTracesItsScopeToo)
{
    const auto document = Document::ofScene("<visual_scene/>");
    VisualScene scene;
    const auto load = [&] { EXPECT_FALSE(document->loadInto(scene)); };
    EXPECT_EQ(texts(entry, "Visual scene has no visual nodes", leaving), tracedTexts(load, channel));
}

// The state of a copy, however it was made.
void expectCopyOf(const VisualScene& source, const VisualScene& copy)
{
    EXPECT_STREQ(nameOf(source), nameOf(copy));
    EXPECT_STREQ(idOf(source), idOf(copy));
    EXPECT_EQ(resourcesOf(source), resourcesOf(copy));
    EXPECT_EQ(sceneReserved(source), sceneReserved(copy));
    EXPECT_NE(&source.root(), &copy.root());
    EXPECT_EQ(elements(source.root().transform()), elements(copy.root().transform()));
    ASSERT_EQ(source.root().children().size(), copy.root().children().size());
    for (unsigned i = 0; i < source.root().children().size(); ++i) {
        EXPECT_EQ(source.root().children()[i], copy.root().children()[i]);
        EXPECT_EQ(&source.root(), copy.root().children()[i]->parent().get()) << "no link is set anew";
    }
    ASSERT_EQ(nodeListOf(source).size(), nodeListOf(copy).size());
    for (unsigned i = 0; i < nodeListOf(source).size(); ++i) {
        EXPECT_EQ(nodeListOf(source)[i], nodeListOf(copy)[i]);
        EXPECT_EQ(2u, nodeListOf(source)[i].useCount());
        const char* const id = nodeListOf(source)[i]->id().data();
        EXPECT_EQ(found(source, id), found(copy, id));
        EXPECT_NE(nodeTableOf(source).lookup(id), nodeTableOf(copy).lookup(id)) << "buckets of its own";
    }
    EXPECT_EQ(nodeTableOf(source).size(), nodeTableOf(copy).size());
    EXPECT_EQ(source.cameraList().size(), copy.cameraList().size());
    EXPECT_EQ(source.pointLightList().size(), copy.pointLightList().size());
    EXPECT_EQ(source.spotLightList().size(), copy.spotLightList().size());
    EXPECT_EQ(source.geometryTable().size(), copy.geometryTable().size());
    EXPECT_EQ(source.blinnMaterialTable().size(), copy.blinnMaterialTable().size());
}

TEST(VisualSceneTest, CopiesAreSecondViewsOfTheSameNodes)
{
    const auto document =
        Document::ofScene("<visual_scene id='scene' name='Stage'><node id='a'><node id='b'/></node><node id='c'/>"
                          "</visual_scene>");
    VisualScene source;
    ASSERT_TRUE(document->loadInto(source));
    sceneReserved(source) = 7;
    {
        const VisualScene copy(source);
        expectCopyOf(source, copy);
        EXPECT_STREQ("Stage", nameOf(copy));
        EXPECT_STREQ("scene", idOf(copy));
        EXPECT_EQ("a c b", listedIds(copy));
        EXPECT_EQ("a c", childIds(copy.root()));
        EXPECT_EQ(7u, sceneReserved(copy));
    }
    EXPECT_EQ(1u, nodeListOf(source)[0].useCount());
    VisualScene assigned;
    assigned = source;
    expectCopyOf(source, assigned);
    EXPECT_EQ("a c b", listedIds(assigned));
}

TEST(VisualSceneTest, AssignmentLetsGoOfTheNodesBefore)
{
    Document document("<node id='a'/>");
    Document other("<node id='b'/>");
    VisualScene source;
    VisualScene target;
    ASSERT_TRUE(document.loadInto(source));
    ASSERT_TRUE(other.loadInto(target));
    const NodeHandle before = nodeListOf(target)[0];
    ASSERT_EQ(2u, before.useCount());
    target = source;

    EXPECT_EQ(1u, before.useCount());
    expectCopyOf(source, target);
    EXPECT_EQ(nullptr, found(target, "b"));
}

TEST(VisualSceneTest, AssignmentToItselfChangesNothing)
{
    Document document("<node id='a'><node id='b'/></node>");
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    const VisualScene& same = scene;
    scene = same;

    EXPECT_EQ("a b", listedIds(scene));
    EXPECT_EQ("a", childIds(scene.root()));
    EXPECT_EQ(nodeListOf(scene)[0].get(), found(scene, "a"));
    EXPECT_EQ(1u, nodeListOf(scene)[0].useCount());
    EXPECT_EQ(&document.resources(), resourcesOf(scene));
}

TEST(VisualSceneTest, CopyOfAnEmptySceneIsEmptyAndCanLoad)
{
    Document document("<node id='a'/>");
    const VisualScene source;
    VisualScene copy(source);
    expectEmpty(copy);
    EXPECT_TRUE(document.loadInto(copy));
    EXPECT_EQ("a", listedIds(copy));
    expectEmpty(source);
}

TEST(VisualSceneTest, CopyFoldsTheSameNodes)
{
    Document document(
        "<node id='a'><translate>1 0 0</translate><node id='b'><translate>10 0 0</translate></node></node>");
    VisualScene source;
    ASSERT_TRUE(document.loadInto(source));
    VisualScene copy(source);
    copy.transform();

    EXPECT_EQ(translated(11, 0, 0), elements(found(source, "b")->transform()));
}

TEST(VisualSceneTest, NodesDoNotNeedTheirDocument)
{
    auto document = std::make_unique<Document>("<node id='a'><translate>1 0 0</translate>"
                                               "<node id='b' name='B'><translate>10 0 0</translate></node></node>");
    VisualScene scene;
    ASSERT_TRUE(document->loadInto(scene));
    document.reset();
    scene.transform();

    EXPECT_STREQ("B", found(scene, "b")->name().data());
    EXPECT_EQ(translated(11, 0, 0), elements(found(scene, "b")->transform()));
}

TEST(VisualSceneTest, InstancesOfANodeWithoutAnyAreNone)
{
    const LogCapture log;
    Document document("<node id='a'><instance_node url='#a'/></node>");
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    const libVideo::SceneResources pool;
    PoolIndex index(pool);
    sceneProcessNodeInstances(scene, nodeListOf(scene)[0], document.element().getNode_array()[0], index);

    EXPECT_EQ(0u, scene.cameraList().size() + scene.pointLightList().size() + scene.spotLightList().size());
    EXPECT_EQ(0u, scene.geometryTable().size() + scene.blinnMaterialTable().size());
    EXPECT_EQ(1u, nodeListOf(scene)[0].useCount());
    EXPECT_EQ("", log.text());
}

constexpr unsigned deepest = 3000; // the document model recurses while it parses

std::string chain()
{
    std::string opening;
    for (unsigned i = 0; i < deepest; ++i) {
        opening += "<node id='n" + std::to_string(i) + "'><translate>1 0 0</translate>";
    }
    return opening + repeated("</node>", deepest);
}

TEST(VisualSceneTest, DeepChainStandsInTheListFromTheTopDown)
{
    Document document(chain());
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    scene.transform();

    ASSERT_EQ(deepest, nodeListOf(scene).size());
    EXPECT_EQ(1u, scene.root().children().size());
    for (unsigned i = 0; i < deepest; ++i) {
        const Node& node = *nodeListOf(scene)[i];
        ASSERT_EQ("n" + std::to_string(i), node.id().data());
        ASSERT_EQ(i + 1 < deepest ? 1u : 0u, node.children().size());
        ASSERT_EQ(i == 0 ? &scene.root() : nodeListOf(scene)[i - 1].get(), node.parent().get());
        ASSERT_EQ(translated(static_cast<float>(i + 1), 0, 0), elements(node.transform()));
    }
}

struct SmallStackRun {
    Document* document;
    bool isLoaded = false;
    unsigned nodes = 0;
};

// Loads, folds, copies and destroys.
void* runOnSmallStack(void* argument)
{
    auto* const run = static_cast<SmallStackRun*>(argument);
    VisualScene scene;
    run->isLoaded = run->document->loadInto(scene);
    scene.transform();
    const VisualScene copy(scene);
    run->nodes = nodeListOf(copy).size();
    return nullptr;
}

// A recursion over the depth of the document would have at most 43 bytes per level.
TEST(VisualSceneTest, DeepChainCostsNoStack)
{
    Document document(chain());
    SmallStackRun run{&document};
    pthread_attr_t attributes;
    pthread_t thread{};
    ASSERT_EQ(0, pthread_attr_init(&attributes));
    ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, 128 * 1024));
    ASSERT_EQ(0, pthread_create(&thread, &attributes, &runOnSmallStack, &run));
    EXPECT_EQ(0, pthread_join(thread, nullptr));
    EXPECT_EQ(0, pthread_attr_destroy(&attributes));
    EXPECT_TRUE(run.isLoaded);
    EXPECT_EQ(deepest, run.nodes);
}

// Lets one request after the other fail, until the load needs no more of them.
TEST(VisualSceneTest, SceneThatRanOutOfMemoryCanBeAskedAndDestroyed)
{
    Document document("<node id='a' name='n'><translate sid='t'>1 2 3</translate><node id='b'/><node id='c'/></node>"
                      "<node id='d'/><node id='e'/><node id='f'/><node id='g'/><node id='h'/><node id='i'/>",
                      curve("curve", "a/t", "1 3", "0 0 0 1 1 1"));
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
                document.loadInto(scene);
            } catch (const vesk::NullPointer&) {
                isThrown = true;
            } catch (const std::bad_alloc&) {
                isThrown = true;
            }
            hasFailed = allocator.hasFailed();
        }
        EXPECT_EQ(hasFailed, isThrown) << "request " << failures;
        EXPECT_LE(scene.root().children().size(), 7u);
        EXPECT_LE(nodeTableOf(scene).size(), nodeListOf(scene).size());
        isComplete = !hasFailed && nodeListOf(scene).size() == 9 && found(scene, "a")->hasAnimation();
        ASSERT_NE(hasFailed, isComplete);
        failures += isComplete ? 0 : 1;
    }
    EXPECT_TRUE(isComplete);
    EXPECT_GT(failures, 9) << "nine nodes at least";
}

TEST(VisualSceneTest, AnimationGoesToTheNodeOfItsTarget)
{
    const LogCapture log;
    Document document("<node id='a'><translate sid='t'>1 2 3</translate></node>"
                      "<node id='b'><translate sid='t'>1 2 3</translate></node>",
                      curve("c", "b/t", "1 3", "10 20 30  30 40 50"));
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    EXPECT_FALSE(nodeListOf(scene)[0]->hasAnimation());
    EXPECT_TRUE(nodeListOf(scene)[1]->hasAnimation());
    EXPECT_EQ(translated(1, 2, 3), elements(nodeListOf(scene)[0]->transform(2.0)));
    EXPECT_EQ(translated(20, 30, 40), elements(nodeListOf(scene)[1]->transform(2.0)));
    EXPECT_EQ("", log.text());
}

TEST(VisualSceneTest, PoolAndNodeShareTheAnimation)
{
    Document document("<node id='a'><translate sid='t'>1 2 3</translate></node>",
                      curve("c", "a/t", "1 3", "10 20 30  30 40 50") + curve("d", "missing/t", "1 3", "0 0 0  0 0 0"));
    const LogCapture log;
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    ASSERT_EQ(2u, document.resources().animationList.size());
    EXPECT_EQ(2u, document.resources().animationList[0].useCount());
    EXPECT_EQ(1u, document.resources().animationList[1].useCount()) << "no target: in the pool alone";
}

TEST(VisualSceneTest, LastOfSeveralAnimationsOnOneSidWins)
{
    Document document("<node id='a'><translate sid='t'>1 2 3</translate></node>",
                      curve("c", "a/t", "1 3", "10 20 30  30 40 50") + curve("d", "a/t", "1 3", "0 0 0  4 6 8"));
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    EXPECT_EQ(translated(2, 3, 4), elements(nodeListOf(scene)[0]->transform(2.0)));
}

TEST(VisualSceneTest, TargetNodeWithoutSuchATransformationIsNoFault)
{
    const LogCapture log;
    Document document("<node id='a'><translate sid='t'>1 2 3</translate></node>",
                      curve("c", "a/other", "1 3", "10 20 30  30 40 50"));
    VisualScene scene;
    EXPECT_TRUE(document.loadInto(scene));
    EXPECT_FALSE(nodeListOf(scene)[0]->hasAnimation());
    EXPECT_EQ("", log.text());
}

TEST(VisualSceneTest, AnimationGoesToTheFirstNodeOfARepeatedId)
{
    Document document("<node id='x'><node id='twin'><translate sid='t'>1 2 3</translate></node></node>"
                      "<node id='twin'><translate sid='t'>1 2 3</translate></node>",
                      curve("c", "twin/t", "1 3", "10 20 30  30 40 50"));
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    ASSERT_EQ("x twin twin", listedIds(scene));
    EXPECT_TRUE(nodeListOf(scene)[1]->hasAnimation());
    EXPECT_FALSE(nodeListOf(scene)[2]->hasAnimation());
}

// An animation that finds nothing logs one message, and the load still succeeds.
class VisualSceneLostAnimationTest : public testing::TestWithParam<Case<const char*, const char*>> {};

TEST_P(VisualSceneLostAnimationTest, IsLoggedAndTheRestIsAttached)
{
    const LogCapture log;
    Document document("<node id='Node'><translate sid='t'>1 2 3</translate></node>",
                      curve("c", GetParam().given, "1 3", "0 0 0  0 0 0") +
                          curve("d", "Node/t", "1 3", "10 20 30  30 40 50"));
    VisualScene scene;
    EXPECT_TRUE(document.loadInto(scene));
    expectErrors("libVideo.visualScene", GetParam().expected, log);
    EXPECT_EQ(translated(20, 30, 40), elements(nodeListOf(scene)[0]->transform(2.0)));
}

INSTANTIATE_ROWS(Targets, VisualSceneLostAnimationTest,
                 {"NoSuchNode", "other/t", "Unable to find the animation's target node with id: other"},
                 {"OtherCase", "node/t", "Unable to find the animation's target node with id: node"},
                 {"TheSceneItself", "scene/t", "Unable to find the animation's target node with id: scene"},
                 {"NoSlash", "Node", "Unable to find the animation's target node with id: "},
                 {"EmptyNode", "/t", "Unable to find the animation's target node with id: "});

TEST(VisualSceneTest, EachLostAnimationHasItsLineInListOrder)
{
    Document document("<node id='a'/>", curve("c", "x/t", "1 3", "0 0 0  0 0 0") +
                                            curve("d", "y/t", "1 3", "0 0 0  0 0 0") + "<animation/>" +
                                            curve("e", "x/t", "1 3", "0 0 0  0 0 0"));
    const LogCapture log(channel);
    VisualScene scene;
    EXPECT_TRUE(document.loadInto(scene));
    EXPECT_EQ("Unable to find the animation's target node with id: x\n"
              "Unable to find the animation's target node with id: y\n"
              "Unable to find the animation's target node with id: \n"
              "Unable to find the animation's target node with id: x",
              log.text());
}

TEST(VisualSceneTest, FailedAnimationGoesToTheFirstNodeWithoutId)
{
    Document document("<node id='a'><node name='deep'><translate>1 2 3</translate></node></node>"
                      "<node name='first'><translate sid='t'>1 2 3</translate><rotate>0 0 1 90</rotate></node>",
                      "<animation/>");
    const LogCapture log;
    VisualScene scene;
    EXPECT_TRUE(document.loadInto(scene));
    ASSERT_NE(nullptr, found(scene, ""));
    EXPECT_STREQ("first", found(scene, "")->name().data());
    // The empty target of the transformation meets the empty sid of the rotation.
    EXPECT_TRUE(found(scene, "")->hasAnimation());
    EXPECT_FALSE(found(scene, "a")->hasAnimation());
    EXPECT_EQ("", log.text());
}

TEST(VisualSceneTest, AttachingAgainFindsAndMissesTheSame)
{
    Document document("<node id='a'><translate sid='t'>1 2 3</translate></node>",
                      curve("c", "a/t", "1 3", "10 20 30  30 40 50") + curve("d", "x/t", "1 3", "0 0 0  0 0 0"));
    VisualScene scene;
    LogCapture log;
    ASSERT_TRUE(document.loadInto(scene));
    log.clear();
    sceneAddAnimationsToNodes(scene);

    expectErrors("libVideo.visualScene", "Unable to find the animation's target node with id: x", log);
    EXPECT_EQ(2u, document.resources().animationList[0].useCount());
    EXPECT_EQ(translated(20, 30, 40), elements(nodeListOf(scene)[0]->transform(2.0)));
}

TEST(VisualSceneTest, AnimatedNodeForgetsTheFoldAndItsChildrenKeepIt)
{
    Document document("<node id='a'><translate>100 0 0</translate><node id='b'><translate sid='t'>1 2 3</translate>"
                      "<node id='c'><translate>1000 0 0</translate></node></node></node>",
                      curve("k", "b/t", "1 3", "10 20 30  30 40 50"));
    VisualScene scene;
    ASSERT_TRUE(document.loadInto(scene));
    scene.transform();
    ASSERT_EQ(translated(101, 2, 3), elements(found(scene, "b")->transform()));
    EXPECT_EQ(translated(20, 30, 40), elements(nodeListOf(scene)[1]->transform(2.0)));
    EXPECT_EQ(translated(1101, 2, 3), elements(nodeListOf(scene)[2]->transform(2.0)));
}

static_assert(std::is_default_constructible_v<VisualScene>);
static_assert(std::is_copy_constructible_v<VisualScene> && std::is_copy_assignable_v<VisualScene>);
static_assert(!std::is_polymorphic_v<VisualScene> && !std::is_polymorphic_v<SceneResources>);
static_assert(std::is_same_v<decltype(std::declval<const VisualScene&>().root()), const Node&>);
static_assert(std::is_same_v<decltype(std::declval<const VisualScene&>().cameraList()), const CameraInstanceList&>);
static_assert(
    std::is_same_v<decltype(std::declval<const VisualScene&>().pointLightList()), const PointLightInstanceList&>);
static_assert(
    std::is_same_v<decltype(std::declval<const VisualScene&>().spotLightList()), const SpotLightInstanceList&>);
static_assert(
    std::is_same_v<decltype(std::declval<const VisualScene&>().geometryTable()), const libVideo::GeometryTable&>);
static_assert(std::is_same_v<decltype(std::declval<const VisualScene&>().blinnMaterialTable()),
                             const libVideo::BlinnMaterialTable&>);
static_assert(std::is_same_v<decltype(std::declval<VisualScene&>().transform()), void>);

void expectEmpty(const VisualScene& scene)
{
    EXPECT_STREQ("", nameOf(scene));
    EXPECT_STREQ("", idOf(scene));
    EXPECT_EQ(0u, scene.root().children().size());
    EXPECT_EQ(0u, nodeListOf(scene).size());
    EXPECT_EQ(0u, nodeTableOf(scene).size());
    EXPECT_EQ(nullptr, resourcesOf(scene));
    EXPECT_EQ(0u, scene.cameraList().size());
    EXPECT_EQ(0u, scene.pointLightList().size());
    EXPECT_EQ(0u, scene.spotLightList().size());
    EXPECT_EQ(0u, scene.geometryTable().size());
    EXPECT_EQ(0u, scene.blinnMaterialTable().size());
}

} // namespace
