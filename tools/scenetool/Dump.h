#pragma once

#include "common/LoadedScene.h"

#include <ostream>

namespace scenetool {

/// Writes the state of a scene as one JSON object and a line feed.
///
/// Numbers are written so that they read back to the same `float`; those that JSON lacks are the strings "NaN",
/// "Infinity" and "-Infinity". A matrix is an array of 16 numbers, row by row. A reference to a node is its index in
/// "nodes", or null.
void writeDump(const LoadedScene& loaded, std::ostream& out);

} // namespace scenetool
