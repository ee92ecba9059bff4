#include "GuideBlock.h"

#include "support/Files.h"
#include "support/Words.h"

#include <algorithm>
#include <cstddef>
#include <regex>
#include <stdexcept>

namespace docsTests {

namespace fs = std::filesystem;
using testSupport::contentOf;
using testSupport::linesOf;

std::vector<fs::path> guidesIn(const fs::path& folder)
{
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() == ".md") {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<GuideBlock> blocksOf(const fs::path& guide)
{
    std::vector<GuideBlock> blocks;
    const std::vector<std::string> lines = linesOf(contentOf(guide));
    const std::regex comment("<!-- ((?:code|output): .*) -->");
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].rfind("```", 0) != 0) {
            continue;
        }
        GuideBlock block{guide.filename().string() + ":" + std::to_string(i + 1), lines[i].substr(3), "", ""};
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

std::string regionOf(const fs::path& source, const std::string& name)
{
    std::vector<std::string> region;
    std::size_t indent = std::string::npos;
    bool isInside = false;
    for (const std::string& line : linesOf(contentOf(source))) {
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

} // namespace docsTests
