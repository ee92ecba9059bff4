#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Input.h>
#include <libVideo/SceneGraph/Primitive.h>
#include <libVideo/SceneGraph/VertexLayout.h>

#include <random>

namespace {

using namespace libVideo;
using namespace testSupport;

using ByteHandle = vesk::CopiedResource<vesk::PointerStorage<unsigned char, 3, 2>>;
using Bytes = vesk::Buffer<unsigned char>;
using InputHandle = vesk::SharedResource<vesk::PointerStorage<InputLocalOffset, 0, 3>, 0>;
using PrimitiveHandle = vesk::SharedResource<vesk::PointerStorage<Primitive, 0, 3>, 0>;
using PrimitiveList = vesk::Array<PrimitiveHandle>;
using Floats = std::vector<float>;
using Indices = std::vector<unsigned>;
using Tuple = std::vector<unsigned>;

TEST(PrimitiveTypeTest, ValuesHaveTheirNumbers)
{
    EXPECT_EQ(4u, static_cast<unsigned>(libVideo::PRIMITIVE_TRIANGLE_LIST));
    EXPECT_EQ(7u, static_cast<unsigned>(libVideo::PRIMITIVE_POINT_CLOUD));
    EXPECT_EQ(8u, static_cast<unsigned>(libVideo::PRIMITIVE_INVALID));
}

/// A primitive for tests, which exposes protected members.
class OpenPrimitive : public Primitive {
public:
    OpenPrimitive() = default;
    using Primitive::createIndexedVertexBuffer;
    using Primitive::findLayout;
    using Primitive::m_bytesPerVertex;
    using Primitive::m_count;
    using Primitive::m_indexBuffer;
    using Primitive::m_vertexLayout;
    using Primitive::m_vertexPerPrimitive;
    using Primitive::m_vertexStream;
};

// --- Documents ---

/// Values that identify their position: float j of record i is `base` + i + j / 8.
float valueOf(float base, unsigned i, unsigned j)
{
    return base + static_cast<float>(i) + static_cast<float>(j) * 0.125f;
}

std::string text(const Floats& values)
{
    std::ostringstream out;
    for (const float value : values) {
        out << value << ' ';
    }
    return out.str();
}

std::string text(const std::vector<unsigned>& numbers)
{
    std::string all;
    for (const unsigned number : numbers) {
        all += std::to_string(number) + ' ';
    }
    return all;
}

std::string floatParams(unsigned count)
{
    return repeated("<param name='C' type='float'/>", count);
}

/// A `<source>` whose accessor claims `count` records, whatever its array holds.
std::string source(const std::string& id, const std::string& floats, const std::string& count, unsigned stride,
                   const std::string& params);

/// A valid `<source>` with the values of `valueOf`.
std::string records(const std::string& id, unsigned count, unsigned stride, float base)
{
    Floats values;
    for (unsigned i = 0; i < count; ++i) {
        for (unsigned j = 0; j < stride; ++j) {
            values.push_back(valueOf(base, i, j));
        }
    }
    return source(id, text(values), std::to_string(count), stride, floatParams(stride));
}

/// A `<source>` without a technique: a bare array of floats.
std::string bareSource(const std::string& id, const std::string& floats, unsigned count)
{
    return "<source id='" + id + "'><float_array id='" + id + "-floats' count='" + std::to_string(count) + "'>" +
           floats + "</float_array></source>";
}

/// An `<input>` of a `<vertices>`.
std::string local(const std::string& semantic, const std::string& source)
{
    return "<input semantic='" + semantic + "' source='#" + source + "'/>";
}

/// An `<input>` of a `<triangles>`.
std::string input(const std::string& semantic, const std::string& source, unsigned offset)
{
    return "<input semantic='" + semantic + "' source='#" + source + "' offset='" + std::to_string(offset) + "'/>";
}

std::string vertices(const std::string& inputs)
{
    return "<vertices id='corners'>" + inputs + "</vertices>";
}

std::string triangles(const std::string& count, const std::string& inputs, const std::string& p)
{
    return "<triangles name='list' material='paint' count='" + count + "'>" + inputs + "<p>" + p + "</p></triangles>";
}

const std::string vertexInput = "<input semantic='VERTEX' source='#corners' offset='0'/>";

/// The start of most meshes: eight positions X, Y, Z from 0 on, eight normals X, Y, Z from 100 on, eight coordinates S,
/// T from 200 on, and a `<vertices>` with the positions.
const std::string basics = records("positions", 8, 3, 0) + records("normals", 8, 3, 100) +
                           records("coordinates", 8, 2, 200) + vertices(local("POSITION", "positions"));

Floats position(unsigned i)
{
    return {valueOf(0, i, 0), valueOf(0, i, 1), valueOf(0, i, 2)};
}

Floats normal(unsigned i)
{
    return {valueOf(100, i, 0), valueOf(100, i, 1), valueOf(100, i, 2)};
}

Floats coordinate(unsigned i)
{
    return {valueOf(200, i, 0), valueOf(200, i, 1)};
}

Floats operator+(const Floats& a, const Floats& b)
{
    Floats both = a;
    both.insert(both.end(), b.begin(), b.end());
    return both;
}

/// A document with one `<mesh>`.
class MeshDocument {
public:
    explicit MeshDocument(const std::string& content)
    {
        m_builder.add("<library_geometries><geometry id='shape'><mesh>" + content +
                      "</mesh></geometry></library_geometries>");
        m_builder.open();
    }

    domMesh& mesh() { return *m_builder.element<domGeometry>("shape")->getMesh(); }
    domTriangles* triangles(std::size_t index = 0) { return mesh().getTriangles_array().get(index); }
    domVertices* vertices() { return mesh().getVertices(); }

private:
    ColladaBuilder m_builder;
};

// --- Answers ---

Indices indices(const Primitive& primitive)
{
    return Indices(primitive.indexBuffer().begin(), primitive.indexBuffer().end());
}

/// The vertex stream, decoded.
Floats floats(Primitive& primitive)
{
    EXPECT_EQ(0u, primitive.totalByteSize() % sizeof(float));
    Floats values(primitive.totalByteSize() / sizeof(float));
    if (!values.empty()) {
        std::memcpy(values.data(), primitive.vertexBuffer().get(), values.size() * sizeof(float));
    }
    return values;
}

Floats floats(const Bytes& bytes)
{
    EXPECT_EQ(0u, bytes.size() % sizeof(float));
    Floats values(bytes.size() / sizeof(float));
    if (!values.empty()) {
        std::memcpy(values.data(), bytes.data(), values.size() * sizeof(float));
    }
    return values;
}

/// The bytes that `vertex` copies.
Floats vertexOf(const Primitive& primitive, unsigned index)
{
    Bytes bytes;
    EXPECT_TRUE(primitive.vertex(index, bytes));
    return floats(bytes);
}

const std::string fewerIndices = "libVideo.primitive: Triangles have fewer indices than their count";
const std::string nullVertices = "libVideo.primitive: NULL domVertices passed";
const std::string noDescription = "libVideo.primitive: Skipping <triangles> element with no vertex description";
const std::string noSource = "libVideo.input: createFromCollada failed";
const std::string shortArray = "libVideo.accessor: Accessor reaches beyond its float array";

using LayoutFields = std::vector<unsigned>;

/// Semantic, byte size, byte offset, data type and the reserved field.
LayoutFields fields(const VertexLayout& layout)
{
    return {static_cast<unsigned>(layout.semantic), layout.byteSize, layout.byteOffset,
            static_cast<unsigned>(layout.dataType), layout.reserved};
}

std::vector<LayoutFields> layouts(const Primitive& primitive)
{
    std::vector<LayoutFields> all;
    for (const VertexLayout& layout : primitive.vertexLayout()) {
        all.push_back(fields(layout));
    }
    return all;
}

VertexLayout layoutOf(VertexSemantic semantic, unsigned byteSize, unsigned byteOffset, libVideo::DataType dataType,
                      unsigned reserved)
{
    VertexLayout layout(semantic);
    layout.byteSize = byteSize;
    layout.byteOffset = byteOffset;
    layout.dataType = dataType;
    layout.reserved = reserved;
    return layout;
}

/// An input that records the requested vertices.
class CountingInput : public InputLocalOffset {
public:
    explicit CountingInput(domTriangles* triangles) : InputLocalOffset(triangles->getInput_array(), triangles->getP())
    {}

    const vesk::Array<unsigned char>& data(unsigned index) override
    {
        calls.push_back(index);
        return InputLocalOffset::data(index);
    }

    Indices calls;
};

/// An input with one byte per vertex.
class OneByteInput : public CountingInput {
public:
    using CountingInput::CountingInput;

    const vesk::Array<unsigned char>& data(unsigned index) override
    {
        calls.push_back(index);
        m_byte.clear();
        m_byte.append(static_cast<unsigned char>(index));
        return m_byte;
    }

private:
    vesk::Array<unsigned char> m_byte;
};

/// The simple way to number tuples by first use: each is compared with all known ones in turn.
struct PlainScan {
    explicit PlainScan(const std::vector<Tuple>& corners)
    {
        for (unsigned corner = 0; corner < corners.size(); ++corner) {
            unsigned found = 0;
            while (found < known.size() && known[found] != corners[corner]) {
                ++found;
            }
            if (found == known.size()) {
                known.push_back(corners[corner]);
                firstUses.push_back(corner);
            }
            indexBuffer.push_back(found);
        }
    }

