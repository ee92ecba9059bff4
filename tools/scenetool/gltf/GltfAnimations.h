#pragma once

#include "GltfNodes.h"

namespace scenetool {

/// The motion of the scene's nodes as one animation: translations, rotations and scales, sampled so densely that straight lines
/// between the keys stay within the tolerance, and no denser.
void addAnimations(LoadedScene& loaded, const GltfOptions& options, GltfDocument& document, const GltfNodes& nodes,
                   ConversionNotes& notes);

} // namespace scenetool
