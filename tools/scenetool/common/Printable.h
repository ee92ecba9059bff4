#pragma once

#include <string>

namespace scenetool {

/// Replaces control characters, which could control a terminal, by question marks.
std::string printable(const std::string& text);

} // namespace scenetool
