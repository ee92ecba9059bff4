#include "support/Components.h"
#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Source.h>

namespace {

using namespace libVideo;
using namespace testSupport;

using DataList = vesk::Array<Data>;
using SourceHandle = vesk::SharedResource<vesk::PointerStorage<Source, 0, 3>, 0>;
using AccessorHandle = vesk::SharedResource<vesk::PointerStorage<Accessor, 0, 3>, 0>;
using SourceRef = daeSmartRef<domSource>;
using FloatArrayRef = daeSmartRef<domFloat_array>;
using Floats = std::vector<float>;

PRIVATE_MEMBER(sourceDataType, DataType Source::*, &Source::m_dataType)
PRIVATE_MEMBER(arrayCountOf, unsigned Source::*, &Source::m_arrayCount)
PRIVATE_MEMBER(sourceId, vesk::String Source::*, &Source::m_id)
PRIVATE_MEMBER(accessorOf, AccessorHandle Source::*, &Source::m_accessor)
PRIVATE_MEMBER(elementOf, SourceRef Source::*, &Source::m_element)
PRIVATE_MEMBER(singleValueOf, DataList Source::*, &Source::m_singleValue)
PRIVATE_MEMBER(floatArrayOf, FloatArrayRef SourceFloat::*, &SourceFloat::m_floatArray)
PRIVATE_MEMBER(referencesOn, daeInt daeRefCountedObj::*, &daeRefCountedObj::_refCount)

TEST(SourceTest, FieldsStandInTheirOrder)
{
    const SourceFloat source;
    const Source& base = source;
    expectAscending({&sourceDataType(base), &arrayCountOf(base), &sourceId(base), &accessorOf(base), &elementOf(base),
                     &singleValueOf(base), &floatArrayOf(source)});
}

#if defined(__x86_64__) && defined(__GNUC__)
TEST(SourceTest, VirtualOperationsStandInTheirOrder)
{
    // The destructor takes the first two places.
    EXPECT_EQ(2u, slotOf(&Source::createFromCollada));
    EXPECT_EQ(3u, slotOf(&Source::operator[]));
}
#endif

constexpr unsigned noIndex = 0xFFFFFFFFu;

/// A source whose accessor leads to names instead of floats.
std::string failedSource(const std::string& id, const std::string& values, const std::string& attributes)
{
    return "<source id='" + id + "'>" + floatArray(id + "-array", values) + accessorTo("words", attributes, PARAM_X) +
           "</source>";
}

/// A document with a mesh with these sources; its one input has the given reference.
class SourceDocument {
public:
    explicit SourceDocument(const std::string& sources, const std::string& reference = "#source")
    {
        m_builder.add("<library_geometries><geometry id='geometry'><mesh><source id='names'><Name_array id='words' "
                      "count='1'>a</Name_array></source><source id='integers'><int_array id='ints' count='1'>1"
                      "</int_array></source>" +
                      sources + "<vertices id='vertices'><input semantic='POSITION' source='" + reference +
                      "'/></vertices></mesh></geometry></library_geometries>");
        m_builder.open();
    }

    SourceRef source(const char* id = "source") { return m_builder.element<domSource>(id); }
    FloatArrayRef array(const char* id = "source-array") { return m_builder.element<domFloat_array>(id); }
    daeTArray<double>& values(const char* id = "source-array") { return array(id)->getValue(); }
    /// The reference of the one input.
    const daeURI& reference() { return m_builder.element<domVertices>("vertices")->getInput_array()[0]->getSource(); }

private:
    SilentDocumentModel m_silence;
    ColladaBuilder m_builder;
};

std::uint32_t bitsIn(const Data& data)
{
    std::uint32_t bits = 0;
    std::memcpy(&bits, data[0].get(), sizeof(bits));
    return bits;
}

const char* const bareAssertion = "libVideo/SceneGraph/Source: index < m_arrayCount";
const char* const accessorAssertion = "libVideo/SceneGraph/Accessor: index < m_count";
const char* const typeAssertion = "libVideo/SceneGraph/Accessor: false";
const char* const accessorFailedLine = "libVideo.accessor: Data source is not a float array Name_array";
const char* const accessorReachLine = "libVideo.accessor: Accessor reaches beyond its float array";
const char* const accessorEmptyLine = "libVideo.accessor: No data to read from the accessor";
const char* const noArrayLine = "libVideo.source: Source has no float array";

/// A source for tests, which records requests.
class PlainSource : public Source {
public:
    explicit PlainSource(DataType type) : Source(type) {}
    PlainSource(DataType type, const SourceRef& source) : Source(type, source) {}

    bool createFromCollada(const SourceRef& /*source*/) override { return false; }
    const DataList& operator[](unsigned index) const override
    {
        asked.push_back(index);
        return list;
    }

    mutable std::vector<unsigned> asked;
    DataList list;
};

// --- Source ---

TEST(SourceTest, FieldsStartWithTheirDefaults)
{
    const PlainSource source(libVideo::DATA_TYPE_FLOAT3);
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT3, source.dataType());
    EXPECT_EQ(0u, arrayCountOf(source));
    EXPECT_TRUE(source.id().empty());
    EXPECT_EQ(nullptr, accessorOf(source).get());
    EXPECT_EQ(0u, accessorOf(source).useCount());
    EXPECT_TRUE(elementOf(source) == nullptr);
    EXPECT_EQ(0u, singleValueOf(source).size());
    EXPECT_FALSE(source.isInitialized());
}

TEST(SourceTest, ConstructorWithAnElementOnlyKeepsIt)
{
    SourceDocument document(sourceXml("source", "1 2"));
    const SourceRef element = document.source();
    const PlainSource source(libVideo::DATA_TYPE_FLOAT, element);
    EXPECT_TRUE(source.isInitialized());
    EXPECT_TRUE(elementOf(source) == element);
    EXPECT_TRUE(source.id().empty());
    EXPECT_EQ(0u, arrayCountOf(source));
    EXPECT_EQ(nullptr, accessorOf(source).get());
    EXPECT_EQ(0u, singleValueOf(source).size());
}

TEST(SourceTest, DataForwardsToTheVirtualRead)
{
    const PlainSource source(libVideo::DATA_TYPE_FLOAT);
    EXPECT_EQ(&source.list, &source.data(7));
    EXPECT_EQ(&source.list, &static_cast<const Source&>(source).data(noIndex));
    EXPECT_EQ((std::vector<unsigned>{7, noIndex}), source.asked);
}

TEST(SourceTest, OnlyAnAccessorGivesCountStrideAndSize)
{
    SourceDocument document(sourceXml("source", "1 2 3 4 5 6 7 8 9 10 11 12", "count='4' stride='3'", PARAMS_XYZ) +
                            sourceXml("bare", "1 2 3"));
    const SourceFloat source(document.source());
    EXPECT_EQ(4u, source.count());
    EXPECT_EQ(3u, source.stride());
    EXPECT_EQ(12u, source.bytePerAccess());
    const SourceFloat bare(document.source("bare"));
    EXPECT_EQ(0u, bare.count());
    EXPECT_EQ(0u, bare.stride());
    EXPECT_EQ(0u, bare.bytePerAccess());
    EXPECT_EQ(3u, arrayCountOf(bare));
}

