#pragma once // SPDX-License-Identifier: MIT

#include <libVideo/Export.h>
#include <libVideo/SceneGraph/DataType.h>
#include <libVideo/SceneGraph/Semantic.h>

#include <vesk/String.h>

namespace libVideo {

/// One attribute of a vertex: what it is, and where it is in the bytes of a vertex.
struct LIBVIDEO_API VertexLayout {
    VertexLayout() = default;
    /// Sets only the semantic. Implicit, since a semantic is a search key among layouts.
    VertexLayout(VertexSemantic layoutSemantic) : semantic(layoutSemantic) {}

    /// Compares only the semantic.
    bool operator==(const VertexLayout& other) const { return semantic == other.semantic; }

    VertexSemantic semantic = SEMANTIC_UNKNOWN; ///< What the attribute is.
    unsigned byteSize = 0;                      ///< bytes that the attribute takes
    unsigned byteOffset = 0;                    ///< bytes from the start of the vertex
    DataType dataType = DATA_TYPE_INVALID;      ///< Type of a record of its source.
    unsigned reserved = 0;                      ///< always 0
};

/// Maps the `semantic` of an input, in any case, and stores the result in `layout.semantic` as well.
/// @return `SEMANTIC_UNKNOWN` for a word that has none
LIBVIDEO_API VertexSemantic inputSemanticToVertexSemantic(const vesk::String& semantic, VertexLayout& layout);

} // namespace libVideo
