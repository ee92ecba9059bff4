#pragma once

#include <filesystem>
#include <string>

namespace testSupport {

/// All bytes of a file; empty if it does not exist.
std::string contentOf(const std::filesystem::path& file);

} // namespace testSupport
