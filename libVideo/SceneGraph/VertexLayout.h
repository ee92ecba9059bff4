#pragma once // SPDX-License-Identifier: MIT

#include <libVideo/Export.h>
#include <libVideo/SceneGraph/DataType.h>
#include <libVideo/SceneGraph/Semantic.h>

#include <vesk/String.h>

namespace libVideo {

/// One attribute of a vertex: what it is, and where it lies in the bytes of a vertex.
struct LIBVIDEO_API VertexLayout {
    VertexLayout() = default;
    /// All else as the default has it. Implicit, since a layout of a semantic serves as a search key.
    VertexLayout(VertexSemantic layoutSemantic) : semantic(layoutSemantic) {}

    /// Compares the semantic alone.
    bool operator==(const VertexLayout& other) const { return semantic == other.semantic; }

    VertexSemantic semantic = SEMANTIC_UNKNOWN; ///< What the attribute is.
    unsigned byteSize = 0;                      ///< bytes that the attribute takes
    unsigned byteOffset = 0;                    ///< bytes from the start of the vertex
    DataType dataType = DATA_TYPE_INVALID;      ///< What its source is made of.
    unsigned reserved = 0;                      ///< always 0
};

/// Maps the `semantic` of an input, in any case, and stores the answer in `layout.semantic` as well.
/// @return `SEMANTIC_UNKNOWN` for a word that has none
LIBVIDEO_API VertexSemantic inputSemanticToVertexSemantic(const vesk::String& semantic, VertexLayout& layout);

} // namespace libVideo