    std::vector<Tuple> known;
    Indices firstUses; ///< the corner at which each first occurs
    Indices indexBuffer;
};

std::string flat(const std::vector<Tuple>& corners)
{
    std::string p;
    for (const Tuple& tuple : corners) {
        p += text(tuple);
    }
    return p;
}

// --- A primitive that was never loaded ---

template <class Kind>
class NotLoadedPrimitiveTest : public testing::Test {};

struct KindName {
    template <class Kind>
    static std::string GetName(int /*index*/)
    {
        if (std::is_same_v<Kind, TriangleList>) {
            return "TriangleList";
        }
        return std::is_same_v<Kind, PointCloud> ? "PointCloud" : "KindOfTheTest";
    }
};

using Kinds = testing::Types<TriangleList, PointCloud, OpenPrimitive>;
TYPED_TEST_SUITE(NotLoadedPrimitiveTest, Kinds, KindName);

TYPED_TEST(NotLoadedPrimitiveTest, IsInvalidAndEmpty)
{
    TypeParam primitive;
    EXPECT_EQ(libVideo::PRIMITIVE_INVALID, primitive.type());
    EXPECT_EQ(0u, primitive.count());
    EXPECT_EQ(0u, primitive.vertexPerPrimitive());
    EXPECT_EQ(0u, primitive.totalByteSize());
    EXPECT_EQ(0u, primitive.indexBuffer().size());
    EXPECT_EQ(0u, primitive.vertexLayout().size());
    EXPECT_EQ(vesk::String(), primitive.id());
    EXPECT_EQ(vesk::String(), primitive.material());
}

TYPED_TEST(NotLoadedPrimitiveTest, BytesPerVertexStartAtZero)
{
    EXPECT_EQ(0u, TypeParam().bytesPerVertex());
}

TYPED_TEST(NotLoadedPrimitiveTest, HasNoVertexAndNoAttribute)
{
    const TypeParam primitive;
    Bytes bytes;
    EXPECT_FALSE(primitive.vertex(0, bytes));
    EXPECT_FALSE(primitive.hasPosition());
    EXPECT_FALSE(primitive.hasNormal());
    EXPECT_FALSE(primitive.hasTextureCoord());
}

// --- VertexId ---

Primitive::VertexId vertexId(const Tuple& tuple)
{
    Primitive::VertexId id;
    id.indices.assign(tuple.data(), tuple.size());
    return id;
}

TEST(VertexIdTest, SameEntriesInTheSameOrderAreOne)
{
    EXPECT_TRUE(vertexId({3, 1, 2}) == vertexId({3, 1, 2}));
    EXPECT_FALSE(vertexId({3, 1, 2}) == vertexId({3, 2, 1}));
    EXPECT_FALSE(vertexId({3, 1, 2}) == vertexId({3, 1, 4}));
}

TEST(VertexIdTest, LengthsHaveToBeEqual)
{
    EXPECT_FALSE(vertexId({3, 1}) == vertexId({3, 1, 0}));
    EXPECT_FALSE(vertexId({3, 1, 0}) == vertexId({3, 1}));
    EXPECT_FALSE(vertexId({}) == vertexId({0}));
}

TEST(VertexIdTest, TwoEmptyTuplesAreEqual)
{
    EXPECT_TRUE(vertexId({}) == vertexId({}));
}

TEST(VertexIdTest, IsAFlatStoreOfUnsigned)
{
    EXPECT_TRUE((std::is_same_v<vesk::Buffer<unsigned>, decltype(Primitive::VertexId::indices)>));
}

// --- TriangleList: a good load ---

TEST(TriangleListTest, NullIsLoggedAndFails)
{
    const LogCapture log;
    TriangleList list;
    EXPECT_FALSE(list.createFromCollada(nullptr));
    EXPECT_EQ((Texts{"libVideo.primitive: NULL domTriangles passed in"}), log.messages());
    EXPECT_EQ(libVideo::PRIMITIVE_INVALID, list.type());
    EXPECT_EQ(0u, list.indexBuffer().size());
    EXPECT_EQ(vesk::String(), list.material());
}

TEST(TriangleListTest, GoodLoadFillsEveryFieldWithoutALine)
{
    MeshDocument document(basics + triangles("2", vertexInput, "0 1 2 2 1 3"));
    const LogCapture log;
    TriangleList list;
    EXPECT_TRUE(list.createFromCollada(document.triangles()));
    EXPECT_EQ(Texts(), log.messages());
    EXPECT_EQ(libVideo::PRIMITIVE_TRIANGLE_LIST, list.type());
    EXPECT_EQ(2u, list.count());
    EXPECT_EQ(3u, list.vertexPerPrimitive());
    EXPECT_EQ(12u, list.bytesPerVertex());
    EXPECT_EQ(48u, list.totalByteSize());
    EXPECT_EQ(6u, list.indexBuffer().size());
    EXPECT_EQ(1u, list.vertexLayout().size());
    EXPECT_EQ(vesk::String("list"), list.id());
    EXPECT_EQ(vesk::String("paint"), list.material());
}

TEST(TriangleListTest, ConstructorLoadsAndDropsTheResult)
{
    MeshDocument document(basics + triangles("1", vertexInput, "0 1 2"));
    TriangleList list(document.triangles());
    EXPECT_EQ(libVideo::PRIMITIVE_TRIANGLE_LIST, list.type());
    EXPECT_EQ(position(0) + position(1) + position(2), floats(list));

    const LogCapture log;
    const TriangleList ofNull(static_cast<domTriangles*>(nullptr));
    EXPECT_EQ((Texts{"libVideo.primitive: NULL domTriangles passed in"}), log.messages());
    EXPECT_EQ(libVideo::PRIMITIVE_INVALID, ofNull.type());
}

TEST(TriangleListTest, AbsentNameAndMaterialAreEmpty)
{
    MeshDocument document(basics + "<triangles count='1'>" + vertexInput + "<p>0 1 2</p></triangles>");
    TriangleList list;
    EXPECT_TRUE(list.createFromCollada(document.triangles()));
    EXPECT_EQ(vesk::String(), list.id());
    EXPECT_EQ(vesk::String(), list.material());
}

TEST(TriangleListTest, WithoutInputIsSkippedWithItsMaterialOnly)
{
    MeshDocument document(basics + triangles("2", "", "0 1 2 2 1 3"));
    const LogCapture log;
    TriangleList list;
    EXPECT_FALSE(list.createFromCollada(document.triangles()));
    EXPECT_EQ((Texts{noDescription}), log.messages());
    EXPECT_EQ(vesk::String("paint"), list.material());
    EXPECT_EQ(vesk::String(), list.id());
    EXPECT_EQ(libVideo::PRIMITIVE_INVALID, list.type());
    EXPECT_EQ(0u, list.count());
    EXPECT_EQ(0u, list.vertexPerPrimitive());
    EXPECT_EQ(0u, list.bytesPerVertex());
    EXPECT_EQ(0u, list.totalByteSize());
    EXPECT_EQ(0u, list.indexBuffer().size());
    EXPECT_EQ(0u, list.vertexLayout().size());
}

TEST(TriangleListTest, SharedCornersBecomeOneVertex)
{
    MeshDocument document(basics + triangles("2", vertexInput, "0 1 2 2 1 3"));
    TriangleList list(document.triangles());
    EXPECT_EQ((Indices{0, 1, 2, 2, 1, 3}), indices(list));
    EXPECT_EQ(position(0) + position(1) + position(2) + position(3), floats(list));
}

TEST(TriangleListTest, VerticesAreNumberedByFirstUse)
{
    MeshDocument document(basics + triangles("2", vertexInput, "5 6 7 7 6 5"));
    TriangleList list(document.triangles());
    EXPECT_EQ((Indices{0, 1, 2, 2, 1, 0}), indices(list));
    EXPECT_EQ(position(5) + position(6) + position(7), floats(list));
}

TEST(TriangleListTest, TuplesWithOnePositionAndTwoNormalsAreTwoVertices)
{
    MeshDocument document(basics +
                          triangles("2", vertexInput + input("NORMAL", "normals", 1), "0 0 1 0 2 0 0 1 1 0 2 0"));
    TriangleList list(document.triangles());
    EXPECT_EQ((Indices{0, 1, 2, 3, 1, 2}), indices(list));
    EXPECT_EQ(position(0) + normal(0) + position(1) + normal(0) + position(2) + normal(0) + position(0) + normal(1),
              floats(list));
}

TEST(TriangleListTest, SwappedIndicesAreAnotherVertex)
{
    MeshDocument document(basics + triangles("1", vertexInput + input("NORMAL", "normals", 1), "1 2 2 1 1 2"));
    TriangleList list(document.triangles());
    EXPECT_EQ((Indices{0, 1, 0}), indices(list));
    EXPECT_EQ(position(1) + normal(2) + position(2) + normal(1), floats(list));
}

TEST(TriangleListTest, EqualBytesUnderDifferentIndicesStayTwoVertices)
{
    MeshDocument document(source("positions", "1 2 3 1 2 3 1 2 3", "3", 3, floatParams(3)) +
                          vertices(local("POSITION", "positions")) + triangles("1", vertexInput, "2 0 1"));
    TriangleList list(document.triangles());
    EXPECT_EQ((Indices{0, 1, 2}), indices(list));
    EXPECT_EQ((Floats{1, 2, 3, 1, 2, 3, 1, 2, 3}), floats(list));
}

TEST(TriangleListTest, IndicesOfSkippedInputsTakePartInTheComparison)
{
    MeshDocument document(basics + triangles("2", vertexInput + input("FOG", "normals", 1), "0 0 1 0 2 0 0 9 1 0 2 0"));
    const LogCapture log;
    TriangleList list;
    EXPECT_TRUE(list.createFromCollada(document.triangles()));
    EXPECT_EQ((Texts{"libVideo.input: Does not recognize input semantic FOG"}), log.messages());
    EXPECT_EQ((Indices{0, 1, 2, 3, 1, 2}), indices(list));
    EXPECT_EQ(position(0) + position(1) + position(2) + position(0), floats(list));
    EXPECT_EQ(12u, list.bytesPerVertex());
}

TEST(TriangleListTest, OnlyTheLow32BitsOfAnIndexAreCompared)
{
    MeshDocument document(basics + triangles("2", vertexInput, "0 1 2 4294967298 4294967297 4294967296"));
    TriangleList list(document.triangles());
    EXPECT_EQ((Indices{0, 1, 2, 2, 1, 0}), indices(list));
    EXPECT_EQ(position(0) + position(1) + position(2), floats(list));
}

TEST(TriangleListTest, InputsThatShareAnOffsetShareOneIndex)
{
    MeshDocument document(basics + triangles("2", vertexInput + input("NORMAL", "normals", 0), "4 5 6 6 5 4"));
    TriangleList list(document.triangles());
    EXPECT_EQ((Indices{0, 1, 2, 2, 1, 0}), indices(list));
    EXPECT_EQ(position(4) + normal(4) + position(5) + normal(5) + position(6) + normal(6), floats(list));
}

TEST(TriangleListTest, GapInTheOffsetsReadsZeroBehindTheEnd)
{
    // Two distinct offsets make steps of 2, so the normal of the last corner is past the end of the list.
    MeshDocument document(basics + triangles("1", vertexInput + input("NORMAL", "normals", 2), "1 7 2 7 3 7"));
    const LogCapture log;
    TriangleList list;
    EXPECT_TRUE(list.createFromCollada(document.triangles()));
    EXPECT_EQ(Texts(), log.messages());
    EXPECT_EQ(position(1) + normal(2) + position(2) + normal(3) + position(3) + normal(0), floats(list));
}

TEST(TriangleListTest, CountBoundsWhatIsReadOfTheIndexList)
{
    MeshDocument document(basics + triangles("1", vertexInput, "0 1 2 5 6 7"));
    const LogCapture log;
    TriangleList list;
    EXPECT_TRUE(list.createFromCollada(document.triangles()));
    EXPECT_EQ(Texts(), log.messages());
    EXPECT_EQ(1u, list.count());
    EXPECT_EQ((Indices{0, 1, 2}), indices(list));
    EXPECT_EQ(position(0) + position(1) + position(2), floats(list));
}

// --- TriangleList: the bytes of a vertex ---

const std::string threeInputs = vertexInput + input("NORMAL", "normals", 1) + input("TEXCOORD", "coordinates", 2);

TEST(TriangleListTest, VertexIsOneRecordPerInputWithoutGaps)
{
    MeshDocument document(basics + triangles("1", threeInputs, "0 1 2 3 4 5 6 7 0"));
    TriangleList list(document.triangles());
    EXPECT_EQ(32u, list.bytesPerVertex());
    EXPECT_EQ(96u, list.totalByteSize());
    EXPECT_EQ(position(0) + normal(1) + coordinate(2) + position(3) + normal(4) + coordinate(5) + position(6) +
                  normal(7) + coordinate(0),
              floats(list));
}

TEST(TriangleListTest, LayoutsSayWhatLiesWhere)
{
    MeshDocument document(basics + triangles("1", threeInputs, "0 1 2 3 4 5 6 7 0"));
    const TriangleList list(document.triangles());
    EXPECT_EQ((std::vector<LayoutFields>{{5, 12, 0, 3, 0}, {4, 12, 12, 3, 0}, {9, 8, 24, 2, 0}}), layouts(list));
}

TEST(TriangleListTest, VertexKStartsAtKTimesBytesPerVertex)
{
    MeshDocument document(basics + triangles("2", threeInputs, "0 0 0 1 1 1 2 2 2 2 2 2 1 1 1 3 3 3"));
    TriangleList list(document.triangles());
    for (unsigned k = 0; k < 4; ++k) {
        float x = 0.0f;
        std::memcpy(&x, list.vertexBuffer().get() + k * list.bytesPerVertex(), sizeof(x));
        EXPECT_EQ(static_cast<float>(k), x);
    }
}

TEST(TriangleListTest, BareSourceEmitsBytesThatItsSizeDoesNotCount)
{
    MeshDocument document(bareSource("alone", "1.5 2.5 3.5", 3) + vertices(local("POSITION", "alone")) +
                          triangles("1", vertexInput, "2 1 0"));
    TriangleList list;
    EXPECT_TRUE(list.createFromCollada(document.triangles()));
    EXPECT_EQ(0u, list.bytesPerVertex());
    EXPECT_EQ(12u, list.totalByteSize());
    EXPECT_EQ((Floats{3.5f, 2.5f, 1.5f}), floats(list));
    EXPECT_EQ((Floats{}), vertexOf(list, 0));
}

TEST(TriangleListTest, NothingOfTheDocumentIsNeededAfterTheLoad)
{
    auto document = std::make_unique<MeshDocument>(basics + triangles("1", threeInputs, "0 1 2 3 4 5 6 7 0"));
    TriangleList list(document->triangles());
    document.reset();
    EXPECT_EQ(position(3) + normal(4) + coordinate(5), vertexOf(list, 1));
    EXPECT_EQ(vesk::String("list"), list.id());
    EXPECT_EQ(vesk::String("paint"), list.material());
    EXPECT_EQ(3u, list.vertexLayout().size());
}

// --- TriangleList: counts that the index list does not hold ---

TEST(TriangleListTest, CountZeroFailsButIsATriangleList)
{
    MeshDocument document(basics + triangles("0", vertexInput, "0 1 2"));
    const LogCapture log;
    TriangleList list;
    EXPECT_FALSE(list.createFromCollada(document.triangles()));
    EXPECT_EQ(Texts(), log.messages());
    EXPECT_EQ(libVideo::PRIMITIVE_TRIANGLE_LIST, list.type());
    EXPECT_EQ(0u, list.count());
    EXPECT_EQ(3u, list.vertexPerPrimitive());
    EXPECT_EQ(12u, list.bytesPerVertex());
    EXPECT_EQ(1u, list.vertexLayout().size());
    EXPECT_EQ(0u, list.indexBuffer().size());
    EXPECT_EQ(0u, list.totalByteSize());
    EXPECT_EQ(vesk::String("list"), list.id());
    EXPECT_EQ(vesk::String("paint"), list.material());
}

TEST(TriangleListTest, CountZeroWithoutIndexListNeedsNoLine)
{
    MeshDocument document(basics + "<triangles count='0'>" + vertexInput + "</triangles>");
    const LogCapture log;
    TriangleList list;
    EXPECT_FALSE(list.createFromCollada(document.triangles()));
    EXPECT_EQ(Texts(), log.messages());
    EXPECT_EQ(0u, list.count());
}

struct ShortList : Row {
    const char* count;
    const char* indexList; ///< the whole element
    unsigned wholeTriangles;
};

class TriangleListShortListTest : public testing::TestWithParam<ShortList> {};

TEST_P(TriangleListShortListTest, CountBecomesTheWholeTrianglesOfTheList)
{
    MeshDocument document(basics + "<triangles name='list' count='" + GetParam().count + "'>" + vertexInput +
                          GetParam().indexList + "</triangles>");
    const LogCapture log;
    TriangleList list;
    EXPECT_EQ(GetParam().wholeTriangles > 0, list.createFromCollada(document.triangles()));
    EXPECT_EQ((Texts{fewerIndices}), log.messages());
    EXPECT_EQ(libVideo::PRIMITIVE_TRIANGLE_LIST, list.type());
    EXPECT_EQ(GetParam().wholeTriangles, list.count());
    EXPECT_EQ(3u, list.vertexPerPrimitive());
    EXPECT_EQ(12u, list.bytesPerVertex());
    EXPECT_EQ(1u, list.vertexLayout().size());
    EXPECT_EQ(vesk::String("list"), list.id());
    const Indices whole{0, 1, 2, 2, 1, 3};
    EXPECT_EQ(Indices(whole.begin(), whole.begin() + 3 * static_cast<int>(GetParam().wholeTriangles)), indices(list));
    EXPECT_EQ(GetParam().wholeTriangles == 0 ? 0u : 12u * (2 + GetParam().wholeTriangles), list.totalByteSize());
}

TEST_P(TriangleListShortListTest, NothingIsAllocatedForTheCount)
{
    MeshDocument document(basics + "<triangles name='list' count='" + GetParam().count + "'>" + vertexInput +
                          GetParam().indexList + "</triangles>");
    const LogCapture log;
    const TriangleList list(document.triangles());
    EXPECT_LE(list.indexBuffer().capacity(), 8u);
}

INSTANTIATE_ROWS(Lists, TriangleListShortListTest, {"OneMoreThanHeld", "3", "<p>0 1 2 2 1 3</p>", 2},
                 {"LastTriangleCut", "2", "<p>0 1 2 2 1</p>", 1}, {"OnlyTriangleCut", "1", "<p>0 1</p>", 0},
                 {"EmptyList", "1", "<p></p>", 0}, {"EmptyElement", "2", "<p/>", 0}, {"NoList", "1", "", 0},
                 {"NoListForTheGreatestCount", "4294967295", "", 0},
                 {"CountWhoseCornersWrapToTwo", "1431655766", "<p>0 1 2 2 1 3</p>", 2},
                 {"GreatestCountOf32Bits", "4294967295", "<p>0 1 2 2 1 3</p>", 2},
                 {"GreatestCountOf64Bits", "18446744073709551615", "<p>0 1 2 2 1 3</p>", 2});

TEST(TriangleListTest, WholeTrianglesCountInTuples)
{
    // Eleven indices make three tuples of three and part of a fourth.
    MeshDocument document(basics + triangles("2", threeInputs, "0 0 0 1 1 1 2 2 2 3 3"));
    const LogCapture log;
    TriangleList list;
    EXPECT_TRUE(list.createFromCollada(document.triangles()));
    EXPECT_EQ((Texts{fewerIndices}), log.messages());
    EXPECT_EQ(1u, list.count());
    EXPECT_EQ((Indices{0, 1, 2}), indices(list));
}

TEST(TriangleListTest, LineOfAShortListStandsBehindThoseOfTheInputs)
{
    MeshDocument document(basics + triangles("2", vertexInput + input("FOG", "normals", 0), "0 1 2"));
    const LogCapture log;
    TriangleList list;
    EXPECT_TRUE(list.createFromCollada(document.triangles()));
    EXPECT_EQ((Texts{"libVideo.input: Does not recognize input semantic FOG", fewerIndices}), log.messages());
    EXPECT_EQ(1u, list.count());
}

// --- TriangleList: inputs that give no byte ---

TEST(TriangleListTest, WithoutAnySourceFailsWithZeroesForIndices)
{
    MeshDocument document(basics + triangles("2", input("FOG", "normals", 0), "5 6 7 7 6 5"));
    const LogCapture log;
    TriangleList list;
    EXPECT_FALSE(list.createFromCollada(document.triangles()));
    EXPECT_EQ((Texts{"libVideo.input: Does not recognize input semantic FOG", noSource}), log.messages());
    EXPECT_EQ(libVideo::PRIMITIVE_TRIANGLE_LIST, list.type());
    EXPECT_EQ(2u, list.count());
    EXPECT_EQ(3u, list.vertexPerPrimitive());
    EXPECT_EQ(0u, list.bytesPerVertex());
    EXPECT_EQ(0u, list.vertexLayout().size());
    EXPECT_EQ((Indices{0, 0, 0, 0, 0, 0}), indices(list));
    EXPECT_EQ(0u, list.totalByteSize());
    EXPECT_EQ(vesk::String("list"), list.id());
    EXPECT_EQ(vesk::String("paint"), list.material());
}

TEST(TriangleListTest, SecondLoadOfNullChangesNothing)
{
    MeshDocument document(basics + triangles("1", vertexInput, "0 1 2"));
    TriangleList list(document.triangles());
    const LogCapture log;
    EXPECT_FALSE(list.createFromCollada(nullptr));
    EXPECT_EQ((Texts{"libVideo.primitive: NULL domTriangles passed in"}), log.messages());
    EXPECT_EQ(libVideo::PRIMITIVE_TRIANGLE_LIST, list.type());
    EXPECT_EQ(vesk::String("paint"), list.material());
    EXPECT_EQ((Indices{0, 1, 2}), indices(list));
    EXPECT_EQ(position(0) + position(1) + position(2), floats(list));
}

TEST(TriangleListTest, SecondLoadWithoutInputTakesTheMaterialAlone)
{
    MeshDocument document(basics + triangles("1", vertexInput, "0 1 2") +
                          "<triangles name='other' material='glass' count='5'><p>0 1 2</p></triangles>");
    TriangleList list(document.triangles(0));
    const LogCapture log;
    EXPECT_FALSE(list.createFromCollada(document.triangles(1)));
    EXPECT_EQ((Texts{noDescription}), log.messages());
    EXPECT_EQ(vesk::String("glass"), list.material());
    EXPECT_EQ(vesk::String("list"), list.id());
    EXPECT_EQ(libVideo::PRIMITIVE_TRIANGLE_LIST, list.type());
    EXPECT_EQ(1u, list.count());
    EXPECT_EQ(12u, list.bytesPerVertex());
    EXPECT_EQ(1u, list.vertexLayout().size());
    EXPECT_EQ((Indices{0, 1, 2}), indices(list));
    EXPECT_EQ(position(0) + position(1) + position(2), floats(list));
}

// The stream is never emptied: a list is meant to be loaded once.
TEST(TriangleListTest, SecondLoadWithoutAnySourceKeepsTheStreamAlone)
{
    MeshDocument document(basics + triangles("1", vertexInput, "0 1 2") +
                          "<triangles name='other' material='glass' count='2'>" + input("FOG", "normals", 0) +
                          "<p>5 6 7 7 6 5</p></triangles>");
    TriangleList list(document.triangles(0));
    const LogCapture log;
    EXPECT_FALSE(list.createFromCollada(document.triangles(1)));
    EXPECT_EQ((Texts{"libVideo.input: Does not recognize input semantic FOG", noSource}), log.messages());
    EXPECT_EQ(vesk::String("glass"), list.material());
    EXPECT_EQ(vesk::String("other"), list.id());
    EXPECT_EQ(2u, list.count());
    EXPECT_EQ(0u, list.bytesPerVertex());
    EXPECT_EQ(0u, list.vertexLayout().size());
    EXPECT_EQ((Indices{0, 0, 0, 0, 0, 0}), indices(list));
    EXPECT_EQ(position(0) + position(1) + position(2), floats(list));
}

TEST(TriangleListTest, WithoutAnySourceAShortListIsToldLast)
{
    MeshDocument document(basics + triangles("4294967295", input("FOG", "normals", 0), "5 6 7 7"));
    const LogCapture log;
    TriangleList list;
    EXPECT_FALSE(list.createFromCollada(document.triangles()));
    EXPECT_EQ((Texts{"libVideo.input: Does not recognize input semantic FOG", noSource, fewerIndices}), log.messages());
    EXPECT_EQ(1u, list.count());
    EXPECT_EQ((Indices{0, 0, 0}), indices(list));
}

TEST(TriangleListTest, WithoutAnySourceAndListIsEmpty)
{
    MeshDocument document(basics + "<triangles count='3'>" + input("FOG", "normals", 0) + "</triangles>");
    const LogCapture log;
    TriangleList list;
    EXPECT_FALSE(list.createFromCollada(document.triangles()));
    EXPECT_EQ((Texts{"libVideo.input: Does not recognize input semantic FOG", noSource, fewerIndices}), log.messages());
    EXPECT_EQ(0u, list.count());
    EXPECT_EQ(0u, list.indexBuffer().size());
    EXPECT_EQ(libVideo::PRIMITIVE_TRIANGLE_LIST, list.type());
}

const std::string unnamedParams = "<param type='float'/><param type='float'/><param type='float'/>";

TEST(TriangleListTest, SourceThatEmitsNoByteLeavesIndicesButFails)
{
    MeshDocument document(source("positions", "1 2 3 4 5 6 7 8 9", "3", 3, unnamedParams) +
                          vertices(local("POSITION", "positions")) + triangles("2", vertexInput, "2 1 0 0 1 2"));
    const LogCapture log;
    TriangleList list;
    EXPECT_FALSE(list.createFromCollada(document.triangles()));
    EXPECT_EQ(libVideo::PRIMITIVE_TRIANGLE_LIST, list.type());
    EXPECT_EQ(2u, list.count());
    EXPECT_EQ((Indices{0, 1, 2, 2, 1, 0}), indices(list));
    EXPECT_EQ(0u, list.totalByteSize());
    EXPECT_EQ(0u, list.bytesPerVertex());
    const std::string noData = "libVideo.accessor: No data to read from the accessor";
    EXPECT_EQ((Texts{noData, noData, noData}), log.messages());
}

TEST(TriangleListTest, SourcesAreReadOncePerDistinctTuple)
{
    // A source without named components logs each read.
    MeshDocument document(source("positions", "1 2 3 4 5 6 7 8 9", "3", 3, unnamedParams) +
                          vertices(local("POSITION", "positions")) + triangles("3", vertexInput, "2 1 2 1 1 2 2 2 1"));
    const LogCapture log("libVideo.accessor");
    const TriangleList list(document.triangles());
    EXPECT_EQ("No data to read from the accessor\nNo data to read from the accessor", log.text());
}

// --- TriangleList: exceptions ---

TEST(TriangleListTest, VertexInputOfTwoInputsThrowsAtItsFirstVertex)
{
    MeshDocument document(records("positions", 8, 3, 0) + records("normals", 8, 3, 100) +
                          vertices(local("POSITION", "positions") + local("NORMAL", "normals")) +
                          triangles("1", vertexInput, "0 1 2"));
    TriangleList list;
    EXPECT_THROW(list.createFromCollada(document.triangles()), vesk::IndexOutOfBounds);
    EXPECT_EQ(libVideo::PRIMITIVE_TRIANGLE_LIST, list.type());
    EXPECT_EQ(24u, list.bytesPerVertex());
    EXPECT_EQ(2u, list.vertexLayout().size());
    EXPECT_EQ(0u, list.totalByteSize());
    EXPECT_EQ((Indices{0, 0, 0}), indices(list));
}

TEST(TriangleListTest, IndexBeyondItsSourceThrowsAndKeepsWhatCameBefore)
{
    MeshDocument document(basics + triangles("1", vertexInput, "6 7 8"));
    TriangleList list;
    try {
        list.createFromCollada(document.triangles());
        FAIL() << "no exception";
    } catch (const vesk::AssertionFailure& failure) {
        EXPECT_STREQ("index < m_count", failure.expression());
    }
    EXPECT_EQ(position(6) + position(7), floats(list));
    EXPECT_EQ((Indices{0, 1, 0}), indices(list));
    EXPECT_EQ(1u, list.count());
}

TEST(TriangleListTest, ConstructorPassesExceptionsOn)
{
    MeshDocument document(basics + triangles("1", vertexInput, "6 7 8"));
    EXPECT_THROW(TriangleList{document.triangles()}, vesk::AssertionFailure);
}

TEST(TriangleListTest, ParamOfAnotherTypeThrowsOutOfTheInputs)
{
    MeshDocument document(source("positions", "1 2 3", "3", 1, "<param name='X' type='int'/>") +
                          vertices(local("POSITION", "positions")) + triangles("1", vertexInput, "0 1 2"));
    TriangleList list;
    EXPECT_THROW(list.createFromCollada(document.triangles()), vesk::AssertionFailure);
    EXPECT_EQ(libVideo::PRIMITIVE_INVALID, list.type());
    EXPECT_EQ(1u, list.count());
    EXPECT_EQ(vesk::String("paint"), list.material());
    EXPECT_EQ(vesk::String(), list.id());
}

// --- createIndexedVertexBuffer ---

struct IndexLists : Row {
    unsigned corners;
    unsigned values; ///< indices are below this
};

const char* const attributeNames[] = {"VERTEX", "NORMAL", "TEXCOORD", "COLOR", "TANGENT"};

/// A mesh whose vertices are tuples of this length: one input for each offset, with sources of one float per record.
std::string meshOfTuples(const std::vector<Tuple>& corners, unsigned length, unsigned values)
{
    std::string sources;
    std::string inputs;
    for (unsigned i = 0; i < length; ++i) {
        const std::string id = "source" + std::to_string(i);
        sources += records(id, values, 1, 1000.0f * static_cast<float>(i));
        inputs += input(attributeNames[i], i == 0 ? "corners" : id, i);
    }
    return sources + vertices(local("POSITION", "source0")) +
           triangles(std::to_string(corners.size() / 3), inputs, flat(corners));
}

Floats bytesOfTuples(const std::vector<Tuple>& tuples)
{
    Floats values;
    for (const Tuple& tuple : tuples) {
        for (unsigned i = 0; i < tuple.size(); ++i) {
            values.push_back(valueOf(1000.0f * static_cast<float>(i), tuple[i], 0));
        }
    }
    return values;
}

class VertexSearchTest : public testing::TestWithParam<std::tuple<unsigned, IndexLists>> {
protected:
    unsigned length() const { return std::get<0>(GetParam()); }
    const IndexLists& lists() const { return std::get<1>(GetParam()); }

