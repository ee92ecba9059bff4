#pragma once

#include "LoadedScene.h"

#include <ostream>

namespace scenetool {

/// How `writeInfo` shows a scene.
struct InfoOptions {
    bool isColored = false;
    bool showsAllNodes = false; ///< else the first two hundred
};

/// Writes what a document holds, for people: counts, the node tree with its transforms and animations, and what the
/// library logged.
void writeInfo(const LoadedScene& loaded, const InfoOptions& options, std::ostream& out);

} // namespace scenetool
