#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Input.h>

namespace {

using namespace libVideo;
using namespace testSupport;

using DataList = vesk::Array<Data>;
using ByteArray = vesk::Array<unsigned char>;
using IndexArray = vesk::Array<unsigned>;
using LayoutArray = vesk::Array<VertexLayout>;
using SourceHandle = vesk::SharedResource<vesk::PointerStorage<Source, 0, 3>, 0>;
using SourceArray = vesk::Array<SourceHandle>;
using LocalInputs = daeTArray<daeSmartRef<domInputLocal>>;
using OffsetInputs = daeTArray<daeSmartRef<domInputLocalOffset>>;
using OffsetInputRef = daeSmartRef<domInputLocalOffset>;
using Floats = std::vector<float>;
using Bytes = std::vector<unsigned>;
using Indices = std::vector<unsigned>;

PRIVATE_MEMBER(cachedIndexOf, unsigned Input::*, &Input::m_cachedIndex)
PRIVATE_MEMBER(inputBytePerAccess, unsigned Input::*, &Input::m_bytePerAccess)
PRIVATE_MEMBER(streamOf, ByteArray Input::*, &Input::m_byteStream)
PRIVATE_MEMBER(inputLayout, LayoutArray Input::*, &Input::m_layout)
PRIVATE_MEMBER(inputSources, SourceArray Input::*, &Input::m_sources)
PRIVATE_MEMBER(localNumVertices, unsigned InputLocal::*, &InputLocal::m_numVertices)
PRIVATE_MEMBER(localSources, const SourceArray& (InputLocal::*)() const, &InputLocal::sources)
PRIVATE_MEMBER(offsetCountOf, unsigned InputLocalOffset::*, &InputLocalOffset::m_offsetCount)
PRIVATE_MEMBER(offsetOffsets, IndexArray InputLocalOffset::*, &InputLocalOffset::m_offsets)
PRIVATE_MEMBER(pOf, domP* InputLocalOffset::*, &InputLocalOffset::m_p)
PRIVATE_MEMBER(offsetPIndices, IndexArray InputLocalOffset::*, &InputLocalOffset::m_pIndices)
PRIVATE_MEMBER(offsetAddOffset, void (InputLocalOffset::*)(unsigned), &InputLocalOffset::addOffset)
PRIVATE_MEMBER(offsetCreateVertices, void (InputLocalOffset::*)(const OffsetInputRef&),
               &InputLocalOffset::createVertices)

TEST(InputLocalTest, NullEntryOfAHostThrowsNullPointer)
{
    daeTArray<daeSmartRef<domInputLocal>> inputs;
    inputs.append(nullptr);
    EXPECT_THROW(libVideo::InputLocal input(inputs), vesk::NullPointer);
}

TEST(InputLocalOffsetTest, NullEntryOfAHostThrowsNullPointer)
{
    daeTArray<daeSmartRef<domInputLocalOffset>> inputs;
    inputs.append(nullptr);
    EXPECT_THROW(libVideo::InputLocalOffset input(inputs, nullptr), vesk::NullPointer);
}

constexpr unsigned noIndex = 0xFFFFFFFFu;

/// Record r of "positions" is 10r, 10r + 1, 10r + 2; of "normals" the same and 100; of "texcoords" 200 + 10r and 1
/// more.
const std::string ownSources =
    sourceXml("positions", "0 1 2 10 11 12 20 21 22 30 31 32", "count='4' stride='3'", PARAMS_XYZ) +
    sourceXml("normals", "100 101 102 110 111 112 120 121 122", "count='3' stride='3'", PARAMS_XYZ) +
    sourceXml("texcoords", "200 201 210 211 220 221 230 231", "count='4' stride='2'", PARAMS_ST) +
    sourceXml("bare", "300 310 320") +
    // Its accessor leads to names, so each read of it only logs a message.
    "<source id='failed'><float_array id='failed-array' count='1'>1</float_array><technique_common><accessor "
    "source='#words' count='9'>" PARAM_X "</accessor></technique_common></source>"
    "<source id='names'><Name_array id='words' count='1'>a</Name_array></source>";

const std::string position = inputXml("POSITION", "positions");
const std::string normal = inputXml("NORMAL", "normals");
const std::string texcoord = inputXml("TEXCOORD", "texcoords");

/// A document with a mesh: the sources above and those given, a `<vertices>` and a `<triangles>`.
class MeshDocument {
public:
    /// @param p the indices, or null for a mesh without `<p>`
    explicit MeshDocument(const std::string& vertices, const std::string& triangles = "", const char* p = nullptr,
                          const std::string& sources = "")
    {
        m_builder.add("<library_geometries><geometry id='geometry'><mesh>" + ownSources + sources +
                      "<vertices id='vertices'>" + vertices + "</vertices><triangles count='1'>" + triangles +
                      (p != nullptr ? "<p>" + std::string(p) + "</p>" : std::string()) +
                      "</triangles></mesh></geometry></library_geometries>");
        m_builder.open();
    }

    const LocalInputs& vertices() { return m_builder.element<domVertices>("vertices")->getInput_array(); }
    const OffsetInputs& triangles() { return trianglesElement()->getInput_array(); }
    domP* p() { return trianglesElement()->getP(); }
    daeTArray<double>& values(const char* array) { return m_builder.element<domFloat_array>(array)->getValue(); }

private:
    domTriangles* trianglesElement()
    {
        return m_builder.element<domGeometry>("geometry")->getMesh()->getTriangles_array()[0];
    }

