#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace docsTests {

/// A fenced block of a guide, and the comment directly above it, which says where the block comes from:
///
///     <!-- code: docs/snippets/frame.cpp load -->     the region between "// [load]" and "// [/load]"
///     <!-- output: frameSnippet docs/snippets/crane.dae -->
struct GuideBlock {
    std::string place; ///< file and line
    std::string language;
    std::string origin; ///< text of the comment; empty without one
    std::string text;
};

/// The guides in a folder, sorted by name.
std::vector<std::filesystem::path> guidesIn(const std::filesystem::path& folder);

std::vector<GuideBlock> blocksOf(const std::filesystem::path& guide);

/// The lines of a region of a source without the blanks that all of them start with.
/// @throws std::runtime_error if there is no region of that name
std::string regionOf(const std::filesystem::path& source, const std::string& name);

} // namespace docsTests
