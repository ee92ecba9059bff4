#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Geometry.h>
#include <libVideo/SceneGraph/Node.h>
#include <libVideo/SceneGraph/Primitive.h>

namespace {

using namespace libVideo;
using namespace testSupport;

using GeometryRef = daeSmartRef<domGeometry>;
using NodeList = vesk::Array<NodeHandle>;
using PrimitiveHandle = vesk::SharedResource<vesk::PointerStorage<Primitive, 0, 3>, 0>;
using PrimitiveList = vesk::Array<PrimitiveHandle>;

PRIVATE_MEMBER(meshId, vesk::String Mesh::*, &Mesh::m_id)
PRIVATE_MEMBER(meshPrimitives, PrimitiveList Mesh::*, &Mesh::m_primitives)
PRIVATE_MEMBER(geometryId, vesk::String Geometry::*, &Geometry::m_id)
PRIVATE_MEMBER(geometryName, vesk::String Geometry::*, &Geometry::m_name)
PRIVATE_MEMBER(geometryMesh, Mesh Geometry::*, &Geometry::m_mesh)
PRIVATE_MEMBER(geometryNodes, NodeList Geometry::*, &Geometry::m_nodes)

TEST(MeshTest, StartsEmpty)
{
    const Mesh mesh;
    EXPECT_EQ(vesk::String(), mesh.id());
    EXPECT_EQ(0u, mesh.primitives().size());
}

TEST(GeometryTest, StartsEmpty)
{
    const Geometry geometry;
    EXPECT_EQ(vesk::String(), geometry.id());
    EXPECT_EQ(vesk::String(), geometry.name());
    EXPECT_EQ(0u, geometry.nodes().size());
    EXPECT_EQ(0u, geometry.mesh().primitives().size());
}

/// The start of every mesh here: four positions on the X axis, and their `<vertices>`.
const std::string basics =
    "<source id='positions'><float_array id='floats' count='4'>0 1 2 3</float_array><technique_common>"
    "<accessor source='#floats' count='4'><param name='X' type='float'/></accessor></technique_common></source>"
    "<vertices id='corners'><input semantic='POSITION' source='#positions'/></vertices>";

std::string polygonsOf(const std::string& kind, const std::string& attributes, const std::string& p)
{
    return "<" + kind + " " + attributes + " count='1'><input semantic='VERTEX' source='#corners' offset='0'/><p>" + p +
           "</p></" + kind + ">";
}

const std::string twoLists =
    polygonsOf("triangles", "name='first'", "0 1 2") + polygonsOf("triangles", "name='second'", "3 2 1");

/// A document with one `<geometry>` "shape".
class GeometryDocument {
public:
    explicit GeometryDocument(const std::string& content, const std::string& attributes = "name='Shape'")
    {
        m_builder.add("<library_geometries><geometry id='shape' " + attributes + ">" + content +
                      "</geometry></library_geometries>");
        m_builder.open();
    }