    SilentDocumentModel m_silence;
    ColladaBuilder m_builder;
};

Bytes bytesOf(const ByteArray& stream)
{
    return Bytes(stream.begin(), stream.end());
}

/// A stream of floats without gaps.
Floats floatsOf(const ByteArray& stream)
{
    EXPECT_EQ(0u, stream.size() % 4);
    Floats floats(stream.size() / 4);
    if (!floats.empty()) {
        std::memcpy(floats.data(), stream.getData(), floats.size() * 4);
    }
    return floats;
}

Indices indicesOf(const IndexArray& indices)
{
    return Indices(indices.begin(), indices.end());
}

/// "semantic byteSize byteOffset dataType reserved" of each entry.
Texts layoutOf(const Input& input);

/// The ids of the sources.
Texts sourcesOf(const Input& input)
{
    Texts texts;
    for (const SourceHandle& handle : inputSources(input)) {
        texts.push_back(handle->id().data());
    }
    return texts;
}

Indices offsetsOf(const InputLocalOffset& input)
{
    return indicesOf(offsetOffsets(input));
}

Indices tupleOf(const InputLocalOffset& input)
{
    return indicesOf(offsetPIndices(input));
}

/// Traces on "libVideo.input" with "N" for their number; other messages as "channel: text".
Texts tracesOf(const LogCapture& log);

const char* const recordAssertion = "libVideo/SceneGraph/Accessor: index < m_count";
const char* const bareAssertion = "libVideo/SceneGraph/Source: index < m_arrayCount";
const char* const typeAssertion = "libVideo/SceneGraph/Accessor: false";
const char* const loadFailedLine = "libVideo.input: createFromCollada failed";
const char* const sourceReadLine = "libVideo.accessor: No data to read from the accessor";

std::string unknownSemanticLine(const std::string& word)
{
    return "libVideo.input: Does not recognize input semantic " + word;
}

// --- Input ---

/// An input for tests.
class PlainInput : public Input {
public:
    using Input::dataAsByteStream;
    const ByteArray& data(unsigned /*index*/) override { return m_byteStream; }
};

TEST(InputTest, FieldsStartWithTheirDefaults)
{
    const PlainInput input;
    EXPECT_EQ(0xFFFFFFFFu, cachedIndexOf(input));
    EXPECT_EQ(0u, input.bytePerAccess());
    EXPECT_EQ(0u, streamOf(input).size());
    EXPECT_EQ(0u, input.layout().size());
    EXPECT_EQ(0u, inputSources(input).size());
    EXPECT_FALSE(input.hasData());
}

TEST(InputTest, FieldsStandInTheirOrder)
{
    MeshDocument document(position, inputXml("VERTEX", "vertices", "0"), "0");
    const InputLocal local(document.vertices());
    const InputLocalOffset offset(document.triangles(), document.p());
    expectAscending({&cachedIndexOf(local), &inputBytePerAccess(local), &streamOf(local), &inputLayout(local),
                     &inputSources(local), &localNumVertices(local)});
    expectAscending(
        {&inputSources(offset), &offsetCountOf(offset), &offsetOffsets(offset), &pOf(offset), &offsetPIndices(offset)});
}

#if defined(__x86_64__) && defined(__GNUC__)
TEST(InputTest, ReadStandsBehindTheDestructorAmongTheVirtualOperations)
{
    const ByteArray& (Input::*const operation)(unsigned) = &Input::data;
    std::uintptr_t word = 0; // the offset in bytes plus 1
    std::memcpy(&word, &operation, sizeof(word));
    EXPECT_EQ(2u, (word - 1) / sizeof(void*)); // the destructor takes two places
}
#endif

/// A component with consecutive numbers that start at `first`.
Data numbered(unsigned stride, unsigned tokenByteSize, unsigned char first)
{
    Data data("N", stride, libVideo::DATA_TYPE_FLOAT, 0, tokenByteSize);
    for (unsigned j = 0; j < stride; ++j) {
        for (unsigned k = 0; k < tokenByteSize; ++k) {
            data[j].get()[k] = first++;
        }
    }
    return data;
}

TEST(InputTest, DataAsByteStreamTakesEachTokenOfEachComponentInOrder)
{
    DataList list;
    list.append(numbered(1, 4, 10));
    list.append(numbered(3, 2, 20));
    list.append(numbered(2, 5, 30));
    PlainInput input;
    input.dataAsByteStream(list);
    EXPECT_EQ((Bytes{10, 11, 12, 13, 20, 21, 22, 23, 24, 25, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39}),
              bytesOf(input.data(0)));
}

TEST(InputTest, DataAsByteStreamAppends)
{
    DataList list;
    list.append(numbered(1, 4, 10));
    PlainInput input;
    input.dataAsByteStream(list);
    EXPECT_EQ((Bytes{10, 11, 12, 13}), bytesOf(input.data(0)));
    input.dataAsByteStream(list);
    EXPECT_EQ((Bytes{10, 11, 12, 13, 10, 11, 12, 13}), bytesOf(input.data(0)));
    DataList other;
    other.append(numbered(1, 3, 50));
    input.dataAsByteStream(other);
    EXPECT_EQ((Bytes{10, 11, 12, 13, 10, 11, 12, 13, 50, 51, 52}), bytesOf(input.data(0)));
}

TEST(InputTest, DataAsByteStreamOfNothingAppendsNothing)
{
    DataList none;
    DataList empty;
    empty.append(Data("N", 0, libVideo::DATA_TYPE_FLOAT, 0, 4));
    empty.append(Data("N", 2, libVideo::DATA_TYPE_FLOAT, 0, 0));
    PlainInput input;
    input.dataAsByteStream(none);
    input.dataAsByteStream(empty);
    EXPECT_EQ(0u, input.data(0).size());
}

TEST(InputTest, DataAsByteStreamTouchesNothingElse)
{
    DataList list;
    list.append(numbered(1, 4, 10));
    PlainInput input;
    input.dataAsByteStream(list);
    EXPECT_EQ(noIndex, cachedIndexOf(input));
    EXPECT_EQ(0u, input.bytePerAccess());
    EXPECT_FALSE(input.hasData());
}

// --- loading the inputs of a <vertices> ---

TEST(InputLocalTest, EachInputGivesASourceAndALayoutInDocumentOrder)
{
    MeshDocument document(position + normal + texcoord);
    const LogCapture log;
    InputLocal input(document.vertices());
    EXPECT_TRUE(input.hasData());
    EXPECT_EQ((Texts{"positions", "normals", "texcoords"}), sourcesOf(input));
    EXPECT_EQ((Texts{"5 12 0 3 0", "4 12 12 3 0", "9 8 24 2 0"}), layoutOf(input));
    EXPECT_EQ(32u, input.bytePerAccess());
    EXPECT_EQ(noIndex, cachedIndexOf(input));
    EXPECT_TRUE(input.createFromCollada(document.vertices()));
    EXPECT_EQ(Texts(), log.messages());
}

TEST(InputLocalTest, SourcesHandsOutTheList)
{
    MeshDocument document(position + normal);
    const InputLocal input(document.vertices());
    EXPECT_EQ(&inputSources(input), &localSources(input));
}

TEST(InputLocalTest, TwoInputsOfOneSourceReadTwoObjects)
{
    MeshDocument document(position + inputXml("NORMAL", "positions"));
    InputLocal local(document.vertices());
    const SourceArray& sources = localSources(local);
    ASSERT_EQ(2u, sources.size());
    EXPECT_NE(sources[0].get(), sources[1].get());
    EXPECT_EQ((Floats{10, 11, 12, 10, 11, 12}), floatsOf(local.data(1)));
}

class InputWordTest : public testing::TestWithParam<Case<const char*, unsigned>> {};

TEST_P(InputWordTest, WordGivesTheSemanticOfTheLayout)
{
    MeshDocument document(inputXml(GetParam().given, "positions"), inputXml(GetParam().given, "positions", "0"), "0");
    const LogCapture log;
    const InputLocal local(document.vertices());
    const InputLocalOffset offset(document.triangles(), document.p());
    const Texts expected{std::to_string(GetParam().expected) + " 12 0 3 0"};
    EXPECT_EQ(expected, layoutOf(local));
    EXPECT_EQ(expected, layoutOf(offset));
    EXPECT_EQ(Texts(), log.messages());
}

INSTANTIATE_ROWS(Words, InputWordTest, {"Binormal", "BINORMAL", 0}, {"Weight", "WEIGHT", 2}, {"Color", "COLOR", 3},
                 {"Normal", "NORMAL", 4}, {"Position", "POSITION", 5}, {"Tangent", "TANGENT", 8},
                 {"Texcoord", "TEXCOORD", 9}, {"Input", "INPUT", 10}, {"Output", "OUTPUT", 11},
                 {"Interpolation", "INTERPOLATION", 12}, {"InTangent", "IN_TANGENT", 13},
                 {"OutTangent", "OUT_TANGENT", 14}, {"SmallLetters", "position", 5}, {"MixedLetters", "TexCoord", 9});

class InputLocalSkipTest : public testing::TestWithParam<Case<const char*, Texts>> {};

TEST_P(InputLocalSkipTest, InputIsSkippedAndTheOthersCloseUp)
{
    MeshDocument document(position + GetParam().given + texcoord, "", nullptr, sourceXml("empty", ""));
    const LogCapture log;
    InputLocal input(document.vertices());
    EXPECT_EQ(GetParam().expected, log.messages());
    EXPECT_EQ((Texts{"positions", "texcoords"}), sourcesOf(input));
    EXPECT_EQ((Texts{"5 12 0 3 0", "9 8 12 2 0"}), layoutOf(input));
    EXPECT_EQ(20u, input.bytePerAccess());
    EXPECT_EQ((Floats{10, 11, 12, 210, 211}), floatsOf(input.data(1)));
}

TEST_P(InputLocalSkipTest, InputAloneFailsTheLoadWithOneLineMore)
{
    MeshDocument document(GetParam().given, "", nullptr, sourceXml("empty", ""));
    const LogCapture log;
    InputLocal input(document.vertices());
    Texts lines = GetParam().expected;
    lines.push_back(loadFailedLine);
    EXPECT_EQ(lines, log.messages());
    EXPECT_FALSE(input.hasData());
    EXPECT_EQ(0u, input.layout().size());
    EXPECT_EQ(0u, input.bytePerAccess());
    EXPECT_EQ(0u, input.numVertices());
    EXPECT_EQ(0u, input.data(0).size());
    EXPECT_FALSE(input.createFromCollada(document.vertices()));
    EXPECT_FALSE(input.hasData());
}

INSTANTIATE_ROWS(
    Documents, InputLocalSkipTest,
    {"UnknownSemantic", "<input semantic='UV' source='#normals'/>", {unknownSemanticLine("UV")}},
    {"VertexIsUnknownHere", "<input semantic='VERTEX' source='#normals'/>", {unknownSemanticLine("VERTEX")}},
    {"WordShowsAsWritten", "<input semantic='uvW' source='#normals'/>", {unknownSemanticLine("uvW")}},
    {"AbsentSemantic", "<input source='#normals'/>", {unknownSemanticLine("")}},
    {"UnknownSemanticLooksForNoSource", "<input semantic='UV' source='#nothing'/>", {unknownSemanticLine("UV")}},
    {"ReferenceToNothing",
     "<input semantic='NORMAL' source='#nothing'/>",
     {"libVideo.source: Element #nothing is not a source"}},
    {"AbsentReference", "<input semantic='NORMAL'/>", {"libVideo.source: Element  is not a source"}},
    {"ReferenceToNoSource",
     "<input semantic='NORMAL' source='#vertices'/>",
     {"libVideo.source: Element vertices is not a source"}},
    {"SourceOfNames", "<input semantic='NORMAL' source='#names'/>", {"libVideo.source: Source has no float array"}},
    {"EmptySource",
     "<input semantic='NORMAL' source='#empty'/>",
     {"libVideo.source: Not interested in <source> that has no data and accessors"}});

TEST(InputLocalTest, LinesOfSkippedInputsStandInDocumentOrder)
{
    MeshDocument document(inputXml("UV", "normals") + position + inputXml("NORMAL", "nothing") +
                          inputXml("VERTEX", "normals"));
    const LogCapture log;
    const InputLocal local(document.vertices());
    EXPECT_EQ((Texts{unknownSemanticLine("UV"), "libVideo.source: Element #nothing is not a source",
                     unknownSemanticLine("VERTEX")}),
              log.messages());
    EXPECT_TRUE(local.hasData());
}

TEST(InputLocalTest, NoInputsFailWithOneLine)
{
    MeshDocument document("");
    const LogCapture log;
    InputLocal input(document.vertices());
    EXPECT_EQ((Texts{loadFailedLine}), log.messages());
    EXPECT_FALSE(input.hasData());
    EXPECT_FALSE(input.createFromCollada(LocalInputs()));
}

TEST(InputLocalTest, SuppressedLinesLeaveTheResult)
{
    MeshDocument document(inputXml("UV", "normals") + position);
    MeshDocument failing(inputXml("UV", "normals"));
    const LogCapture log;
    vesk::LogFactory::setPriority(vesk::LoggerPriority::PRIORITY_OFF);
    InputLocal input(document.vertices());
    EXPECT_TRUE(input.hasData());
    EXPECT_FALSE(input.createFromCollada(failing.vertices()));
    EXPECT_TRUE(log.lines().empty());
}

TEST(InputLocalTest, NumVerticesIsTheCountOfTheFirstSource)
{
    MeshDocument document(normal + position); // 3 records, 4 records
    EXPECT_EQ(3u, InputLocal(document.vertices()).numVertices());
    MeshDocument other(position + normal);
    EXPECT_EQ(4u, InputLocal(other.vertices()).numVertices());
}

TEST(InputLocalTest, NumVerticesPassesOverSkippedInputs)
{
    MeshDocument document(inputXml("UV", "positions") + normal + position);
    const LogCapture unread;
    EXPECT_EQ(3u, InputLocal(document.vertices()).numVertices());
}

TEST(InputLocalTest, BackedVerticesIsWhatTheLongestArrayReachesInto)
{
    MeshDocument document(normal + position + inputXml("COLOR", "bare"));
    EXPECT_EQ(4u, InputLocal(document.vertices()).backedVertices());
    MeshDocument bare(inputXml("COLOR", "bare"));
    EXPECT_EQ(0u, InputLocal(bare.vertices()).backedVertices());
}

TEST(InputLocalTest, UnknownParamTypePassesThroughTheLoad)
{
    MeshDocument document(position + inputXml("NORMAL", "words") + inputXml("NORMAL", "odd") + texcoord, "", nullptr,
                          sourceXml("odd", "1", "count='1'", "<param name='X' type='int'/>"));
    EXPECT_THROW(
        {
            const LogCapture unread;
            const InputLocal input(document.vertices());
        },
        vesk::AssertionFailure);
    MeshDocument silent(position + inputXml("NORMAL", "odd"), "", nullptr,
                        sourceXml("odd", "1", "count='1'", "<param name='X' type='int'/>"));
    EXPECT_EQ(typeAssertion, assertionOf([&] { InputLocal input(silent.vertices()); }));
}

TEST(InputLocalTest, FailedAccessorSourceIsAnAttributeOfNoBytes)
{
    MeshDocument document(position + inputXml("NORMAL", "failed") + texcoord);
    LogCapture log;
    InputLocal input(document.vertices());
    EXPECT_EQ((Texts{"libVideo.accessor: Data source is not a float array Name_array"}), log.messages());
    EXPECT_EQ((Texts{"5 12 0 3 0", "4 0 12 1 0", "9 8 12 2 0"}), layoutOf(input));
    log.clear();
    EXPECT_EQ((Floats{20, 21, 22, 220, 221}), floatsOf(input.data(2)));
    EXPECT_EQ((Texts{sourceReadLine}), log.messages());
}

// --- a second load of InputLocal ---

TEST(InputLocalTest, SecondLoadStartsAnew)
{
    MeshDocument document(position + texcoord);
    MeshDocument other(normal);
    InputLocal input(document.vertices());
    EXPECT_EQ((Floats{0, 1, 2, 200, 201}), floatsOf(input.data(0)));
    EXPECT_TRUE(input.createFromCollada(other.vertices()));
    EXPECT_EQ(noIndex, cachedIndexOf(input));
    EXPECT_EQ((Texts{"normals"}), sourcesOf(input));
    EXPECT_EQ((Texts{"4 12 0 3 0"}), layoutOf(input));
    EXPECT_EQ(12u, input.bytePerAccess());
    EXPECT_EQ(3u, input.numVertices());
    // The current vertex is read again, and is shorter.
    EXPECT_EQ((Floats{100, 101, 102}), floatsOf(input.data(0)));
    EXPECT_TRUE(input.createFromCollada(document.vertices()));
    EXPECT_EQ((Floats{0, 1, 2, 200, 201}), floatsOf(input.data(0)));
}

TEST(InputLocalTest, FailedSecondLoadKeepsNumVerticesOnly)
{
    MeshDocument document(position);
    MeshDocument failing(inputXml("UV", "normals"));
    const LogCapture unread;
    InputLocal input(document.vertices());
    input.data(1);
    EXPECT_FALSE(input.createFromCollada(failing.vertices()));
    EXPECT_FALSE(input.hasData());
    EXPECT_EQ(4u, input.numVertices());
    EXPECT_EQ(0u, input.layout().size());
    EXPECT_EQ(0u, input.bytePerAccess());
    EXPECT_EQ(noIndex, cachedIndexOf(input));
    EXPECT_EQ(0u, input.data(1).size());
}

TEST(InputLocalTest, SecondLoadReleasesTheSourcesOfTheFirst)
{
    MeshDocument document(position);
    InputLocal input(document.vertices());
    const SourceHandle held = localSources(input)[0];
    EXPECT_EQ(2u, held.useCount());
    input.createFromCollada(document.vertices());
    EXPECT_EQ(1u, held.useCount());
}

// --- reading an InputLocal ---

TEST(InputLocalTest, OneIndexPicksARecordOfEverySource)
{
    MeshDocument document(position + normal + texcoord);
    InputLocal input(document.vertices());
    EXPECT_EQ((Floats{20, 21, 22, 120, 121, 122, 220, 221}), floatsOf(input.data(2)));
    EXPECT_EQ((Floats{0, 1, 2, 100, 101, 102, 200, 201}), floatsOf(input.data(0)));
    EXPECT_EQ(0u, cachedIndexOf(input));
}

TEST(InputLocalTest, UnnamedParamsAreNotInTheRecord)
{
    MeshDocument document(
        inputXml("POSITION", "gap") + texcoord, "", nullptr,
        sourceXml("gap", "1 2 3 4 5 6", "count='2'",
                  "<param name='X' type='float'/><param type='float'/><param name='Z' type='float'/>"));
    InputLocal input(document.vertices());
    EXPECT_EQ((Texts{"5 8 0 3 0", "9 8 8 2 0"}), layoutOf(input));
    EXPECT_EQ((Floats{4, 6, 210, 211}), floatsOf(input.data(1)));
}

TEST(InputLocalTest, MatrixTakes1024BytesWithItsTokens64ApartAndZeroBetween)
{
    MeshDocument document(inputXml("WEIGHT", "matrix") + texcoord, "", nullptr,
                          sourceXml("matrix",
                                    "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22 23 24 25 26 27 28 "
                                    "29 30 31 32",
                                    "count='2'", PARAM_MATRIX));
    InputLocal input(document.vertices());
    EXPECT_EQ((Texts{"2 1024 0 8 0", "9 8 1024 2 0"}), layoutOf(input));
    EXPECT_EQ(1032u, input.bytePerAccess());
    for (const unsigned record : {0u, 1u, 0u}) {
        const ByteArray& stream = input.data(record);
        ASSERT_EQ(1032u, stream.size());
        for (unsigned token = 0; token < 16; ++token) {
            float value = 0.0f;
            std::memcpy(&value, stream.getData() + std::size_t(token) * 64, 4);
            EXPECT_EQ(static_cast<float>(record * 16 + token + 1), value) << record << " " << token;
            for (unsigned k = 4; k < 64; ++k) {
                ASSERT_EQ(0, stream[token * 64 + k]) << record << " " << token << " " << k;
            }
        }
        float s = 0.0f;
        std::memcpy(&s, stream.getData() + 1024, 4);
        EXPECT_EQ(200.0f + 10.0f * static_cast<float>(record), s);
    }
}

TEST(InputLocalTest, BareSourceAloneLoadsWithoutVertices)
{
    MeshDocument document(inputXml("POSITION", "bare"));
    const LogCapture log;
    InputLocal input(document.vertices());
    EXPECT_TRUE(input.createFromCollada(document.vertices()));
    EXPECT_TRUE(input.hasData());
    EXPECT_EQ(0u, input.numVertices());
    EXPECT_EQ(0u, input.bytePerAccess());
    EXPECT_EQ((Texts{"5 0 0 1 0"}), layoutOf(input));
    EXPECT_EQ((Floats{310}), floatsOf(input.data(1)));
    EXPECT_EQ(bareAssertion, assertionOf([&] { input.data(3); }));
    EXPECT_EQ(Texts(), log.messages());
}

TEST(InputLocalTest, BareSourceGivesFourBytesThatNoLayoutCounts)
{
    MeshDocument document(position + inputXml("COLOR", "bare") + normal + texcoord);
    InputLocal input(document.vertices());
    // After the bare source, all are 4 bytes short.
    EXPECT_EQ((Texts{"5 12 0 3 0", "3 0 12 1 0", "4 12 12 3 0", "9 8 24 2 0"}), layoutOf(input));
    EXPECT_EQ(32u, input.bytePerAccess());
    EXPECT_EQ(36u, input.data(1).size());
    EXPECT_EQ((Floats{10, 11, 12, 310, 110, 111, 112, 210, 211}), floatsOf(input.data(1)));
}

TEST(InputLocalTest, AccessorWithoutParamsGivesFourBytesThatNoLayoutCounts)
{
    MeshDocument document(inputXml("POSITION", "implicit") + texcoord, "", nullptr,
                          sourceXml("implicit", "1 2 3 4 5 6", "count='2' stride='3'"));
    InputLocal input(document.vertices());
    EXPECT_EQ((Texts{"5 0 0 3 0", "9 8 0 2 0"}), layoutOf(input));
    EXPECT_EQ((Floats{4, 210, 211}), floatsOf(input.data(1)));
}

TEST(InputLocalTest, CurrentVertexIsNotReadAgain)
{
    MeshDocument document(position + inputXml("NORMAL", "failed"));
    LogCapture log;
    InputLocal input(document.vertices());
    log.clear();
    const ByteArray& first = input.data(1);
    EXPECT_EQ((Texts{sourceReadLine}), log.messages());
    document.values("positions-array")[3] = 77.0;
    EXPECT_EQ(&first, &input.data(1));
    EXPECT_EQ((Floats{10, 11, 12}), floatsOf(input.data(1)));
    EXPECT_EQ((Texts{sourceReadLine}), log.messages());
    input.data(0);
    EXPECT_EQ((Floats{77, 11, 12}), floatsOf(input.data(1)));
    EXPECT_EQ((Texts{sourceReadLine, sourceReadLine, sourceReadLine}), log.messages());
}

TEST(InputLocalTest, StartIndexCountsAsCurrentAndReadsNothing)
{
    MeshDocument document(position);
    InputLocal input(document.vertices());
    EXPECT_EQ(0u, input.data(noIndex).size());
    input.data(0);
    EXPECT_EQ(recordAssertion, assertionOf([&] { input.data(noIndex); }));
}

TEST(InputLocalTest, ExceptionLeavesAPartialStreamThatTheFailedIndexClaims)
{
    MeshDocument document(position + normal + texcoord);
    InputLocal input(document.vertices());
    // The normals have no fourth record.
    EXPECT_EQ(recordAssertion, assertionOf([&] { input.data(3); }));
    EXPECT_EQ(3u, cachedIndexOf(input));
    EXPECT_EQ(12u, input.data(3).size());
    EXPECT_EQ((Floats{30, 31, 32}), floatsOf(input.data(3)));
    EXPECT_EQ((Floats{0, 1, 2, 100, 101, 102, 200, 201}), floatsOf(input.data(0)));
    EXPECT_EQ(0u, cachedIndexOf(input));
    // The same after a complete vertex, whose bytes are gone.
    EXPECT_EQ(recordAssertion, assertionOf([&] { input.data(3); }));
    EXPECT_EQ(3u, cachedIndexOf(input));
    EXPECT_EQ((Floats{30, 31, 32}), floatsOf(input.data(3)));
    EXPECT_EQ((Floats{20, 21, 22, 120, 121, 122, 220, 221}), floatsOf(input.data(2)));
}

TEST(InputLocalTest, ExceptionOfTheFirstSourceLeavesAnEmptyStream)
{
    MeshDocument document(normal + position);
    InputLocal input(document.vertices());
    EXPECT_EQ((Floats{110, 111, 112, 10, 11, 12}), floatsOf(input.data(1)));
    EXPECT_EQ(recordAssertion, assertionOf([&] { input.data(3); }));
    EXPECT_EQ(3u, cachedIndexOf(input));
    EXPECT_EQ(0u, input.data(3).size());
    EXPECT_EQ((Floats{110, 111, 112, 10, 11, 12}), floatsOf(input.data(1)));
}

TEST(InputLocalTest, ReadsAllocateNothingOnceWarm)
{
    MeshDocument document(position + normal + texcoord + inputXml("COLOR", "bare"));
    InputLocal input(document.vertices());
    input.data(0);
    long requests = -1;
    {
        const FailingAllocator allocator(-1);
        input.data(1);
        input.data(2);
        input.data(2);
        input.data(0);
        requests = allocator.requests();
    }
    EXPECT_EQ(0, requests);
    EXPECT_EQ((Floats{0, 1, 2, 100, 101, 102, 200, 201, 300}), floatsOf(input.data(0)));
}

TEST(InputLocalTest, ExhaustedMemoryThrowsNullPointerAndLeavesAPartialStream)
{
    MeshDocument document(position);
    InputLocal input(document.vertices());
    bool hasThrown = false;
    {
        const FailingAllocator allocator(1);
        try {
            input.data(1);
        } catch (const vesk::NullPointer&) {
            hasThrown = true;
        }
    }
    EXPECT_TRUE(hasThrown);
    EXPECT_EQ(1u, cachedIndexOf(input));
    EXPECT_EQ((Floats{10, 11}), floatsOf(input.data(1))); // as much as fits into a new array
    EXPECT_EQ((Floats{20, 21, 22}), floatsOf(input.data(2)));
}

TEST(InputLocalTest, MemoryThatEndsWhileAReadFailsLeavesNoWrongVertexBehind)
{
    MeshDocument document(position + normal + texcoord);
    for (long successes = 0; successes < 12; ++successes) {
        InputLocal input(document.vertices());
        input.data(0);
        bool hasThrown = false;
        {
            const FailingAllocator allocator(successes);
            try {
                input.data(3);
            } catch (const vesk::Exception&) {
                hasThrown = true;
            } catch (const std::bad_alloc&) {
                hasThrown = true;
            }
        }
        EXPECT_TRUE(hasThrown) << successes;
        EXPECT_EQ((Floats{10, 11, 12, 110, 111, 112, 210, 211}), floatsOf(input.data(1))) << successes;
        EXPECT_EQ((Floats{0, 1, 2, 100, 101, 102, 200, 201}), floatsOf(input.data(0))) << successes;
    }
}

// --- copies of an InputLocal ---

TEST(InputLocalCopyTest, CopyHasAllFieldsAndSharesTheSources)
{
    MeshDocument document(position + texcoord);
    InputLocal input(document.vertices());
    input.data(1);
    InputLocal copy(input);
    EXPECT_EQ(layoutOf(input), layoutOf(copy));
    EXPECT_EQ(20u, copy.bytePerAccess());
    EXPECT_EQ(4u, copy.numVertices());
    EXPECT_EQ(1u, cachedIndexOf(copy));
    const SourceArray& sources = localSources(copy);
    ASSERT_EQ(2u, sources.size());
    for (unsigned i = 0; i < 2; ++i) {
        EXPECT_EQ(localSources(input)[i].get(), sources[i].get());
        EXPECT_EQ(2u, sources[i].useCount());
    }
    // The current vertex was copied.
    document.values("positions-array")[3] = 77.0;
    EXPECT_EQ((Floats{10, 11, 12, 210, 211}), floatsOf(copy.data(1)));
}

TEST(InputLocalCopyTest, CopyHasAStreamOfItsOwn)
{
    MeshDocument document(position);
    InputLocal input(document.vertices());
    const ByteArray& kept = input.data(1);
    InputLocal copy(input);
    EXPECT_EQ((Floats{20, 21, 22}), floatsOf(copy.data(2)));
    EXPECT_EQ((Floats{10, 11, 12}), floatsOf(kept));
    EXPECT_EQ((Floats{0, 1, 2}), floatsOf(input.data(0)));
}

TEST(InputLocalCopyTest, AssignmentReplacesAllFields)
{
    MeshDocument document(position + texcoord);
    MeshDocument other(normal);
    InputLocal input(document.vertices());
    input.data(2);
    InputLocal target(other.vertices());
    target.data(2);
    const InputLocal& result = (target = input);
    EXPECT_EQ(&target, &result);
    EXPECT_EQ((Texts{"positions", "texcoords"}), sourcesOf(target));
    EXPECT_EQ(4u, target.numVertices());
    EXPECT_EQ((Floats{20, 21, 22, 220, 221}), floatsOf(target.data(2)));
    EXPECT_EQ((Floats{0, 1, 2, 200, 201}), floatsOf(target.data(0)));
}

TEST(InputLocalCopyTest, CopyOutlivesItsSource)
{
    MeshDocument document(position);
    auto input = std::make_unique<InputLocal>(document.vertices());
    InputLocal copy(*input);
    input.reset();
    EXPECT_EQ((Floats{20, 21, 22}), floatsOf(copy.data(2)));
}

// --- loading the inputs of a <triangles> ---

const std::string vertexAt0 = inputXml("VERTEX", "vertices", "0");
const std::string normalAt1 = inputXml("NORMAL", "normals", "1");
const std::string texcoordAt2 = inputXml("TEXCOORD", "texcoords", "2");

TEST(InputLocalOffsetTest, VertexNormalAndTexcoordGiveThreeLayouts)
{
    MeshDocument document(position, vertexAt0 + normalAt1 + texcoordAt2, "0 0 0");
    const LogCapture log;
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_TRUE(input.hasData());
    EXPECT_EQ(3u, offsetCountOf(input));
    EXPECT_EQ(3u, input.offsetCount());
    EXPECT_EQ((Indices{0, 1, 2}), offsetsOf(input));
    EXPECT_EQ((Texts{"positions", "normals", "texcoords"}), sourcesOf(input));
    EXPECT_EQ((Texts{"5 12 0 3 0", "4 12 12 3 0", "9 8 24 2 0"}), layoutOf(input));
    EXPECT_EQ(32u, input.bytePerAccess());
    EXPECT_EQ(document.p(), pOf(input));
    EXPECT_EQ(noIndex, cachedIndexOf(input));
    EXPECT_EQ(Indices(), tupleOf(input));
    EXPECT_EQ(Texts(), log.messages());
}

TEST(InputLocalOffsetTest, InputsWithoutVertexAreReadThemselves)
{
    MeshDocument document("", inputXml("POSITION", "positions", "0") + normalAt1, "3 2");
    const LogCapture log;
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Texts{"positions", "normals"}), sourcesOf(input));
    EXPECT_EQ((Texts{"5 12 0 3 0", "4 12 12 3 0"}), layoutOf(input));
    EXPECT_EQ((Floats{30, 31, 32, 120, 121, 122}), floatsOf(input.data(0)));
    EXPECT_EQ(Texts(), log.messages());
}

