#include "Expectations.h"
#include "LookDocuments.h"

#include "support/Rows.h"

#include <gtest/gtest.h>

namespace {

using libPrepare::Outcome;
using test::Prepared;
using test::shownShader;

std::string colorElement(const std::string& name, const std::string& color)
{
    return '<' + name + "><color>" + color + "</color></" + name + '>';
}

std::string floatElement(const std::string& name, const std::string& value)
{
    return '<' + name + "><float>" + value + "</float></" + name + '>';
}

TEST(CompleteEffectsTest, AbsentColorsAreBlackAndAbsentTransparencyIsOpaque)
{
    const Prepared prepared(shownShader("<phong>" + colorElement("diffuse", "0.5 0.25 0 1") + "</phong>"));
    EXPECT_EQ("0.5 0.25 0 1", prepared.text("//phong/diffuse/color"));
    for (const char* const path :
         {"//phong/emission/color", "//phong/ambient/color", "//phong/specular/color", "//phong/reflective/color"}) {
        EXPECT_EQ("0 0 0 1", prepared.text(path)) << path;
    }
    EXPECT_EQ("1", prepared.text("//phong/transparency/float"));
    EXPECT_EQ(0U, prepared.count("//shininess"));
    test::expectStable(prepared);
}

TEST(CompleteEffectsTest, ChannelsAreInTheOrderOfTheSchema)
{
    const Prepared prepared(shownShader("<blinn>" + floatElement("shininess", "7.50") +
                                        floatElement("index_of_refraction", "1") + "</blinn>"));
    std::string order;
    for (const pugi::xml_node child : prepared.node("//blinn").children()) {
        order += std::string(child.name()) + ' ';
    }
    EXPECT_EQ("emission ambient diffuse specular shininess reflective transparency index_of_refraction ", order);
    EXPECT_EQ("7.50", prepared.text("//shininess/float"));
}

TEST(CompleteEffectsTest, LambertIsPhongWithoutAHighlight)
{
    const Prepared prepared(shownShader("<lambert>" + colorElement("ambient", "0.1 0.2 0.3 1") +
                                        colorElement("diffuse", "1 0 0 1") + colorElement("specular", "1 1 1 1") +
                                        "</lambert>"));
    EXPECT_EQ(0U, prepared.count("//lambert"));
    EXPECT_EQ("0.1 0.2 0.3 1", prepared.text("//phong/ambient/color"));
    EXPECT_EQ("1 0 0 1", prepared.text("//phong/diffuse/color"));
    EXPECT_EQ("0 0 0 1", prepared.text("//phong/specular/color"));
    EXPECT_EQ(1U, prepared.findings("lambert"));
    test::expectStable(prepared);
}

TEST(CompleteEffectsTest, ConstantOnlyEmits)
{
    const Prepared prepared(shownShader("<constant>" + colorElement("emission", "0 1 0 1") +
                                        colorElement("diffuse", "1 1 1 1") + "</constant>"));
    EXPECT_EQ("0 1 0 1", prepared.text("//phong/emission/color"));
    EXPECT_EQ("0 0 0 1", prepared.text("//phong/ambient/color"));
    EXPECT_EQ("0 0 0 1", prepared.text("//phong/diffuse/color"));
    EXPECT_EQ("0 0 0 1", prepared.text("//phong/specular/color"));
    test::expectStable(prepared);
}

TEST(CompleteEffectsTest, WholeEffectStaysAsItIs)
{
    const std::string shader = "<phong>" + colorElement("emission", " 0 0 0 1 ") + colorElement("ambient", "0 0 0 1") +
                               colorElement("diffuse", "1.000 1 1 1") + colorElement("specular", "0 0 0 1") +
                               floatElement("shininess", "20.0") + colorElement("reflective", "0 0 0 1") +
                               "<transparent opaque=\"A_ONE\"><color>0 0 0 1</color></transparent>" +
                               floatElement("transparency", "1.000") + "</phong>";
    const Prepared prepared(shownShader(shader));
    EXPECT_NE(std::string::npos, prepared.xml().find(shader));
    EXPECT_FALSE(prepared.report.changed);
}

TEST(CompleteEffectsTest, ColorOfTwoNumbersIsNone)
{
    const Prepared prepared(shownShader("<phong>" + colorElement("diffuse", "1 1") + "</phong>"));
    EXPECT_EQ("0 0 0 1", prepared.text("//phong/diffuse/color"));
}

struct Opacity : testSupport::Row {
    const char* transparent; // all of <transparent>
    const char* transparency;
    const char* expected;
};

class OpacityTest : public testing::TestWithParam<Opacity> {};

TEST_P(OpacityTest, IsInTransparency)
{
    const std::string transparency = GetParam().transparency;
    const Prepared prepared(shownShader("<phong>" + std::string(GetParam().transparent) +
                                        (transparency.empty() ? "" : floatElement("transparency", transparency)) +
                                        "</phong>"));
    EXPECT_EQ(GetParam().expected, prepared.text("//phong/transparency/float"));
    test::expectStable(prepared);
}

INSTANTIATE_ROWS(
    Rows, OpacityTest, {"NothingSaid", "", "", "1"}, {"FactorAlone", "", "0.30", "0.30"},
    {"AlphaIsTheDefaultMode", "<transparent><color>0 0 0 0.5</color></transparent>", "0.5", "0.25"},
    {"AlphaOne", "<transparent opaque=\"A_ONE\"><color>0 0 0 1</color></transparent>", "0.40", "0.40"},
    {"AlphaAlone", "<transparent opaque=\"A_ONE\"><color>1 1 1 0.25</color></transparent>", "", "0.25"},
    {"ThreeNumbersAreOpaque", "<transparent><color>0 0 0</color></transparent>", "0.5", "0.5"},
    {"BlackLetsNothingThrough", "<transparent opaque=\"RGB_ZERO\"><color>0 0 0 1</color></transparent>", "1.0", "1.0"},
    {"GreyByColor", "<transparent opaque=\"RGB_ZERO\"><color>0.5 0.5 0.5 1</color></transparent>", "0.5", "0.75"},
    // 1 - 0.212671
    {"RedByColor", "<transparent opaque=\"RGB_ZERO\"><color>1 0 0 1</color></transparent>", "1", "0.787329"},
    {"ByColorWithoutAFactor", "<transparent opaque=\"RGB_ZERO\"><color>0 1 0 1</color></transparent>", "", "0.28484"},
    {"InvertedAlpha", "<transparent opaque=\"A_ZERO\"><color>1 1 1 0.25</color></transparent>", "1", "0.75"},
    {"ColorIsTheOpacity", "<transparent opaque=\"RGB_ONE\"><color>0 0 1 1</color></transparent>", "1", "0.072169"},
    {"PercentIsCutOff", "", "100", "1"}, {"NoNumber", "", "abc", "1"}, {"NotANumberAtAll", "", "NaN", "1"},
    {"EmptyTransparent", "<transparent/>", "0.5", "0.5"});

TEST(CompleteEffectsTest, WhatNobodySeesIsReported)
{
    const Prepared invisible(shownShader("<phong>" + floatElement("transparency", "0") + "</phong>"));
    EXPECT_EQ(1U, invisible.findings("invisible"));
    EXPECT_EQ("0", invisible.text("//phong/transparency/float"));
    const Prepared visible(shownShader("<phong>" + floatElement("transparency", "0.001") + "</phong>"));
    EXPECT_EQ(0U, visible.findings("invisible"));
}

TEST(CompleteEffectsTest, RewrittenTransparencyIsAOneAndWhite)
{
    const Prepared prepared(
        shownShader("<phong><transparent opaque=\"RGB_ZERO\"><color sid=\"t\">0 0 0 1</color></transparent></phong>"));
    EXPECT_EQ("A_ONE", std::string(prepared.node("//transparent").attribute("opaque").value()));
    EXPECT_EQ("1 1 1 1", prepared.text("//transparent/color[@sid='t']"));
}

const std::string textures = "<newparam sid=\"surface\"><surface type=\"2D\"><init_from>image</init_from></surface>"
                             "</newparam><newparam sid=\"sampler\"><sampler2D><source>surface</source></sampler2D>"
                             "</newparam><newparam sid=\"surface2\"><surface type=\"2D\"><init_from>other</init_from>"
                             "</surface></newparam><newparam sid=\"sampler2\"><sampler2D><source>surface2</source>"
                             "</sampler2D></newparam>";
const std::string images =
    "<library_images><image id=\"image\"><init_from>a.png</init_from></image><image id=\"other\">"
    "<init_from>b.png</init_from></image></library_images>";

std::string texturedShader(const std::string& transparent)
{
    return "<phong><diffuse><texture texture=\"sampler\" texcoord=\"UV\"/></diffuse>" + transparent + "</phong>";
}

TEST(CompleteEffectsTest, DiffuseTextureThatCutsOutStays)
{
    const Prepared prepared(
        shownShader(texturedShader("<transparent opaque=\"A_ONE\"><texture texture=\"sampler\" texcoord=\"UV\"/>"
                                   "</transparent><transparency><float>0.5</float></transparency>"),
                    textures, images));
    EXPECT_EQ(1U, prepared.count("//transparent/texture"));
    EXPECT_EQ("0.5", prepared.text("//transparency/float"));
    EXPECT_EQ(0U, prepared.findings("transparent-texture"));
    test::expectStable(prepared);
}

TEST(CompleteEffectsTest, AnotherTransparentTextureIsReported)
{
    const Prepared prepared(
        shownShader(texturedShader("<transparent><texture texture=\"sampler2\" texcoord=\"UV\"/></transparent>"),
                    textures, images));
    EXPECT_EQ(1U, prepared.findings("transparent-texture"));
    EXPECT_EQ("1", prepared.text("//transparency/float"));
}

TEST(CompleteEffectsTest, TextureThatIsTransparentByItsColorsIsOpaqueAndReported)
{
    const Prepared prepared(shownShader(
        texturedShader("<transparent opaque=\"RGB_ZERO\"><texture texture=\"sampler\" texcoord=\"UV\"/></transparent>"
                       "<transparency><float>0.5</float></transparency>"),
        textures, images));
    EXPECT_EQ(1U, prepared.findings("transparent-texture"));
    EXPECT_EQ("1", prepared.text("//transparency/float"));
    EXPECT_EQ("1 1 1 1", prepared.text("//transparent/color"));
    test::expectStable(prepared);
}

TEST(CompleteEffectsTest, TextureThatIsTransparentByItsColorsHasNoSayWithAFactorOfZero)
{
    const auto prepared = [](const char* mode) {
        return Prepared(shownShader(texturedShader("<transparent opaque=\"" + std::string(mode) +
                                                   "\"><texture texture=\"sampler\" texcoord=\"UV\"/></transparent>"
                                                   "<transparency><float>0</float></transparency>"),
                                    textures, images));
    };
    const Prepared zero = prepared("RGB_ZERO");
    EXPECT_EQ(0U, zero.findings("transparent-texture"));
    EXPECT_EQ("1", zero.text("//transparency/float"));
    const Prepared one = prepared("RGB_ONE");
    EXPECT_EQ(0U, one.findings("transparent-texture"));
    EXPECT_EQ("0", one.text("//transparency/float"));
}

TEST(CompleteEffectsTest, TexturesThatAMaterialSetsAreReported)
{
    const std::string body = shownShader(texturedShader(""), textures, images);
    const std::string end = "</instance_effect>";
    std::string changed = body;
    changed.insert(changed.find(end), "<setparam ref=\"surface\"><surface type=\"2D\"><init_from>other</init_from>"
                                      "</surface></setparam><setparam ref=\"none\"><sampler2D/></setparam>");
    const Prepared prepared(changed);
    EXPECT_EQ(0U, Prepared(body).findings("setparam"));
    EXPECT_EQ(1U, prepared.findings("setparam"));
    test::expectStable(prepared);
}

TEST(CompleteEffectsTest, ParametersAreWrittenOutInnerOnesFirst)
{
    const Prepared prepared(test::shownEffect(
        "<effect id=\"fx\"><newparam sid=\"c\"><float3>1 1 1</float3></newparam><newparam "
        "sid=\"s\"><float>12.50</float>"
        "</newparam><profile_COMMON><newparam sid=\"c\"><float3>0.1 0.2 0.3</float3></newparam><technique sid=\"t\">"
        "<phong><emission><param ref=\"e\"/></emission><diffuse><param ref=\"c\"/></diffuse><shininess>"
        "<param ref=\"s\"/></shininess><reflectivity><param ref=\"none\"/></reflectivity></phong></technique>"
        "</profile_COMMON></effect>"));
    EXPECT_EQ("0.1 0.2 0.3 1", prepared.text("//diffuse/color"));
    EXPECT_EQ("12.50", prepared.text("//shininess/float"));
    EXPECT_EQ("0 0 0 1", prepared.text("//emission/color"));
    EXPECT_EQ(0U, prepared.count("//reflectivity"));
    EXPECT_NE(nullptr, prepared.report.first(Outcome::lost));
    test::expectStable(prepared);
}

TEST(CompleteEffectsTest, MaterialsThatSetParametersHaveAnEffectEach)
{
    const std::string parameter = "<newparam sid=\"c\"><float4>0 0 0 1</float4></newparam>";
    const auto setparam = [](const std::string& value) {
        return "<setparam ref=\"c\"><float4>" + value + "</float4></setparam>";
    };
    const Prepared prepared(
        "<library_effects>" + test::effect("fx", "<phong><diffuse><param ref=\"c\"/></diffuse></phong>", parameter) +
        "</library_effects><library_materials>" + test::material("plain", "fx") +
        test::material("red", "fx", setparam("1 0 0 1")) + test::material("alsoRed", "fx", setparam("1 0 0 1")) +
        test::material("blue", "fx", setparam("0 0 1 1")) + "</library_materials><library_geometries>" +
        test::triangleGeometry("a", "p") + test::triangleGeometry("b", "r") + test::triangleGeometry("c", "s") +
        test::triangleGeometry("d", "t") + "</library_geometries>" +
        test::shownNodes(test::geometryNode("a", test::bindMaterial("p", "plain")) +
                         test::geometryNode("b", test::bindMaterial("r", "red")) +
                         test::geometryNode("c", test::bindMaterial("s", "alsoRed")) +
                         test::geometryNode("d", test::bindMaterial("t", "blue"))));
    const auto diffuse = [&](const std::string& name) {
        const std::string url =
            prepared.node(("//material[@id='" + name + "']/instance_effect").c_str()).attribute("url").value();
        return prepared.text(("//effect[@id='" + url.substr(1) + "']//diffuse/color").c_str());
    };
    EXPECT_EQ("0 0 0 1", diffuse("plain"));
    EXPECT_EQ("1 0 0 1", diffuse("red"));
    EXPECT_EQ("1 0 0 1", diffuse("alsoRed"));
    EXPECT_EQ("0 0 1 1", diffuse("blue"));
    EXPECT_EQ(3U, prepared.count("//effect"));
    test::expectStable(prepared);
}

TEST(CompleteEffectsTest, EffectWithoutACommonShaderIsReported)
{
    const Prepared prepared(test::shownEffect("<effect id=\"fx\"><profile_CG/></effect>"));
    EXPECT_EQ(1U, prepared.findings("effect"));
    EXPECT_FALSE(prepared.report.changed);
}

TEST(CompleteEffectsTest, FirstProfileWithAShaderIsTheOne)
{
    const Prepared prepared(
        test::shownEffect("<effect id=\"fx\"><profile_COMMON><technique sid=\"a\"/></profile_COMMON><profile_COMMON>"
                          "<technique sid=\"b\"><lambert/></technique></profile_COMMON><profile_COMMON>"
                          "<technique sid=\"c\"><phong/></technique></profile_COMMON></effect>"));
    EXPECT_EQ("0 0 0 1", prepared.text("//technique[@sid='b']/phong/diffuse/color"));
    EXPECT_EQ(0U, prepared.count("//technique[@sid='c']/phong/diffuse"));
}

TEST(CompleteEffectsTest, ShaderInALaterTechniqueIsMovedToTheFront)
{
    const Prepared prepared(
        test::shownEffect("<effect id=\"fx\"><profile_COMMON><technique sid=\"a\"/><technique sid=\"b\"><phong/>"
                          "</technique></profile_COMMON></effect>"));
    EXPECT_EQ("b", std::string(prepared.node("//profile_COMMON/technique").attribute("sid").value()));
    EXPECT_EQ("0 0 0 1", prepared.text("//phong/diffuse/color"));
    test::expectStable(prepared);
}

TEST(CompleteEffectsTest, EffectThatNobodyShowsStaysAsItIs)
{
    const Prepared prepared(shownShader("<phong/>") + "<library_effects>" + test::effect("unused", "<lambert/>") +
                            "</library_effects>");
    EXPECT_EQ(1U, prepared.count("//effect[@id='unused']//lambert"));
}

TEST(CompleteEffectsTest, OpacityOfAnotherTextureIsReportedForItsSymbol)
{
    const std::string sampler = "<newparam sid=\"other-surface\"><surface type=\"2D\"><init_from>other</init_from>"
                                "</surface></newparam><newparam sid=\"other-sampler\"><sampler2D>"
                                "<source>other-surface</source><wrap_s>MIRROR</wrap_s></sampler2D></newparam>";
    const Prepared prepared(shownShader(
        texturedShader("<transparent opaque=\"RGB_ZERO\"><texture texture=\"other-sampler\" texcoord=\"UV\"/>"
                       "</transparent><transparency><float>0.5</float></transparency>"),
        textures + sampler, images));
    ASSERT_EQ(1U, prepared.report.opacityTextures.size());
    const libPrepare::OpacityTexture& texture = prepared.report.opacityTextures[0];
    EXPECT_EQ("sym", texture.symbol);
    EXPECT_EQ("other", texture.image);
    EXPECT_EQ("b.png", texture.file);
    EXPECT_EQ("MIRROR", texture.wrapS);
    EXPECT_EQ("", texture.wrapT);
    EXPECT_TRUE(texture.isByColor);
    EXPECT_TRUE(texture.isInverted);
    EXPECT_EQ(0.5, texture.factor);
    EXPECT_EQ("1", prepared.text("//transparency/float"));
}

TEST(CompleteEffectsTest, AlphaOfTheDiffuseTextureNeedsNoReport)
{
    const Prepared prepared(shownShader(
        texturedShader("<transparent><texture texture=\"sampler\" texcoord=\"UV\"/></transparent>"), textures, images));
    EXPECT_TRUE(prepared.report.opacityTextures.empty());
}

} // namespace
