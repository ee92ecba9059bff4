#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Animation.h>
#include <libVideo/SceneGraph/Camera.h>
#include <libVideo/SceneGraph/Instance.h>
#include <libVideo/SceneGraph/Light.h>
#include <libVideo/SceneGraph/Node.h>
#include <libVideo/SceneGraph/Transformation.h>

namespace {

using namespace libVideo;
using namespace testSupport;

using Matrix = Matrix4;

PRIVATE_MEMBER(instanceNode, NodeLink Instance::*, &Instance::m_node)
PRIVATE_MEMBER(instanceSid, vesk::String Instance::*, &Instance::m_sid)
PRIVATE_MEMBER(instanceName, vesk::String Instance::*, &Instance::m_name)
PRIVATE_MEMBER(instanceCamera, Link<Camera> CameraInstance::*, &CameraInstance::m_camera)
PRIVATE_MEMBER(instanceLookAtNode, NodeLink CameraInstance::*, &CameraInstance::m_lookAtNode)
PRIVATE_MEMBER(instanceView, Matrix CameraInstance::*, &CameraInstance::m_view)
PRIVATE_MEMBER(instancePointLight, Link<PointLight> PointLightInstance::*, &PointLightInstance::m_pointLight)
PRIVATE_MEMBER(instanceSpotLight, Link<SpotLight> SpotLightInstance::*, &SpotLightInstance::m_spotLight)
PRIVATE_MEMBER(spotLookAtNode, NodeLink SpotLightInstance::*, &SpotLightInstance::m_lookAtNode)
PRIVATE_MEMBER(nodeName, vesk::String Node::*, &Node::m_name)
PRIVATE_MEMBER(nodeMatrix, Matrix Node::*, &Node::m_transform)
PRIVATE_MEMBER(nodeHasAnimation, bool Node::*, &Node::m_hasAnimation)
PRIVATE_MEMBER(nodeTransformations, vesk::Array<TransformationHandle> Node::*, &Node::m_transformations)

TEST(InstanceTest, MembersStandInTheirOrder)
{
    const CameraInstance camera;
    expectAscending({&instanceNode(camera), &instanceSid(camera), &instanceName(camera), &instanceCamera(camera),
                     &instanceLookAtNode(camera), &instanceView(camera)});
    const SpotLightInstance light;
    const void* const name = &instanceName(light);
    const void* const spotLight = &instanceSpotLight(light);
    const void* const lookAt = &spotLookAtNode(light);
    EXPECT_LT(name, spotLight);
    EXPECT_LT(spotLight, lookAt);
}

// The view of an eye that looks along +Z with Y up: the axes stay, and the eye moves to the origin.
constexpr Elements straightView(float x, float y, float z)
{
    return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -x, -y, -z, 1};
}

// --- the view matrix step by step, each in float ---

