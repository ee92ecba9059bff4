#pragma once

#include "../common/LoadedScene.h"
#include "ConversionNotes.h"
#include "GltfDocument.h"

#include <libPrepare/Prepare.h>

#include <cstdint>
#include <string>
#include <vector>

namespace scenetool {

/// How a scene is converted to a glTF document.
struct GltfOptions {
    std::vector<std::string>
        documentFiles; ///< Image references are relative to the first of these for which the image exists.
    std::vector<libPrepare::Approximation> approximations; ///< Objects that glTF can express as the document has them.
    bool isPrepared = true;   ///< If false, a transparency of 0 may also mean that the document has none.
    double sampleRate = 60.0; ///< Samples per second of an animation before refinement.
    double tolerance = 1e-4;  ///< Largest error of an animation, relative to its size.
    std::uint64_t maxBytes = std::uint64_t(1) << 30U; ///< Maximum size of the binary data.
};

/// Converts a scene to glTF 2.0: each node to a node, each geometry to a mesh. Uses only what the library delivers. An
/// animated scene is evaluated at many times, and keeps the state of the last one.
/// @throws GltfError if the result gets too large
GltfDocument gltfOf(LoadedScene& loaded, const GltfOptions& options, ConversionNotes& notes);

} // namespace scenetool