TEST(SourceTest, BackedCountIsHowManyRecordsBeginInTheArray)
{
    SourceDocument document(sourceXml("source", "1 2 3 4", "count='3'", PARAMS_XYZ) +
                            sourceXml("whole", "1 2 3 4 5 6 7 8 9", "count='2'", PARAMS_XYZ) +
                            sourceXml("bare", "1 2 3") + failedSource("failed", "1 2", "count='2'"));
    const LogCapture unread;
    EXPECT_EQ(2u, SourceFloat(document.source()).backedCount());
    EXPECT_EQ(2u, SourceFloat(document.source("whole")).backedCount());
    EXPECT_EQ(0u, SourceFloat(document.source("bare")).backedCount());
    EXPECT_EQ(0u, SourceFloat(document.source("failed")).backedCount());
}

// --- the empty source ---

TEST(SourceFloatTest, EmptySourceIsOfInvalidTypeAndNotInitialized)
{
    const SourceFloat source;
    EXPECT_FALSE(source.isInitialized());
    EXPECT_EQ(9u, static_cast<unsigned>(source.dataType()));
    EXPECT_TRUE(source.id().empty());
    EXPECT_EQ(0u, source.count());
    EXPECT_EQ(0u, source.stride());
    EXPECT_EQ(0u, source.bytePerAccess());
    EXPECT_EQ(0u, arrayCountOf(source));
    EXPECT_TRUE(floatArrayOf(source) == nullptr);
}

TEST(SourceFloatTest, EmptySourceStopsEveryRead)
{
    const SourceFloat source;
    EXPECT_EQ(bareAssertion, assertionOf([&] { source[0]; }));
    EXPECT_EQ(bareAssertion, assertionOf([&] { source.data(0); }));
    EXPECT_EQ(bareAssertion, assertionOf([&] { source.data(noIndex); }));
}

TEST(SourceFloatTest, LoadOfAnEmptySourceLeavesItUninitialized)
{
    SourceDocument document(sourceXml("source", "1 2 3", "count='1'", PARAMS_XYZ) + sourceXml("bare", "5 6"));
    SourceFloat source;
    EXPECT_TRUE(source.createFromCollada(document.source()));
    EXPECT_FALSE(source.isInitialized());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT3, source.dataType());
    EXPECT_EQ((Floats{1, 2, 3}), floatsIn(source.data(0)));

    SourceFloat bare;
    EXPECT_TRUE(bare.createFromCollada(document.source("bare")));
    EXPECT_FALSE(bare.isInitialized());
    EXPECT_EQ(libVideo::DATA_TYPE_INVALID, bare.dataType()); // a bare array does not give the type
    EXPECT_EQ((Floats{6}), floatsIn(bare.data(1)));
}

TEST(SourceFloatTest, NullElementThrowsNullPointer)
{
    const SourceRef none;
    SourceFloat source;
    EXPECT_THROW(source.createFromCollada(none), vesk::NullPointer);
    EXPECT_FALSE(source.isInitialized());
    EXPECT_TRUE(source.id().empty());
    EXPECT_THROW(SourceFloat constructed(none), vesk::NullPointer);
}

// --- through an accessor ---

struct TypeCase : Row {
    const char* attributes;
    const char* params;
    DataType type;
    unsigned stride;
};

const char* const sixteenFloats = "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16";

class SourceTypeTest : public testing::TestWithParam<TypeCase> {};

TEST_P(SourceTypeTest, StrideOfTheAccessorGivesTheType)
{
    SourceDocument document(sourceXml("source", sixteenFloats, GetParam().attributes, GetParam().params));
    const LogCapture log;
    SourceFloat source;
    EXPECT_TRUE(source.createFromCollada(document.source()));
    EXPECT_EQ(GetParam().type, source.dataType());
    EXPECT_EQ(GetParam().stride, source.stride());
    EXPECT_EQ(1u, source.count());
    EXPECT_EQ(GetParam().type, SourceFloat(document.source()).dataType());
    EXPECT_EQ(Texts(), log.messages());
}

INSTANTIATE_ROWS(Documents, SourceTypeTest, {"One", "count='1'", PARAM_X, libVideo::DATA_TYPE_FLOAT, 1},
                 {"Two", "count='1'", PARAM_X PARAM_X, libVideo::DATA_TYPE_FLOAT2, 2},
                 {"TwoByTheAttribute", "count='1' stride='2'", PARAM_X, libVideo::DATA_TYPE_FLOAT2, 2},
                 {"Three", "count='1'", PARAMS_XYZ, libVideo::DATA_TYPE_FLOAT3, 3},
                 {"ThreeWithoutParams", "count='1' stride='3'", "", libVideo::DATA_TYPE_FLOAT3, 3},
                 {"Four", "count='1' stride='4'", PARAMS_XYZ PARAM_X, libVideo::DATA_TYPE_FLOAT4, 4},
                 {"Matrix", "count='1'", PARAM_MATRIX, libVideo::DATA_TYPE_FLOAT4X4, 16},
                 {"SixteenByTheAttribute", "count='1' stride='16'", PARAM_X, libVideo::DATA_TYPE_FLOAT4X4, 16},
                 {"MatrixParamUnderAStrideOfThree", "count='1' stride='3'", PARAM_MATRIX, libVideo::DATA_TYPE_FLOAT3,
                  3});

struct OtherStrideCase : Row {
    const char* attributes;
    const char* params;
    unsigned stride;
    const char* line;
};

class SourceOtherStrideTest : public testing::TestWithParam<OtherStrideCase> {};

TEST_P(SourceOtherStrideTest, StrideOutsideTheTableLogsItAndKeepsTypeAndAccessor)
{
    SourceDocument document(sourceXml("source", sixteenFloats, GetParam().attributes, GetParam().params));
    LogCapture log;
    SourceFloat source;
    EXPECT_FALSE(source.createFromCollada(document.source()));
    EXPECT_EQ((Texts{std::string("libVideo.source: ") + GetParam().line}), log.messages());
    EXPECT_EQ(libVideo::DATA_TYPE_INVALID, source.dataType());
    EXPECT_EQ(GetParam().stride, source.stride());
    EXPECT_EQ(1u, source.count());
    EXPECT_EQ(vesk::String("source"), source.id());
    EXPECT_EQ(1.0f, floatIn(source.data(0)[0]));
    // The bare array is not loaded on this path.
    EXPECT_EQ(0u, arrayCountOf(source));
    EXPECT_TRUE(floatArrayOf(source) == nullptr);

    log.clear();
    const SourceFloat constructed(document.source());
    EXPECT_EQ(1u, log.lines().size());
    EXPECT_TRUE(constructed.isInitialized());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT, constructed.dataType());
    EXPECT_EQ(1.0f, floatIn(constructed.data(0)[0]));

    log.clear();
    const SourceHandle created = libVideo::createSourceFromCollada(document.reference());
    EXPECT_EQ(1u, log.lines().size());
    ASSERT_NE(nullptr, created.get());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT, created->dataType());
    EXPECT_EQ(GetParam().stride, created->stride());
}

