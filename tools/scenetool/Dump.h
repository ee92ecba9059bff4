#pragma once

#include "LoadedScene.h"

#include <ostream>

namespace scenetool {

/// Writes the state of a scene as one JSON object and a line feed.
///
/// Numbers read back to the same `float`; those that JSON lacks are the strings "NaN", "Infinity" and "-Infinity".
/// Matrices are 16 numbers, row by row. Nodes are referred to by their place in "nodes", null where there is none.
void writeDump(const LoadedScene& loaded, std::ostream& out);

} // namespace scenetool
