#include "support/Components.h"
#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Accessor.h>

namespace {

using namespace libVideo;
using namespace testSupport;

using ByteHandle = vesk::CopiedResource<vesk::PointerStorage<unsigned char, 3, 2>>;
using DataList = vesk::Array<Data>;
using AccessorRef = daeSmartRef<domAccessor>;

PRIVATE_MEMBER(dataName, vesk::String Data::*, &Data::m_name)
PRIVATE_MEMBER(dataStride, unsigned Data::*, &Data::m_stride)
PRIVATE_MEMBER(dataDataType, DataType Data::*, &Data::m_dataType)
PRIVATE_MEMBER(dataOffset, unsigned Data::*, &Data::m_offset)
PRIVATE_MEMBER(dataTokenByteSize, unsigned Data::*, &Data::m_tokenByteSize)
PRIVATE_MEMBER(dataBuffer, vesk::Buffer<unsigned char> Data::*, &Data::m_buffer)

PRIVATE_MEMBER(accessorStride, unsigned Accessor::*, &Accessor::m_stride)
PRIVATE_MEMBER(offsetOf, unsigned Accessor::*, &Accessor::m_offset)
PRIVATE_MEMBER(accessorCount, unsigned Accessor::*, &Accessor::m_count)
PRIVATE_MEMBER(currentIndexOf, unsigned Accessor::*, &Accessor::m_currentIndex)
PRIVATE_MEMBER(accessorBytePerAccess, unsigned Accessor::*, &Accessor::m_bytePerAccess)
PRIVATE_MEMBER(accessorName, vesk::String Accessor::*, &Accessor::m_name)
PRIVATE_MEMBER(listOf, DataList Accessor::*, &Accessor::m_data)
PRIVATE_MEMBER(accessorFloatArray, domFloat_array* AccessorFloat::*, &AccessorFloat::m_floatArray)

PRIVATE_MEMBER(readDataFromArray, const DataList& (Accessor::*)(unsigned), &Accessor::readDataFromArray)
PRIVATE_MEMBER(typeStride, unsigned (Accessor::*)(DataType) const, &Accessor::typeStride)
PRIVATE_MEMBER(typeByteSize, unsigned (Accessor::*)(DataType) const, &Accessor::typeByteSize)
PRIVATE_MEMBER(stringToType, DataType (Accessor::*)(const vesk::String&) const, &Accessor::stringToType)
PRIVATE_MEMBER(calculateStride, unsigned (Accessor::*)(const AccessorRef&) const, &Accessor::calculateStride)
PRIVATE_MEMBER(isTypeValid, bool (AccessorFloat::*)(const vesk::String&) const, &AccessorFloat::isTypeValid)

TEST(DataTypeTest, ValuesHaveTheirNumbers)
{
    EXPECT_EQ(1u, static_cast<unsigned>(libVideo::DATA_TYPE_FLOAT));
    EXPECT_EQ(2u, static_cast<unsigned>(libVideo::DATA_TYPE_FLOAT2));
    EXPECT_EQ(3u, static_cast<unsigned>(libVideo::DATA_TYPE_FLOAT3));
    EXPECT_EQ(4u, static_cast<unsigned>(libVideo::DATA_TYPE_FLOAT4));
    EXPECT_EQ(8u, static_cast<unsigned>(libVideo::DATA_TYPE_FLOAT4X4));
    EXPECT_EQ(9u, static_cast<unsigned>(libVideo::DATA_TYPE_INVALID));
}

TEST(DataTest, ConstructorSetsAllFields)
{
    const Data data("weight", 3, libVideo::DATA_TYPE_FLOAT4X4, 5, 8);
    EXPECT_EQ(vesk::String("weight"), data.name());
    EXPECT_EQ(3u, data.stride());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT4X4, data.dataType());
    EXPECT_EQ(5u, data.offset());
    EXPECT_EQ(8u, data.tokenByteSize());
}

TEST(DataTest, FieldsStandInTheirOrder)
{
    const Data data("X", 1, libVideo::DATA_TYPE_FLOAT, 0, 4);
    expectAscending({&dataName(data), &dataStride(data), &dataDataType(data), &dataOffset(data),
                     &dataTokenByteSize(data), &dataBuffer(data)});
}

constexpr unsigned noIndex = 0xFFFFFFFFu;

/// Where an accessor with this source reads.
const std::string ofFloats = "source='#floats' ";

/// A document with one `<source>`, its `<float_array>` "floats" and its `<accessor>`.
class SourceDocument {
public:
    SourceDocument(const std::string& floats, const std::string& attributes, const std::string& params)
    {
        m_builder.add(
            "<library_animations><animation><source id='names'><Name_array id='words' count='1'>a</Name_array>"
            "</source><source id='integers'><int_array id='ints' count='1'>1</int_array></source>"
            "<source id='source'>" +
            floatArray("floats", floats) + "<technique_common><accessor " + attributes + ">" + params +
            "</accessor></technique_common></source></animation></library_animations>");
        m_builder.open();
    }

    AccessorRef accessor() { return m_builder.element<domSource>("source")->getTechnique_common()->getAccessor(); }
    domFloat_array* array() { return m_builder.element<domFloat_array>("floats"); }
    daeTArray<double>& values() { return array()->getValue(); }

private:
    ColladaBuilder m_builder;
};

void setFloat(Data& data, unsigned token, float value)
{
    std::memcpy(data[token].get(), &value, sizeof(value));
}

std::vector<float> record(Accessor& accessor, unsigned index)
{
    return floatsIn(accessor[index]);
}

using Floats = std::vector<float>;

const char* const indexAssertion = "libVideo/SceneGraph/Accessor: index < m_count";
const char* const tokenAssertion = "libVideo/SceneGraph/Accessor: index < m_stride";
const char* const unreachableAssertion = "libVideo/SceneGraph/Accessor: false";

/// An accessor that counts how often it reads its array.
class CountingAccessor : public AccessorFloat {
public:
    unsigned reads = 0;

protected:
    const DataList& readDataFromArray(unsigned index) override
    {
        ++reads;
        return AccessorFloat::readDataFromArray(index);
    }
};

/// An accessor that overrides three of the functions that loading calls.
class OverridingAccessor : public AccessorFloat {
public:
    unsigned tokensOfFloat = 1;

protected:
    unsigned calculateStride(const AccessorRef& /*accessor*/) const override { return 7; }

private:
    unsigned typeStride(DataType /*type*/) const override { return tokensOfFloat; }
};

// --- Data ---

TEST(DataTest, BufferTakesStrideTimesTokenByteSize)
{
    const Data one("X", 1, libVideo::DATA_TYPE_FLOAT, 0, 4);
    const Data matrix("M", 16, libVideo::DATA_TYPE_FLOAT4X4, 0, 64);
    const Data odd("O", 3, libVideo::DATA_TYPE_FLOAT, 0, 5);
    EXPECT_EQ(4u, dataBuffer(one).size());
    EXPECT_EQ(1024u, dataBuffer(matrix).size());
    EXPECT_EQ(15u, dataBuffer(odd).size());
}

TEST(DataTest, ProductOfZeroAllocatesNothing)
{
    long requestsWithoutTokens = -1;
    long requestsWithoutBytes = -1;
    long requestsWithBoth = -1;
    {
        const FailingAllocator allocator(-1);
        const Data data(vesk::String::EMPTY(), 0, libVideo::DATA_TYPE_FLOAT, 0, 4);
        requestsWithoutTokens = allocator.requests();
    }
    {
        const FailingAllocator allocator(-1);
        const Data data(vesk::String::EMPTY(), 4, libVideo::DATA_TYPE_FLOAT, 0, 0);
        requestsWithoutBytes = allocator.requests();
    }
    {
        const FailingAllocator allocator(-1);
        const Data data(vesk::String::EMPTY(), 1, libVideo::DATA_TYPE_FLOAT, 0, 4);
        requestsWithBoth = allocator.requests();
    }
    EXPECT_EQ(0, requestsWithoutTokens);
    EXPECT_EQ(0, requestsWithoutBytes);
    EXPECT_EQ(1, requestsWithBoth);
}