#define NO_TYPE "Does not have a matching float data type for stride "

INSTANTIATE_ROWS(Documents, SourceOtherStrideTest, {"Zero", "count='1'", "", 0, NO_TYPE "0"},
                 {"Five", "count='1' stride='5'", PARAMS_XYZ, 5, NO_TYPE "5"},
                 {"FiveParams", "count='1'", PARAMS_XYZ PARAM_X PARAM_X, 5, NO_TYPE "5"},
                 {"Six", "count='1' stride='6'", PARAM_X, 6, NO_TYPE "6"},
                 {"Eight", "count='1' stride='8'", PARAM_X, 8, NO_TYPE "8"},
                 {"Nine", "count='1' stride='9'", PARAM_X, 9, NO_TYPE "9"},
                 {"Fifteen", "count='1' stride='15'", PARAM_X, 15, NO_TYPE "15"},
                 {"Seventeen", "count='1' stride='17'", PARAM_X, 17, NO_TYPE "17"},
                 {"Most", "count='1' stride='4294967295'", PARAM_X, 4294967295u, NO_TYPE "4294967295"});

TEST(SourceFloatTest, TwelveValuesUnderAStrideOfThreeAreFourRecords)
{
    SourceDocument document(sourceXml("source", "1 2 3 4 5 6 7 8 9 10 11 12", "count='4' stride='3'", PARAMS_XYZ));
    const LogCapture log;
    const SourceFloat source(document.source());
    EXPECT_TRUE(source.isInitialized());
    EXPECT_EQ(vesk::String("source"), source.id());
    EXPECT_EQ(3u, static_cast<unsigned>(source.dataType()));
    EXPECT_EQ(4u, source.count());
    EXPECT_EQ(3u, source.stride());
    EXPECT_EQ((Floats{1, 2, 3}), floatsIn(source.data(0)));
    EXPECT_EQ((Floats{10, 11, 12}), floatsIn(source[3]));
    EXPECT_EQ((Floats{4, 5, 6}), floatsIn(source[1]));
    EXPECT_EQ(Texts(), log.messages());
}

TEST(SourceFloatTest, MatrixParamGivesSixteenTokens)
{
    SourceDocument document(sourceXml("source", sixteenFloats, "count='1' stride='16'", PARAM_MATRIX));
    const SourceFloat source(document.source());
    EXPECT_EQ(8u, static_cast<unsigned>(source.dataType()));
    EXPECT_EQ(1024u, source.bytePerAccess());
    EXPECT_EQ((Floats{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}), floatsIn(source.data(0)));
}

TEST(SourceFloatTest, AccessorLoadLeavesTheBareFieldsAlone)
{
    SourceDocument document(sourceXml("source", "1 2 3", "count='1'", PARAMS_XYZ));
    const SourceFloat source(document.source());
    EXPECT_EQ(0u, arrayCountOf(source));
    EXPECT_TRUE(floatArrayOf(source) == nullptr);
    EXPECT_EQ(0u, singleValueOf(source).size());
    EXPECT_NE(nullptr, accessorOf(source).get());
    EXPECT_EQ(1u, accessorOf(source).useCount());
}

TEST(SourceFloatTest, AccessorHasItsOwnBound)
{
    // The array has nine values, the accessor two records.
    SourceDocument document(sourceXml("source", "1 2 3 4 5 6 7 8 9", "count='2'", PARAMS_XYZ));
    const SourceFloat source(document.source());
    EXPECT_EQ("none", assertionOf([&] { source.data(1); }));
    EXPECT_EQ(accessorAssertion, assertionOf([&] { source.data(2); }));
    EXPECT_EQ(accessorAssertion, assertionOf([&] { source[noIndex]; }));
    EXPECT_EQ((Floats{4, 5, 6}), floatsIn(source.data(1)));
}

TEST(SourceFloatTest, AccessorHasItsOwnCache)
{
    SourceDocument document(sourceXml("source", "1 2 3 4", "count='2'", PARAM_X PARAM_X));
    const SourceFloat source(document.source());
    const DataList& first = source.data(0);
    document.values()[0] = 50.0;
    EXPECT_EQ(&first, &source.data(0));
    EXPECT_EQ((Floats{1, 2}), floatsIn(source.data(0)));
    source.data(1);
    EXPECT_EQ((Floats{50, 2}), floatsIn(source.data(0)));
}

TEST(SourceFloatTest, AccessorMayReadTheArrayOfAnotherSource)
{
    SourceDocument document(sourceXml("other", "7 8 9") + "<source id='source'>" + floatArray("source-array", "1 2") +
                            accessorTo("other-array", "count='3'", PARAM_X) + "</source>");
    const SourceFloat source(document.source());
    EXPECT_EQ(3u, source.count());
    EXPECT_EQ((Floats{9}), floatsIn(source.data(2)));
}

TEST(SourceFloatTest, ShortArrayIsToldByTheAccessorBeforeTheStride)
{
    SourceDocument document(sourceXml("source", "1 2 3 4", "count='2' stride='5'", PARAM_X));
    const LogCapture log;
    SourceFloat source;
    EXPECT_FALSE(source.createFromCollada(document.source()));
    EXPECT_EQ((Texts{accessorReachLine, "libVideo.source: " NO_TYPE "5"}), log.messages());
}

TEST(SourceFloatTest, ShortArrayReadsItsMissingValuesAsZero)
{
    SourceDocument document(sourceXml("source", "1 2 3 4", "count='3'", PARAMS_XYZ));
    LogCapture log;
    SourceFloat source;
    EXPECT_TRUE(source.createFromCollada(document.source()));
    EXPECT_EQ((Texts{accessorReachLine}), log.messages());
    log.clear();
    EXPECT_EQ((Floats{4, 0, 0}), floatsIn(source.data(1)));
    EXPECT_EQ((Floats{0, 0, 0}), floatsIn(source.data(2)));
    EXPECT_EQ(Texts(), log.messages());
}

TEST(SourceFloatTest, UnknownParamTypeThrowsAndLeavesTheAccessorInTheSource)
{
    SourceDocument document(sourceXml("source", "1 2 3", "count='3'", "<param name='X' type='int'/>"));
    SourceFloat source;
    EXPECT_EQ(typeAssertion, assertionOf([&] { source.createFromCollada(document.source()); }));
    EXPECT_EQ(vesk::String("source"), source.id());
    EXPECT_EQ(3u, source.count());
    EXPECT_EQ(libVideo::DATA_TYPE_INVALID, source.dataType());
    EXPECT_EQ(0u, arrayCountOf(source));
    EXPECT_EQ(typeAssertion, assertionOf([&] { SourceFloat constructed(document.source()); }));
}

