#include "support/VideoTest.h"

#include <libVideo/SceneGraph/VertexLayout.h>

#include <cctype>

namespace {

using namespace libVideo;
using namespace testSupport;

TEST(VertexSemanticTest, UnknownIsFifteen)
{
    EXPECT_EQ(15u, static_cast<unsigned>(libVideo::SEMANTIC_UNKNOWN));
}

TEST(VertexLayoutTest, DefaultIsUnknownSemanticInvalidTypeAndZeros)
{
    const VertexLayout layout;
    EXPECT_EQ(libVideo::SEMANTIC_UNKNOWN, layout.semantic);
    EXPECT_EQ(0u, layout.byteSize);
    EXPECT_EQ(0u, layout.byteOffset);
    EXPECT_EQ(libVideo::DATA_TYPE_INVALID, layout.dataType);
    EXPECT_EQ(0u, layout.reserved);
}

TEST(VertexLayoutTest, LayoutOfASemanticHasTheOtherDefaults)
{
    const VertexLayout layout(libVideo::SEMANTIC_NORMAL);
    EXPECT_EQ(libVideo::SEMANTIC_NORMAL, layout.semantic);
    EXPECT_EQ(0u, layout.byteSize);
    EXPECT_EQ(0u, layout.byteOffset);
    EXPECT_EQ(libVideo::DATA_TYPE_INVALID, layout.dataType);
    EXPECT_EQ(0u, layout.reserved);
}

/// A layout whose fields all differ from the defaults.
VertexLayout filledLayout()
{
    VertexLayout layout(libVideo::SEMANTIC_WEIGHT);
    layout.byteSize = 12;
    layout.byteOffset = 24;
    layout.dataType = libVideo::DATA_TYPE_FLOAT3;
    layout.reserved = 77;
    return layout;
}

void expectOtherFieldsOfFilledLayout(const VertexLayout& layout)
{
    EXPECT_EQ(12u, layout.byteSize);
    EXPECT_EQ(24u, layout.byteOffset);
    EXPECT_EQ(libVideo::DATA_TYPE_FLOAT3, layout.dataType);
    EXPECT_EQ(77u, layout.reserved);
}

std::string lower(std::string word)
{
    for (char& c : word) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return word;
}

/// "pOsItIoN": every second letter in the other case.
std::string mixed(std::string word)
{
    for (std::size_t i = 0; i < word.size(); i += 2) {
        word[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(word[i])));
    }
    return word;
}

struct WordCase : Row { // named after the word
    VertexSemantic semantic;
    unsigned number;
};

class VertexSemanticWordTest : public testing::TestWithParam<WordCase> {};

TEST_P(VertexSemanticWordTest, SemanticHasItsNumber)
{
    EXPECT_EQ(GetParam().number, static_cast<unsigned>(GetParam().semantic));
}

TEST_P(VertexSemanticWordTest, UpperCaseWordGivesItsSemanticAndStoresIt)
{
    VertexLayout layout;
    EXPECT_EQ(GetParam().semantic, libVideo::inputSemanticToVertexSemantic(GetParam().name, layout));
    EXPECT_EQ(GetParam().semantic, layout.semantic);
}

TEST_P(VertexSemanticWordTest, LowerCaseWordGivesItsSemanticAndStoresIt)
{
    VertexLayout layout;
    EXPECT_EQ(GetParam().semantic, libVideo::inputSemanticToVertexSemantic(lower(GetParam().name).c_str(), layout));
    EXPECT_EQ(GetParam().semantic, layout.semantic);
}

TEST_P(VertexSemanticWordTest, WordInMixedCaseGivesItsSemanticAndStoresIt)
{
    VertexLayout layout;
    EXPECT_EQ(GetParam().semantic, libVideo::inputSemanticToVertexSemantic(mixed(GetParam().name).c_str(), layout));
    EXPECT_EQ(GetParam().semantic, layout.semantic);
}

TEST_P(VertexSemanticWordTest, NoOtherFieldOfTheLayoutIsTouched)
{
    VertexLayout layout = filledLayout();
    libVideo::inputSemanticToVertexSemantic(GetParam().name, layout);
    EXPECT_EQ(GetParam().semantic, layout.semantic);
    expectOtherFieldsOfFilledLayout(layout);
}

TEST_P(VertexSemanticWordTest, PartsAndExtensionsOfTheWordAreUnknown)
{
    const std::string word = GetParam().name;
    const std::string others[] = {word + "X", word + "0",  "X" + word,     " " + word,
                                  word + " ", word + word, word.substr(1), word.substr(0, word.size() - 1)};
    for (const std::string& other : others) {
        VertexLayout layout = GetParam().semantic;
        EXPECT_EQ(libVideo::SEMANTIC_UNKNOWN, libVideo::inputSemanticToVertexSemantic(other.c_str(), layout)) << other;
        EXPECT_EQ(libVideo::SEMANTIC_UNKNOWN, layout.semantic) << other;
    }
}

