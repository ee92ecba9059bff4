#pragma once

/// @file
/// Converts the `semantic` of an input.

#include <libVideo/SceneGraph/Semantic.h>

#include <vesk/String.h>

namespace libVideo::detail {

/// The semantic that a word names, in any case. @return `SEMANTIC_UNKNOWN` for any other word
VertexSemantic semanticOf(const vesk::String& word);

} // namespace libVideo::detail
