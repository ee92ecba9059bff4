#pragma once

#include "../LoadedScene.h"
#include "ConversionNotes.h"
#include "GltfDocument.h"

#include <libPrepare/Prepare.h>

#include <cstdint>
#include <string>
#include <vector>

namespace scenetool {

/// How a scene becomes a glTF document.
struct GltfOptions {
    std::vector<std::string>
        documentFiles; ///< References to images count from the first of these beside which they lead to a file.
    std::vector<libPrepare::Approximation> approximations; ///< What stands for something that glTF has.
    bool isPrepared = true;   ///< Otherwise a transparency of 0 may as well be one that the document does not give.
    double sampleRate = 60.0; ///< Keys a second that an animation is looked at first.
    double tolerance = 1e-4;  ///< Largest error of an animation, relative to its size.
    std::uint64_t mostBytes = std::uint64_t(1) << 30U; ///< Of binary data.
};

/// The scene as glTF 2.0: one node a node, one mesh a geometry, from what the library delivers and nothing else. The scene is
/// evaluated at many times if it is animated, and stays at the last of them.
/// @throws GltfError if the result grows too large
GltfDocument gltfOf(LoadedScene& loaded, const GltfOptions& options, ConversionNotes& notes);

} // namespace scenetool