TEST(SourceFloatTest, ReadsThroughTheAccessorAllocateNothing)
{
    SourceDocument document(sourceXml("source", "1 2 3 4 5 6", "count='2'", PARAMS_XYZ));
    const SourceFloat source(document.source());
    long requests = -1;
    {
        const FailingAllocator allocator(-1);
        source.data(0);
        source.data(1);
        source.data(1);
        source.data(0);
        requests = allocator.requests();
    }
    EXPECT_EQ(0, requests);
    EXPECT_EQ((Floats{1, 2, 3}), floatsIn(source.data(0)));
}

// --- the bare array ---

TEST(SourceFloatTest, BareSourceIsReadFloatByFloat)
{
    SourceDocument document(sourceXml("source", "1.5 -2 3.25"));
    const LogCapture log;
    SourceFloat source(document.source());
    EXPECT_TRUE(source.isInitialized());
    EXPECT_EQ(vesk::String("source"), source.id());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT, source.dataType());
    EXPECT_EQ(nullptr, accessorOf(source).get());
    EXPECT_TRUE(floatArrayOf(source) == document.array());
    EXPECT_EQ((Floats{1.5f}), floatsIn(source.data(0)));
    EXPECT_EQ((Floats{3.25f}), floatsIn(source.data(2)));
    EXPECT_EQ((Floats{-2.0f}), floatsIn(source[1]));
    EXPECT_TRUE(source.createFromCollada(document.source()));
    EXPECT_EQ(Texts(), log.messages());
}

TEST(SourceFloatTest, BareSourceGivesOneComponentOfOneFloat)
{
    SourceDocument document(sourceXml("source", "1 2"));
    const SourceFloat source(document.source());
    const DataList& list = source.data(1);
    ASSERT_EQ(1u, list.size());
    EXPECT_TRUE(list[0].name().empty());
    EXPECT_EQ(1u, list[0].stride());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT, list[0].dataType());
    EXPECT_EQ(0u, list[0].offset());
    EXPECT_EQ(4u, list[0].tokenByteSize());
}

TEST(SourceFloatTest, LaterReadOfABareSourceShowsThroughTheListOfAnEarlierOne)
{
    SourceDocument document(sourceXml("source", "1 2 3"));
    const SourceFloat source(document.source());
    const DataList& kept = source.data(0);
    EXPECT_EQ(1.0f, floatIn(kept[0]));
    const DataList& later = source.data(2);
    EXPECT_EQ(&kept, &later);
    EXPECT_EQ(3.0f, floatIn(kept[0]));
}

TEST(SourceFloatTest, BareSourceKeepsNoRecord)
{
    SourceDocument document(sourceXml("source", "1 2"));
    const SourceFloat source(document.source());
    EXPECT_EQ((Floats{1}), floatsIn(source.data(0)));
    document.values()[0] = 9.0;
    EXPECT_EQ((Floats{9}), floatsIn(source.data(0)));
}

TEST(SourceFloatTest, BareSourcesHaveListsOfTheirOwn)
{
    SourceDocument document(sourceXml("source", "1 2") + sourceXml("other", "7 8"));
    const SourceFloat source(document.source());
    const SourceFloat same(document.source());
    const SourceFloat other(document.source("other"));
    const DataList& kept = source.data(0);
    same.data(1);
    other.data(1);
    EXPECT_EQ((Floats{1}), floatsIn(kept));
    // They do not write to the values that their lists were copied from either.
    const SourceFloat late(document.source());
    EXPECT_EQ((Floats{0}), floatsIn(singleValueOf(late)));
}

TEST(SourceFloatTest, BareReadHasToLieBelowTheCountOfTheArray)
{
    SourceDocument document(sourceXml("source", "1 2 3"));
    const SourceFloat source(document.source());
    EXPECT_EQ("none", assertionOf([&] { source.data(2); }));
    EXPECT_EQ(bareAssertion, assertionOf([&] { source.data(3); }));
    EXPECT_EQ(bareAssertion, assertionOf([&] { source[noIndex]; }));
    EXPECT_EQ((Floats{3}), floatsIn(singleValueOf(source)));
}

TEST(SourceFloatTest, CountOfABareSourceIsTheAttribute)
{
    SourceDocument document("<source id='source'><float_array id='few' count='2'>1 2 3</float_array></source>"
                            "<source id='more'><float_array id='many' count='4'>1 2 3</float_array></source>"
                            "<source id='none'><float_array id='absent'>1 2 3</float_array></source>");
    const LogCapture log;
    const SourceFloat few(document.source());
    EXPECT_EQ(bareAssertion, assertionOf([&] { few.data(2); }));
    const SourceFloat more(document.source("more"));
    EXPECT_EQ((Floats{3}), floatsIn(more.data(2)));
    EXPECT_EQ((Floats{0}), floatsIn(more.data(3))); // not in the document
    EXPECT_EQ(bareAssertion, assertionOf([&] { more.data(4); }));
    SourceFloat none;
    EXPECT_FALSE(none.createFromCollada(document.source("none")));
    EXPECT_EQ(bareAssertion, assertionOf([&] { none.data(0); }));
    EXPECT_EQ(Texts(), log.messages());
}

TEST(SourceFloatTest, EmptyBareSourceIsFalseWithoutALine)
{
    SourceDocument document(sourceXml("source", ""));
    const LogCapture log;
    SourceFloat source;
    EXPECT_FALSE(source.createFromCollada(document.source()));
    EXPECT_EQ(vesk::String("source"), source.id());
    EXPECT_TRUE(floatArrayOf(source) == document.array());
    EXPECT_EQ(1u, singleValueOf(source).size());
    EXPECT_EQ(bareAssertion, assertionOf([&] { source.data(0); }));
    EXPECT_EQ(Texts(), log.messages());
}

TEST(SourceFloatTest, BareValueIsNarrowedToTheNearestFloat)
{
    // 3DCCCCCD is nearest to 0.1; 2^24 + 1 is between two floats and rounds to the even one.
    SourceDocument document(sourceXml("source", "0.1 16777217 -0.0"));
    const SourceFloat source(document.source());
    EXPECT_EQ(0x3DCCCCCDu, bitsIn(source.data(0)[0]));
    EXPECT_EQ(0x4B800000u, bitsIn(source.data(1)[0]));
    EXPECT_EQ(0x80000000u, bitsIn(source.data(2)[0]));
}

TEST(SourceFloatTest, ReadsOfABareSourceAllocateNothing)
{
    SourceDocument document(sourceXml("source", "1 2 3"));
    const SourceFloat source(document.source());
    long requests = -1;
    {
        const FailingAllocator allocator(-1);
        source.data(0);
        source.data(2);
        source.data(1);
        requests = allocator.requests();
    }
    EXPECT_EQ(0, requests);
    EXPECT_EQ((Floats{2}), floatsIn(singleValueOf(source)));
}

TEST(SourceFloatTest, TechniqueWithoutAccessorIsABareSource)
{
    SourceDocument document("<source id='source'>" + floatArray("source-array", "4 5") +
                            "<technique_common/></source>");
    const LogCapture log;
    SourceFloat source;
    EXPECT_TRUE(source.createFromCollada(document.source()));
    EXPECT_EQ(nullptr, accessorOf(source).get());
    EXPECT_EQ((Floats{5}), floatsIn(source.data(1)));
    EXPECT_EQ(Texts(), log.messages());
}