TEST(DataTest, TokensLieTokenByteSizeApartFromTheStartOfTheBuffer)
{
    Data data("M", 16, libVideo::DATA_TYPE_FLOAT4X4, 0, 64);
    const Data& constData = data;
    const unsigned char* const first = dataBuffer(data).data();
    for (unsigned i = 0; i < 16; ++i) {
        EXPECT_EQ(first + std::size_t(64) * i, data[i].get()) << i;
        EXPECT_EQ(first + std::size_t(64) * i, constData[i].get()) << i;
    }
}

TEST(DataTest, HandleDoesNotOwnItsByte)
{
    Data data("X", 2, libVideo::DATA_TYPE_FLOAT, 0, 4);
    setFloat(data, 1, 2.5f);
    {
        const ByteHandle handle = data[1];
        const ByteHandle copy = handle;
        EXPECT_EQ(handle.get(), copy.get());
    }
    EXPECT_EQ(2.5f, floatIn(data, 1));
}

TEST(DataTest, BytesThatNoTokenFillsAreZero)
{
    const Data data("M", 16, libVideo::DATA_TYPE_FLOAT4X4, 0, 64);
    const vesk::Buffer<unsigned char>& buffer = dataBuffer(data);
    for (std::uint64_t i = 0; i < buffer.size(); ++i) {
        ASSERT_EQ(0, buffer[i]) << i;
    }
}

TEST(DataTest, TokenIndexHasToLieBelowTheStride)
{
    Data data("X", 2, libVideo::DATA_TYPE_FLOAT, 0, 4);
    const Data& constData = data;
    EXPECT_EQ("none", assertionOf([&] { data[1]; }));
    EXPECT_EQ("none", assertionOf([&] { constData[1]; }));
    EXPECT_EQ(tokenAssertion, assertionOf([&] { data[2]; }));
    EXPECT_EQ(tokenAssertion, assertionOf([&] { constData[2]; }));
    EXPECT_EQ(tokenAssertion, assertionOf([&] { data[noIndex]; }));
    EXPECT_EQ(tokenAssertion, assertionOf([&] { constData[noIndex]; }));
}

TEST(DataTest, ComponentWithoutTokensHasNoIndex)
{
    Data data("X", 0, libVideo::DATA_TYPE_FLOAT, 0, 4);
    EXPECT_EQ(tokenAssertion, assertionOf([&] { data[0]; }));
    EXPECT_EQ(tokenAssertion, assertionOf([&] { std::as_const(data)[0]; }));
}

TEST(DataTest, CopyHasAllFieldsAndBytesOfItsOwn)
{
    Data source("weight", 2, libVideo::DATA_TYPE_FLOAT, 5, 4);
    setFloat(source, 0, 1.5f);
    setFloat(source, 1, -2.0f);
    Data copy(source);
    EXPECT_EQ(vesk::String("weight"), copy.name());
    EXPECT_EQ(2u, copy.stride());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT, copy.dataType());
    EXPECT_EQ(5u, copy.offset());
    EXPECT_EQ(4u, copy.tokenByteSize());
    EXPECT_EQ(1.5f, floatIn(copy, 0));
    EXPECT_EQ(-2.0f, floatIn(copy, 1));
    setFloat(copy, 0, 9.0f);
    EXPECT_EQ(1.5f, floatIn(source, 0));
    setFloat(source, 1, 8.0f);
    EXPECT_EQ(-2.0f, floatIn(copy, 1));
}

TEST(DataTest, CopyHoldsAlsoTheBytesBetweenTokens)
{
    Data source("M", 2, libVideo::DATA_TYPE_FLOAT4X4, 0, 64);
    source[0].get()[63] = 0xA5;
    const Data copy(source);
    EXPECT_EQ(0xA5, copy[0].get()[63]);
}

TEST(DataTest, CopyOutlivesItsSource)
{
    auto source = std::make_unique<Data>("weight", 1, libVideo::DATA_TYPE_FLOAT, 0, 4);
    setFloat(*source, 0, 3.25f);
    const Data copy(*source);
    source.reset();
    EXPECT_EQ(3.25f, floatIn(copy, 0));
    EXPECT_EQ(vesk::String("weight"), copy.name());
}

TEST(DataTest, AssignmentCopiesAllFieldsAndBytesOfAnotherSize)
{
    Data source("matrix", 16, libVideo::DATA_TYPE_FLOAT4X4, 3, 64);
    setFloat(source, 15, 7.0f);
    Data target("X", 1, libVideo::DATA_TYPE_FLOAT, 0, 4);
    const Data& result = (target = source);
    EXPECT_EQ(&target, &result);
    EXPECT_EQ(vesk::String("matrix"), target.name());
    EXPECT_EQ(16u, target.stride());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT4X4, target.dataType());
    EXPECT_EQ(3u, target.offset());
    EXPECT_EQ(64u, target.tokenByteSize());
    EXPECT_EQ(1024u, dataBuffer(target).size());
    EXPECT_EQ(7.0f, floatIn(target, 15));
    setFloat(target, 15, 1.0f);
    EXPECT_EQ(7.0f, floatIn(source, 15));
    target = Data("Y", 1, libVideo::DATA_TYPE_FLOAT, 1, 4);
    EXPECT_EQ(4u, dataBuffer(target).size());
    EXPECT_EQ(1u, target.stride());
}

TEST(DataTest, AssignmentToItselfChangesNothing)
{
    Data data("X", 2, libVideo::DATA_TYPE_FLOAT, 4, 4);
    setFloat(data, 1, 6.0f);
    const Data& alias = data;
    data = alias;
    EXPECT_EQ(vesk::String("X"), data.name());
    EXPECT_EQ(6.0f, floatIn(data, 1));
}

// --- the type operations ---

TEST(AccessorFloatTypeTest, TextGivesItsTypeInAnyCase)
{
    const AccessorFloat accessor;
    for (const char* const text : {"float", "FLOAT", "Float", "fLoAt"}) {
        EXPECT_EQ(libVideo::DATA_TYPE_FLOAT, stringToType(accessor, text)) << text;
    }
    for (const char* const text : {"float4x4", "FLOAT4X4", "Float4x4", "float4X4"}) {
        EXPECT_EQ(libVideo::DATA_TYPE_FLOAT4X4, stringToType(accessor, text)) << text;
    }
}

TEST(AccessorFloatTypeTest, AnyOtherTextIsAnAssertionFailure)
{
    const AccessorFloat accessor;
    for (const char* const text : {"", "int", "name", "Name", "double", "bool", "IDREF", "float2", "float3", "float4",
                                   "float3x3", "float4x", "float4x44", " float", "float ", "floa", "floats", "1"}) {
        EXPECT_EQ(unreachableAssertion, assertionOf([&] { stringToType(accessor, text); })) << text;
    }
}

TEST(AccessorFloatTypeTest, TypeStrideIsOneOfAFloatAndSixteenOfAMatrix)
{
    const AccessorFloat accessor;
    EXPECT_EQ(1u, typeStride(accessor, libVideo::DATA_TYPE_FLOAT));
    EXPECT_EQ(16u, typeStride(accessor, libVideo::DATA_TYPE_FLOAT4X4));
}

TEST(AccessorFloatTypeTest, TypeByteSizeIsFourOfAFloatAndSixtyFourOfAMatrix)
{
    const AccessorFloat accessor;
    EXPECT_EQ(4u, typeByteSize(accessor, libVideo::DATA_TYPE_FLOAT));
    EXPECT_EQ(64u, typeByteSize(accessor, libVideo::DATA_TYPE_FLOAT4X4));
}

TEST(AccessorFloatTypeTest, TypeByteSizeIsFourTimesTheStrideThatADerivedClassGives)
{
    OverridingAccessor accessor;
    accessor.tokensOfFloat = 5;
    EXPECT_EQ(20u, typeByteSize(accessor, libVideo::DATA_TYPE_FLOAT));
}

