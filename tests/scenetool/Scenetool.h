#pragma once

#include "support/Process.h"

#include <algorithm>
#include <string>
#include <vector>

namespace testSupport {

using Words = std::vector<std::string>;

// Exit status of the tool.
constexpr int succeeded = 0;
constexpr int failed = 1;
constexpr int usageError = 2;

/// Runs the tool.
inline ProcessResult scenetool(const Words& arguments, const ProcessOptions& options = ProcessOptions())
{
    Words all = {SCENETOOL_PROGRAM};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return runProcess(all, options);
}

/// For commands that draw: drivers keep memory until the process exits, which is no leak of the tool.
inline ProcessOptions drawing(ProcessOptions options = ProcessOptions())
{
    options.environment.emplace_back("ASAN_OPTIONS=detect_leaks=0:strict_string_checks=1:allocator_may_return_null=1");
    return options;
}

inline bool isOneLine(const std::string& text)
{
    return text.size() > 1 && text.back() == '\n' && std::count(text.begin(), text.end(), '\n') == 1;
}

inline bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

} // namespace testSupport