TEST(InputLocalOffsetTest, VertexIsKnownInAnyCase)
{
    for (const char* const word : {"VERTEX", "vertex", "Vertex"}) {
        MeshDocument document(position, inputXml(word, "vertices", "0"), "1");
        const LogCapture log;
        InputLocalOffset input(document.triangles(), document.p());
        EXPECT_EQ((Texts{"5 12 0 3 0"}), layoutOf(input)) << word;
        EXPECT_EQ((Floats{10, 11, 12}), floatsOf(input.data(0))) << word;
        EXPECT_EQ(Texts(), log.messages()) << word;
    }
}

TEST(InputLocalOffsetTest, VertexIsExpandedAtItsPlaceInTheOrderOfItsInputs)
{
    MeshDocument document(texcoord + position,
                          inputXml("NORMAL", "normals", "0") + inputXml("VERTEX", "vertices", "1") +
                              inputXml("COLOR", "normals", "2"),
                          "0 0 0");
    const InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Texts{"normals", "texcoords", "positions", "normals"}), sourcesOf(input));
    EXPECT_EQ((Texts{"4 12 0 3 0", "9 8 12 2 0", "5 12 20 3 0", "3 12 32 3 0"}), layoutOf(input));
    EXPECT_EQ(44u, input.bytePerAccess());
    EXPECT_EQ((Indices{0, 1, 2}), offsetsOf(input));
}

