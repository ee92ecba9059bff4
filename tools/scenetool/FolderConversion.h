#pragma once

#include "DocumentConversion.h"
#include "sandbox/Sandbox.h"

#include <string>

namespace scenetool {

/// How a folder of documents is converted.
struct FolderConversionSettings {
    ConversionSettings conversion;
    SandboxLimits limits;    ///< For each document.
    unsigned jobs = 1;       ///< Number of documents converted at a time.
    bool isRepeated = false; ///< Converts a document again even if its result is newer.
    bool showsProgress = false;
};

/// Converts all `.dae` files in a folder and its subfolders to binary glTF files at the same relative paths in another
/// folder, each in a process of its own. Prints one line of JSON per document to standard output: `file`, `result`,
/// `status` ("converted", "up to date", "failed"), `reason`, `seconds`, `lost`. An interrupted run continues where it
/// stopped when it is started again.
/// @return whether no document failed
bool convertFolder(const std::string& in, const std::string& out, const FolderConversionSettings& settings);

} // namespace scenetool