TEST(AccessorFloatTypeTest, StrideAndByteSizeOfAnyOtherTypeAreAssertionFailures)
{
    const AccessorFloat accessor;
    for (const unsigned number : {0u, 2u, 3u, 4u, 5u, 6u, 7u, 9u, 10u, noIndex}) {
        const DataType type = static_cast<DataType>(number);
        EXPECT_EQ(unreachableAssertion, assertionOf([&] { typeStride(accessor, type); })) << number;
        EXPECT_EQ(unreachableAssertion, assertionOf([&] { typeByteSize(accessor, type); })) << number;
    }
}

TEST(AccessorFloatTypeTest, FloatAndMatrixAreValidInAnyCase)
{
    const AccessorFloat accessor;
    for (const char* const text : {"float", "FLOAT", "fLOAT", "float4x4", "FLOAT4X4", "Float4X4"}) {
        EXPECT_TRUE(isTypeValid(accessor, text)) << text;
    }
}

TEST(AccessorFloatTypeTest, NoOtherTextIsValid)
{
    const AccessorFloat accessor;
    for (const char* const text : {"", "int", "name", "float2", "float3", "float4", "float3x3", " float", "floats"}) {
        EXPECT_FALSE(isTypeValid(accessor, text)) << text;
    }
}

// --- calculateStride ---

struct StrideCase : Row {
    const char* attributes;
    const char* params;
    unsigned stride;
};

class AccessorStrideTest : public testing::TestWithParam<StrideCase> {};

TEST_P(AccessorStrideTest, StrideIsCalculatedAndTakenByTheLoad)
{
    SourceDocument document("1 2 3 4", ofFloats + GetParam().attributes, GetParam().params);
    const LogCapture unread;
    AccessorFloat accessor;
    EXPECT_EQ(GetParam().stride, calculateStride(accessor, document.accessor()));
    EXPECT_EQ(0u, accessor.stride());
    EXPECT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ(GetParam().stride, accessor.stride());
}

#define PARAM_UNNAMED_MATRIX "<param type='float4x4'/>"

INSTANTIATE_ROWS(Documents, AccessorStrideTest, {"AttributeAboveOne", "stride='3'", PARAM_X PARAM_X PARAM_X, 3},
                 {"AttributeAboveWhatParamsTake", "stride='8'", PARAM_X PARAM_X, 8},
                 {"AttributeBelowWhatParamsTake", "stride='2'", PARAM_X PARAM_X PARAM_X, 2},
                 {"AttributeBelowMatrix", "stride='2'", PARAM_MATRIX, 2},
                 {"AttributeWithoutParams", "stride='3'", "", 3}, {"AttributeTwoIsBelieved", "stride='2'", PARAM_X, 2},
                 {"AttributeOneIsNot", "stride='1'", PARAM_X PARAM_X PARAM_X, 3},
                 {"AttributeZeroIsNot", "stride='0'", PARAM_X PARAM_X, 2},
                 {"NoAttribute", "", PARAM_X PARAM_X PARAM_X, 3}, {"NoAttributeOneParam", "", PARAM_X, 1},
                 {"UnnamedParamsCount", "", PARAM_X PARAM_UNNAMED PARAM_X, 3},
                 {"UnnamedParamsAlone", "", PARAM_UNNAMED PARAM_UNNAMED, 2}, {"Matrix", "", PARAM_MATRIX, 16},
                 {"MatrixBetweenFloats", "", PARAM_X PARAM_MATRIX PARAM_X, 18},
                 {"UnnamedMatrix", "", PARAM_UNNAMED_MATRIX PARAM_X, 17}, {"NeitherAttributeNorParams", "", "", 0},
                 {"AttributeOneWithoutParams", "stride='1'", "", 0},
                 {"LowHalfOfTheAttribute", "stride='4294967301'", PARAM_X, 5},
                 {"LowHalfOneIsNotBelieved", "stride='4294967297'", PARAM_X PARAM_X, 2},
                 {"LowHalfZeroIsNotBelieved", "stride='4294967296'", PARAM_X PARAM_X, 2});

TEST(AccessorStrideTest, StrideAboveOneAsksForNoType)
{
    SourceDocument document("1 2 3 4", ofFloats + "stride='4'", "<param type='int'/>");
    const AccessorFloat accessor;
    EXPECT_EQ(4u, calculateStride(accessor, document.accessor()));
}

TEST(AccessorStrideTest, StrideOfAnUnknownTypeIsAnAssertionFailure)
{
    for (const char* const params : {"<param name='X' type='int'/>", "<param type='int'/>", PARAM_X "<param type=''/>",
                                     PARAM_X "<param name='Y'/>", PARAM_X "<param/>"}) {
        SourceDocument document("1 2 3 4", ofFloats, params);
        const AccessorFloat accessor;
        EXPECT_EQ(unreachableAssertion, assertionOf([&] { calculateStride(accessor, document.accessor()); })) << params;
    }
}

// --- createFromCollada ---

TEST(AccessorTest, StartsEmpty)
{
    const AccessorFloat accessor;
    EXPECT_EQ(0u, accessor.stride());
    EXPECT_EQ(0u, offsetOf(accessor));
    EXPECT_EQ(0u, accessor.count());
    EXPECT_EQ(0xFFFFFFFFu, currentIndexOf(accessor));
    EXPECT_EQ(0u, accessor.bytePerAccess());
    EXPECT_TRUE(accessor.name().empty());
    EXPECT_EQ(0u, listOf(accessor).size());
}

TEST(AccessorTest, FieldsStandInTheirOrder)
{
    const AccessorFloat accessor;
    const Accessor& base = accessor;
    expectAscending({&accessorStride(base), &offsetOf(base), &accessorCount(base), &currentIndexOf(base),
                     &accessorBytePerAccess(base), &accessorName(base), &listOf(base), &accessorFloatArray(accessor)});
}

#if defined(__x86_64__) && defined(__GNUC__)

TEST(AccessorTest, VirtualOperationsStandInTheirOrder)
{
    EXPECT_EQ(0u, slotOf(readDataFromArray.pointer()));
    EXPECT_EQ(1u, slotOf(typeStride.pointer()));
    EXPECT_EQ(2u, slotOf(typeByteSize.pointer()));
    EXPECT_EQ(3u, slotOf(stringToType.pointer()));
    EXPECT_EQ(4u, slotOf(calculateStride.pointer()));
    // The destructor takes two places.
    EXPECT_EQ(7u, slotOf(&Accessor::createFromCollada));
}
#endif

TEST(AccessorTest, ThreeFloatParamsGiveThreeComponents)
{
    SourceDocument document("1 2 3 4 5 6", ofFloats + "count='2' stride='3'", PARAMS_XYZ);
    const LogCapture log;
    AccessorFloat accessor;
    EXPECT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ(2u, accessor.count());
    EXPECT_EQ(3u, accessor.stride());
    EXPECT_EQ(12u, accessor.bytePerAccess());
    EXPECT_TRUE(accessor.name().empty());
    EXPECT_EQ(noIndex, currentIndexOf(accessor));
    EXPECT_EQ(document.array(), accessorFloatArray(accessor));
    const DataList& list = listOf(accessor);
    ASSERT_EQ(3u, list.size());
    const char* const names[] = {"X", "Y", "Z"};
    for (unsigned i = 0; i < 3; ++i) {
        EXPECT_EQ(vesk::String(names[i]), list[i].name());
        EXPECT_EQ(1u, list[i].stride());
        EXPECT_EQ(libVideo::DATA_TYPE_FLOAT, list[i].dataType());
        EXPECT_EQ(i, list[i].offset());
        EXPECT_EQ(4u, list[i].tokenByteSize());
    }
    EXPECT_TRUE(log.lines().empty());
}

TEST(AccessorTest, UnnamedParamReservesItsFloatAndIsNotRead)
{
    SourceDocument document("1 2 3 4 5 6", ofFloats + "count='2'",
                            PARAM_X PARAM_UNNAMED "<param name='Z' type='float'/>");
    AccessorFloat accessor;
    EXPECT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ(3u, accessor.stride());
    EXPECT_EQ(8u, accessor.bytePerAccess());
    const DataList& list = listOf(accessor);
    ASSERT_EQ(2u, list.size());
    EXPECT_EQ(vesk::String("X"), list[0].name());
    EXPECT_EQ(0u, list[0].offset());
    EXPECT_EQ(vesk::String("Z"), list[1].name());
    EXPECT_EQ(2u, list[1].offset());
    EXPECT_EQ((Floats{1, 3}), record(accessor, 0));
    EXPECT_EQ((Floats{4, 6}), record(accessor, 1));
}

