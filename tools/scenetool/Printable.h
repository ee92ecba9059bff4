#pragma once

#include <string>

namespace scenetool {

/// Document text without what would act on a terminal.
std::string printable(const std::string& text);

} // namespace scenetool
