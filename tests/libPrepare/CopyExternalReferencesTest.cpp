#include "Prepared.h"
#include "TemporaryFolder.h"

#include <libPrepare/document/Document.h>
#include <libPrepare/passes/Passes.h>

#include <gtest/gtest.h>

namespace {

using test::colladaDocument;
using test::TemporaryFolder;

// The pass alone, over a document in a folder.
struct Copied {
    Copied(const TemporaryFolder& folder, const std::string& body, const libPrepare::Options& options = {})
    {
        const std::filesystem::path file = folder.write("scene.dae", colladaDocument(body));
        EXPECT_TRUE(xml.load_file(file.c_str(), pugi::parse_full | pugi::parse_ws_pcdata));
        libPrepare::Document document(xml, file, options, report);
        libPrepare::copyExternalReferences(document);
    }
    std::string value(const char* path) const { return xml.select_node(path).attribute().value(); }
    std::string text(const char* path) const { return xml.select_node(path).node().text().get(); }
    std::size_t count(const char* path) const { return xml.select_nodes(path).size(); }

    pugi::xml_document xml;
    libPrepare::Report report;
};

TEST(CopyExternalReferencesTest, ElementsComeInWithWhatTheyNeedAndFreshIds)
{
    const TemporaryFolder folder;
    folder.write(
        "sub/parts.dae",
        colladaDocument("<library_images><image id='i'><init_from>a.png</init_from></image></library_images>"
                        "<library_effects><effect id='e'><profile_COMMON><newparam sid='s'><surface>"
                        "<init_from>i</init_from></surface></newparam></profile_COMMON></effect></library_effects>"
                        "<library_materials><material id='m'><instance_effect url='#e'/></material>"
                        "<material id='unused'/></library_materials>"));
    const Copied result(folder, "<library_materials><material id='m'/></library_materials>"
                                "<instance_material target='sub/parts.dae#m'/><instance_material target='#m'/>"
                                "<instance_material target='./sub/parts.dae#m'/><scene/>");
    EXPECT_EQ("#m-2", result.value("//instance_material[1]/@target"));
    EXPECT_EQ("#m", result.value("//instance_material[2]/@target"));
    EXPECT_EQ("#m-2", result.value("//instance_material[3]/@target"));
    EXPECT_EQ(2U, result.count("//material"));
    EXPECT_EQ("#e", result.value("//material[@id='m-2']/instance_effect/@url"));
    EXPECT_EQ("i", result.text("//effect[@id='e']//surface/init_from"));
    EXPECT_EQ("sub/a.png", result.text("//image[@id='i']/init_from"));
    EXPECT_EQ(1U, result.count("/COLLADA/library_materials[2]/following-sibling::scene"));
    EXPECT_EQ("external-reference", result.report.findings.at(0).kind);
}

TEST(CopyExternalReferencesTest, CyclesEnd)
{
    const TemporaryFolder folder;
    folder.write("a.dae", colladaDocument("<library_nodes><node id='a'><instance_node url='b.dae#b'/>"
                                          "<instance_node url='scene.dae#own'/></node></library_nodes>"));
    folder.write("b.dae",
                 colladaDocument("<library_nodes><node id='b'><instance_node url='a.dae#a'/></node></library_nodes>"));
    const Copied result(folder, "<node id='own'><instance_node url='a.dae#a'/></node>");
    EXPECT_EQ("#a", result.value("//node[@id='own']/instance_node/@url"));
    EXPECT_EQ("#b", result.value("//node[@id='a']/instance_node[1]/@url"));
    EXPECT_EQ("#own", result.value("//node[@id='a']/instance_node[2]/@url"));
    EXPECT_EQ("#a", result.value("//node[@id='b']/instance_node/@url"));
    EXPECT_EQ(3U, result.count("//node"));
}

TEST(CopyExternalReferencesTest, NothingComesFromOutsideOrFromTheNetwork)
{
    const TemporaryFolder outside;
    outside.write("other.dae", colladaDocument("<library_nodes><node id='n'/></library_nodes>"));
    const TemporaryFolder folder;
    std::filesystem::create_symlink(outside.path() / "other.dae", folder.path() / "link.dae");
    folder.write("bad.dae", "<COLLADA>");
    const std::string up = "../" + outside.path().filename().string() + "/other.dae#n";
    for (const std::string& url : {up, (outside.path() / "other.dae#n").string(), std::string("link.dae#n"),
                                   std::string("http://localhost/other.dae#n"), std::string("bad.dae#n"),
                                   std::string("none.dae#n"), std::string(".#n"), std::string("..#n")}) {
        const Copied result(folder, "<instance_node url='" + url + "'/>");
        EXPECT_EQ(url, result.value("//instance_node/@url"));
        EXPECT_EQ(0U, result.count("//node")) << url;
        ASSERT_EQ(1U, result.report.findings.size()) << url;
        EXPECT_EQ(libPrepare::Outcome::lost, result.report.findings[0].outcome);
    }
}

TEST(CopyExternalReferencesTest, SizeIsBounded)
{
    const TemporaryFolder folder;
    folder.write("big.dae", colladaDocument("<library_nodes><node id='n'>" + std::string(10'000, ' ') +
                                            "</node></library_nodes>"));
    libPrepare::Options options;
    options.maxSize = 15'000; // once to read, once more to copy is too much
    const Copied result(folder, "<instance_node url='big.dae#n'/>", options);
    EXPECT_EQ("big.dae#n", result.value("//instance_node/@url"));
    EXPECT_EQ(1U, result.report.findings.size());
    EXPECT_EQ(libPrepare::Outcome::lost, result.report.findings.at(0).outcome);
}

} // namespace