TEST(AccessorTest, UnnamedMatrixReservesSixteenFloats)
{
    SourceDocument document("1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17", ofFloats + "count='1'",
                            PARAM_UNNAMED_MATRIX PARAM_X);
    AccessorFloat accessor;
    EXPECT_TRUE(accessor.createFromCollada(document.accessor()));
    ASSERT_EQ(1u, listOf(accessor).size());
    EXPECT_EQ(16u, listOf(accessor)[0].offset());
    EXPECT_EQ(4u, accessor.bytePerAccess());
    EXPECT_EQ((Floats{17}), record(accessor, 0));
}

TEST(AccessorTest, EmptyNameIsAName)
{
    SourceDocument document("1 2", ofFloats + "count='1'", "<param name='' type='float'/>" PARAM_X);
    AccessorFloat accessor;
    EXPECT_TRUE(accessor.createFromCollada(document.accessor()));
    ASSERT_EQ(2u, listOf(accessor).size());
    EXPECT_TRUE(listOf(accessor)[0].name().empty());
    EXPECT_EQ(1u, listOf(accessor)[1].offset());
    EXPECT_EQ(8u, accessor.bytePerAccess());
}

TEST(AccessorTest, MatrixParamGivesOneComponentOfSixteenTokens)
{
    SourceDocument document("1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16", ofFloats + "count='1'", PARAM_MATRIX);
    AccessorFloat accessor;
    EXPECT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ(16u, accessor.stride());
    EXPECT_EQ(1024u, accessor.bytePerAccess());
    const DataList& list = listOf(accessor);
    ASSERT_EQ(1u, list.size());
    EXPECT_EQ(vesk::String("M"), list[0].name());
    EXPECT_EQ(16u, list[0].stride());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT4X4, list[0].dataType());
    EXPECT_EQ(0u, list[0].offset());
    EXPECT_EQ(64u, list[0].tokenByteSize());
    EXPECT_EQ(1024u, dataBuffer(list[0]).size());
}

TEST(AccessorTest, ComponentsStandInTheOrderOfTheParams)
{
    SourceDocument document("1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18", ofFloats + "count='1'",
                            "<param name='T' type='float'/>" PARAM_MATRIX "<param name='A' type='float'/>");
    AccessorFloat accessor;
    EXPECT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ(18u, accessor.stride());
    EXPECT_EQ(1032u, accessor.bytePerAccess());
    const DataList& list = accessor[0];
    ASSERT_EQ(3u, list.size());
    EXPECT_EQ(vesk::String("T"), list[0].name());
    EXPECT_EQ(0u, list[0].offset());
    EXPECT_EQ(vesk::String("M"), list[1].name());
    EXPECT_EQ(1u, list[1].offset());
    EXPECT_EQ(vesk::String("A"), list[2].name());
    EXPECT_EQ(17u, list[2].offset());
    EXPECT_EQ(1.0f, floatIn(list[0], 0));
    EXPECT_EQ(2.0f, floatIn(list[1], 0));
    EXPECT_EQ(17.0f, floatIn(list[1], 15));
    EXPECT_EQ(18.0f, floatIn(list[2], 0));
}

TEST(AccessorTest, TypeTextInCapitalsIsAccepted)
{
    SourceDocument document("1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17", ofFloats + "count='1'",
                            "<param name='X' type='FLOAT'/><param name='M' type='FLOAT4X4'/>");
    AccessorFloat accessor;
    EXPECT_TRUE(accessor.createFromCollada(document.accessor()));
    ASSERT_EQ(2u, listOf(accessor).size());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT, listOf(accessor)[0].dataType());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT4X4, listOf(accessor)[1].dataType());
}

TEST(AccessorTest, WithoutParamsThereIsOneImplicitComponentThatCountsNoBytes)
{
    SourceDocument document("7 8 9", ofFloats + "count='3'", "");
    const LogCapture log;
    AccessorFloat accessor;
    EXPECT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ(0u, accessor.stride());
    EXPECT_EQ(0u, accessor.bytePerAccess());
    const DataList& list = listOf(accessor);
    ASSERT_EQ(1u, list.size());
    EXPECT_TRUE(list[0].name().empty());
    EXPECT_EQ(1u, list[0].stride());
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT, list[0].dataType());
    EXPECT_EQ(0u, list[0].offset());
    EXPECT_EQ(4u, list[0].tokenByteSize());
    for (unsigned i = 0; i < 3; ++i) {
        EXPECT_EQ((Floats{7}), record(accessor, i)) << i;
    }
    EXPECT_TRUE(log.lines().empty());
}

TEST(AccessorTest, WithoutParamsAStrideAboveOneStillCounts)
{
    SourceDocument document("1 2 3 4", ofFloats + "count='2' stride='2'", "");
    AccessorFloat accessor;
    EXPECT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ(2u, accessor.stride());
    EXPECT_EQ(0u, accessor.bytePerAccess());
    EXPECT_EQ((Floats{1}), record(accessor, 0));
    EXPECT_EQ((Floats{3}), record(accessor, 1));
}

TEST(AccessorTest, ParamsWithoutNamesAloneGiveNoComponent)
{
    SourceDocument document("1 2", ofFloats + "count='1'", PARAM_UNNAMED PARAM_UNNAMED);
    AccessorFloat accessor;
    EXPECT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ(2u, accessor.stride());
    EXPECT_EQ(0u, listOf(accessor).size());
    EXPECT_EQ(0u, accessor.bytePerAccess());
}

TEST(AccessorTest, AbsentAttributesAreZeroRecordsFromZero)
{
    SourceDocument document("1 2 3", ofFloats, PARAMS_XYZ);
    AccessorFloat accessor;
    EXPECT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ(0u, accessor.count());
    EXPECT_EQ(0u, offsetOf(accessor));
    EXPECT_EQ(3u, accessor.stride());
}

TEST(AccessorTest, CountAndOffsetAreTheLowHalvesOfTheirAttributes)
{
    SourceDocument document("1 2 3 4 5 6 7 8 9", ofFloats + "count='4294967298' offset='4294967297'", PARAMS_XYZ);
    AccessorFloat accessor;
    EXPECT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ(2u, accessor.count());
    EXPECT_EQ(1u, offsetOf(accessor));
    EXPECT_EQ((Floats{4, 5, 6}), record(accessor, 0));
}

TEST(AccessorTest, LoadingAgainAppends)
{
    SourceDocument document("1 2 3 4 5 6", ofFloats + "count='2'", PARAMS_XYZ);
    AccessorFloat accessor;
    EXPECT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ((Floats{4, 5, 6}), record(accessor, 1));
    EXPECT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ(6u, listOf(accessor).size());
    EXPECT_EQ(24u, accessor.bytePerAccess());
    EXPECT_EQ(3u, accessor.stride());
    EXPECT_EQ(2u, accessor.count());
    EXPECT_EQ(1u, currentIndexOf(accessor));
    EXPECT_EQ((Floats{1, 2, 3, 1, 2, 3}), record(accessor, 0));
}

TEST(AccessorTest, FailedSecondLoadTakesTheCountAndLosesTheArrayAlone)
{
    SourceDocument first("1 2 3 4 5 6", ofFloats + "count='2' offset='0'", PARAMS_XYZ);
    SourceDocument second("7 8 9", "source='#words' count='5' offset='1' stride='4'", PARAM_X);
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(first.accessor()));
    ASSERT_EQ((Floats{4, 5, 6}), record(accessor, 1));
    const LogCapture log;
    EXPECT_FALSE(accessor.createFromCollada(second.accessor()));
    EXPECT_EQ("Data source is not a float array Name_array", log.text());
    EXPECT_EQ(5u, accessor.count());
    EXPECT_EQ(3u, accessor.stride());
    EXPECT_EQ(0u, offsetOf(accessor));
    EXPECT_EQ(12u, accessor.bytePerAccess());
    EXPECT_EQ(3u, listOf(accessor).size());
    EXPECT_EQ((Floats{4, 5, 6}), record(accessor, 1)); // the current record is still there
    EXPECT_THROW(accessor[0], vesk::NullPointer);
}

