#pragma once

#include "common/LoadedScene.h"

#include <ostream>

namespace scenetool {

/// How `writeInfo` shows a scene.
struct InfoOptions {
    bool isColored = false;
    bool showsAllNodes = false; ///< otherwise only the first 200
};

/// Writes a readable summary of a document: counts, the node tree with its transforms and animations, and the messages
/// of the library.
void writeInfo(const LoadedScene& loaded, const InfoOptions& options, std::ostream& out);

} // namespace scenetool