INSTANTIATE_ROWS(Words, VertexSemanticWordTest, {"BINORMAL", libVideo::SEMANTIC_BINORMAL, 0},
                 {"WEIGHT", libVideo::SEMANTIC_WEIGHT, 2}, {"COLOR", libVideo::SEMANTIC_COLOR, 3},
                 {"NORMAL", libVideo::SEMANTIC_NORMAL, 4}, {"POSITION", libVideo::SEMANTIC_POSITION, 5},
                 {"TANGENT", libVideo::SEMANTIC_TANGENT, 8}, {"TEXCOORD", libVideo::SEMANTIC_TEXCOORD, 9},
                 {"INPUT", libVideo::SEMANTIC_INPUT, 10}, {"OUTPUT", libVideo::SEMANTIC_OUTPUT, 11},
                 {"INTERPOLATION", libVideo::SEMANTIC_INTERPOLATION, 12},
                 {"IN_TANGENT", libVideo::SEMANTIC_IN_TANGENT, 13},
                 {"OUT_TANGENT", libVideo::SEMANTIC_OUT_TANGENT, 14});

class UnknownSemanticTest : public testing::TestWithParam<Case<const char*>> {};

TEST_P(UnknownSemanticTest, WordIsUnknownAndReplacesTheSemanticOfBefore)
{
    VertexLayout layout = filledLayout();
    EXPECT_EQ(libVideo::SEMANTIC_UNKNOWN, libVideo::inputSemanticToVertexSemantic(GetParam().given, layout));
    EXPECT_EQ(libVideo::SEMANTIC_UNKNOWN, layout.semantic);
    expectOtherFieldsOfFilledLayout(layout);
}

INSTANTIATE_ROWS(Words, UnknownSemanticTest, {"Empty", ""}, {"Blank", " "}, {"Vertex", "VERTEX"},
                 {"Positionx", "POSITIONX"}, {"Joint", "JOINT"}, {"Uv", "UV"}, {"InvBindMatrix", "INV_BIND_MATRIX"},
                 {"TexTangent", "TEXTANGENT"}, {"TexBinormal", "TEXBINORMAL"}, {"LinearSteps", "LINEAR_STEPS"},
                 {"Unknown", "UNKNOWN"}, {"Number", "5"}, {"TangentWithoutUnderscore", "INTANGENT"},
                 {"TangentWithHyphen", "OUT-TANGENT"});

TEST(VertexLayoutTest, AssignmentCopiesAllFiveFields)
{
    VertexLayout layout;
    const VertexLayout& result = (layout = filledLayout());
    EXPECT_EQ(&layout, &result);
    EXPECT_EQ(libVideo::SEMANTIC_WEIGHT, layout.semantic);
    expectOtherFieldsOfFilledLayout(layout);
}

TEST(VertexLayoutTest, CopyHasAllFiveFields)
{
    const VertexLayout source = filledLayout();
    const VertexLayout layout(source);
    EXPECT_EQ(libVideo::SEMANTIC_WEIGHT, layout.semantic);
    expectOtherFieldsOfFilledLayout(layout);
}

TEST(VertexLayoutTest, LayoutsOfOneSemanticAreEqualWhateverElseDiffers)
{
    const VertexLayout filled = filledLayout();
    const VertexLayout key(libVideo::SEMANTIC_WEIGHT);
    EXPECT_TRUE(filled == key);
    EXPECT_TRUE(key == filled);
    VertexLayout moved = filled;
    moved.byteOffset = 36;
    EXPECT_TRUE(filled == moved);
}

TEST(VertexLayoutTest, LayoutsOfTwoSemanticsDifferWhateverElseIsEqual)
{
    EXPECT_FALSE(VertexLayout(libVideo::SEMANTIC_NORMAL) == VertexLayout());
    EXPECT_FALSE(VertexLayout() == VertexLayout(libVideo::SEMANTIC_NORMAL));
    VertexLayout other = filledLayout();
    other.semantic = libVideo::SEMANTIC_COLOR;
    EXPECT_FALSE(filledLayout() == other);
}

TEST(VertexLayoutTest, SemanticAloneIsASearchKey)
{
    const VertexLayout filled = filledLayout();
    EXPECT_TRUE(filled == libVideo::SEMANTIC_WEIGHT);
    EXPECT_FALSE(filled == libVideo::SEMANTIC_POSITION);
}

static_assert(sizeof(VertexSemantic) == 4 && sizeof(libVideo::DataType) == 4);
static_assert(sizeof(VertexLayout) == 20);
static_assert(offsetof(VertexLayout, semantic) == 0 && offsetof(VertexLayout, byteSize) == 4 &&
              offsetof(VertexLayout, byteOffset) == 8 && offsetof(VertexLayout, dataType) == 12 &&
              offsetof(VertexLayout, reserved) == 16);
static_assert(std::is_same_v<VertexSemantic, decltype(VertexLayout::semantic)> &&
              std::is_same_v<unsigned, decltype(VertexLayout::byteSize)> &&
              std::is_same_v<unsigned, decltype(VertexLayout::byteOffset)> &&
              std::is_same_v<libVideo::DataType, decltype(VertexLayout::dataType)> &&
              std::is_same_v<unsigned, decltype(VertexLayout::reserved)>);
static_assert(std::is_trivially_destructible_v<VertexLayout>);
static_assert(!std::is_polymorphic_v<VertexLayout>);
static_assert(std::is_convertible_v<VertexSemantic, VertexLayout>);
static_assert(std::is_same_v<VertexSemantic (*)(const vesk::String&, VertexLayout&),
                             decltype(&libVideo::inputSemanticToVertexSemantic)>);

} // namespace
