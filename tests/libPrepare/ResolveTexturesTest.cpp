#include "Expectations.h"
#include "LookDocuments.h"

#include "support/Rows.h"

#include <gtest/gtest.h>

namespace {

using test::Prepared;
using test::shownShader;

const std::string images = "<library_images><image id=\"image\" name=\"picture\"><init_from>a.png</init_from></image>"
                           "<image id=\"other\"><init_from>b.png</init_from></image><image id=\"empty\"><init_from/>"
                           "</image></library_images>";

std::string surface(const std::string& sid, const std::string& initializer)
{
    return "<newparam sid=\"" + sid + "\"><surface type=\"2D\">" + initializer + "</surface></newparam>";
}

std::string sampler(const std::string& sid, const std::string& surface, const std::string& more = {})
{
    return "<newparam sid=\"" + sid + "\"><sampler2D><source>" + surface + "</source>" + more +
           "</sampler2D></newparam>";
}

std::string textured(const std::string& name)
{
    return "<phong><diffuse><texture texture=\"" + name + "\" texcoord=\"UV\"/></diffuse></phong>";
}

// The id of the image that the diffuse texture leads to, by the parameters of the profile alone.
std::string imageOf(const Prepared& prepared)
{
    const auto parameter = [&](const std::string& sid) {
        return prepared.node(("//profile_COMMON/newparam[@sid='" + sid + "'][1]").c_str());
    };
    const std::string name = prepared.node("//diffuse/texture").attribute("texture").value();
    const std::string source = parameter(name).child("sampler2D").child("source").text().get();
    const pugi::xml_node surface = parameter(source).child("surface");
    return surface.child("init_from").text().get();
}

TEST(ResolveTexturesTest, WholeChainStaysAsItIs)
{
    const Prepared prepared(
        shownShader(textured("s"), surface("u", "<init_from>image</init_from>") + sampler("s", "u"), images));
    EXPECT_EQ(0U, prepared.findings("texture"));
    EXPECT_EQ(2U, prepared.count("//newparam"));
    EXPECT_EQ("image", imageOf(prepared));
}

struct Chain : testSupport::Row {
    std::string texture;
    std::string profile;
    std::string effect;
    const char* image;
};

class TextureChainTest : public testing::TestWithParam<Chain> {};

TEST_P(TextureChainTest, LeadsByASamplerAndASurfaceOfTheProfile)
{
    const Prepared prepared(test::shownEffect(
        "<effect id=\"fx\">" + GetParam().effect + "<profile_COMMON>" + GetParam().profile +
            "<technique sid=\"common\">" + textured(GetParam().texture) + "</technique></profile_COMMON></effect>",
        images));
    EXPECT_EQ(GetParam().image, imageOf(prepared));
    EXPECT_EQ(1U, prepared.findings("texture"));
    test::expectStable(prepared);
}

const std::string initFrom = "<init_from>image</init_from>";

INSTANTIATE_ROWS(
    Rows, TextureChainTest, {"NamesAnImage", "image", "", "", "image"},
    {"NamesAnImageByItsName", "picture", "", "", "image"}, {"NamesASurface", "u", surface("u", initFrom), "", "image"},
    {"SamplerNamesAnImage", "s", sampler("s", "other"), "", "other"},
    {"ParametersOfTheEffect", "s", "", surface("u", initFrom) + sampler("s", "u"), "image"},
    {"SurfaceOfTheEffect", "s", sampler("s", "u"), surface("u", initFrom), "image"},
    {"InnerParametersGoFirst", "s", surface("u", "<init_from>other</init_from>") + sampler("v", "u"),
     surface("u", initFrom) + sampler("s", "u"), "other"},
    {"LaterImageOfASurface", "s",
     surface("u", "<init_from>none</init_from><init_from>other</init_from>") + sampler("s", "u"), "", "other"},
    {"PlanarSurface", "s", surface("u", "<init_planar><all ref=\"image\"/></init_planar>") + sampler("s", "u"), "",
     "image"},
    {"OtherKindOfSampler", "s",
     surface("u", initFrom) + "<newparam sid=\"s\"><samplerRECT><source>u</source></samplerRECT></newparam>", "",
     "image"},
    {"SurfaceNamesTheImagesName", "s", surface("u", "<init_from>picture</init_from>") + sampler("s", "u"), "",
     "image"});

TEST(ResolveTexturesTest, WhatASamplerSaysIsKept)
{
    const Prepared prepared(test::shownEffect(
        "<effect id=\"fx\">" + surface("u", initFrom + "<format>A8R8G8B8</format>") +
            sampler("s", "u", "<wrap_s>MIRROR</wrap_s>") + "<profile_COMMON><technique sid=\"common\">" +
            textured("s") + "</technique></profile_COMMON></effect>",
        images));
    EXPECT_EQ("MIRROR", prepared.text("//profile_COMMON/newparam[@sid='s']/sampler2D/wrap_s"));
    EXPECT_EQ("A8R8G8B8", prepared.text("//profile_COMMON/newparam[@sid='u']/surface/format"));
    EXPECT_EQ("s", std::string(prepared.node("//diffuse/texture").attribute("texture").value()));
}

TEST(ResolveTexturesTest, ChannelsWithOneImageShareTheSampler)
{
    const Prepared prepared(shownShader("<phong><emission><texture texture=\"image\" texcoord=\"UV\"/></emission>"
                                        "<diffuse><texture texture=\"image\" texcoord=\"UV\"/></diffuse></phong>",
                                        "", images));
    EXPECT_EQ(2U, prepared.count("//profile_COMMON/newparam"));
    EXPECT_EQ(std::string(prepared.node("//emission/texture").attribute("texture").value()),
              prepared.node("//diffuse/texture").attribute("texture").value());
}

TEST(ResolveTexturesTest, TextureThatLeadsNowhereIsAColor)
{
    const Prepared prepared(shownShader("<phong><emission><texture texture=\"none\" texcoord=\"UV\"/></emission>"
                                        "<diffuse><texture texture=\"empty\" texcoord=\"UV\"/></diffuse></phong>",
                                        "", images));
    EXPECT_EQ("0 0 0 1", prepared.text("//emission/color"));
    EXPECT_EQ("1 1 1 1", prepared.text("//diffuse/color"));
    EXPECT_EQ(0U, prepared.count("//texture"));
    EXPECT_EQ("texture", prepared.report.first(libPrepare::Outcome::lost)->kind);
    test::expectStable(prepared);
}

TEST(ResolveTexturesTest, SamplersThatNameEachOtherLeadNowhere)
{
    const Prepared prepared(shownShader(textured("a"), sampler("a", "b") + sampler("b", "a"), images));
    EXPECT_EQ("1 1 1 1", prepared.text("//diffuse/color"));
}

} // namespace