// --- an accessor that failed ---

TEST(SourceFloatTest, FailedAccessorStaysAndTheArrayIsLoadedInVain)
{
    SourceDocument document(failedSource("source", "1 2 3", "count='2'"));
    LogCapture log;
    SourceFloat source;
    EXPECT_TRUE(source.createFromCollada(document.source())); // the array has values
    EXPECT_EQ((Texts{accessorFailedLine}), log.messages());
    EXPECT_EQ(libVideo::DATA_TYPE_INVALID, source.dataType());
    EXPECT_EQ(2u, source.count());
    EXPECT_EQ(0u, source.stride());
    EXPECT_EQ(0u, source.bytePerAccess());
    EXPECT_EQ(3u, arrayCountOf(source));
    EXPECT_TRUE(floatArrayOf(source) == document.array());
    EXPECT_EQ(1u, singleValueOf(source).size());

    log.clear();
    EXPECT_EQ(0u, source.data(0).size());
    EXPECT_EQ(0u, source.data(1).size());
    EXPECT_EQ(0u, source.data(1).size());
    EXPECT_EQ((Texts{accessorEmptyLine, accessorEmptyLine, accessorEmptyLine}), log.messages());
    // The array would have a third value.
    EXPECT_EQ(accessorAssertion, assertionOf([&] { source.data(2); }));
}

TEST(SourceFloatTest, FailedAccessorOverAnEmptyArrayIsFalse)
{
    SourceDocument document(failedSource("source", "", "count='2'"));
    const LogCapture log;
    SourceFloat source;
    EXPECT_FALSE(source.createFromCollada(document.source()));
    EXPECT_EQ((Texts{accessorFailedLine}), log.messages());
    EXPECT_EQ(2u, source.count());
}

TEST(SourceFloatTest, FailedAccessorSourceIsInitializedAndAFloat)
{
    SourceDocument document(failedSource("source", "1", "count='0'"));
    const LogCapture unread;
    const SourceFloat source(document.source());
    EXPECT_TRUE(source.isInitialized());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT, source.dataType());
    EXPECT_EQ(accessorAssertion, assertionOf([&] { source.data(0); }));
}

TEST(SourceFloatTest, AccessorThatLeadsNowhereShowsItsReference)
{
    SourceDocument document("<source id='source'>" + floatArray("source-array", "1") +
                            accessorTo("nothing", "count='1'", PARAM_X) + "</source>");
    const LogCapture log;
    SourceFloat source;
    EXPECT_TRUE(source.createFromCollada(document.source()));
    EXPECT_EQ((Texts{"libVideo.accessor: Data source is not a float array #nothing"}), log.messages());
}

// --- no float array ---

TEST(SourceFloatTest, SourceWithoutFloatArrayIsFalseWithALine)
{
    SourceDocument document("");
    const LogCapture log;
    SourceFloat source;
    EXPECT_FALSE(source.createFromCollada(document.source("names")));
    EXPECT_EQ((Texts{noArrayLine}), log.messages());
    EXPECT_EQ(vesk::String("names"), source.id());
    EXPECT_EQ(0u, arrayCountOf(source));
    EXPECT_TRUE(floatArrayOf(source) == nullptr);
    EXPECT_EQ(bareAssertion, assertionOf([&] { source.data(0); }));
    EXPECT_TRUE(SourceFloat(document.source("integers")).isInitialized());
}

TEST(SourceFloatTest, SourceWithoutFloatArrayTellsOfItsAccessorFirst)
{
    SourceDocument document("<source id='source'><Name_array id='own' count='1'>a</Name_array>" +
                            accessorTo("own", "count='1'", PARAM_X) + "</source>");
    const LogCapture log;
    SourceFloat source;
    EXPECT_FALSE(source.createFromCollada(document.source()));
    EXPECT_EQ((Texts{accessorFailedLine, noArrayLine}), log.messages());
    EXPECT_EQ(1u, source.count());
}

TEST(SourceFloatTest, SourceWithoutFloatArrayLoadsIfItsAccessorFindsOne)
{
    SourceDocument document(sourceXml("other", "7 8") + "<source id='source'>" +
                            accessorTo("other-array", "count='2'", PARAM_X) + "</source>");
    const LogCapture log;
    SourceFloat source;
    EXPECT_TRUE(source.createFromCollada(document.source()));
    EXPECT_EQ((Floats{8}), floatsIn(source.data(1)));
    EXPECT_EQ(Texts(), log.messages());
}

TEST(SourceFloatTest, AbsentIdIsEmpty)
{
    SourceDocument document("<source>" + floatArray("source-array", "1") + "</source>");
    const SourceRef element = daeSafeCast<domSource>(document.array()->getParent());
    SourceFloat source;
    EXPECT_TRUE(source.createFromCollada(element));
    EXPECT_TRUE(source.id().empty());
}

// --- a second load ---

TEST(SourceFloatTest, SecondLoadReplacesAndReleasesTheAccessor)
{
    SourceDocument document(sourceXml("source", "1 2 3 4 5 6", "count='2'", PARAMS_XYZ) +
                            sourceXml("other", "7 8", "count='1'", PARAM_X PARAM_X));
    SourceFloat source(document.source());
    source.data(1);
    const AccessorHandle held = accessorOf(source);
    EXPECT_EQ(2u, held.useCount());
    EXPECT_TRUE(source.createFromCollada(document.source("other")));
    EXPECT_EQ(1u, held.useCount());
    EXPECT_NE(held.get(), accessorOf(source).get());
    EXPECT_EQ(vesk::String("other"), source.id());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT2, source.dataType());
    EXPECT_EQ(1u, source.count());
    EXPECT_EQ((Floats{7, 8}), floatsIn(source.data(0)));
    // The element of the constructor stays.
    EXPECT_TRUE(elementOf(source) == document.source());
}

TEST(SourceFloatTest, SecondLoadOfABareArrayKeepsReadingThroughTheAccessorOfTheFirst)
{
    SourceDocument document(sourceXml("source", "1 2 3", "count='1'", PARAMS_XYZ) + sourceXml("other", "7 8"));
    SourceFloat source(document.source());
    EXPECT_TRUE(source.createFromCollada(document.source("other")));
    EXPECT_EQ(vesk::String("other"), source.id());
    EXPECT_EQ(2u, arrayCountOf(source));
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT3, source.dataType());
    EXPECT_EQ(1u, source.count());
    EXPECT_EQ((Floats{1, 2, 3}), floatsIn(source.data(0)));
    EXPECT_EQ(accessorAssertion, assertionOf([&] { source.data(1); }));
}

TEST(SourceFloatTest, SecondLoadWithAnAccessorWinsOverTheBareArray)
{
    SourceDocument document(sourceXml("source", "7 8") + sourceXml("other", "1 2 3", "count='1'", PARAMS_XYZ));
    SourceFloat source(document.source());
    source.data(1);
    EXPECT_TRUE(source.createFromCollada(document.source("other")));
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT3, source.dataType());
    EXPECT_EQ((Floats{1, 2, 3}), floatsIn(source.data(0)));
    EXPECT_EQ(2u, arrayCountOf(source)); // as the first load left it
}

