#include "support/VideoTest.h"

#include <libVideo/SceneGraph/Node.h>
#include <libVideo/SceneGraph/Scene.h>

#include <filesystem>
#include <fstream>

namespace {

using namespace libVideo;
using namespace testSupport;

PRIVATE_MEMBER(resolvedDae, DAE Scene::*, &Scene::m_dae)

// A document that shows the visual scene that a reference names.
std::string shows(const std::string& reference);
// A document of a visual scene "there" with one node of that name.
std::string stage(const std::string& node = "n");

/// A folder "home" with the document to load, and a place beside it.
class ReferenceResolverTest : public testing::Test {
protected:
    std::filesystem::path outside() const { return m_start.folder(); }
    std::filesystem::path home() const { return m_start.folder() / "home"; }

    static void write(const std::filesystem::path& file, const std::string& text)
    {
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << text;
    }

    // Loads a document that shows what a reference names. @return the id of the first node, "" if it does not load
    std::string shown(const std::string& reference) { return loaded(shows(reference)); }

    std::string loaded(const std::string& text)
    {
        write(home() / "main.dae", text);
        return loadedFrom(home() / "main.dae");
    }

    std::string loadedFrom(const std::filesystem::path& file)
    {
        const LogCapture log;
        Scene scene;
        const bool isLoaded = scene.createFromCollada(file.c_str());
        m_lines = log.text();
        m_documents = resolvedDae(scene).getDocCount();
        return isLoaded ? scene.visualScene().root().children()[0]->id().data() : std::string();
    }