    std::vector<Tuple> randomCorners() const
    {
        std::mt19937 random(length() * 1000 + lists().values);
        std::vector<Tuple> corners(lists().corners);
        for (Tuple& tuple : corners) {
            for (unsigned i = 0; i < length(); ++i) {
                tuple.push_back(static_cast<unsigned>(random() % lists().values));
            }
        }
        return corners;
    }
};

TEST_P(VertexSearchTest, GivesWhatAPlainScanGives)
{
    const std::vector<Tuple> corners = randomCorners();
    const PlainScan expected(corners);
    MeshDocument document(meshOfTuples(corners, length(), lists().values));
    TriangleList list;
    EXPECT_TRUE(list.createFromCollada(document.triangles()));
    EXPECT_EQ(expected.indexBuffer, indices(list));
    EXPECT_EQ(bytesOfTuples(expected.known), floats(list));
}

TEST_P(VertexSearchTest, AsksForEachDistinctTupleOnceInOrderOfFirstUse)
{
    const std::vector<Tuple> corners = randomCorners();
    const PlainScan expected(corners);
    MeshDocument document(meshOfTuples(corners, length(), lists().values));
    auto* const counting = new CountingInput(document.triangles());
    const InputHandle handle(counting);
    OpenPrimitive primitive;
    primitive.m_vertexPerPrimitive = 3;
    primitive.m_count = lists().corners / 3;
    EXPECT_TRUE(primitive.createIndexedVertexBuffer(handle));
    EXPECT_EQ(expected.firstUses, counting->calls);
    EXPECT_EQ(expected.indexBuffer, indices(primitive));
    EXPECT_EQ(bytesOfTuples(expected.known), floats(primitive));
}

INSTANTIATE_TEST_SUITE_P(
    Random, VertexSearchTest,
    testing::Combine(testing::Values(1u, 2u, 3u, 4u, 5u),
                     testing::Values(IndexLists{"OneTriangle", 3, 5}, IndexLists{"ManyRepeats", 1500, 3},
                                     IndexLists{"SomeRepeats", 1500, 40}, IndexLists{"FewRepeats", 1500, 800})),
    [](const auto& test) { return "Length" + std::to_string(std::get<0>(test.param)) + std::get<1>(test.param).name; });

TEST(TriangleListTest, AllDistinctTuplesAreNumberedAsTheyCome)
{
    std::vector<Tuple> corners;
    Indices expected;
    for (unsigned i = 0; i < 30000; ++i) {
        corners.push_back({29999 - i});
        expected.push_back(i);
    }
    MeshDocument document(meshOfTuples(corners, 1, 30000));
    TriangleList list(document.triangles());
    EXPECT_EQ(expected, indices(list));
    EXPECT_EQ(bytesOfTuples(corners), floats(list));
}

TEST(TriangleListTest, FanRoundOneVertexIsNumberedAlongItsRim)
{
    // Large enough that a search that grows with the number of known tuples would not finish.
    constexpr unsigned triangleCount = 200000;
    std::string p;
    Indices expected;
    for (unsigned i = 0; i < triangleCount; ++i) {
        p += "7 " + std::to_string(i + 8) + " " + std::to_string(i + 9) + " ";
        expected.insert(expected.end(), {0, i + 1, i + 2});
    }
    MeshDocument document(source("heights", "1", "200020", 1, floatParams(1)) + vertices(local("POSITION", "heights")) +
                          triangles(std::to_string(triangleCount), vertexInput, p));
    const LogCapture log;
    const TriangleList list(document.triangles());
    EXPECT_EQ(expected, indices(list));
    EXPECT_EQ(4u * (triangleCount + 2), list.totalByteSize());
}

TEST(TriangleListTest, FanWithManyNormalsOfOnePositionHasAVertexForEach)
{
    std::vector<Tuple> corners;
    for (unsigned i = 0; i < 500; ++i) {
        corners.push_back({0, i % 50});
        corners.push_back({i + 1, i % 50});
        corners.push_back({i + 2, i % 50});
    }
    const PlainScan expected(corners);
    EXPECT_EQ(1050u, expected.known.size()); // 50 around the middle, and two for each triangle
    MeshDocument document(meshOfTuples(corners, 2, 502));
    TriangleList list(document.triangles());
    EXPECT_EQ(expected.indexBuffer, indices(list));
    EXPECT_EQ(bytesOfTuples(expected.known), floats(list));
}

class IndexedVertexBufferTest : public testing::Test {
protected:
    IndexedVertexBufferTest()
    {
        m_primitive.m_vertexPerPrimitive = 3;
        m_primitive.m_count = 2;
    }

