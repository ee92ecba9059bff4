#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Animation.h>
#include <libVideo/SceneGraph/Node.h>
#include <libVideo/SceneGraph/Transformation.h>

#include <typeinfo>

namespace {

using namespace libVideo;
using namespace testSupport;

using Values = daeTArray<double>;
using TransformationList = vesk::Array<TransformationHandle>;

PRIVATE_MEMBER(nodeMatrix, Matrix4 Node::*, &Node::m_transform)
PRIVATE_MEMBER(nodeParent, NodeLink Node::*, &Node::m_parent)
PRIVATE_MEMBER(nodeChildren, vesk::Array<NodeLink> Node::*, &Node::m_children)
PRIVATE_MEMBER(nodeId, vesk::String Node::*, &Node::m_id)
PRIVATE_MEMBER(nodeSid, vesk::String Node::*, &Node::m_sid)
PRIVATE_MEMBER(nodeName, vesk::String Node::*, &Node::m_name)
PRIVATE_MEMBER(nodeHasAnimation, bool Node::*, &Node::m_hasAnimation)
PRIVATE_MEMBER(transformationsOf, TransformationList Node::*, &Node::m_transformations)
PRIVATE_MEMBER(nodeSetId, void (Node::*)(const vesk::String&), &Node::setId)
PRIVATE_MEMBER(nodeSetSid, void (Node::*)(const vesk::String&), &Node::setSid)
PRIVATE_MEMBER(nodeSetName, void (Node::*)(const vesk::String&), &Node::setName)
PRIVATE_MEMBER(nodeAccumulateTransform, void (Node::*)(const daeTArray<daeSmartRef<daeElement>>&),
               &Node::accumulateTransform)
PRIVATE_MEMBER(nodeLookat, void (Node::*)(Values&), &Node::lookat)
PRIVATE_MEMBER(nodeTranslate, void (Node::*)(const Values&), &Node::translate)
PRIVATE_MEMBER(nodeRotate, void (Node::*)(const Values&), &Node::rotate)
PRIVATE_MEMBER(nodeScale, void (Node::*)(const Values&), &Node::scale)
PRIVATE_MEMBER(nodeTransformValues, void (Node::*)(const Values&), &Node::transform)

TEST(NodeTest, FieldsStandInTheirOrder)
{
    const Node node;
    expectAscending({&nodeMatrix(node), &nodeParent(node), &nodeChildren(node), &nodeId(node), &nodeSid(node),
                     &nodeName(node), &nodeHasAnimation(node), &transformationsOf(node)});
}

constexpr float rounding = 1e-6f;

// Tolerance for results that depend on sine and cosine; all others are compared exactly.
testing::AssertionResult isNear(const Elements& expected, const Matrix4& matrix);
testing::AssertionResult isNotANumberThroughout(const Matrix4& matrix);

// Whether an entry has exactly this class.
template <class Kind>
bool isExactly(const TransformationHandle& entry)
{
    const libVideo::Transformation& transformation = *entry;
    return typeid(transformation) == typeid(Kind);
}

// A node "n" with the children.
std::string node(const std::string& children)
{
    return "<node id='n'>" + children + "</node>";
}

/// One node, and the small document that it was read from.
class Document {
public:
    explicit Document(const std::string& nodes)
    {
        m_builder.addScene(nodes);
        m_builder.open();
    }

