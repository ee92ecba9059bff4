#pragma once

#include <cstdlib>
#include <string>

namespace scenetool {

/// Says on standard error why something cannot be done with a file.
/// @return the status
int fail(const std::string& file, const std::string& why, int status = EXIT_FAILURE);

} // namespace scenetool
