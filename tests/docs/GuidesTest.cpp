#include "GuideBlock.h"

#include "support/Files.h"
#include "support/Process.h"
#include "support/Words.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

// What the guides show as code stands in programs that are compiled, what they show as output is what these print, and
// what they link to is there. A block of C++ without a comment that says where it comes from fails.

namespace {

namespace fs = std::filesystem;
using namespace docsTests;
using testSupport::contentOf;
using testSupport::linesOf;

const fs::path sourceFolder = SOURCE_FOLDER;

std::vector<std::string> wordsOf(const std::string& text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), std::istream_iterator<std::string>()};
}

std::string outputOf(std::vector<std::string> command)
{
    const fs::path name = command.at(0);
    const fs::path example = fs::path(EXAMPLES_FOLDER) / name;
    command[0] = (fs::exists(example) ? example : fs::path(SNIPPETS_FOLDER) / name).string();
    const fs::path before = fs::current_path();
    fs::current_path(sourceFolder);
    const testSupport::ProcessResult result = testSupport::runProcess(command);
    fs::current_path(before);
    EXPECT_EQ(0, result.status) << result.errors;
    return result.output;
}

class GuideTest : public testing::TestWithParam<fs::path> {};

TEST_P(GuideTest, ShowsWhatIsCompiledAndPrinted)
{
    for (const GuideBlock& block : blocksOf(GetParam())) {
        const std::vector<std::string> words = wordsOf(block.origin);
        if (words.empty()) {
            EXPECT_NE("cpp", block.language) << block.place << " shows C++ that nothing compiles:\n" << block.text;
        } else if (words[0] == "code:") {
            ASSERT_EQ(3u, words.size()) << block.place;
            EXPECT_EQ(regionOf(sourceFolder / words[1], words[2]), block.text) << block.place;
        } else {
            EXPECT_EQ(outputOf({words.begin() + 1, words.end()}), block.text) << block.place;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Guides, GuideTest, testing::ValuesIn(guidesIn(sourceFolder / "docs")), [](const auto& row) {
    std::string name = row.param.stem().string();
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

TEST(GuidesTest, EverySnippetIsShown)
{
    std::set<std::string> shown;
    for (const fs::path& guide : guidesIn(sourceFolder / "docs")) {
        for (const GuideBlock& block : blocksOf(guide)) {
            shown.insert(block.origin);
        }
    }
    const std::regex start(" *// \\[([a-z-]+)\\]");
    for (const char* const folder : {"docs/snippets", "examples"}) {
        for (const auto& entry : fs::directory_iterator(sourceFolder / folder)) {
            if (entry.path().extension() != ".cpp") {
                continue;
            }
            const std::string source = std::string(folder) + "/" + entry.path().filename().string();
            for (const std::string& line : linesOf(contentOf(entry.path()))) {
                std::smatch match;
                if (std::regex_match(line, match, start)) {
                    EXPECT_EQ(1u, shown.count("code: " + source + " " + match[1].str())) << source << ": " << line;
                }
            }
        }
    }
}

TEST(GuidesTest, EveryLinkLeadsToAFile)
{
    const std::regex link("\\]\\(([^)#]+)(#[^)]*)?\\)");
    unsigned found = 0;
    std::vector<fs::path> files = guidesIn(sourceFolder / "docs");
    files.push_back(sourceFolder / "README.md"); // its code and output are compared by a test of their own
    for (const fs::path& file : files) {
        const std::string text = contentOf(file);
        for (std::sregex_iterator it(text.begin(), text.end(), link); it != std::sregex_iterator(); ++it) {
            const std::string linked = (*it)[1];
            if (linked.find("://") == std::string::npos) {
                ++found;
                EXPECT_TRUE(fs::exists(file.parent_path() / linked)) << file << " links to " << linked;
            }
        }
    }
    EXPECT_LT(10u, found) << "the links are not where they are looked for";
}

TEST(GuidesTest, EveryWordOfAnExceptionIsExplained)
{
    const std::string guide = contentOf(sourceFolder / "docs/when-something-is-wrong.md");
    const std::regex thrown("throw (?:vesk::)?(?!AssertionFailure)[A-Za-z]+\\(\"([^\"]+)\"");
    unsigned found = 0;
    for (const char* const folder : {"foundation", "libMath", "libVideo"}) {
        for (const auto& entry : fs::recursive_directory_iterator(sourceFolder / folder)) {
            const std::string ending = entry.path().extension().string();
            if (ending != ".cpp" && ending != ".h") {
                continue;
            }
            const std::string text = contentOf(entry.path());
            for (std::sregex_iterator it(text.begin(), text.end(), thrown); it != std::sregex_iterator(); ++it) {
                ++found;
                const std::string words = (*it)[1];
                // Two kinds of objects share one row.
                const std::string shared = std::regex_replace(words, std::regex("handle to camera"), "handle to node");
                EXPECT_NE(std::string::npos, guide.find("\"" + shared + "\"")) << entry.path() << ": " << words;
            }
        }
    }
    EXPECT_LT(5u, found) << "the sources are not where they are looked for";
}

} // namespace
