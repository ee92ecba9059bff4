#pragma once

#include "GltfNodes.h"

namespace scenetool {

/// Adds the motion of the scene's nodes as one animation of translations, rotations and scales, with as few keys as the
/// tolerance allows.
void addAnimations(LoadedScene& loaded, const GltfOptions& options, GltfDocument& document, const GltfNodes& nodes,
                   ConversionNotes& notes);

} // namespace scenetool
