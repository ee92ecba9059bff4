#include "support/Process.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

// What the guides show as code stands in programs that are compiled, what they show as output is what these print, and
// what they link to is there. A block says in a comment above it where it comes from:
//
//     <!-- code: docs/snippets/frame.cpp load -->     the region between "// [load]" and "// [/load]"
//     <!-- output: frameSnippet docs/snippets/crane.dae -->
//
// A block of C++ without such a comment fails.

namespace {

namespace fs = std::filesystem;

const fs::path sourceFolder = SOURCE_FOLDER;

std::string readFile(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + path.string());
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> wordsOf(const std::string& text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), std::istream_iterator<std::string>()};
}

/// A fenced block of a guide, and the comment right above it.
struct Block {
    std::string place; ///< file and line
    std::string language;
    std::string origin; ///< what the comment says; empty without one
    std::string text;
};

std::vector<fs::path> guides()
{
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(sourceFolder / "docs")) {
        if (entry.path().extension() == ".md") {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<Block> blocksOf(const fs::path& file)
{
    std::vector<Block> blocks;
    const std::vector<std::string> lines = linesOf(readFile(file));
    const std::regex comment("<!-- ((?:code|output): .*) -->");
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].rfind("```", 0) != 0) {
            continue;
        }
        Block block{file.filename().string() + ":" + std::to_string(i + 1), lines[i].substr(3), "", ""};
        std::smatch match;
        if (i > 0 && std::regex_match(lines[i - 1], match, comment)) {
            block.origin = match[1];
        }
        for (++i; i < lines.size() && lines[i] != "```"; ++i) {
            block.text += lines[i] + "\n";
        }
        blocks.push_back(block);
    }
    return blocks;
}

// The lines of a region without the blanks that all of them start with.
std::string regionOf(const fs::path& source, const std::string& name)
{
    std::vector<std::string> region;
    std::size_t indent = std::string::npos;
    bool isInside = false;
    for (const std::string& line : linesOf(readFile(source))) {
        const std::size_t first = line.find_first_not_of(' ');
        if (first != std::string::npos && line.substr(first) == "// [/" + name + "]") {
            std::string text;
            for (const std::string& inner : region) {
                text += (inner.size() > indent ? inner.substr(indent) : "") + "\n";
            }
            return text;
        }
        if (isInside) {
            region.push_back(line);
            indent = std::min(indent, first);
        }
        isInside = isInside || (first != std::string::npos && line.substr(first) == "// [" + name + "]");
    }
    throw std::runtime_error(source.string() + " has no region " + name);
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
    for (const Block& block : blocksOf(GetParam())) {
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

INSTANTIATE_TEST_SUITE_P(Guides, GuideTest, testing::ValuesIn(guides()), [](const auto& row) {
    std::string name = row.param.stem().string();
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

TEST(GuidesTest, EverySnippetIsShown)
{
    std::set<std::string> shown;
    for (const fs::path& guide : guides()) {
        for (const Block& block : blocksOf(guide)) {
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
            for (const std::string& line : linesOf(readFile(entry.path()))) {
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
    std::vector<fs::path> files = guides();
    files.push_back(sourceFolder / "README.md"); // its code and output are compared by a test of their own
    for (const fs::path& file : files) {
        const std::string text = readFile(file);
        for (std::sregex_iterator it(text.begin(), text.end(), link); it != std::sregex_iterator(); ++it) {
            const std::string target = (*it)[1];
            if (target.find("://") == std::string::npos) {
                ++found;
                EXPECT_TRUE(fs::exists(file.parent_path() / target)) << file << " links to " << target;
            }
        }
    }
    EXPECT_LT(10u, found) << "the links are not where they are looked for";
}

TEST(GuidesTest, EveryWordOfAnExceptionIsExplained)
{
    const std::string guide = readFile(sourceFolder / "docs/when-something-is-wrong.md");
    const std::regex thrown("throw (?:vesk::)?(?!AssertionFailure)[A-Za-z]+\\(\"([^\"]+)\"");
    unsigned found = 0;
    for (const char* const folder : {"foundation", "libMath", "libVideo"}) {
        for (const auto& entry : fs::recursive_directory_iterator(sourceFolder / folder)) {
            const std::string ending = entry.path().extension().string();
            if (ending != ".cpp" && ending != ".h") {
                continue;
            }
            const std::string text = readFile(entry.path());
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