    CountingInput& countingInput()
    {
        auto* const counting = new CountingInput(m_document.triangles());
        m_input = counting;
        return *counting;
    }

    MeshDocument m_document{basics + triangles("2", vertexInput, "5 6 7 7 6 5")};
    OpenPrimitive m_primitive;
    InputHandle m_input;
};

TEST_F(IndexedVertexBufferTest, KnownTupleCostsNoRead)
{
    const CountingInput& counting = countingInput();
    EXPECT_TRUE(m_primitive.createIndexedVertexBuffer(m_input));
    EXPECT_EQ((Indices{0, 1, 2}), counting.calls);
}

TEST_F(IndexedVertexBufferTest, CornersAreVerticesPerPrimitiveTimesCount)
{
    m_primitive.m_vertexPerPrimitive = 1;
    m_primitive.m_count = 4;
    countingInput();
    EXPECT_TRUE(m_primitive.createIndexedVertexBuffer(m_input));
    EXPECT_EQ((Indices{0, 1, 2, 2}), indices(m_primitive));
}

TEST_F(IndexedVertexBufferTest, ProductOfCornersWrapsAt32Bits)
{
    m_primitive.m_count = 0x55555556u; // three times this is 2^32 + 2
    countingInput();
    EXPECT_TRUE(m_primitive.createIndexedVertexBuffer(m_input));
    EXPECT_EQ((Indices{0, 1}), indices(m_primitive));
    EXPECT_EQ(position(5) + position(6), floats(m_primitive));
}

TEST_F(IndexedVertexBufferTest, NoCornerReadsNothingAndFails)
{
    m_primitive.m_count = 0;
    const CountingInput& counting = countingInput();
    EXPECT_FALSE(m_primitive.createIndexedVertexBuffer(m_input));
    EXPECT_EQ((Indices{}), counting.calls);
    EXPECT_EQ((Indices{}), indices(m_primitive));
}

TEST_F(IndexedVertexBufferTest, IndexBufferIsMadeAnew)
{
    m_primitive.m_indexBuffer.grow(100, 77);
    countingInput();
    EXPECT_TRUE(m_primitive.createIndexedVertexBuffer(m_input));
    EXPECT_EQ((Indices{0, 1, 2, 2, 1, 0}), indices(m_primitive));
}

TEST_F(IndexedVertexBufferTest, StreamIsNotClearedAndTheSearchStartsFromNothing)
{
    countingInput();
    EXPECT_TRUE(m_primitive.createIndexedVertexBuffer(m_input));
    const CountingInput& second = countingInput();
    EXPECT_TRUE(m_primitive.createIndexedVertexBuffer(m_input));
    EXPECT_EQ((Indices{0, 1, 2}), second.calls);
    EXPECT_EQ((Indices{0, 1, 2, 2, 1, 0}), indices(m_primitive));
    const Floats once = position(5) + position(6) + position(7);
    EXPECT_EQ(once + once, floats(m_primitive));
}

TEST_F(IndexedVertexBufferTest, BytesLeftInTheStreamMakeItSucceed)
{
    m_primitive.m_vertexStream.append(1);
    m_primitive.m_count = 0;
    countingInput();
    EXPECT_TRUE(m_primitive.createIndexedVertexBuffer(m_input));
    EXPECT_EQ(1u, m_primitive.totalByteSize());
}

TEST_F(IndexedVertexBufferTest, BytesComeFromTheVirtualRead)
{
    auto* const oneByte = new OneByteInput(m_document.triangles());
    m_input = oneByte;
    EXPECT_TRUE(m_primitive.createIndexedVertexBuffer(m_input));
    EXPECT_EQ((Indices{0, 1, 2, 2, 1, 0}), indices(m_primitive));
    ASSERT_EQ(3u, m_primitive.totalByteSize());
    for (unsigned char i = 0; i < 3; ++i) {
        EXPECT_EQ(i, m_primitive.vertexBuffer().get()[i]);
    }
}

TEST_F(IndexedVertexBufferTest, EmptyTuplesAreAllOneVertex)
{
    // A second load keeps the sources; without inputs there are no offsets.
    auto* const oneByte = new OneByteInput(m_document.triangles());
    m_input = oneByte;
    ASSERT_TRUE(
        oneByte->createFromCollada(daeTArray<daeSmartRef<domInputLocalOffset>>(), m_document.triangles()->getP()));
    ASSERT_EQ(0u, oneByte->pIndex(0).size());
    EXPECT_TRUE(m_primitive.createIndexedVertexBuffer(m_input));
    EXPECT_EQ((Indices{0, 0, 0, 0, 0, 0}), indices(m_primitive));
    EXPECT_EQ((Indices{0}), oneByte->calls);
    EXPECT_EQ(1u, m_primitive.totalByteSize());
}

TEST_F(IndexedVertexBufferTest, InputIsLetGo)
{
    countingInput();
    m_primitive.createIndexedVertexBuffer(m_input);
    EXPECT_EQ(1u, m_input.useCount());
}

TEST_F(IndexedVertexBufferTest, OnlyDoublingArraysAllocateAndNoCornerDoes)
{
    std::string p;
    for (unsigned i = 0; i < 60000; ++i) {
        p += std::to_string(i * 7 % 1000) + " ";
    }
    MeshDocument document(records("heights", 1000, 1, 0) + vertices(local("POSITION", "heights")) +
                          triangles("20000", vertexInput, p));
    m_input = new InputLocalOffset(document.triangles()->getInput_array(), document.triangles()->getP());
    m_primitive.m_count = 20000;
    const FailingAllocator allocator(-1);
    EXPECT_TRUE(m_primitive.createIndexedVertexBuffer(m_input));
    EXPECT_LE(allocator.requests(), 100);
}

TEST_F(IndexedVertexBufferTest, ExhaustedMemoryThrowsWherever)
{
    long successes = 0;
    for (bool isDone = false; !isDone; ++successes) {
        ASSERT_LT(successes, 1000);
        countingInput().calls.reserve(6);
        OpenPrimitive primitive;
        primitive.m_vertexPerPrimitive = 3;
        primitive.m_count = 2;
        const FailingAllocator allocator(successes);
        try {
            const bool isLoaded = primitive.createIndexedVertexBuffer(m_input);
            isDone = !allocator.hasFailed();
            EXPECT_TRUE(isDone && isLoaded) << "request " << successes << " failed unnoticed";
        } catch (const vesk::NullPointer&) {
            EXPECT_TRUE(allocator.hasFailed());
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(allocator.hasFailed());
        }
    }
    EXPECT_GT(successes, 3);
}

// --- vertex ---

TEST(PrimitiveVertexTest, IndexIsACornerOfATriangleList)
{
    MeshDocument document(basics + triangles("2", threeInputs, "5 0 1 6 0 1 7 0 1 7 0 1 6 0 1 4 0 1"));
    const TriangleList list(document.triangles());
    const unsigned positions[] = {5, 6, 7, 7, 6, 4};
    for (unsigned corner = 0; corner < 6; ++corner) {
        EXPECT_EQ(position(positions[corner]) + normal(0) + coordinate(1), vertexOf(list, corner)) << corner;
    }
}

TEST(PrimitiveVertexTest, CornerBehindTheLastGivesFalseAndNothing)
{
    MeshDocument document(basics + triangles("2", vertexInput, "0 1 2 2 1 3"));
    const TriangleList list(document.triangles());
    Bytes bytes;
    bytes.resize(2, true);
    EXPECT_TRUE(list.vertex(3 * list.count() - 1, bytes));
    EXPECT_EQ(12u, bytes.size());
    bytes.resize(2, true);
    EXPECT_FALSE(list.vertex(3 * list.count(), bytes));
    EXPECT_FALSE(list.vertex(0xFFFFFFFFu, bytes));
    EXPECT_EQ(2u, bytes.size());
}

TEST(PrimitiveVertexTest, IndexIsAVertexOfAPointCloud)
{
    MeshDocument document(basics);
    const PointCloud cloud(document.vertices());
    for (unsigned i = 0; i < 8; ++i) {
        EXPECT_EQ(position(i), vertexOf(cloud, i));
    }
}

TEST(PrimitiveVertexTest, BoundOfAPointCloudIsItsNumberOfBytes)
{
    MeshDocument document(basics);
    const PointCloud cloud(document.vertices());
    ASSERT_EQ(96u, cloud.totalByteSize());
    Bytes bytes;
    EXPECT_THROW(cloud.vertex(8, bytes), vesk::IndexOutOfBounds);
    EXPECT_THROW(cloud.vertex(95, bytes), vesk::IndexOutOfBounds);
    bytes.resize(2, true);
    EXPECT_FALSE(cloud.vertex(96, bytes));
    EXPECT_FALSE(cloud.vertex(0xFFFFFFFFu, bytes));
    EXPECT_EQ(2u, bytes.size());
}

TEST(PrimitiveVertexTest, ExceptionNamesTheFirstByteBehindTheStream)
{
    MeshDocument document(basics);
    const PointCloud cloud(document.vertices());
    Bytes bytes;
    try {
        cloud.vertex(9, bytes);
        FAIL() << "no exception";
    } catch (const vesk::IndexOutOfBounds& failure) {
        EXPECT_EQ(0, failure.low());
        EXPECT_EQ(95, failure.high());
        EXPECT_EQ(108, failure.index());
    }
    EXPECT_EQ(12u, bytes.size()); // resized before the first byte is read
}

TEST(PrimitiveVertexTest, OutTakesTheSizeOfAVertexWhateverItHeld)
{
    MeshDocument document(basics);
    const PointCloud cloud(document.vertices());
    for (const unsigned size : {0u, 5u, 12u, 100u}) {
        Bytes bytes;
        bytes.resize(size, true);
        EXPECT_TRUE(cloud.vertex(3, bytes));
        EXPECT_EQ(position(3), floats(bytes)) << size;
    }
}

TEST(PrimitiveVertexTest, StartsAtTheEntryTimesBytesPerVertexWhereRecordsAreLonger)
{
    // The second source has four bytes that no layout counts.
    MeshDocument document(records("heights", 8, 1, 0) + bareSource("alone", "50 51 52", 3) +
                          vertices(local("POSITION", "heights")) +
                          triangles("1", vertexInput + input("NORMAL", "alone", 0), "0 1 2"));
    TriangleList list(document.triangles());
    EXPECT_EQ(4u, list.bytesPerVertex());
    EXPECT_EQ((Floats{0, 50, 1, 51, 2, 52}), floats(list));
    EXPECT_EQ((Floats{0}), vertexOf(list, 0));
    EXPECT_EQ((Floats{50}), vertexOf(list, 1));
    EXPECT_EQ((Floats{1}), vertexOf(list, 2));
}

TEST(PrimitiveVertexTest, CornerWhoseVertexIsNotInTheStreamThrows)
{
    OpenPrimitive primitive;
    primitive.m_bytesPerVertex = 4;
    primitive.m_indexBuffer.append(1);
    primitive.m_vertexStream.grow(7, 9);
    Bytes bytes;
    EXPECT_THROW(primitive.vertex(0, bytes), vesk::IndexOutOfBounds);
}

TEST(PrimitiveVertexTest, CornerOfAListWithoutBytesIsEmpty)
{
    MeshDocument document(basics + triangles("1", input("FOG", "normals", 0), "5 6 7"));
    const LogCapture log;
    const TriangleList list(document.triangles());
    Bytes bytes;
    bytes.resize(2, true);
    EXPECT_TRUE(list.vertex(2, bytes));
    EXPECT_EQ(0u, bytes.size());
    EXPECT_FALSE(list.vertex(3, bytes));
}

// --- vertexBuffer ---

TEST(PrimitiveVertexBufferTest, HandleIsOnTheFirstByteOfTheStream)
{
    MeshDocument document(basics + triangles("1", vertexInput, "3 4 5"));
    TriangleList list(document.triangles());
    const ByteHandle handle = list.vertexBuffer();
    float x = 0.0f;
    std::memcpy(&x, handle.get(), sizeof(x));
    EXPECT_EQ(3.0f, x);
    EXPECT_EQ(handle, list.vertexBuffer());
}

TEST(PrimitiveVertexBufferTest, HandleOwnsNothing)
{
    MeshDocument document(basics + triangles("1", vertexInput, "3 4 5"));
    TriangleList list(document.triangles());
    {
        const ByteHandle handle = list.vertexBuffer();
        const ByteHandle copy(handle);
        EXPECT_EQ(handle, copy);
    }
    EXPECT_EQ(position(3) + position(4) + position(5), floats(list));
}

TEST(PrimitiveVertexBufferTest, BytesCanBeChangedThroughIt)
{
    MeshDocument document(basics + triangles("1", vertexInput, "3 4 5"));
    TriangleList list(document.triangles());
    const float changed = -8.0f;
    std::memcpy(list.vertexBuffer().get() + 12, &changed, sizeof(changed));
    EXPECT_EQ((Floats{changed, valueOf(0, 4, 1), valueOf(0, 4, 2)}), vertexOf(list, 1));
}

// --- Layouts ---

TEST(PrimitiveLayoutTest, AttributesOfATriangleListAreFound)
{
    MeshDocument document(basics + triangles("1", threeInputs, "0 1 2 3 4 5 6 7 0"));
    const TriangleList list(document.triangles());
    EXPECT_TRUE(list.hasPosition());
    EXPECT_TRUE(list.hasNormal());
    EXPECT_TRUE(list.hasTextureCoord());
    VertexLayout layout;
    EXPECT_TRUE(list.positionLayout(layout));
    EXPECT_EQ((LayoutFields{5, 12, 0, 3, 0}), fields(layout));
    EXPECT_TRUE(list.normalLayout(layout));
    EXPECT_EQ((LayoutFields{4, 12, 12, 3, 0}), fields(layout));
    EXPECT_TRUE(list.textureCoordLayout(layout));
    EXPECT_EQ((LayoutFields{9, 8, 24, 2, 0}), fields(layout));
}

TEST(PrimitiveLayoutTest, AttributeThatIsNotThereLeavesTheLayoutAsItWas)
{
    MeshDocument document(basics + triangles("1", input("TANGENT", "normals", 0), "0 1 2"));
    const TriangleList list(document.triangles());
    EXPECT_FALSE(list.hasPosition());
    EXPECT_FALSE(list.hasNormal());
    EXPECT_FALSE(list.hasTextureCoord());
    VertexLayout layout = layoutOf(libVideo::SEMANTIC_COLOR, 1, 2, libVideo::DATA_TYPE_FLOAT4, 3);
    EXPECT_FALSE(list.positionLayout(layout));
    EXPECT_FALSE(list.normalLayout(layout));
    EXPECT_FALSE(list.textureCoordLayout(layout));
    EXPECT_EQ((LayoutFields{3, 1, 2, 4, 3}), fields(layout));
}

TEST(PrimitiveLayoutTest, OfTwoTextureCoordinatesTheFirstIsFound)
{
    MeshDocument document(basics + records("more", 8, 2, 300) +
                          triangles("1",
                                    vertexInput + input("TEXCOORD", "more", 1) + input("TEXCOORD", "coordinates", 2),
                                    "0 1 2 3 4 5 6 7 0"));
    const TriangleList list(document.triangles());
    EXPECT_EQ(3u, list.vertexLayout().size());
    VertexLayout layout;
    EXPECT_TRUE(list.textureCoordLayout(layout));
    EXPECT_EQ((LayoutFields{9, 8, 12, 2, 0}), fields(layout));
}

TEST(PrimitiveLayoutTest, FirstMatchIsCopiedWithAllItsFields)
{
    OpenPrimitive primitive;
    primitive.m_vertexLayout.append(layoutOf(libVideo::SEMANTIC_COLOR, 16, 0, libVideo::DATA_TYPE_FLOAT4, 0));
    primitive.m_vertexLayout.append(layoutOf(libVideo::SEMANTIC_BINORMAL, 12, 16, libVideo::DATA_TYPE_FLOAT3, 7));
    primitive.m_vertexLayout.append(layoutOf(libVideo::SEMANTIC_BINORMAL, 8, 28, libVideo::DATA_TYPE_FLOAT2, 9));
    VertexLayout layout;
    EXPECT_TRUE(primitive.findLayout(libVideo::SEMANTIC_BINORMAL, layout));
    EXPECT_EQ((LayoutFields{0, 12, 16, 3, 7}), fields(layout));
    EXPECT_TRUE(primitive.findLayout(libVideo::SEMANTIC_COLOR, layout));
    EXPECT_EQ((LayoutFields{3, 16, 0, 4, 0}), fields(layout));
}

TEST(PrimitiveLayoutTest, WithoutAMatchFindLayoutLeavesTheLayoutAsItWas)
{
    OpenPrimitive primitive;
    primitive.m_vertexLayout.append(layoutOf(libVideo::SEMANTIC_COLOR, 16, 0, libVideo::DATA_TYPE_FLOAT4, 0));
    VertexLayout layout = layoutOf(libVideo::SEMANTIC_WEIGHT, 1, 2, libVideo::DATA_TYPE_FLOAT, 3);
    EXPECT_FALSE(primitive.findLayout(libVideo::SEMANTIC_WEIGHT, layout));
    EXPECT_EQ((LayoutFields{2, 1, 2, 1, 3}), fields(layout));
}

TEST(PrimitiveLayoutTest, PositionOfAPointCloudStandsAtTheStart)
{
    MeshDocument document(basics);
    const PointCloud cloud(document.vertices());
    EXPECT_TRUE(cloud.hasPosition());
    EXPECT_FALSE(cloud.hasNormal());
    EXPECT_FALSE(cloud.hasTextureCoord());
    VertexLayout layout;
    EXPECT_TRUE(cloud.positionLayout(layout));
    EXPECT_EQ((LayoutFields{5, 12, 0, 3, 0}), fields(layout));
}

// --- Copies ---

/// Both have the same content in separate memory.
void expectDeepCopy(Primitive& original, Primitive& copy)
{
    EXPECT_EQ(original.type(), copy.type());
    EXPECT_EQ(original.count(), copy.count());
    EXPECT_EQ(original.vertexPerPrimitive(), copy.vertexPerPrimitive());
    EXPECT_EQ(original.bytesPerVertex(), copy.bytesPerVertex());
    EXPECT_EQ(original.id(), copy.id());
    EXPECT_EQ(original.material(), copy.material());
    EXPECT_EQ(layouts(original), layouts(copy));
    EXPECT_EQ(indices(original), indices(copy));
    const Floats before = floats(original);
    EXPECT_EQ(before, floats(copy));
    EXPECT_NE(original.vertexLayout().getData(), copy.vertexLayout().getData());
    if (original.indexBuffer().size() > 0) {
        EXPECT_NE(original.indexBuffer().getData(), copy.indexBuffer().getData());
    }
    std::memset(copy.vertexBuffer().get(), 0, copy.totalByteSize());
    EXPECT_EQ(before, floats(original));
}

TEST(PrimitiveCopyTest, CopyOfATriangleListIsDeep)
{
    MeshDocument document(basics + triangles("2", threeInputs, "5 0 1 6 0 1 7 0 1 7 0 1 6 0 1 4 0 1"));
    TriangleList list(document.triangles());
    TriangleList copy(list);
    EXPECT_EQ(4u * 32, copy.totalByteSize());
    expectDeepCopy(list, copy);
}

TEST(PrimitiveCopyTest, AssignmentOfATriangleListIsDeepAndReplacesEverything)
{
    MeshDocument document(basics + triangles("2", threeInputs, "5 0 1 6 0 1 7 0 1 7 0 1 6 0 1 4 0 1") +
                          "<triangles name='other' material='rust' count='1'>" + vertexInput +
                          "<p>0 1 2</p></triangles>");
    TriangleList list(document.triangles(0));
    TriangleList assigned(document.triangles(1));
    assigned = list;
    EXPECT_EQ(vesk::String("list"), assigned.id());
    EXPECT_EQ(vesk::String("paint"), assigned.material());
    expectDeepCopy(list, assigned);
}

TEST(PrimitiveCopyTest, CopyAndAssignmentOfAPointCloudAreDeep)
{
    MeshDocument document(basics);
    PointCloud cloud(document.vertices());
    PointCloud copy(cloud);
    expectDeepCopy(cloud, copy);
    PointCloud assigned;
    assigned = cloud;
    EXPECT_EQ(libVideo::PRIMITIVE_POINT_CLOUD, assigned.type());
    expectDeepCopy(cloud, assigned);
}

TEST(PrimitiveCopyTest, CopyOutlivesItsOriginal)
{
    MeshDocument document(basics + triangles("1", vertexInput, "3 4 5"));
    auto list = std::make_unique<TriangleList>(document.triangles());
    const TriangleList copy(*list);
    list.reset();
    EXPECT_EQ(position(4), vertexOf(copy, 1));
}

TEST(PrimitiveCopyTest, AssignmentToItselfChangesNothing)
{
    MeshDocument document(basics + triangles("1", vertexInput, "3 4 5"));
    TriangleList list(document.triangles());
    const TriangleList& same = list;
    list = same;
    EXPECT_EQ((Indices{0, 1, 2}), indices(list));
    EXPECT_EQ(position(3) + position(4) + position(5), floats(list));
}

TEST(PrimitiveCopyTest, BaseCanBeCopiedFromAKind)
{
    MeshDocument document(basics + triangles("1", vertexInput, "3 4 5"));
    TriangleList list(document.triangles());
    Primitive copy(list);
    expectDeepCopy(list, copy);
}

// --- PointCloud ---

TEST(PointCloudTest, NullIsLoggedAndFails)
{
    const LogCapture log;
    PointCloud cloud;
    EXPECT_FALSE(cloud.createFromCollada(nullptr));
    EXPECT_EQ((Texts{nullVertices}), log.messages());
    EXPECT_EQ(libVideo::PRIMITIVE_INVALID, cloud.type());
    EXPECT_EQ(0u, cloud.count());
}

TEST(PointCloudTest, GoodLoadFillsEveryFieldWithoutALine)
{
    MeshDocument document(basics);
    const LogCapture log;
    PointCloud cloud;
    EXPECT_TRUE(cloud.createFromCollada(document.vertices()));
    EXPECT_EQ(Texts(), log.messages());
    EXPECT_EQ(libVideo::PRIMITIVE_POINT_CLOUD, cloud.type());
    EXPECT_EQ(8u, cloud.count());
    EXPECT_EQ(1u, cloud.vertexPerPrimitive());
    EXPECT_EQ(12u, cloud.bytesPerVertex());
    EXPECT_EQ(96u, cloud.totalByteSize());
    EXPECT_EQ(0u, cloud.indexBuffer().size());
    EXPECT_EQ((std::vector<LayoutFields>{{5, 12, 0, 3, 0}}), layouts(cloud));
    EXPECT_EQ(vesk::String("corners"), cloud.id());
    EXPECT_EQ(vesk::String(), cloud.material());
    EXPECT_EQ(position(0) + position(1) + position(2) + position(3) + position(4) + position(5) + position(6) +
                  position(7),
              floats(cloud));
}

TEST(PointCloudTest, ConstructorLoadsAndDropsTheResult)
{
    MeshDocument document(basics);
    const PointCloud cloud(document.vertices());
    EXPECT_EQ(8u, cloud.count());

    const LogCapture log;
    const PointCloud ofNull(static_cast<domVertices*>(nullptr));
    EXPECT_EQ((Texts{nullVertices}), log.messages());
    EXPECT_EQ(libVideo::PRIMITIVE_INVALID, ofNull.type());
}

TEST(PointCloudTest, VertexKIsTheKthRecordOfEverySource)
{
    MeshDocument document(records("positions", 3, 3, 0) + records("colors", 3, 4, 500) +
                          vertices(local("POSITION", "positions") + local("COLOR", "colors")));
    PointCloud cloud(document.vertices());
    EXPECT_EQ(28u, cloud.bytesPerVertex());
    EXPECT_EQ((std::vector<LayoutFields>{{5, 12, 0, 3, 0}, {3, 16, 12, 4, 0}}), layouts(cloud));
    for (unsigned i = 0; i < 3; ++i) {
        const Floats color{valueOf(500, i, 0), valueOf(500, i, 1), valueOf(500, i, 2), valueOf(500, i, 3)};
        EXPECT_EQ(position(i) + color, vertexOf(cloud, i));
    }
    EXPECT_EQ(84u, cloud.totalByteSize());
}

TEST(PointCloudTest, EqualRecordsStayPointsOfTheirOwn)
{
    MeshDocument document(source("positions", "5 5 5 5", "4", 1, floatParams(1)) +
                          vertices(local("POSITION", "positions")));
    PointCloud cloud(document.vertices());
    EXPECT_EQ(4u, cloud.count());
    EXPECT_EQ((Floats{5, 5, 5, 5}), floats(cloud));
}

TEST(PointCloudTest, CountIsThatOfTheFirstSource)
{
    MeshDocument document(records("positions", 2, 3, 0) + records("normals", 8, 3, 100) +
                          vertices(local("POSITION", "positions") + local("NORMAL", "normals")));
    PointCloud cloud;
    EXPECT_TRUE(cloud.createFromCollada(document.vertices()));
    EXPECT_EQ(2u, cloud.count());
    EXPECT_EQ(position(0) + normal(0) + position(1) + normal(1), floats(cloud));
}

TEST(PointCloudTest, LaterSourceWithFewerRecordsThrowsAndLeavesWhatCameBefore)
{
    MeshDocument document(records("positions", 8, 3, 0) + records("normals", 2, 3, 100) +
                          vertices(local("POSITION", "positions") + local("NORMAL", "normals")));
    PointCloud cloud;
    try {
        cloud.createFromCollada(document.vertices());
        FAIL() << "no exception";
    } catch (const vesk::AssertionFailure& failure) {
        EXPECT_STREQ("index < m_count", failure.expression());
    }
    EXPECT_EQ(libVideo::PRIMITIVE_INVALID, cloud.type());
    EXPECT_EQ(8u, cloud.count());
    EXPECT_EQ(1u, cloud.vertexPerPrimitive());
    EXPECT_EQ(position(0) + normal(0) + position(1) + normal(1), floats(cloud));
}

TEST(PointCloudTest, WithoutAnySourceIsAnEmptyCloudThatLoaded)
{
    MeshDocument document(records("positions", 2, 3, 0) + vertices(local("FOG", "positions")));
    const LogCapture log;
    PointCloud cloud;
    EXPECT_TRUE(cloud.createFromCollada(document.vertices()));
    EXPECT_EQ((Texts{"libVideo.input: Does not recognize input semantic FOG", noSource}), log.messages());
    EXPECT_EQ(libVideo::PRIMITIVE_POINT_CLOUD, cloud.type());
    EXPECT_EQ(0u, cloud.count());
    EXPECT_EQ(1u, cloud.vertexPerPrimitive());
    EXPECT_EQ(0u, cloud.bytesPerVertex());
    EXPECT_EQ(0u, cloud.totalByteSize());
    EXPECT_EQ(0u, cloud.vertexLayout().size());
    EXPECT_EQ(vesk::String("corners"), cloud.id());
}

TEST(PointCloudTest, WithoutAnyInputIsAnEmptyCloudThatLoaded)
{
    MeshDocument document(vertices(""));
    const LogCapture log;
    PointCloud cloud;
    EXPECT_TRUE(cloud.createFromCollada(document.vertices()));
    EXPECT_EQ((Texts{noSource}), log.messages());
    EXPECT_EQ(libVideo::PRIMITIVE_POINT_CLOUD, cloud.type());
    EXPECT_EQ(0u, cloud.count());
}

TEST(PointCloudTest, SourceWithoutAccessorHasNoPoints)
{
    MeshDocument document(bareSource("alone", "1 2 3", 3) + vertices(local("POSITION", "alone")));
    const LogCapture log;
    PointCloud cloud;
    EXPECT_TRUE(cloud.createFromCollada(document.vertices()));
    EXPECT_EQ(Texts(), log.messages());
    EXPECT_EQ(0u, cloud.count());
    EXPECT_EQ(0u, cloud.totalByteSize());
    EXPECT_EQ((std::vector<LayoutFields>{{5, 0, 0, 1, 0}}), layouts(cloud));
}

TEST(PointCloudTest, MatrixRecordTakes1024Bytes)
{
    std::string values;
    for (unsigned i = 0; i < 32; ++i) {
        values += std::to_string(i) + " ";
    }
    MeshDocument document(source("frames", values, "2", 16, "<param name='M' type='float4x4'/>") +
                          vertices(local("POSITION", "frames")));
    PointCloud cloud(document.vertices());
    EXPECT_EQ(1024u, cloud.bytesPerVertex());
    ASSERT_EQ(2048u, cloud.totalByteSize());
    EXPECT_EQ((std::vector<LayoutFields>{{5, 1024, 0, 8, 0}}), layouts(cloud));
    for (unsigned i = 0; i < 32; ++i) {
        float value = 0.0f;
        std::memcpy(&value, cloud.vertexBuffer().get() + i * 64, sizeof(value));
        EXPECT_EQ(static_cast<float>(i), value);
    }
}

TEST(PointCloudTest, SecondLoadStartsFromNothing)
{
    MeshDocument first(basics);
    MeshDocument second(records("heights", 2, 1, 40) + "<vertices id='ridge'>" + local("NORMAL", "heights") +
                        "</vertices>");
    PointCloud cloud(first.vertices());
    EXPECT_TRUE(cloud.createFromCollada(second.vertices()));
    EXPECT_EQ((std::vector<LayoutFields>{{4, 4, 0, 1, 0}}), layouts(cloud));
    EXPECT_EQ((Floats{40, 41}), floats(cloud));
    EXPECT_EQ(2u, cloud.count());
    EXPECT_EQ(vesk::String("ridge"), cloud.id());
}

TEST(PointCloudTest, NothingOfTheDocumentIsNeededAfterTheLoad)
{
    auto document = std::make_unique<MeshDocument>(basics);
    const PointCloud cloud(document->vertices());
    document.reset();
    EXPECT_EQ(position(7), vertexOf(cloud, 7));
    EXPECT_EQ(vesk::String("corners"), cloud.id());
}

// --- PointCloud: more records than the arrays back ---

TEST(PointCloudTest, FewClaimedRecordsBehindTheArrayAreZero)
{
    MeshDocument document(source("heights", "1.5 2.5", "5", 1, floatParams(1)) +
                          vertices(local("POSITION", "heights")));
    const LogCapture log;
    PointCloud cloud;
    EXPECT_TRUE(cloud.createFromCollada(document.vertices()));
    EXPECT_EQ((Texts{shortArray}), log.messages());
    EXPECT_EQ(5u, cloud.count());
    EXPECT_EQ((Floats{1.5f, 2.5f, 0, 0, 0}), floats(cloud));
}

class PointCloudClaimTest : public testing::TestWithParam<Case<const char*, unsigned>> {};

TEST_P(PointCloudClaimTest, UnbackedPointsEndAt1048576)
{
    MeshDocument document(source("heights", "1.5 2.5", GetParam().given, 1, floatParams(1)) +
                          vertices(local("POSITION", "heights")));
    const LogCapture log;
    PointCloud cloud;
    EXPECT_TRUE(cloud.createFromCollada(document.vertices()));
    EXPECT_EQ((Texts{shortArray}), log.messages());
    EXPECT_EQ(libVideo::PRIMITIVE_POINT_CLOUD, cloud.type());
    EXPECT_EQ(GetParam().expected, cloud.count());
    EXPECT_EQ(4u * GetParam().expected, cloud.totalByteSize());
    Floats expected(GetParam().expected, 0.0f);
    expected[0] = 1.5f;
    expected[1] = 2.5f;
    EXPECT_TRUE(expected == floats(cloud));
}

INSTANTIATE_ROWS(Claims, PointCloudClaimTest, {"Of1048575", "1048575", 1048575}, {"Of1048576", "1048576", 1048576},
                 {"Of1048577", "1048577", 1048576}, {"Of4294967295", "4294967295", 1048576});

std::string manyFloats(unsigned count)
{
    std::string values;
    for (unsigned i = 0; i < count; ++i) {
        values += i % 2 == 0 ? "3 " : "4 ";
    }
    return values;
}

// Four matrices are 4096 bytes, of which 64 MiB hold 16,384.
TEST(PointCloudTest, UnbackedPointsEndAt64MebibytesIfTheirRecordsAreLong)
{
    const std::string matrices = "<param name='A' type='float4x4'/><param name='B' type='float4x4'/>"
                                 "<param name='C' type='float4x4'/><param name='D' type='float4x4'/>";
    MeshDocument document(source("heights", "1.5", "4294967295", 64, matrices) +
                          vertices(local("POSITION", "heights")));
    const LogCapture log;
    PointCloud cloud;
    EXPECT_TRUE(cloud.createFromCollada(document.vertices()));
    EXPECT_EQ(4096u, cloud.bytesPerVertex());
    EXPECT_EQ(16384u, cloud.count());
    EXPECT_EQ(67108864u, cloud.totalByteSize());
}

TEST(PointCloudTest, BackedPointsMayBeMore)
{
    constexpr unsigned count = 1048576 + 3;
    MeshDocument document(source("heights", manyFloats(count), std::to_string(count), 1, floatParams(1)) +
                          vertices(local("POSITION", "heights")));
    const LogCapture log;
    PointCloud cloud;
    EXPECT_TRUE(cloud.createFromCollada(document.vertices()));
    EXPECT_EQ(Texts(), log.messages());
    EXPECT_EQ(count, cloud.count());
    EXPECT_EQ(4u * count, cloud.totalByteSize());
    EXPECT_EQ((Floats{3}), vertexOf(cloud, count - 1));
}

TEST(PointCloudTest, LongestArrayBoundsWhereItBacksMore)
{
    constexpr unsigned backed = 1048576 + 4;
    MeshDocument document(source("heights", "1.5", "2000000", 1, floatParams(1)) +
                          source("depths", manyFloats(backed), "2000000", 1, floatParams(1)) +
                          vertices(local("POSITION", "heights") + local("NORMAL", "depths")));
    const LogCapture log;
    PointCloud cloud;
    EXPECT_TRUE(cloud.createFromCollada(document.vertices()));
    EXPECT_EQ((Texts{shortArray, shortArray}), log.messages());
    EXPECT_EQ(backed, cloud.count());
    EXPECT_EQ(8u * backed, cloud.totalByteSize());
    EXPECT_EQ((Floats{0, 4}), vertexOf(cloud, backed - 1));
}

// --- PointCloud: traces ---

const char* const entry = "> PointCloud::createFromCollada (libVideo/SceneGraph/Primitive";
const char* const leaving = "< PointCloud::createFromCollada";
const char* const channel = "libVideo.primitive";

TEST(PointCloudTest, LoadIsTraced)
{
    MeshDocument document(basics);
    EXPECT_EQ(texts(entry, leaving), tracedTexts([&] { const PointCloud cloud(document.vertices()); }, channel));
}

TEST(PointCloudTest, NullIsLoggedInsideTheTrace)
{
    const Texts lines = tracedTexts([] { PointCloud().createFromCollada(nullptr); }, channel);
    EXPECT_EQ(texts(entry, "NULL domVertices passed", leaving), lines);
}

TEST(PointCloudTest, TraceEndsWithAnException)
{
    MeshDocument document(records("positions", 8, 3, 0) + records("normals", 2, 3, 100) +
                          vertices(local("POSITION", "positions") + local("NORMAL", "normals")));
    const auto load = [&] { EXPECT_THROW(PointCloud{document.vertices()}, vesk::AssertionFailure); };
    EXPECT_EQ(texts(entry, leaving), tracedTexts(load, channel));
}

TEST(TriangleListTest, LoadIsNotTraced)
{
    MeshDocument document(basics + triangles("1", vertexInput, "0 1 2"));
    PrimitiveList primitives;
    EXPECT_EQ(Texts(), tracedTexts([&] { createPrimitive(document.mesh(), primitives); }, channel));
}

// --- createPrimitive ---

const std::string linesElement = "<lines count='1'>" + vertexInput + "<p>0 1</p></lines>";

std::string named(const std::string& name, const std::string& p)
{
    return "<triangles name='" + name + "' count='1'>" + vertexInput + "<p>" + p + "</p></triangles>";
}

TEST(CreatePrimitiveTest, EachTrianglesIsOneListInDocumentOrder)
{
    MeshDocument document(basics + named("first", "0 1 2") + named("second", "3 4 5") + named("third", "6 7 0"));
    const LogCapture log;
    PrimitiveList primitives;
    EXPECT_EQ(3u, createPrimitive(document.mesh(), primitives));
    EXPECT_EQ(Texts(), log.messages());
    ASSERT_EQ(3u, primitives.size());
    EXPECT_EQ(vesk::String("first"), primitives[0]->id());
    EXPECT_EQ(vesk::String("second"), primitives[1]->id());
    EXPECT_EQ(vesk::String("third"), primitives[2]->id());
    for (const PrimitiveHandle& primitive : primitives) {
        EXPECT_NE(nullptr, dynamic_cast<TriangleList*>(primitive.get()));
        EXPECT_EQ(libVideo::PRIMITIVE_TRIANGLE_LIST, primitive->type());
        EXPECT_EQ(1u, primitive.useCount());
    }
}

TEST(CreatePrimitiveTest, EachListNumbersItsVerticesFromZero)
{
    MeshDocument document(basics + triangles("2", vertexInput, "0 1 2 2 1 3") +
                          triangles("2", vertexInput, "2 3 1 1 3 7"));
    PrimitiveList primitives;
    EXPECT_EQ(2u, createPrimitive(document.mesh(), primitives));
    ASSERT_EQ(2u, primitives.size());
    EXPECT_EQ((Indices{0, 1, 2, 2, 1, 3}), indices(*primitives[0]));
    EXPECT_EQ((Indices{0, 1, 2, 2, 1, 3}), indices(*primitives[1]));
    EXPECT_EQ(position(2) + position(3) + position(1) + position(7), floats(*primitives[1]));
}

TEST(CreatePrimitiveTest, EarlierPrimitivesAreReleased)
{
    MeshDocument document(basics + named("new", "0 1 2"));
    const PrimitiveHandle old(new PointCloud);
    PrimitiveList primitives;
    primitives.append(old);
    primitives.append(old);
    EXPECT_EQ(1u, createPrimitive(document.mesh(), primitives));
    EXPECT_EQ(1u, old.useCount());
    ASSERT_EQ(1u, primitives.size());
    EXPECT_EQ(vesk::String("new"), primitives[0]->id());
}

TEST(CreatePrimitiveTest, EarlierPrimitivesAreReleasedWhereNoneIsMade)
{
    MeshDocument document(basics + linesElement);
    const PrimitiveHandle old(new PointCloud);
    PrimitiveList primitives;
    primitives.append(old);
    createPrimitive(document.mesh(), primitives);
    EXPECT_EQ(1u, old.useCount());
    EXPECT_EQ(0u, primitives.size());
}

TEST(CreatePrimitiveTest, LinesAreCountedOnly)
{
    MeshDocument document(basics + linesElement + linesElement + linesElement);
    const LogCapture log;
    PrimitiveList primitives;
    EXPECT_EQ(3u, createPrimitive(document.mesh(), primitives));
    EXPECT_EQ(Texts(), log.messages());
    EXPECT_EQ(0u, primitives.size());
}

TEST(CreatePrimitiveTest, LinesAndTrianglesCountTogether)
{
    MeshDocument document(basics + linesElement + named("list", "0 1 2"));
    PrimitiveList primitives;
    EXPECT_EQ(2u, createPrimitive(document.mesh(), primitives));
    ASSERT_EQ(1u, primitives.size());
    EXPECT_EQ(libVideo::PRIMITIVE_TRIANGLE_LIST, primitives[0]->type());
}

TEST(CreatePrimitiveTest, MeshWithVerticesOnlyIsAPointCloud)
{
    MeshDocument document(basics);
    const LogCapture log;
    PrimitiveList primitives;
    EXPECT_EQ(1u, createPrimitive(document.mesh(), primitives));
    EXPECT_EQ(Texts(), log.messages());
    ASSERT_EQ(1u, primitives.size());
    EXPECT_NE(nullptr, dynamic_cast<PointCloud*>(primitives[0].get()));
    EXPECT_EQ(libVideo::PRIMITIVE_POINT_CLOUD, primitives[0]->type());
    EXPECT_EQ(8u, primitives[0]->count());
    EXPECT_EQ(vesk::String("corners"), primitives[0]->id());
    EXPECT_EQ(vesk::String(), primitives[0]->material());
    EXPECT_EQ(1u, primitives[0].useCount());
}

TEST(CreatePrimitiveTest, MeshWithoutVerticesHasAnEmptyPointCloud)
{
    MeshDocument document(records("positions", 2, 3, 0));
    const LogCapture log;
    PrimitiveList primitives;
    EXPECT_EQ(1u, createPrimitive(document.mesh(), primitives));
    EXPECT_EQ((Texts{nullVertices}), log.messages());
    ASSERT_EQ(1u, primitives.size());
    EXPECT_NE(nullptr, dynamic_cast<PointCloud*>(primitives[0].get()));
    EXPECT_EQ(libVideo::PRIMITIVE_INVALID, primitives[0]->type());
}

class CreatePrimitiveOtherKindTest : public testing::TestWithParam<Case<const char*>> {
protected:
    std::string element() const
    {
        return std::string("<") + GetParam().name + " count='1'>" + vertexInput + GetParam().given + "</" +
               GetParam().name + ">";
    }
};

TEST_P(CreatePrimitiveOtherKindTest, AloneArrivesAsAPointCloud)
{
    MeshDocument document(basics + element());
    const LogCapture log;
    PrimitiveList primitives;
    EXPECT_EQ(1u, createPrimitive(document.mesh(), primitives));
    EXPECT_EQ(Texts(), log.messages());
    ASSERT_EQ(1u, primitives.size());
    EXPECT_EQ(libVideo::PRIMITIVE_POINT_CLOUD, primitives[0]->type());
    EXPECT_EQ(8u, primitives[0]->count());
}

TEST_P(CreatePrimitiveOtherKindTest, BesideTrianglesIsNotLookedAt)
{
    MeshDocument document(basics + element() + named("list", "0 1 2"));
    PrimitiveList primitives;
    EXPECT_EQ(1u, createPrimitive(document.mesh(), primitives));
    ASSERT_EQ(1u, primitives.size());
    EXPECT_EQ(libVideo::PRIMITIVE_TRIANGLE_LIST, primitives[0]->type());
}

INSTANTIATE_ROWS(Kinds, CreatePrimitiveOtherKindTest, {"linestrips", "<p>0 1 2</p>"}, {"polygons", "<p>0 1 2 3</p>"},
                 {"polylist", "<vcount>4</vcount><p>0 1 2 3</p>"}, {"trifans", "<p>0 1 2 3</p>"},
                 {"tristrips", "<p>0 1 2 3</p>"});

TEST(CreatePrimitiveTest, FailedListsStayAndCount)
{
    MeshDocument document(basics + "<triangles material='rust' count='1'><p>0 1 2</p></triangles>" +
                          triangles("0", vertexInput, "0 1 2") + named("good", "0 1 2") +
                          triangles("1", input("FOG", "normals", 0), "0 1 2") + "<triangles count='1'>" + vertexInput +
                          "</triangles>");
    const LogCapture log;
    PrimitiveList primitives;
    EXPECT_EQ(5u, createPrimitive(document.mesh(), primitives));
    EXPECT_EQ((Texts{noDescription, "libVideo.input: Does not recognize input semantic FOG", noSource, fewerIndices}),
              log.messages());
    ASSERT_EQ(5u, primitives.size());
    EXPECT_EQ(libVideo::PRIMITIVE_INVALID, primitives[0]->type());
    EXPECT_EQ(vesk::String("rust"), primitives[0]->material());
    EXPECT_EQ(0u, primitives[1]->count());
    EXPECT_EQ(libVideo::PRIMITIVE_TRIANGLE_LIST, primitives[1]->type());
    EXPECT_EQ(36u, primitives[2]->totalByteSize());
    EXPECT_EQ((Indices{0, 0, 0}), indices(*primitives[3]));
    EXPECT_EQ(0u, primitives[4]->count());
}

TEST(CreatePrimitiveTest, FailedListKeepsThePointCloudAway)
{
    MeshDocument document(basics + "<triangles count='1'><p>0 1 2</p></triangles>");
    const LogCapture log;
    PrimitiveList primitives;
    EXPECT_EQ(1u, createPrimitive(document.mesh(), primitives));
    EXPECT_EQ((Texts{noDescription}), log.messages());
    ASSERT_EQ(1u, primitives.size());
    EXPECT_EQ(libVideo::PRIMITIVE_INVALID, primitives[0]->type());
    EXPECT_NE(nullptr, dynamic_cast<TriangleList*>(primitives[0].get()));
}

TEST(CreatePrimitiveTest, EmptyPointCloudCounts)
{
    MeshDocument document(vertices(""));
    const LogCapture log;
    PrimitiveList primitives;
    EXPECT_EQ(1u, createPrimitive(document.mesh(), primitives));
    EXPECT_EQ((Texts{noSource}), log.messages());
    ASSERT_EQ(1u, primitives.size());
    EXPECT_EQ(libVideo::PRIMITIVE_POINT_CLOUD, primitives[0]->type());
    EXPECT_EQ(0u, primitives[0]->count());
}

TEST(CreatePrimitiveTest, ExceptionLeavesTheListAsFarAsItGot)
{
    MeshDocument document(basics + named("first", "0 1 2") + named("second", "3 4 5") + named("bad", "0 1 8") +
                          named("last", "0 1 2"));
    const PrimitiveHandle old(new PointCloud);
    PrimitiveList primitives;
    primitives.append(old);
    EXPECT_THROW(createPrimitive(document.mesh(), primitives), vesk::AssertionFailure);
    EXPECT_EQ(1u, old.useCount());
    ASSERT_EQ(2u, primitives.size());
    EXPECT_EQ(vesk::String("first"), primitives[0]->id());
    EXPECT_EQ(vesk::String("second"), primitives[1]->id());
}

TEST(CreatePrimitiveTest, IndexOutOfBoundsPassesThrough)
{
    MeshDocument document(records("positions", 8, 3, 0) + records("normals", 8, 3, 100) +
                          vertices(local("POSITION", "positions") + local("NORMAL", "normals")) +
                          named("list", "0 1 2"));
    PrimitiveList primitives;
    EXPECT_THROW(createPrimitive(document.mesh(), primitives), vesk::IndexOutOfBounds);
    EXPECT_EQ(0u, primitives.size());
}

TEST(CreatePrimitiveTest, ExceptionOfAPointCloudLeavesAnEmptyList)
{
    MeshDocument document(records("positions", 8, 3, 0) + records("normals", 2, 3, 100) +
                          vertices(local("POSITION", "positions") + local("NORMAL", "normals")));
    const PrimitiveHandle old(new PointCloud);
    PrimitiveList primitives;
    primitives.append(old);
    EXPECT_THROW(createPrimitive(document.mesh(), primitives), vesk::AssertionFailure);
    EXPECT_EQ(0u, primitives.size());
    EXPECT_EQ(1u, old.useCount());
}

TEST(CreatePrimitiveTest, PrimitivesOutliveTheirDocument)
{
    PrimitiveList primitives;
    {
        MeshDocument document(basics + named("list", "3 4 5"));
        createPrimitive(document.mesh(), primitives);
    }
    ASSERT_EQ(1u, primitives.size());
    EXPECT_EQ(position(3) + position(4) + position(5), floats(*primitives[0]));
}

template <class T, class = void>
struct HasConstMaterial : std::false_type {};
template <class T>
struct HasConstMaterial<T, std::void_t<decltype(std::declval<const T&>().material())>> : std::true_type {};
template <class T, class = void>
struct HasConstVertexBuffer : std::false_type {};
template <class T>
struct HasConstVertexBuffer<T, std::void_t<decltype(std::declval<const T&>().vertexBuffer())>> : std::true_type {};
static_assert(std::is_same_v<unsigned, std::underlying_type_t<PrimitiveType>> && sizeof(PrimitiveType) == 4);
static_assert(std::has_virtual_destructor_v<Primitive> && !std::is_abstract_v<Primitive>);
static_assert(!std::is_default_constructible_v<Primitive>);
static_assert(std::is_copy_constructible_v<Primitive> && std::is_copy_assignable_v<Primitive>);
static_assert(std::is_convertible_v<TriangleList*, Primitive*> && std::is_convertible_v<PointCloud*, Primitive*>);
static_assert(sizeof(TriangleList) == sizeof(Primitive) && sizeof(PointCloud) == sizeof(Primitive));
static_assert(std::is_default_constructible_v<TriangleList> && std::is_default_constructible_v<PointCloud>);
static_assert(std::is_constructible_v<TriangleList, domTriangles* const> &&
              std::is_constructible_v<PointCloud, domVertices* const>);
static_assert(std::is_same_v<bool (TriangleList::*)(domTriangles*), decltype(&TriangleList::createFromCollada)>);
static_assert(std::is_same_v<bool (PointCloud::*)(domVertices*), decltype(&PointCloud::createFromCollada)>);
static_assert(std::is_same_v<unsigned (*)(const domMesh&, PrimitiveList&), decltype(&createPrimitive)>);
static_assert(
    std::is_same_v<bool (Primitive::*)(const InputHandle&), decltype(&OpenPrimitive::createIndexedVertexBuffer)>);
static_assert(
    std::is_same_v<bool (Primitive::*)(VertexSemantic, VertexLayout&) const, decltype(&OpenPrimitive::findLayout)>);
static_assert(std::is_same_v<bool (Primitive::*)(unsigned, Bytes&) const, decltype(&Primitive::vertex)>);
static_assert(std::is_same_v<ByteHandle, decltype(std::declval<Primitive&>().vertexBuffer())>);
static_assert(std::is_same_v<const vesk::String&, decltype(std::declval<Primitive&>().material())>);
static_assert(!HasConstMaterial<Primitive>::value && !HasConstVertexBuffer<Primitive>::value);
static_assert(std::is_same_v<unsigned, decltype(std::declval<const Primitive&>().count())> &&
              std::is_same_v<unsigned, decltype(std::declval<const Primitive&>().vertexPerPrimitive())> &&
              std::is_same_v<unsigned, decltype(std::declval<const Primitive&>().bytesPerVertex())> &&
              std::is_same_v<unsigned, decltype(std::declval<const Primitive&>().totalByteSize())> &&
              std::is_same_v<PrimitiveType, decltype(std::declval<const Primitive&>().type())>);
static_assert(
    std::is_same_v<const vesk::Array<unsigned>&, decltype(std::declval<const Primitive&>().indexBuffer())> &&
    std::is_same_v<const vesk::Array<VertexLayout>&, decltype(std::declval<const Primitive&>().vertexLayout())> &&
    std::is_same_v<const vesk::String&, decltype(std::declval<const Primitive&>().id())>);

std::string source(const std::string& id, const std::string& floats, const std::string& count, unsigned stride,
                   const std::string& params)
{
    std::istringstream tokens(floats);
    std::string token;
    unsigned length = 0;
    while (tokens >> token) {
        ++length;
    }
    return "<source id='" + id + "'><float_array id='" + id + "-floats' count='" + std::to_string(length) + "'>" +
           floats + "</float_array><technique_common><accessor source='#" + id + "-floats' count='" + count +
           "' stride='" + std::to_string(stride) + "'>" + params + "</accessor></technique_common></source>";
}

} // namespace
