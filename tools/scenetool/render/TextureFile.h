#pragma once

#include <string>

namespace scenetool {

/// Path of the texture that a reference names.
///
/// A relative reference starts at the folder of the document. If there is no such file, a file with the same name in
/// the folder of the document is used, because references often have paths of another machine.
/// @return the path in the reference if neither file exists
std::string textureFile(const std::string& documentFile, const std::string& reference);

} // namespace scenetool
