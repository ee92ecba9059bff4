#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Material.h>
#include <libVideo/SceneGraph/Texture.h>

namespace {

using namespace libVideo;
using namespace testSupport;

using Component = BlinnMaterial::Component;
using TextureHandle = vesk::SharedResource<vesk::PointerStorage<Texture, 0, 3>, 0>;
using Technique = domProfile_COMMON::domTechnique;
using BlinnRef = daeSmartRef<Technique::domBlinn>;
using PhongRef = daeSmartRef<Technique::domPhong>;
using ChannelRef = daeSmartRef<domCommon_color_or_texture_type>;
using NumberRef = daeSmartRef<domCommon_float_or_param_type>;
using ChannelType = domCommon_color_or_texture_type_complexType;
using TextureElementRef = daeSmartRef<ChannelType::domTexture>;
using Color = std::array<float, 3>;

PRIVATE_MEMBER(materialComponent, Component BlinnMaterial::*, &BlinnMaterial::m_component)
PRIVATE_MEMBER(materialProfile, domProfile_COMMON* BlinnMaterial::*, &BlinnMaterial::m_profile)
PRIVATE_MEMBER(materialWriteColor, void (BlinnMaterial::*)(const ChannelRef&, float*, TextureHandle&),
               &BlinnMaterial::writeColor)
PRIVATE_MEMBER(materialWriteFloatCoeff, void (BlinnMaterial::*)(const NumberRef&, float&),
               &BlinnMaterial::writeFloatCoeff)
PRIVATE_MEMBER(channelTexture, TextureElementRef ChannelType::*, &ChannelType::elemTexture)

TEST(MaterialTest, FieldsOfTheRecordStandInTheirOrder)
{
    const Component component;
    const std::vector<const void*> fields{
        &component.shininess, &component.transparency,    &component.emission,   &component.emissionTexture,
        &component.ambient,   &component.ambientTexture,  &component.diffuse,    &component.diffuseTexture,
        &component.specular,  &component.specularTexture, &component.reflective, &component.reflectiveTexture};
    EXPECT_EQ(static_cast<const void*>(&component), fields[0]);
    for (std::size_t i = 1; i < fields.size(); ++i) {
        EXPECT_TRUE(std::less<>()(fields[i - 1], fields[i])) << i;
    }
}

TEST(MaterialTest, RecordStandsBeforeTheProfile)
{
    const BlinnMaterial material;
    EXPECT_EQ(static_cast<const void*>(&material), &materialComponent(material));
    EXPECT_TRUE(std::less<const void*>()(&materialComponent(material), &materialProfile(material)));
    EXPECT_EQ(&materialComponent(material), &material.component());
}

constexpr const char* channel = "libVideo.material";
constexpr const char* nullReference = "Null domBlinnRef passed into function";
constexpr const char* shortColor = "Color has fewer than three values";
constexpr const char* noTexture = "Unable to initialize texture";
constexpr Color white{1.0f, 1.0f, 1.0f};

/// A color channel of the record, identified by the name of its element.
struct ColorChannel {
    const char* element;
    float (Component::*color)[3];
    TextureHandle Component::*texture;
};

void PrintTo(const ColorChannel& one, std::ostream* out)
{
    *out << one.element;
}

const std::array<ColorChannel, 5>& colorChannels();

Color colorIn(const Component& component, const ColorChannel& of)
{
    const float* const color = component.*of.color;
    return {color[0], color[1], color[2]};
}

Color diffuseOf(const BlinnMaterial& material)
{
    return colorIn(material.component(), colorChannels()[2]);
}

std::string tagged(const std::string& tag, const std::string& content)
{
    return "<" + tag + ">" + content + "</" + tag + ">";
}

std::string color(const std::string& numbers)
{
    return tagged("color", numbers);
}

const std::string textured = "<texture texture='sampler' texcoord='uv'/>";
const std::string lost = "<texture texture='none' texcoord='uv'/>";

/// A document with an effect for each text of shading values; the first has the id "effect0". All profiles have a
/// sampler "sampler", which leads to the given file, and a sampler "bare", whose surface has none.
class Document {
public:
    explicit Document(const std::vector<std::string>& shaders, const std::string& file = "./a.png")
    {
        m_builder.add("<library_images><image id='image'>" + tagged("init_from", file) + "</image></library_images>");
        std::string effects;
        for (std::size_t i = 0; i < shaders.size(); ++i) {
            effects += "<effect id='effect" + std::to_string(i) +
                       "'><profile_COMMON>"
                       "<newparam sid='surface'><surface type='2D'><init_from>image</init_from></surface></newparam>"
                       "<newparam sid='sampler'><sampler2D><source>surface</source></sampler2D></newparam>"
                       "<newparam sid='empty'><surface type='2D'/></newparam>"
                       "<newparam sid='bare'><sampler2D><source>empty</source></sampler2D></newparam>"
                       "<technique sid='common'>" +
                       shaders[i] + "</technique></profile_COMMON></effect>";
        }
        m_builder.add("<library_effects>" + effects + "</library_effects>");
        m_builder.open();
    }