TEST(InputLocalOffsetTest, SetIsNotReadSoTexcoordsDifferInTheirOrderOnly)
{
    MeshDocument document(position,
                          vertexAt0 + "<input semantic='TEXCOORD' source='#texcoords' offset='1' set='1'/>"
                                      "<input semantic='TEXCOORD' source='#normals' offset='2' set='0'/>",
                          "0 1 2");
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Texts{"5 12 0 3 0", "9 8 12 2 0", "9 12 20 3 0"}), layoutOf(input));
    EXPECT_EQ((Floats{0, 1, 2, 210, 211, 120, 121, 122}), floatsOf(input.data(0)));
}

TEST(InputLocalOffsetTest, UnknownParamTypePassesThroughTheLoad)
{
    MeshDocument document("", inputXml("NORMAL", "odd", "0"), "0",
                          sourceXml("odd", "1", "count='1'", "<param name='X' type='int'/>"));
    EXPECT_EQ(typeAssertion, assertionOf([&] { InputLocalOffset input(document.triangles(), document.p()); }));
}

// --- offsets ---

struct OffsetCase : Row {
    std::vector<const char*> given;
    unsigned count;
    Indices offsets;
};

class InputOffsetTest : public testing::TestWithParam<OffsetCase> {};

TEST_P(InputOffsetTest, DistinctOffsetsAreCountedAndAllAreKept)
{
    std::string inputs;
    for (const char* const offset : GetParam().given) {
        inputs += inputXml("NORMAL", "normals", offset);
    }
    MeshDocument document("", inputs, "0");
    const InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ(GetParam().count, offsetCountOf(input));
    EXPECT_EQ(GetParam().count, input.offsetCount());
    EXPECT_EQ(GetParam().offsets, offsetsOf(input));
}

INSTANTIATE_ROWS(Documents, InputOffsetTest, {"One", {"0"}, 1, {0}}, {"OneThatIsNotZero", {"7"}, 1, {7}},
                 {"Shared", {"0", "0"}, 1, {0, 0}}, {"Three", {"0", "1", "2"}, 3, {0, 1, 2}},
                 {"Gap", {"0", "2"}, 2, {0, 2}}, {"Descending", {"2", "1", "0"}, 3, {2, 1, 0}},
                 {"RepeatBehindAnother", {"0", "1", "0"}, 2, {0, 1, 0}},
                 {"Repeats", {"1", "1", "4", "4", "1"}, 2, {1, 1, 4, 4, 1}},
                 {"Largest", {"4294967295"}, 1, {4294967295u}},
                 {"LowHalf", {"0", "4294967296", "4294967297"}, 2, {0, 0, 1}});

TEST(InputLocalOffsetTest, AbsentOffsetIsZero)
{
    MeshDocument document("", "<input semantic='NORMAL' source='#normals'/>" + normalAt1, "0 1");
    const InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Indices{0, 1}), offsetsOf(input));
}

TEST(InputLocalOffsetTest, AddOffsetCountsAnOffsetOnceAndAppendsItAlways)
{
    const LogCapture unread;
    InputLocalOffset input(OffsetInputs(), nullptr);
    const auto add = [&input](unsigned offset) { offsetAddOffset(input, offset); };
    add(3);
    EXPECT_EQ(1u, offsetCountOf(input));
    add(3);
    EXPECT_EQ(1u, offsetCountOf(input));
    add(0);
    EXPECT_EQ(2u, offsetCountOf(input));
    add(3);
    add(noIndex);
    EXPECT_EQ(3u, offsetCountOf(input));
    EXPECT_EQ((Indices{3, 3, 0, 3, noIndex}), offsetsOf(input));
}

// --- createVertices ---

TEST(InputLocalOffsetTest, CreateVerticesAppendsSourcesAndShiftedLayouts)
{
    MeshDocument document(position + texcoord, inputXml("NORMAL", "normals", "0"), "0");
    MeshDocument vertices("", vertexAt0, "0");
    MeshDocument other(position + texcoord, vertexAt0, "0");
    InputLocalOffset input(document.triangles(), document.p());
    offsetCreateVertices(input, other.triangles()[0]);
    EXPECT_EQ((Texts{"normals", "positions", "texcoords"}), sourcesOf(input));
    EXPECT_EQ((Texts{"4 12 0 3 0", "5 12 12 3 0", "9 8 24 2 0"}), layoutOf(input));
    EXPECT_EQ(32u, input.bytePerAccess());
    // It ignores offsets.
    EXPECT_EQ((Indices{0}), offsetsOf(input));
    EXPECT_EQ(1u, offsetCountOf(input));

    const LogCapture log;
    offsetCreateVertices(input, vertices.triangles()[0]); // a <vertices> without inputs
    EXPECT_EQ((Texts{loadFailedLine}), log.messages());
    EXPECT_EQ(3u, input.layout().size());
    EXPECT_EQ(32u, input.bytePerAccess());
}

