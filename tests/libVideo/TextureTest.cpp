#include "support/Rows.h"
#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Texture.h>

#include <cstdlib>

namespace {

using namespace libVideo;
using namespace testSupport;

using Channel = daeSmartRef<domCommon_color_or_texture_type>;
using SamplerRef = daeSmartRef<domFx_sampler2D_common>;
using SurfaceRef = daeSmartRef<domFx_surface_common>;

PRIVATE_MEMBER(textureSampler, SamplerRef Texture::*, &Texture::m_sampler)
PRIVATE_MEMBER(textureSurface, SurfaceRef Texture::*, &Texture::m_texture)
PRIVATE_MEMBER(textureFile, vesk::String Texture::*, &Texture::m_textureFile)
PRIVATE_MEMBER(textureGetTextureFileName, void (Texture::*)(), &Texture::getTextureFileName)

TEST(TextureTest, MembersStandInTheirOrder)
{
    const Texture texture;
    const void* const sampler = &textureSampler(texture);
    const void* const surface = &textureSurface(texture);
    const void* const file = &textureFile(texture);
    EXPECT_EQ(static_cast<const void*>(&texture), sampler);
    EXPECT_TRUE(std::less<>()(sampler, surface));
    EXPECT_TRUE(std::less<>()(surface, file));
}

TEST(TextureTest, AccessorsGiveTheirMembers)
{
    const Texture texture;
    EXPECT_EQ(&textureSampler(texture), &texture.sampler());
    EXPECT_EQ(&textureSurface(texture), &texture.texture());
    EXPECT_EQ(&textureFile(texture), &texture.textureFile());
}

constexpr const char* channel = "libVideo.texture";
constexpr const char* noInitializer = "Texture has no surface initiailzer";
constexpr const char* noImage = "Surface initializer has no <init_from> child";

const std::string image = "<image id='image'><init_from>./a.png</init_from></image>";
const std::string samplerParam = "<newparam sid='sampler'><sampler2D><source>surface</source></sampler2D></newparam>";
const std::string surfaceParam =
    "<newparam sid='surface'><surface type='2D'><init_from>image</init_from></surface></newparam>";
const std::string chain = surfaceParam + samplerParam;
const std::string usesSampler = "<texture texture='sampler' texcoord='uv'/>";

// A surface with the name of the chain and these initializers.
std::string surfaceOf(const std::string& initializers)
{
    return "<newparam sid='surface'><surface type='2D'>" + initializers + "</surface></newparam>";
}

/// A document with images and an effect "effect", whose profile "profile" has these newparams and a technique with the
/// sid "technique" and a `<diffuse>`.
class Document {
public:
    struct Parts {
        std::string newparams = chain;
        std::string diffuse = usesSampler;
        std::string images = image;
        std::string ofEffect = std::string();  // newparams of the effect itself
        std::string ofProfile = std::string(); // after the technique
    };

    explicit Document(const Parts& parts)
    {
        m_builder.add("<library_images>" + parts.images + "</library_images><library_effects><effect id='effect'>" +
                      parts.ofEffect + "<profile_COMMON id='profile'>" + parts.newparams +
                      "<technique sid='technique'><phong><diffuse>" + parts.diffuse + "</diffuse></phong></technique>" +
                      parts.ofProfile + "</profile_COMMON></effect></library_effects>");
        m_builder.open();
    }

    Document() : Document(Parts()) {}

    static Parts withNewparams(const std::string& newparams)
    {
        Parts parts;
        parts.newparams = newparams;
        return parts;
    }

    static Parts withDiffuse(const std::string& diffuse)
    {
        Parts parts;
        parts.diffuse = diffuse;
        return parts;
    }

    static Parts withImages(const std::string& images, const std::string& initializers)
    {
        Parts parts;
        parts.images = images;
        parts.newparams = surfaceOf(initializers) + samplerParam;
        return parts;
    }

    domProfile_COMMON* profile() { return m_builder.element<domProfile_COMMON>("profile"); }
    domEffect* effect() { return m_builder.element<domEffect>("effect"); }
    Channel diffuse() { return profile()->getTechnique()->getPhong()->getDiffuse(); }
    domCommon_newparam_type* newparam(std::size_t place) { return profile()->getNewparam_array()[place]; }