TEST(AccessorTest, LoadAsksTheOverriddenOperations)
{
    SourceDocument document("1 2", ofFloats + "count='1'", PARAM_X);
    const LogCapture unread;
    OverridingAccessor accessor;
    accessor.tokensOfFloat = 2;
    EXPECT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ(7u, accessor.stride());
    ASSERT_EQ(1u, listOf(accessor).size());
    EXPECT_EQ(2u, listOf(accessor)[0].stride());
    EXPECT_EQ(8u, listOf(accessor)[0].tokenByteSize());
    EXPECT_EQ(16u, accessor.bytePerAccess());
}

TEST(AccessorTest, NullElementIsMisuseAndChangesNothing)
{
    const LogCapture log;
    AccessorFloat accessor;
    try {
        accessor.createFromCollada(AccessorRef());
        FAIL() << "nothing thrown";
    } catch (const vesk::NullPointer& failure) {
        EXPECT_FALSE(failure.message().empty());
    }
    EXPECT_EQ(0u, accessor.count());
    EXPECT_EQ(0u, listOf(accessor).size());
    EXPECT_TRUE(log.lines().empty());
}

// --- a source that is no float array ---

class AccessorWrongSourceTest : public testing::TestWithParam<Case<const char*, const char*>> {};

TEST_P(AccessorWrongSourceTest, GivesOneLineAndOnlyTheCount)
{
    SourceDocument document("1 2 3 4 5 6", std::string("count='4' offset='1' stride='3' ") + GetParam().given,
                            PARAMS_XYZ);
    const LogCapture log;
    AccessorFloat accessor;
    EXPECT_FALSE(accessor.createFromCollada(document.accessor()));
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ("libVideo.accessor", log.lines()[0].channel);
    EXPECT_EQ(3, log.lines()[0].priority);
    EXPECT_EQ(GetParam().expected, log.lines()[0].words());
    EXPECT_EQ(4u, accessor.count());
    EXPECT_EQ(0u, accessor.stride());
    EXPECT_EQ(0u, offsetOf(accessor));
    EXPECT_EQ(0u, accessor.bytePerAccess());
    EXPECT_EQ(noIndex, currentIndexOf(accessor));
    EXPECT_TRUE(accessor.name().empty());
    EXPECT_EQ(0u, listOf(accessor).size());
    EXPECT_EQ(nullptr, accessorFloatArray(accessor));
}

TEST_P(AccessorWrongSourceTest, ReadsGiveTheEmptyListAndALineEach)
{
    SourceDocument document("1 2 3", std::string("count='4' ") + GetParam().given, PARAMS_XYZ);
    LogCapture log("libVideo.accessor");
    AccessorFloat accessor;
    EXPECT_FALSE(accessor.createFromCollada(document.accessor()));
    log.clear();
    EXPECT_EQ(0u, accessor[3].size());
    EXPECT_EQ(0u, accessor[3].size());
    EXPECT_EQ(noIndex, currentIndexOf(accessor));
    EXPECT_EQ("No data to read from the accessor\nNo data to read from the accessor", log.text());
    EXPECT_EQ(indexAssertion, assertionOf([&] { accessor[4]; }));
}

TEST_P(AccessorWrongSourceTest, TypesOfItsParamsAreNotAsked)
{
    SourceDocument document("1 2 3", std::string("count='4' ") + GetParam().given, "<param name='X' type='int'/>");
    const LogCapture log("libVideo.accessor");
    AccessorFloat accessor;
    EXPECT_FALSE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ(GetParam().expected, log.text());
}

INSTANTIATE_ROWS(Documents, AccessorWrongSourceTest,
                 {"NameArray", "source='#words'", "Data source is not a float array Name_array"},
                 {"IntArray", "source='#ints'", "Data source is not a float array int_array"},
                 {"Source", "source='#source'", "Data source is not a float array source"},
                 {"NoSuchElement", "source='#nowhere'", "Data source is not a float array #nowhere"},
                 {"EmptyAttribute", "source=''", "Data source is not a float array "},
                 {"NoAttribute", "", "Data source is not a float array "});

// --- params of other types ---

TEST(AccessorTest, UnknownParamTypeThrowsNamedOrNot)
{
    for (const char* const params :
         {"<param name='X' type='int'/>", "<param type='int'/>", "<param name='X' type='name'/>",
          "<param name='X' type='float3'/>", "<param name='X'/>", "<param/>", "<param name='X' type=''/>"}) {
        for (const char* const stride : {"", "stride='1' ", "stride='4' "}) {
            SourceDocument document("1 2 3 4", ofFloats + stride + "count='1'", params);
            AccessorFloat accessor;
            EXPECT_EQ(unreachableAssertion, assertionOf([&] { accessor.createFromCollada(document.accessor()); }))
                << params << stride;
            EXPECT_EQ(0u, listOf(accessor).size());
            EXPECT_EQ(1u, accessor.count());
        }
    }
}

TEST(AccessorTest, UnknownTypeBelowABelievedStrideKeepsTheComponentsBeforeIt)
{
    SourceDocument document("1 2 3 4 5 6 7 8", ofFloats + "count='1' offset='1' stride='4'",
                            PARAM_X PARAM_X "<param name='N' type='int'/>" PARAM_X);
    AccessorFloat accessor;
    EXPECT_EQ(unreachableAssertion, assertionOf([&] { accessor.createFromCollada(document.accessor()); }));
    EXPECT_EQ(1u, accessor.count());
    EXPECT_EQ(1u, offsetOf(accessor));
    EXPECT_EQ(4u, accessor.stride());
    EXPECT_EQ(2u, listOf(accessor).size());
    EXPECT_EQ(8u, accessor.bytePerAccess());
    EXPECT_EQ((Floats{5, 6}), record(accessor, 0));
}

TEST(AccessorTest, UnknownTypeInTheCalculatedStrideComesBeforeAnyComponent)
{
    SourceDocument document("1 2 3 4", ofFloats + "count='1' offset='1'", PARAM_X "<param type='int'/>");
    AccessorFloat accessor;
    EXPECT_EQ(unreachableAssertion, assertionOf([&] { accessor.createFromCollada(document.accessor()); }));
    EXPECT_EQ(1u, accessor.count());
    EXPECT_EQ(1u, offsetOf(accessor));
    EXPECT_EQ(0u, accessor.stride());
    EXPECT_EQ(0u, listOf(accessor).size());
    EXPECT_EQ(0u, accessor.bytePerAccess());
}

// --- reading ---

TEST(AccessorReadTest, RecordsLieStrideFloatsApart)
{
    SourceDocument document("1 2 3 4 5 6 7 8", ofFloats + "count='2' stride='4'", PARAMS_XYZ);
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ((Floats{1, 2, 3}), record(accessor, 0));
    EXPECT_EQ((Floats{5, 6, 7}), record(accessor, 1));
}

TEST(AccessorReadTest, RecordsOverlapBelowAStrideThatIsTooSmall)
{
    SourceDocument document("1 2 3 4 5", ofFloats + "count='2' stride='2'", PARAMS_XYZ);
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ((Floats{1, 2, 3}), record(accessor, 0));
    EXPECT_EQ((Floats{3, 4, 5}), record(accessor, 1));
}

TEST(AccessorReadTest, OffsetCountsWholeRecords)
{
    SourceDocument document("0 1 2 3 4 5 6 7 8 9 10 11", ofFloats + "count='2' offset='2' stride='3'", PARAMS_XYZ);
    const LogCapture log;
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ((Floats{6, 7, 8}), record(accessor, 0));
    EXPECT_EQ((Floats{9, 10, 11}), record(accessor, 1));
    EXPECT_TRUE(log.lines().empty());
}