    GeometryRef geometry() { return m_builder.element<domGeometry>("shape"); }
    domMesh* mesh() { return geometry()->getMesh(); }

private:
    ColladaBuilder m_builder;
};

std::string meshOf(const std::string& content)
{
    return "<mesh>" + basics + content + "</mesh>";
}

/// A node that was loaded from another document.
NodeHandle nodeOf(const std::string& attributes)
{
    ColladaBuilder builder;
    builder.addScene("<node " + attributes + "/>");
    builder.open();
    return NodeHandle(new Node(*builder.element<domVisual_scene>("scene")->getNode_array()[0]));
}

const std::string notAMesh = "libVideo.geometry: Program does not handle geometry type other than meshes right now.";

std::vector<std::string> ids(const NodeList& nodes)
{
    std::vector<std::string> all;
    for (const NodeHandle& node : nodes) {
        all.emplace_back(node->id().data());
    }
    return all;
}

using Ids = std::vector<std::string>;

// --- Mesh ---

TEST(MeshTest, HoldsThePrimitivesInTheirOrder)
{
    GeometryDocument document(meshOf(twoLists));
    const LogCapture log;
    Mesh mesh;
    EXPECT_TRUE(mesh.createFromCollada(document.mesh()));
    EXPECT_EQ(Texts(), log.messages());
    ASSERT_EQ(2u, mesh.primitives().size());
    EXPECT_EQ(vesk::String("first"), mesh.primitives()[0]->id());
    EXPECT_EQ(vesk::String("second"), mesh.primitives()[1]->id());
}

TEST(MeshTest, IdIsEmptyAfterAGoodLoad)
{
    GeometryDocument document(meshOf(twoLists));
    Mesh mesh;
    EXPECT_TRUE(mesh.createFromCollada(document.mesh()));
    EXPECT_EQ(vesk::String(), mesh.id());
}

TEST(MeshTest, IdHandsOutTheField)
{
    Mesh mesh;
    meshId(mesh) = "field";
    EXPECT_EQ(vesk::String("field"), mesh.id());
}

class AnyMeshTest : public testing::TestWithParam<Case<std::string, unsigned>> {};

TEST_P(AnyMeshTest, AlwaysLoads)
{
    GeometryDocument document("<mesh>" + GetParam().given + "</mesh>");
    const LogCapture log;
    Mesh mesh;
    EXPECT_TRUE(mesh.createFromCollada(document.mesh()));
    EXPECT_EQ(GetParam().expected, mesh.primitives().size());
}

TEST_P(AnyMeshTest, MakesItsGeometryLoadWithoutALineOfTheGeometry)
{
    GeometryDocument document("<mesh>" + GetParam().given + "</mesh>");
    const LogCapture log("libVideo.geometry");
    Geometry geometry;
    EXPECT_TRUE(geometry.createFromCollada(document.geometry()));
    EXPECT_EQ(Texts(), log.messages());
    EXPECT_EQ(vesk::String("shape"), geometry.id());
    EXPECT_EQ(vesk::String("Shape"), geometry.name());
    EXPECT_EQ(GetParam().expected, geometry.mesh().primitives().size());
}

INSTANTIATE_ROWS(Meshes, AnyMeshTest, {"WithTriangles", basics + twoLists, 2},
                 {"WithLinesOnly", basics + polygonsOf("lines", "", "0 1"), 0},
                 {"WithPolygonsOnly", basics + polygonsOf("polygons", "", "0 1 2 3"), 1},
                 {"WithVerticesOnly", basics, 1}, {"WithNothing", "", 1},
                 {"WithAFailedListOnly", basics + "<triangles count='1'><p>0 1 2</p></triangles>", 1});

TEST(MeshTest, PolygonsAloneAreOnePointCloud)
{
    GeometryDocument document(meshOf(polygonsOf("polygons", "", "0 1 2 3")));
    Mesh mesh;
    mesh.createFromCollada(document.mesh());
    ASSERT_EQ(1u, mesh.primitives().size());
    EXPECT_EQ(libVideo::PRIMITIVE_POINT_CLOUD, mesh.primitives()[0]->type());
    EXPECT_EQ(4u, mesh.primitives()[0]->count());
}

TEST(MeshTest, SecondLoadReplacesThePrimitives)
{
    GeometryDocument first(meshOf(twoLists));
    GeometryDocument second(meshOf(""));
    Mesh mesh;
    mesh.createFromCollada(first.mesh());
    const PrimitiveHandle old = mesh.primitives()[0];
    EXPECT_TRUE(mesh.createFromCollada(second.mesh()));
    EXPECT_EQ(1u, old.useCount());
    ASSERT_EQ(1u, mesh.primitives().size());
    EXPECT_EQ(libVideo::PRIMITIVE_POINT_CLOUD, mesh.primitives()[0]->type());
}

TEST(MeshTest, NullThrowsNullPointer)
{
    const LogCapture log;
    Mesh mesh;
    try {
        mesh.createFromCollada(nullptr);
        FAIL() << "no exception";
    } catch (const vesk::NullPointer& failure) {
        EXPECT_STRNE("", failure.what());
    }
    EXPECT_EQ(Texts(), log.messages());
    EXPECT_EQ(0u, mesh.primitives().size());
}

TEST(MeshTest, ExceptionOfAPrimitiveLeavesThoseBefore)
{
    GeometryDocument document(meshOf(twoLists + polygonsOf("triangles", "", "0 1 4")));
    Mesh mesh;
    EXPECT_THROW(mesh.createFromCollada(document.mesh()), vesk::AssertionFailure);
    EXPECT_EQ(2u, mesh.primitives().size());
}

/// Expects both to list the same objects, each in its own array.
void expectSharedPrimitives(const Mesh& one, const Mesh& other)
{
    ASSERT_EQ(2u, one.primitives().size());
    ASSERT_EQ(2u, other.primitives().size());
    EXPECT_NE(one.primitives().getData(), other.primitives().getData());
    for (unsigned i = 0; i < 2; ++i) {
        EXPECT_EQ(one.primitives()[i], other.primitives()[i]);
        EXPECT_EQ(2u, one.primitives()[i].useCount());
    }
}

TEST(MeshTest, CopyAndAssignmentShareThePrimitives)
{
    GeometryDocument document(meshOf(twoLists));
    Mesh mesh;
    mesh.createFromCollada(document.mesh());
    meshId(mesh) = "field";
    {
        const Mesh copy(mesh);
        EXPECT_EQ(vesk::String("field"), copy.id());
        expectSharedPrimitives(mesh, copy);
    }
    Mesh assigned;
    assigned = mesh;
    EXPECT_EQ(vesk::String("field"), assigned.id());
    expectSharedPrimitives(mesh, assigned);
}

TEST(MeshTest, PrimitivesHandsOutTheField)
{
    Mesh mesh;
    EXPECT_EQ(&meshPrimitives(mesh), &mesh.primitives());
}

// --- Geometry: load ---

TEST(GeometryTest, AccessorsHandOutTheFields)
{
    Geometry geometry;
    EXPECT_EQ(&geometryId(geometry), &geometry.id());
    EXPECT_EQ(&geometryName(geometry), &geometry.name());
    EXPECT_EQ(&geometryMesh(geometry), &geometry.mesh());
    EXPECT_EQ(&geometryNodes(geometry), &geometry.nodes());
}

TEST(GeometryTest, GoodLoadTakesIdNameAndMesh)
{
    GeometryDocument document(meshOf(twoLists));
    const LogCapture log;
    Geometry geometry;
    EXPECT_TRUE(geometry.createFromCollada(document.geometry()));
    EXPECT_EQ(Texts(), log.messages());
    EXPECT_EQ(vesk::String("shape"), geometry.id());
    EXPECT_EQ(vesk::String("Shape"), geometry.name());
    EXPECT_EQ(vesk::String(), geometry.mesh().id());
    EXPECT_EQ(2u, geometry.mesh().primitives().size());
    EXPECT_EQ(0u, geometry.nodes().size());
}

TEST(GeometryTest, AbsentNameIsEmpty)
{
    GeometryDocument document(meshOf(twoLists), "");
    Geometry geometry;
    EXPECT_TRUE(geometry.createFromCollada(document.geometry()));
    EXPECT_EQ(vesk::String(), geometry.name());
}

TEST(GeometryTest, AbsentIdIsEmpty)
{
    ColladaBuilder builder("<library_geometries id='library'><geometry name='Shape'>" + meshOf(twoLists) +
                           "</geometry></library_geometries>");
    builder.open();
    Geometry geometry;
    EXPECT_TRUE(geometry.createFromCollada(builder.element<domLibrary_geometries>("library")->getGeometry_array()[0]));
    EXPECT_EQ(vesk::String(), geometry.id());
    EXPECT_EQ(vesk::String("Shape"), geometry.name());
}

TEST(GeometryTest, FailedPrimitivesDoNotFailTheGeometry)
{
    GeometryDocument document(meshOf("<triangles count='1'><p>0 1 2</p></triangles>"));
    const LogCapture log;
    Geometry geometry;
    EXPECT_TRUE(geometry.createFromCollada(document.geometry()));
    EXPECT_EQ(Texts{"libVideo.primitive: Skipping <triangles> element with no vertex description"}, log.messages());
    EXPECT_EQ(vesk::String("shape"), geometry.id());
    EXPECT_EQ(1u, geometry.mesh().primitives().size());
}

TEST(GeometryTest, NullThrowsNullPointer)
{
    const LogCapture log;
    Geometry geometry;
    try {
        geometry.createFromCollada(GeometryRef());
        FAIL() << "no exception";
    } catch (const vesk::NullPointer& failure) {
        EXPECT_STRNE("", failure.what());
    }
    EXPECT_EQ(Texts(), log.messages());
}

class GeometryWithoutMeshTest : public testing::TestWithParam<Case<const char*>> {};

TEST_P(GeometryWithoutMeshTest, IsLoggedOnceAndFails)
{
    GeometryDocument document(GetParam().given);
    const LogCapture log;
    Geometry geometry;
    EXPECT_FALSE(geometry.createFromCollada(document.geometry()));
    EXPECT_EQ(Texts{notAMesh}, log.messages());
    EXPECT_EQ(vesk::String(), geometry.id());
    EXPECT_EQ(vesk::String(), geometry.name());
    EXPECT_EQ(0u, geometry.mesh().primitives().size());
}

INSTANTIATE_ROWS(Geometries, GeometryWithoutMeshTest, {"ConvexMesh", "<convex_mesh convex_hull_of='#other'/>"},
                 {"Spline", "<spline><control_vertices><input semantic='POSITION' source='#positions'/>"
                            "</control_vertices></spline>"},
                 {"Nothing", ""});

TEST(GeometryTest, ExceptionLeavesIdAndNameEmptyAndTheMeshAsFarAsItGot)
{
    GeometryDocument document(meshOf(twoLists + polygonsOf("triangles", "", "0 1 4")));
    const LogCapture log;
    Geometry geometry;
    EXPECT_THROW(geometry.createFromCollada(document.geometry()), vesk::AssertionFailure);
    EXPECT_EQ(Texts(), log.messages());
    EXPECT_EQ(vesk::String(), geometry.id());
    EXPECT_EQ(vesk::String(), geometry.name());
    EXPECT_EQ(2u, geometry.mesh().primitives().size());
}

TEST(GeometryTest, NothingOfTheDocumentIsNeededAfterTheLoad)
{
    Geometry geometry;
    {
        GeometryDocument document(meshOf(twoLists));
        geometry.createFromCollada(document.geometry());
    }
    EXPECT_EQ(vesk::String("shape"), geometry.id());
    EXPECT_EQ(vesk::String("Shape"), geometry.name());
    ASSERT_EQ(2u, geometry.mesh().primitives().size());
    EXPECT_EQ(12u, geometry.mesh().primitives()[1]->totalByteSize());
}

// --- Geometry: nodes ---

TEST(GeometryNodesTest, AreListedInTheOrderOfTheirFirstAddition)
{
    const NodeHandle lamp = nodeOf("id='lamp'");
    const NodeHandle table = nodeOf("id='table'");
    const NodeHandle chair = nodeOf("id='chair'");
    Geometry geometry;
    geometry.addNode(table);
    geometry.addNode(lamp);
    geometry.addNode(table);
    geometry.addNode(chair);
    geometry.addNode(lamp);
    EXPECT_EQ((Ids{"table", "lamp", "chair"}), ids(geometry.nodes()));
    EXPECT_EQ(table, geometry.nodes()[0]);
    EXPECT_EQ(lamp, geometry.nodes()[1]);
    EXPECT_EQ(chair, geometry.nodes()[2]);
}

TEST(GeometryNodesTest, NodeIsListedOnceWithOneFurtherReference)
{
    const NodeHandle lamp = nodeOf("id='lamp'");
    Geometry geometry;
    geometry.addNode(lamp);
    EXPECT_EQ(2u, lamp.useCount());
    geometry.addNode(lamp);
    EXPECT_EQ(2u, lamp.useCount());
    EXPECT_EQ(1u, geometry.nodes().size());
}

TEST(GeometryNodesTest, OfTwoNodesWithOneIdTheFirstIsListed)
{
    const NodeHandle lamp = nodeOf("id='lamp'");
    const NodeHandle other = nodeOf("id='lamp'");
    Geometry geometry;
    geometry.addNode(lamp);
    geometry.addNode(other);
    ASSERT_EQ(1u, geometry.nodes().size());
    EXPECT_EQ(lamp, geometry.nodes()[0]);
    EXPECT_EQ(1u, other.useCount());
}

TEST(GeometryNodesTest, IdsThatDifferInCaseAreOne)
{
    const NodeHandle lamp = nodeOf("id='Lamp_1'");
    const NodeHandle other = nodeOf("id='lAMP_1'");
    Geometry geometry;
    geometry.addNode(nodeOf("id='table'"));
    geometry.addNode(lamp);
    geometry.addNode(other);
    EXPECT_EQ((Ids{"table", "Lamp_1"}), ids(geometry.nodes()));
    EXPECT_EQ(lamp, geometry.nodes()[1]);
    EXPECT_EQ(1u, other.useCount());
}

TEST(GeometryNodesTest, IdsAreComparedToTheirEnd)
{
    Geometry geometry;
    geometry.addNode(nodeOf("id='lamp'"));
    geometry.addNode(nodeOf("id='lamp1'"));
    geometry.addNode(nodeOf("id='lam'"));
    EXPECT_EQ((Ids{"lamp", "lamp1", "lam"}), ids(geometry.nodes()));
}

TEST(GeometryNodesTest, NamesAndSidsAreNotCompared)
{
    Geometry geometry;
    geometry.addNode(nodeOf("id='lamp' name='same' sid='same'"));
    geometry.addNode(nodeOf("id='table' name='same' sid='same'"));
    EXPECT_EQ((Ids{"lamp", "table"}), ids(geometry.nodes()));
}

TEST(GeometryNodesTest, NodesWithoutIdCountAsOne)
{
    const NodeHandle first = nodeOf("name='first'");
    Geometry geometry;
    geometry.addNode(first);
    geometry.addNode(nodeOf("name='second'"));
    ASSERT_EQ(1u, geometry.nodes().size());
    EXPECT_EQ(first, geometry.nodes()[0]);
}

TEST(GeometryNodesTest, GeometryKeepsItsNodesAlive)
{
    Geometry geometry;
    geometry.addNode(nodeOf("id='lamp'"));
    ASSERT_EQ(1u, geometry.nodes().size());
    EXPECT_EQ(1u, geometry.nodes()[0].useCount());
    EXPECT_EQ(vesk::String("lamp"), geometry.nodes()[0]->id());
}

TEST(GeometryNodesTest, GeometryLetsItsNodesGoAtItsEnd)
{
    const NodeHandle lamp = nodeOf("id='lamp'");
    {
        Geometry geometry;
        geometry.addNode(lamp);
    }
    EXPECT_EQ(1u, lamp.useCount());
}

TEST(GeometryNodesTest, CanBeAddedBeforeAndAfterALoad)
{
    GeometryDocument document(meshOf(twoLists));
    Geometry geometry;
    geometry.addNode(nodeOf("id='lamp'"));
    EXPECT_TRUE(geometry.createFromCollada(document.geometry()));
    geometry.addNode(nodeOf("id='table'"));
    EXPECT_EQ((Ids{"lamp", "table"}), ids(geometry.nodes()));
}

TEST(GeometryNodesTest, AdditionIsNotLogged)
{
    const LogCapture log;
    const NodeHandle lamp = nodeOf("id='lamp'");
    Geometry geometry;
    geometry.addNode(lamp);
    geometry.addNode(lamp);
    EXPECT_EQ(Texts(), log.messages());
}

TEST(GeometryNodesTest, EmptyHandleThrowsNullPointerAndIsNotListed)
{
    Geometry geometry;
    EXPECT_THROW(geometry.addNode(NodeHandle()), vesk::NullPointer);
    EXPECT_EQ(0u, geometry.nodes().size());
    geometry.addNode(nodeOf("id='lamp'"));
    try {
        geometry.addNode(NodeHandle());
        FAIL() << "no exception";
    } catch (const vesk::NullPointer& failure) {
        EXPECT_STRNE("", failure.what());
    }
    EXPECT_EQ((Ids{"lamp"}), ids(geometry.nodes()));
}

TEST(GeometryNodesTest, ListThatCannotGrowThrowsNullPointerAndStays)
{
    Geometry geometry;
    for (unsigned i = 0; i < 8; ++i) {
        geometry.addNode(nodeOf("id='node" + std::to_string(i) + "'"));
    }
    const NodeHandle ninth = nodeOf("id='ninth'");
    {
        const FailingAllocator allocator(0);
        EXPECT_THROW(geometry.addNode(ninth), vesk::NullPointer);
    }
    EXPECT_EQ(8u, geometry.nodes().size());
    EXPECT_EQ(1u, ninth.useCount());
    geometry.addNode(ninth);
    ASSERT_EQ(9u, geometry.nodes().size());
    EXPECT_EQ(ninth, geometry.nodes()[8]);
}

// --- Geometry: copies ---

void expectCopy(const Geometry& geometry, const Geometry& copy)
{
    EXPECT_EQ(vesk::String("shape"), copy.id());
    EXPECT_EQ(vesk::String("Shape"), copy.name());
    expectSharedPrimitives(geometry.mesh(), copy.mesh());
    EXPECT_EQ((Ids{"lamp", "table"}), ids(copy.nodes()));
    EXPECT_EQ(geometry.nodes()[0], copy.nodes()[0]);
    EXPECT_EQ(geometry.nodes()[1], copy.nodes()[1]);
}

class GeometryCopyTest : public testing::Test {
protected:
    GeometryCopyTest()
    {
        m_geometry.createFromCollada(m_document.geometry());
        m_geometry.addNode(m_lamp);
        m_geometry.addNode(nodeOf("id='table'"));
    }

