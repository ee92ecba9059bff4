#include "TemporaryFolder.h"

#include <libPrepare/Prepare.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;

// A folder with a document in "in", images beside it and in "in/sub", and an empty folder "out".
class FindImagesTest : public testing::Test {
protected:
    FindImagesTest() { fs::create_directories(inFolder("out")); }

    fs::path inFolder(const std::string& name) const { return m_folder.path() / name; }
    void image(const std::string& name) const { m_folder.write("in/" + name, "picture"); }

    // The reference of an image after the document was written to a file.
    std::string prepared(const std::string& reference, const std::string& out) const
    {
        const fs::path document = m_folder.write(
            "in/a.dae",
            R"(<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1"><asset/><library_images>)"
            "<image id=\"i\"><init_from>" +
                reference + "</init_from></image></library_images></COLLADA>");
        EXPECT_TRUE(libPrepare::prepare(document, inFolder(out)).done);
        const std::string whole = test::contentOf(inFolder(out));
        const std::size_t start = whole.find("<init_from>") + 11;
        return whole.substr(start, whole.find("</init_from>") - start);
    }

private:
    test::TemporaryFolder m_folder;
};

TEST_F(FindImagesTest, ReferencesStayWhereTheDocumentStaysInItsFolder)
{
    image("sub/my file.png");
    EXPECT_EQ("sub/my file.png", prepared("sub/my file.png", "in/b.dae"));
    EXPECT_EQ("./sub/my%20file.png", prepared("./sub/my%20file.png", "in/b.dae"));
}

TEST_F(FindImagesTest, ReferencesLeadFromTheFolderOfTheResult)
{
    image("sub/my file.png");
    image("b.png");
    EXPECT_EQ("../in/sub/my%20file.png", prepared("sub/my file.png", "out/b.dae"));
    EXPECT_EQ("../in/sub/my%20file.png", prepared("./sub/my%20file.png", "out/b.dae"));
    EXPECT_EQ("../in/b.png", prepared("b.png", "out/b.dae"));
}

TEST_F(FindImagesTest, AbsoluteFilesAreFoundFromAnywhere)
{
    image("b.png");
    const std::string path = "file://" + inFolder("in/b.png").generic_string();
    EXPECT_EQ(path, prepared(path, "out/b.dae"));
}

TEST_F(FindImagesTest, BackslashesAreSlashes)
{
    image("sub/b.png");
    EXPECT_EQ("sub/b.png", prepared(".\\sub\\b.png", "in/b.dae"));
}

TEST_F(FindImagesTest, PathThatLeadsNowhereMeansTheImageBesideTheDocument)
{
    image("b c.png");
    EXPECT_EQ("b%20c.png", prepared("file://G:\\models\\b c.png", "in/b.dae"));
    EXPECT_EQ("../in/b%20c.png", prepared("/models/x/b%20c.png", "out/b.dae"));
}

TEST_F(FindImagesTest, NamesBeyondAsciiAndWithSignsAreEncoded)
{
    image("\xC3\xA9#1 100%.png");
    EXPECT_EQ("%C3%A9%231%20100%25.png", prepared("\xC3\xA9#1 100%.png", "in/b.dae"));
    EXPECT_EQ("%C3%A9%231%20100%25.png", prepared("%C3%A9%231%20100%25.png", "in/b.dae"));
}

TEST_F(FindImagesTest, MissingImagesKeepTheirReferenceIfItIsReadable)
{
    EXPECT_EQ("file:///C:/none.png", prepared("file:///C:/none.png", "out/b.dae"));
    EXPECT_EQ("C:/none.png", prepared("C:\\none.png", "out/b.dae"));
    EXPECT_EQ("none.png", prepared(" none.png\n", "out/b.dae"));
    EXPECT_EQ("%C3%A9.png", prepared("\xC3\xA9.png", "out/b.dae"));
}

TEST_F(FindImagesTest, ReferencesToTheNetworkStay)
{
    image("b.png");
    EXPECT_EQ("http://example.org/b.png", prepared("http://example.org/b.png", "out/b.dae"));
}

TEST_F(FindImagesTest, SecondRunChangesNothing)
{
    image("sub/b.png");
    const std::string once = prepared("sub\\b.png", "out/b.dae");
    const libPrepare::Report report = libPrepare::prepare(inFolder("out/b.dae"), inFolder("out/c.dae"));
    EXPECT_TRUE(report.done);
    EXPECT_FALSE(report.changed);
    EXPECT_EQ("../in/sub/b.png", once);
}

} // namespace