TEST(AccessorReadTest, OffsetCountsForNothingWithoutAStride)
{
    SourceDocument document("4 5 6", ofFloats + "count='2' offset='2'", "");
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ((Floats{4}), record(accessor, 0));
    EXPECT_EQ((Floats{4}), record(accessor, 1));
}

TEST(AccessorReadTest, RecordsCanBeReadInAnyOrder)
{
    SourceDocument document("1 2 3 4 5 6 7 8 9", ofFloats + "count='3'", PARAMS_XYZ);
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ((Floats{7, 8, 9}), record(accessor, 2));
    EXPECT_EQ((Floats{1, 2, 3}), record(accessor, 0));
    EXPECT_EQ((Floats{4, 5, 6}), record(accessor, 1));
    EXPECT_EQ((Floats{7, 8, 9}), record(accessor, 2));
}

TEST(AccessorReadTest, ValuesAreNarrowedToFloat)
{
    SourceDocument document("0.1 16777217 -0 1e39 -1e39 1e-60", ofFloats + "count='6'", PARAM_X);
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    constexpr float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(0.1f, floatIn(accessor[0][0], 0));
    EXPECT_EQ(16777216.0f, floatIn(accessor[1][0], 0));
    EXPECT_TRUE(std::signbit(floatIn(accessor[2][0], 0)));
    EXPECT_EQ(infinity, floatIn(accessor[3][0], 0));
    EXPECT_EQ(-infinity, floatIn(accessor[4][0], 0));
    EXPECT_EQ(0.0f, floatIn(accessor[5][0], 0));
    document.values()[0] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(std::isnan(floatIn(accessor[0][0], 0)));
}

TEST(AccessorReadTest, TokenOfAMatrixFillsFourBytesAndTheOthersStayZero)
{
    SourceDocument document("1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 -1 -2 -3 -4 -5 -6 -7 -8 -9 -10 -11 -12 -13 -14 "
                            "-15 -16",
                            ofFloats + "count='2'", PARAM_MATRIX);
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    for (unsigned index = 0; index < 2; ++index) {
        const Data& data = accessor[index][0];
        for (unsigned j = 0; j < 16; ++j) {
            const float value = static_cast<float>(j + 1);
            EXPECT_EQ(index == 0 ? value : -value, floatIn(data, j)) << index << " " << j;
            for (unsigned i = 4; i < 64; ++i) {
                EXPECT_EQ(0, data[j].get()[i]) << index << " " << j << " " << i;
            }
        }
    }
}

TEST(AccessorReadTest, EveryReadReturnsTheOneList)
{
    SourceDocument document("1 2 3 4 5 6", ofFloats + "count='2'", PARAMS_XYZ);
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    const DataList* const first = &accessor[0];
    const unsigned char* const bytes = (*first)[0][0].get();
    EXPECT_EQ(&listOf(accessor), first);
    EXPECT_EQ(first, &accessor[1]);
    EXPECT_EQ(first, &accessor[1]);
    EXPECT_EQ(bytes, listOf(accessor)[0][0].get());
}

TEST(AccessorReadTest, ReadMakesItsIndexCurrent)
{
    SourceDocument document("1 2 3", ofFloats + "count='3'", PARAM_X);
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ(noIndex, currentIndexOf(accessor));
    accessor[2];
    EXPECT_EQ(2u, currentIndexOf(accessor));
    accessor[0];
    EXPECT_EQ(0u, currentIndexOf(accessor));
}

TEST(AccessorReadTest, SameIndexTwiceReadsOnce)
{
    SourceDocument document("1 2 3", ofFloats + "count='3'", PARAM_X);
    CountingAccessor accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ(0u, accessor.reads);
    EXPECT_EQ((Floats{2}), record(accessor, 1));
    document.values()[1] = 99.0;
    EXPECT_EQ((Floats{2}), record(accessor, 1));
    EXPECT_EQ(1u, accessor.reads);
    EXPECT_EQ((Floats{1}), record(accessor, 0));
    EXPECT_EQ((Floats{99}), record(accessor, 1));
    EXPECT_EQ(3u, accessor.reads);
}

TEST(AccessorReadTest, DirectReadIgnoresTheCurrentRecordAndTheCount)
{
    SourceDocument document("1 2 3", ofFloats + "count='1'", PARAM_X);
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ((Floats{1}), record(accessor, 0));
    document.values()[0] = 5.0;
    EXPECT_EQ((Floats{5}), floatsIn(readDataFromArray(accessor, 0)));
    EXPECT_EQ((Floats{3}), floatsIn(readDataFromArray(accessor, 2)));
    EXPECT_EQ(2u, currentIndexOf(accessor));
}

TEST(AccessorReadTest, ReadWithoutComponentsGivesOneLineAndTheEmptyList)
{
    SourceDocument document("1 2", ofFloats + "count='2'", PARAM_UNNAMED);
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    const LogCapture log;
    const DataList& list = accessor[1];
    EXPECT_EQ(&listOf(accessor), &list);
    EXPECT_EQ(0u, list.size());
    EXPECT_EQ(noIndex, currentIndexOf(accessor));
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ("libVideo.accessor", log.lines()[0].channel);
    EXPECT_EQ(3, log.lines()[0].priority);
    EXPECT_EQ("No data to read from the accessor", log.lines()[0].words());
}

TEST(AccessorReadTest, DirectReadOfAnAccessorThatNeverLoadedGivesTheSameLine)
{
    AccessorFloat accessor;
    const LogCapture log("libVideo.accessor");
    EXPECT_EQ(0u, readDataFromArray(accessor, 0).size());
    EXPECT_EQ("No data to read from the accessor", log.text());
    EXPECT_EQ(noIndex, currentIndexOf(accessor));
}

TEST(AccessorReadTest, IndexHasToLieBelowTheCount)
{
    SourceDocument document("1 2 3 4 5 6", ofFloats + "count='2'", PARAMS_XYZ);
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ("none", assertionOf([&] { accessor[1]; }));
    EXPECT_EQ(indexAssertion, assertionOf([&] { accessor[2]; }));
    EXPECT_EQ(indexAssertion, assertionOf([&] { accessor[noIndex]; }));
    EXPECT_EQ(1u, currentIndexOf(accessor));
    EXPECT_EQ((Floats{4, 5, 6}), floatsIn(listOf(accessor)));
}

TEST(AccessorReadTest, AccessorThatNeverLoadedHasNoRecord)
{
    AccessorFloat accessor;
    EXPECT_EQ(indexAssertion, assertionOf([&] { accessor[0]; }));
    EXPECT_EQ(indexAssertion, assertionOf([&] { accessor[noIndex]; }));
}

TEST(AccessorReadTest, AccessorWithoutRecordsHasNoIndex)
{
    SourceDocument document("1 2 3", ofFloats + "count='0'", PARAMS_XYZ);
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ(indexAssertion, assertionOf([&] { accessor[0]; }));
}

TEST(AccessorReadTest, SumOfOffsetAndIndexWrapsAt32Bits)
{
    SourceDocument document("1 2 3 4 5 6", ofFloats + "count='4' offset='4294967295'", PARAMS_XYZ);
    const LogCapture unread;
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    // 4294967295 + 1 is 0, and 4294967295 + 2 is 1.
    EXPECT_EQ((Floats{1, 2, 3}), record(accessor, 1));
    EXPECT_EQ((Floats{4, 5, 6}), record(accessor, 2));
    // The first record starts 3 floats before the wrap, far past the end.
    EXPECT_EQ((Floats{0, 0, 0}), record(accessor, 0));
}

TEST(AccessorReadTest, ProductWithTheStrideWrapsAt32Bits)
{
    SourceDocument document("1 2 3 4", ofFloats + "count='4294967295' stride='2'", PARAM_X PARAM_X);
    const LogCapture unread;
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    // 2147483649 * 2 is 2 after the wrap.
    EXPECT_EQ((Floats{3, 4}), record(accessor, 2147483649u));
    EXPECT_EQ((Floats{1, 2}), record(accessor, 2147483648u));
}