    GeometryDocument m_document{meshOf(twoLists)};
    NodeHandle m_lamp = nodeOf("id='lamp'");
    Geometry m_geometry;
};

TEST_F(GeometryCopyTest, CopySharesPrimitivesAndNodes)
{
    const Geometry copy(m_geometry);
    expectCopy(m_geometry, copy);
    EXPECT_EQ(3u, m_lamp.useCount());
}

TEST_F(GeometryCopyTest, AssignmentSharesPrimitivesAndNodesAndReplacesTheOld)
{
    const NodeHandle old = nodeOf("id='old'");
    Geometry assigned;
    assigned.addNode(old);
    assigned = m_geometry;
    expectCopy(m_geometry, assigned);
    EXPECT_EQ(3u, m_lamp.useCount());
    EXPECT_EQ(1u, old.useCount());
}

TEST_F(GeometryCopyTest, ListsOfACopyAreItsOwn)
{
    Geometry copy(m_geometry);
    copy.addNode(nodeOf("id='chair'"));
    EXPECT_EQ((Ids{"lamp", "table", "chair"}), ids(copy.nodes()));
    EXPECT_EQ((Ids{"lamp", "table"}), ids(m_geometry.nodes()));
}

TEST_F(GeometryCopyTest, CopyOutlivesItsOriginal)
{
    auto original = std::make_unique<Geometry>(m_geometry);
    const Geometry copy(*original);
    original.reset();
    expectCopy(m_geometry, copy);
}

TEST_F(GeometryCopyTest, AssignmentToItselfChangesNothing)
{
    const Geometry& same = m_geometry;
    m_geometry = same;
    EXPECT_EQ((Ids{"lamp", "table"}), ids(m_geometry.nodes()));
    EXPECT_EQ(2u, m_lamp.useCount());
    EXPECT_EQ(2u, m_geometry.mesh().primitives().size());
}

static_assert(!std::is_polymorphic_v<Mesh> && !std::is_polymorphic_v<Geometry>);
static_assert(std::is_default_constructible_v<Mesh> && std::is_copy_constructible_v<Mesh> &&
              std::is_copy_assignable_v<Mesh> && std::is_destructible_v<Mesh>);
static_assert(std::is_default_constructible_v<Geometry> && std::is_copy_constructible_v<Geometry> &&
              std::is_copy_assignable_v<Geometry> && std::is_destructible_v<Geometry>);
static_assert(std::is_same_v<bool (Mesh::*)(domMesh*), decltype(&Mesh::createFromCollada)>);
static_assert(std::is_same_v<const vesk::String& (Mesh::*)() const, decltype(&Mesh::id)>);
static_assert(std::is_same_v<const PrimitiveList& (Mesh::*)() const, decltype(&Mesh::primitives)>);
static_assert(std::is_same_v<bool (Geometry::*)(const GeometryRef&), decltype(&Geometry::createFromCollada)>);
static_assert(std::is_same_v<void (Geometry::*)(const NodeHandle&), decltype(&Geometry::addNode)>);
static_assert(std::is_same_v<const NodeList& (Geometry::*)() const, decltype(&Geometry::nodes)>);
static_assert(std::is_same_v<const vesk::String& (Geometry::*)() const, decltype(&Geometry::id)>);
static_assert(std::is_same_v<const vesk::String& (Geometry::*)() const, decltype(&Geometry::name)>);
static_assert(std::is_same_v<const Mesh& (Geometry::*)() const, decltype(&Geometry::mesh)>);

} // namespace