TEST(SourceFloatTest, SecondLoadOfABareArrayReplacesTheFirst)
{
    SourceDocument document(sourceXml("source", "1 2 3") + sourceXml("other", "7"));
    const FloatArrayRef firstArray = document.array();
    const FloatArrayRef secondArray = document.array("other-array");
    const daeInt first = referencesOn(*firstArray);
    const daeInt second = referencesOn(*secondArray);
    SourceFloat source(document.source());
    EXPECT_EQ(first + 1, referencesOn(*firstArray));
    EXPECT_TRUE(source.createFromCollada(document.source("other")));
    EXPECT_EQ(first, referencesOn(*firstArray));
    EXPECT_EQ(second + 1, referencesOn(*secondArray));
    EXPECT_EQ(1u, singleValueOf(source).size());
    EXPECT_EQ((Floats{7}), floatsIn(source.data(0)));
    EXPECT_EQ(bareAssertion, assertionOf([&] { source.data(1); }));
}

TEST(SourceFloatTest, StrideOutsideTheTableKeepsTheTypeOfTheLoadBefore)
{
    SourceDocument document(sourceXml("source", "1 2 3", "count='1'", PARAMS_XYZ) +
                            sourceXml("other", "7 8 9 10 11", "count='1' stride='5'", PARAM_X));
    const LogCapture unread;
    SourceFloat source(document.source());
    EXPECT_FALSE(source.createFromCollada(document.source("other")));
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT3, source.dataType());
    EXPECT_EQ(5u, source.stride());
    EXPECT_EQ((Floats{7}), floatsIn(source.data(0)));
}

// --- copies and references on the document ---

TEST(SourceCopyTest, CopyHasAllFieldsAndSharesTheAccessor)
{
    SourceDocument document(sourceXml("source", "1 2 3 4 5 6", "count='2'", PARAMS_XYZ));
    const SourceFloat source(document.source());
    source.data(0);
    const SourceFloat copy(source);
    EXPECT_EQ(vesk::String("source"), copy.id());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT3, copy.dataType());
    EXPECT_TRUE(copy.isInitialized());
    EXPECT_TRUE(elementOf(copy) == elementOf(source));
    EXPECT_EQ(accessorOf(source).get(), accessorOf(copy).get());
    EXPECT_EQ(2u, accessorOf(source).useCount());
}

TEST(SourceCopyTest, CopiesShareOneCurrentRecord)
{
    SourceDocument document(sourceXml("source", "1 2 3 4 5 6", "count='2'", PARAMS_XYZ));
    const SourceFloat source(document.source());
    const SourceFloat copy(source);
    const DataList& kept = source.data(0);
    EXPECT_EQ((Floats{1, 2, 3}), floatsIn(kept));
    EXPECT_EQ(&kept, &copy.data(1));
    EXPECT_EQ((Floats{4, 5, 6}), floatsIn(kept));
}

TEST(SourceCopyTest, CopyOfABareSourceHasAListOfItsOwn)
{
    SourceDocument document(sourceXml("source", "1 2 3"));
    const SourceFloat source(document.source());
    source.data(1);
    const SourceFloat copy(source);
    EXPECT_EQ(3u, arrayCountOf(copy));
    EXPECT_TRUE(floatArrayOf(copy) == floatArrayOf(source));
    EXPECT_EQ((Floats{2}), floatsIn(singleValueOf(copy)));
    copy.data(2);
    EXPECT_EQ((Floats{2}), floatsIn(singleValueOf(source)));
    EXPECT_EQ((Floats{3}), floatsIn(singleValueOf(copy)));
}

TEST(SourceCopyTest, AssignmentReplacesAllFields)
{
    SourceDocument document(sourceXml("source", "1 2 3") + sourceXml("other", "7 8", "count='1'", PARAM_X PARAM_X));
    const SourceFloat source(document.source());
    source.data(1);
    SourceFloat target(document.source("other"));
    const AccessorHandle held = accessorOf(target);
    const SourceFloat& result = (target = source);
    EXPECT_EQ(&target, &result);
    EXPECT_EQ(1u, held.useCount());
    EXPECT_EQ(vesk::String("source"), target.id());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT, target.dataType());
    EXPECT_EQ(nullptr, accessorOf(target).get());
    EXPECT_TRUE(elementOf(target) == document.source());
    EXPECT_EQ((Floats{2}), floatsIn(singleValueOf(target)));
    EXPECT_EQ((Floats{3}), floatsIn(target.data(2)));
}

TEST(SourceCopyTest, AssignmentOfTheBaseSharesTheAccessor)
{
    SourceDocument document(sourceXml("source", "1 2 3 4 5 6", "count='2'", PARAMS_XYZ));
    const SourceFloat source(document.source());
    SourceFloat target;
    static_cast<Source&>(target) = source;
    EXPECT_TRUE(target.isInitialized());
    EXPECT_EQ(accessorOf(source).get(), accessorOf(target).get());
    EXPECT_EQ((Floats{4, 5, 6}), floatsIn(target.data(1)));
}

TEST(SourceCopyTest, CopyOutlivesItsSource)
{
    SourceDocument document(sourceXml("source", "1 2 3 4 5 6", "count='2'", PARAMS_XYZ) + sourceXml("bare", "7 8"));
    auto source = std::make_unique<SourceFloat>(document.source());
    auto bare = std::make_unique<SourceFloat>(document.source("bare"));
    const SourceFloat copy(*source);
    const SourceFloat bareCopy(*bare);
    source.reset();
    bare.reset();
    EXPECT_EQ((Floats{4, 5, 6}), floatsIn(copy.data(1)));
    EXPECT_EQ((Floats{8}), floatsIn(bareCopy.data(1)));
}

TEST(SourceCopyTest, SourceAndItsCopiesHoldReferencesOnElementAndArray)
{
    SourceDocument document(sourceXml("source", "1 2"));
    const SourceRef element = document.source();
    const FloatArrayRef array = document.array();
    const daeInt onElement = referencesOn(*element);
    const daeInt onArray = referencesOn(*array);
    {
        const SourceFloat source(element);
        EXPECT_EQ(onElement + 1, referencesOn(*element));
        EXPECT_EQ(onArray + 1, referencesOn(*array));
        const SourceFloat copy(source);
        EXPECT_EQ(onElement + 2, referencesOn(*element));
        EXPECT_EQ(onArray + 2, referencesOn(*array));
        SourceFloat assigned;
        assigned = copy;
        EXPECT_EQ(onElement + 3, referencesOn(*element));
        EXPECT_EQ(onArray + 3, referencesOn(*array));
    }
    EXPECT_EQ(onElement, referencesOn(*element));
    EXPECT_EQ(onArray, referencesOn(*array));
}

