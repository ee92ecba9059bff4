#pragma once

#include "DocumentConversion.h"
#include "sandbox/Sandbox.h"

#include <string>

namespace scenetool {

/// How a folder of documents is converted.
struct FolderConversionSettings {
    ConversionSettings conversion;
    SandboxLimits limits;    ///< Of each document.
    unsigned jobs = 1;       ///< Documents at a time.
    bool isRepeated = false; ///< Converts those again whose result is newer than the document.
    bool showsProgress = false;
};

/// Converts all `.dae` files below a folder to binary glTF files of the same names below another, each in a process of its own.
/// Prints one JSON object a line and document to standard output: `file`, `result`, `status` ("converted", "up to date",
/// "failed"), `reason`, `seconds`, `lost`. A run that is interrupted goes on where it was when it is started again.
/// @return whether none failed
bool convertFolder(const std::string& in, const std::string& out, const FolderConversionSettings& settings);

} // namespace scenetool