TEST(AccessorReadTest, ReadsAllocateNothing)
{
    SourceDocument document("1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22 23 24 25 26 27 28 29 30 31 32 33 "
                            "34 35 36",
                            ofFloats + "count='2'", PARAM_X PARAM_MATRIX "<param name='A' type='float'/>");
    AccessorFloat accessor;
    long requestsOfLoad = 0;
    long requestsOfReads = -1;
    {
        const FailingAllocator allocator(-1);
        accessor.createFromCollada(document.accessor());
        requestsOfLoad = allocator.requests();
    }
    {
        const FailingAllocator allocator(-1);
        accessor[0];
        accessor[1];
        accessor[1];
        accessor[0];
        requestsOfReads = allocator.requests();
    }
    EXPECT_GT(requestsOfLoad, 0); // requests inside the library are counted
    EXPECT_EQ(0, requestsOfReads);
    EXPECT_EQ(1.0f, floatIn(listOf(accessor)[0], 0));
}

TEST(AccessorTest, ListThatCannotGrowThrowsNullPointerAndKeepsWhatItHolds)
{
    SourceDocument document("1 2 3 4 5 6 7 8 9", ofFloats + "count='1'", repeated(PARAM_X, 9));
    long requests = 0;
    for (unsigned run = 0; run < 2; ++run) { // the first run also allocates what the process keeps
        AccessorFloat accessor;
        const AccessorRef element = document.accessor();
        const FailingAllocator allocator(-1);
        accessor.createFromCollada(element);
        requests = allocator.requests();
    }
    // From the last request back to that for the block of the ninth component.
    bool hasThrown = false;
    for (long successes = requests - 1; successes > requests - 20 && successes >= 0 && !hasThrown; --successes) {
        AccessorFloat accessor;
        const AccessorRef element = document.accessor();
        std::string message;
        {
            const FailingAllocator allocator(successes);
            try {
                accessor.createFromCollada(element);
            } catch (const vesk::NullPointer& failure) {
                hasThrown = true;
                message = failure.what();
            } catch (const std::bad_alloc&) {
                continue; // the bytes of a component
            }
        }
        if (hasThrown) {
            EXPECT_EQ("Asked for array of size: 9", message);
            EXPECT_EQ(8u, listOf(accessor).size());
            EXPECT_EQ(32u, accessor.bytePerAccess());
            EXPECT_EQ((Floats{1, 2, 3, 4, 5, 6, 7, 8}), record(accessor, 0));
        }
    }
    EXPECT_TRUE(hasThrown);
}

// --- an array that is shorter than the accessor says ---

struct ReachCase : Row {
    const char* floats;
    const char* attributes;
    const char* params;
    bool isBeyond;
};

class AccessorReachTest : public testing::TestWithParam<ReachCase> {};

TEST_P(AccessorReachTest, ShortArrayGivesOneLineAndTrue)
{
    SourceDocument document(GetParam().floats, ofFloats + GetParam().attributes, GetParam().params);
    const LogCapture log;
    AccessorFloat accessor;
    EXPECT_TRUE(accessor.createFromCollada(document.accessor()));
    if (!GetParam().isBeyond) {
        EXPECT_TRUE(log.lines().empty());
        return;
    }
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ("libVideo.accessor", log.lines()[0].channel);
    EXPECT_EQ(3, log.lines()[0].priority);
    EXPECT_EQ("Accessor reaches beyond its float array", log.lines()[0].words());
}

INSTANTIATE_ROWS(Documents, AccessorReachTest, {"Exact", "1 2 3 4 5 6", "count='2'", PARAMS_XYZ, false},
                 {"Longer", "1 2 3 4 5 6 7", "count='2'", PARAMS_XYZ, false},
                 {"OneShort", "1 2 3 4 5", "count='2'", PARAMS_XYZ, true},
                 {"OneRecordMore", "1 2 3 4 5 6", "count='3'", PARAMS_XYZ, true},
                 {"EmptyArray", "", "count='1'", PARAMS_XYZ, true},
                 {"EmptyArrayWithoutRecords", "", "count='0'", PARAMS_XYZ, false},
                 {"OffsetWithin", "1 2 3 4 5 6", "count='1' offset='1'", PARAMS_XYZ, false},
                 {"OffsetBeyond", "1 2 3 4 5 6", "count='2' offset='1'", PARAMS_XYZ, true},
                 {"OffsetBeyondWithoutRecords", "1", "offset='9'", PARAMS_XYZ, false},
                 {"StrideBeyond", "1 2 3 4 5 6", "count='2' stride='4'", PARAMS_XYZ, true},
                 {"SmallStrideWithin", "1 2 3 4 5", "count='2' stride='2'", PARAMS_XYZ, false},
                 {"SmallStrideBeyond", "1 2 3 4", "count='2' stride='2'", PARAMS_XYZ, true},
                 {"Matrix", "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16", "count='1'", PARAM_MATRIX, false},
                 {"ShortMatrix", "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15", "count='1'", PARAM_MATRIX, true},
                 {"OneFloatForAllRecords", "1", "count='4000000000' offset='7'", "", false},
                 {"NoFloatForAllRecords", "", "count='1'", "", true},
                 {"ParamBehindUnnamedOnes", "1 2", "count='1'", PARAM_UNNAMED PARAM_UNNAMED PARAM_X, true},
                 {"AllRecordsOf32Bits", "1 2 3", "count='4294967295' offset='4294967295' stride='4294967295'", PARAM_X,
                  true},
                 {"MostThatAnAttributeHolds", "1 2 3", "count='18446744073709551615'", PARAM_X, true});

TEST(AccessorReachTest, MissingValuesReadAsZero)
{
    SourceDocument document("1 2 3 4 5", ofFloats + "count='3'", PARAMS_XYZ);
    const LogCapture unread;
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ((Floats{1, 2, 3}), record(accessor, 0));
    EXPECT_EQ((Floats{4, 5, 0}), record(accessor, 1));
    EXPECT_EQ((Floats{0, 0, 0}), record(accessor, 2));
    // Values from the previous read are overwritten.
    EXPECT_EQ((Floats{1, 2, 3}), record(accessor, 0));
    EXPECT_EQ((Floats{0, 0, 0}), record(accessor, 2));
}

TEST(AccessorReachTest, ReadsBeyondTheArrayLogNothingMore)
{
    SourceDocument document("1", ofFloats + "count='3'", PARAMS_XYZ);
    LogCapture log;
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    log.clear();
    EXPECT_EQ((Floats{1, 0, 0}), record(accessor, 0));
    EXPECT_EQ((Floats{0, 0, 0}), record(accessor, 1));
    EXPECT_TRUE(log.lines().empty());
}

