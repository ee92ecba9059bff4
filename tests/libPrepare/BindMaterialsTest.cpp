#include "Expectations.h"
#include "LookDocuments.h"

#include <gtest/gtest.h>

namespace {

using test::bindMaterial;
using test::geometryNode;
using test::material;
using test::Prepared;
using test::triangleGeometry;

const std::string black = "<phong><emission><color>0 0 0 1</color></emission><ambient><color>0 0 0 1</color></ambient>"
                          "<diffuse><color>0 0 0 1</color></diffuse><specular><color>0 0 0 1</color></specular>"
                          "<reflective><color>0 0 0 1</color></reflective><transparency><float>1</float></transparency>"
                          "</phong>";

// Materials "red" and "blue", and these geometries and nodes.
std::string document(const std::string& geometries, const std::string& nodes)
{
    return "<library_effects>" + test::effect("fx", black) + "</library_effects><library_materials>" +
           material("red", "fx") + material("blue", "fx") + "</library_materials><library_geometries>" + geometries +
           "</library_geometries>" + test::shownNodes(nodes);
}

TEST(BindMaterialsTest, SymbolThatIsAMaterialsIdIsBound)
{
    const Prepared prepared(document(triangleGeometry("a", "red"), geometryNode("a", "")));
    EXPECT_EQ("#red",
              std::string(
                  prepared.node("//node[@id='a-node']//instance_material[@symbol='red']").attribute("target").value()));
    EXPECT_EQ(1U, prepared.findings("material"));
    test::expectStable(prepared);
}

TEST(BindMaterialsTest, WhatIsBoundStaysAsItIs)
{
    const Prepared prepared(document(triangleGeometry("a", "s"), geometryNode("a", bindMaterial("s", "blue"))));
    EXPECT_EQ(1U, prepared.count("//instance_material"));
    EXPECT_EQ("#blue", std::string(prepared.node("//instance_material").attribute("target").value()));
    EXPECT_EQ(0U, prepared.findings("material") + prepared.findings("symbol"));
}

TEST(BindMaterialsTest, BoundByIdGetsAnotherSymbolWhereTheSymbolMeansAnotherMaterial)
{
    const Prepared prepared(document(triangleGeometry("a", "red") + triangleGeometry("b", "red"),
                                     geometryNode("a", bindMaterial("red", "blue")) + geometryNode("b", "")));
    EXPECT_EQ("#blue", std::string(prepared.node("//instance_material[@symbol='red']").attribute("target").value()));
    const std::string symbol = prepared.node("//geometry[@id='b']//triangles").attribute("material").value();
    EXPECT_NE("red", symbol);
    const pugi::xml_node binding = prepared.node("//node[@id='b-node']//instance_material");
    EXPECT_EQ(symbol, binding.attribute("symbol").value());
    EXPECT_EQ("#red", std::string(binding.attribute("target").value()));
    test::expectStable(prepared);
}

TEST(BindMaterialsTest, SymbolsThatDifferAfterABlankStayDifferent)
{
    const Prepared prepared(document(triangleGeometry("a", "My Red") + triangleGeometry("b", "My Blue"),
                                     geometryNode("a", bindMaterial("My Red", "red")) +
                                         geometryNode("b", bindMaterial("My Blue", "blue"))));
    EXPECT_EQ("My_Red", std::string(prepared.node("//geometry[@id='a']//triangles").attribute("material").value()));
    EXPECT_EQ("#red", std::string(prepared.node("//instance_material[@symbol='My_Red']").attribute("target").value()));
    EXPECT_EQ("#blue",
              std::string(prepared.node("//instance_material[@symbol='My_Blue']").attribute("target").value()));
    test::expectStable(prepared);
}

TEST(BindMaterialsTest, TargetThatLeadsNowhereIsReportedOnce)
{
    const Prepared prepared(document(triangleGeometry("a", "s"), geometryNode("a", bindMaterial("s", "green"))));
    ASSERT_EQ(1U, prepared.findings("material"));
    EXPECT_EQ(libPrepare::Outcome::lost, prepared.report.first(libPrepare::Outcome::lost)->outcome);
    EXPECT_EQ("material", prepared.report.first(libPrepare::Outcome::lost)->kind);
    test::expectStable(prepared);
}

TEST(BindMaterialsTest, TargetThatLeadsNowhereIsTheMaterialOfTheSymbolsName)
{
    const Prepared prepared(document(triangleGeometry("a", "red"), geometryNode("a", bindMaterial("red", "green"))));
    EXPECT_EQ("#red", std::string(prepared.node("//instance_material").attribute("target").value()));
    test::expectStable(prepared);
}

TEST(BindMaterialsTest, SymbolThatIsBoundNowhereIsReportedOnceForAllFaces)
{
    const Prepared prepared(document(triangleGeometry("a", "s") + triangleGeometry("b", "s"),
                                     geometryNode("a", "") + geometryNode("b", "")));
    EXPECT_EQ(1U, prepared.findings("material"));
    EXPECT_EQ(0U, prepared.count("//instance_material"));
}

TEST(BindMaterialsTest, FacesWithoutASymbolNeedNone)
{
    const Prepared prepared(document(triangleGeometry("a", ""), geometryNode("a", "")));
    EXPECT_EQ(0U, prepared.findings("material"));
}

} // namespace
