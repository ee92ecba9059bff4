#include "Prepared.h"

#include <gtest/gtest.h>

namespace {

using test::Prepared;

const std::string geometry =
    "<library_geometries><geometry id='g' name='box'><mesh><source id='p'><float_array id='pa' count='9'>0 0 0 1 0 0 0 "
    "1 0"
    "</float_array><technique_common><accessor source='#pa' count='3' stride='3'><param name='X' type='float'/>"
    "<param name='Y' type='float'/><param name='Z' type='float'/></accessor></technique_common></source>"
    "<vertices id='v'><input semantic='POSITION' source='#p'/></vertices><triangles count='1' material='m'>"
    "<input semantic='VERTEX' source='#v' offset='0'/><p>0 1 2</p></triangles></mesh></geometry></library_geometries>"
    "<library_effects><effect id='e'><profile_COMMON><technique sid='c'><phong/></technique></profile_COMMON></effect>"
    "</library_effects><library_materials><material id='red'><instance_effect url='#e'/></material>"
    "<material id='blue'><instance_effect url='#e'/></material></library_materials>";

std::string instance(const std::string& symbol, const std::string& material)
{
    return "<instance_geometry url='#g'>" +
           (symbol.empty() ? std::string()
                           : "<bind_material><technique_common><instance_material symbol='" + symbol + "' target='#" +
                                 material + "'/></technique_common></bind_material>") +
           "</instance_geometry>";
}

std::string document(const std::string& first, const std::string& second, const std::string& before = geometry)
{
    const std::string matrix = "<matrix>1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix>";
    return before + "<library_visual_scenes><visual_scene id='vs'><node id='a'>" + matrix + first +
           "</node><node id='b'>" + matrix + second +
           "</node></visual_scene></library_visual_scenes><scene><instance_visual_scene url='#vs'/></scene>";
}

std::string attribute(const Prepared& result, const char* path, const char* name)
{
    return result.node(path).attribute(name).value();
}

TEST(SeparateGeometriesTest, EveryInstanceGetsAGeometryWithTheSameSources)
{
    const Prepared result(document(instance("m", "red"), instance("m", "red")));
    ASSERT_EQ(2U, result.count("//geometry"));
    EXPECT_EQ(1U, result.count("//source"));
    EXPECT_EQ("#g", attribute(result, "//node[@id='a']/instance_geometry", "url"));
    const std::string id = attribute(result, "//geometry[2]", "id");
    EXPECT_EQ('#' + id, attribute(result, "//node[@id='b']/instance_geometry", "url"));
    EXPECT_EQ("box", attribute(result, "//geometry[2]", "name"));
    const std::string vertices = attribute(result, "//geometry[2]//vertices", "id");
    EXPECT_NE("v", vertices);
    EXPECT_EQ('#' + vertices, attribute(result, "//geometry[2]//triangles/input", "source"));
    EXPECT_EQ("#p", attribute(result, "//geometry[2]//vertices/input", "source"));
    EXPECT_EQ("0 1 2", result.text("//geometry[2]//p"));
    EXPECT_EQ("m", attribute(result, "//geometry[2]//triangles", "material"));
    EXPECT_EQ(1U, result.findings("instance_geometry"));
    EXPECT_EQ(0U, result.findings("symbol"));
    const Prepared again(result.xml());
    EXPECT_EQ(result.xml(), again.xml());
    EXPECT_FALSE(again.report.changed);
}

TEST(SeparateGeometriesTest, SymbolOfTwoMaterialsIsTwoSymbols)
{
    const Prepared result(document(instance("m", "red"), instance("m", "blue")));
    EXPECT_EQ("m", attribute(result, "//node[@id='a']//instance_material", "symbol"));
    EXPECT_EQ("m", attribute(result, "//geometry[1]//triangles", "material"));
    const std::string other = attribute(result, "//node[@id='b']//instance_material", "symbol");
    EXPECT_NE("m", other);
    EXPECT_EQ(other, attribute(result, "//geometry[2]//triangles", "material"));
    EXPECT_EQ("#blue", attribute(result, "//node[@id='b']//instance_material", "target"));
    EXPECT_EQ(1U, result.findings("symbol"));
    const Prepared again(result.xml());
    EXPECT_EQ(result.xml(), again.xml());
}

TEST(SeparateGeometriesTest, MaterialThatIsNamedWithoutAHashIsThatMaterial)
{
    std::string named = instance("m", "red");
    named.erase(named.find('#', named.find("target")), 1);
    const Prepared result(document(instance("m", "red"), named));
    EXPECT_EQ(2U, result.count("//instance_material[@symbol='m' and @target='#red']"));
    EXPECT_EQ(0U, result.findings("symbol"));
}

TEST(SeparateGeometriesTest, SymbolWithoutItsMaterialIsNoOtherSymbol)
{
    std::string named = instance("m", "red");
    named.erase(named.find('#', named.find("target")), 1);
    const Prepared result(document(instance("m", "blue"), instance("m", "none") + named));
    const std::string red = attribute(result, "//instance_material[@target='#red']", "symbol");
    EXPECT_NE("m", red);
    EXPECT_NE(attribute(result, "//instance_material[@target='#none']", "symbol"), red);
    const Prepared again(result.xml());
    EXPECT_EQ(result.xml(), again.xml());
    EXPECT_FALSE(again.report.changed);
}

TEST(SeparateGeometriesTest, SymbolThatIsBoundElsewhereAloneIsNotTakenOver)
{
    const Prepared result(document(instance("m", "red"), instance("", "")));
    EXPECT_EQ("m", attribute(result, "//geometry[1]//triangles", "material"));
    EXPECT_NE("m", attribute(result, "//geometry[2]//triangles", "material"));
}

TEST(SeparateGeometriesTest, SymbolWithBlanksBecomesAWord)
{
    std::string odd = geometry;
    odd.replace(odd.find("material='m'"), 12, "material='my red'");
    const Prepared result(document(instance("my red", "red"), "", odd));
    EXPECT_EQ("my_red", attribute(result, "//instance_material", "symbol"));
    EXPECT_EQ("my_red", attribute(result, "//triangles", "material"));
}

TEST(SeparateGeometriesTest, CopiesAreBoundedByTheSizeOfTheResult)
{
    libPrepare::Options options;
    options.maxSize = 100;
    const Prepared result(document(instance("m", "red"), instance("m", "red")), options);
    EXPECT_EQ(1U, result.count("//geometry"));
    EXPECT_EQ(1U, result.count("//instance_geometry"));
    EXPECT_EQ(1U, result.findings("size"));
}

TEST(DropUnreadInstancesTest, WhatShowsNothingIsReportedAndGoes)
{
    const Prepared result(
        document("<instance_geometry url='#none'/>", "<instance_geometry url='#s'/>" + instance("m", "red"),
                 geometry + "<library_geometries><geometry id='s'><spline/></geometry></library_geometries>"));
    EXPECT_EQ(1U, result.count("//instance_geometry"));
    EXPECT_EQ("#g", attribute(result, "//instance_geometry", "url"));
    EXPECT_EQ(2U, result.findings("instance_geometry"));
    EXPECT_NE(nullptr, result.report.first(libPrepare::Outcome::lost));
}

TEST(DropUnreadInstancesTest, LinesAreReportedAndStay)
{
    std::string lines = geometry;
    lines.replace(lines.find("</triangles>"), 12,
                  "</triangles><lines count='1'><input semantic='VERTEX' source='#v' offset='0'/><p>0 1</p></lines>");
    const Prepared result(document(instance("m", "red"), "", lines));
    EXPECT_EQ(1U, result.findings("lines"));
    EXPECT_EQ(1U, result.count("//lines"));
}

TEST(OpenConvexMeshesTest, ConvexMeshWithFacesIsAMesh)
{
    std::string convex = geometry;
    convex.replace(convex.find("<mesh>"), 6, "<convex_mesh>");
    convex.replace(convex.find("</mesh>"), 7, "</convex_mesh>");
    const Prepared result(document(instance("m", "red"), "", convex));
    EXPECT_EQ("0 1 2", result.text("//mesh/triangles/p"));
    EXPECT_EQ(1U, result.findings("convex_mesh"));
}

} // namespace