Triple difference(const Triple& a, const Triple& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

float dot(const Triple& a, const Triple& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Triple cross(const Triple& a, const Triple& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Triple normalized(const Triple& v)
{
    const float length = sqrtf(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    return {v[0] / length, v[1] / length, v[2] / length};
}

Elements viewOf(const Triple& eye, const Triple& target, const Triple& up, bool normalizesY = false)
{
    const Triple z = normalized(difference(target, eye));
    const Triple x = normalized(cross(up, z));
    const Triple y = normalizesY ? normalized(cross(z, x)) : cross(z, x);
    return {x[0], y[0], z[0], 0, x[1], y[1], z[1], 0, x[2], y[2], z[2], 0, -dot(x, eye), -dot(y, eye), -dot(z, eye), 1};
}

// --- documents ---

std::string camera(const std::string& id, const std::string& lookAt = std::string());

std::string spot(const std::string& id, const std::string& target = std::string())
{
    const std::string extra = target.empty() ? "" : vendorExtra("<target>#" + target + "</target>");
    return "<light id='" + id + "'><technique_common><spot><color>1 1 1</color></spot></technique_common>" + extra +
           "</light>";
}

std::string node(const std::string& id, const std::string& place, const std::string& instances = std::string())
{
    return "<node id='" + id + "' name='" + id + "-name'><translate sid='t'>" + place + "</translate>" + instances +
           "</node>";
}

/// The lists of a document and its top-level nodes, without instances; tests make those.
class Stage {
public:
    explicit Stage(const std::string& nodes, const std::string& libraries = std::string(),
                   const std::string& animations = std::string())
    {
        if (!animations.empty()) {
            m_builder.add("<library_animations>" + animations + "</library_animations>");
        }
        const domCOLLADA* const root = m_builder.add(libraries).addScene(nodes).open();
        libVideo::createCameraListFromCollada(root, m_builder.dae(), cameraList);
        libVideo::createPointLightListFromCollada(root, pointLightList);
        libVideo::createSpotLightListFromCollada(root, m_builder.dae(), spotLightList);
        const domNode_Array& elements =
            root->getLibrary_visual_scenes_array()[0]->getVisual_scene_array()[0]->getNode_array();
        for (std::size_t i = 0; i < elements.getCount(); ++i) {
            m_nodes.append(NodeHandle(new Node(*elements[i])));
            nodeTable.insert(m_nodes[m_nodes.size() - 1]->id(), NodeLink(m_nodes[m_nodes.size() - 1]));
        }
        vesk::Array<libVideo::AnimationHandle> all;
        libVideo::createAnimationListFromCollada(root, m_builder.dae(), all);
        for (const libVideo::AnimationHandle& animation : all) {
            if (const NodeTable::Bucket* const bucket = nodeTable.lookup(animation->getTargetNode())) {
                bucket->value->addAnimation(animation);
            } else {
                cameraList[0]->addAnimation(animation);
            }
        }
    }

    NodeLink link(const char* id) const
    {
        const NodeTable::Bucket* const bucket = nodeTable.lookup(id);
        if (bucket == nullptr) {
            throw std::runtime_error(std::string("no node ") + id);
        }
        return bucket->value;
    }

    const domInstance_camera& cameraElement(const char* id)
    {
        return *m_builder.element<domNode>(id)->getInstance_camera_array()[0];
    }
    const domInstance_light& lightElement(const char* id)
    {
        return *m_builder.element<domNode>(id)->getInstance_light_array()[0];
    }

    bool load(CameraInstance& instance, const char* id)
    {
        return instance.createFromCollada(cameraElement(id), cameraList, nodeTable);
    }

    vesk::Array<CameraHandle> cameraList;
    vesk::Array<PointLightHandle> pointLightList;
    vesk::Array<SpotLightHandle> spotLightList;
    NodeTable nodeTable{32};

private:
    ColladaBuilder m_builder;
    vesk::Array<NodeHandle> m_nodes;
};

template <class T>
const T& constant();
template <class T>
T& variable();
using ConstMatrix = const Matrix&;

// --- Instance ---

TEST(InstanceTest, NewInstanceHasNoNodeAndEmptyTexts)
{
    const Instance instance;
    EXPECT_EQ(nullptr, instance.node());
    EXPECT_STREQ("", instance.sid().data());
    EXPECT_STREQ("", instance.name().data());
    EXPECT_STREQ("", instance.nodeId().data());
    EXPECT_EQ(&vesk::String::EMPTY(), &instance.nodeId());
}

TEST(InstanceTest, InstanceOfANodeHasEmptyTextsOfItsOwn)
{
    const Stage stage(node("n", "0 0 0"));
    const Instance instance(stage.link("n"));
    EXPECT_EQ(stage.link("n"), instance.node());
    EXPECT_STREQ("", instanceSid(instance).data());
    EXPECT_STREQ("", instanceName(instance).data());
    EXPECT_EQ(&instance.node()->id(), &instance.nodeId());
    EXPECT_STREQ("n", instance.nodeId().data());
}

TEST(InstanceTest, NameIsTheOwnOneElseThatOfTheNodeElseEmpty)
{
    const Stage stage(node("n", "0 0 0"));
    Instance instance(stage.link("n"));
    EXPECT_STREQ("n-name", instance.name().data());
    EXPECT_EQ(&instance.node()->name(), &instance.name());

    instanceName(instance) = "own";
    EXPECT_STREQ("own", instance.name().data());

    Instance without;
    EXPECT_STREQ("", without.name().data());
    instanceName(without) = "own";
    EXPECT_STREQ("own", without.name().data());
}

TEST(InstanceTest, NameOfANodeWithoutNameIsEmpty)
{
    Node nameless;
    const Instance instance{NodeLink(&nameless)};
    EXPECT_STREQ("", instance.name().data());
    nodeName(nameless) = "later";
    EXPECT_STREQ("later", instance.name().data());
}

TEST(InstanceTest, SidIsNotTakenFromTheNode)
{
    const Stage stage("<node id='n' sid='place'/>");
    Instance instance(stage.link("n"));
    EXPECT_STREQ("", instance.sid().data());
    instanceSid(instance) = "own";
    EXPECT_STREQ("own", instance.sid().data());
}

TEST(InstanceTest, SetNodeStoresNothing)
{
    const Stage stage(node("n", "0 0 0") + node("m", "0 0 0"));
    Instance instance(stage.link("n"));
    EXPECT_EQ(&instance.node(), &instance.setNode(stage.link("m")));
    EXPECT_EQ(stage.link("n"), instance.node());
    EXPECT_EQ(stage.link("n"), instance.setNode(NodeLink()));
    EXPECT_STREQ("n", instance.nodeId().data());

    Instance empty;
    EXPECT_EQ(nullptr, empty.setNode(stage.link("m")));
    EXPECT_EQ(nullptr, empty.node());
}

TEST(InstanceTest, CopiesShareTheNodeAndHaveTextsOfTheirOwn)
{
    const Stage stage(node("n", "0 0 0"));
    Instance source(stage.link("n"));
    instanceSid(source) = "sid";
    instanceName(source) = "name";
    const Instance copy(source);
    Instance assigned;
    assigned = source;
    instanceSid(source) = "changed";
    instanceName(source) = "changed";

    for (const Instance* const instance : {&copy, static_cast<const Instance*>(&assigned)}) {
        EXPECT_EQ(stage.link("n"), instance->node());
        EXPECT_STREQ("sid", instance->sid().data());
        EXPECT_STREQ("name", instance->name().data());
    }
}

// --- CameraInstance: binding ---

const std::string nodeWithCamera = node("n", "0 0 -5", "<instance_camera url='#eye'/>");

TEST(CameraInstanceTest, NewInstanceIsEmptyAndItsViewZero)
{
    const Stage stage(nodeWithCamera);
    const CameraInstance onNode(stage.link("n"));
    EXPECT_EQ(stage.link("n"), onNode.node());
    const CameraInstance instance;
    EXPECT_EQ(nullptr, instance.node());
    for (const CameraInstance* const each : {&instance, &onNode}) {
        EXPECT_EQ(nullptr, each->camera());
        EXPECT_EQ(nullptr, each->lookAtNode());
        EXPECT_EQ(&vesk::String::EMPTY(), &each->cameraId());
        EXPECT_EQ(zero, elements(each->view()));
    }
}

TEST(CameraInstanceTest, CameraAndLookAtNodeAreBound)
{
    Stage stage(nodeWithCamera + node("aim", "0 0 0"),
                library("library_cameras", camera("other") + camera("eye", "aim")));
    const LogCapture log;
    CameraInstance instance(stage.link("n"));
    EXPECT_TRUE(stage.load(instance, "n"));
    EXPECT_EQ(stage.cameraList[1].get(), instance.camera().get());
    EXPECT_STREQ("eye", instance.cameraId().data());
    EXPECT_EQ(&instance.camera()->id(), &instance.cameraId());
    EXPECT_EQ(stage.link("aim"), instance.lookAtNode());
    EXPECT_EQ(straightView(0, 0, -5), elements(instance.view())); // [3][2] is 5
    EXPECT_EQ("", log.text());
}

TEST(CameraInstanceTest, SidAndNameOfTheElementAreNotRead)
{
    Stage stage(node("n", "0 0 0", "<instance_camera url='#eye' sid='s' name='shown'/>"),
                library("library_cameras", camera("eye", "n")));
    CameraInstance instance(stage.link("n"));
    ASSERT_TRUE(stage.load(instance, "n"));
    EXPECT_STREQ("", instance.sid().data());
    EXPECT_STREQ("", instanceName(instance).data());
    EXPECT_STREQ("n-name", instance.name().data());
}

// A bound instance. All of its members differ from what the loads below give.
CameraInstance boundElsewhere(const Stage& stage)
{
    CameraInstance instance(stage.link("n"));
    instanceCamera(instance) = stage.cameraList[0];
    instanceLookAtNode(instance) = stage.link("n");
    instanceView(instance) = matrixOf(translated(7, 8, 9));
    instanceSid(instance) = "sid";
    instanceName(instance) = "name";
    return instance;
}

struct UnboundCase : Row {
    const char* instance;
    std::string cameras;
    const char* words;
};

class CameraInstanceUnboundTest : public testing::TestWithParam<UnboundCase> {};

TEST_P(CameraInstanceUnboundTest, GivesOneLineAndFalseAndChangesNothing)
{
    Stage stage(node("n", "0 0 0", GetParam().instance),
                library("library_cameras", camera("first", "n") + GetParam().cameras));
    CameraInstance instance = boundElsewhere(stage);
    const LogCapture log;
    EXPECT_FALSE(stage.load(instance, "n"));
    expectErrors("libVideo.instance", GetParam().words, log);
    EXPECT_EQ(stage.link("n"), instance.node());
    EXPECT_EQ(stage.cameraList[0].get(), instance.camera().get());
    EXPECT_EQ(stage.link("n"), instance.lookAtNode());
    EXPECT_EQ(translated(7, 8, 9), elements(instance.view()));
    EXPECT_STREQ("sid", instance.sid().data());
    EXPECT_STREQ("name", instance.name().data());
}

INSTANTIATE_ROWS(Urls, CameraInstanceUnboundTest,
                 {"ToNothing", "<instance_camera url='#nowhere'/>", "",
                  "domInstance_camera does not point to a camera element"},
                 {"OfOtherCase", "<instance_camera url='#First'/>", "",
                  "domInstance_camera does not point to a camera element"},
                 {"Absent", "<instance_camera/>", "", "domInstance_camera does not point to a camera element"},
                 {"ToANode", "<instance_camera url='#n'/>", "", "Cannot find camera source n for this instance"},
                 {"ToACameraThatIsNotPooled", "<instance_camera url='#flat'/>",
                  "<camera id='flat'><optics><technique_common><orthographic><xmag>1</xmag><znear>1</znear>"
                  "<zfar>2</zfar></orthographic></technique_common></optics></camera>",
                  "Cannot find camera source flat for this instance"});

TEST(CameraInstanceTest, EmptyListHasNoCamera)
{
    Stage stage(nodeWithCamera, library("library_cameras", camera("eye", "n")));
    CameraInstance instance(stage.link("n"));
    const LogCapture log;
    EXPECT_FALSE(instance.createFromCollada(stage.cameraElement("n"), vesk::Array<CameraHandle>(), stage.nodeTable));
    expectErrors("libVideo.instance", "Cannot find camera source eye for this instance", log);
    EXPECT_EQ(nullptr, instance.camera());
}

TEST(CameraInstanceTest, CaseOfTheCameraIdPlaysNoPart)
{
    // The url leads to a node whose id equals that of a camera except for upper and lower case; its kind is not
    // checked.
    Stage stage(node("n", "0 0 0", "<instance_camera url='#EYE'/>") + node("EYE", "0 0 1"),
                library("library_cameras", camera("eYe", "EYE")));
    CameraInstance instance(stage.link("n"));
    const LogCapture log;
    EXPECT_TRUE(stage.load(instance, "n"));
    EXPECT_STREQ("eYe", instance.cameraId().data());
    EXPECT_EQ("", log.text());
}

TEST(CameraInstanceTest, FirstOfEqualIdsWins)
{
    Stage stage(nodeWithCamera,
                library("library_cameras", camera("other", "n") + camera("Eye", "n") + camera("eye", "n")));
    CameraInstance instance(stage.link("n"));
    ASSERT_TRUE(stage.load(instance, "n"));
    EXPECT_EQ(stage.cameraList[1].get(), instance.camera().get()) << "although the url names the one behind it";

    vesk::Array<CameraHandle> twins;
    twins.append(stage.cameraList[2]);
    twins.append(stage.cameraList[2]->clone());
    CameraInstance ofTwins(stage.link("n"));
    ASSERT_TRUE(ofTwins.createFromCollada(stage.cameraElement("n"), twins, stage.nodeTable));
    EXPECT_EQ(twins[0].get(), ofTwins.camera().get());
}

TEST(CameraInstanceTest, CameraWithoutLookAtDataIsBoundWithALineOfTwoBlanks)
{
    Stage stage(nodeWithCamera, library("library_cameras", camera("eye")));
    CameraInstance instance(stage.link("n"));
    const LogCapture log;
    EXPECT_TRUE(stage.load(instance, "n"));
    expectErrors("libVideo.instance", "Cannot find lookat node  from camera list", log);
    EXPECT_EQ(stage.cameraList[0].get(), instance.camera().get());
    EXPECT_EQ(nullptr, instance.lookAtNode());
    EXPECT_EQ(zero, elements(instance.view()));
}

TEST(CameraInstanceTest, LookAtIdIsFoundExactly)
{
    Stage stage(nodeWithCamera + node("AIM", "0 0 0"), library("library_cameras", camera("eye", "aim")));
    CameraInstance instance(stage.link("n"));
    const LogCapture log;
    EXPECT_TRUE(stage.load(instance, "n"));
    expectErrors("libVideo.instance", "Cannot find lookat node aim from camera list", log);
    EXPECT_EQ(stage.cameraList[0].get(), instance.camera().get());
    EXPECT_EQ(nullptr, instance.lookAtNode());
    EXPECT_EQ(zero, elements(instance.view()));
}

TEST(CameraInstanceTest, SecondLoadThatMissesItsLookAtNodeKeepsTheFirstAndItsView)
{
    const std::string second = node("m", "0 0 9", "<instance_camera url='#lost'/>");
    Stage stage(nodeWithCamera + second + node("aim", "0 0 0"),
                library("library_cameras", camera("eye", "aim") + camera("lost", "away")));
    CameraInstance instance(stage.link("n"));
    ASSERT_TRUE(stage.load(instance, "n"));
    const LogCapture log;
    EXPECT_TRUE(stage.load(instance, "m"));
    expectErrors("libVideo.instance", "Cannot find lookat node away from camera list", log);
    EXPECT_EQ(stage.cameraList[1].get(), instance.camera().get());
    EXPECT_EQ(stage.link("aim"), instance.lookAtNode());
    EXPECT_EQ(straightView(0, 0, -5), elements(instance.view()));
}

TEST(CameraInstanceTest, EmptyLookAtIdIsThatOfANodeWithoutId)
{
    Stage stage(nodeWithCamera + "<node name='bare'><translate>0 0 3</translate></node>",
                library("library_cameras", camera("eye")));
    CameraInstance instance(stage.link("n"));
    const LogCapture log;
    EXPECT_TRUE(stage.load(instance, "n"));
    ASSERT_NE(nullptr, instance.lookAtNode());
    EXPECT_STREQ("bare", instance.lookAtNode()->name().data());
    EXPECT_EQ(straightView(0, 0, -5), elements(instance.view()));
    EXPECT_EQ("", log.text());
}

TEST(CameraInstanceTest, NullInTheNodeTableIsTakenAndKeepsTheView)
{
    Stage stage(nodeWithCamera, library("library_cameras", camera("eye", "aim")));
    stage.nodeTable.insert("aim", NodeLink());
    CameraInstance instance(stage.link("n"));
    instanceLookAtNode(instance) = stage.link("n");
    instanceView(instance) = matrixOf(translated(7, 8, 9));
    const LogCapture log;
    EXPECT_TRUE(stage.load(instance, "n"));
    EXPECT_EQ(nullptr, instance.lookAtNode());
    EXPECT_EQ(translated(7, 8, 9), elements(instance.view()));
    EXPECT_EQ("", log.text());
}

TEST(CameraInstanceTest, LoadTakesTheRestPoseOfAnimatedNodes)
{
    Stage stage(nodeWithCamera + node("aim", "0 0 0"), library("library_cameras", camera("eye", "aim")),
                curve("c", "n/t", "1 3", "50 60 70  80 90 99") + curve("d", "aim/t", "1 3", "1 2 3  4 5 6"));
    CameraInstance instance(stage.link("n"));
    ASSERT_TRUE(stage.load(instance, "n"));
    EXPECT_EQ(straightView(0, 0, -5), elements(instance.view()));
    EXPECT_EQ(translated(0, 0, -5), elements(stage.link("n")->transform()));
}

// --- CameraInstance: the view matrix ---

struct ViewCase : Row {
    Triple eye;
    Triple target;
    Triple up;
    Elements expected; ///< worked out by hand
};

// A node with this origin and this image of the Y axis.
Node placed(const Triple& position, const Triple& up)
{
    Node node;
    Elements values = identity;
    for (std::size_t i = 0; i < 3; ++i) {
        values[4 * i + 1] = up[i];
        values[4 * i + 3] = position[i];
    }
    nodeMatrix(node) = matrixOf(values);
    return node;
}

constexpr float nan = std::numeric_limits<float>::quiet_NaN();

class CameraInstanceViewTest : public testing::TestWithParam<ViewCase> {};

TEST_P(CameraInstanceViewTest, IsLeftHandedAndForRowVectors)
{
    const ViewCase& row = GetParam();
    Node from = placed(row.eye, row.up);
    Node to = placed(row.target, {0, 0, 0});
    CameraInstance instance{NodeLink(&from)};
    const Elements view = elements(instance.setLookAtNode(NodeLink(&to)));
    expectSame(viewOf(row.eye, row.target, row.up), view);
    for (std::size_t i = 0; i < 16; ++i) {
        if (std::isnan(row.expected[i])) {
            EXPECT_TRUE(std::isnan(view[i])) << "element " << i << ": " << view[i];
        } else {
            EXPECT_NEAR(row.expected[i], view[i], 1e-6f) << "element " << i;
        }
    }
}

INSTANTIATE_ROWS(
    Places, CameraInstanceViewTest,
    {"AtTheOriginTowardsZ", triple(0, 0, 0), triple(0, 0, 1), triple(0, 1, 0), identity},
    {"BeforeTheOrigin", triple(0, 0, -5), triple(0, 0, 0), triple(0, 1, 0),
     elementsOf(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 5, 1)},
    // z = (0, 0, -1), x = up × z = (-1, 0, 0), y = z × x = (0, 1, 0)
    {"BehindTheOrigin", triple(1, 2, 5), triple(1, 2, 0), triple(0, 1, 0),
     elementsOf(-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, 0, 1, -2, 5, 1)},
    // z = (1, 0, 0), x = (0, 1, 0) × z = (0, 0, -1), y = z × x = (0, 1, 0)
    {"TowardsX", triple(2, 3, 4), triple(9, 3, 4), triple(0, 1, 0),
     elementsOf(0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, 4, -3, -2, 1)},
    // z = (-0.6, 0, 0.8), x = (0.8, 0, 0.6), y = (0, 0.64 + 0.36, 0); x · eye = 2.4 - 2.4, z · eye = -1.8 - 3.2
    {"Aslant", triple(3, 0, -4), triple(0, 0, 0), triple(0, 1, 0),
     elementsOf(0.8f, 0, -0.6f, 0, 0, 1, 0, 0, 0.6f, 0, 0.8f, 0, 0, 0, 5, 1)},
    // Only the direction of up across the view counts, so the result is that of (0, 1, 0).
    {"UpNeitherUnitNorAcross", triple(0, 0, -5), triple(0, 0, 0), triple(0, 7, -3),
     elementsOf(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 5, 1)},
    // x = (0, -1, 0) × (0, 0, 1) = (-1, 0, 0), y = z × x = (0, -1, 0)
    {"UpsideDown", triple(4, 5, 6), triple(4, 5, 9), triple(0, -1, 0),
     elementsOf(-1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1, 0, 4, 5, -6, 1)},
    {"AtItsTarget", triple(1, 2, 3), triple(1, 2, 3), triple(0, 1, 0),
     elementsOf(nan, nan, nan, 0, nan, nan, nan, 0, nan, nan, nan, 0, nan, nan, nan, 1)},
    {"UpAlongTheView", triple(0, 0, 0), triple(0, 3, 0), triple(0, 1, 0),
     elementsOf(nan, nan, 0, 0, nan, nan, 1, 0, nan, nan, 0, 0, nan, nan, 0, 1)},
    {"UpOfNoLength", triple(0, 0, -5), triple(0, 0, 0), triple(0, 0, 0),
     elementsOf(nan, nan, 0, 0, nan, nan, 0, 0, nan, nan, 1, 0, nan, nan, 5, 1)},
    // The square of the distance does not fit into a float, so z is zero.
    {"TooFar", triple(0, 0, 0), triple(0, 0, 1e20f), triple(0, 1, 0),
     elementsOf(nan, nan, 0, 0, nan, nan, 0, 0, nan, nan, 0, 0, nan, nan, 0, 1)});

TEST(CameraInstanceTest, ViewIsThatOfTheStepsInFloatToTheLastBit)
{
    // Random numbers from a fixed generator.
    std::uint32_t state = 12345;
    const auto next = [&state] {
        state = state * 1664525u + 1013904223u;
        return static_cast<float>(state >> 8u) / 1048576.0f - 8.0f;
    };
    unsigned differentWithUnitY = 0;
    for (unsigned i = 0; i < 200; ++i) {
        const Triple eye{next(), next(), next()};
        const Triple target{next(), next(), next()};
        const Triple up{next(), next(), next()};
        Node from = placed(eye, up);
        Node to = placed(target, {0, 0, 0});
        CameraInstance instance{NodeLink(&from)};
        const Elements view = elements(instance.setLookAtNode(NodeLink(&to)));
        EXPECT_EQ(viewOf(eye, target, up), view) << "row " << i;
        differentWithUnitY += viewOf(eye, target, up, true) != view ? 1 : 0;
    }
    EXPECT_LT(0u, differentWithUnitY) << "else nothing here tells whether y is normalized";
}

TEST(CameraInstanceTest, SetLookAtNodeComputesTheViewAndGivesIt)
{
    const Stage stage(node("n", "1 2 3") + node("a", "1 2 9") + node("b", "8 2 3"));
    CameraInstance instance(stage.link("n"));
    EXPECT_EQ(&instance.view(), &instance.setLookAtNode(stage.link("a")));
    EXPECT_EQ(stage.link("a"), instance.lookAtNode());
    EXPECT_EQ(straightView(1, 2, 3), elements(instance.view()));

    // Looks along +X, as above.
    EXPECT_EQ((Elements{0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, 3, -2, -1, 1}),
              elements(instance.setLookAtNode(stage.link("b"))));
    EXPECT_EQ(stage.link("b"), instance.lookAtNode());
}

TEST(CameraInstanceTest, SetLookAtNodeToNothingForgetsTheNodeAndKeepsTheView)
{
    const Stage stage(node("n", "1 2 3") + node("a", "1 2 9"));
    CameraInstance instance(stage.link("n"));
    instance.setLookAtNode(stage.link("a"));
    EXPECT_EQ(&instance.view(), &instance.setLookAtNode(NodeLink()));
    EXPECT_EQ(nullptr, instance.lookAtNode());
    EXPECT_EQ(straightView(1, 2, 3), elements(instance.view()));
    CameraInstance empty(stage.link("n"));
    EXPECT_EQ(zero, elements(empty.setLookAtNode(NodeLink())));
}

TEST(CameraInstanceTest, SetLookAtNodeToItselfComputesAnew)
{
    Stage stage(node("n", "0 0 -5") + node("a", "0 0 0"), "", curve("c", "n/t", "1 3", "0 0 -7  0 0 -9"));
    CameraInstance instance(stage.link("n"));
    instance.setLookAtNode(stage.link("a"));
    stage.link("n")->transform(1.0); // the first key
    EXPECT_EQ(straightView(0, 0, -5), elements(instance.view()));
    EXPECT_EQ(straightView(0, 0, -7), elements(instance.setLookAtNode(instance.lookAtNode())));
    EXPECT_EQ(stage.link("a"), instance.lookAtNode());
}

TEST(CameraInstanceTest, SetLookAtNodeWithoutANodeKeepsTheView)
{
    const Stage stage(node("a", "0 0 0"));
    CameraInstance instance;
    EXPECT_EQ(zero, elements(instance.setLookAtNode(stage.link("a"))));
    EXPECT_EQ(stage.link("a"), instance.lookAtNode());
}

// --- CameraInstance: the view at a time ---

const std::string movingNodes = node("n", "0 0 -5") + node("aim", "0 0 0");
const std::string movesEye = curve("e", "n/t", "1 3", "0 0 -6  0 0 -8");       // at second 2: 0 0 -7
const std::string movesTarget = curve("a", "aim/t", "1 3", "0 0 0  10 0 -10"); // at second 2: 5 0 -5
const Elements towardsX{0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, -5, 0, 0, 1};     // from 0 0 -5

TEST(CameraInstanceTest, ViewOfStillNodesStaysAsItStands)
{
    const Stage stage(movingNodes);
    CameraInstance instance(stage.link("n"));
    instance.setLookAtNode(stage.link("aim"));
    instanceView(instance) = matrixOf(counting);
    EXPECT_EQ(&instance.view(), &instance.view(2.0));
    EXPECT_EQ(counting, elements(instance.view()));
}

TEST(CameraInstanceTest, ViewFollowsAnAnimatedNode)
{
    const Stage stage(movingNodes, "", movesEye);
    CameraInstance instance(stage.link("n"));
    instance.setLookAtNode(stage.link("aim"));
    EXPECT_EQ(&instance.view(), &instance.view(2.0));
    EXPECT_EQ(straightView(0, 0, -7), elements(instance.view()));
    EXPECT_EQ(translated(0, 0, -7), elements(stage.link("n")->transform())) << "the node is asked for the time";

    EXPECT_EQ(straightView(0, 0, -6), elements(instance.view(1.0))) << "on the first key";
    EXPECT_EQ(straightView(0, 0, -5), elements(instance.view(0.5))) << "before the first key";
    EXPECT_EQ(straightView(0, 0, -5), elements(instance.view(0.0)));
    EXPECT_EQ(straightView(0, 0, -7), elements(instance.view(5.0))) << "the curve repeats after 3 seconds";
}

TEST(CameraInstanceTest, ViewFollowsAnAnimatedTarget)
{
    const Stage stage(movingNodes, "", movesTarget);
    CameraInstance instance(stage.link("n"));
    instance.setLookAtNode(stage.link("aim"));
    EXPECT_EQ(towardsX, elements(instance.view(2.0)));
    EXPECT_EQ(translated(5, 0, -5), elements(stage.link("aim")->transform()));
    EXPECT_EQ(straightView(0, 0, -5), elements(instance.view(0.0)));
}

TEST(CameraInstanceTest, ViewFollowsBothNodes)
{
    const Stage stage(movingNodes, "", movesEye + movesTarget);
    CameraInstance instance(stage.link("n"));
    instance.setLookAtNode(stage.link("aim"));
    EXPECT_EQ(viewOf({0, 0, -7}, {5, 0, -5}, {0, 1, 0}), elements(instance.view(2.0)));
    // z = (5, 0, 2) / √29, x = (2, 0, -5) / √29, x · eye = 35 / √29, z · eye = -14 / √29
    const float root = 5.385164807f;
    expectNear({2 / root, 0, 5 / root, 0, 0, 1, 0, 0, -5 / root, 0, 2 / root, 0, -35 / root, 0, 14 / root, 1},
               elements(instance.view()));
}

TEST(CameraInstanceTest, ViewTurnsWithTheUpOfTheNodeAtThatTime)
{
    const Stage stage("<node id='n'><translate>0 0 -5</translate><rotate sid='r'>0 0 1 0</rotate></node>" +
                          node("aim", "0 0 0"),
                      "", curve("c", "n/r", "1 3", "0 180"));
    CameraInstance instance(stage.link("n"));
    instance.setLookAtNode(stage.link("aim"));
    EXPECT_EQ(straightView(0, 0, -5), elements(instance.view()));
    // At second 2 the node is turned by 90 degrees: up = (-1, 0, 0), x = up × z = (0, 1, 0), y = z × x = (-1, 0, 0).
    expectNear({0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 5, 1}, elements(instance.view(2.0)));
}

TEST(CameraInstanceTest, ViewThatWasComputedForATimeStaysOnceTheNodesAreStill)
{
    const Stage stage(movingNodes, "", movesEye);
    CameraInstance instance(stage.link("n"));
    instance.setLookAtNode(stage.link("aim"));
    ASSERT_EQ(straightView(0, 0, -7), elements(instance.view(2.0)));
    nodeHasAnimation(*stage.link("n")) = false;
    EXPECT_EQ(straightView(0, 0, -7), elements(instance.view(1.0)));
}

TEST(CameraInstanceTest, ViewWithoutALookAtNodeStaysAsItStands)
{
    const Stage stage(movingNodes, "", movesEye);
    CameraInstance instance(stage.link("n"));
    EXPECT_EQ(zero, elements(instance.view(2.0)));
    instanceView(instance) = matrixOf(counting);
    EXPECT_EQ(&instance.view(), &instance.view(2.0));
    EXPECT_EQ(counting, elements(instance.view()));
    CameraInstance empty;
    EXPECT_EQ(zero, elements(empty.view(2.0)));
}

/// Records which object is evaluated at which time, and returns another matrix at each call.
class Recorder : public libVideo::Transformation {
public:
    Recorder(std::string& calls, const char* name, std::vector<Elements> matrices)
        : m_calls(calls), m_name(name), m_matrices(std::move(matrices))
    {}

    const libVideo::MatrixHandle& transformationAtTime(double time) override
    {
        m_calls += m_name + "@" + std::to_string(static_cast<int>(time)) + " ";
        m_current = new Matrix(matrixOf(m_matrices.at(m_call++)));
        return m_current;
    }

private:
    std::string& m_calls;
    std::string m_name;
    std::vector<Elements> m_matrices;
    std::size_t m_call = 0;
    libVideo::MatrixHandle m_current;
};

void record(Node& node, std::string& calls, const char* name, const std::vector<Elements>& matrices)
{
    nodeHasAnimation(node) = true;
    nodeTransformations(node).append(TransformationHandle(new Recorder(calls, name, matrices)));
}

TEST(CameraInstanceTest, ViewAsksForUpThenTargetThenEye)
{
    // The position of the first result and the up vector of the second one must not be used.
    const Elements first{0, 1, 0, 100, 0, 0, 0, 100, 0, 0, 0, 100, 0, 0, 0, 1}; // up = (1, 0, 0)
    const Elements second{0, 9, 0, 0, 0, 9, 0, 0, 0, 9, 0, -5, 0, 0, 0, 1};     // position = (0, 0, -5)
    std::string calls;
    Node from;
    Node to;
    record(from, calls, "node", {first, second});
    record(to, calls, "target", {translated(0, 0, 4)});
    CameraInstance instance{NodeLink(&from)};
    instanceLookAtNode(instance) = NodeLink(&to);
    // z = (0, 0, 1), x = (1, 0, 0) × z = (0, -1, 0), y = z × x = (1, 0, 0)
    EXPECT_EQ((Elements{0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 5, 1}), elements(instance.view(2.0)));
    EXPECT_EQ("node@2 target@2 node@2 ", calls);
}

TEST(CameraInstanceTest, NodeThatLooksAtItselfIsAskedThreeTimes)
{
    std::string calls;
    Node node;
    record(node, calls, "node", {translated(0, 0, 0), translated(0, 0, 4), translated(0, 0, -5)});
    CameraInstance instance{NodeLink(&node)};
    instanceLookAtNode(instance) = NodeLink(&node);
    EXPECT_EQ(straightView(0, 0, -5), elements(instance.view(2.0))) << "target of the second answer, eye of the third";
}

// --- CameraInstance: what goes to the camera ---

TEST(CameraInstanceTest, ProjectionIsThatOfTheCamera)
{
    Stage stage(nodeWithCamera, library("library_cameras", camera("eye", "n")));
    CameraInstance instance(stage.link("n"));
    ASSERT_TRUE(stage.load(instance, "n"));
    const Camera& constCamera = *instance.camera();
    EXPECT_EQ(&constCamera.projectionMatrix(), &static_cast<const CameraInstance&>(instance).projection());
    EXPECT_EQ(&constCamera.projectionMatrix(), &instance.projection(2.0));
    // Both angles are 90 degrees, the planes are at 1 and 101: 101 / 100, and that times -1.
    expectNear({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1.01f, 1, 0, 0, -1.01f, 0}, elements(instance.projection()));
}

TEST(CameraInstanceTest, ProjectionAtATimeAndAspectRatioReachTheCamera)
{
    const std::string wide = "<camera id='eye'><optics><technique_common><perspective><yfov sid='fov'>90</yfov>"
                             "<aspect_ratio>2</aspect_ratio><znear>1</znear><zfar>101</zfar></perspective>"
                             "</technique_common></optics></camera>";
    Stage stage(nodeWithCamera, library("library_cameras", wide), curve("c", "eye/fov", "1 3", "60 120"));
    const LogCapture quiet; // there is no look-at node
    CameraInstance instance(stage.link("n"));
    ASSERT_TRUE(stage.load(instance, "n"));
    EXPECT_NEAR(2.0f, instance.projection()[0], 1e-6f);
    EXPECT_NEAR(1.0f, instance.projection()[5], 1e-6f);

    // At second 1 the angle is 60 degrees; the cotangent of its half is √3.
    EXPECT_NEAR(1.7320508f, instance.projection(1.0)[5], 1e-6f);
    EXPECT_NEAR(3.4641016f, instance.projection()[0], 1e-6f);

    instance.setAspectRatio(3.0);
    EXPECT_NEAR(3.4641016f, instance.projection()[0], 1e-6f) << "not before the next evaluation";
    EXPECT_NEAR(5.1961524f, instance.projection(1.0)[0], 1e-6f);
    EXPECT_NEAR(1.7320508f, instance.projection()[5], 1e-6f);
}

TEST(CameraInstanceTest, CallsForAMissingCameraThrow)
{
    CameraInstance instance;
    const auto expectThrows = [](const auto& call) {
        try {
            call();
            ADD_FAILURE() << "nothing thrown";
        } catch (const vesk::NullPointer& failure) {
            EXPECT_STRNE("", failure.what());
        }
    };
    expectThrows([&] { static_cast<const CameraInstance&>(instance).projection(); });
    expectThrows([&] { instance.projection(1.0); });
    expectThrows([&] { instance.setAspectRatio(1.0); });
}

TEST(CameraInstanceTest, CopiesShareWhatTheyReferToAndHaveAViewOfTheirOwn)
{
    Stage stage(node("n", "0 0 -5", "<instance_camera url='#eye'/>") + node("aim", "0 0 0") + node("b", "8 0 -5"),
                library("library_cameras", camera("eye", "aim")));
    CameraInstance source(stage.link("n"));
    ASSERT_TRUE(stage.load(source, "n"));
    instanceSid(source) = "sid";
    instanceName(source) = "name";
    const CameraInstance copy(source);
    CameraInstance assigned(stage.link("b"));
    assigned = source;
    source.setLookAtNode(stage.link("b"));
    ASSERT_EQ(towardsX, elements(source.view()));

    for (const CameraInstance* const instance : {&copy, static_cast<const CameraInstance*>(&assigned)}) {
        EXPECT_EQ(stage.link("n"), instance->node());
        EXPECT_EQ(source.camera(), instance->camera());
        EXPECT_EQ(stage.link("aim"), instance->lookAtNode());
        EXPECT_EQ(straightView(0, 0, -5), elements(instance->view()));
        EXPECT_STREQ("sid", instance->sid().data());
        EXPECT_STREQ("name", instance->name().data());
    }
    const CameraInstance& itself = source;
    source = itself;
    EXPECT_EQ(towardsX, elements(source.view()));
    EXPECT_EQ(1u, stage.cameraList[0].useCount()) << "an instance owns no camera";
}

// --- PointLightInstance ---

const std::string lightOfBothNames =
    node("n", "0 0 0", "<instance_light url='#lamp' sid='s' name='shown'/>") + node("m", "0 0 0");

TEST(PointLightInstanceTest, NewInstanceIsEmptyAndOneOfALightHasIt)
{
    const PointLightInstance empty;
    EXPECT_EQ(nullptr, empty.node());
    EXPECT_EQ(nullptr, empty.pointLight());
    const Stage stage(lightOfBothNames);
    PointLight light("lamp");
    const PointLightInstance instance(stage.link("n"), Link<PointLight>(&light));
    EXPECT_EQ(stage.link("n"), instance.node());
    EXPECT_EQ(&light, instance.pointLight().get());
    EXPECT_EQ(&instancePointLight(instance), &instance.pointLight());
    EXPECT_STREQ("", instance.sid().data());
    EXPECT_STREQ("n-name", instance.name().data());
}

TEST(PointLightInstanceTest, NameAndSidComeFromTheElement)
{
    Stage stage(lightOfBothNames);
    PointLight light("lamp");
    PointLightInstance instance(stage.link("m"), Link<PointLight>(&light));
    const LogCapture log;
    EXPECT_TRUE(instance.createFromCollada(stage.lightElement("n")));
    EXPECT_STREQ("shown", instance.name().data());
    EXPECT_STREQ("s", instance.sid().data());
    EXPECT_EQ(&light, instance.pointLight().get());
    EXPECT_EQ(stage.link("m"), instance.node());
    EXPECT_EQ("", log.text());
}

TEST(PointLightInstanceTest, AbsentNameAndSidBecomeEmpty)
{
    Stage stage(node("n", "0 0 0", "<instance_light url='#lamp'/>"));
    PointLightInstance instance(stage.link("n"), Link<PointLight>());
    instanceName(instance) = "before";
    instanceSid(instance) = "before";
    EXPECT_TRUE(instance.createFromCollada(stage.lightElement("n"))) << "also without a light";
    EXPECT_STREQ("", instance.sid().data());
    EXPECT_STREQ("n-name", instance.name().data());
}

TEST(PointLightInstanceTest, CopiesShareTheLight)
{
    Stage stage(lightOfBothNames);
    PointLight light("lamp");
    PointLightInstance source(stage.link("n"), Link<PointLight>(&light));
    ASSERT_TRUE(source.createFromCollada(stage.lightElement("n")));
    const PointLightInstance copy(source);
    PointLightInstance assigned;
    assigned = source;
    for (const PointLightInstance* const instance : {&copy, static_cast<const PointLightInstance*>(&assigned)}) {
        EXPECT_EQ(stage.link("n"), instance->node());
        EXPECT_EQ(&light, instance->pointLight().get());
        EXPECT_STREQ("shown", instance->name().data());
        EXPECT_STREQ("s", instance->sid().data());
    }
}

// --- SpotLightInstance ---

TEST(SpotLightInstanceTest, NewInstanceIsEmptyAndOneOfALightHasIt)
{
    const SpotLightInstance empty;
    EXPECT_EQ(nullptr, empty.node());
    EXPECT_EQ(nullptr, empty.spotLight());
    EXPECT_EQ(nullptr, empty.lookatNode());
    const Stage stage(lightOfBothNames);
    SpotLight light("lamp");
    const SpotLightInstance instance(stage.link("n"), Link<SpotLight>(&light));
    EXPECT_EQ(stage.link("n"), instance.node());
    EXPECT_EQ(&light, instance.spotLight().get());
    EXPECT_EQ(nullptr, instance.lookatNode());
    EXPECT_STREQ("", instance.sid().data());
    EXPECT_STREQ("n-name", instance.name().data());
}

TEST(SpotLightInstanceTest, NameSidAndLookAtNodeAreTaken)
{
    Stage stage(lightOfBothNames, library("library_lights", spot("lamp", "m")));
    SpotLightInstance instance(stage.link("n"), stage.spotLightList[0]);
    const LogCapture log;
    EXPECT_TRUE(instance.createFromCollada(stage.lightElement("n"), stage.nodeTable));
    EXPECT_STREQ("shown", instance.name().data());
    EXPECT_STREQ("s", instance.sid().data());
    EXPECT_EQ(stage.link("m"), instance.lookatNode());
    EXPECT_EQ("", log.text());
}

TEST(SpotLightInstanceTest, WithoutALightNothingChanges)
{
    Stage stage(lightOfBothNames);
    SpotLightInstance instance(stage.link("n"), Link<SpotLight>());
    instanceName(instance) = "before";
    instanceSid(instance) = "was";
    instance.setLookatNode(stage.link("m"));
    const LogCapture log;
    EXPECT_FALSE(instance.createFromCollada(stage.lightElement("n"), stage.nodeTable));
    EXPECT_STREQ("before", instance.name().data());
    EXPECT_STREQ("was", instance.sid().data());
    EXPECT_EQ(stage.link("m"), instance.lookatNode());
    EXPECT_EQ("", log.text()) << "without a word";
}

TEST(SpotLightInstanceTest, LookAtIdIsFoundExactly)
{
    Stage stage(lightOfBothNames, library("library_lights", spot("lamp", "M")));
    SpotLightInstance instance(stage.link("n"), stage.spotLightList[0]);
    const LogCapture log;
    EXPECT_TRUE(instance.createFromCollada(stage.lightElement("n"), stage.nodeTable));
    expectErrors("libVideo.instance", "Cannot resolve lookAtNode with id M", log);
    EXPECT_EQ(nullptr, instance.lookatNode());
    EXPECT_STREQ("shown", instance.name().data());
    EXPECT_STREQ("s", instance.sid().data());
}

TEST(SpotLightInstanceTest, LightWithoutATargetHasALineThatEndsInABlank)
{
    Stage stage(lightOfBothNames, library("library_lights", spot("lamp")));
    SpotLightInstance instance(stage.link("n"), stage.spotLightList[0]);
    const LogCapture log;
    EXPECT_TRUE(instance.createFromCollada(stage.lightElement("n"), stage.nodeTable));
    expectErrors("libVideo.instance", "Cannot resolve lookAtNode with id ", log);
    EXPECT_EQ(nullptr, instance.lookatNode());
}

TEST(SpotLightInstanceTest, AbsentNameAndSidBecomeEmpty)
{
    Stage stage(node("n", "0 0 0", "<instance_light url='#lamp'/>"), library("library_lights", spot("lamp", "n")));
    SpotLightInstance instance(stage.link("n"), stage.spotLightList[0]);
    instanceName(instance) = "before";
    instanceSid(instance) = "before";
    EXPECT_TRUE(instance.createFromCollada(stage.lightElement("n"), stage.nodeTable));
    EXPECT_STREQ("", instance.sid().data());
    EXPECT_STREQ("n-name", instance.name().data());
}

TEST(SpotLightInstanceTest, SetLookatNodeTakesTheNode)
{
    const Stage stage(lightOfBothNames);
    SpotLightInstance instance(stage.link("n"), Link<SpotLight>());
    instance.setLookatNode(stage.link("m"));
    EXPECT_EQ(stage.link("m"), instance.lookatNode());
    instance.setLookatNode(instance.lookatNode());
    EXPECT_EQ(stage.link("m"), instance.lookatNode());
    instance.setLookatNode(NodeLink());
    EXPECT_EQ(nullptr, instance.lookatNode());
    EXPECT_EQ(stage.link("n"), instance.node());
}

struct DirectionCase : Row {
    Triple from;
    Triple to;
    Triple expected;
};

class SpotLightInstanceDirectionTest : public testing::TestWithParam<DirectionCase> {};

TEST_P(SpotLightInstanceDirectionTest, LeadsFromTheNodeToItsTarget)
{
    const DirectionCase& row = GetParam();
    Node from = placed(row.from, {0, 1, 0});
    Node to = placed(row.to, {0, 1, 0});
    SpotLightInstance instance{NodeLink(&from), Link<SpotLight>()};
    instance.setLookatNode(NodeLink(&to));
    const LogCapture log;
    const Triple direction = triple(instance.lookAtVector());
    const Triple stepByStep = normalized(difference(row.to, row.from));
    for (std::size_t i = 0; i < 3; ++i) {
        if (std::isnan(row.expected[i])) {
            EXPECT_TRUE(std::isnan(direction[i])) << i;
            continue;
        }
        EXPECT_EQ(stepByStep[i], direction[i]) << i;
        EXPECT_NEAR(row.expected[i], direction[i], 1e-6f) << i;
    }
    EXPECT_EQ("", log.text());
}

INSTANTIATE_ROWS(Places, SpotLightInstanceDirectionTest, {"AlongZ", triple(0, 0, 0), triple(0, 0, 2), triple(0, 0, 1)},
                 {"Back", triple(1, 1, 1), triple(1, 1, -7), triple(0, 0, -1)},
                 {"Aslant", triple(0, 4, 3), triple(0, 0, 0), triple(0, -0.8f, -0.6f)},
                 {"Odd", triple(1.5f, -2.25f, 3.125f), triple(2.5f, -0.25f, 1.125f),
                  triple(1 / 3.0f, 2 / 3.0f, -2 / 3.0f)},
                 {"AtItsTarget", triple(1, 2, 3), triple(1, 2, 3), triple(nan, nan, nan)});

TEST(SpotLightInstanceTest, DirectionTakesTheNodesAsTheyStand)
{
    const Stage stage(node("n", "0 0 0") + node("m", "0 0 2"), "", curve("c", "m/t", "1 3", "4 0 0  8 0 0"));
    SpotLightInstance instance(stage.link("n"), Link<SpotLight>());
    instance.setLookatNode(stage.link("m"));
    EXPECT_EQ((Triple{0, 0, 1}), triple(instance.lookAtVector()));
    stage.link("m")->transform(1.0);
    EXPECT_EQ((Triple{1, 0, 0}), triple(instance.lookAtVector()));
}

TEST(SpotLightInstanceTest, DirectionWithoutBothNodesIsZeroWithALine)
{
    const Stage stage(lightOfBothNames);
    const SpotLightInstance none;
    const SpotLightInstance nodeOnly(stage.link("n"), Link<SpotLight>());
    SpotLightInstance targetOnly;
    targetOnly.setLookatNode(stage.link("n"));
    for (const SpotLightInstance* const instance :
         {&none, &nodeOnly, static_cast<const SpotLightInstance*>(&targetOnly)}) {
        const LogCapture log;
        EXPECT_EQ((Triple{0, 0, 0}), triple(instance->lookAtVector()));
        expectErrors("libVideo.instance", "SpotLightInstace does not have valid internal nodes", log);
    }
}

TEST(SpotLightInstanceTest, CopiesShareLightAndTarget)
{
    Stage stage(lightOfBothNames, library("library_lights", spot("lamp", "m")));
    SpotLightInstance source(stage.link("n"), stage.spotLightList[0]);
    ASSERT_TRUE(source.createFromCollada(stage.lightElement("n"), stage.nodeTable));
    const SpotLightInstance copy(source);
    SpotLightInstance assigned;
    assigned = source;
    source.setLookatNode(NodeLink());
    for (const SpotLightInstance* const instance : {&copy, static_cast<const SpotLightInstance*>(&assigned)}) {
        EXPECT_EQ(stage.link("n"), instance->node());
        EXPECT_EQ(stage.spotLightList[0].get(), instance->spotLight().get());
        EXPECT_EQ(stage.link("m"), instance->lookatNode());
        EXPECT_STREQ("shown", instance->name().data());
        EXPECT_STREQ("s", instance->sid().data());
    }
}

static_assert(std::is_polymorphic_v<Instance> && std::has_virtual_destructor_v<Instance>);
static_assert(std::is_default_constructible_v<Instance> && std::is_constructible_v<Instance, const NodeLink&>);
static_assert(std::is_copy_constructible_v<Instance> && std::is_copy_assignable_v<Instance>);
static_assert(std::is_base_of_v<Instance, CameraInstance> && std::is_base_of_v<Instance, PointLightInstance> &&
              std::is_base_of_v<Instance, SpotLightInstance>);
static_assert(std::is_default_constructible_v<CameraInstance> &&
              std::is_constructible_v<CameraInstance, const NodeLink&>);
static_assert(std::is_copy_constructible_v<CameraInstance> && std::is_copy_assignable_v<CameraInstance>);
static_assert(std::is_default_constructible_v<PointLightInstance> &&
              std::is_constructible_v<PointLightInstance, const NodeLink&, const Link<PointLight>&>);
static_assert(std::is_copy_constructible_v<PointLightInstance> && std::is_copy_assignable_v<PointLightInstance>);
static_assert(std::is_default_constructible_v<SpotLightInstance> &&
              std::is_constructible_v<SpotLightInstance, const NodeLink&, const Link<SpotLight>&>);
static_assert(std::is_copy_constructible_v<SpotLightInstance> && std::is_copy_assignable_v<SpotLightInstance>);
static_assert(std::is_same_v<decltype(constant<Instance>().node()), const NodeLink&>);
static_assert(std::is_same_v<decltype(variable<Instance>().setNode(NodeLink())), const NodeLink&>);
static_assert(std::is_same_v<decltype(constant<Instance>().sid()), const vesk::String&>);
static_assert(std::is_same_v<decltype(constant<Instance>().name()), const vesk::String&>);
static_assert(std::is_same_v<decltype(constant<Instance>().nodeId()), const vesk::String&>);
static_assert(std::is_same_v<decltype(constant<CameraInstance>().camera()), const Link<Camera>&>);
static_assert(std::is_same_v<decltype(constant<CameraInstance>().cameraId()), const vesk::String&>);
static_assert(std::is_same_v<decltype(constant<CameraInstance>().lookAtNode()), const NodeLink&>);
static_assert(std::is_same_v<decltype(variable<CameraInstance>().setLookAtNode(NodeLink())), ConstMatrix>);
static_assert(std::is_same_v<decltype(constant<CameraInstance>().view()), ConstMatrix>);
static_assert(std::is_same_v<decltype(variable<CameraInstance>().view(0.0)), ConstMatrix>);
static_assert(std::is_same_v<decltype(constant<CameraInstance>().projection()), ConstMatrix>);
static_assert(std::is_same_v<decltype(variable<CameraInstance>().projection(0.0)), ConstMatrix>);
static_assert(std::is_same_v<decltype(variable<CameraInstance>().setAspectRatio(1.0)), void>);
static_assert(std::is_same_v<decltype(constant<PointLightInstance>().pointLight()), const Link<PointLight>&>);
static_assert(std::is_same_v<decltype(constant<SpotLightInstance>().spotLight()), const Link<SpotLight>&>);
static_assert(std::is_same_v<decltype(constant<SpotLightInstance>().lookatNode()), const NodeLink&>);
static_assert(std::is_same_v<decltype(constant<SpotLightInstance>().lookAtVector()), Vector3>);

std::string camera(const std::string& id, const std::string& lookAt)
{
    const std::string extra = lookAt.empty() ? "" : vendorExtra("<target>#" + lookAt + "</target>");
    return "<camera id='" + id +
           "'><optics><technique_common><perspective><xfov>90</xfov><yfov>90</yfov><znear>1</znear><zfar>101</zfar>"
           "</perspective></technique_common></optics>" +
           extra + "</camera>";
}

} // namespace