TEST(InputLocalOffsetTest, BareSourcesUnderVerticesAreOfNoSize)
{
    MeshDocument document(inputXml("POSITION", "bare"), vertexAt0 + normalAt1, "2 1");
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Texts{"5 0 0 1 0", "4 12 0 3 0"}), layoutOf(input));
    EXPECT_EQ(12u, input.bytePerAccess());
    EXPECT_EQ((Floats{320, 110, 111, 112}), floatsOf(input.data(0)));
}

// --- skipped inputs ---

class InputLocalOffsetSkipTest : public testing::TestWithParam<Case<const char*, Texts>> {};

TEST_P(InputLocalOffsetSkipTest, InputIsSkippedAndItsOffsetStays)
{
    MeshDocument document(inputXml("UV", "normals"), GetParam().given + normalAt1 + texcoordAt2, "3 1 2 0 2 3",
                          sourceXml("empty", ""));
    const LogCapture log;
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ(GetParam().expected, log.messages());
    EXPECT_TRUE(input.hasData());
    EXPECT_EQ((Texts{"normals", "texcoords"}), sourcesOf(input));
    EXPECT_EQ((Texts{"4 12 0 3 0", "9 8 12 2 0"}), layoutOf(input));
    EXPECT_EQ((Indices{0, 1, 2}), offsetsOf(input));
    EXPECT_EQ(3u, offsetCountOf(input));
    // Each source takes the offset of the input before its own: the normals entry 3, the texcoords entry 4.
    EXPECT_EQ((Floats{100, 101, 102, 220, 221}), floatsOf(input.data(1)));
    EXPECT_EQ((Indices{0, 2, 3}), indicesOf(input.pIndex(1)));
    // In the first tuple, that would be normal 3, which does not exist.
    EXPECT_EQ(recordAssertion, assertionOf([&] { input.data(0); }));
}

TEST_P(InputLocalOffsetSkipTest, InputAloneFailsTheLoadWithOneLineMore)
{
    MeshDocument document(inputXml("UV", "normals"), GetParam().given, "3 1 2", sourceXml("empty", ""));
    const LogCapture log;
    InputLocalOffset input(document.triangles(), document.p());
    Texts lines = GetParam().expected;
    lines.push_back(loadFailedLine);
    EXPECT_EQ(lines, log.messages());
    EXPECT_FALSE(input.hasData());
    EXPECT_EQ(0u, input.layout().size());
    EXPECT_EQ(0u, input.bytePerAccess());
    EXPECT_EQ((Indices{0}), offsetsOf(input));
    EXPECT_EQ(1u, offsetCountOf(input));
    EXPECT_EQ(nullptr, pOf(input));
    EXPECT_FALSE(input.createFromCollada(document.triangles(), document.p()));
    EXPECT_EQ(nullptr, pOf(input));
}

const char* const normalHasNoClassLine = "libVideo.input: Does not have a class representation for source nothing";

INSTANTIATE_ROWS(
    Documents, InputLocalOffsetSkipTest,
    {"UnknownSemantic", "<input semantic='UV' source='#positions' offset='0'/>", {unknownSemanticLine("UV")}},
    {"AbsentSemantic", "<input source='#positions' offset='0'/>", {unknownSemanticLine("")}},
    {"UnknownSemanticLooksForNoSource",
     "<input semantic='UV' source='#nothing' offset='0'/>",
     {unknownSemanticLine("UV")}},
    {"ReferenceToNothing",
     "<input semantic='POSITION' source='#nothing' offset='0'/>",
     {"libVideo.source: Element #nothing is not a source", normalHasNoClassLine}},
    {"AbsentReference",
     "<input semantic='POSITION' offset='0'/>",
     {"libVideo.source: Element  is not a source", "libVideo.input: Does not have a class representation for source "}},
    {"ReferenceToVerticesByAnotherWord",
     "<input semantic='POSITION' source='#vertices' offset='0'/>",
     {"libVideo.source: Element vertices is not a source",
      "libVideo.input: Does not have a class representation for source vertices"}},
    {"SourceOfNames",
     "<input semantic='POSITION' source='#names' offset='0'/>",
     {"libVideo.source: Source has no float array",
      "libVideo.input: Does not have a class representation for source names"}},
    {"EmptySource",
     "<input semantic='POSITION' source='#empty' offset='0'/>",
     {"libVideo.source: Not interested in <source> that has no data and accessors",
      "libVideo.input: Does not have a class representation for source empty"}},
    {"VertexOfNothing",
     "<input semantic='VERTEX' source='#nothing' offset='0'/>",
     {"libVideo.input: Input is not a <vertices> element nothing"}},
    {"VertexWithoutReference",
     "<input semantic='VERTEX' offset='0'/>",
     {"libVideo.input: Input is not a <vertices> element "}},
    {"VertexOfASource",
     "<input semantic='VERTEX' source='#positions' offset='0'/>",
     {"libVideo.input: Input is not a <vertices> element positions"}},
    {"VerticesWithoutSource",
     "<input semantic='VERTEX' source='#vertices' offset='0'/>",
     {unknownSemanticLine("UV"), loadFailedLine}});

TEST(InputLocalOffsetTest, NoInputsFailWithOneLine)
{
    MeshDocument document("", "", "0 1 2");
    const LogCapture log;
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Texts{loadFailedLine}), log.messages());
    EXPECT_FALSE(input.hasData());
    EXPECT_EQ(nullptr, pOf(input));
    EXPECT_EQ(0u, offsetCountOf(input));
    EXPECT_EQ(0u, input.data(0).size());
    EXPECT_EQ(0u, input.pIndex(1).size());
}

TEST(InputLocalOffsetTest, LinesOfTheVerticesStandAtThePlaceOfTheirInput)
{
    MeshDocument document(
        inputXml("UV", "normals") + position,
        inputXml("A", "normals", "0") + inputXml("VERTEX", "vertices", "1") + inputXml("B", "normals", "2"), "0 0 0");
    const LogCapture log;
    const InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Texts{unknownSemanticLine("A"), unknownSemanticLine("UV"), unknownSemanticLine("B")}), log.messages());
    EXPECT_EQ((Texts{"positions"}), sourcesOf(input));
}

TEST(InputLocalOffsetTest, SuppressedLinesLeaveTheResult)
{
    MeshDocument document(position, inputXml("UV", "normals", "0") + inputXml("VERTEX", "vertices", "1"), "0 1");
    MeshDocument failing("", vertexAt0, "0");
    const LogCapture log;
    vesk::LogFactory::setPriority(vesk::LoggerPriority::PRIORITY_OFF);
    EXPECT_TRUE(InputLocalOffset(document.triangles(), document.p()).hasData());
    EXPECT_FALSE(InputLocalOffset(failing.triangles(), failing.p()).hasData());
    EXPECT_TRUE(log.lines().empty());
}

TEST(InputLocalOffsetTest, FailedLoadGivesNoBytesAndTuplesOfZeros)
{
    MeshDocument document("", inputXml("UV", "normals", "0") + inputXml("UVW", "normals", "1"), "1 2 3 4");
    const LogCapture unread;
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ(0u, input.data(1).size());
    EXPECT_EQ((Indices{0, 0}), indicesOf(input.pIndex(1)));
    EXPECT_EQ((Indices{0, 0}), indicesOf(input.pIndex(0)));
}

// --- the vertex record ---

TEST(InputLocalOffsetTest, VertexRecordIsPositionNormalAndTexcoordIn32Bytes)
{
    MeshDocument document(inputXml("POSITION", "p"),
                          vertexAt0 + inputXml("NORMAL", "n", "1") + inputXml("TEXCOORD", "t", "2"), "1 0 1",
                          sourceXml("p", "9 9 9 1 -2 0.5", "count='2'", PARAMS_XYZ) +
                              sourceXml("n", "0 0.1 -1 9 9 9", "count='2'", PARAMS_XYZ) +
                              sourceXml("t", "9 9 0.25 3", "count='2'", PARAMS_ST));
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Texts{"5 12 0 3 0", "4 12 12 3 0", "9 8 24 2 0"}), layoutOf(input));
    // 1, -2, 0.5; 0, 0.1, -1; 0.25, 3 as IEEE 754 singles.
    const std::uint32_t words[8] = {0x3F800000u, 0xC0000000u, 0x3F000000u, 0x00000000u,
                                    0x3DCCCCCDu, 0xBF800000u, 0x3E800000u, 0x40400000u};
    unsigned char expected[32];
    std::memcpy(expected, words, sizeof(expected)); // host byte order
    const ByteArray& stream = input.data(0);
    ASSERT_EQ(32u, stream.size());
    for (unsigned i = 0; i < 32; ++i) {
        EXPECT_EQ(expected[i], stream[i]) << i;
    }
}

// --- how <p> is read ---

TEST(InputLocalOffsetTest, VertexTakesAsManyEntriesAsThereAreDistinctOffsets)
{
    MeshDocument document(position, vertexAt0 + normalAt1 + texcoordAt2, "3 0 1 0 2 3 2 1 0");
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Floats{30, 31, 32, 100, 101, 102, 210, 211}), floatsOf(input.data(0)));
    EXPECT_EQ((Indices{3, 0, 1}), indicesOf(input.pIndex(0)));
    EXPECT_EQ((Floats{20, 21, 22, 110, 111, 112, 200, 201}), floatsOf(input.data(2)));
    EXPECT_EQ((Indices{2, 1, 0}), indicesOf(input.pIndex(2)));
    EXPECT_EQ((Floats{0, 1, 2, 120, 121, 122, 230, 231}), floatsOf(input.data(1)));
    EXPECT_EQ((Indices{0, 2, 3}), indicesOf(input.pIndex(1)));
}

TEST(InputLocalOffsetTest, SharedOffsetReadsOneEntryForBothSources)
{
    MeshDocument document(position, vertexAt0 + inputXml("NORMAL", "normals", "0"), "2 0 1");
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Floats{20, 21, 22, 120, 121, 122}), floatsOf(input.data(0)));
    EXPECT_EQ((Indices{2}), indicesOf(input.pIndex(0)));
    EXPECT_EQ((Floats{10, 11, 12, 110, 111, 112}), floatsOf(input.data(2)));
    EXPECT_EQ((Indices{1}), indicesOf(input.pIndex(2)));
}

TEST(InputLocalOffsetTest, OffsetsOutOfOrderStillPickTheirEntries)
{
    MeshDocument document(position, inputXml("VERTEX", "vertices", "1") + inputXml("NORMAL", "normals", "0"),
                          "0 3 2 1");
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Floats{30, 31, 32, 100, 101, 102}), floatsOf(input.data(0)));
    EXPECT_EQ((Floats{10, 11, 12, 120, 121, 122}), floatsOf(input.data(1)));
    EXPECT_EQ((Indices{2, 1}), indicesOf(input.pIndex(1)));
}

