#include "TemporaryFolder.h"

#include <libPrepare/document/OutputFile.h>

#include <gtest/gtest.h>

namespace {

using libPrepare::OutputFile;

// The buffer holds 1 MiB: pieces that fit, that just do or do not, and that are written past it.
TEST(OutputFileTest, PiecesOfAnySizeMakeTheWholeFile)
{
    const test::TemporaryFolder folder;
    const std::string path = (folder.path() / "out").string();
    std::string expected;
    OutputFile file;
    ASSERT_FALSE(file.open(path));
    char letter = 'a';
    for (const int size : {0, 1, 1'048'574, 1, 1'048'575, 0, 1'048'576, 1'048'577, 3, 2'097'152, 1'048'570, 6, 0, 5}) {
        const std::string piece(static_cast<std::size_t>(size), letter++);
        file.write(piece);
        expected += piece;
    }
    ASSERT_FALSE(file.commit());
    EXPECT_TRUE(test::contentOf(path) == expected);
}

TEST(OutputFileTest, NothingMakesAnEmptyFile)
{
    const test::TemporaryFolder folder;
    const std::string path = (folder.path() / "out").string();
    OutputFile file;
    ASSERT_FALSE(file.open(path));
    file.write({});
    ASSERT_FALSE(file.commit());
    EXPECT_TRUE(std::filesystem::exists(path));
    EXPECT_EQ("", test::contentOf(path));
}

TEST(OutputFileTest, NothingIsLeftWithoutACommit)
{
    const test::TemporaryFolder folder;
    {
        OutputFile file;
        ASSERT_FALSE(file.open(folder.path() / "out"));
        file.write("text");
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

} // namespace