    domNode& element(const char* id = "n")
    {
        domNode* const found = m_builder.element<domNode>(id);
        if (found == nullptr) {
            throw std::runtime_error(std::string("no node ") + id);
        }
        return *found;
    }

private:
    ColladaBuilder m_builder;
};

Node read(const std::string& nodes)
{
    Document document(nodes);
    return Node(document.element());
}

TEST(NodeTest, DefaultNodeIsTheIdentityAndEmpty)
{
    const Node node;

    EXPECT_EQ(identity, elements(node.transform()));
    EXPECT_EQ(nullptr, node.parent());
    EXPECT_EQ(0u, node.children().size());
    EXPECT_STREQ("", node.id().data());
    EXPECT_STREQ("", node.sid().data());
    EXPECT_STREQ("", node.name().data());
    EXPECT_FALSE(node.hasAnimation());
    EXPECT_EQ(0u, transformationsOf(node).size());
}

TEST(NodeTest, DefaultNodeStandsAtTheOriginWithYUp)
{
    const Node node;

    EXPECT_EQ((std::array<float, 3>{0, 0, 0}), triple(node.position()));
    EXPECT_EQ((std::array<float, 3>{0, 1, 0}), triple(node.up()));
}

TEST(NodeTest, NodeOfAnElementHasNoLinks)
{
    const Node parent = read("<node id='n' sid='s' name='m'><translate>1 2 3</translate><node id='child'/></node>");

    EXPECT_EQ(nullptr, parent.parent());
    EXPECT_EQ(0u, parent.children().size());
    EXPECT_FALSE(parent.hasAnimation());
}

TEST(NodeTest, NodeWithoutTransformChildIsAllZero)
{
    const Node built = read(node("<node id='child'><translate>1 2 3</translate></node><instance_geometry url='#g'/>"));

    EXPECT_EQ(zero, elements(built.transform()));
    EXPECT_EQ((std::array<float, 3>{0, 0, 0}), triple(built.position()));
    EXPECT_EQ((std::array<float, 3>{0, 0, 0}), triple(built.up()));
    EXPECT_EQ(0u, transformationsOf(built).size());
}

TEST(NodeTest, LoadingWithoutTransformChildIsTrueAndLeavesTheMatrix)
{
    Document document("<node id='n'/><node id='moved'><translate>1 2 3</translate></node>");
    Node untouched;
    EXPECT_TRUE(untouched.createFromCollada(document.element()));
    EXPECT_EQ(identity, elements(untouched.transform()));
    Node moved(document.element("moved"));
    EXPECT_TRUE(moved.createFromCollada(document.element()));
    EXPECT_EQ(translated(1, 2, 3), elements(moved.transform()));
    EXPECT_EQ(1u, transformationsOf(moved).size());
}

TEST(NodeTest, LoadingWithTransformChildIsTrue)
{
    Document document(node("<translate>1 2 3</translate>"));
    Node built;
    EXPECT_TRUE(built.createFromCollada(document.element()));
    EXPECT_EQ(translated(1, 2, 3), elements(built.transform()));
}

TEST(NodeTest, NamesComeFromTheAttributes)
{
    const Node built = read("<node id='n' sid='place' name='Lamp'/>");

    EXPECT_STREQ("n", built.id().data());
    EXPECT_STREQ("place", built.sid().data());
    EXPECT_STREQ("Lamp", built.name().data());
}

TEST(NodeTest, AbsentNamesAreEmpty)
{
    ColladaBuilder builder;
    builder.addScene("<node/>");
    domCOLLADA* const root = builder.open();
    ASSERT_NE(nullptr, root);
    const Node built(*root->getLibrary_visual_scenes_array()[0]->getVisual_scene_array()[0]->getNode_array()[0]);
    EXPECT_STREQ("", built.id().data());
    EXPECT_STREQ("", built.sid().data());
    EXPECT_STREQ("", built.name().data());
}

TEST(NodeTest, SecondLoadReplacesTheNamesAlsoByEmptyOnes)
{
    Document document("<node id='n' sid='place' name='Lamp'/><node id='other'/>");
    Node built(document.element());
    built.createFromCollada(document.element("other"));

    EXPECT_STREQ("other", built.id().data());
    EXPECT_STREQ("", built.sid().data());
    EXPECT_STREQ("", built.name().data());
}

TEST(NodeTest, SecondLoadStartsTheMatrixAnewAndAppendsToTheList)
{
    Document document(node("<translate sid='t'>1 2 3</translate>") +
                      "<node id='other'><scale sid='s'>2 3 4</scale></node>");
    Node built(document.element());
    built.createFromCollada(document.element("other"));

    EXPECT_EQ(scaled(2, 3, 4), elements(built.transform()));
    ASSERT_EQ(2u, transformationsOf(built).size());
    EXPECT_STREQ("t", transformationsOf(built)[0]->sid().data());
    EXPECT_STREQ("s", transformationsOf(built)[1]->sid().data());
}

// Content of a node, and its matrix.
struct MatrixCase : Row {
    const char* children;
    Elements matrix;
    unsigned transformations;
};

class NodeMatrixTest : public testing::TestWithParam<MatrixCase> {};

TEST_P(NodeMatrixTest, TransformChildrenComposeToTheMatrix)
{
    const LogCapture log;
    const Node built = read(node(GetParam().children));

    EXPECT_TRUE(isNear(GetParam().matrix, built.transform()));
    EXPECT_EQ(GetParam().transformations, transformationsOf(built).size());
    EXPECT_EQ("", log.text());
}

// A rotation by 90 degrees about Z maps (x, y, z) to (-y, x, z); one about X maps it to (x, -z, y).
INSTANTIATE_ROWS(Kinds, NodeMatrixTest, {"Translate", "<translate>1 2 3</translate>", translated(1, 2, 3), 1},
                 {"Scale", "<scale>2 3 4</scale>", scaled(2, 3, 4), 1},
                 {"RotateAboutZ", "<rotate>0 0 1 90</rotate>",
                  elementsOf(0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1), 1},
                 {"RotateAboutLongX", "<rotate>5 0 0 90</rotate>",
                  elementsOf(1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1), 1},
                 {"Matrix", "<matrix>1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16</matrix>",
                  elementsOf(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16), 1},
                 {"SkewAlone", "<skew>45 0 1 0 1 0 0</skew>", identity, 0},
                 {"SkewBesideOthers", "<translate>1 2 3</translate><skew>45 0 1 0 1 0 0</skew><scale>2 2 2</scale>",
                  elementsOf(2, 0, 0, 1, 0, 2, 0, 2, 0, 0, 2, 3, 0, 0, 0, 1), 2});

INSTANTIATE_ROWS(Order, NodeMatrixTest,
                 {"TranslateThenScale", "<translate>1 2 3</translate><scale>2 2 2</scale>",
                  elementsOf(2, 0, 0, 1, 0, 2, 0, 2, 0, 0, 2, 3, 0, 0, 0, 1), 2},
                 {"ScaleThenTranslate", "<scale>2 2 2</scale><translate>1 2 3</translate>",
                  elementsOf(2, 0, 0, 2, 0, 2, 0, 4, 0, 0, 2, 6, 0, 0, 0, 1), 2},
                 {"RotateThenTranslate", "<rotate>0 0 1 90</rotate><translate>1 2 3</translate>",
                  elementsOf(0, -1, 0, -2, 1, 0, 0, 1, 0, 0, 1, 3, 0, 0, 0, 1), 2},
                 {"TranslateThenRotate", "<translate>1 2 3</translate><rotate>0 0 1 90</rotate>",
                  elementsOf(0, -1, 0, 1, 1, 0, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1), 2},
                 // T(1, 2, 3) · [y = x swapped] · S(2, 3, 4): the columns of the swap times the factors.
                 {"MatrixInTheMiddle",
                  "<translate>1 2 3</translate><matrix>0 1 0 0 1 0 0 0 0 0 1 0 0 0 0 1</matrix><scale>2 3 4</scale>",
                  elementsOf(0, 3, 0, 1, 2, 0, 0, 2, 0, 0, 4, 3, 0, 0, 0, 1), 3},
                 // T(1, 0, 0) · S(2, 2, 2) · T(1, 0, 0) · S(3, 3, 3): 1 + 2 · 1 along X, and a factor of 6.
                 {"KindsRepeatAndAlternate",
                  "<translate>1 0 0</translate><scale>2 2 2</scale><translate>1 0 0</translate><scale>3 3 3</scale>",
                  elementsOf(6, 0, 0, 3, 0, 6, 0, 0, 0, 0, 6, 0, 0, 0, 0, 1), 4},
                 {"BetweenInstancesAndNodes",
                  "<instance_geometry url='#g'/><translate>1 2 3</translate><node id='c1'><scale>9 9 9</scale></node>"
                  "<!-- here --><instance_camera url='#c'/><scale>2 2 2</scale><instance_node url='#x'/>"
                  "<node id='c2'/><translate>10 0 0</translate><instance_light url='#l'/>",
                  elementsOf(2, 0, 0, 21, 0, 2, 0, 2, 0, 0, 2, 3, 0, 0, 0, 1), 3});

INSTANTIATE_ROWS(MissingValuesAreZero, NodeMatrixTest,
                 {"TranslateOfTwo", "<translate>1 2</translate>", translated(1, 2, 0), 1},
                 {"TranslateOfNone", "<translate/>", identity, 1},
                 {"ScaleOfOne", "<scale>2</scale>", scaled(2, 0, 0), 1},
                 {"ScaleOfNone", "<scale/>", scaled(0, 0, 0), 1},
                 {"RotateWithoutAngle", "<rotate>0 0 1</rotate>", identity, 1},
                 {"MatrixOfFifteen", "<matrix>1 2 3 4 5 6 7 8 9 10 11 12 13 14 15</matrix>",
                  elementsOf(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0), 1},
                 {"MatrixOfNone", "<matrix/>", zero, 1});

INSTANTIATE_ROWS(SurplusValuesAreNotRead, NodeMatrixTest,
                 {"Translate", "<translate>1 2 3 4</translate>", translated(1, 2, 3), 1},
                 {"Scale", "<scale>2 3 4 5</scale>", scaled(2, 3, 4), 1},
                 {"Rotate", "<rotate>0 0 1 90 5</rotate>", elementsOf(0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1),
                  1},
                 {"Matrix", "<matrix>1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17</matrix>",
                  elementsOf(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16), 1});

TEST(NodeTest, RotateWithoutAxisGivesNaNInThreeColumns)
{
    const Node built = read(node("<rotate/>"));
    // The upper left block of the rotation is NaN, and so is zero times NaN.
    for (unsigned i = 0; i < 16; ++i) {
        EXPECT_EQ(i % 4 < 3, std::isnan(built.transform()[i])) << i;
    }
    EXPECT_EQ((std::array<float, 3>{0, 0, 0}), triple(built.position()));
}

TEST(NodeTest, EachKindBecomesAnObjectOfItsClassInDocumentOrder)
{
    const Node built =
        read(node("<matrix sid='m'>1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16</matrix><scale sid='s'>2 3 4</scale>"
                  "<lookat sid='l'>0 0 5 0 0 0 0 1 0</lookat><rotate sid='r'>0 0 1 180</rotate>"
                  "<skew sid='k'>45 0 1 0 1 0 0</skew><translate sid='t'>1 2 3</translate><scale>5 5 5</scale>"));
    const TransformationList& list = transformationsOf(built);

    ASSERT_EQ(5u, list.size());
    EXPECT_TRUE(isExactly<libVideo::Transformation>(list[0]));
    EXPECT_TRUE(isExactly<libVideo::Scale>(list[1]));
    EXPECT_TRUE(isExactly<libVideo::Rotation>(list[2]));
    EXPECT_TRUE(isExactly<libVideo::Translation>(list[3]));
    EXPECT_TRUE(isExactly<libVideo::Scale>(list[4]));
    EXPECT_STREQ("m", list[0]->sid().data());
    EXPECT_STREQ("s", list[1]->sid().data());
    EXPECT_STREQ("r", list[2]->sid().data());
    EXPECT_STREQ("t", list[3]->sid().data());
    EXPECT_STREQ("", list[4]->sid().data());
    EXPECT_EQ((Elements{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}), elements(*list[0]->transformation()));
    EXPECT_EQ(scaled(2, 3, 4), elements(*list[1]->transformation()));
    EXPECT_TRUE(isNear(scaled(-1, -1, 1), *list[2]->transformation()));
    EXPECT_EQ(translated(1, 2, 3), elements(*list[3]->transformation()));
    EXPECT_EQ(scaled(5, 5, 5), elements(*list[4]->transformation()));
}

// Eye and interest both come from the first three numbers, so even a correct look-at is NaN.
class NodeLookatTest : public testing::TestWithParam<Case<const char*>> {};

TEST_P(NodeLookatTest, GivesNaNThroughoutAndNoTransformation)
{
    const LogCapture log;
    const Node built = read(node(GetParam().given));

    EXPECT_TRUE(isNotANumberThroughout(built.transform()));
    for (const TransformationHandle& transformation : transformationsOf(built)) {
        EXPECT_STRNE("look", transformation->sid().data());
    }
    EXPECT_EQ("", log.text());
}

INSTANTIATE_ROWS(Documents, NodeLookatTest, {"Alone", "<lookat sid='look'>0 0 5 0 0 0 0 1 0</lookat>"},
                 {"First", "<lookat sid='look'>0 0 5 0 0 0 0 1 0</lookat><scale>2 2 2</scale>"},
                 {"Last", "<translate>1 2 3</translate><lookat sid='look'>0 0 5 0 0 0 0 1 0</lookat>"},
                 {"TwoValues", "<lookat sid='look'>0 5</lookat>"}, {"NoValues", "<lookat sid='look'/>"});

TEST(NodeTest, LookatAddsNoObjectThatAnAnimationCouldReach)
{
    Node built = read(node("<lookat sid='look'>0 0 5 0 0 0 0 1 0</lookat>"));

    EXPECT_EQ(0u, transformationsOf(built).size());
    EXPECT_FALSE(built.addAnimation(loadedCurve("n/look", "1 3", "0 0")));
    EXPECT_FALSE(built.hasAnimation());
}

TEST(NodeTest, SettersOfTheNamesSetTheirFieldAlone)
{
    Node node;
    nodeSetId(node, "lamp");
    EXPECT_STREQ("lamp", node.id().data());
    EXPECT_STREQ("", node.sid().data());
    EXPECT_STREQ("", node.name().data());
    nodeSetSid(node, "place");
    nodeSetName(node, "Lamp");
    EXPECT_STREQ("lamp", node.id().data());
    EXPECT_STREQ("place", node.sid().data());
    EXPECT_STREQ("Lamp", node.name().data());
}

TEST(NodeTest, AccumulateTransformMultipliesIntoTheMatrixAsItStands)
{
    Document document(node("<scale sid='s'>2 2 2</scale><node id='child'/><translate sid='t'>1 2 3</translate>"));
    Node built;
    nodeTranslate(built, valuesOf({10, 20, 30}));
    nodeAccumulateTransform(built, document.element().getChildren());

    // T(10, 20, 30) · S(2) · T(1, 2, 3)
    EXPECT_EQ((Elements{2, 0, 0, 12, 0, 2, 0, 24, 0, 0, 2, 36, 0, 0, 0, 1}), elements(built.transform()));
    ASSERT_EQ(2u, transformationsOf(built).size());
    EXPECT_STREQ("s", transformationsOf(built)[0]->sid().data());
    EXPECT_STREQ("t", transformationsOf(built)[1]->sid().data());
}

TEST(NodeTest, AccumulateTransformPassesOverNothing)
{
    Node built;
    daeTArray<daeSmartRef<daeElement>> children;
    nodeAccumulateTransform(built, children);
    children.append(daeSmartRef<daeElement>());
    nodeAccumulateTransform(built, children);

    EXPECT_EQ(identity, elements(built.transform()));
    EXPECT_EQ(0u, transformationsOf(built).size());
}

// The four functions that multiply plain values into the matrix, and their results on top of T(1, 2, 3).
struct ValuesCase : Row {
    void (Node::*operation)(const Values&);
    std::vector<double> values;
    Elements matrix;
};

class NodeValuesTest : public testing::TestWithParam<ValuesCase> {};

TEST_P(NodeValuesTest, MultipliesOnTheRightAndAddsNoTransformation)
{
    Node built;
    nodeTranslate(built, valuesOf({1, 2, 3}));
    (built.*GetParam().operation)(valuesOf(GetParam().values));

    EXPECT_TRUE(isNear(GetParam().matrix, built.transform()));
    EXPECT_EQ(0u, transformationsOf(built).size());
    EXPECT_FALSE(built.hasAnimation());
}

INSTANTIATE_ROWS(
    Values, NodeValuesTest, {"Translate", nodeTranslate.pointer(), {10, 20, 30}, translated(11, 22, 33)},
    {"TranslateOfTwo", nodeTranslate.pointer(), {10, 20}, translated(11, 22, 3)},
    {"TranslateOfNone", nodeTranslate.pointer(), {}, translated(1, 2, 3)},
    {"TranslateOfFour", nodeTranslate.pointer(), {10, 20, 30, 40}, translated(11, 22, 33)},
    {"Rotate", nodeRotate.pointer(), {0, 0, 2, 90}, {0, -1, 0, 1, 1, 0, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1}},
    {"RotateBack", nodeRotate.pointer(), {0, 0, 1, -90}, {0, 1, 0, 1, -1, 0, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1}},
    {"RotateWithoutAngle", nodeRotate.pointer(), {0, 0, 1}, translated(1, 2, 3)},
    {"Scale", nodeScale.pointer(), {2, 3, 4}, {2, 0, 0, 1, 0, 3, 0, 2, 0, 0, 4, 3, 0, 0, 0, 1}},
    {"ScaleOfOne", nodeScale.pointer(), {2}, {2, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 1}},
    // Row i of the product is row i of M plus (i + 1) times its last row.
    {"Matrix",
     nodeTransformValues.pointer(),
     {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 1, 0, 0, 1},
     {2, 2, 3, 5, 7, 6, 7, 10, 12, 10, 11, 15, 1, 0, 0, 1}},
    {"MatrixOfFour", nodeTransformValues.pointer(), {1, 2, 3, 4}, {1, 2, 3, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}});

TEST(NodeTest, LookatOfValuesGivesNaNWhateverTheInterest)
{
    for (const Values& values : {valuesOf({0, 0, 5, 0, 0, 0, 0, 1, 0}), valuesOf({1, 2}), valuesOf({})}) {
        Node node;
        Values numbers = values;
        nodeLookat(node, numbers);
        EXPECT_TRUE(isNotANumberThroughout(node.transform()));
        EXPECT_EQ(0u, transformationsOf(node).size());
    }
}

TEST(NodeTest, SetParentReplacesTheLinkAndTouchesNothingInTheParent)
{
    Node first;
    Node second;
    Node node;
    node.setParent(NodeLink(&first));
    EXPECT_EQ(&first, node.parent().get());
    node.setParent(NodeLink(&second));
    EXPECT_EQ(&second, node.parent().get());
    EXPECT_EQ(0u, first.children().size());
    EXPECT_EQ(0u, second.children().size());
    node.setParent(node.parent());
    EXPECT_EQ(&second, node.parent().get());
    node.setParent(NodeLink());
    EXPECT_EQ(nullptr, node.parent());
}

TEST(NodeTest, AddChildAppendsWithoutTestForDuplicatesAndTouchesNothingInTheChild)
{
    Node first;
    Node second;
    Node node;
    node.addChild(NodeLink(&first));
    node.addChild(NodeLink(&second));
    node.addChild(NodeLink(&first));

    ASSERT_EQ(3u, node.children().size());
    EXPECT_EQ(&first, node.children()[0].get());
    EXPECT_EQ(&second, node.children()[1].get());
    EXPECT_EQ(&first, node.children()[2].get());
    EXPECT_EQ(nullptr, first.parent());
    EXPECT_EQ(nullptr, second.parent());
}

TEST(NodeTest, AddChildTakesALinkOutOfItsOwnGrowingList)
{
    Node child;
    Node node;
    for (unsigned i = 0; i < 9; ++i) {
        node.addChild(i == 0 ? NodeLink(&child) : node.children()[0]);
    }
    ASSERT_EQ(9u, node.children().size());
    for (const NodeLink& link : node.children()) {
        EXPECT_EQ(&child, link.get());
    }
}

TEST(NodeTest, PositionAndUpAreTheFourthAndTheSecondColumn)
{
    const Node built = read(node("<matrix>1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16</matrix>"));

    EXPECT_EQ((std::array<float, 3>{4, 8, 12}), triple(built.position()));
    EXPECT_EQ((std::array<float, 3>{2, 6, 10}), triple(built.up()));
}

TEST(NodeTest, UpIsNotNormalised)
{
    const Node built = read(node("<scale>2 3 4</scale>"));
    EXPECT_EQ((std::array<float, 3>{0, 3, 0}), triple(built.up()));
}

TEST(NodeTest, UpdateTransformWithoutParentChangesNothing)
{
    Node built = read(node("<translate>1 2 3</translate>"));
    const Matrix4& result = built.updateTransform();

    EXPECT_EQ(&built.transform(), &result);
    EXPECT_EQ(translated(1, 2, 3), elements(result));
}

TEST(NodeTest, UpdateTransformMultipliesTheParentsMatrixOnTheLeft)
{
    Node parent = read(node("<translate>1 2 3</translate><scale>2 2 2</scale>"));
    Node child = read(node("<translate>10 20 30</translate>"));
    child.setParent(NodeLink(&parent));
    const Matrix4& result = child.updateTransform();

    EXPECT_EQ(&child.transform(), &result);
    EXPECT_EQ((Elements{2, 0, 0, 21, 0, 2, 0, 42, 0, 0, 2, 63, 0, 0, 0, 1}), elements(result));
    EXPECT_EQ((Elements{2, 0, 0, 1, 0, 2, 0, 2, 0, 0, 2, 3, 0, 0, 0, 1}), elements(parent.transform()));
}

TEST(NodeTest, UpdateTransformTwiceAppliesTheParentTwice)
{
    Node parent = read(node("<translate>1 2 3</translate>"));
    Node child = read(node("<translate>10 20 30</translate>"));
    child.setParent(NodeLink(&parent));
    child.updateTransform();
    child.updateTransform();

    EXPECT_EQ(translated(12, 24, 36), elements(child.transform()));
}

TEST(NodeTest, UpdateTransformReadsTheParentAsItStandsAndNotItsAncestors)
{
    Node grandparent = read(node("<translate>100 0 0</translate>"));
    Node parent = read(node("<translate>1 0 0</translate>"));
    Node child = read(node("<translate>10 0 0</translate>"));
    parent.setParent(NodeLink(&grandparent));
    child.setParent(NodeLink(&parent));
    child.updateTransform();
    EXPECT_EQ(translated(11, 0, 0), elements(child.transform()));

    parent.updateTransform();
    child.updateTransform();
    EXPECT_EQ(translated(112, 0, 0), elements(child.transform()));
    EXPECT_EQ(translated(100, 0, 0), elements(grandparent.transform()));
}

TEST(NodeTest, ChildrenOfANodeWithoutTransformAreZeroAfterTheirUpdate)
{
    Node parent = read(node(""));
    Node child = read(node("<translate>1 2 3</translate>"));
    child.setParent(NodeLink(&parent));

    EXPECT_EQ(zero, elements(child.updateTransform()));
}

TEST(NodeTest, TimePlaysNoPartWithoutAnimation)
{
    Node built = read(node("<translate sid='t'>1 2 3</translate>"));
    for (const double time : {0.0, 2.0, -1.0, 1e300, std::numeric_limits<double>::quiet_NaN()}) {
        const Matrix4& result = built.transform(time);
        EXPECT_EQ(&std::as_const(built).transform(), &result);
        EXPECT_EQ(translated(1, 2, 3), elements(result));
        EXPECT_EQ((std::array<float, 3>{1, 2, 3}), triple(built.position(time)));
        EXPECT_EQ((std::array<float, 3>{0, 1, 0}), triple(built.up(time)));
    }
}

TEST(NodeTest, NodeWithoutAnimationKeepsTheFoldedMatrixForGood)
{
    Node parent = read(node("<translate>1 2 3</translate>"));
    Node child = read(node("<translate>10 20 30</translate>"));
    child.setParent(NodeLink(&parent));
    child.updateTransform();

    EXPECT_EQ(translated(11, 22, 33), elements(child.transform(2.0)));
    EXPECT_EQ((std::array<float, 3>{11, 22, 33}), triple(child.position(2.0)));
}

TEST(NodeTest, NodeWithoutAnimationKeepsItsZeroMatrixAtAnyTime)
{
    Node built = read(node(""));
    EXPECT_EQ(zero, elements(built.transform(2.0)));
}

TEST(NodeTest, AnimatedTranslationMovesWithTime)
{
    Node built = read(node("<translate sid='t'>1 2 3</translate>"));
    ASSERT_TRUE(built.addAnimation(loadedCurve("n/t", "1 3", "10 20 30  30 40 50")));
    EXPECT_TRUE(built.hasAnimation());
    EXPECT_EQ(translated(1, 2, 3), elements(std::as_const(built).transform())) << "attaching evaluates nothing";
    EXPECT_EQ(translated(20, 30, 40), elements(built.transform(2.0)));
    EXPECT_EQ(translated(15, 25, 35), elements(built.transform(1.5)));
    EXPECT_EQ(translated(10, 20, 30), elements(built.transform(1.0)));
    EXPECT_EQ(translated(1, 2, 3), elements(built.transform(0.5))) << "before the first key";
    EXPECT_EQ(translated(1, 2, 3), elements(built.transform(3.0))) << "wraps to 0";
    EXPECT_EQ(translated(20, 30, 40), elements(built.transform(5.0))) << "wraps to 2";
}

TEST(NodeTest, EntriesWithoutAnimationContributeTheirStoredMatrix)
{
    Node built = read(node("<translate sid='t'>1 2 3</translate><rotate sid='r'>0 0 1 30</rotate>"
                           "<scale sid='s'>2 3 4</scale>"));
    ASSERT_TRUE(built.addAnimation(loadedCurve("n/r.ANGLE", "1 3", "0 180")));

    // At second 2 the angle is 90: T · R · S, where R has (0, 1, 0) and (-1, 0, 0) as its first columns.
    EXPECT_TRUE(isNear({0, -3, 0, 1, 2, 0, 0, 2, 0, 0, 4, 3, 0, 0, 0, 1}, built.transform(2.0)));
}

TEST(NodeTest, SeveralEntriesMayBeAnimated)
{
    Node built = read(node("<translate sid='t'>0 0 0</translate><scale sid='s'>1 1 1</scale>"
                           "<matrix sid='m'>1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix>"));
    ASSERT_TRUE(built.addAnimation(loadedCurve("n/s", "1 3", "1 1 1  3 5 7")));
    ASSERT_TRUE(built.addAnimation(loadedCurve("n/t", "1 3", "0 0 0  2 4 6")));
    ASSERT_TRUE(built.addAnimation(loadedCurve("n/m", "1 3",
                                               "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1 "
                                               "1 0 0 20 0 1 0 40 0 0 1 60 0 0 0 1")));

    // At second 2: T(1, 2, 3) · S(2, 3, 4) · T(10, 20, 30)
    EXPECT_EQ((Elements{2, 0, 0, 21, 0, 3, 0, 62, 0, 0, 4, 123, 0, 0, 0, 1}), elements(built.transform(2.0)));
}

TEST(NodeTest, EachCallEvaluatesAnewAndTheLastResultStays)
{
    Node built = read(node("<translate sid='t'>1 2 3</translate>"));
    built.addAnimation(loadedCurve("n/t", "1 3", "10 20 30  30 40 50"));
    const Matrix4& result = built.transform(2.0);

    EXPECT_EQ(&std::as_const(built).transform(), &result);
    EXPECT_EQ(translated(20, 30, 40), elements(std::as_const(built).transform()));
    EXPECT_EQ(translated(20, 30, 40), elements(built.transform(2.0)));
    EXPECT_EQ(translated(1, 2, 3), elements(built.transform(0.0)));
    EXPECT_EQ((std::array<float, 3>{1, 2, 3}), triple(built.position()));
}

TEST(NodeTest, PositionAndUpOfATimeEvaluateFirst)
{
    Node built = read(node("<translate sid='t'>1 2 3</translate><rotate sid='r'>0 0 1 0</rotate>"));
    built.addAnimation(loadedCurve("n/t", "1 3", "10 20 30  30 40 50"));
    built.addAnimation(loadedCurve("n/r", "1 3", "0 180"));

    EXPECT_EQ((std::array<float, 3>{20, 30, 40}), triple(built.position(2.0)));
    EXPECT_EQ((std::array<float, 3>{20, 30, 40}), triple(built.position()));
    EXPECT_EQ((std::array<float, 3>{10, 20, 30}), triple(built.position(1.0)));
    const Vector3 up = built.up(2.0);
    EXPECT_NEAR(-1.0f, up[0], rounding);
    EXPECT_NEAR(0.0f, up[1], rounding);
    EXPECT_NEAR(0.0f, up[2], rounding);
    EXPECT_EQ((std::array<float, 3>{20, 30, 40}), triple(built.position())) << "up(2) left it there";
}

TEST(NodeTest, EvaluationDropsWhatWasFoldedInAndReadsNeitherParentNorChild)
{
    Node parent = read(node("<translate>100 0 0</translate>"));
    Node built = read(node("<translate sid='t'>1 2 3</translate>"));
    Node child = read(node("<translate sid='t'>5 5 5</translate>"));
    built.setParent(NodeLink(&parent));
    built.addChild(NodeLink(&child));
    child.setParent(NodeLink(&built));
    built.addAnimation(loadedCurve("n/t", "1 3", "10 20 30  30 40 50"));
    child.addAnimation(loadedCurve("n/t", "1 3", "10 20 30  30 40 50"));
    built.updateTransform();
    ASSERT_EQ(translated(101, 2, 3), elements(std::as_const(built).transform()));
    EXPECT_EQ(translated(20, 30, 40), elements(built.transform(2.0)));
    EXPECT_EQ(translated(5, 5, 5), elements(std::as_const(child).transform()));
    EXPECT_EQ(translated(100, 0, 0), elements(std::as_const(parent).transform()));
}

TEST(NodeTest, EvaluationFollowedByUpdateGivesTheParentTimesTheLocalMatrix)
{
    Node parent = read(node("<scale>2 2 2</scale>"));
    Node built = read(node("<translate sid='t'>1 2 3</translate>"));
    built.setParent(NodeLink(&parent));
    built.addAnimation(loadedCurve("n/t", "1 3", "10 20 30  30 40 50"));
    built.updateTransform();
    built.transform(2.0);

    EXPECT_EQ((Elements{2, 0, 0, 40, 0, 2, 0, 60, 0, 0, 2, 80, 0, 0, 0, 1}), elements(built.updateTransform()));
}

TEST(NodeTest, EvaluationDropsTheLookat)
{
    Node built = read(node("<lookat>0 0 5 0 0 0 0 1 0</lookat><rotate sid='r'>0 0 1 0</rotate>"));
    ASSERT_TRUE(isNotANumberThroughout(std::as_const(built).transform()));
    ASSERT_TRUE(isNotANumberThroughout(built.transform(2.0))) << "not animated yet";
    ASSERT_TRUE(built.addAnimation(loadedCurve("n/r.ANGLE", "1 3", "0 180")));

    EXPECT_TRUE(isNear({0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, built.transform(2.0)));
}

TEST(NodeTest, EvaluationOfKeysThatAreTooShortThrows)
{
    Node built = read(node("<translate sid='t'>1 2 3</translate>"));
    ASSERT_TRUE(built.addAnimation(loadedCurve("n/t.X", "1 3", "10 20")));
    EXPECT_THROW(built.transform(2.0), vesk::IndexOutOfBounds);
    EXPECT_THROW(built.position(2.0), vesk::IndexOutOfBounds);
    EXPECT_THROW(built.up(2.0), vesk::IndexOutOfBounds);
    EXPECT_EQ(translated(1, 2, 3), elements(built.transform(1.0))) << "a key of the wrong size says nothing";
}

TEST(NodeTest, AnimationLengthIsThatOfTheLongestAttached)
{
    Node built = read(node("<translate sid='t'>1 2 3</translate><rotate sid='r'>0 0 1 0</rotate>"));
    EXPECT_EQ(0.0, built.animationLength());
    ASSERT_TRUE(built.addAnimation(loadedCurve("n/t", "1 3", "10 20 30  30 40 50")));
    EXPECT_EQ(3.0, built.animationLength());

    std::string longer = curve("curve", "n/r.ANGLE", "1 3", "0 180");
    const std::size_t times = longer.find(">1 3<");
    ASSERT_NE(std::string::npos, times);
    longer.replace(times, 5, ">1 5<");
    ColladaBuilder builder("<library_animations>" + longer + "</library_animations>");
    vesk::Array<AnimationHandle> list;
    ASSERT_EQ(1u, libVideo::createAnimationListFromCollada(builder.open(), builder.dae(), list));
    ASSERT_TRUE(built.addAnimation(list[0]));
    EXPECT_EQ(5.0, built.animationLength());
}

TEST(NodeTest, AddAnimationReachesOnlyTheFirstOfEqualSids)
{
    Node built = read(node("<rotate sid='rotateX'>0 0 1 0</rotate><rotate sid='rotateX'>0 0 1 0</rotate>"));
    const AnimationHandle turn = loadedCurve("n/rotateX.ANGLE", "1 3", "0 180");
    ASSERT_EQ(1u, turn.useCount());
    EXPECT_TRUE(built.addAnimation(turn));
    EXPECT_TRUE(built.hasAnimation());
    EXPECT_EQ(2u, turn.useCount());
    // If both turned, they would add up to 180 degrees.
    EXPECT_TRUE(isNear({0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, built.transform(2.0)));
    EXPECT_TRUE(
        isNear({0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, *transformationsOf(built)[0]->transformation()));
    EXPECT_TRUE(isNear(identity, *transformationsOf(built)[1]->transformation()));
}

class NodeMissedTargetTest : public testing::TestWithParam<Case<const char*>> {};

TEST_P(NodeMissedTargetTest, AddAnimationIsFalseAndChangesNothing)
{
    const LogCapture log;
    Node built = read(node("<rotate sid='rotateX'>0 0 1 0</rotate><translate sid='t'>1 2 3</translate>"
                           "<skew sid='k'>45 0 1 0 1 0 0</skew>"));
    const AnimationHandle missed = loadedCurve(GetParam().given, "1 3", "0 180");

    EXPECT_FALSE(built.addAnimation(missed));
    EXPECT_FALSE(built.hasAnimation());
    EXPECT_EQ(1u, missed.useCount());
    EXPECT_EQ("", log.text());
}

INSTANTIATE_ROWS(Targets, NodeMissedTargetTest, {"Unknown", "n/other"}, {"OtherCase", "n/rotatex.ANGLE"},
                 {"Longer", "n/rotateXY"}, {"Shorter", "n/rotate"}, {"Subscript", "n/t(0)"}, {"Skew", "n/k"},
                 {"EmptyButAllHaveSids", "n/"});

TEST(NodeTest, AddAnimationToAnEmptyListIsFalse)
{
    Node empty;
    EXPECT_FALSE(empty.addAnimation(loadedCurve("n/", "1 3", "0 180")));
    EXPECT_FALSE(empty.hasAnimation());
    Node skewed = read(node("<skew sid='k'>45 0 1 0 1 0 0</skew>"));
    EXPECT_FALSE(skewed.addAnimation(loadedCurve("n/k", "1 3", "0 180")));
    EXPECT_FALSE(skewed.addAnimation(loadedCurve("n/", "1 3", "0 180")));
    EXPECT_FALSE(skewed.hasAnimation());
}

TEST(NodeTest, EmptyTargetTransformReachesTheFirstEntryWithoutSid)
{
    Node built = read(node("<translate sid='t'>1 2 3</translate><rotate>0 0 1 0</rotate><rotate>0 0 1 0</rotate>"));

    EXPECT_TRUE(built.addAnimation(loadedCurve("n/", "1 3", "0 180")));
    EXPECT_TRUE(built.hasAnimation());
    EXPECT_TRUE(isNear({0, -1, 0, 1, 1, 0, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1}, built.transform(2.0)));
    EXPECT_TRUE(isNear(identity, *transformationsOf(built)[2]->transformation()));
}

TEST(NodeTest, LastOfSeveralAnimationsOnOneSidWins)
{
    Node built = read(node("<translate sid='t'>1 2 3</translate>"));
    const AnimationHandle first = loadedCurve("n/t", "1 3", "10 20 30  30 40 50");
    const AnimationHandle second = loadedCurve("n/t", "1 3", "0 0 0  2 4 6");
    EXPECT_TRUE(built.addAnimation(first));
    EXPECT_TRUE(built.addAnimation(second));
    EXPECT_EQ(translated(1, 2, 3), elements(built.transform(2.0)));
    EXPECT_EQ(1u, first.useCount());
    EXPECT_EQ(2u, second.useCount());
}

TEST(NodeTest, FlagStaysAfterALaterMiss)
{
    Node built = read(node("<translate sid='t'>1 2 3</translate>"));
    EXPECT_TRUE(built.addAnimation(loadedCurve("n/t", "1 3", "10 20 30  30 40 50")));
    EXPECT_FALSE(built.addAnimation(loadedCurve("n/other", "1 3", "0 0 0  2 4 6")));
    EXPECT_TRUE(built.hasAnimation());
    EXPECT_EQ(translated(20, 30, 40), elements(built.transform(2.0)));
}

TEST(NodeTest, EmptyAnimationHandleThrowsNullPointerAndChangesNothing)
{
    Node empty;
    EXPECT_THROW(empty.addAnimation(AnimationHandle()), vesk::NullPointer);

    Node built = read(node("<translate>1 2 3</translate>"));
    built.addAnimation(loadedCurve("n/", "1 3", "10 20 30  30 40 50"));
    try {
        built.addAnimation(AnimationHandle());
        FAIL() << "nothing was thrown";
    } catch (const vesk::NullPointer& misuse) {
        EXPECT_FALSE(misuse.message().empty());
    }
    EXPECT_TRUE(built.hasAnimation());
    EXPECT_EQ(translated(20, 30, 40), elements(built.transform(2.0)));
}

// The state of a copy, however it was made.
void expectCopyOf(const Node& source, const Node& copy)
{
    EXPECT_EQ(elements(source.transform()), elements(copy.transform()));
    EXPECT_EQ(source.parent(), copy.parent());
    ASSERT_EQ(source.children().size(), copy.children().size());
    for (unsigned i = 0; i < source.children().size(); ++i) {
        EXPECT_EQ(source.children()[i], copy.children()[i]);
    }
    EXPECT_EQ(source.id(), copy.id());
    EXPECT_EQ(source.sid(), copy.sid());
    EXPECT_EQ(source.name(), copy.name());
    EXPECT_EQ(source.hasAnimation(), copy.hasAnimation());
    ASSERT_EQ(transformationsOf(source).size(), transformationsOf(copy).size());
    for (unsigned i = 0; i < transformationsOf(source).size(); ++i) {
        EXPECT_EQ(transformationsOf(source)[i], transformationsOf(copy)[i]);
        EXPECT_EQ(2u, transformationsOf(source)[i].useCount());
    }
}

TEST(NodeTest, CopiesTakeEveryFieldAndShareTheTransformations)
{
    Node parent;
    Node child;
    Node source = read("<node id='n' sid='place' name='Lamp'><translate sid='t'>1 2 3</translate>"
                       "<scale>2 2 2</scale></node>");
    source.setParent(NodeLink(&parent));
    source.addChild(NodeLink(&child));
    source.addAnimation(loadedCurve("n/t", "1 3", "10 20 30  30 40 50"));
    {
        const Node copy(source);
        expectCopyOf(source, copy);
        EXPECT_STREQ("n", copy.id().data());
        EXPECT_STREQ("place", copy.sid().data());
        EXPECT_STREQ("Lamp", copy.name().data());
        EXPECT_TRUE(copy.hasAnimation());
        EXPECT_EQ(&parent, copy.parent().get());
        EXPECT_EQ(2u, transformationsOf(copy).size());
    }
    Node assigned = read(node("<rotate>0 0 1 90</rotate>"));
    assigned.addChild(NodeLink(&parent));
    assigned = source;
    expectCopyOf(source, assigned);
}

TEST(NodeTest, AssignmentCarriesTheFlagBothWays)
{
    Node animated = read(node("<translate sid='t'>1 2 3</translate>"));
    animated.addAnimation(loadedCurve("n/t", "1 3", "10 20 30  30 40 50"));
    Node still;
    still = animated;
    EXPECT_TRUE(still.hasAnimation());
    still = Node();
    EXPECT_FALSE(still.hasAnimation());
    EXPECT_EQ(1u, transformationsOf(animated)[0].useCount());
}

TEST(NodeTest, AssignmentToItselfChangesNothing)
{
    Node built = read("<node id='n' sid='place' name='Lamp'><translate>1 2 3</translate></node>");
    Node child;
    built.addChild(NodeLink(&child));
    const Node& same = built;
    built = same;

    EXPECT_STREQ("n", built.id().data());
    EXPECT_EQ(1u, built.children().size());
    EXPECT_EQ(translated(1, 2, 3), elements(built.transform()));
    ASSERT_EQ(1u, transformationsOf(built).size());
    EXPECT_EQ(1u, transformationsOf(built)[0].useCount());
}

TEST(NodeTest, CopyHasItsOwnMatrixNamesAndLists)
{
    Node child;
    Node source = read(node("<translate>1 2 3</translate>"));
    Node copy(source);
    nodeScale(copy, valuesOf({2, 2, 2}));
    nodeSetId(copy, "copy");
    copy.addChild(NodeLink(&child));

    EXPECT_EQ(translated(1, 2, 3), elements(source.transform()));
    EXPECT_STREQ("n", source.id().data());
    EXPECT_EQ(0u, source.children().size());
}

TEST(NodeTest, AnimationOfACopyReachesTheSharedTransformationButNotTheFlagOfTheSource)
{
    Node source = read(node("<translate sid='t'>1 2 3</translate>"));
    Node copy(source);
    ASSERT_TRUE(copy.addAnimation(loadedCurve("n/t", "1 3", "10 20 30  30 40 50")));
    EXPECT_TRUE(copy.hasAnimation());
    EXPECT_FALSE(source.hasAnimation());
    EXPECT_EQ(translated(20, 30, 40), elements(copy.transform(2.0)));
    EXPECT_EQ(translated(1, 2, 3), elements(source.transform(2.0)));
    EXPECT_EQ(translated(20, 30, 40), elements(*transformationsOf(source)[0]->transformation()));
}

TEST(NodeTest, DestroyingANodeLeavesParentChildrenAndSharedTransformations)
{
    Node parent = read("<node id='n' name='parent'><translate>1 2 3</translate></node>");
    Node child = read("<node id='n' name='child'><translate>4 5 6</translate></node>");
    auto middle = std::make_unique<Node>(read(node("<translate>7 8 9</translate>")));
    middle->setParent(NodeLink(&parent));
    middle->addChild(NodeLink(&child));
    const Node copy(*middle);
    middle.reset();

    EXPECT_STREQ("parent", parent.name().data());
    EXPECT_EQ(translated(1, 2, 3), elements(parent.transform()));
    EXPECT_STREQ("child", child.name().data());
    EXPECT_EQ(translated(4, 5, 6), elements(child.transform()));
    ASSERT_EQ(1u, transformationsOf(copy).size());
    EXPECT_EQ(1u, transformationsOf(copy)[0].useCount());
    EXPECT_EQ(translated(7, 8, 9), elements(*transformationsOf(copy)[0]->transformation()));
}

TEST(NodeTest, NodeKeepsNothingOfTheDocument)
{
    auto document = std::make_unique<Document>("<node id='n' sid='place' name='Lamp'>"
                                               "<translate sid='t'>1 2 3</translate></node>");
    const Node built(document->element());
    document.reset();

    EXPECT_STREQ("n", built.id().data());
    EXPECT_STREQ("place", built.sid().data());
    EXPECT_STREQ("Lamp", built.name().data());
    EXPECT_STREQ("t", transformationsOf(built)[0]->sid().data());
    EXPECT_EQ(translated(1, 2, 3), elements(built.transform()));
}

static_assert(std::has_virtual_destructor_v<Node>);
static_assert(std::is_copy_constructible_v<Node> && std::is_copy_assignable_v<Node>);
static_assert(!std::is_convertible_v<const domNode&, Node>);
static_assert(std::is_same_v<decltype(std::declval<const Node&>().id()), const vesk::String&>);
static_assert(std::is_same_v<decltype(std::declval<const Node&>().sid()), const vesk::String&>);
static_assert(std::is_same_v<decltype(std::declval<const Node&>().name()), const vesk::String&>);
static_assert(std::is_same_v<decltype(std::declval<const Node&>().parent()), const NodeLink&>);
static_assert(std::is_same_v<decltype(std::declval<const Node&>().children()), const vesk::Array<NodeLink>&>);
static_assert(std::is_same_v<decltype(std::declval<const Node&>().transform()), const Matrix4&>);
static_assert(std::is_same_v<decltype(std::declval<Node&>().transform(0.0)), const Matrix4&>);
static_assert(std::is_same_v<decltype(std::declval<Node&>().updateTransform()), const Matrix4&>);
static_assert(std::is_same_v<decltype(std::declval<const Node&>().position()), const Vector3>);
static_assert(std::is_same_v<decltype(std::declval<const Node&>().up()), const Vector3>);
static_assert(std::is_same_v<decltype(std::declval<Node&>().position(0.0)), const Vector3>);
static_assert(std::is_same_v<decltype(std::declval<Node&>().up(0.0)), const Vector3>);
static_assert(std::is_same_v<decltype(std::declval<Node&>().createFromCollada(std::declval<const domNode&>())), bool>);

testing::AssertionResult isNear(const Elements& expected, const Matrix4& matrix)
{
    for (unsigned i = 0; i < 16; ++i) {
        const float tolerance = rounding * std::fmax(1.0f, std::fabs(expected[i]));
        if (!(std::fabs(matrix[i] - expected[i]) <= tolerance)) {
            return testing::AssertionFailure() << "element " << i << " is " << matrix[i] << ", not " << expected[i]
                                               << ", in " << testing::PrintToString(elements(matrix));
        }
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult isNotANumberThroughout(const Matrix4& matrix)
{
    for (unsigned i = 0; i < 16; ++i) {
        if (!std::isnan(matrix[i])) {
            return testing::AssertionFailure() << "element " << i << " is " << matrix[i];
        }
    }
    return testing::AssertionSuccess();
}

} // namespace