TEST(InputLocalOffsetTest, GapInTheOffsetsIsReadInStepsOfTheirNumber)
{
    MeshDocument document(position, vertexAt0 + inputXml("NORMAL", "normals", "2"), "3 9 1 9 2");
    InputLocalOffset input(document.triangles(), document.p());
    // Steps of 2: the position of vertex v is entry 2v, its normal entry 2v + 2.
    EXPECT_EQ((Floats{30, 31, 32, 110, 111, 112}), floatsOf(input.data(0)));
    EXPECT_EQ((Indices{3, 9}), indicesOf(input.pIndex(0)));
    EXPECT_EQ((Floats{10, 11, 12, 120, 121, 122}), floatsOf(input.data(1)));
    EXPECT_EQ((Indices{1, 9}), indicesOf(input.pIndex(1)));
    // Entries past the last one are 0.
    EXPECT_EQ((Floats{20, 21, 22, 100, 101, 102}), floatsOf(input.data(2)));
    EXPECT_EQ((Indices{2, 0}), indicesOf(input.pIndex(2)));
}

TEST(InputLocalOffsetTest, EntriesBehindTheEndReadZero)
{
    MeshDocument document(position, vertexAt0 + normalAt1, "3 2 1");
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Floats{10, 11, 12, 100, 101, 102}), floatsOf(input.data(1)));
    EXPECT_EQ((Indices{1, 0}), indicesOf(input.pIndex(1)));
    for (const unsigned index : {2u, 1000000u, 0x80000000u, 0xFFFFFFFEu, noIndex}) {
        EXPECT_EQ((Floats{0, 1, 2, 100, 101, 102}), floatsOf(input.data(index))) << index;
        EXPECT_EQ((Indices{0, 0}), indicesOf(input.pIndex(index))) << index;
    }
}

TEST(InputLocalOffsetTest, LargestOffsetReadsZero)
{
    MeshDocument document("", inputXml("NORMAL", "normals", "4294967295"), "2 1");
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Floats{100, 101, 102}), floatsOf(input.data(0)));
    EXPECT_EQ((Indices{2}), indicesOf(input.pIndex(0)));
}

TEST(InputLocalOffsetTest, EmptyListReadsZero)
{
    MeshDocument document(position, vertexAt0 + normalAt1, "");
    ASSERT_NE(nullptr, document.p());
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Floats{0, 1, 2, 100, 101, 102}), floatsOf(input.data(3)));
    EXPECT_EQ((Indices{0, 0}), indicesOf(input.pIndex(4)));
}

TEST(InputLocalOffsetTest, AbsentListReadsZero)
{
    MeshDocument document(position, vertexAt0 + normalAt1);
    ASSERT_EQ(nullptr, document.p());
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_TRUE(input.createFromCollada(document.triangles(), nullptr));
    EXPECT_TRUE(input.hasData());
    EXPECT_EQ((Indices{0, 0}), indicesOf(input.pIndex(4)));
    InputLocalOffset other(document.triangles(), nullptr);
    EXPECT_EQ((Floats{0, 1, 2, 100, 101, 102}), floatsOf(other.data(3)));
}

TEST(InputLocalOffsetTest, EntriesAreCutTo32Bits)
{
    // 2^32 + 1, 2^33 + 2, 2^64 - 1.
    MeshDocument document("", inputXml("POSITION", "positions", "0"), "4294967297 8589934594 18446744073709551615");
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Floats{10, 11, 12}), floatsOf(input.data(0)));
    EXPECT_EQ((Floats{20, 21, 22}), floatsOf(input.data(1)));
    EXPECT_EQ((Indices{1}), indicesOf(input.pIndex(0)));
    EXPECT_EQ((Indices{4294967295u}), indicesOf(input.pIndex(2)));
    EXPECT_EQ(recordAssertion, assertionOf([&] { input.data(2); }));
}

TEST(InputLocalOffsetTest, EntryBehindTheLastRecordIsAnAssertionFailure)
{
    MeshDocument document("", inputXml("NORMAL", "normals", "0"), "2 3");
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ("none", assertionOf([&] { input.data(0); }));
    EXPECT_EQ(recordAssertion, assertionOf([&] { input.data(1); }));
    EXPECT_EQ((Indices{3}), indicesOf(input.pIndex(1))); // the tuple can still be read
    MeshDocument bare("", inputXml("NORMAL", "bare", "0"), "3");
    InputLocalOffset bareInput(bare.triangles(), bare.p());
    EXPECT_EQ(bareAssertion, assertionOf([&] { bareInput.data(0); }));
}

// --- sources and offsets are paired by position ---

TEST(InputPairingTest, VertexOverOneInputKeepsSourcesAndOffsetsInStep)
{
    MeshDocument document(position,
                          inputXml("NORMAL", "normals", "0") + inputXml("VERTEX", "vertices", "1") +
                              inputXml("TEXCOORD", "texcoords", "2"),
                          "2 3 1");
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Floats{120, 121, 122, 30, 31, 32, 210, 211}), floatsOf(input.data(0)));
}

TEST(InputPairingTest, VertexOverTwoInputsAloneLoadsAndThrowsAtTheFirstRead)
{
    MeshDocument document(position + normal, vertexAt0, "1 2 0");
    const LogCapture log;
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_TRUE(input.hasData());
    EXPECT_EQ(document.p(), pOf(input));
    EXPECT_EQ((Texts{"5 12 0 3 0", "4 12 12 3 0"}), layoutOf(input));
    EXPECT_EQ(24u, input.bytePerAccess());
    EXPECT_EQ((Indices{0}), offsetsOf(input));
    // There is one offset, and the second source needs another.
    EXPECT_EQ("0 0 1", boundsOf([&] { input.data(0); }));
    EXPECT_EQ((Floats{10, 11, 12}), floatsOf(streamOf(input)));
    EXPECT_EQ(noIndex, cachedIndexOf(input));
    EXPECT_EQ("0 0 1", boundsOf([&] { input.data(0); }));
    EXPECT_EQ((Indices{1}), indicesOf(input.pIndex(0)));
    EXPECT_EQ(Texts(), log.messages());
}

TEST(InputPairingTest, SecondSourceOfAVertexTakesTheOffsetOfTheNextInput)
{
    MeshDocument document(position + normal, vertexAt0 + inputXml("TEXCOORD", "texcoords", "1"), "1 2");
    InputLocalOffset input(document.triangles(), document.p());
    // Position 1; normal 2 with the offset of the texcoords, which leaves none for these.
    EXPECT_EQ("0 1 2", boundsOf([&] { input.data(0); }));
    EXPECT_EQ((Floats{10, 11, 12, 120, 121, 122}), floatsOf(streamOf(input)));
}

TEST(InputPairingTest, ASkippedInputBehindAVertexOverTwoInputsLendsItsOffset)
{
    MeshDocument document(position + normal, vertexAt0 + inputXml("UV", "texcoords", "1"), "1 2");
    const LogCapture unread;
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Floats{10, 11, 12, 120, 121, 122}), floatsOf(input.data(0)));
}

TEST(InputPairingTest, ASkippedInputShiftsOnlyThoseBehindIt)
{
    MeshDocument document(position, vertexAt0 + inputXml("UV", "normals", "1") + inputXml("TEXCOORD", "texcoords", "2"),
                          "3 1 2");
    const LogCapture unread;
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Floats{30, 31, 32, 210, 211}), floatsOf(input.data(0)));
    EXPECT_EQ((Indices{3, 1, 2}), indicesOf(input.pIndex(0)));
}

TEST(InputPairingTest, ASkippedInputUnderVerticesTakesNoOffset)
{
    MeshDocument document(inputXml("UV", "normals") + position, vertexAt0 + normalAt1, "3 2");
    const LogCapture unread;
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Floats{30, 31, 32, 120, 121, 122}), floatsOf(input.data(0)));
}

// --- tuples and the current vertex ---

TEST(InputTupleTest, PIndexFetchesATupleAndLeavesTheCurrentVertex)
{
    MeshDocument document(position, vertexAt0 + normalAt1, "0 1 2 0 3 2");
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Indices{2, 0}), indicesOf(input.pIndex(1)));
    EXPECT_EQ(noIndex, cachedIndexOf(input));
    EXPECT_EQ(0u, streamOf(input).size());
    input.data(0);
    EXPECT_EQ((Indices{3, 2}), indicesOf(input.pIndex(2)));
    EXPECT_EQ(0u, cachedIndexOf(input));
    EXPECT_EQ((Floats{0, 1, 2, 110, 111, 112}), floatsOf(streamOf(input)));
}

TEST(InputTupleTest, DataRefreshesTheTuple)
{
    MeshDocument document(position, vertexAt0 + normalAt1, "0 1 2 0 3 2");
    InputLocalOffset input(document.triangles(), document.p());
    input.data(2);
    EXPECT_EQ((Indices{3, 2}), tupleOf(input));
    EXPECT_EQ(2u, cachedIndexOf(input));
    input.data(1);
    EXPECT_EQ((Indices{2, 0}), tupleOf(input));
    EXPECT_EQ((Indices{2, 0}), indicesOf(input.pIndex(1)));
}

TEST(InputTupleTest, TupleOfTheCurrentVertexIsNotRefreshed)
{
    MeshDocument document(position, vertexAt0 + normalAt1, "0 1 2 0 3 2");
    InputLocalOffset input(document.triangles(), document.p());
    input.data(0);
    EXPECT_EQ((Indices{0, 1}), indicesOf(input.pIndex(0)));
    EXPECT_EQ((Indices{3, 2}), indicesOf(input.pIndex(2)));
    EXPECT_EQ((Indices{3, 2}), indicesOf(input.pIndex(0))); // the last tuple that was fetched
    EXPECT_EQ((Floats{0, 1, 2, 110, 111, 112}), floatsOf(input.data(0)));
    EXPECT_EQ((Indices{3, 2}), indicesOf(input.pIndex(0))); // a read from the stream does not refresh it
    input.data(1);
    EXPECT_EQ((Indices{2, 0}), indicesOf(input.pIndex(1)));
    EXPECT_EQ((Indices{0, 1}), indicesOf(input.pIndex(0)));
}

TEST(InputTupleTest, TupleOfAnotherVertexIsFetchedEachTime)
{
    MeshDocument document(position, vertexAt0, "0 1 2");
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Indices{1}), indicesOf(input.pIndex(1)));
    document.p()->getValue()[1] = 3;
    EXPECT_EQ((Indices{3}), indicesOf(input.pIndex(1)));
}

TEST(InputTupleTest, StartIndexCountsAsCurrent)
{
    MeshDocument document(position, vertexAt0, "1");
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ(0u, input.pIndex(noIndex).size());
    EXPECT_EQ(0u, input.data(noIndex).size());
    EXPECT_EQ((Indices{1}), indicesOf(input.pIndex(0)));
    EXPECT_EQ((Indices{1}), indicesOf(input.pIndex(noIndex)));
}

