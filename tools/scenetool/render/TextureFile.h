#pragma once

#include <string>

namespace scenetool {

/// The path of a texture, from the reference to it as the document writes it.
///
/// A relative reference counts from the folder of the document. A file that is not where the reference says is looked
/// for beside the document by its name alone, since references often hold the paths of another machine.
/// @return the place that the reference names if there is a file in neither
std::string textureFile(const std::string& documentFile, const std::string& reference);

} // namespace scenetool