TEST(SourceCopyTest, DestructionThroughTheBaseReleasesElementAndArray)
{
    SourceDocument document(sourceXml("source", "1 2"));
    const FloatArrayRef array = document.array();
    const daeInt before = referencesOn(*array);
    std::unique_ptr<Source> source = std::make_unique<SourceFloat>(document.source());
    EXPECT_EQ(before + 1, referencesOn(*array));
    source.reset();
    EXPECT_EQ(before, referencesOn(*array));
}

// --- createSourceFromCollada ---

struct RefusalCase : Row {
    const char* content; ///< of the source; null without a source
    const char* reference;
    const char* line;
};

class CreateSourceRefusalTest : public testing::TestWithParam<RefusalCase> {};

TEST_P(CreateSourceRefusalTest, GivesAnEmptyHandleAndOneLine)
{
    SourceDocument document(GetParam().content != nullptr
                                ? "<source id='source'>" + std::string(GetParam().content) + "</source>"
                                : std::string(),
                            GetParam().reference);
    LogCapture log;
    const SourceHandle source = libVideo::createSourceFromCollada(document.reference());
    EXPECT_EQ(nullptr, source.get());
    EXPECT_FALSE(static_cast<bool>(source));
    EXPECT_EQ((Texts{std::string("libVideo.source: ") + GetParam().line}), log.messages());

    log.clear();
    vesk::LogFactory::setPriority(vesk::LoggerPriority::PRIORITY_OFF);
    EXPECT_EQ(nullptr, libVideo::createSourceFromCollada(document.reference()).get());
    EXPECT_TRUE(log.lines().empty());
}

#define EMPTY_ARRAY "<float_array id='empty' count='0'/>"
#define TECHNIQUE(params)                                                                                              \
    "<technique_common><accessor source='#empty' count='2'>" params "</accessor></technique_common>"
#define NO_DATA "Not interested in <source> that has no data and accessors"
#define NO_PARAM "Not interested in <accessor> that has no param"
#define NO_CLASS "Cannot instantiate a Source object with type "

INSTANTIATE_ROWS(
    Documents, CreateSourceRefusalTest, {"ReferenceToNothing", nullptr, "#nothing", "Element #nothing is not a source"},
    {"EmptyReference", nullptr, "", "Element  is not a source"},
    {"ReferenceToAnArray", nullptr, "#words", "Element words is not a source"},
    {"ReferenceToItsVertices", nullptr, "#vertices", "Element vertices is not a source"},
    {"ReferenceToAGeometry", nullptr, "#geometry", "Element geometry is not a source"},
    {"Names", nullptr, "#names", "Source has no float array"},
    {"Integers", nullptr, "#integers", "Source has no float array"},
    {"NoArrayAtAll", "", "#source", "Source has no float array"},
    {"TechniqueWithoutArray", TECHNIQUE(PARAM_X), "#source", "Source has no float array"},
    {"EmptyArray", EMPTY_ARRAY, "#source", NO_DATA},
    {"EmptyArrayAndOtherTechnique", EMPTY_ARRAY "<technique profile='X'/>", "#source", NO_DATA},
    {"CountOfZeroDespiteValues", "<float_array id='empty' count='0'>1 2 3</float_array>", "#source", NO_DATA},
    {"AbsentCountDespiteValues", "<float_array id='empty'>1 2 3</float_array>", "#source", NO_DATA},
    {"TechniqueWithoutAccessor", EMPTY_ARRAY "<technique_common/>", "#source", NO_DATA},
    {"AccessorWithoutParam", EMPTY_ARRAY TECHNIQUE(""), "#source", NO_PARAM},
    {"ParamOfIntegers", EMPTY_ARRAY TECHNIQUE("<param name='X' type='int'/>"), "#source", NO_CLASS "int"},
    {"ParamOfNames", EMPTY_ARRAY TECHNIQUE("<param name='X' type='Name'/>"), "#source", NO_CLASS "Name"},
    {"ParamOfThreeFloats", EMPTY_ARRAY TECHNIQUE("<param name='X' type='float3'/>"), "#source", NO_CLASS "float3"},
    {"ParamWithoutType", EMPTY_ARRAY TECHNIQUE("<param name='X'/>"), "#source", NO_CLASS},
    {"OnlyTheFirstParamCounts", EMPTY_ARRAY TECHNIQUE("<param name='X' type='int'/>" PARAM_X), "#source",
     NO_CLASS "int"});

TEST(CreateSourceTest, ReferenceThatTheDocumentModelLostIsShownEmpty)
{
    SourceDocument document(sourceXml("source", "1"), "#s[ource]");
    const LogCapture log;
    EXPECT_EQ(nullptr, libVideo::createSourceFromCollada(document.reference()).get());
    EXPECT_EQ((Texts{"libVideo.source: Element  is not a source"}), log.messages());
}

TEST(CreateSourceTest, SourceWithValuesIsMadeWhateverItsTechnique)
{
    SourceDocument document(sourceXml("source", "1 2 3 4 5 6", "count='2'", PARAMS_XYZ));
    const LogCapture log;
    const SourceHandle source = libVideo::createSourceFromCollada(document.reference());
    ASSERT_NE(nullptr, source.get());
    EXPECT_EQ(1u, source.useCount());
    EXPECT_NE(nullptr, dynamic_cast<SourceFloat*>(source.get()));
    EXPECT_TRUE(source->isInitialized());
    EXPECT_EQ(vesk::String("source"), source->id());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT3, source->dataType());
    EXPECT_EQ((Floats{4, 5, 6}), floatsIn(source->data(1)));
    EXPECT_EQ(Texts(), log.messages());
}

TEST(CreateSourceTest, BareSourceWithValuesIsMade)
{
    SourceDocument document(sourceXml("source", "1 2 3"));
    const LogCapture log;
    const SourceHandle source = libVideo::createSourceFromCollada(document.reference());
    ASSERT_NE(nullptr, source.get());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT, source->dataType());
    EXPECT_EQ(0u, source->count());
    EXPECT_EQ((Floats{2}), floatsIn(source->data(1)));
    EXPECT_EQ(Texts(), log.messages());
}

TEST(CreateSourceTest, AccessorWithoutParamsIsNoObstacleForAnArrayWithValues)
{
    SourceDocument document(sourceXml("source", "1 2 3 4 5 6", "count='2' stride='3'", ""));
    const LogCapture log;
    const SourceHandle source = libVideo::createSourceFromCollada(document.reference());
    ASSERT_NE(nullptr, source.get());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT3, source->dataType());
    EXPECT_EQ(0u, source->bytePerAccess());
    EXPECT_EQ((Floats{4}), floatsIn(source->data(1)));
    EXPECT_EQ(Texts(), log.messages());
}

TEST(CreateSourceTest, ParamTypeOfAnArrayWithValuesMeetsTheAssertionOfTheAccessor)
{
    SourceDocument document(sourceXml("source", "1 2", "count='2'", "<param name='X' type='int'/>"));
    EXPECT_EQ(typeAssertion, assertionOf([&] { libVideo::createSourceFromCollada(document.reference()); }));
}

