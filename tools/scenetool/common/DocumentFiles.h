#pragma once

#include <filesystem>

namespace scenetool {

/// Whether a file of a folder is a COLLADA document: a regular file whose name ends in `.dae`, in letters of any case.
bool isDocument(const std::filesystem::directory_entry& entry);

} // namespace scenetool