TEST(InputTupleTest, CurrentVertexIsNotReadAgain)
{
    MeshDocument document("", inputXml("POSITION", "positions", "0") + inputXml("NORMAL", "failed", "1"), "1 0 2 0");
    LogCapture log;
    InputLocalOffset input(document.triangles(), document.p());
    log.clear();
    const ByteArray& first = input.data(0);
    EXPECT_EQ((Texts{sourceReadLine}), log.messages());
    document.values("positions-array")[3] = 77.0;
    document.p()->getValue()[0] = 3;
    EXPECT_EQ(&first, &input.data(0));
    EXPECT_EQ((Floats{10, 11, 12}), floatsOf(input.data(0)));
    EXPECT_EQ((Texts{sourceReadLine}), log.messages());
    input.data(1);
    EXPECT_EQ((Floats{30, 31, 32}), floatsOf(input.data(0)));
    EXPECT_EQ((Texts{sourceReadLine, sourceReadLine, sourceReadLine}), log.messages());
}

TEST(InputTupleTest, ReferencesStayTheSame)
{
    MeshDocument document(position, vertexAt0, "1 2");
    InputLocalOffset input(document.triangles(), document.p());
    const ByteArray& stream = input.data(0);
    const IndexArray& tuple = input.pIndex(0);
    EXPECT_EQ(&stream, &input.data(1));
    EXPECT_EQ(&tuple, &input.pIndex(0));
    EXPECT_EQ((Floats{20, 21, 22}), floatsOf(stream));
    EXPECT_EQ((Indices{1}), indicesOf(tuple));
}

TEST(InputTupleTest, ReadsAllocateNothingOnceWarm)
{
    MeshDocument document(position, vertexAt0 + normalAt1 + texcoordAt2, "0 1 2 3 2 1 1 1 1");
    InputLocalOffset input(document.triangles(), document.p());
    input.data(0);
    long requests = -1;
    {
        const FailingAllocator allocator(-1);
        input.data(1);
        input.pIndex(1);
        input.data(2);
        input.data(2);
        input.pIndex(0);
        input.data(0);
        requests = allocator.requests();
    }
    EXPECT_EQ(0, requests);
    EXPECT_EQ((Floats{0, 1, 2, 110, 111, 112, 220, 221}), floatsOf(input.data(0)));
}

TEST(InputTupleTest, LongTuplesAreReadWithoutAllocationOnceWarm)
{
    std::string inputs;
    for (unsigned i = 0; i < 20; ++i) {
        inputs += inputXml("TEXCOORD", "texcoords", std::to_string(i));
    }
    std::string p;
    for (unsigned i = 0; i < 40; ++i) {
        p += std::to_string(i % 4) + " ";
    }
    MeshDocument document("", inputs, p.c_str());
    InputLocalOffset input(document.triangles(), document.p());
    input.data(0);
    long requests = -1;
    {
        const FailingAllocator allocator(-1);
        input.data(1);
        input.pIndex(0);
        requests = allocator.requests();
    }
    EXPECT_EQ(0, requests);
    EXPECT_EQ(160u, input.data(1).size());
    EXPECT_EQ((Indices{0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3}), indicesOf(input.pIndex(0)));
}

// --- what an exception in a read leaves ---

TEST(InputFailedReadTest, OldIndexStaysOverAPartialStream)
{
    // The second tuple has a position, but no normal.
    MeshDocument document(position, vertexAt0 + normalAt1 + texcoordAt2, "0 1 2 3 5 1 1 1 1");
    InputLocalOffset input(document.triangles(), document.p());
    input.data(0);
    EXPECT_EQ(recordAssertion, assertionOf([&] { input.data(1); }));
    EXPECT_EQ(0u, cachedIndexOf(input));
    EXPECT_EQ(12u, streamOf(input).size());
    EXPECT_EQ((Floats{30, 31, 32}), floatsOf(input.data(0))); // the old index returns the bytes of the failed one
    EXPECT_EQ((Indices{0, 1, 2}), indicesOf(input.pIndex(0)));
    EXPECT_EQ(recordAssertion, assertionOf([&] { input.data(1); })); // and this one is tried again
    EXPECT_EQ((Floats{10, 11, 12, 110, 111, 112, 210, 211}), floatsOf(input.data(2)));
    EXPECT_EQ((Floats{0, 1, 2, 110, 111, 112, 220, 221}), floatsOf(input.data(0)));
}

TEST(InputFailedReadTest, FirstReadThatFailsLeavesNoVertexCurrent)
{
    MeshDocument document(position, vertexAt0 + normalAt1, "2 9");
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ(recordAssertion, assertionOf([&] { input.data(0); }));
    EXPECT_EQ(noIndex, cachedIndexOf(input));
    EXPECT_EQ((Floats{20, 21, 22}), floatsOf(streamOf(input)));
    EXPECT_EQ(Indices(), tupleOf(input)); // refreshed only after the bytes
    EXPECT_EQ(recordAssertion, assertionOf([&] { input.data(0); }));
    EXPECT_EQ((Indices{2, 9}), indicesOf(input.pIndex(0)));
}

TEST(InputFailedReadTest, ExceptionOfTheFirstSourceLeavesAnEmptyStream)
{
    MeshDocument document(position, vertexAt0 + normalAt1, "2 1 9 0");
    InputLocalOffset input(document.triangles(), document.p());
    input.data(0);
    EXPECT_EQ(recordAssertion, assertionOf([&] { input.data(1); }));
    EXPECT_EQ(0u, cachedIndexOf(input));
    EXPECT_EQ(0u, input.data(0).size());
}

TEST(InputFailedReadTest, TupleFetchedLastOutlivesAFailedRead)
{
    MeshDocument document(position, vertexAt0 + normalAt1, "2 1 3 9 1 2");
    InputLocalOffset input(document.triangles(), document.p());
    input.data(0);
    input.pIndex(2);
    EXPECT_EQ(recordAssertion, assertionOf([&] { input.data(1); }));
    EXPECT_EQ((Indices{1, 2}), tupleOf(input));
    EXPECT_EQ((Indices{1, 2}), indicesOf(input.pIndex(0)));
}

TEST(InputFailedReadTest, ExhaustedMemoryThrowsNullPointerAndKeepsTheOldIndex)
{
    MeshDocument document(position, vertexAt0, "1 2");
    InputLocalOffset input(document.triangles(), document.p());
    bool hasThrown = false;
    {
        const FailingAllocator allocator(1);
        try {
            input.data(1);
        } catch (const vesk::NullPointer&) {
            hasThrown = true;
        }
    }
    EXPECT_TRUE(hasThrown);
    EXPECT_EQ(noIndex, cachedIndexOf(input));
    EXPECT_EQ((Floats{20, 21}), floatsOf(streamOf(input)));
    EXPECT_EQ((Floats{20, 21, 22}), floatsOf(input.data(1)));
    EXPECT_EQ((Floats{10, 11, 12}), floatsOf(input.data(0)));
}

// --- a second load of InputLocalOffset ---

TEST(InputSecondLoadTest, SourcesAndLayoutStayAndOffsetsStartAnew)
{
    MeshDocument document(position, vertexAt0 + normalAt1, "0 0 1 1");
    MeshDocument other("", inputXml("TEXCOORD", "texcoords", "4") + inputXml("COLOR", "normals", "4"), "2 1");
    InputLocalOffset input(document.triangles(), document.p());
    EXPECT_TRUE(input.createFromCollada(other.triangles(), other.p()));
    EXPECT_EQ((Texts{"positions", "normals", "texcoords", "normals"}), sourcesOf(input));
    // The byte offsets of the new attributes start at 0 again.
    EXPECT_EQ((Texts{"5 12 0 3 0", "4 12 12 3 0", "9 8 0 2 0", "3 12 8 3 0"}), layoutOf(input));
    EXPECT_EQ(20u, input.bytePerAccess());
    EXPECT_EQ((Indices{4, 4}), offsetsOf(input));
    EXPECT_EQ(1u, offsetCountOf(input));
    EXPECT_EQ(other.p(), pOf(input));
    // Four sources, two offsets: the first two take them.
    EXPECT_EQ("0 1 2", boundsOf([&] { input.data(0); }));
    EXPECT_EQ((Floats{0, 1, 2, 100, 101, 102}), floatsOf(streamOf(input)));
    EXPECT_EQ((Indices{1}), indicesOf(input.pIndex(1)));
}

TEST(InputSecondLoadTest, CurrentVertexStaysCurrent)
{
    MeshDocument document(position, vertexAt0, "1 2");
    MeshDocument other("", inputXml("TEXCOORD", "texcoords", "0") + inputXml("COLOR", "normals", "1"), "2 1 0 3");
    InputLocalOffset input(document.triangles(), document.p());
    input.data(1);
    EXPECT_TRUE(input.createFromCollada(other.triangles(), other.p()));
    EXPECT_EQ(1u, cachedIndexOf(input));
    EXPECT_EQ((Floats{20, 21, 22}), floatsOf(input.data(1)));
    EXPECT_EQ((Indices{2}), indicesOf(input.pIndex(1)));
    EXPECT_EQ((Indices{2, 1}), indicesOf(input.pIndex(0)));
}

TEST(InputSecondLoadTest, LoadWithoutASourceOfItsOwnIsTrueOverThoseOfTheFirst)
{
    MeshDocument document(position, vertexAt0, "1 2");
    MeshDocument other("", inputXml("UV", "texcoords", "1"), "0 3");
    InputLocalOffset input(document.triangles(), document.p());
    const LogCapture log;
    EXPECT_TRUE(input.createFromCollada(other.triangles(), other.p()));
    EXPECT_EQ((Texts{unknownSemanticLine("UV")}), log.messages());
    EXPECT_EQ(other.p(), pOf(input));
    EXPECT_EQ(0u, input.bytePerAccess());
    EXPECT_EQ((Texts{"5 12 0 3 0"}), layoutOf(input));
    EXPECT_EQ((Floats{30, 31, 32}), floatsOf(input.data(0)));
}

TEST(InputSecondLoadTest, LoadMaySucceedBehindOneThatFailed)
{
    MeshDocument failing("", inputXml("UV", "texcoords", "1"), "0 3");
    MeshDocument document(position, vertexAt0, "1 2");
    const LogCapture unread;
    InputLocalOffset input(failing.triangles(), failing.p());
    EXPECT_FALSE(input.hasData());
    EXPECT_TRUE(input.createFromCollada(document.triangles(), document.p()));
    EXPECT_EQ((Indices{0}), offsetsOf(input));
    EXPECT_EQ(document.p(), pOf(input));
    EXPECT_EQ((Floats{20, 21, 22}), floatsOf(input.data(1)));
}

// --- copies of an InputLocalOffset ---