    bool loadInto(Texture& texture) { return texture.createFromCollada(diffuse(), profile()); }

private:
    ColladaBuilder m_builder;
};

const char* fileOf(const Texture& texture)
{
    return texture.textureFile().data();
}

TEST(TextureTest, NewTextureIsEmpty)
{
    const LogCapture log;
    const Texture texture;
    EXPECT_EQ(nullptr, texture.sampler());
    EXPECT_EQ(nullptr, texture.texture());
    EXPECT_STREQ("", fileOf(texture));
    EXPECT_TRUE(log.lines().empty());
}

TEST(TextureTest, WholeChainGivesElementsAndFile)
{
    const LogCapture log;
    Document document;
    Texture texture;
    EXPECT_TRUE(document.loadInto(texture));
    EXPECT_EQ(document.newparam(1)->getSampler2D(), texture.sampler());
    EXPECT_EQ(document.newparam(0)->getSurface(), texture.texture());
    EXPECT_NE(nullptr, texture.sampler());
    EXPECT_NE(nullptr, texture.texture());
    EXPECT_STREQ("./a.png", fileOf(texture));
    EXPECT_TRUE(log.lines().empty());
}

// A second load that fails keeps the members that it does not reach.

struct SecondLoadCase : testSupport::Row {
    std::string newparams;
    std::string diffuse;
    bool hasNewSampler;
};

class TextureSecondLoadTest : public testing::TestWithParam<SecondLoadCase> {};

TEST_P(TextureSecondLoadTest, KeepsWhatAFailureDoesNotReach)
{
    Document first;
    Document::Parts parts = Document::withNewparams(GetParam().newparams);
    parts.diffuse = GetParam().diffuse;
    Document second(parts);
    Texture texture;
    ASSERT_TRUE(first.loadInto(texture));
    const LogCapture log;
    EXPECT_FALSE(second.loadInto(texture));
    EXPECT_EQ("", log.text());
    Document& ofSampler = GetParam().hasNewSampler ? second : first;
    EXPECT_EQ(ofSampler.newparam(1)->getSampler2D(), texture.sampler());
    EXPECT_NE(nullptr, texture.sampler());
    EXPECT_EQ(first.newparam(0)->getSurface(), texture.texture());
    EXPECT_STREQ("./a.png", fileOf(texture));
}

INSTANTIATE_ROWS(Failures, TextureSecondLoadTest, {"Color", chain, "<color>1 0 0 1</color>", false},
                 {"AbsentSampler", chain, "<texture texture='other' texcoord='uv'/>", false},
                 {"SamplerWithoutSource", surfaceParam + "<newparam sid='sampler'><sampler2D/></newparam>", usesSampler,
                  true},
                 {"AbsentSurface",
                  surfaceParam + "<newparam sid='sampler'><sampler2D><source>other</source></sampler2D></newparam>",
                  usesSampler, true});

// Resolving names.

enum class Reached { Nothing, Sampler, Surface };

struct NameCase : Row {
    std::string newparams;
    std::string diffuse;
    bool result;
    Reached reached;
    const char* file;
    const char* lines;
};

std::string textureOf(const std::string& name)
{
    return "<texture texture='" + name + "' texcoord='uv'/>";
}

std::string samplerOf(const std::string& source)
{
    return "<newparam sid='sampler'><sampler2D>" + source + "</sampler2D></newparam>";
}

class TextureNameTest : public testing::TestWithParam<NameCase> {};

TEST_P(TextureNameTest, ChainIsFollowedAsFarAsItHolds)
{
    const NameCase& row = GetParam();
    Document::Parts parts = Document::withNewparams(row.newparams);
    parts.diffuse = row.diffuse;
    Document document(parts);
    const LogCapture log;
    Texture texture;
    EXPECT_EQ(row.result, document.loadInto(texture));
    EXPECT_EQ(row.reached != Reached::Nothing, texture.sampler() != nullptr);
    EXPECT_EQ(row.reached == Reached::Surface, texture.texture() != nullptr);
    EXPECT_STREQ(row.file, fileOf(texture));
    EXPECT_EQ(row.lines, log.text());
}

INSTANTIATE_ROWS(
    Links, TextureNameTest, {"WholeChain", chain, usesSampler, true, Reached::Surface, "./a.png", ""},
    {"SamplerBeforeSurface", samplerParam + surfaceParam, usesSampler, true, Reached::Surface, "./a.png", ""},
    {"ColorInsteadOfTexture", chain, "<color>1 0 0 1</color>", false, Reached::Nothing, "", ""},
    {"ParamInsteadOfTexture", chain, "<param ref='sampler'/>", false, Reached::Nothing, "", ""},
    {"NothingInsteadOfTexture", chain, "", false, Reached::Nothing, "", ""},
    {"TextureWithoutName", chain, "<texture texcoord='uv'/>", false, Reached::Nothing, "", ""},
    {"EmptyName", chain, textureOf(""), false, Reached::Nothing, "", ""},
    {"EmptyNameAndNewparamWithoutSid",
     "<newparam><sampler2D><source>surface</source></sampler2D></newparam>" + surfaceParam, textureOf(""), false,
     Reached::Nothing, "", ""},
    {"BlankName", chain, textureOf("  "), false, Reached::Nothing, "", ""},
    {"AbsentSampler", chain, textureOf("other"), false, Reached::Nothing, "", ""},
    {"NoNewparamAtAll", "", usesSampler, false, Reached::Nothing, "", ""},
    {"NameOfAnotherCase", chain, textureOf("Sampler"), false, Reached::Nothing, "", ""},
    {"NameOfTheTechnique", chain, textureOf("technique"), false, Reached::Nothing, "", ""},
    {"NameOfTheImage", chain, textureOf("image"), false, Reached::Nothing, "", ""},
    {"NameOfTheEffect", chain, textureOf("effect"), false, Reached::Nothing, "", ""},
    {"NameOfTheProfile", chain, textureOf("profile"), false, Reached::Nothing, "", ""},
    {"NameOfTheContainer", chain, textureOf("."), false, Reached::Nothing, "", ""},
    {"MemberOfTheSampler", chain, textureOf("sampler.X"), false, Reached::Nothing, "", ""},
    {"ElementOfTheSampler", chain, textureOf("sampler(0)"), false, Reached::Nothing, "", ""},
    {"HalfOfAnElement", chain, textureOf("sampler("), false, Reached::Nothing, "", ""},
    {"NothingBehindTheSlash", chain, textureOf("sampler/"), false, Reached::Nothing, "", ""},
    {"OnlySlashes", chain, textureOf("//"), false, Reached::Nothing, "", ""},
    {"SurfaceForASampler", chain, textureOf("surface"), false, Reached::Nothing, "", ""},
    {"NumberForASampler", surfaceParam + "<newparam sid='sampler'><float>1</float></newparam>", usesSampler, false,
     Reached::Nothing, "", ""},
    {"SamplerWithoutSource", surfaceParam + samplerOf(""), usesSampler, false, Reached::Sampler, "", ""},
    {"EmptySource", surfaceParam + samplerOf("<source></source>"), usesSampler, false, Reached::Sampler, "", ""},
    {"BlankSource", surfaceParam + samplerOf("<source>  </source>"), usesSampler, false, Reached::Sampler, "", ""},
    {"BlanksRoundTheSource", surfaceParam + samplerOf("<source> surface </source>"), usesSampler, true,
     Reached::Surface, "./a.png", ""},
    {"AbsentSurface", samplerParam, usesSampler, false, Reached::Sampler, "", ""},
    {"SourceOfAnotherCase", surfaceParam + samplerOf("<source>Surface</source>"), usesSampler, false, Reached::Sampler,
     "", ""},
    {"SourceNamesTheTechnique", surfaceParam + samplerOf("<source>technique</source>"), usesSampler, false,
     Reached::Sampler, "", ""},
    {"SourceNamesTheImage", surfaceParam + samplerOf("<source>image</source>"), usesSampler, false, Reached::Sampler,
     "", ""},
    {"SourceNamesTheEffect", surfaceParam + samplerOf("<source>effect</source>"), usesSampler, false, Reached::Sampler,
     "", ""},
    {"SourceNamesANumber", "<newparam sid='surface'><float>1</float></newparam>" + samplerParam, usesSampler, true,
     Reached::Sampler, "", noInitializer},
    {"SourceNamesItsOwnSampler", samplerOf("<source>sampler</source>"), usesSampler, true, Reached::Sampler, "",
     noInitializer});

INSTANTIATE_ROWS(Choice, TextureNameTest,
                 {"FirstOfTwoSamplers", chain + samplerOf("<source>nothing</source>"), usesSampler, true,
                  Reached::Surface, "./a.png", ""},
                 {"FirstOfTwoSurfaces", chain + surfaceOf(""), usesSampler, true, Reached::Surface, "./a.png", ""},
                 {"NewparamBeforeATechniqueOfTheSameSid",
                  surfaceParam + "<newparam sid='technique'><sampler2D><source>surface</source></sampler2D></newparam>",
                  textureOf("technique"), true, Reached::Surface, "./a.png", ""},
                 {"NewparamBeforeAnImageOfTheSameId",
                  surfaceParam + "<newparam sid='image'><sampler2D><source>surface</source></sampler2D></newparam>",
                  textureOf("image"), true, Reached::Surface, "./a.png", ""},
                 {"SurfaceBeforeAnImageOfTheSameId",
                  "<newparam sid='image'><surface type='2D'><init_from>image</init_from></surface></newparam>" +
                      samplerOf("<source>image</source>"),
                  usesSampler, true, Reached::Surface, "./a.png", ""},
                 {"SidWithDots",
                  surfaceParam + "<newparam sid='a.b.R'><sampler2D><source>surface</source></sampler2D></newparam>",
                  textureOf("a.b.R"), true, Reached::Surface, "./a.png", ""},
                 {"SidWithParentheses",
                  surfaceParam + "<newparam sid='map(1)'><sampler2D><source>surface</source></sampler2D></newparam>",
                  textureOf("map(1)"), true, Reached::Surface, "./a.png", ""},
                 {"SidWithASlash",
                  surfaceParam + "<newparam sid='maps/a'><sampler2D><source>surface</source></sampler2D></newparam>",
                  textureOf("maps/a"), true, Reached::Surface, "./a.png", ""},
                 {"SidOutsideOfAscii",
                  surfaceParam + "<newparam sid='größe'><sampler2D><source>surface</source></sampler2D></newparam>",
                  textureOf("größe"), true, Reached::Surface, "./a.png", ""},
                 {"PathFromTheProfile", chain, textureOf("profile/sampler"), true, Reached::Surface, "./a.png", ""},
                 {"PathFromTheEffect", chain, textureOf("effect/sampler"), true, Reached::Surface, "./a.png", ""},
                 {"PathFromTheContainer", chain, textureOf("./sampler"), true, Reached::Surface, "./a.png", ""},
                 {"SourceAsAPath", surfaceParam + samplerOf("<source>profile/surface</source>"), usesSampler, true,
                  Reached::Surface, "./a.png", ""});

TEST(TextureTest, NewparamsOfTheEffectAreNotThoseOfTheProfile)
{
    Document::Parts parts = Document::withNewparams("");
    parts.ofEffect = "<newparam sid='sampler'><sampler2D><source>surface</source></sampler2D></newparam>"
                     "<newparam sid='surface'><surface type='2D'><init_from>image</init_from></surface></newparam>";
    Document document(parts);
    const LogCapture log;
    Texture texture;
    EXPECT_FALSE(document.loadInto(texture));
    EXPECT_EQ(nullptr, texture.sampler());
    EXPECT_TRUE(log.lines().empty());
}

TEST(TextureTest, NamesAreFoundBelowAnyElementThatIsGiven)
{
    Document document;
    Texture texture;
    EXPECT_TRUE(texture.createFromCollada(document.diffuse(), document.effect()));
    EXPECT_EQ(document.newparam(1)->getSampler2D(), texture.sampler());
    EXPECT_STREQ("./a.png", fileOf(texture));
}

TEST(TextureTest, NamesAreThoseOfTheGivenProfile)
{
    Document document;
    Document other(Document::withImages("<image id='image'><init_from>other.png</init_from></image>",
                                        "<init_from>image</init_from>"));
    Texture texture;
    EXPECT_TRUE(texture.createFromCollada(document.diffuse(), other.profile()));
    EXPECT_EQ(other.newparam(1)->getSampler2D(), texture.sampler());
    EXPECT_STREQ("other.png", fileOf(texture));
}

// Names on which the document model would never return.

bool endsWithoutNewparam(const std::string& newparams, const std::string& name, const std::string& extra)
{
    Document::Parts parts = Document::withDiffuse(textureOf(name));
    parts.newparams = newparams;
    parts.ofProfile = "<extra><technique profile='other'>" + extra + "</technique></extra>";
    Document document(parts);
    Texture texture;
    return !document.loadInto(texture) && texture.texture() == nullptr;
}

struct TrapCase : Row {
    std::string newparams;
    const char* texture;
    const char* extra;
};

class TextureTrapTest : public testing::TestWithParam<TrapCase> {};

// Runs in a child process; its exit status is the result.
TEST_P(TextureTrapTest, NameThatLeadsToNoNewparamOfTheProfileGivesFalse)
{
    const TrapCase& row = GetParam();
    EXPECT_EXIT(std::_Exit(endsWithoutNewparam(row.newparams, row.texture, row.extra) ? 0 : 1),
                testing::ExitedWithCode(0), "");
}

INSTANTIATE_ROWS(Names, TextureTrapTest,
                 {"ReferenceToItself", chain, "loop", "<newparam sid='loop'><SIDREF>loop</SIDREF></newparam>"},
                 {"ReferencesToEachOther", chain, "one",
                  "<newparam sid='one'><SIDREF>two</SIDREF></newparam>"
                  "<newparam sid='two'><SIDREF>one</SIDREF></newparam>"},
                 {"SourceWithAReferenceToItself", samplerOf("<source>loop</source>"), "sampler",
                  "<newparam sid='loop'><SIDREF>loop</SIDREF></newparam>"},
                 {"MemberBehindTheNumbers", chain, "short.Z", "<translate sid='short'>1</translate>"},
                 {"MemberOfNoNumbers", chain, "short.X", "<translate sid='short'/>"},
                 {"AngleOfAShortRotation", chain, "short.ANGLE", "<rotate sid='short'>1</rotate>"},
                 {"ElementBehindTheNumbers", chain, "short(7)", "<rotate sid='short'>1</rotate>"},
                 {"SourceWithAMemberBehindTheNumbers", samplerOf("<source>short.Z</source>"), "sampler",
                  "<translate sid='short'>1</translate>"});

// From the surface to the file.

struct InitializerCase : Row {
    const char* images;
    const char* initializers;
    const char* file;
    std::string lines;
};

class TextureInitializerTest : public testing::TestWithParam<InitializerCase> {};

TEST_P(TextureInitializerTest, SurfaceThatWasReachedGivesTrue)
{
    const InitializerCase& row = GetParam();
    Document document(Document::withImages(row.images, row.initializers));
    const LogCapture log;
    Texture texture;
    EXPECT_TRUE(document.loadInto(texture));
    EXPECT_NE(nullptr, texture.sampler());
    EXPECT_NE(nullptr, texture.texture());
    EXPECT_STREQ(row.file, fileOf(texture));
    EXPECT_EQ(row.lines, log.text());
    for (const LogLine& line : log.lines()) {
        EXPECT_EQ(channel, line.channel);
        EXPECT_EQ(vesk::LoggerPriority::PRIORITY_ERROR, line.priority);
    }
}

const char* const a = "<image id='a'><init_from>a.png</init_from></image>";
const char* const aAndB = "<image id='a'><init_from>a.png</init_from></image>"
                          "<image id='b'><init_from>b.png</init_from></image>";
const char* const emptyAndB = "<image id='empty'><init_from></init_from></image>"
                              "<image id='b'><init_from>b.png</init_from></image>";
const char* const blankAndB = "<image id='blank'><init_from>  </init_from></image>"
                              "<image id='b'><init_from>b.png</init_from></image>";
const char* const dataAndB = "<image id='data'><data>00FF</data></image>"
                             "<image id='b'><init_from>b.png</init_from></image>";
const char* const bareAndB = "<image id='bare'/><image id='b'><init_from>b.png</init_from></image>";
const std::string noImageTwice = std::string(noImage) + "\n" + noImage;

INSTANTIATE_ROWS(
    Initializers, TextureInitializerTest, {"NoInitializer", a, "", "", noInitializer},
    {"OnlyAFormat", a, "<format>A8R8G8B8</format>", "", noInitializer}, {"InitAsNull", a, "<init_as_null/>", "", ""},
    {"InitAsTarget", a, "<init_as_target/>", "", ""}, {"OneImage", a, "<init_from>a</init_from>", "a.png", ""},
    {"BlanksRoundTheId", a, "<init_from> a </init_from>", "a.png", ""},
    {"FirstOfTwoImages", aAndB, "<init_from>a</init_from><init_from>b</init_from>", "a.png", ""},
    {"NoSuchImage", a, "<init_from>none</init_from>", "", noImage},
    {"IdOfAnotherCase", a, "<init_from>A</init_from>", "", noImage},
    {"EmptyReference", a, "<init_from></init_from>", "", noImage},
    {"TwoOfWhichTheFirstDoesNotResolve", a, "<init_from>none</init_from><init_from>a</init_from>", "a.png", noImage},
    {"TwoOfWhichTheSecondDoesNotResolve", a, "<init_from>a</init_from><init_from>none</init_from>", "a.png", ""},
    {"NoneOfTwoResolves", a, "<init_from>none</init_from><init_from>nil</init_from>", "", noImageTwice},
    {"TwoMissesBeforeAnImage", a, "<init_from>none</init_from><init_from>nil</init_from><init_from>a</init_from>",
     "a.png", noImageTwice},
    {"AnotherElement", a, "<init_from>effect</init_from>", "", ""},
    {"AnotherElementBeforeAnImage", a, "<init_from>effect</init_from><init_from>a</init_from>", "a.png", ""},
    {"ImageWithAnEmptyFile", emptyAndB, "<init_from>empty</init_from>", "", ""},
    {"ImageWithAnEmptyFileBeforeAnother", emptyAndB, "<init_from>empty</init_from><init_from>b</init_from>", "b.png",
     ""},
    {"ImageWithoutAFile", bareAndB, "<init_from>bare</init_from>", "", ""},
    {"ImageWithoutAFileBeforeAnother", bareAndB, "<init_from>bare</init_from><init_from>b</init_from>", "b.png", ""},
    {"ImageOfData", dataAndB, "<init_from>data</init_from>", "", ""},
    {"ImageOfDataBeforeAnother", dataAndB, "<init_from>data</init_from><init_from>b</init_from>", "b.png", ""},
    {"MissThenEmptyThenAnotherElement", emptyAndB,
     "<init_from>none</init_from><init_from>empty</init_from><init_from>effect</init_from>", "", noImage});

INSTANTIATE_ROWS(BlankFile, TextureInitializerTest, {"PassedOver", blankAndB, "<init_from>blank</init_from>", "", ""},
                 {"PassedOverBeforeAnother", blankAndB, "<init_from>blank</init_from><init_from>b</init_from>", "b.png",
                  ""});

class TextureFileTest : public testing::TestWithParam<Case<const char*, const char*>> {};

TEST_P(TextureFileTest, TextIsKeptAsWrittenAndNotResolved)
{
    const auto& row = GetParam();
    Document document(
        Document::withImages("<image id='image'><init_from>" + std::string(row.given) + "</init_from></image>",
                             "<init_from>image</init_from>"));
    const LogCapture log;
    Texture texture;
    EXPECT_TRUE(document.loadInto(texture));
    EXPECT_STREQ(row.expected, fileOf(texture));
    EXPECT_TRUE(log.lines().empty());
}

INSTANTIATE_ROWS(Texts, TextureFileTest, {"InTheFolder", "./a.png", "./a.png"}, {"BareName", "a.png", "a.png"},
                 {"AboveTheFolder", "../maps/./a.png", "../maps/./a.png"}, {"Absolute", "/maps/a.png", "/maps/a.png"},
                 {"WithAScheme", "file:///maps/a.png", "file:///maps/a.png"},
                 {"WithADrive", "C:/maps/a.png", "C:/maps/a.png"}, {"WithEncodedBlank", "my%20map.png", "my%20map.png"},
                 {"WithAFragment", "a.png#b", "a.png#b"}, {"WithAmpersand", "a&amp;b.png", "a&b.png"},
                 {"OnlyTheFolder", ".", "."}, {"BlankComesAsTheDocumentModelGivesIt", "./my map.png", "./my%20map.png"},
                 {"LostBackslashIsNoValue", "maps\\a.png", ""}, {"LostLetterOutsideOfAsciiIsNoValue", "größe.png", ""},
                 {"LostBracketIsNoValue", "a[1].png", ""});

TEST(TextureTest, FileSearchWithoutASurfaceLogsThatThereIsNoInitializer)
{
    const LogCapture log;
    Texture texture;
    textureGetTextureFileName(texture);
    EXPECT_STREQ("", fileOf(texture));
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ(channel, log.lines()[0].channel);
    EXPECT_EQ(noInitializer, log.text());
}

TEST(TextureTest, FileSearchReadsTheSurfaceThatIsHeld)
{
    Document document;
    Texture texture;
    textureSurface(texture) = document.newparam(0)->getSurface();
    textureGetTextureFileName(texture);
    EXPECT_STREQ("./a.png", fileOf(texture));
}

TEST(TextureTest, FileSearchWithoutAFindLeavesTheFileAsItWas)
{
    Document document(Document::withImages(emptyAndB, "<init_from>none</init_from><init_from>empty</init_from>"));
    const LogCapture log;
    Texture texture;
    textureSurface(texture) = document.newparam(0)->getSurface();
    textureFile(texture) = "before.png";
    textureGetTextureFileName(texture);
    EXPECT_STREQ("before.png", fileOf(texture));
    EXPECT_EQ(noImage, log.text());
}

// Lifetime.

TEST(TextureTest, LoadWithoutATextureElementLeavesWhatWasReachedBefore)
{
    Document document;
    Document colored(Document::withDiffuse("<color>1 1 1 1</color>"));
    Texture texture;
    ASSERT_TRUE(document.loadInto(texture));
    EXPECT_FALSE(colored.loadInto(texture));
    EXPECT_EQ(document.newparam(1)->getSampler2D(), texture.sampler());
    EXPECT_EQ(document.newparam(0)->getSurface(), texture.texture());
    EXPECT_STREQ("./a.png", fileOf(texture));
}

TEST(TextureTest, CopyAndAssignmentShareTheElementsAndCopyTheFile)
{
    Document document;
    Texture texture;
    ASSERT_TRUE(document.loadInto(texture));
    const Texture copy(texture);
    Texture assigned;
    assigned = texture;
    texture = Texture();
    EXPECT_EQ(nullptr, texture.sampler());
    for (const Texture* const one : {&copy, &std::as_const(assigned)}) {
        EXPECT_EQ(document.newparam(1)->getSampler2D(), one->sampler());
        EXPECT_EQ(document.newparam(0)->getSurface(), one->texture());
        EXPECT_STREQ("./a.png", fileOf(*one));
    }
}

TEST(TextureTest, AssignmentToItselfChangesNothing)
{
    Document document;
    Texture texture;
    ASSERT_TRUE(document.loadInto(texture));
    const Texture& itself = texture;
    texture = itself;
    EXPECT_EQ(document.newparam(1)->getSampler2D(), texture.sampler());
    EXPECT_EQ(document.newparam(0)->getSurface(), texture.texture());
    EXPECT_STREQ("./a.png", fileOf(texture));
}

TEST(TextureTest, ElementsAreKeptBeyondTheDocumentAndMayBeReleased)
{
    auto document = std::make_unique<Document>();
    auto texture = std::make_unique<Texture>();
    ASSERT_TRUE(document->loadInto(*texture));
    const auto samplerType = domFx_sampler2D_common::ID();
    const auto surfaceType = domFx_surface_common::ID();
    document.reset();

    const Texture copy(*texture);
    texture.reset();
    ASSERT_NE(nullptr, copy.sampler());
    ASSERT_NE(nullptr, copy.texture());
    EXPECT_EQ(samplerType, copy.sampler()->typeID());
    EXPECT_EQ(surfaceType, copy.texture()->typeID());
    EXPECT_STREQ("./a.png", fileOf(copy));
}

TEST(TextureTest, NullChannelIsMisuse)
{
    const LogCapture log;
    Document document;
    Texture texture;
    EXPECT_THROW(texture.createFromCollada(Channel(), document.profile()), vesk::NullPointer);
    EXPECT_EQ(nullptr, texture.sampler());
    EXPECT_TRUE(log.lines().empty());
}

TEST(TextureTest, NullProfileIsMisuse)
{
    const LogCapture log;
    Document document;
    Texture texture;
    EXPECT_THROW(texture.createFromCollada(document.diffuse(), nullptr), vesk::NullPointer);
    EXPECT_EQ(nullptr, texture.sampler());
    EXPECT_TRUE(log.lines().empty());
}

Texts tracedTexts(Document& document)
{
    Texture texture;
    return testSupport::tracedTexts([&] { document.loadInto(texture); }, channel);
}

const char* const entry = "> Texture::createFromCollada (libVideo/SceneGraph/Texture";
const char* const leaving = "< Texture::createFromCollada";

TEST(TextureTest, LoadTracesItsScope)
{
    Document document;
    EXPECT_EQ((std::vector<std::string>{entry, leaving}), tracedTexts(document));
}

TEST(TextureTest, LoadThatFailsTracesItsScopeToo)
{
    Document document(Document::withDiffuse("<color>1 1 1 1</color>"));
    EXPECT_EQ((std::vector<std::string>{entry, leaving}), tracedTexts(document));
}

TEST(TextureTest, LinesStandInsideTheTracedScope)
{
    Document document(Document::withImages(a, "<init_from>none</init_from>"));
    EXPECT_EQ((std::vector<std::string>{entry, noImage, leaving}), tracedTexts(document));
}

TEST(TextureTest, TextureThatRanOutOfMemoryCanBeAskedAndReleased)
{
    const std::string file = "./a/name/that/is/longer/than/what/a/text/keeps/inside.png";
    Document document(Document::withImages("<image id='image'><init_from>" + file + "</init_from></image>",
                                           "<init_from>image</init_from>"));
    constexpr long most = 1000;
    long failures = 0;
    bool isComplete = false;
    while (!isComplete && failures < most) {
        Texture texture;
        bool isThrown = false;
        bool hasFailed = false;
        {
            const FailingAllocator allocator(failures);
            try {
                document.loadInto(texture);
            } catch (const std::bad_alloc&) {
                isThrown = true;
            }
            hasFailed = allocator.hasFailed();
        }
        EXPECT_EQ(hasFailed, isThrown) << "request " << failures;
        isComplete = !hasFailed && file == fileOf(texture);
        EXPECT_EQ(isComplete, !texture.textureFile().empty()) << "request " << failures;
        ASSERT_NE(hasFailed, isComplete);
        failures += isComplete ? 0 : 1;
    }
    EXPECT_TRUE(isComplete);
    EXPECT_GT(failures, 0) << "the file's text at least";
}

static_assert(std::is_default_constructible_v<Texture> && std::is_copy_constructible_v<Texture> &&
              std::is_copy_assignable_v<Texture>);
static_assert(!std::is_polymorphic_v<Texture>);
static_assert(std::is_same_v<decltype(std::declval<const Texture&>().sampler()), const SamplerRef&>);
static_assert(std::is_same_v<decltype(std::declval<const Texture&>().texture()), const SurfaceRef&>);
static_assert(std::is_same_v<decltype(std::declval<const Texture&>().textureFile()), const vesk::String&>);
static_assert(std::is_same_v<decltype(&Texture::createFromCollada), bool (Texture::*)(const Channel&, daeElement*)>);

} // namespace