    /// A document with one `<blinn>` with these children.
    explicit Document(const std::string& values) : Document(std::vector<std::string>{tagged("blinn", values)}) {}

    domProfile_COMMON* profile(unsigned of = 0)
    {
        auto* const effect = m_builder.element<domEffect>(("effect" + std::to_string(of)).c_str());
        return daeSafeCast<domProfile_COMMON>(effect->getFx_profile_abstract_array()[0]);
    }
    BlinnRef blinn(unsigned of = 0) { return profile(of)->getTechnique()->getBlinn(); }
    PhongRef phong(unsigned of = 0) { return profile(of)->getTechnique()->getPhong(); }

    void loadInto(BlinnMaterial& material, unsigned of = 0)
    {
        if (blinn(of) != nullptr) {
            material.createFromCollada(blinn(of), profile(of));
        } else {
            material.createFromCollada(phong(of), profile(of));
        }
    }

private:
    ColladaBuilder m_builder;
};

// Null without a texture.
const char* fileOf(const TextureHandle& texture)
{
    return texture ? texture->textureFile().data() : nullptr;
}

void expectDefaults(const Component& component)
{
    EXPECT_EQ(0.0f, component.shininess);
    EXPECT_EQ(0.0f, component.transparency);
    for (const ColorChannel& one : colorChannels()) {
        EXPECT_EQ(white, colorIn(component, one)) << one.element;
        EXPECT_FALSE(component.*one.texture) << one.element;
    }
}

// The record.

TEST(MaterialTest, NewRecordHasWhiteColorsAndZeroCoefficients)
{
    expectDefaults(Component());
}

TEST(MaterialTest, CopiesOfTheRecordShareTheTextures)
{
    Component component;
    component.shininess = 3.0f;
    component.transparency = 0.5f;
    float value = 0.0f;
    for (const ColorChannel& one : colorChannels()) {
        for (float& part : component.*one.color) {
            part = value++;
        }
        component.*one.texture = new Texture;
    }
    const Component copy(component);
    Component assigned;
    assigned.diffuseTexture = new Texture;
    assigned = component;
    for (const Component* const other : {&copy, &std::as_const(assigned)}) {
        EXPECT_EQ(3.0f, other->shininess);
        EXPECT_EQ(0.5f, other->transparency);
        for (const ColorChannel& one : colorChannels()) {
            EXPECT_EQ(colorIn(component, one), colorIn(*other, one)) << one.element;
            EXPECT_EQ(component.*one.texture, other->*one.texture) << one.element;
            EXPECT_EQ(3u, (other->*one.texture).useCount()) << one.element;
        }
    }
}

TEST(MaterialTest, NewMaterialHasTheDefaults)
{
    const LogCapture log;
    expectDefaults(BlinnMaterial().component());
    EXPECT_TRUE(log.lines().empty());
}

// Loading.

TEST(MaterialTest, OnlyDiffuseLeavesTheRestAtItsDefaults)
{
    const LogCapture log;
    Document document("<diffuse><color>0.25 0.5 0.75 1</color></diffuse>");
    BlinnMaterial material;
    document.loadInto(material);
    EXPECT_EQ((Color{0.25f, 0.5f, 0.75f}), diffuseOf(material));

    Component rest = material.component();
    for (float& part : rest.diffuse) {
        part = 1.0f;
    }
    expectDefaults(rest);
    EXPECT_TRUE(log.lines().empty());
}

const std::string fullRecord =
    "<emission><color>0.125 0.25 0.375 1</color></emission><ambient><color>1.5 1.25 1.125 1</color></ambient>"
    "<diffuse><texture texture='sampler' texcoord='uv'/></diffuse><specular><color>-1 0 2 1</color></specular>"
    "<shininess><float>12.5</float></shininess>"
    "<reflective><color>0.75 0.5 0.625 1</color></reflective><reflectivity><float>0.9</float></reflectivity>"
    "<transparent><color>0.2 0.3 0.4 1</color></transparent><transparency><float>0.875</float></transparency>"
    "<index_of_refraction><float>1.3</float></index_of_refraction>";

void expectFullRecord(const BlinnMaterial& material)
{
    const Component& component = material.component();
    EXPECT_EQ(12.5f, component.shininess);
    EXPECT_EQ(0.875f, component.transparency);
    const std::array<Color, 5> colors{
        {{0.125f, 0.25f, 0.375f}, {1.5f, 1.25f, 1.125f}, white, {-1.0f, 0.0f, 2.0f}, {0.75f, 0.5f, 0.625f}}};
    for (std::size_t i = 0; i < colors.size(); ++i) {
        EXPECT_EQ(colors[i], colorIn(component, colorChannels()[i])) << colorChannels()[i].element;
        const TextureHandle& texture = component.*colorChannels()[i].texture;
        EXPECT_STREQ(i == 2 ? "./a.png" : nullptr, fileOf(texture)) << colorChannels()[i].element;
    }
}

TEST(MaterialTest, BlinnGivesTheRecord)
{
    const LogCapture log;
    Document document(std::vector<std::string>{tagged("blinn", fullRecord)});
    ASSERT_NE(nullptr, document.blinn());
    BlinnMaterial material;
    material.createFromCollada(document.blinn(), document.profile());
    expectFullRecord(material);
    EXPECT_TRUE(log.lines().empty());
}

TEST(MaterialTest, PhongGivesTheSameRecordAsBlinn)
{
    const LogCapture log;
    Document document(std::vector<std::string>{tagged("phong", fullRecord)});
    ASSERT_NE(nullptr, document.phong());
    BlinnMaterial material;
    material.createFromCollada(document.phong(), document.profile());
    expectFullRecord(material);
    EXPECT_TRUE(log.lines().empty());
}

TEST(MaterialTest, EmptyShaderLeavesTheDefaults)
{
    const LogCapture log;
    Document document(std::vector<std::string>{"<blinn/>", "<phong/>"});
    for (const unsigned of : {0u, 1u}) {
        BlinnMaterial material;
        document.loadInto(material, of);
        expectDefaults(material.component());
        EXPECT_EQ(document.profile(of), materialProfile(material));
    }
    EXPECT_TRUE(log.lines().empty());
}

TEST(MaterialTest, ReflectivityTransparentAndRefractionAreNotRead)
{
    const LogCapture log;
    Document document("<reflectivity><float>0.9</float></reflectivity><transparent>" + lost +
                      "</transparent><index_of_refraction><float>1.3</float></index_of_refraction>");
    BlinnMaterial material;
    document.loadInto(material);
    expectDefaults(material.component());
    EXPECT_TRUE(log.lines().empty());
}

class MaterialChannelTest : public testing::TestWithParam<ColorChannel> {
protected:
    static std::string shader(const std::string& kind, const std::string& content)
    {
        return tagged(kind, tagged(GetParam().element, content));
    }
};

// With a color and with a texture, for both shaders.
TEST_P(MaterialChannelTest, ElementFillsItsOwnFieldsAlone)
{
    const LogCapture log;
    Document document(std::vector<std::string>{shader("blinn", color("0.25 0.5 0.75 1")),
                                               shader("phong", color("0.25 0.5 0.75 1")), shader("blinn", textured),
                                               shader("phong", textured)});
    for (const unsigned of : {0u, 1u, 2u, 3u}) {
        BlinnMaterial material;
        document.loadInto(material, of);
        for (const ColorChannel& one : colorChannels()) {
            const bool isFilled = one.element == std::string(GetParam().element);
            const Color expected = isFilled && of < 2 ? Color{0.25f, 0.5f, 0.75f} : white;
            EXPECT_EQ(expected, colorIn(material.component(), one)) << one.element << of;
            EXPECT_STREQ(isFilled && of >= 2 ? "./a.png" : nullptr, fileOf(material.component().*one.texture))
                << one.element << of;
        }
        EXPECT_EQ(0.0f, material.component().shininess);
        EXPECT_EQ(0.0f, material.component().transparency);
    }
    EXPECT_TRUE(log.lines().empty());
}

TEST_P(MaterialChannelTest, UnresolvedTextureIsLoggedAndStaysInItsHandle)
{
    const LogCapture log;
    Document document(std::vector<std::string>{shader("blinn", lost), shader("phong", lost)});
    for (const unsigned of : {0u, 1u}) {
        BlinnMaterial material;
        document.loadInto(material, of);
        for (const ColorChannel& one : colorChannels()) {
            const bool isFilled = one.element == std::string(GetParam().element);
            EXPECT_STREQ(isFilled ? "" : nullptr, fileOf(material.component().*one.texture)) << one.element;
            EXPECT_EQ(white, colorIn(material.component(), one)) << one.element;
        }
    }
    expectErrors(channel, std::string(noTexture) + "\n" + noTexture, log);
}

TEST_P(MaterialChannelTest, ParamIsNotFollowed)
{
    const LogCapture log;
    Document document(std::vector<std::string>{shader("blinn", "<param ref='sampler'/>")});
    BlinnMaterial material;
    document.loadInto(material);
    expectDefaults(material.component());
    EXPECT_TRUE(log.lines().empty());
}

TEST_P(MaterialChannelTest, EmptyElementLeavesTheDefaults)
{
    const LogCapture log;
    Document document(std::vector<std::string>{shader("blinn", "")});
    BlinnMaterial material;
    document.loadInto(material);
    expectDefaults(material.component());
    EXPECT_TRUE(log.lines().empty());
}

INSTANTIATE_TEST_SUITE_P(Channels, MaterialChannelTest, testing::ValuesIn(colorChannels()),
                         [](const auto& row) { return std::string(row.param.element); });

struct ColorCase : Row {
    const char* numbers;
    Color color;
    const char* lines;
};

class MaterialColorTest : public testing::TestWithParam<ColorCase> {};

TEST_P(MaterialColorTest, FirstThreeNumbersAreTaken)
{
    const ColorCase& row = GetParam();
    const LogCapture log;
    Document document(tagged("diffuse", color(row.numbers)));
    BlinnMaterial material;
    document.loadInto(material);
    EXPECT_EQ(row.color, diffuseOf(material));
    EXPECT_FALSE(material.component().diffuseTexture);
    expectErrors(channel, row.lines, log);
}

INSTANTIATE_ROWS(Colors, MaterialColorTest, {"AlphaIsNotKept", "0.25 0.5 0.75 0.125", {0.25f, 0.5f, 0.75f}, ""},
                 {"AlphaMayBeMissing", "0.25 0.5 0.75", {0.25f, 0.5f, 0.75f}, ""},
                 {"MoreThanFour", "0.25 0.5 0.75 1 9 9", {0.25f, 0.5f, 0.75f}, ""},
                 {"NothingIsClamped", "-2 300 1.5 1", {-2.0f, 300.0f, 1.5f}, ""},
                 {"Black", "0 0 0 1", {0.0f, 0.0f, 0.0f}, ""},
                 // 2^24 + 1 is between two floats; the even one is 2^24
                 {"NarrowedToFloat", "0.1 16777217 0.3 1", {0.1f, 16777216.0f, 0.3f}, ""},
                 {"NoNumber", "", white, shortColor}, {"OneNumber", "0.5", white, shortColor},
                 {"TwoNumbers", "0.25 0.5", white, shortColor});

class MaterialCoefficientTest : public testing::TestWithParam<Case<const char*, float>> {};

TEST_P(MaterialCoefficientTest, ShininessTakesItsFloat)
{
    const LogCapture log;
    Document document(std::vector<std::string>{tagged("blinn", tagged("shininess", GetParam().given)),
                                               tagged("phong", tagged("shininess", GetParam().given))});
    for (const unsigned of : {0u, 1u}) {
        BlinnMaterial material;
        document.loadInto(material, of);
        EXPECT_EQ(GetParam().expected, material.component().shininess);
        EXPECT_EQ(0.0f, material.component().transparency);
    }
    EXPECT_TRUE(log.lines().empty());
}

TEST_P(MaterialCoefficientTest, TransparencyTakesItsFloat)
{
    const LogCapture log;
    Document document(std::vector<std::string>{tagged("blinn", tagged("transparency", GetParam().given)),
                                               tagged("phong", tagged("transparency", GetParam().given))});
    for (const unsigned of : {0u, 1u}) {
        BlinnMaterial material;
        document.loadInto(material, of);
        EXPECT_EQ(GetParam().expected, material.component().transparency);
        EXPECT_EQ(0.0f, material.component().shininess);
    }
    EXPECT_TRUE(log.lines().empty());
}

INSTANTIATE_ROWS(Numbers, MaterialCoefficientTest, {"Float", "<float>12.5</float>", 12.5f},
                 {"NegativeFloat", "<float>-3</float>", -3.0f},
                 {"FloatIsNarrowed", "<float>16777217</float>", 16777216.0f},
                 {"FloatWithASid", "<float sid='s'>0.5</float>", 0.5f},
                 {"ParamIsNotFollowed", "<param ref='number'/>", 0.0f}, {"EmptyElement", "", 0.0f});

TEST(MaterialTest, ParamIsNotFollowedAlsoIfItsNewparamHasTheNumber)
{
    ColladaBuilder document(
        "<library_effects><effect id='effect'><profile_COMMON id='profile'><newparam sid='number'><float>7</float>"
        "</newparam><technique sid='common'><phong><shininess><param ref='number'/></shininess></phong></technique>"
        "</profile_COMMON></effect></library_effects>");
    document.open();
    auto* const profile = document.element<domProfile_COMMON>("profile");
    BlinnMaterial material;
    material.createFromCollada(profile->getTechnique()->getPhong(), profile);
    EXPECT_EQ(0.0f, material.component().shininess);
}

// Failures.

TEST(MaterialTest, NullBlinnIsLoggedAndChangesNothing)
{
    Document document(std::vector<std::string>{tagged("blinn", fullRecord), "<blinn/>"});
    BlinnMaterial material;
    document.loadInto(material);
    const LogCapture log;
    material.createFromCollada(BlinnRef(), document.profile(1));
    expectErrors(channel, nullReference, log);
    expectFullRecord(material);
    EXPECT_EQ(document.profile(0), materialProfile(material));
}

TEST(MaterialTest, NullPhongIsLoggedWithTheWordsOfBlinnAndChangesNothing)
{
    Document document(std::vector<std::string>{tagged("phong", fullRecord), "<phong/>"});
    BlinnMaterial material;
    document.loadInto(material);
    const LogCapture log;
    material.createFromCollada(PhongRef(), document.profile(1));
    expectErrors(channel, nullReference, log);
    expectFullRecord(material);
    EXPECT_EQ(document.profile(0), materialProfile(material));
}

TEST(MaterialTest, ChannelsAreReadInTheirOrderWhateverFails)
{
    const LogCapture log;
    Document document(tagged("reflective", color("")) + tagged("specular", lost) + tagged("diffuse", color("1 2")) +
                      tagged("ambient", lost) + tagged("emission", color("3")) +
                      "<shininess><float>5</float></shininess><transparency><float>6</float></transparency>");
    BlinnMaterial material;
    document.loadInto(material);
    const std::string colorLine = std::string(shortColor) + "\n";
    const std::string textureLine = std::string(noTexture) + "\n";
    expectErrors(channel, colorLine + textureLine + colorLine + textureLine + shortColor, log);
    EXPECT_EQ(5.0f, material.component().shininess);
    EXPECT_EQ(6.0f, material.component().transparency);
    EXPECT_STREQ("", fileOf(material.component().ambientTexture));
    EXPECT_STREQ("", fileOf(material.component().specularTexture));
}

// In one material, the first channel leads to a surface without an initializer, and the second one to nothing.
TEST(MaterialTest, LinesOfATextureStandWhereItsChannelIsRead)
{
    const LogCapture log;
    Document document(tagged("emission", "<texture texture='bare' texcoord='uv'/>") + tagged("ambient", lost) +
                      tagged("diffuse", "<texture texture='bare' texcoord='uv'/>"));
    BlinnMaterial material;
    document.loadInto(material);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(3u, lines.size());
    for (const std::size_t i : {0u, 2u}) {
        EXPECT_EQ("libVideo.texture", lines[i].channel);
        EXPECT_EQ("Texture has no surface initiailzer", lines[i].words());
    }
    EXPECT_EQ(channel, lines[1].channel);
    EXPECT_EQ(noTexture, lines[1].words());
    EXPECT_STREQ("", fileOf(material.component().emissionTexture));
    EXPECT_NE(nullptr, material.component().emissionTexture->sampler());
}

TEST(MaterialTest, UnresolvedTextureStaysAsFarAsItGot)
{
    const LogCapture log;
    ColladaBuilder document(
        "<library_effects><effect id='effect'><profile_COMMON id='profile'><newparam sid='sampler'><sampler2D>"
        "<source>none</source></sampler2D></newparam><technique sid='common'><blinn>" +
        tagged("diffuse", textured) + "</blinn></technique></profile_COMMON></effect></library_effects>");
    document.open();
    auto* const profile = document.element<domProfile_COMMON>("profile");
    BlinnMaterial material;
    material.createFromCollada(profile->getTechnique()->getBlinn(), profile);
    expectErrors(channel, noTexture, log);
    const TextureHandle& texture = material.component().diffuseTexture;
    ASSERT_TRUE(texture);
    EXPECT_EQ(profile->getNewparam_array()[0]->getSampler2D(), texture->sampler());
    EXPECT_EQ(nullptr, texture->texture());
    EXPECT_STREQ("", fileOf(texture));
}

// Textures and profiles.

TEST(MaterialTest, EachChannelHasATextureOfItsOwnAlsoUnderOneSampler)
{
    Document document(tagged("ambient", textured) + tagged("diffuse", textured));
    BlinnMaterial material;
    document.loadInto(material);
    const TextureHandle& ambient = material.component().ambientTexture;
    const TextureHandle& diffuse = material.component().diffuseTexture;
    ASSERT_TRUE(ambient && diffuse);
    EXPECT_NE(ambient, diffuse);
    EXPECT_EQ(ambient->sampler(), diffuse->sampler());
    EXPECT_EQ(1u, ambient.useCount());
    EXPECT_EQ(1u, diffuse.useCount());
}

TEST(MaterialTest, TexturesAreLookedUpInTheProfileThatIsGiven)
{
    Document document(tagged("diffuse", textured));
    Document other({"<blinn/>"}, "other.png");
    BlinnMaterial material;
    material.createFromCollada(document.blinn(), other.profile());
    EXPECT_STREQ("other.png", fileOf(material.component().diffuseTexture));
    EXPECT_EQ(other.profile(), materialProfile(material));
}

TEST(MaterialTest, ProfileIsNotNeededWithoutTextures)
{
    const LogCapture log;
    Document document("<diffuse><color>0 0.5 0 1</color></diffuse><shininess><float>2</float></shininess>");
    BlinnMaterial material;
    material.createFromCollada(document.blinn(), nullptr);
    EXPECT_EQ((Color{0.0f, 0.5f, 0.0f}), diffuseOf(material));
    EXPECT_EQ(2.0f, material.component().shininess);
    EXPECT_EQ(nullptr, materialProfile(material));
    EXPECT_TRUE(log.lines().empty());
}

TEST(MaterialTest, NullProfileUnderATextureIsMisuse)
{
    const LogCapture log;
    Document document(tagged("emission", color("0 0 0 1")) + tagged("diffuse", textured));
    BlinnMaterial material;
    EXPECT_THROW(material.createFromCollada(document.blinn(), nullptr), vesk::NullPointer);
    EXPECT_EQ((Color{0.0f, 0.0f, 0.0f}), colorIn(material.component(), colorChannels()[0])) << "read before";
    EXPECT_TRUE(log.lines().empty());
}

// A second load.

TEST(MaterialTest, SecondLoadOverwritesWhatTheDocumentHasAndKeepsTheRest)
{
    Document document(std::vector<std::string>{
        tagged("blinn", fullRecord),
        "<phong><ambient><color>0 0 0 1</color></ambient><transparency><float>0.5</float></transparency></phong>"});
    BlinnMaterial material;
    document.loadInto(material, 0);
    document.loadInto(material, 1);
    const Component& component = material.component();
    EXPECT_EQ((Color{0.0f, 0.0f, 0.0f}), colorIn(component, colorChannels()[1]));
    EXPECT_EQ(0.5f, component.transparency);
    EXPECT_EQ(12.5f, component.shininess);
    EXPECT_EQ((Color{0.125f, 0.25f, 0.375f}), colorIn(component, colorChannels()[0]));
    EXPECT_EQ((Color{-1.0f, 0.0f, 2.0f}), colorIn(component, colorChannels()[3]));
    EXPECT_EQ((Color{0.75f, 0.5f, 0.625f}), colorIn(component, colorChannels()[4]));
    EXPECT_STREQ("./a.png", fileOf(component.diffuseTexture));
    EXPECT_EQ(document.profile(1), materialProfile(material));
}

TEST(MaterialTest, ColorOfASecondLoadLeavesTheTexture)
{
    Document document(std::vector<std::string>{tagged("blinn", tagged("diffuse", textured)),
                                               tagged("blinn", tagged("diffuse", color("0 0 1 1")))});
    BlinnMaterial material;
    document.loadInto(material, 0);
    const TextureHandle before = material.component().diffuseTexture;
    document.loadInto(material, 1);
    EXPECT_EQ((Color{0.0f, 0.0f, 1.0f}), diffuseOf(material));
    EXPECT_EQ(before, material.component().diffuseTexture);
}

TEST(MaterialTest, TextureOfASecondLoadLeavesTheColorAndReplacesTheTexture)
{
    Document document(std::vector<std::string>{tagged("blinn", tagged("diffuse", color("0 0 1 1"))),
                                               tagged("blinn", tagged("diffuse", textured))});
    BlinnMaterial material;
    document.loadInto(material, 0);
    document.loadInto(material, 1);
    EXPECT_EQ((Color{0.0f, 0.0f, 1.0f}), diffuseOf(material));
    const TextureHandle before = material.component().diffuseTexture;
    EXPECT_EQ(2u, before.useCount());
    document.loadInto(material, 1);
    EXPECT_NE(before, material.component().diffuseTexture);
    EXPECT_EQ(1u, before.useCount()) << "the material let go of it";
    EXPECT_EQ(1u, material.component().diffuseTexture.useCount());
}

TEST(MaterialTest, UnresolvedTextureOfASecondLoadReplacesAGoodOne)
{
    const LogCapture log;
    Document document(std::vector<std::string>{tagged("blinn", tagged("diffuse", textured)),
                                               tagged("blinn", tagged("diffuse", lost))});
    BlinnMaterial material;
    document.loadInto(material, 0);
    document.loadInto(material, 1);
    EXPECT_STREQ("", fileOf(material.component().diffuseTexture));
    expectErrors(channel, noTexture, log);
}

TEST(MaterialTest, ShortColorAndParamOfASecondLoadKeepTheValues)
{
    const LogCapture log;
    Document document(std::vector<std::string>{
        tagged("blinn", tagged("diffuse", color("0 0 1 1")) + "<shininess><float>5</float></shininess>"),
        tagged("blinn", tagged("diffuse", color("9 9")) + "<shininess><param ref='number'/></shininess>")});
    BlinnMaterial material;
    document.loadInto(material, 0);
    document.loadInto(material, 1);
    EXPECT_EQ((Color{0.0f, 0.0f, 1.0f}), diffuseOf(material));
    EXPECT_EQ(5.0f, material.component().shininess);
    expectErrors(channel, shortColor, log);
}

// The private steps.

void writeColor(BlinnMaterial& material, const ChannelRef& source, Color& into, TextureHandle& texture)
{
    materialWriteColor(material, source, into.data(), texture);
}

TEST(MaterialTest, WriteColorOfNoChannelChangesNothing)
{
    const LogCapture log;
    BlinnMaterial material;
    Color into{2.0f, 3.0f, 4.0f};
    TextureHandle texture(new Texture);
    const TextureHandle before = texture;
    writeColor(material, ChannelRef(), into, texture);
    EXPECT_EQ((Color{2.0f, 3.0f, 4.0f}), into);
    EXPECT_EQ(before, texture);
    EXPECT_TRUE(log.lines().empty());
}

TEST(MaterialTest, WriteColorWritesWhereItIsToldAndNotIntoTheRecord)
{
    Document document(tagged("diffuse", color("0.25 0.5 0.75 0.125")));
    BlinnMaterial material;
    std::array<float, 4> into{9.0f, 9.0f, 9.0f, 9.0f};
    TextureHandle texture;
    materialWriteColor(material, document.blinn()->getDiffuse(), into.data(), texture);
    EXPECT_EQ((std::array<float, 4>{0.25f, 0.5f, 0.75f, 9.0f}), into);
    EXPECT_FALSE(texture);
    expectDefaults(material.component());
}

TEST(MaterialTest, WriteColorLooksTexturesUpInTheProfileOfTheLoad)
{
    Document document(tagged("diffuse", textured));
    Document other({"<blinn/>"}, "other.png");
    BlinnMaterial material;
    other.loadInto(material);
    Color into = white;
    TextureHandle texture(new Texture);
    const TextureHandle before = texture;
    writeColor(material, document.blinn()->getDiffuse(), into, texture);
    EXPECT_STREQ("other.png", fileOf(texture));
    EXPECT_EQ(white, into);
    EXPECT_EQ(1u, before.useCount()) << "the handle let go of what it held";
}

// A document gives one of the two; the other is set by hand.
TEST(MaterialTest, ColorAndTextureOfOneChannelAreBothTaken)
{
    const LogCapture log;
    Document document(tagged("ambient", textured) + tagged("diffuse", color("0.25 0.5 0.75 1")));
    const ChannelRef diffuse = document.blinn()->getDiffuse();
    channelTexture(*diffuse) = document.blinn()->getAmbient()->getTexture();
    BlinnMaterial material;
    document.loadInto(material);
    EXPECT_EQ((Color{0.25f, 0.5f, 0.75f}), diffuseOf(material));
    EXPECT_STREQ("./a.png", fileOf(material.component().diffuseTexture));
    EXPECT_TRUE(log.lines().empty());
}

TEST(MaterialTest, ShortColorDoesNotKeepTheTextureOfItsChannelAway)
{
    const LogCapture log;
    Document document(tagged("ambient", lost) + tagged("diffuse", color("0.25 0.5")));
    const ChannelRef diffuse = document.blinn()->getDiffuse();
    channelTexture(*diffuse) = document.blinn()->getAmbient()->getTexture();
    BlinnMaterial material;
    materialProfile(material) = document.profile();
    Color into{2.0f, 3.0f, 4.0f};
    TextureHandle texture;
    writeColor(material, diffuse, into, texture);
    EXPECT_EQ((Color{2.0f, 3.0f, 4.0f}), into);
    EXPECT_STREQ("", fileOf(texture));
    expectErrors(channel, std::string(shortColor) + "\n" + noTexture, log);
}

TEST(MaterialTest, WriteFloatCoeffTakesAFloatAlone)
{
    const LogCapture log;
    Document document("<shininess><float>0.1</float></shininess><transparency><param ref='x'/></transparency>");
    BlinnMaterial material;
    float value = 4.0f;
    const auto write = [&material, &value](const NumberRef& source) {
        materialWriteFloatCoeff(material, source, value);
        return value;
    };
    EXPECT_EQ(4.0f, write(NumberRef()));
    EXPECT_EQ(4.0f, write(document.blinn()->getTransparency()));
    EXPECT_EQ(0.1f, write(document.blinn()->getShininess()));
    expectDefaults(material.component());
    EXPECT_TRUE(log.lines().empty());
}

// Copies and lifetime.

TEST(MaterialTest, CopyAndAssignmentShareTexturesAndProfile)
{
    Document document(std::vector<std::string>{tagged("blinn", fullRecord)});
    BlinnMaterial material;
    document.loadInto(material);
    const BlinnMaterial copy(material);
    BlinnMaterial assigned;
    assigned = material;
    for (const BlinnMaterial* const other : {&copy, &std::as_const(assigned)}) {
        expectFullRecord(*other);
        EXPECT_EQ(material.component().diffuseTexture, other->component().diffuseTexture);
        EXPECT_EQ(document.profile(), materialProfile(other));
    }
    EXPECT_EQ(3u, material.component().diffuseTexture.useCount());
}

TEST(MaterialTest, LoadOfACopyLeavesItsSource)
{
    Document document(std::vector<std::string>{tagged("blinn", fullRecord), tagged("blinn", tagged("diffuse", lost))});
    const LogCapture log;
    BlinnMaterial material;
    document.loadInto(material, 0);
    BlinnMaterial copy(material);
    document.loadInto(copy, 1);
    expectFullRecord(material);
    EXPECT_EQ(document.profile(0), materialProfile(material));
    EXPECT_STREQ("", fileOf(copy.component().diffuseTexture));
    EXPECT_EQ(1u, material.component().diffuseTexture.useCount());
}

TEST(MaterialTest, AssignmentToItselfChangesNothing)
{
    Document document(std::vector<std::string>{tagged("blinn", fullRecord)});
    BlinnMaterial material;
    document.loadInto(material);
    const BlinnMaterial& itself = material;
    material = itself;
    expectFullRecord(material);
    EXPECT_EQ(1u, material.component().diffuseTexture.useCount());
}

TEST(MaterialTest, MaterialCanBeReadAndReleasedBeyondItsDocument)
{
    auto document = std::make_unique<Document>(std::vector<std::string>{tagged("blinn", fullRecord)});
    auto material = std::make_unique<BlinnMaterial>();
    document->loadInto(*material);
    document.reset();
    const BlinnMaterial copy(*material);
    material.reset();
    expectFullRecord(copy);
    EXPECT_NE(nullptr, copy.component().diffuseTexture->sampler());
}

const char* const entry = "> BlinnMaterial::createFromCollada (libVideo/SceneGraph/Material";
const char* const leaving = "< BlinnMaterial::createFromCollada";

TEST(MaterialTest, BothLoadsTraceTheirScope)
{
    Document document(std::vector<std::string>{tagged("blinn", tagged("diffuse", textured)),
                                               tagged("phong", tagged("diffuse", textured))});
    for (const unsigned of : {0u, 1u}) {
        BlinnMaterial material;
        EXPECT_EQ((std::vector<std::string>{entry, "> Texture::createFromCollada (libVideo/SceneGraph/Texture",
                                            "< Texture::createFromCollada", leaving}),
                  tracedTexts([&] { document.loadInto(material, of); }));
    }
}

TEST(MaterialTest, RefusalsStandInsideTheTracedScope)
{
    BlinnMaterial material;
    const std::vector<std::string> expected{entry, nullReference, leaving};
    EXPECT_EQ(expected, tracedTexts([&] { material.createFromCollada(BlinnRef(), nullptr); }));
    EXPECT_EQ(expected, tracedTexts([&] { material.createFromCollada(PhongRef(), nullptr); }));
}

TEST(MaterialTest, LineOfAnUnresolvedTextureStandsBehindItsScope)
{
    Document document(tagged("diffuse", lost));
    BlinnMaterial material;
    EXPECT_EQ((std::vector<std::string>{entry, "> Texture::createFromCollada (libVideo/SceneGraph/Texture",
                                        "< Texture::createFromCollada", noTexture, leaving}),
              tracedTexts([&] { document.loadInto(material); }));
}

TEST(MaterialTest, MaterialThatRanOutOfMemoryCanBeAskedAndReleased)
{
    Document document(tagged("emission", textured) + tagged("ambient", color("0 0 0 1")) + tagged("diffuse", textured));
    constexpr long most = 1000;
    long failures = 0;
    bool isComplete = false;
    while (!isComplete && failures < most) {
        BlinnMaterial material;
        bool isThrown = false;
        bool hasFailed = false;
        {
            const FailingAllocator allocator(failures);
            try {
                document.loadInto(material);
            } catch (const std::bad_alloc&) {
                isThrown = true;
            }
            hasFailed = allocator.hasFailed();
        }
        EXPECT_EQ(hasFailed, isThrown) << "request " << failures;
        const char* const file = fileOf(material.component().diffuseTexture);
        isComplete = !hasFailed && file != nullptr && std::string("./a.png") == file;
        ASSERT_NE(hasFailed, isComplete);
        failures += isComplete ? 0 : 1;
    }
    EXPECT_TRUE(isComplete);
    EXPECT_GE(failures, 4) << "two textures and their counts at least";
}

static_assert(std::is_default_constructible_v<BlinnMaterial> && std::is_copy_constructible_v<BlinnMaterial> &&
              std::is_copy_assignable_v<BlinnMaterial>);
static_assert(!std::is_polymorphic_v<BlinnMaterial> && !std::is_polymorphic_v<Component>);
static_assert(std::is_default_constructible_v<Component> && std::is_copy_constructible_v<Component> &&
              std::is_copy_assignable_v<Component>);
static_assert(std::is_same_v<decltype(std::declval<const BlinnMaterial&>().component()), const Component&>);
static_assert(std::is_same_v<decltype(Component::shininess), float>);
static_assert(std::is_same_v<decltype(Component::transparency), float>);
static_assert(std::is_same_v<decltype(Component::emission), float[3]>);
static_assert(std::is_same_v<decltype(Component::emissionTexture), TextureHandle>);
static_assert(std::is_same_v<decltype(Component::ambient), float[3]>);
static_assert(std::is_same_v<decltype(Component::ambientTexture), TextureHandle>);
static_assert(std::is_same_v<decltype(Component::diffuse), float[3]>);
static_assert(std::is_same_v<decltype(Component::diffuseTexture), TextureHandle>);
static_assert(std::is_same_v<decltype(Component::specular), float[3]>);
static_assert(std::is_same_v<decltype(Component::specularTexture), TextureHandle>);
static_assert(std::is_same_v<decltype(Component::reflective), float[3]>);
static_assert(std::is_same_v<decltype(Component::reflectiveTexture), TextureHandle>);

const std::array<ColorChannel, 5>& colorChannels()
{
    static const std::array<ColorChannel, 5> all{{
        {"emission", &Component::emission, &Component::emissionTexture},
        {"ambient", &Component::ambient, &Component::ambientTexture},
        {"diffuse", &Component::diffuse, &Component::diffuseTexture},
        {"specular", &Component::specular, &Component::specularTexture},
        {"reflective", &Component::reflective, &Component::reflectiveTexture},
    }};
    return all;
}

} // namespace
