#pragma once

#include <string_view>

namespace scenetool {

/// The script of the viewer in a page: one file that needs no other, with the licence of what it is made from at its top.
std::string_view pageViewer();

} // namespace scenetool
