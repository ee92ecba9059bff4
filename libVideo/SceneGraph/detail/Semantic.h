#pragma once

/// @file
/// The word of an input's `semantic` as a number.

#include <libVideo/SceneGraph/Semantic.h>

#include <vesk/String.h>

namespace libVideo::detail {

/// What a word means, whatever its case. @return `SEMANTIC_UNKNOWN` for a word that has no meaning
VertexSemantic semanticOf(const vesk::String& word);

} // namespace libVideo::detail