    std::string m_lines;
    int m_documents = 0;

private:
    TemporaryFile m_start{"", "empty"};
};

TEST_F(ReferenceResolverTest, OpensADocumentBeside)
{
    write(home() / "other.dae", stage());
    EXPECT_EQ("n", shown("other.dae#there"));
    EXPECT_EQ("", m_lines);
    EXPECT_EQ(2, m_documents);
}

std::string whole(const std::string& body)
{
    return "<COLLADA xmlns='http://www.collada.org/2005/11/COLLADASchema' version='1.4.1'>" + body + "</COLLADA>";
}

std::string shows(const std::string& reference)
{
    return whole("<scene><instance_visual_scene url='" + reference + "'/></scene>");
}

std::string stage(const std::string& node)
{
    return whole("<library_visual_scenes><visual_scene id='there'><node id='" + node +
                 "'/></visual_scene></library_visual_scenes>");
}

TEST_F(ReferenceResolverTest, OpensADocumentBelow)
{
    write(home() / "a" / "b" / "other.dae", stage());
    EXPECT_EQ("n", shown("a/b/other.dae#there"));
    EXPECT_EQ("n", shown("./a/../a/b/other.dae#there"));
    EXPECT_EQ("n", shown("../home/a/b/other.dae#there"));
}

TEST_F(ReferenceResolverTest, NamesKeepTheirCharacters)
{
    write(home() / "o th%er.DAE", stage());
    EXPECT_EQ("n", shown("o%20th%25er.DAE#there"));
    EXPECT_EQ("n", shown("o th%25er.DAE#there"));
    EXPECT_EQ("n", shown("%6F%20th%25er.D%41E#there"));
}

TEST_F(ReferenceResolverTest, FollowsReferencesOfReferencedDocumentsFromTheirOwnPlace)
{
    // A node of the second document instances no geometry of the first, but a light of the third.
    write(home() / "a" / "second.dae",
          whole("<library_visual_scenes><visual_scene id='there'><node id='n'><instance_light url='b/third.dae#lamp'/>"
                "</node></visual_scene></library_visual_scenes>"));
    write(home() / "a" / "b" / "third.dae",
          whole("<library_lights><light id='lamp'><technique_common><point>"
                "<color>1 1 1</color></point></technique_common></light></library_lights>"));
    EXPECT_EQ("n", shown("a/second.dae#there"));
    EXPECT_EQ(3, m_documents);
}

TEST_F(ReferenceResolverTest, NeverLeavesTheFolder)
{
    write(outside() / "other.dae", stage());
    write(outside() / "home2" / "other.dae", stage());
    for (const std::string& reference : std::vector<std::string>{
             "../other.dae#there", "../home2/other.dae#there", "%2E%2E/other.dae#there", "a/../../other.dae#there",
             "..%2Fother.dae#there", (outside() / "other.dae").string() + "#there",
             "file:" + (outside() / "other.dae").string() + "#there",
             "file://" + (outside() / "other.dae").string() + "#there"}) {
        EXPECT_EQ("", shown(reference)) << reference;
        EXPECT_EQ(1, m_documents) << reference;
        EXPECT_NE(std::string::npos, m_lines.find("does not point to a collada element")) << m_lines;
    }
}

TEST_F(ReferenceResolverTest, AbsoluteReferenceIntoTheFolderOpens)
{
    write(home() / "other.dae", stage());
    EXPECT_EQ("n", shown((home() / "other.dae").string() + "#there"));
    EXPECT_EQ("n", shown("file:" + (home() / "other.dae").string() + "#there"));
}

TEST_F(ReferenceResolverTest, LinkOutOfTheFolderIsNotFollowed)
{
    write(outside() / "other.dae", stage());
    std::filesystem::create_directories(home());
    std::filesystem::create_symlink(outside() / "other.dae", home() / "link.dae");
    std::filesystem::create_directory_symlink(outside(), home() / "up");
    EXPECT_EQ("", shown("link.dae#there"));
    EXPECT_EQ("", shown("up/other.dae#there"));
}

TEST_F(ReferenceResolverTest, FolderReachedByALinkIsTheFolder)
{
    write(home() / "other.dae", stage());
    write(home() / "main.dae", shows("other.dae#there"));
    std::filesystem::create_directory_symlink(home(), outside() / "way");
    EXPECT_EQ("n", loadedFrom(outside() / "way" / "main.dae"));
}

TEST_F(ReferenceResolverTest, OpensNothingButCollada)
{
    for (const char* const name : {"other.xml", "other", "other.dae.xml", "other.zae", "other.raw", "other.daex"}) {
        write(home() / name, stage());
        EXPECT_EQ("", shown(std::string(name) + "#there")) << name;
        EXPECT_EQ(1, m_documents);
    }
    std::filesystem::create_symlink(home() / "other.xml", home() / "link.dae");
    EXPECT_EQ("", shown("link.dae#there")) << "by its own name neither";
}

TEST_F(ReferenceResolverTest, OpensNoAddress)
{
    write(home() / "other.dae", stage());
    for (const char* const reference :
         {"http://127.0.0.1:9/other.dae#there", "ftp://127.0.0.1:9/other.dae#there", "file://host/other.dae#there",
          "other.dae?query#there", "C:/other.dae#there", "zip:other.dae#there", "other.dae%00.dae#there"}) {
        EXPECT_EQ("", shown(reference)) << reference;
        EXPECT_EQ(1, m_documents) << reference;
    }
}

TEST_F(ReferenceResolverTest, ReferencedDocumentPassesTheSamePreflight)
{
    write(home() / "other.dae", whole("<library_visual_scenes><visual_scene id='there'><node id='n'><translate>"
                                      "<translate/></translate></node></visual_scene></library_visual_scenes>"));
    EXPECT_EQ("", shown("other.dae#there"));
    write(home() / "cut.dae", whole("<unknown><x>").substr(0, 90));
    EXPECT_EQ("", shown("cut.dae#there"));
    std::filesystem::create_directory(home() / "folder.dae");
    EXPECT_EQ("", shown("folder.dae#there"));
    EXPECT_EQ("", shown("missing.dae#there"));
    EXPECT_EQ(1, m_documents);
}

TEST_F(ReferenceResolverTest, FileOpensOnceUnderManyNames)
{
    write(home() / "a" / "other.dae",
          whole("<library_lights><light id='lamp'><technique_common><point>"
                "<color>1 1 1</color></point></technique_common></light></library_lights>"));
    std::filesystem::create_symlink(home() / "a" / "other.dae", home() / "link.dae");
    std::string instances;
    for (const char* const name : {"a/other.dae", "link.dae", "%61/other.dae", "a/%6Fther.dae", "./a/other.dae"}) {
        instances += "<instance_light url='" + std::string(name) + "#lamp'/>";
    }
    EXPECT_EQ("n", loaded(whole("<library_visual_scenes><visual_scene id='s'><node id='n'>" + instances +
                                "</node></visual_scene></library_visual_scenes>"
                                "<scene><instance_visual_scene url='#s'/></scene>")));
    EXPECT_EQ("", m_lines) << "all of them lead to the lamp";
    EXPECT_EQ(2, m_documents);
}

TEST_F(ReferenceResolverTest, DocumentFindsItselfByItsName)
{
    EXPECT_EQ("n",
              loaded(whole("<library_visual_scenes><visual_scene id='there'><node id='n'/></visual_scene>"
                           "</library_visual_scenes><scene><instance_visual_scene url='main.dae#there'/></scene>")));
    EXPECT_EQ("n",
              loaded(whole("<library_visual_scenes><visual_scene id='there'><node id='n'/></visual_scene>"
                           "</library_visual_scenes><scene><instance_visual_scene url='m%61in.dae#there'/></scene>")));
    EXPECT_EQ(1, m_documents);
}

TEST_F(ReferenceResolverTest, ReferenceWithoutFragmentLeadsNowhere)
{
    write(home() / "other.dae", whole("<library_visual_scenes><visual_scene id=''><node id='n'/></visual_scene>"
                                      "</library_visual_scenes>"));
    EXPECT_EQ("", shown("other.dae"));
    EXPECT_EQ("", shown("other.dae#"));
    EXPECT_EQ(1, m_documents);
    EXPECT_EQ("", loaded(whole("<library_visual_scenes><visual_scene id=''><node id='n'/></visual_scene>"
                               "</library_visual_scenes><scene><instance_visual_scene url=''/></scene>")))
        << "nor to an element with an empty id";
}

TEST_F(ReferenceResolverTest, HashAloneLeadsToTheElementOfAnEmptyId)
{
    EXPECT_EQ("n", loaded(whole("<library_visual_scenes><visual_scene id=''><node id='n'/></visual_scene>"
                                "</library_visual_scenes><scene><instance_visual_scene url='#'/></scene>")));
    EXPECT_EQ("", loaded(whole("<library_visual_scenes><visual_scene><node id='n'/></visual_scene>"
                               "</library_visual_scenes><scene><instance_visual_scene url='#'/></scene>")))
        << "no id is no empty id";
}

TEST_F(ReferenceResolverTest, ResolversOfBeforeAreBackAfterALoad)
{
    write(home() / "main.dae", shows("other.dae#there"));
    Scene scene;
    DAE& dae = resolvedDae(scene);
    const auto names = [&] {
        std::vector<daeURIResolver*> all;
        for (std::size_t i = 0; i < dae.getURIResolvers().list().getCount(); ++i) {
            all.push_back(dae.getURIResolvers().list()[i]);
        }
        return all;
    };
    const std::vector<daeURIResolver*> before = names();
    ASSERT_FALSE(before.empty());
    const LogCapture log;
    EXPECT_FALSE(scene.createFromCollada((home() / "main.dae").c_str()));
    EXPECT_EQ(before, names());
    EXPECT_FALSE(scene.createFromCollada("/missing"));
    EXPECT_EQ(before, names());
}

} // namespace