TEST(AccessorReachTest, MissingTokensOfAMatrixAreZero)
{
    SourceDocument document("1 2 3", ofFloats + "count='1'", PARAM_MATRIX);
    const LogCapture unread;
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ((Floats{1, 2, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), record(accessor, 0));
}

TEST(AccessorReachTest, EmptyArrayReadsAsZero)
{
    SourceDocument document("", ofFloats + "count='2'", "");
    const LogCapture unread;
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ((Floats{0}), record(accessor, 0));
    EXPECT_EQ((Floats{0}), record(accessor, 1));
}

TEST(AccessorReachTest, CountOfAllOnesGivesAllIndicesBelowIt)
{
    SourceDocument document("1 2 3", ofFloats + "count='18446744073709551615'", PARAM_X);
    const LogCapture unread;
    AccessorFloat accessor;
    ASSERT_TRUE(accessor.createFromCollada(document.accessor()));
    EXPECT_EQ(4294967295u, accessor.count());
    EXPECT_EQ((Floats{3}), record(accessor, 2));
    EXPECT_EQ((Floats{0}), record(accessor, 3));
    EXPECT_EQ((Floats{0}), record(accessor, 4294967294u));
    EXPECT_EQ(indexAssertion, assertionOf([&] { accessor[4294967295u]; }));
}

TEST(AccessorReachTest, SuppressedLineLeavesTheResult)
{
    SourceDocument document("1", ofFloats + "count='3'", PARAMS_XYZ);
    SourceDocument wrong("1", "source='#words' count='3'", PARAMS_XYZ);
    const LogCapture log;
    vesk::LogFactory::setPriority(vesk::LoggerPriority::PRIORITY_OFF);
    AccessorFloat accessor;
    EXPECT_TRUE(accessor.createFromCollada(document.accessor()));
    AccessorFloat failed;
    EXPECT_FALSE(failed.createFromCollada(wrong.accessor()));
    EXPECT_EQ(0u, failed[0].size());
    EXPECT_TRUE(log.lines().empty());
}

// --- copies ---

TEST(AccessorCopyTest, CopyAnswersForTheSameCurrentRecord)
{
    SourceDocument document("1 2 3 4 5 6 7 8 9", ofFloats + "count='2' offset='1'", PARAMS_XYZ);
    AccessorFloat source;
    ASSERT_TRUE(source.createFromCollada(document.accessor()));
    source[1];
    AccessorFloat copy(source);
    EXPECT_EQ(2u, copy.count());
    EXPECT_EQ(1u, offsetOf(copy));
    EXPECT_EQ(3u, copy.stride());
    EXPECT_EQ(12u, copy.bytePerAccess());
    EXPECT_EQ(1u, currentIndexOf(copy));
    EXPECT_EQ(document.array(), accessorFloatArray(copy));
    document.values()[6] = 70.0;
    EXPECT_EQ((Floats{7, 8, 9}), record(copy, 1));
    EXPECT_EQ((Floats{4, 5, 6}), record(copy, 0));
    EXPECT_EQ((Floats{70, 8, 9}), record(copy, 1));
}

TEST(AccessorCopyTest, CopyAndSourceReadApart)
{
    SourceDocument document("1 2 3 4 5 6", ofFloats + "count='2'", PARAMS_XYZ);
    AccessorFloat source;
    ASSERT_TRUE(source.createFromCollada(document.accessor()));
    source[0];
    AccessorFloat copy(source);
    EXPECT_EQ((Floats{4, 5, 6}), record(copy, 1));
    EXPECT_EQ((Floats{1, 2, 3}), floatsIn(listOf(source)));
    EXPECT_EQ(0u, currentIndexOf(source));
    EXPECT_EQ(1u, currentIndexOf(copy));
    for (unsigned i = 0; i < 3; ++i) {
        EXPECT_NE(listOf(source)[i][0].get(), listOf(copy)[i][0].get()) << i;
    }
}

TEST(AccessorCopyTest, AssignmentReplacesRecordListAndArray)
{
    SourceDocument document("1 2 3 4 5 6", ofFloats + "count='2'", PARAMS_XYZ);
    SourceDocument other("9 8", ofFloats + "count='1'", PARAM_X);
    AccessorFloat source;
    ASSERT_TRUE(source.createFromCollada(document.accessor()));
    source[1];
    AccessorFloat target;
    ASSERT_TRUE(target.createFromCollada(other.accessor()));
    target[0];
    const AccessorFloat& result = (target = source);
    EXPECT_EQ(&target, &result);
    EXPECT_EQ(2u, target.count());
    EXPECT_EQ(3u, target.stride());
    EXPECT_EQ(12u, target.bytePerAccess());
    EXPECT_EQ(1u, currentIndexOf(target));
    EXPECT_EQ(document.array(), accessorFloatArray(target));
    EXPECT_EQ((Floats{4, 5, 6}), floatsIn(listOf(target)));
    EXPECT_EQ((Floats{1, 2, 3}), record(target, 0));
    EXPECT_EQ((Floats{4, 5, 6}), floatsIn(listOf(source)));
}

TEST(AccessorCopyTest, AssignmentOfTheBaseCopiesNumbersAndList)
{
    SourceDocument document("1 2 3 4 5 6", ofFloats + "count='2' offset='0'", PARAMS_XYZ);
    AccessorFloat source;
    ASSERT_TRUE(source.createFromCollada(document.accessor()));
    source[1];
    AccessorFloat target;
    static_cast<Accessor&>(target) = source;
    EXPECT_EQ(2u, target.count());
    EXPECT_EQ(3u, target.stride());
    EXPECT_EQ(12u, target.bytePerAccess());
    EXPECT_EQ((Floats{4, 5, 6}), record(target, 1));
}

// The base class knows the list but not the array, so it cannot read another record.
TEST(AccessorCopyTest, ListWithoutItsArrayThrowsNullPointerAtAnotherRecord)
{
    SourceDocument document("1 2 3 4 5 6", ofFloats + "count='2' offset='0'", PARAMS_XYZ);
    AccessorFloat source;
    ASSERT_TRUE(source.createFromCollada(document.accessor()));
    source[1];
    AccessorFloat target;
    static_cast<Accessor&>(target) = source;
    EXPECT_THROW(target[0], vesk::NullPointer);
    EXPECT_EQ((Floats{4, 5, 6}), record(target, 1));
}

TEST(AccessorCopyTest, CopyOutlivesItsSource)
{
    SourceDocument document("1 2 3 4 5 6", ofFloats + "count='2'", PARAMS_XYZ);
    auto source = std::make_unique<AccessorFloat>();
    ASSERT_TRUE(source->createFromCollada(document.accessor()));
    (*source)[1];
    AccessorFloat copy(*source);
    source.reset();
    EXPECT_EQ((Floats{4, 5, 6}), record(copy, 1));
    EXPECT_EQ((Floats{1, 2, 3}), record(copy, 0));
}

TEST(AccessorCopyTest, CopyOfAFailedAccessorHasItsCount)
{
    SourceDocument document("1", "source='#words' count='4'", PARAMS_XYZ);
    const LogCapture unread;
    AccessorFloat source;
    EXPECT_FALSE(source.createFromCollada(document.accessor()));
    const AccessorFloat copy(source);
    EXPECT_EQ(4u, copy.count());
    EXPECT_EQ(0u, listOf(copy).size());
    EXPECT_EQ(nullptr, accessorFloatArray(copy));
}

TEST(AccessorTest, DestructionThroughTheBaseLeavesTheDocumentAlone)
{
    SourceDocument document("1 2 3", ofFloats + "count='1'", PARAMS_XYZ);
    for (unsigned run = 0; run < 2; ++run) {
        std::unique_ptr<Accessor> accessor = std::make_unique<AccessorFloat>();
        EXPECT_TRUE(accessor->createFromCollada(document.accessor()));
        EXPECT_EQ((Floats{1, 2, 3}), record(*accessor, 0));
    }
    EXPECT_EQ(3u, document.values().getCount());
}

static_assert(std::is_same_v<ByteHandle, decltype(std::declval<Data&>()[0u])>);
static_assert(std::is_same_v<const ByteHandle, decltype(std::declval<const Data&>()[0u])>);
static_assert(!std::is_polymorphic_v<Data> && !std::is_default_constructible_v<Data>);
static_assert(std::is_copy_constructible_v<Data> && std::is_copy_assignable_v<Data>);
static_assert(std::is_same_v<unsigned, std::underlying_type_t<DataType>> && sizeof(DataType) == 4);
static_assert(std::is_abstract_v<Accessor> && std::has_virtual_destructor_v<Accessor>);
static_assert(std::is_convertible_v<AccessorFloat*, Accessor*>);
static_assert(!std::is_abstract_v<AccessorFloat> && std::is_default_constructible_v<AccessorFloat>);
static_assert(std::is_copy_constructible_v<AccessorFloat> && std::is_copy_assignable_v<AccessorFloat>);
static_assert(std::is_same_v<const DataList&, decltype(std::declval<Accessor&>()[0u])>);
static_assert(std::is_same_v<unsigned, decltype(std::declval<const Accessor&>().count())> &&
              std::is_same_v<unsigned, decltype(std::declval<const Accessor&>().stride())> &&
              std::is_same_v<unsigned, decltype(std::declval<const Accessor&>().bytePerAccess())> &&
              std::is_same_v<const vesk::String&, decltype(std::declval<const Accessor&>().name())>);

template <class T, class = void>
struct HasConstRead : std::false_type {};
template <class T>
struct HasConstRead<T, std::void_t<decltype(std::declval<const T&>()[0u])>> : std::true_type {};
static_assert(!HasConstRead<Accessor>::value && !HasConstRead<AccessorFloat>::value);

} // namespace