TEST(CreateSourceTest, LaterParamOfAnEmptyArrayMeetsTheAssertionOfTheAccessor)
{
    SourceDocument document(
        "<source id='source'>" EMPTY_ARRAY TECHNIQUE(PARAM_X "<param name='Y' type='int'/>") "</source>");
    EXPECT_EQ(typeAssertion, assertionOf([&] { libVideo::createSourceFromCollada(document.reference()); }));
}

TEST(CreateSourceTest, SourceWhoseLoadFailedGoesOutAsFarAsItCame)
{
    SourceDocument document(failedSource("source", "1 2", "count='2'"));
    LogCapture log;
    const SourceHandle source = libVideo::createSourceFromCollada(document.reference());
    ASSERT_NE(nullptr, source.get());
    EXPECT_EQ((Texts{accessorFailedLine}), log.messages());
    EXPECT_EQ(2u, source->count());
    EXPECT_EQ(0u, source->data(1).size());
}

TEST(CreateSourceTest, EmptyArrayWithAFailedAccessorGoesOutToo)
{
    SourceDocument document(failedSource("source", "", "count='2'"));
    LogCapture log;
    const SourceHandle source = libVideo::createSourceFromCollada(document.reference());
    ASSERT_NE(nullptr, source.get());
    EXPECT_EQ((Texts{accessorFailedLine}), log.messages());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT, source->dataType());
    EXPECT_EQ(2u, source->count());
}

struct EmptyArrayCase : Row {
    const char* params;
    DataType type;
    unsigned stride;
};

class CreateSourceEmptyArrayTest : public testing::TestWithParam<EmptyArrayCase> {};

TEST_P(CreateSourceEmptyArrayTest, FirstParamOfAFloatTypeGivesASourceWithTheCountOfItsAccessor)
{
    SourceDocument document("<source id='source'>" EMPTY_ARRAY
                            "<technique_common><accessor source='#empty' count='2'>" +
                            std::string(GetParam().params) + "</accessor></technique_common></source>");
    const LogCapture log;
    const SourceHandle source = libVideo::createSourceFromCollada(document.reference());
    ASSERT_NE(nullptr, source.get());
    EXPECT_EQ(2u, source->count());
    EXPECT_EQ(GetParam().stride, source->stride());
    EXPECT_EQ(GetParam().type, source->dataType());
    EXPECT_EQ(Floats(GetParam().stride, 0.0f), floatsIn(source->data(1)));
    EXPECT_EQ((Texts{accessorReachLine}), log.messages());
}

INSTANTIATE_ROWS(Documents, CreateSourceEmptyArrayTest, {"Float", PARAM_X, libVideo::DATA_TYPE_FLOAT, 1},
                 {"Capitals", "<param name='X' type='FLOAT'/>", libVideo::DATA_TYPE_FLOAT, 1},
                 {"ThreeFloats", PARAMS_XYZ, libVideo::DATA_TYPE_FLOAT3, 3},
                 {"Matrix", PARAM_MATRIX, libVideo::DATA_TYPE_FLOAT4X4, 16},
                 {"MatrixInCapitals", "<param name='M' type='Float4X4'/>", libVideo::DATA_TYPE_FLOAT4X4, 16});

TEST(CreateSourceTest, EmptyArrayWithoutRecordsLoadsInSilence)
{
    SourceDocument document(sourceXml("source", "", "count='0'", PARAMS_XYZ));
    const LogCapture log;
    const SourceHandle source = libVideo::createSourceFromCollada(document.reference());
    ASSERT_NE(nullptr, source.get());
    EXPECT_EQ(0u, source->count());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT3, source->dataType());
    EXPECT_EQ(Texts(), log.messages());
}

TEST(CreateSourceTest, ArrayOfCountZeroIsReadByItsAccessorAllTheSame)
{
    SourceDocument document(
        "<source id='source'><float_array id='empty' count='0'>1 2</float_array>" TECHNIQUE(PARAM_X) "</source>");
    const LogCapture log;
    const SourceHandle source = libVideo::createSourceFromCollada(document.reference());
    ASSERT_NE(nullptr, source.get());
    EXPECT_EQ((Floats{2}), floatsIn(source->data(1)));
    EXPECT_EQ(Texts(), log.messages());
}

TEST(CreateSourceTest, EachCallMakesASourceOfItsOwn)
{
    SourceDocument document(sourceXml("source", "1 2", "count='2'", PARAM_X));
    const SourceHandle first = libVideo::createSourceFromCollada(document.reference());
    const SourceHandle second = libVideo::createSourceFromCollada(document.reference());
    ASSERT_NE(nullptr, first.get());
    ASSERT_NE(nullptr, second.get());
    EXPECT_NE(first.get(), second.get());
    EXPECT_NE(accessorOf(*first).get(), accessorOf(*second).get());
    const DataList& kept = first->data(0);
    EXPECT_EQ((Floats{2}), floatsIn(second->data(1)));
    EXPECT_EQ((Floats{1}), floatsIn(kept));
}

TEST(CreateSourceTest, SourceLivesAsLongAsItsLastHandle)
{
    SourceDocument document(sourceXml("source", "1 2"));
    const SourceRef element = document.source();
    const daeInt before = referencesOn(*element);
    SourceHandle last;
    {
        const SourceHandle first = libVideo::createSourceFromCollada(document.reference());
        last = first;
    }
    ASSERT_NE(nullptr, last.get());
    EXPECT_EQ(before + 1, referencesOn(*element));
    EXPECT_EQ((Floats{2}), floatsIn(last->data(1)));
    last = SourceHandle();
    EXPECT_EQ(before, referencesOn(*element));
}

static_assert(std::is_abstract_v<Source> && std::has_virtual_destructor_v<Source>);
static_assert(!std::is_default_constructible_v<Source>);
static_assert(std::is_copy_assignable_v<Source>);
static_assert(std::is_convertible_v<SourceFloat*, Source*>);
static_assert(std::is_default_constructible_v<SourceFloat> && std::is_constructible_v<SourceFloat, const SourceRef&> &&
              std::is_copy_constructible_v<SourceFloat> && std::is_copy_assignable_v<SourceFloat>);
static_assert(std::is_same_v<const DataList&, decltype(std::declval<const Source&>()[0u])> &&
              std::is_same_v<const DataList&, decltype(std::declval<const Source&>().data(0u))>);
static_assert(std::is_same_v<const vesk::String&, decltype(std::declval<const Source&>().id())> &&
              std::is_same_v<DataType, decltype(std::declval<const Source&>().dataType())> &&
              std::is_same_v<bool, decltype(std::declval<const Source&>().isInitialized())> &&
              std::is_same_v<unsigned, decltype(std::declval<const Source&>().count())> &&
              std::is_same_v<unsigned, decltype(std::declval<const Source&>().stride())> &&
              std::is_same_v<unsigned, decltype(std::declval<const Source&>().bytePerAccess())>);
static_assert(std::is_same_v<SourceHandle, decltype(libVideo::createSourceFromCollada(std::declval<const daeURI&>()))>);

} // namespace
