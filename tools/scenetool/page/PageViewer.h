#pragma once

#include <string_view>

namespace scenetool {

/// The script of the viewer: self-contained, starting with the licence of the library that it includes.
std::string_view pageViewer();

} // namespace scenetool