TEST(InputLocalOffsetCopyTest, CopyHasAllFieldsAndSharesTheSources)
{
    MeshDocument document(position, vertexAt0 + normalAt1, "0 1 2 0");
    InputLocalOffset input(document.triangles(), document.p());
    input.data(1);
    input.pIndex(0);
    InputLocalOffset copy(input);
    EXPECT_EQ(layoutOf(input), layoutOf(copy));
    EXPECT_EQ(24u, copy.bytePerAccess());
    EXPECT_EQ(1u, cachedIndexOf(copy));
    EXPECT_EQ(2u, offsetCountOf(copy));
    EXPECT_EQ((Indices{0, 1}), offsetsOf(copy));
    EXPECT_EQ(document.p(), pOf(copy));
    EXPECT_EQ((Indices{0, 1}), tupleOf(copy));
    const SourceArray& sources = inputSources(copy);
    ASSERT_EQ(2u, sources.size());
    for (unsigned i = 0; i < 2; ++i) {
        EXPECT_EQ(inputSources(input)[i].get(), sources[i].get());
        EXPECT_EQ(2u, sources[i].useCount());
    }
    document.values("positions-array")[6] = 77.0;
    EXPECT_EQ((Floats{20, 21, 22, 100, 101, 102}), floatsOf(copy.data(1)));
    EXPECT_EQ((Indices{0, 1}), indicesOf(copy.pIndex(1)));
}

TEST(InputLocalOffsetCopyTest, CopyHasAStreamAndATupleOfItsOwn)
{
    MeshDocument document(position, vertexAt0, "1 2 3");
    InputLocalOffset input(document.triangles(), document.p());
    input.data(0);
    InputLocalOffset copy(input);
    EXPECT_EQ((Floats{30, 31, 32}), floatsOf(copy.data(2)));
    EXPECT_EQ((Floats{10, 11, 12}), floatsOf(input.data(0)));
    EXPECT_EQ((Indices{1}), indicesOf(input.pIndex(0)));
    EXPECT_EQ((Floats{20, 21, 22}), floatsOf(input.data(1)));
    EXPECT_EQ((Floats{30, 31, 32}), floatsOf(streamOf(copy)));
}

TEST(InputLocalOffsetCopyTest, AssignmentReplacesAllFields)
{
    MeshDocument document(position, vertexAt0 + normalAt1, "0 1 2 0");
    MeshDocument other("", inputXml("TEXCOORD", "texcoords", "5"), "3 2 1");
    InputLocalOffset input(document.triangles(), document.p());
    input.data(1);
    InputLocalOffset target(other.triangles(), other.p());
    target.data(1);
    const InputLocalOffset& result = (target = input);
    EXPECT_EQ(&target, &result);
    EXPECT_EQ((Texts{"positions", "normals"}), sourcesOf(target));
    EXPECT_EQ((Indices{0, 1}), offsetsOf(target));
    EXPECT_EQ(2u, offsetCountOf(target));
    EXPECT_EQ(document.p(), pOf(target));
    EXPECT_EQ((Indices{2, 0}), indicesOf(target.pIndex(1)));
    EXPECT_EQ((Floats{20, 21, 22, 100, 101, 102}), floatsOf(target.data(1)));
    EXPECT_EQ((Floats{0, 1, 2, 110, 111, 112}), floatsOf(target.data(0)));
}

TEST(InputLocalOffsetCopyTest, CopyOutlivesItsSource)
{
    MeshDocument document(position, vertexAt0, "1 2 3");
    auto input = std::make_unique<InputLocalOffset>(document.triangles(), document.p());
    InputLocalOffset copy(*input);
    input.reset();
    EXPECT_EQ((Floats{20, 21, 22}), floatsOf(copy.data(1)));
}

TEST(InputTest, DestructionThroughTheBaseReleasesTheSources)
{
    MeshDocument document(position, vertexAt0, "1");
    std::unique_ptr<Input> local = std::make_unique<InputLocal>(document.vertices());
    std::unique_ptr<Input> offset = std::make_unique<InputLocalOffset>(document.triangles(), document.p());
    const SourceHandle ofLocal = inputSources(*local)[0];
    const SourceHandle ofOffset = inputSources(*offset)[0];
    EXPECT_EQ((Floats{10, 11, 12}), floatsOf(local->data(1)));
    EXPECT_EQ((Floats{10, 11, 12}), floatsOf(offset->data(0)));
    local.reset();
    offset.reset();
    EXPECT_EQ(1u, ofLocal.useCount());
    EXPECT_EQ(1u, ofOffset.useCount());
}

// --- traces ---

#define ENTER(function) "> " function " (libVideo/SceneGraph/Input:N)"
#define LEAVE(function) "< " function
#define LOCAL "InputLocal::createFromCollada"
#define OFFSET "InputLocalOffset::createFromCollada"
#define VERTICES "InputLocalOffset::createVertices"

TEST(InputTraceTest, LoadOfVerticesIsTraced)
{
    MeshDocument document(position + inputXml("UV", "normals"));
    const LogCapture log;
    vesk::LogFactory::setPriority(vesk::LoggerPriority::PRIORITY_TRACE);
    InputLocal input(document.vertices());
    input.data(0);
    EXPECT_EQ((Texts{ENTER(LOCAL), unknownSemanticLine("UV"), LEAVE(LOCAL)}), tracesOf(log));
}

TEST(InputTraceTest, LoadOfTrianglesIsTracedWithTheVerticesInside)
{
    MeshDocument document(position, inputXml("UV", "normals", "0") + inputXml("VERTEX", "vertices", "1"), "0 0");
    const LogCapture log;
    vesk::LogFactory::setPriority(vesk::LoggerPriority::PRIORITY_TRACE);
    InputLocalOffset input(document.triangles(), document.p());
    input.data(0);
    input.pIndex(1);
    EXPECT_EQ((Texts{ENTER(OFFSET), unknownSemanticLine("UV"), ENTER(VERTICES), ENTER(LOCAL), LEAVE(LOCAL),
                     LEAVE(VERTICES), LEAVE(OFFSET)}),
              tracesOf(log));
}

TEST(InputTraceTest, FailuresAreLoggedInsideOfTheirScopes)
{
    MeshDocument document("", inputXml("VERTEX", "vertices", "0") + inputXml("VERTEX", "nothing", "1"), "0 0");
    const LogCapture log;
    vesk::LogFactory::setPriority(vesk::LoggerPriority::PRIORITY_TRACE);
    const InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Texts{ENTER(OFFSET), ENTER(VERTICES), ENTER(LOCAL), loadFailedLine, LEAVE(LOCAL), LEAVE(VERTICES),
                     ENTER(VERTICES), "libVideo.input: Input is not a <vertices> element nothing", LEAVE(VERTICES),
                     loadFailedLine, LEAVE(OFFSET)}),
              tracesOf(log));
}

TEST(InputTraceTest, ScopesEndWhenAnExceptionPasses)
{
    MeshDocument document(inputXml("POSITION", "odd"), vertexAt0, "0",
                          sourceXml("odd", "1", "count='1'", "<param name='X' type='int'/>"));
    const LogCapture log;
    vesk::LogFactory::setPriority(vesk::LoggerPriority::PRIORITY_TRACE);
    EXPECT_THROW(InputLocalOffset(document.triangles(), document.p()), vesk::AssertionFailure);
    EXPECT_EQ((Texts{ENTER(OFFSET), ENTER(VERTICES), ENTER(LOCAL), LEAVE(LOCAL), LEAVE(VERTICES), LEAVE(OFFSET)}),
              tracesOf(log));
}

TEST(InputTraceTest, HigherPrioritySilencesTracesOnly)
{
    MeshDocument document(position, inputXml("UV", "normals", "0") + inputXml("VERTEX", "vertices", "1"), "0 0");
    const LogCapture log;
    vesk::LogFactory::setPriority(vesk::LoggerPriority::PRIORITY_INFO);
    const InputLocalOffset input(document.triangles(), document.p());
    EXPECT_EQ((Texts{unknownSemanticLine("UV")}), tracesOf(log));
}

TEST(InputTraceTest, LoggerOfPriorityOneSilencesTracesOnly)
{
    MeshDocument document(position + inputXml("UV", "normals"));
    vesk::Logger* logger = nullptr;
    vesk::LogFactory::createLogger("libVideo.input", logger);
    const vesk::LoggerPriority::LOGGER_PRIORITY before = logger->priority;
    const LogCapture log;
    vesk::LogFactory::setPriority(vesk::LoggerPriority::PRIORITY_TRACE);
    logger->priority = vesk::LoggerPriority::PRIORITY_TRACE;
    const InputLocal input(document.vertices());
    logger->priority = before;
    EXPECT_EQ((Texts{unknownSemanticLine("UV")}), tracesOf(log));
}

static_assert(std::is_abstract_v<Input> && std::has_virtual_destructor_v<Input>);
static_assert(std::is_copy_assignable_v<Input>);
static_assert(std::is_convertible_v<InputLocal*, Input*> && std::is_convertible_v<InputLocalOffset*, Input*>);
static_assert(std::is_constructible_v<InputLocal, const LocalInputs&> && std::is_copy_constructible_v<InputLocal> &&
              std::is_copy_assignable_v<InputLocal>);
static_assert(std::is_constructible_v<InputLocalOffset, const OffsetInputs&, domP* const> &&
              std::is_copy_constructible_v<InputLocalOffset> && std::is_copy_assignable_v<InputLocalOffset>);
static_assert(std::is_same_v<const ByteArray&, decltype(std::declval<Input&>().data(0u))> &&
              std::is_same_v<bool, decltype(std::declval<const Input&>().hasData())> &&
              std::is_same_v<const LayoutArray&, decltype(std::declval<const Input&>().layout())> &&
              std::is_same_v<unsigned, decltype(std::declval<const Input&>().bytePerAccess())> &&
              std::is_same_v<unsigned, decltype(std::declval<const InputLocal&>().numVertices())> &&
              std::is_same_v<const IndexArray&, decltype(std::declval<InputLocalOffset&>().pIndex(0u))>);

Texts layoutOf(const Input& input)
{
    Texts texts;
    for (const VertexLayout& entry : input.layout()) {
        std::ostringstream text;
        text << static_cast<unsigned>(entry.semantic) << ' ' << entry.byteSize << ' ' << entry.byteOffset << ' '
             << static_cast<unsigned>(entry.dataType) << ' ' << entry.reserved;
        texts.push_back(text.str());
    }
    return texts;
}

Texts tracesOf(const LogCapture& log)
{
    Texts texts;
    for (const LogLine& line : log.lines()) {
        if (line.priority != 1) {
            texts.push_back(line.channel + ": " + line.words());
            continue;
        }
        EXPECT_EQ("libVideo.input", line.channel);
        std::string text = line.text;
        const std::size_t colon = text.rfind(':');
        if (text.compare(0, 2, "> ") == 0 && colon != std::string::npos) {
            const std::size_t end = text.find_first_not_of("0123456789", colon + 1);
            EXPECT_EQ(")", text.substr(end)) << text;
            EXPECT_GT(end, colon + 1) << text;
            text = text.substr(0, colon) + ":N)";
        }
        texts.push_back(text);
    }
    return texts;
}

} // namespace
